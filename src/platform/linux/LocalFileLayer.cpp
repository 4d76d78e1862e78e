#include "LocalFileLayer.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>
#include <utility>

namespace vindaro::platform {

QString errnoText(int errnoValue)
{
    return QString::fromLocal8Bit(std::strerror(errnoValue));
}

namespace {

IoResult lastFailure()
{
    const int e = errno;
    return IoResult::failure(e, errnoText(e));
}

class PosixFile final : public RandomAccessFile
{
public:
    explicit PosixFile(int fd, bool readsAhead = false)
        : m_fd(fd)
        , m_readsAhead(readsAhead)
    {
    }
    bool readsAheadWell() const override { return m_readsAhead; }
    qint64 sectorBytes() const override
    {
        // The sector a read fails by: 2,048 bytes on optical media, the common disk sector elsewhere.
        struct statfs fs
        {
        };
        if (m_fd >= 0 && ::fstatfs(m_fd, &fs) == 0
            && (fs.f_type == ISOFS_SUPER_MAGIC || fs.f_type == UDF_SUPER_MAGIC))
            return 2048;
        return 512;
    }
    ~PosixFile() override { close(); }

    IoResult readAt(qint64 offset, char* data, qint64 maxBytes) override
    {
        IoResult result;
        while (result.bytes < maxBytes) {
            const ssize_t n = ::pread(
                m_fd, data + result.bytes, size_t(maxBytes - result.bytes), off_t(offset + result.bytes));
            if (n < 0) {
                if (errno == EINTR)
                    continue;
                const qint64 done = result.bytes;
                result = lastFailure();
                result.bytes = done;
                return result;
            }
            if (n == 0)
                break; // end of file
            result.bytes += n;
        }
        return result;
    }

    IoResult writeAt(qint64 offset, const char* data, qint64 bytes) override
    {
        IoResult result;
        while (result.bytes < bytes) {
            const ssize_t n = ::pwrite(
                m_fd, data + result.bytes, size_t(bytes - result.bytes), off_t(offset + result.bytes));
            if (n < 0) {
                if (errno == EINTR)
                    continue;
                const qint64 done = result.bytes;
                result = lastFailure();
                result.bytes = done;
                return result;
            }
            result.bytes += n;
        }
        return result;
    }

    IoResult copyTo(
        RandomAccessFile& destination, qint64 offset, qint64 destinationOffset, qint64 bytes) override
    {
        auto* to = dynamic_cast<PosixFile*>(&destination);
        if (!to || m_fd < 0 || to->m_fd < 0)
            return IoResult::failure(ENOTSUP, errnoText(ENOTSUP));
        IoResult result;
        while (result.bytes < bytes) {
            loff_t from = offset + result.bytes;
            loff_t at = destinationOffset + result.bytes;
            const ssize_t n = ::copy_file_range(m_fd, &from, to->m_fd, &at, size_t(bytes - result.bytes), 0);
            if (n < 0) {
                if (errno == EINTR)
                    continue;
                const qint64 done = result.bytes;
                result = lastFailure();
                result.bytes = done;
                return result;
            }
            if (n == 0) {
                // The source ended early: as a short read, the caller decides.
                result = IoResult::failure(EIO, errnoText(EIO));
                return result;
            }
            result.bytes += n;
        }
        return result;
    }

    IoResult sync() override
    {
        int r;
        do {
            r = ::fdatasync(m_fd);
        } while (r != 0 && errno == EINTR);
        if (r != 0 && errno != EINVAL) // EINVAL: a file that cannot be synced (a pipe): nothing to wait for
            return lastFailure();
        return IoResult();
    }

