#include "ThreadedCopyHost.h"

#include <memory>

namespace vindaro::copy {

namespace {

constexpr int kRefreshMilliseconds = 30; // about the display rate

template<typename T> struct Reply
{
    T value{};
    bool done = false; // guarded by the host's mutex
};

} // namespace

ThreadedCopyHost::ThreadedCopyHost(CopyHost& uiHost, QObject* parent)
    : QObject(parent)
    , m_uiHost(uiHost)
    , m_workerContext(new QObject)
{
    m_thread.setObjectName(QStringLiteral("copy worker"));
    m_workerContext->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_workerContext, &QObject::deleteLater);
    m_refreshTimer.setInterval(kRefreshMilliseconds);
    connect(&m_refreshTimer, &QTimer::timeout, this, &ThreadedCopyHost::flushProgress);
    m_thread.start();
}

ThreadedCopyHost::~ThreadedCopyHost()
{
    shutdown();
}

bool ThreadedCopyHost::onUiThread() const
{
    return QThread::currentThread() == thread();
}

bool ThreadedCopyHost::run(std::function<int()> job)
{
    Q_ASSERT(onUiThread());
    {
        QMutexLocker lock(&m_mutex);
        if (m_aborting)
            return false;
    }
    if (m_busy)
        return false;
    m_busy = true;
    m_progressDirty = false;
    m_refreshTimer.start();
    QMetaObject::invokeMethod(
        m_workerContext,
        [this, job = std::move(job)] {
            const int result = job();
            QMetaObject::invokeMethod(
                this,
                [this, result] {
                    m_refreshTimer.stop();
                    flushProgress();
                    m_busy = false;
                    emit jobFinished(result);
                },
                Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
    return true;
}

void ThreadedCopyHost::shutdown()
{
    {
        QMutexLocker lock(&m_mutex);
        m_aborting = true;
        m_answered.wakeAll();
    }
    m_refreshTimer.stop();
    if (m_thread.isRunning()) {
        m_thread.quit(); // after the job in progress, which the caller has asked to stop
        m_thread.wait();
    }
}

bool ThreadedCopyHost::isShuttingDown()
{
    QMutexLocker lock(&m_mutex);
    return m_aborting;
}

void ThreadedCopyHost::flushProgress()
{
    if (!m_progressDirty.exchange(false))
        return;
    ++m_refreshes;
    m_uiHost.progress(m_latestPosition, m_latestLength);
}

template<typename T> T ThreadedCopyHost::callOnUi(std::function<T()> call, T fallback)
{
    if (onUiThread())
        return call();
    auto reply = std::make_shared<Reply<T>>();
    {
        QMutexLocker lock(&m_mutex);
        if (m_aborting)
            return fallback;
    }
    QMetaObject::invokeMethod(
        this,
        [this, reply, call = std::move(call)] {
            {
                QMutexLocker lock(&m_mutex);
                if (m_aborting)
                    return; // the worker has been given its fallback already
            }
            flushProgress(); // older progress first: the call may clear the bar
            T value = call();
            QMutexLocker lock(&m_mutex);
            reply->value = std::move(value);
            reply->done = true;
            m_answered.wakeAll();
        },
        Qt::QueuedConnection);
    QMutexLocker lock(&m_mutex);
    while (!reply->done && !m_aborting)
        m_answered.wait(&m_mutex);
    return reply->done ? reply->value : fallback;
}

void ThreadedCopyHost::runVoid(std::function<void()> call)
{
    runOnUi(std::move(call));
}

bool ThreadedCopyHost::runOnUi(std::function<void()> call)
{
    return callOnUi<bool>(
        [call = std::move(call)] {
            call();
            return true;
        },
        false);
}

void ThreadedCopyHost::postToUi(std::function<void()> call)
{
    if (onUiThread()) {
        call();
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this, call = std::move(call)] {
            flushProgress();
            call();
        },
        Qt::QueuedConnection);
}

int ThreadedCopyHost::ask(const platform::MessageBox& question)
{
    // Without a window to ask, the answer that keeps the user's files: No (keep the partial copy).
    return callOnUi<int>([this, question] { return m_uiHost.ask(question); }, platform::kAnswerNo);
}

void ThreadedCopyHost::notify(const platform::MessageBox& notice)
{
    runVoid([this, notice] { m_uiHost.notify(notice); });
}

ContinueChoice ThreadedCopyHost::askContinueCopy(const QString& source, const QString& destination)
{
    return callOnUi<ContinueChoice>(
        [this, source, destination] { return m_uiHost.askContinueCopy(source, destination); },
        ContinueChoice::GiveUp);
}

ExistingFileAnswer ThreadedCopyHost::askExistingFile(const QString& source, const QString& destination)
{
    return callOnUi<ExistingFileAnswer>(
        [this, source, destination] { return m_uiHost.askExistingFile(source, destination); },
        ExistingFileAnswer{});
}

void ThreadedCopyHost::log(const QString& entry)
{
    if (onUiThread()) {
        m_uiHost.log(entry);
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this, entry] {
            flushProgress();
            m_uiHost.log(entry);
        },
        Qt::QueuedConnection);
}

void ThreadedCopyHost::progress(qint64 position, qint64 sourceLength)
{
    m_latestPosition = position;
    m_latestLength = sourceLength;
    m_progressDirty = true; // after the figures, so a reader that sees the flag sees them
    if (onUiThread())
        flushProgress();
}

void ThreadedCopyHost::modeChanged(CopyMode mode)
{
    runVoid([this, mode] { m_uiHost.modeChanged(mode); });
}

ThreadedBatchHost::ThreadedBatchHost(BatchHost& uiHost, CopyState* state)
    : m_uiHost(uiHost)
    , m_state(state)
    , m_threaded(uiHost)
{
}

void ThreadedBatchHost::shutdown()
{
    if (m_state) {
        // The batch stops after the block in hand, and every file that would still start stops at once.
        m_state->cancelHeld = true;
        m_state->stopRequested = true;
        m_state->cancelRequested = true;
    }
    m_threaded.shutdown();
}

QString ThreadedBatchHost::chooseBatchFolder(bool& copyToSameDir)
{
    struct Choice
    {
        QString folder;
        bool sameDir = false;
    };
    auto choice = std::make_shared<Choice>();
    m_threaded.runOnUi([this, choice] { choice->folder = m_uiHost.chooseBatchFolder(choice->sameDir); });
    copyToSameDir = choice->sameDir;
    return choice->folder;
}

BatchExistingChoice ThreadedBatchHost::askBatchExistingFile(const QString& source, const QString& destination)
{
    auto answer = std::make_shared<BatchExistingChoice>(BatchExistingChoice::EndBatch);
    m_threaded.runOnUi([this, answer, source, destination] {
        *answer = m_uiHost.askBatchExistingFile(source, destination);
    });
    return *answer;
}

void ThreadedBatchHost::startAnimation()
{
    m_threaded.postToUi([this] { m_uiHost.startAnimation(); });
}

void ThreadedBatchHost::stopAnimation()
{
    m_threaded.postToUi([this] { m_uiHost.stopAnimation(); });
}

void ThreadedBatchHost::showFile(const QString& sourceText, const QString& destinationText,
    const QString& countText, const QString& totalText)
{
    m_threaded.postToUi([this, sourceText, destinationText, countText, totalText] {
        m_uiHost.showFile(sourceText, destinationText, countText, totalText);
    });
}

} // namespace vindaro::copy
