#include "LinuxOpticalDrives.h"

#include "DiscStatus.h"
#include "UDisksEject.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>

#include <cerrno>
#include <climits>

#include <dirent.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#ifdef __linux__
#include <linux/cdrom.h>
#endif

namespace vindaro::platform {

namespace {

// mountinfo writes blanks, tabs, newlines and backslashes in paths as \040, \011, \012 and \134.
QString unescapeMountField(const QByteArray& field)
{
    QByteArray out;
    out.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        const char c = field.at(i);
        if (c == '\\' && i + 3 < field.size()) {
            int value = 0;
            bool octal = true;
            for (qsizetype d = i + 1; d <= i + 3; ++d) {
                const char digit = field.at(d);
                octal = octal && digit >= '0' && digit <= '7';
                value = value * 8 + (digit - '0');
            }
            if (octal && value < 256) {
                out.append(static_cast<char>(value));
                i += 3;
                continue;
            }
        }
        out.append(c);
    }
    return QString::fromUtf8(out);
}

QString withoutTrailingSlash(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

QByteArray readSmallFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll(); // procfs and sysfs files report size 0: read until the end
}

// The drives' kernel names, sr0 sr1 ... sr10, in number order.
QStringList driveNames(const QString& sysBlock, const QString& dev)
{
    static const QRegularExpression pattern(QStringLiteral("^sr(\\d{1,6})$"));
    QMap<int, QString> byNumber;
    for (const QString& folder : {sysBlock, dev}) {
        const QStringList entries
            = QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
        for (const QString& name : entries) {
            const QRegularExpressionMatch match = pattern.match(name);
            if (match.hasMatch())
                byNumber.insert(match.captured(1).toInt(), name);
        }
    }
    return byNumber.values();
}

// Reading the first entry of a mounted medium's root reads the medium: it fails (EIO, ENOMEDIUM)
// when the disc is unreadable, where a cached directory handle alone would not tell.
bool canListFolder(const QString& path)
{
    DIR* folder = ::opendir(QFile::encodeName(path).constData());
    if (!folder)
        return false;
    errno = 0;
    const dirent* entry = ::readdir(folder);
    const bool ok = entry != nullptr || errno == 0;
    ::closedir(folder);
    return ok;
}

// Runs one CDROM ioctl on a device opened without waiting for a medium. -1 when the device cannot be
// opened or the ioctl fails.
int cdromIoctl(const QString& path, unsigned long request, long argument)
{
    const QByteArray native = QFile::encodeName(path);
    int fd = -1;
    do {
        fd = ::open(native.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0)
        return -1;
    const int result = ::ioctl(fd, request, argument);
    ::close(fd);
    return result;
}

} // namespace

LinuxOpticalDrives::LinuxOpticalDrives(const QString& rootPath, TrayOptions trayOptions)
    : m_rootPath(rootPath.isEmpty() ? QStringLiteral("/") : rootPath)
    , m_trayOptions(std::move(trayOptions))
{
}

QString LinuxOpticalDrives::hostPath(const QString& absolutePath) const
{
    if (m_rootPath == QLatin1String("/"))
        return absolutePath;
    return QDir(m_rootPath).filePath(absolutePath.mid(1));
}

QList<LinuxOpticalDrives::MountEntry> LinuxOpticalDrives::parseMountInfo(const QByteArray& text)
{
    // Fields: id parent major:minor root mountpoint options [optional...] - fstype source superoptions
    QList<MountEntry> entries;
    const QList<QByteArray> lines = text.split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        const qsizetype dash = fields.indexOf(QByteArrayLiteral("-"));
        if (dash < 6 || dash + 2 >= fields.size())
            continue;
        MountEntry entry;
        entry.majorMinor = QString::fromLatin1(fields.at(2));
        entry.mountPoint = withoutTrailingSlash(unescapeMountField(fields.at(4)));
        entry.fsType = unescapeMountField(fields.at(dash + 1));
        entry.source = unescapeMountField(fields.at(dash + 2));
        if (!entry.mountPoint.startsWith(QLatin1Char('/')))
            continue;
        entries.append(entry);
    }
    return entries;
}

