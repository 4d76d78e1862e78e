#include "FileTransfer.h"

#include <QFile>
#include <QList>
#include <QMetaObject>
#include <QStringList>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vindaro::platform {

using Step = FileOpResult::Step;

// What the window's thread and the worker share. Everything marked "lock" is read and written under `lock`.
struct TransferJob
{
    QString source;
    QString target;
    bool move = false;
    bool replace = false;

    std::atomic<qint64> doneBytes{0};
    std::atomic<qint64> totalBytes{-1};

    std::mutex lock;
    std::condition_variable ended;
    bool cancelled = false; // lock
    bool finished = false; // lock: the worker has its result
    QStringList partials; // lock: temporary files made and not yet renamed into place
    FileTransfer* owner = nullptr; // lock: told when the worker ends; null once abandoned
    FileOpResult result; // written by the worker before `finished`

    bool isCancelled()
    {
        std::lock_guard<std::mutex> hold(lock);
        return cancelled;
    }
};

namespace {

constexpr qint64 kChunkBytes = 1 << 20;

QByteArray native(const QString& path)
{
    return QFile::encodeName(path);
}

QString folderOf(const QString& path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return slash <= 0 ? QStringLiteral("/") : path.left(slash);
}

QString nameOf(const QString& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

// Closes a descriptor when it goes out of scope unless taken.
class Fd
{
public:
    explicit Fd(int fd = -1)
        : m_fd(fd)
    {
    }
    ~Fd()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return m_fd; }
    // Closes now; false with errno set when the close reported an error (a late write error on NFS).
    bool close()
    {
        const int fd = m_fd;
        m_fd = -1;
        return ::close(fd) == 0;
    }

private:
    int m_fd;
};

// One piece of a transfer: a folder to create, a link to recreate or a file to copy.
struct Piece
{
    enum Kind
    {
        Folder,
        Link,
        File
    } kind;
    QString from;
    QString to;
};

// Renames `from` to `to`, replacing an existing `to` only when allowed.
int renameInto(const QString& from, const QString& to, bool replace)
{
    if (replace)
        return ::rename(native(from).constData(), native(to).constData()) == 0 ? 0 : errno;
    if (::renameat2(AT_FDCWD, native(from).constData(), AT_FDCWD, native(to).constData(), RENAME_NOREPLACE)
        == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // The file system cannot promise "no replace": a check is the best there is.
    struct stat st;
    if (::lstat(native(to).constData(), &st) == 0)
        return EEXIST;
    return ::rename(native(from).constData(), native(to).constData()) == 0 ? 0 : errno;
}

void syncFolder(const QString& folder)
{
    Fd fd(::open(native(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.get() >= 0)
        ::fsync(fd.get()); // best effort: some file systems refuse it for folders
}

class Worker
{
public:
    explicit Worker(TransferJob& job)
        : m_job(job)
    {
    }

    FileOpResult run();

private:
    FileOpResult plan(QList<Piece>& pieces);
    FileOpResult copyPiece(const Piece& piece);
    FileOpResult copyFile(const QString& from, const QString& to);
    FileOpResult copyLink(const QString& from, const QString& to);
    // Registers a partial file; false (and the file removed) when the job was cancelled meanwhile.
    bool addPartial(const QString& path);
    void dropPartial(const QString& path);
    // Renames a finished partial into place unless the job was cancelled; answers errno, or -1 when
    // cancelled.
    int commit(const QString& partial, const QString& to);

    TransferJob& m_job;
};

FileOpResult Worker::run()
{
    const QString& source = m_job.source;
    const QString& target = m_job.target;
    struct stat sourceStat;
    if (::lstat(native(source).constData(), &sourceStat) != 0)
        return FileOpResult::failed(Step::ReadSource, errno, source);
    struct stat targetStat;
    const bool targetExists = ::lstat(native(target).constData(), &targetStat) == 0;

    if (m_job.move && !(targetExists && S_ISDIR(sourceStat.st_mode))) {
        // Same file system: one rename (an approved existing file is replaced atomically).
        const int error = renameInto(source, target, m_job.replace);
        if (error == 0)
            return {};
        if (error != EXDEV)
            return FileOpResult::failed(Step::WriteTarget, error, target);
    }

    QList<Piece> pieces;
    if (FileOpResult planned = plan(pieces); !planned.done())
        return planned;
    for (const Piece& piece : pieces) {
        if (m_job.isCancelled())
            return FileOpResult::cancelled();
        if (FileOpResult copied = copyPiece(piece); !copied.done())
            return copied;
    }
    if (!m_job.move)
        return {};
    if (m_job.isCancelled())
        return FileOpResult::cancelled();
    // Every piece is in place and on the disk: only now may the original go.
    FileOpResult removed = removePermanently(source);
    if (!removed.done())
        removed.step = Step::RemoveSource;
    return removed;
}

// Lists the source (folders before their contents), measuring the bytes to copy. A folder that cannot be
// listed fails the plan: skipping it would lose files without a word.
FileOpResult Worker::plan(QList<Piece>& pieces)
{
    qint64 total = 0;
    QList<Piece> pending{{Piece::File, m_job.source, m_job.target}};
    while (!pending.isEmpty()) {
        Piece piece = pending.takeFirst();
        if (m_job.isCancelled())
            return FileOpResult::cancelled();
        struct stat st;
        if (::lstat(native(piece.from).constData(), &st) != 0)
            return FileOpResult::failed(Step::ReadSource, errno, piece.from);
        if (S_ISLNK(st.st_mode)) {
            piece.kind = Piece::Link;
        } else if (S_ISREG(st.st_mode)) {
            piece.kind = Piece::File;
            total += st.st_size;
        } else if (S_ISDIR(st.st_mode)) {
            piece.kind = Piece::Folder;
            DIR* folder = ::opendir(native(piece.from).constData());
            if (!folder)
                return FileOpResult::failed(Step::ReadSource, errno, piece.from);
            QList<Piece> inside;
            errno = 0;
            while (const dirent* entry = ::readdir(folder)) {
                const QByteArray name(entry->d_name);
                if (name == "." || name == "..")
                    continue;
                const QString decoded = QFile::decodeName(name);
                inside.append({Piece::File, piece.from + QLatin1Char('/') + decoded,
                    piece.to + QLatin1Char('/') + decoded});
            }
            const int error = errno;
            ::closedir(folder);
            if (error != 0)
                return FileOpResult::failed(Step::ReadSource, error, piece.from);
            pending = inside + pending; // depth first, so a folder comes before what it holds
        } else {
            // A pipe or a device: reading it could wait forever or never end.
            return FileOpResult::failed(
                Step::ReadSource, 0, piece.from, QStringLiteral("不是普通文件，无法复制"));
        }
        pieces.append(piece);
    }
    m_job.totalBytes = total;
    return {};
}

FileOpResult Worker::copyPiece(const Piece& piece)
{
    switch (piece.kind) {
    case Piece::Folder: {
        if (::mkdir(native(piece.to).constData(), 0777) == 0)
            return {};
        const int error = errno;
        struct stat st;
        if (error == EEXIST && ::stat(native(piece.to).constData(), &st) == 0 && S_ISDIR(st.st_mode))
            return {}; // merged into the folder that is there
        return FileOpResult::failed(Step::WriteTarget, error, piece.to);
    }
    case Piece::Link:
        return copyLink(piece.from, piece.to);
    case Piece::File:
        return copyFile(piece.from, piece.to);
    }
    return {};
}

bool Worker::addPartial(const QString& path)
{
    std::lock_guard<std::mutex> hold(m_job.lock);
    if (m_job.cancelled) {
        ::unlink(native(path).constData());
        return false;
    }
    m_job.partials.append(path);
    return true;
}

void Worker::dropPartial(const QString& path)
{
    std::lock_guard<std::mutex> hold(m_job.lock);
    if (m_job.partials.removeOne(path))
        ::unlink(native(path).constData());
}

int Worker::commit(const QString& partial, const QString& to)
{
    // Under the lock, so that a cancel either comes first (and removes the partial) or finds the piece
    // complete. The lock is held for one rename on the target's file system.
    std::lock_guard<std::mutex> hold(m_job.lock);
    if (m_job.cancelled)
        return -1;
    const int error = renameInto(partial, to, m_job.replace);
    if (error != 0)
        ::unlink(native(partial).constData());
    m_job.partials.removeOne(partial);
    return error;
}

FileOpResult Worker::copyLink(const QString& from, const QString& to)
{
    QByteArray pointsAt(4096, Qt::Uninitialized);
    const ssize_t length = ::readlink(native(from).constData(), pointsAt.data(), size_t(pointsAt.size()));
    if (length < 0)
        return FileOpResult::failed(Step::ReadSource, errno, from);
    pointsAt.truncate(length);
    // A new name of our own: symlink() never replaces, so a name that is taken is simply tried again.
    QString partial;
    for (int attempt = 0;; ++attempt) {
        partial = folderOf(to) + QStringLiteral("/.") + nameOf(to)
            + QStringLiteral(".vindaro-%1-%2").arg(::getpid()).arg(attempt);
        if (::symlink(pointsAt.constData(), native(partial).constData()) == 0)
            break;
        if (errno != EEXIST || attempt == 100)
            return FileOpResult::failed(Step::WriteTarget, errno, to);
    }
    if (!addPartial(partial))
        return FileOpResult::cancelled();
    const int error = commit(partial, to);
    if (error < 0)
        return FileOpResult::cancelled();
    return error == 0 ? FileOpResult{} : FileOpResult::failed(Step::WriteTarget, error, to);
}

FileOpResult Worker::copyFile(const QString& from, const QString& to)
{
    Fd in(::open(native(from).constData(), O_RDONLY | O_CLOEXEC));
    if (in.get() < 0)
        return FileOpResult::failed(Step::ReadSource, errno, from);
    struct stat sourceStat;
    if (::fstat(in.get(), &sourceStat) != 0)
        return FileOpResult::failed(Step::ReadSource, errno, from);

    QByteArray pattern = native(folderOf(to) + QStringLiteral("/.") + nameOf(to)) + ".vindaro-XXXXXX";
    Fd out(::mkostemp(pattern.data(), O_CLOEXEC));
    if (out.get() < 0)
        return FileOpResult::failed(Step::WriteTarget, errno, to);
    const QString partial = QFile::decodeName(pattern);
    if (!addPartial(partial))
        return FileOpResult::cancelled();
    const auto failWrite = [&](int error) {
        dropPartial(partial);
        return FileOpResult::failed(Step::WriteTarget, error, to);
    };

    QByteArray buffer(kChunkBytes, Qt::Uninitialized);
    qint64 copied = 0;
    for (;;) {
        const ssize_t got = ::read(in.get(), buffer.data(), size_t(buffer.size()));
        if (got < 0 && errno == EINTR)
            continue;
        if (m_job.isCancelled())
            return FileOpResult::cancelled(); // the partial went with the cancel
        if (got < 0) {
            const int error = errno;
            dropPartial(partial);
            return FileOpResult::failed(Step::ReadSource, error, from);
        }
        if (got == 0)
            break;
        for (ssize_t written = 0; written < got;) {
            const ssize_t put = ::write(out.get(), buffer.constData() + written, size_t(got - written));
            if (put < 0 && errno == EINTR)
                continue;
            if (put < 0)
                return failWrite(errno);
            written += put;
        }
        copied += got;
        m_job.doneBytes += got;
    }
    if (copied != sourceStat.st_size) {
        // The file changed while it was read; a move must not remove an original it did not copy whole.
        dropPartial(partial);
        return FileOpResult::failed(
            Step::ReadSource, 0, from, QStringLiteral("读取到的大小与文件大小不符，文件可能在复制时被改动"));
    }
    ::fchmod(out.get(), sourceStat.st_mode & 07777);
    const struct timespec times[2] = {sourceStat.st_atim, sourceStat.st_mtim};
    ::futimens(out.get(), times);
    if (::fsync(out.get()) != 0)
        return failWrite(errno);
    struct stat written;
    if (::fstat(out.get(), &written) != 0)
        return failWrite(errno);
    if (written.st_size != copied)
        return failWrite(EIO);
    if (!out.close())
        return failWrite(errno);
    const int error = commit(partial, to);
    if (error < 0)
        return FileOpResult::cancelled();
    if (error != 0)
        return FileOpResult::failed(Step::WriteTarget, error, to);
    syncFolder(folderOf(to));
    return {};
}

std::mutex g_abandonedLock;
std::vector<std::weak_ptr<TransferJob>> g_abandoned;

FileOpResult removeTree(const QByteArray& path)
{
    struct stat st;
    if (::lstat(path.constData(), &st) != 0)
        return FileOpResult::failed(Step::Delete, errno, QFile::decodeName(path));
    if (S_ISDIR(st.st_mode)) {
        DIR* folder = ::opendir(path.constData());
        if (!folder)
            return FileOpResult::failed(Step::Delete, errno, QFile::decodeName(path));
        QList<QByteArray> names;
        errno = 0;
        while (const dirent* entry = ::readdir(folder)) {
            const QByteArray name(entry->d_name);
            if (name != "." && name != "..")
                names.append(name);
        }
        const int error = errno;
        ::closedir(folder);
        if (error != 0)
            return FileOpResult::failed(Step::Delete, error, QFile::decodeName(path));
        for (const QByteArray& name : names) {
            if (FileOpResult removed = removeTree(path + '/' + name); !removed.done())
                return removed;
        }
        if (::rmdir(path.constData()) != 0)
            return FileOpResult::failed(Step::Delete, errno, QFile::decodeName(path));
        return {};
    }
    if (::unlink(path.constData()) != 0)
        return FileOpResult::failed(Step::Delete, errno, QFile::decodeName(path));
    return {};
}

} // namespace

FileOpResult removePermanently(const QString& path)
{
    QString clean = path;
    while (clean.size() > 1 && clean.endsWith(QLatin1Char('/')))
        clean.chop(1);
    return removeTree(native(clean));
}

FileTransfer::FileTransfer(
    const QString& source, const QString& target, bool move, bool replace, QObject* parent)
    : QObject(parent)
    , m_job(std::make_shared<TransferJob>())
{
    m_job->source = source;
    m_job->target = target;
    m_job->move = move;
    m_job->replace = replace;
}

FileTransfer::~FileTransfer()
{
    if (m_started)
        cancel();
}

void FileTransfer::start()
{
    Q_ASSERT(!m_started);
    m_started = true;
    m_job->owner = this;
    std::thread([job = m_job] {
        Worker worker(*job);
        FileOpResult result = worker.run();
        std::lock_guard<std::mutex> hold(job->lock);
        job->result = result;
        job->finished = true;
        if (FileTransfer* owner = job->owner) {
            // The owner clears itself under the lock before it goes, and a posted call to an object that
            // is destroyed later is dropped with it.
            QMetaObject::invokeMethod(
                owner, [owner] { emit owner->finished(); }, Qt::QueuedConnection);
        }
        job->ended.notify_all();
    }).detach();
}

void FileTransfer::cancel()
{
    if (!m_started || m_cancelled)
        return;
    std::lock_guard<std::mutex> hold(m_job->lock);
    m_job->owner = nullptr;
    if (m_job->finished)
        return; // too late: the result stands
    m_cancelled = true;
    m_job->cancelled = true;
    for (const QString& partial : std::as_const(m_job->partials))
        ::unlink(native(partial).constData());
    m_job->partials.clear();
    std::lock_guard<std::mutex> registry(g_abandonedLock);
    g_abandoned.push_back(m_job);
}

bool FileTransfer::isFinished() const
{
    std::lock_guard<std::mutex> hold(m_job->lock);
    return m_job->finished;
}

FileOpResult FileTransfer::result() const
{
    if (m_cancelled)
        return FileOpResult::cancelled();
    std::lock_guard<std::mutex> hold(m_job->lock);
    return m_job->result;
}

qint64 FileTransfer::doneBytes() const
{
    return m_job->doneBytes;
}

qint64 FileTransfer::totalBytes() const
{
    return m_job->totalBytes;
}

bool FileTransfer::waitForAbandonedWorkers(int timeoutMs)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    std::vector<std::weak_ptr<TransferJob>> jobs;
    {
        std::lock_guard<std::mutex> registry(g_abandonedLock);
        jobs.swap(g_abandoned);
    }
    bool allEnded = true;
    for (const std::weak_ptr<TransferJob>& weak : jobs) {
        const std::shared_ptr<TransferJob> job = weak.lock();
        if (!job)
            continue;
        std::unique_lock<std::mutex> hold(job->lock);
        if (!job->ended.wait_until(hold, deadline, [&] { return job->finished; })) {
            allEnded = false;
            std::lock_guard<std::mutex> registry(g_abandonedLock);
            g_abandoned.push_back(job);
        }
    }
    return allEnded;
}

} // namespace vindaro::platform
