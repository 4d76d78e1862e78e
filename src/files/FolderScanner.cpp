#include "FolderScanner.h"

#include "FolderWalker.h"

#include <QElapsedTimer>
#include <QThread>

namespace vindaro::files {

namespace {

// Gathers the walk's files into batches of `size` for the caller.
class BatchSink final : public WalkSink
{
public:
    BatchSink(qsizetype size, const std::function<void(const QStringList&)>& onBatch)
        : m_size(size)
        , m_onBatch(onBatch)
    {
    }
    void found(const QString& path) override
    {
        m_pending.append(path);
        if (m_pending.size() >= m_size)
            flush();
    }
    void flush()
    {
        if (!m_pending.isEmpty()) {
            m_onBatch(m_pending);
            m_pending.clear();
        }
    }

private:
    qsizetype m_size;
    const std::function<void(const QStringList&)>& m_onBatch;
    QStringList m_pending;
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
    FolderWalker::Options options;
    options.names = NameRule::forFolderScan(pattern);
    options.includeSubfolders = includeSubfolders;
    options.maxDepth = kMaxDepth;
    FolderWalker walker(std::move(options), cancelled);
    BatchSink sink(qMax<qsizetype>(1, batchSize), onBatch);
    if (walker.walk(folder, sink))
        sink.flush();
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
