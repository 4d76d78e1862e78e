#include "FileSearch.h"

#include "SearchResults.h"
#include "files/FolderWalker.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMutex>
#include <QPointer>
#include <QThread>
#include <QTimer>

namespace vindaro::search {

// What the walk's thread hands over. The thread fills `found` and `examining`; the window's thread takes
// them. `stop` is the stop request.
struct FileSearch::Shared
{
    std::atomic<bool> stop{false};
    std::atomic<qint64> examined{0};
    std::atomic<qint64> walkNanoseconds{0};
    QMutex mutex; // guards what follows
    QStringList found;
    QString examining;
    bool walked = false;
};

namespace {

// The walk's side: found paths are handed over in runs, the path being examined about every
// kPublishMillis.
class HandOver final : public files::WalkSink
{
public:
    static constexpr qint64 kPublishMillis = 20;
    static constexpr qsizetype kRun = 1024;

    HandOver(std::atomic<qint64>& examined, QMutex& mutex, QStringList& found, QString& examining)
        : m_examined(examined)
        , m_mutex(mutex)
        , m_found(found)
        , m_examining(examining)
    {
        m_clock.start();
    }

    void found(const QString& path) override
    {
        m_run.append(path);
        if (m_run.size() >= kRun)
            publish(nullptr);
    }

    void tick(const files::FolderWalker& walker) override
    {
        m_examined.store(walker.examined(), std::memory_order_relaxed);
        if (m_clock.elapsed() >= kPublishMillis)
            publish(&walker);
    }

    void publish(const files::FolderWalker* walker)
    {
        QMutexLocker hold(&m_mutex);
        m_found += m_run;
        m_run.clear();
        if (walker) {
            m_examining = walker->currentPath();
            m_clock.restart();
        }
    }

private:
    std::atomic<qint64>& m_examined;
    QMutex& m_mutex;
    QStringList& m_found;
    QString& m_examining;
    QStringList m_run;
    QElapsedTimer m_clock;
};

} // namespace

FileSearch::FileSearch(SearchResults& results, QObject* parent)
    : QObject(parent)
    , m_results(results)
{
    m_poll = new QTimer(this);
    m_poll->setInterval(kPollMillis);
    connect(m_poll, &QTimer::timeout, this, &FileSearch::takeOver);
    m_more = new QTimer(this);
    m_more->setSingleShot(true);
    m_more->setInterval(0);
    connect(m_more, &QTimer::timeout, this, &FileSearch::takeOver);
    m_message = new QTimer(this);
    m_message->setObjectName(QStringLiteral("messageTimer"));
    m_message->setSingleShot(true);
    m_message->setInterval(kMessageMillis);
    connect(m_message, &QTimer::timeout, this, [this] { setStatus(QString()); });
}

FileSearch::~FileSearch()
{
    if (m_shared)
        m_shared->stop.store(true); // the walk ends at its next entry, on its own thread
}

qint64 FileSearch::examinedCount() const
{
    return m_shared ? m_shared->examined.load() : 0;
}

qint64 FileSearch::walkNanoseconds() const
{
    return m_shared ? m_shared->walkNanoseconds.load() : 0;
}

void FileSearch::setStatus(const QString& text)
{
    if (text == m_status)
        return;
    m_status = text;
    emit statusTextChanged(text);
}

bool FileSearch::StartSearch(const QString& scope, const QString& pattern, const SearchOptions& options)
{
    if (m_searching)
        return false;
    if (scope.isEmpty() || pattern.isEmpty()) {
        // The message stands for two seconds; the window goes on answering meanwhile.
        setStatus(kEmptyInputText);
        m_message->start();
        return false;
    }
    m_message->stop();
    m_searching = true;
    emit searchingChanged(true);
    m_results.ResetFileList();
    m_exactName = isExactName(pattern);
    m_found = 0;
    m_taken.clear();
    m_takenFrom = 0;

    auto shared = std::make_shared<Shared>();
    m_shared = shared;
    const QString folder = scopeFolder(scope);
    files::FolderWalker::Options walk = walkOptions(pattern, options);
    const QPointer<FileSearch> self(this);
    QThread* thread = QThread::create([shared, folder, walk = std::move(walk), self]() mutable {
        QElapsedTimer clock;
        clock.start();
        HandOver handOver(shared->examined, shared->mutex, shared->found, shared->examining);
        files::FolderWalker walker(std::move(walk), shared->stop);
        walker.walk(folder, handOver);
        handOver.publish(nullptr);
        shared->examined.store(walker.examined());
        shared->walkNanoseconds.store(clock.nsecsElapsed());
        {
            QMutexLocker hold(&shared->mutex);
            shared->walked = true;
        }
        if (QCoreApplication* app = QCoreApplication::instance()) {
            QMetaObject::invokeMethod(
                app,
                [self, shared] {
                    if (self && self->m_shared == shared && self->m_searching)
                        self->takeOver();
                },
                Qt::QueuedConnection);
        }
    });
    // A walk held up in a folder of a dead network share is left to end by itself, or with the process.
    connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    thread->start(QThread::LowPriority);
    m_poll->start();
    return true;
}

void FileSearch::requestStop()
{
    if (!m_searching)
        return;
    m_shared->stop.store(true);
    finish(true);
}

void FileSearch::takeOver()
{
    if (!m_searching)
        return;
    QElapsedTimer budget;
    budget.start();
    bool walked = false;
    QString examining;
    {
        QMutexLocker hold(&m_shared->mutex);
        if (m_takenFrom >= m_taken.size()) {
            m_taken.clear();
            m_takenFrom = 0;
        }
        m_taken += m_shared->found;
        m_shared->found.clear();
        examining = m_shared->examining;
        walked = m_shared->walked;
    }
    if (!examining.isEmpty())
        setStatus(examining);
    // Runs of a few thousand: each is one insertion into the list and its box.
    constexpr qsizetype kRun = 4096;
    while (m_takenFrom < m_taken.size() && budget.elapsed() < kAppendBudgetMillis) {
        const QStringList run = m_taken.mid(m_takenFrom, kRun);
        m_takenFrom += run.size();
        m_found += static_cast<int>(run.size());
        m_results.addItems(run);
    }
    if (m_takenFrom < m_taken.size()) {
        m_more->start(); // the rest after the window's pending events
        return;
    }
    if (walked)
        finish(false);
}

void FileSearch::finish(bool stopped)
{
    m_poll->stop();
    m_more->stop();
    m_taken.clear();
    m_takenFrom = 0;
    setStatus(foundCountText(m_found));
    if (m_found == 0) {
        m_results.ResetFileList();
        m_results.setEditText(kNothingFoundText);
    } else {
        m_results.RefreshFileList();
    }
    const int found = m_found;
    m_found = 0;
    m_searching = false;
    m_exactName = false;
    emit searchingChanged(false);
    emit finished(found, stopped);
}

} // namespace vindaro::search
