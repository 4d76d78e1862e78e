#include "InotifyChangeMonitor.h"

#include "LinuxVolumes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>
#include <QStandardPaths>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <deque>
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vindaro::platform {

namespace {

using oplog::ChangeEvent;

constexpr uint32_t kFolderMask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE
    | IN_ONLYDIR | IN_DONT_FOLLOW | IN_EXCL_UNLINK;
// A rename's two halves come one after the other; a first half with nothing after it in this long is a move
// out of the watched folders.
constexpr int kMoveWaitMs = 20;

int kernelWatchLimit()
{
    QFile file(QStringLiteral("/proc/sys/fs/inotify/max_user_watches"));
    if (!file.open(QIODevice::ReadOnly))
        return 8192; // the kernel's old default
    bool ok = false;
    const int limit = file.readAll().trimmed().toInt(&ok);
    return ok && limit > 0 ? limit : 8192;
}

QByteArray cleanPath(const QString& path)
{
    return QFile::encodeName(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
}

bool folderDevice(const QByteArray& path, quint64& device)
{
    struct stat st
    {
    };
    if (::lstat(path.constData(), &st) != 0 || !S_ISDIR(st.st_mode))
        return false;
    device = quint64(st.st_dev);
    return true;
}

} // namespace

class InotifyChangeMonitor::Worker
{
public:
    Worker(const InotifyMonitorOptions& options, oplog::ChangeSink& sink, int inotifyFd, int stopFd);
    ~Worker();

    void run();

    std::atomic<bool> ready{false};
    std::atomic<int> watchCount{0};

private:
    // A watched folder: a root carries its whole path and no parent.
    struct Node
    {
        int parent = -1;
        QByteArray name;
        quint64 device = 0;
    };
    struct PendingMove
    {
        bool active = false;
        uint32_t cookie = 0;
        int parent = -1;
        QByteArray name;
        bool folder = false;
        QString path;
    };

    void addRoot(const QByteArray& path, bool report);
    int addWatch(const QByteArray& path, int parent, const QByteArray& name, quint64 device);
    void scanBelow(int wd, bool report);
    QByteArray pathOf(int wd) const;
    bool isSkipped(const QByteArray& path) const;
    void limitReached(const QByteArray& path);
    void forget(int wd);
    void removeSubtree(int wd);
    bool moveNode(int fromParent, const QByteArray& fromName, int toParent, const QByteArray& toName);

    bool readEvents(); // false when the inotify descriptor failed
    void handle(const inotify_event& event);
    void endPendingMove();
    void mountTableChanged();
    void send();

    const InotifyMonitorOptions m_options;
    oplog::ChangeSink& m_sink;
    const int m_fd;
    const int m_stopFd;
    int m_mountFd = -1; // /proc mountinfo, raising POLLPRI on a change
    int m_mountFileFd = -1; // a second inotify for a plain mount table file (tests)
    QByteArray m_mountFileName;
    LinuxVolumes m_volumes;
    QHash<QString, int> m_mounted; // mount point -> drive kind, as last seen

    QHash<int, Node> m_nodes;
    QHash<int, QHash<QByteArray, int>> m_children;
    QList<QByteArray> m_roots;
    QList<QByteArray> m_skipped;
    int m_budget = 0;
    bool m_limitReported = false;
    bool m_atLimit = false;
    // Entries a scan of a new folder reported, against inotify reporting them again; kept until the
    // kernel's queue has been read empty.
    QHash<int, QSet<QByteArray>> m_scanned;
    PendingMove m_move;
    QList<ChangeEvent> m_out;
    std::atomic<bool> m_stopping{false};
    friend class InotifyChangeMonitor;
};

InotifyChangeMonitor::Worker::Worker(
    const InotifyMonitorOptions& options, oplog::ChangeSink& sink, int inotifyFd, int stopFd)
    : m_options(options)
    , m_sink(sink)
    , m_fd(inotifyFd)
    , m_stopFd(stopFd)
    , m_volumes(
          options.mountInfoPath.isEmpty() ? QStringLiteral("/proc/self/mountinfo") : options.mountInfoPath,
          options.sysRoot, options.devRoot)
{
    m_budget = options.maxWatches > 0 ? options.maxWatches : kernelWatchLimit() / 4 * 3;
    QStringList roots = options.roots;
    QStringList skipped = options.skipped;
    if (roots.isEmpty()) {
        roots << QDir::homePath();
        skipped << QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    }
    for (const QString& root : roots)
        m_roots << cleanPath(root);
    for (const QString& folder : skipped) {
        if (!folder.isEmpty())
            m_skipped << cleanPath(folder);
    }
}

InotifyChangeMonitor::Worker::~Worker()
{
    if (m_mountFd >= 0)
        ::close(m_mountFd);
    if (m_mountFileFd >= 0)
        ::close(m_mountFileFd);
}

bool InotifyChangeMonitor::Worker::isSkipped(const QByteArray& path) const
{
    for (const QByteArray& skipped : m_skipped) {
        if (path == skipped || (path.startsWith(skipped) && path.at(skipped.size()) == '/'))
            return true;
    }
    return false;
}

QByteArray InotifyChangeMonitor::Worker::pathOf(int wd) const
{
    QByteArrayList parts;
    for (auto it = m_nodes.constFind(wd); it != m_nodes.constEnd(); it = m_nodes.constFind(it->parent)) {
        parts.prepend(it->name);
        if (it->parent < 0)
            break;
    }
    return parts.join('/');
}

void InotifyChangeMonitor::Worker::limitReached(const QByteArray& path)
{
    m_atLimit = true;
    if (m_limitReported)
        return;
    m_limitReported = true;
    send(); // what came before, first
    m_sink.watchLimitReached(QFile::decodeName(path));
}

// The new watch's descriptor; -1 when the folder cannot be watched or is watched already (reached by
// another path, a bind mount).
int InotifyChangeMonitor::Worker::addWatch(
    const QByteArray& path, int parent, const QByteArray& name, quint64 device)
{
    if (watchCount.load() >= m_budget) {
        limitReached(path);
        return -1;
    }
    const int wd = ::inotify_add_watch(m_fd, path.constData(), kFolderMask);
    if (wd < 0) {
        if (errno == ENOSPC)
            limitReached(path);
        return -1; // gone already, or not ours to read: not followed
    }
    if (m_nodes.contains(wd))
        return -1;
    m_nodes.insert(wd, Node{parent, parent < 0 ? path : name, device});
    if (parent >= 0)
        m_children[parent].insert(name, wd);
    ++watchCount;
    return wd;
}

void InotifyChangeMonitor::Worker::addRoot(const QByteArray& path, bool report)
{
    quint64 device = 0;
    if (isSkipped(path) || !folderDevice(path, device))
        return;
    const int wd = addWatch(path, -1, path, device);
    if (wd >= 0)
        scanBelow(wd, report);
}

// Watches every folder below `wd` on the same file system, breadth first. With `report` what is found is
// reported as created (a folder made with its contents, faster than it could be watched).
void InotifyChangeMonitor::Worker::scanBelow(int wd, bool report)
{
    std::deque<int> folders{wd};
    while (!folders.empty() && !m_stopping.load()) {
        const int current = folders.front();
        folders.pop_front();
        const auto node = m_nodes.constFind(current);
        if (node == m_nodes.constEnd())
            continue;
        const quint64 device = node->device;
        QByteArray path = pathOf(current);
        if (!path.endsWith('/'))
            path += '/';
        DIR* dir = ::opendir(path.constData());
        if (!dir)
            continue;
        while (const dirent* entry = ::readdir(dir)) {
            const QByteArray name(entry->d_name);
            if (name == "." || name == "..")
                continue;
            const QByteArray full = path + name;
            bool folder = entry->d_type == DT_DIR;
            quint64 entryDevice = device;
            if (entry->d_type == DT_UNKNOWN || folder)
                folder = folderDevice(full, entryDevice);
            if (report) {
                m_scanned[current].insert(name);
                m_out.append(ChangeEvent{
                    folder ? oplog::kMakeDirectory : oplog::kCreate, QFile::decodeName(full), {}});
            }
            // Another file system mounted inside is not walked: it is a root of its own or not followed.
            if (!folder || entryDevice != device || isSkipped(full) || m_atLimit)
                continue;
            if (m_children.value(current).contains(name))
                continue;
            const int child = addWatch(full, current, name, device);
            if (child >= 0)
                folders.push_back(child);
        }
        ::closedir(dir);
        if (report && m_out.size() >= 1024)
            send();
    }
}

void InotifyChangeMonitor::Worker::forget(int wd)
{
    const auto node = m_nodes.find(wd);
    if (node == m_nodes.end())
        return;
    if (node->parent >= 0) {
        auto siblings = m_children.find(node->parent);
        if (siblings != m_children.end() && siblings->value(node->name) == wd)
            siblings->remove(node->name);
    }
    m_nodes.erase(node);
    m_children.remove(wd);
    m_scanned.remove(wd);
    // Folders deleted in numbers make room again: new ones are watched once well below the limit.
    if (--watchCount < m_budget / 10 * 9)
        m_atLimit = false;
}

// A folder moved out of the watched ones: its watches go, with everything below.
void InotifyChangeMonitor::Worker::removeSubtree(int wd)
{
    const QList<int> children = m_children.value(wd).values();
    for (const int child : children)
        removeSubtree(child);
    ::inotify_rm_watch(m_fd, wd);
    forget(wd);
}

// Follows a folder renamed within the watched ones; false when it was not watched.
bool InotifyChangeMonitor::Worker::moveNode(
    int fromParent, const QByteArray& fromName, int toParent, const QByteArray& toName)
{
    auto siblings = m_children.find(fromParent);
    if (siblings == m_children.end() || !siblings->contains(fromName))
        return false;
    const int wd = siblings->take(fromName);
    auto node = m_nodes.find(wd);
    if (node == m_nodes.end())
        return false;
    node->parent = toParent;
    node->name = toName;
    m_children[toParent].insert(toName, wd);
    return true;
}

void InotifyChangeMonitor::Worker::endPendingMove()
{
    if (!m_move.active)
        return;
    m_move.active = false;
    m_out.append(ChangeEvent{m_move.folder ? oplog::kRemoveDirectory : oplog::kDelete, m_move.path, {}});
    if (m_move.folder) {
        const int wd = m_children.value(m_move.parent).value(m_move.name, -1);
        if (wd >= 0)
            removeSubtree(wd);
    }
}

void InotifyChangeMonitor::Worker::handle(const inotify_event& event)
{
    if (event.mask & IN_Q_OVERFLOW) {
        // Events were lost: each root says it changed.
        endPendingMove();
        for (const QByteArray& root : std::as_const(m_roots))
            m_out.append(ChangeEvent{oplog::kUpdateDirectory, QFile::decodeName(root), {}});
        return;
    }
    if (m_move.active && !((event.mask & IN_MOVED_TO) && event.cookie == m_move.cookie))
        endPendingMove();
    if (event.mask & IN_IGNORED) {
        forget(event.wd); // the folder went (deleted, unmounted) or its watch was removed
        return;
    }
    const auto parent = m_nodes.constFind(event.wd);
    if (parent == m_nodes.constEnd() || event.len == 0)
        return; // the folder's own events: its parent reports them
    const quint64 parentDevice = parent->device;
    const QByteArray name(event.name, qsizetype(::strnlen(event.name, event.len)));
    const bool folder = (event.mask & IN_ISDIR) != 0;
    QByteArray full = pathOf(event.wd);
    if (!full.endsWith('/'))
        full += '/';
    full += name;
    const QString path = QFile::decodeName(full);

    if (event.mask & IN_MOVED_FROM) {
        m_move = PendingMove{true, event.cookie, event.wd, name, folder, path};
        return;
    }
    if (event.mask & IN_MOVED_TO) {
        if (m_move.active) {
            m_move.active = false;
            m_out.append(ChangeEvent{folder ? oplog::kRenameFolder : oplog::kRenameItem, m_move.path, path});
            if (!folder)
                return;
            if (moveNode(m_move.parent, m_move.name, event.wd, name)) {
                const int wd = m_children.value(event.wd).value(name, -1);
                if (wd >= 0 && isSkipped(full))
                    removeSubtree(wd);
                return;
            }
            // Renamed before it could be watched (made and renamed at once): watched under its new name
            // below, its contents not reported again.
        } else {
            m_out.append(ChangeEvent{folder ? oplog::kMakeDirectory : oplog::kCreate, path, {}});
        }
    } else if (event.mask & IN_CREATE) {
        auto scanned = m_scanned.find(event.wd);
        if (scanned != m_scanned.end() && scanned->remove(name))
            return; // reported by the scan of its new folder already
        m_out.append(ChangeEvent{folder ? oplog::kMakeDirectory : oplog::kCreate, path, {}});
    } else if (event.mask & IN_DELETE) {
        m_out.append(ChangeEvent{folder ? oplog::kRemoveDirectory : oplog::kDelete, path, {}});
        // The folder's watch ends with IN_IGNORED, which may come later; a new folder of the same name
        // must not be taken for it meanwhile.
        if (folder) {
            auto siblings = m_children.find(event.wd);
            if (siblings != m_children.end())
                siblings->remove(name);
        }
        return;
    } else if (event.mask & IN_CLOSE_WRITE) {
        m_out.append(ChangeEvent{oplog::kUpdateItem, path, {}});
        return;
    } else {
        return;
    }

    // A folder that appeared: watched with what it holds. A folder made here reports its contents (made
    // before the watch could be added); one moved in from elsewhere does not.
    quint64 device = 0;
    if (!folder || m_atLimit || isSkipped(full) || !folderDevice(full, device) || device != parentDevice)
        return;
    if (m_children.value(event.wd).contains(name))
        return;
    const int wd = addWatch(full, event.wd, name, device);
    if (wd >= 0)
        scanBelow(wd, (event.mask & IN_CREATE) != 0);
}

bool InotifyChangeMonitor::Worker::readEvents()
{
    alignas(inotify_event) char buffer[64 * 1024];
    for (;;) {
        const ssize_t got = ::read(m_fd, buffer, sizeof buffer);
        if (got < 0) {
            if (errno == EINTR)
                continue;
            if (errno == EAGAIN)
                break;
            return false;
        }
        if (got == 0)
            break;
        // The kernel aligns every record (its name is padded with NULs).
        for (ssize_t at = 0; at < got;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            handle(*event);
            at += ssize_t(sizeof(inotify_event)) + ssize_t(event->len);
        }
        send();
        if (m_stopping.load())
            break;
    }
    // The kernel's queue is read empty: anything a scan raced with has been seen.
    m_scanned.clear();
    return true;
}

void InotifyChangeMonitor::Worker::mountTableChanged()
{
    QHash<QString, int> now;
    for (const Volume& volume : m_volumes.list())
        now.insert(volume.mountPoint, volume.kind);
    const auto isMedium = [](int kind) { return kind == kDriveRemovable || kind == kDriveCdRom; };
    for (auto it = m_mounted.constBegin(); it != m_mounted.constEnd(); ++it) {
        if (!now.contains(it.key()))
            m_out.append(ChangeEvent{
                isMedium(it.value()) ? oplog::kMediaRemoved : oplog::kDriveRemoved, it.key(), {}});
    }
    for (auto it = now.constBegin(); it != now.constEnd(); ++it) {
        if (m_mounted.contains(it.key()))
            continue;
        m_out.append(
            ChangeEvent{isMedium(it.value()) ? oplog::kMediaInserted : oplog::kDriveAdded, it.key(), {}});
        if (it.value() == kDriveRemovable && m_options.followRemovableMedia && !m_atLimit)
            addRoot(QFile::encodeName(it.key()), false);
    }
    m_mounted = now;
    send();
}

void InotifyChangeMonitor::Worker::send()
{
    if (m_out.isEmpty())
        return;
    QList<ChangeEvent> batch;
    batch.swap(m_out);
    m_sink.addChanges(std::move(batch));
}

void InotifyChangeMonitor::Worker::run()
{
    // The mount table first, so a volume mounted while the folders are walked is not missed.
    if (!m_options.mountInfoPath.isEmpty()) {
        const QFileInfo table(m_options.mountInfoPath);
        if (m_options.mountInfoPath.startsWith(QLatin1String("/proc/"))) {
            m_mountFd = ::open(QFile::encodeName(m_options.mountInfoPath).constData(), O_RDONLY | O_CLOEXEC);
        } else {
            m_mountFileFd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
            m_mountFileName = QFile::encodeName(table.fileName());
            if (m_mountFileFd >= 0)
                ::inotify_add_watch(m_mountFileFd, QFile::encodeName(table.absolutePath()).constData(),
                    IN_CLOSE_WRITE | IN_MOVED_TO);
        }
        for (const Volume& volume : m_volumes.list())
            m_mounted.insert(volume.mountPoint, volume.kind);
    }
    for (const QByteArray& root : std::as_const(m_roots))
        addRoot(root, false);
    if (m_options.followRemovableMedia) {
        for (auto it = m_mounted.constBegin(); it != m_mounted.constEnd(); ++it) {
            if (it.value() == kDriveRemovable && !m_atLimit)
                addRoot(QFile::encodeName(it.key()), false);
        }
    }
    send();
    ready.store(true);

    while (!m_stopping.load()) {
        pollfd fds[4]
            = {{m_stopFd, POLLIN, 0}, {m_fd, POLLIN, 0}, {m_mountFd, POLLPRI, 0}, {m_mountFileFd, POLLIN, 0}};
        const int count = ::poll(fds, 4, m_move.active ? kMoveWaitMs : -1);
        if (count < 0) {
            if (errno == EINTR)
                continue;
            break;
        }
        if (fds[0].revents)
            break;
        if (count == 0) {
            endPendingMove(); // the first half of a move with no second: moved out
            send();
            continue;
        }
        if (fds[1].revents & (POLLIN | POLLERR)) {
            if (!readEvents())
                break;
        }
        bool tableChanged = (fds[2].revents & (POLLPRI | POLLERR)) != 0;
        if (fds[3].revents & POLLIN) {
            alignas(inotify_event) char buffer[4096];
            ssize_t got = 0;
            while ((got = ::read(m_mountFileFd, buffer, sizeof buffer)) > 0) {
                for (ssize_t at = 0; at < got;) {
                    const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
                    if (event->len > 0 && QByteArray(event->name) == m_mountFileName)
                        tableChanged = true;
                    at += ssize_t(sizeof(inotify_event)) + ssize_t(event->len);
                }
            }
        }
        if (tableChanged)
            mountTableChanged();
    }
}

InotifyChangeMonitor::InotifyChangeMonitor(InotifyMonitorOptions options)
    : m_options(std::move(options))
{
}

InotifyChangeMonitor::~InotifyChangeMonitor()
{
    stop();
}

bool InotifyChangeMonitor::start(oplog::ChangeSink& sink)
{
    if (m_worker)
        return true;
    const int fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (fd < 0)
        return false;
    const int stopFd = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (stopFd < 0) {
        ::close(fd);
        return false;
    }
    m_worker = std::make_unique<Worker>(m_options, sink, fd, stopFd);
    m_thread = std::thread([worker = m_worker.get()] { worker->run(); });
    return true;
}

void InotifyChangeMonitor::stop()
{
    if (!m_worker)
        return;
    m_worker->m_stopping.store(true);
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_worker->m_stopFd, &one, sizeof one);
    m_thread.join();
    const int fd = m_worker->m_fd;
    const int stopFd = m_worker->m_stopFd;
    m_worker.reset();
    ::close(fd);
    ::close(stopFd);
}

bool InotifyChangeMonitor::isReady() const
{
    return m_worker && m_worker->ready.load();
}

int InotifyChangeMonitor::watchedFolders() const
{
    return m_worker ? m_worker->watchCount.load() : 0;
}

} // namespace vindaro::platform
