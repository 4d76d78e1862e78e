#include "MountedDiscFiles.h"

#include "Sectors.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vindaro::disc {

namespace {

constexpr qsizetype kMaxRemembered = 1024;

// What tells one disc from another without asking the drive: a drive's primary volume descriptor
// (sector 16: label, sizes and creation times to the hundredth of a second); an image file's inode, size
// and time. Empty when it cannot be had, and then nothing is remembered.
QByteArray discIdentity(const QString& device, DiscKind kind)
{
    const QByteArray name = QFile::encodeName(device);
    struct stat st
    {
    };
    if (::stat(name.constData(), &st) != 0)
        return {};
    if (kind != DiscKind::Drive) {
        return QByteArray::number(qulonglong(st.st_dev)) + ':' + QByteArray::number(qulonglong(st.st_ino))
            + ':' + QByteArray::number(qlonglong(st.st_size)) + ':'
            + QByteArray::number(qlonglong(st.st_mtim.tv_sec)) + '.'
            + QByteArray::number(qlonglong(st.st_mtim.tv_nsec));
    }
    int fd;
    do {
        fd = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0)
        return {};
    QByteArray descriptor(kDataSectorBytes, '\0');
    const ssize_t n = ::pread(fd, descriptor.data(), size_t(kDataSectorBytes), off_t(16 * kDataSectorBytes));
    ::close(fd);
    if (n != kDataSectorBytes)
        return {};
    return QCryptographicHash::hash(descriptor, QCryptographicHash::Sha1);
}

} // namespace

MountedDiscFiles& MountedDiscFiles::shared()
{
    static MountedDiscFiles files;
    return files;
}

MountedDiscFiles::Lookup MountedDiscFiles::lookup(platform::Volumes& volumes, const QString& path)
{
    Lookup result;
    if (!QDir::isAbsolutePath(path))
        return result;
    const std::optional<platform::Volume> volume = volumes.volumeOf(path);
    if (!volume || volume->fsType != QLatin1String("iso9660") || volume->device.isEmpty())
        return result;
    const DiscKind kind = discKindOf(volume->device);
    if (kind == DiscKind::None)
        return result;
    struct stat st
    {
    };
    if (::stat(QFile::encodeName(path).constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return result;
    const QString relative = QDir(volume->mountPoint).relativeFilePath(path);
    if (relative.startsWith(QLatin1String("..")))
        return result;
    const QString inDisc = QLatin1Char('/') + relative;

    const QByteArray identity = discIdentity(volume->device, kind);
    const QString key = volume->device + QLatin1Char('\n') + QString::fromLatin1(identity.toHex())
        + QLatin1Char('\n') + inDisc;
    if (!identity.isEmpty()) {
        const QMutexLocker lock(&m_mutex);
        const auto known = m_known.constFind(key);
        if (known != m_known.constEnd())
            return *known;
    }

    result.device = volume->device;
    DiscFailure failure;
    const std::unique_ptr<Disc> disc = Disc::open(volume->device, failure);
    if (!disc) {
        // A disc that cannot be opened (no permission on the drive) may hold a Video CD: a plain read of
        // its tracks would silently lose 276 bytes a sector, so those are refused; other files read plainly.
        // A device that is no drive at all (a loop device) holds no Form 2 sectors.
        if (failure.error != ENODEV && looksLikeVideoCdTrack(inDisc)) {
            result.kind = Kind::Unreadable;
            result.failure = failure;
        }
        return result; // not remembered: the drive may be opened next time
    }
    const std::optional<DiscEntry> entry = disc->find(inDisc, failure);
    if (!entry && failure.error == EIO && looksLikeVideoCdTrack(inDisc)) {
        result.kind = Kind::Unreadable; // its directory cannot be read now
        result.failure = failure;
        return result;
    }
    if (entry && entry->isForm2()) {
        result.kind = Kind::Form2;
        result.entry = *entry;
    }
    if (!identity.isEmpty()) {
        const QMutexLocker lock(&m_mutex);
        if (m_known.size() >= kMaxRemembered)
            m_known.clear();
        m_known.insert(key, result);
    }
    return result;
}

std::optional<qint64> form2Length(platform::Volumes& volumes, const QString& path)
{
    const MountedDiscFiles::Lookup found = MountedDiscFiles::shared().lookup(volumes, path);
    if (found.kind != MountedDiscFiles::Kind::Form2)
        return std::nullopt;
    return found.entry.length();
}

} // namespace vindaro::disc