    IoResult close() override
    {
        if (m_fd < 0)
            return IoResult();
        const int fd = std::exchange(m_fd, -1);
        // Not retried on EINTR: on Linux the descriptor is gone either way, and a retry could close a
        // descriptor another thread has just been given.
        if (::close(fd) != 0 && errno != EINTR)
            return lastFailure();
        return IoResult();
    }

private:
    int m_fd;
    bool m_readsAhead;
};

// A large file read front to back gets the larger read-ahead window that cp asks for too. Files on a disc
// keep the kernel's default: a larger window would have the drive retry more of the bad sectors that the
// block loop skips over anyway. Advice only: nothing depends on it taking. True when the file was
// advised, which is also where the block loop may read several blocks in one call.
bool adviseSequentialReading(int fd, const struct stat& st)
{
    constexpr off_t kWorthAdvising = 1 << 20; // a smaller file fits the default window whole
    if (!S_ISREG(st.st_mode) || st.st_size < kWorthAdvising)
        return false;
    struct statfs fs
    {
    };
    if (::fstatfs(fd, &fs) != 0 || fs.f_type == ISOFS_SUPER_MAGIC || fs.f_type == UDF_SUPER_MAGIC)
        return false;
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
    return true;
}

std::unique_ptr<RandomAccessFile> openWith(const QString& path, int flags, IoResult& result)
{
    const QByteArray name = QFile::encodeName(path);
    int fd;
    do {
        fd = ::open(name.constData(), flags | O_CLOEXEC, 0666);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) {
        result = lastFailure();
        return nullptr;
    }
    struct stat st
    {
    };
    if (::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode)) {
        ::close(fd);
        result = IoResult::failure(EISDIR, errnoText(EISDIR));
        return nullptr;
    }
    const bool readsAhead = (flags & O_ACCMODE) == O_RDONLY && adviseSequentialReading(fd, st);
    result = IoResult();
    return std::make_unique<PosixFile>(fd, readsAhead);
}

} // namespace

std::unique_ptr<RandomAccessFile> LocalFileLayer::openForReading(const QString& path, IoResult& result)
{
    return openWith(path, O_RDONLY, result);
}

std::unique_ptr<RandomAccessFile> LocalFileLayer::openForUpdate(const QString& path, IoResult& result)
{
    // O_CREAT without O_TRUNC: an existing destination keeps every byte.
    return openWith(path, O_RDWR | O_CREAT, result);
}

qint64 LocalFileLayer::length(const QString& path, IoResult& result)
{
    struct stat st
    {
    };
    if (::stat(QFile::encodeName(path).constData(), &st) != 0) {
        result = lastFailure();
        return -1;
    }
    result = IoResult();
    return qint64(st.st_size);
}

IoResult LocalFileLayer::copyWhole(const QString& source, const QString& destination)
{
    IoResult result;
    auto in = openForReading(source, result);
    if (!in)
        return result;
    const QByteArray name = QFile::encodeName(destination);
    const int fd = ::open(name.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return lastFailure();
    PosixFile out(fd);
    QByteArray buffer(1 << 20, Qt::Uninitialized);
    qint64 offset = 0;
    for (;;) {
        IoResult r = in->readAt(offset, buffer.data(), buffer.size());
        if (!r.ok())
            return r;
        if (r.bytes == 0)
            break;
        IoResult w = out.writeAt(offset, buffer.constData(), r.bytes);
        if (!w.ok())
            return w;
        offset += r.bytes;
    }
    return out.close();
}

IoResult LocalFileLayer::truncate(const QString& path)
{
    if (::truncate(QFile::encodeName(path).constData(), 0) != 0)
        return lastFailure();
    return IoResult();
}

IoResult LocalFileLayer::remove(const QString& path)
{
    if (::unlink(QFile::encodeName(path).constData()) != 0)
        return lastFailure();
    return IoResult();
}

bool LocalFileLayer::exists(const QString& path)
{
    struct stat st
    {
    };
    return ::stat(QFile::encodeName(path).constData(), &st) == 0;
}

IoResult LocalFileLayer::makeFolders(const QString& path)
{
    QByteArray name = QFile::encodeName(path);
    // mkdir -p: each prefix that ends before a "/" in turn, then the whole path
    for (qsizetype at = 1; at <= name.size(); ++at) {
        if (at < name.size() && name[at] != '/')
            continue;
        const QByteArray prefix = name.left(at);
        if (::mkdir(prefix.constData(), 0777) != 0 && errno != EEXIST)
            return lastFailure();
    }
    struct stat st
    {
    };
    if (::stat(name.constData(), &st) != 0)
        return lastFailure();
    if (!S_ISDIR(st.st_mode))
        return IoResult::failure(ENOTDIR, errnoText(ENOTDIR));
    return IoResult();
}

IoResult LocalFileLayer::syncFileSystem(const QString& path)
{
    int fd;
    do {
        fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0)
        return lastFailure();
    IoResult result;
    if (::syncfs(fd) != 0)
        result = lastFailure();
    ::close(fd);
    return result;
}

} // namespace vindaro::platform
