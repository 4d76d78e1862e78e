#include "FolderScanner.h"

#include "FileListTexts.h"
#include "FileTexts.h"

#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <algorithm>

#include <dirent.h>
#include <sys/stat.h>

namespace vindaro::files {

namespace {

enum class EntryKind
{
    File,
    Folder,
    Other
};

struct DirEntry
{
    QString name;
    EntryKind kind;
};

// The kind of one listed entry. Links count as the file they point at, but a link to a folder is never
// walked into (it shows as Other).
EntryKind kindOf(const QByteArray& fullPath, unsigned char dType)
{
    if (dType == DT_REG)
        return EntryKind::File;
    if (dType == DT_DIR)
        return EntryKind::Folder;
    struct stat st;
    if (dType == DT_UNKNOWN) {
        if (::lstat(fullPath.constData(), &st) != 0)
            return EntryKind::Other;
        if (S_ISREG(st.st_mode))
            return EntryKind::File;
        if (S_ISDIR(st.st_mode))
            return EntryKind::Folder;
        if (!S_ISLNK(st.st_mode))
            return EntryKind::Other;
    } else if (dType != DT_LNK) {
        return EntryKind::Other; // fifos, sockets, devices: nothing a copy could read to an end
    }
    if (::stat(fullPath.constData(), &st) == 0 && S_ISREG(st.st_mode))
        return EntryKind::File;
    return EntryKind::Other;
}

// The entries of one folder, sorted; empty when it cannot be listed.
QList<DirEntry> listFolder(const QString& folder)
{
    QList<DirEntry> entries;
    const QByteArray native = QFile::encodeName(folder);
    DIR* dir = ::opendir(native.constData());
    if (!dir)
        return entries;
    while (const dirent* ent = ::readdir(dir)) {
        const char* name = ent->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        const EntryKind kind = kindOf(native + name, ent->d_type);
        if (kind != EntryKind::Other)
            entries.append(DirEntry{QFile::decodeName(name), kind});
    }
    ::closedir(dir);
    std::sort(entries.begin(), entries.end(), [](const DirEntry& a, const DirEntry& b) {
        const int folded = a.name.compare(b.name, Qt::CaseInsensitive);
        return folded != 0 ? folded < 0 : a.name < b.name;
    });
    return entries;
}

struct Walk
{
    const QString& pattern;
    bool includeSubfolders;
    const std::atomic<bool>& cancelled;
    qsizetype batchSize;
    const std::function<void(const QStringList&)>& onBatch;
    QStringList pending;

    void flush()
    {
        if (!pending.isEmpty()) {
            onBatch(pending);
            pending.clear();
        }
    }

    void folder(const QString& path, int depth)
    {
        const QList<DirEntry> entries = listFolder(path);
        for (const DirEntry& entry : entries) {
            if (cancelled.load(std::memory_order_relaxed))
                return;
            if (entry.kind == EntryKind::File) {
                if (matchesScanPattern(entry.name, pattern)) {
                    pending.append(path + entry.name);
                    if (pending.size() >= batchSize)
                        flush();
                }
            } else if (includeSubfolders && depth < FolderScanner::kMaxDepth) {
                folder(path + entry.name + u'/', depth + 1);
            }
        }
    }
};

// The walk's own thread. Batches go out at most every kBatchMillis (or kBatchSize entries), so the UI
// thread gets few, large updates instead of one per file.
class ScanThread final : public QThread
{
    Q_OBJECT

public:
    static constexpr qsizetype kBatchSize = 4096;
    static constexpr qint64 kBatchMillis = 40;

    ScanThread(
        QString folder, QString pattern, bool includeSubfolders, std::shared_ptr<std::atomic<bool>> cancel)
        : m_folder(std::move(folder))
        , m_pattern(std::move(pattern))
        , m_includeSubfolders(includeSubfolders)
        , m_cancel(std::move(cancel))
    {
    }

signals:
    void batch(const QStringList& paths);
    void walked(bool cancelled);

protected:
    void run() override
    {
        QStringList gathered;
        QElapsedTimer sinceBatch;
        sinceBatch.start();
        FolderScanner::walk(
            m_folder, m_pattern, m_includeSubfolders, *m_cancel, 256, [&](const QStringList& paths) {
                gathered += paths;
                if (gathered.size() >= kBatchSize || sinceBatch.elapsed() >= kBatchMillis) {
                    emit batch(gathered);
                    gathered.clear();
                    sinceBatch.restart();
                }
            });
        if (!gathered.isEmpty() && !m_cancel->load())
            emit batch(gathered);
        emit walked(m_cancel->load());
    }

private:
    QString m_folder;
    QString m_pattern;
    bool m_includeSubfolders;
    std::shared_ptr<std::atomic<bool>> m_cancel;
};

} // namespace

FolderScanner::FolderScanner(QObject* parent)
    : QObject(parent)
{
}

FolderScanner::~FolderScanner()
{
    if (m_cancel)
        m_cancel->store(true); // no finished() from a scanner being destroyed
}

void FolderScanner::walk(const QString& folder, const QString& pattern, bool includeSubfolders,
    const std::atomic<bool>& cancelled, qsizetype batchSize,
    const std::function<void(const QStringList&)>& onBatch)
{
    Walk walker{pattern, includeSubfolders, cancelled, qMax<qsizetype>(1, batchSize), onBatch, {}};
    walker.folder(withTrailingSlash(folder), 0);
    if (!cancelled.load())
        walker.flush();
}

bool FolderScanner::start(const QString& folder, const QString& pattern, bool includeSubfolders)
{
    if (m_running)
        return false;
    m_running = true;
    m_cancel = std::make_shared<std::atomic<bool>>(false);
    auto* thread = new ScanThread(folder, pattern, includeSubfolders, m_cancel);
    // The thread outlives a cancelled or destroyed scanner until its walk notices the flag; it deletes
    // itself then. Signals to a destroyed scanner are dropped by Qt.
    connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    const auto cancel = m_cancel;
    connect(thread, &ScanThread::batch, this, [this, cancel](const QStringList& paths) {
        if (!cancel->load())
            emit found(paths);
    });
    connect(thread, &ScanThread::walked, this, [this, cancel](bool cancelled) {
        if (cancel != m_cancel || cancel->load())
            return; // cancel() has already reported the end
        m_running = false;
        emit finished(cancelled);
    });
    thread->start(QThread::LowPriority);
    return true;
}

void FolderScanner::cancel()
{
    if (!m_running)
        return;
    m_cancel->store(true);
    m_running = false;
    emit finished(true);
}

} // namespace vindaro::files

#include "FolderScanner.moc"