QList<OpticalDrive> LinuxOpticalDrives::list()
{
    const QString sysBlock = hostPath(QStringLiteral("/sys/block"));
    const QStringList names = driveNames(sysBlock, hostPath(QStringLiteral("/dev")));
    if (names.isEmpty())
        return {};
    const QList<MountEntry> mounts
        = parseMountInfo(readSmallFile(hostPath(QStringLiteral("/proc/self/mountinfo"))));

    QList<OpticalDrive> drives;
    for (const QString& name : names) {
        OpticalDrive drive;
        drive.device = QStringLiteral("/dev/") + name;
        const QString majorMinor
            = QString::fromLatin1(readSmallFile(sysBlock + QLatin1Char('/') + name + QStringLiteral("/dev")))
                  .trimmed();
        for (const MountEntry& mount : mounts) {
            // The source may be a link such as /dev/cdrom; the device number settles it.
            const bool sameNumber = !majorMinor.isEmpty() && mount.majorMinor == majorMinor;
            const bool sameSource = mount.source == drive.device
                || (mount.source.startsWith(QLatin1String("/dev/"))
                    && QFileInfo(hostPath(mount.source)).canonicalFilePath() == hostPath(drive.device));
            if (sameNumber || sameSource) {
                drive.mountPoint = mount.mountPoint; // the first mount; later ones are binds
                break;
            }
        }
        drives.append(drive);
    }
    return drives;
}

bool LinuxOpticalDrives::isReady(const OpticalDrive& drive)
{
    if (drive.device.isEmpty())
        return false;
    const DiscStatus status = discStatus(hostPath(drive.device));
    if (status == DiscStatus::Absent)
        return false;
    if (!drive.mountPoint.isEmpty())
        return canListFolder(hostPath(drive.mountPoint));
    if (status == DiscStatus::Present)
        return true;
    // The device cannot be asked (no permission): sysfs gives the medium's size in 512-byte sectors,
    // 0 when the drive holds none.
    const QString name = drive.device.section(QLatin1Char('/'), -1);
    bool ok = false;
    const qint64 sectors
        = readSmallFile(hostPath(QStringLiteral("/sys/block/") + name + QStringLiteral("/size")))
              .trimmed()
              .toLongLong(&ok);
    return ok && sectors > 0;
}

bool LinuxOpticalDrives::runTrayIoctl(const QString& device, TrayIoctl request) const
{
    const QString path = hostPath(device);
    if (m_trayOptions.trayIoctl)
        return m_trayOptions.trayIoctl(path, request);
#if defined(CDROMEJECT) && defined(CDROMCLOSETRAY)
    return cdromIoctl(path, request == TrayIoctl::Eject ? CDROMEJECT : CDROMCLOSETRAY, 0) == 0;
#else
    Q_UNUSED(path);
    return false;
#endif
}

bool LinuxOpticalDrives::openTray(const QString& device)
{
    if (device.isEmpty())
        return false;
    if (m_rootPath == QLatin1String("/")) {
        switch (ejectThroughUDisks(device, m_trayOptions.diskServiceTimeoutMs)) {
        case UDisksEjectResult::Ejected:
            return true;
        case UDisksEjectResult::StillMounted:
            return false;
        case UDisksEjectResult::NotHandled:
            break;
        }
    }
    return runTrayIoctl(device, TrayIoctl::Eject);
}

// UDisks2 has no method that closes a tray, so the ioctl does it. That is enough: a drive whose tray is
// open has nothing mounted, and the kernel refuses CDROMCLOSETRAY only while a disc is in use.
bool LinuxOpticalDrives::closeTray(const QString& device)
{
    return !device.isEmpty() && runTrayIoctl(device, TrayIoctl::Close);
}

} // namespace vindaro::platform
