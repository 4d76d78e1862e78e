#pragma once

#include "BatchCopier.h"
#include "CopyHost.h"
#include "CopyState.h"

#include <QMutex>
#include <QObject>
#include <QThread>
#include <QTimer>
#include <QWaitCondition>

#include <atomic>
#include <functional>

namespace vindaro::copy {

// Runs copy jobs on a worker thread and stands in, on that thread, for a CopyHost that lives on the UI
// thread (the copy window).
//
// Promises:
// - Questions, notices, choice dialogs and state switches run on the UI thread while the worker waits for
//   the answer; the UI thread never waits for the worker, so a read that hangs for minutes leaves the
//   window fully usable (pause, cancel and the sliders act through CopyState, between blocks).
// - Log entries are handed over without waiting, in order with everything else.
// - Progress is coalesced: progress() only keeps the latest position, and the UI host is refreshed
//   at most once per refresh interval while a job runs, plus once before every other call to the UI host
//   (so a switch to idle that clears the bar is never overdrawn by an older position) and once when the
//   job ends. A copy of a million tiny blocks redraws the window a few dozen times a second, not a million.
// - shutdown() answers every pending and later question with its default (No, give up) without showing
//   it, and waits for the job to return; whoever calls it must have asked the copy to stop.
class ThreadedCopyHost final : public QObject, public CopyHost
{
    Q_OBJECT

public:
    // `uiHost` must outlive this object; both live on the calling (UI) thread.
    explicit ThreadedCopyHost(CopyHost& uiHost, QObject* parent = nullptr);
    ~ThreadedCopyHost() override;

    // UI thread. Starts `job` on the worker thread; false while another job runs or after shutdown().
    // jobFinished(result) follows on the UI thread with what the job answered.
    bool run(std::function<int()> job);
    bool isBusy() const { return m_busy; }
    void shutdown();
    bool isShuttingDown(); // any thread: shutdown() has begun
    void setRefreshInterval(int milliseconds) { m_refreshTimer.setInterval(milliseconds); }
    int progressRefreshes() const { return m_refreshes; } // calls made to the UI host's updateProgress
    void flushProgress(); // hands the latest position to the UI host, if it changed

    // For hosts that build on this one (the batch). Any thread.
    // Runs `call` on the UI thread (at once when called there) and waits until it has returned; false when
    // it was not run because shutdown() has begun. shutdown() can end the wait while `call` still runs (in a
    // modal dialog, say), so a call that leaves a result must keep it in storage it shares with the caller,
    // never on the waiting thread's stack.
    bool runOnUi(std::function<void()> call);
    // Hands `call` to the UI thread without waiting, in order with every other call, as log entries are.
    void postToUi(std::function<void()> call);

    // CopyHost, called on the worker thread (called on the UI thread, each goes straight to the UI host).
    int ask(const platform::MessageBox& question) override;
    void notify(const platform::MessageBox& notice) override;
    ContinueChoice askContinueCopy(const QString& source, const QString& destination) override;
    ExistingFileAnswer askExistingFile(const QString& source, const QString& destination) override;
    void log(const QString& entry) override;
    void progress(qint64 position, qint64 sourceLength) override;
    void modeChanged(CopyMode mode) override;

signals:
    void jobFinished(int result);

private:
    // Runs `call` on the UI thread and waits for its result; `fallback` once shutdown() has begun.
    template<typename T> T callOnUi(std::function<T()> call, T fallback);
    void runVoid(std::function<void()> call);
    bool onUiThread() const;

    CopyHost& m_uiHost;
    QThread m_thread;
    QObject* m_workerContext; // lives on m_thread; deleted when the thread finishes
    QTimer m_refreshTimer;
    bool m_busy = false; // UI thread only
    int m_refreshes = 0; // UI thread only

    std::atomic<qint64> m_latestPosition{0};
    std::atomic<qint64> m_latestLength{0};
    std::atomic<bool> m_progressDirty{false};

    QMutex m_mutex; // guards m_aborting and the replies of waiting calls
    QWaitCondition m_answered;
    bool m_aborting = false;
};

// The batch's host on the worker thread: the single-copy calls go through a ThreadedCopyHost, and the
// batch's own calls are marshalled the same way to the batch window on the UI thread. The promises of
// ThreadedCopyHost hold for all of them; in addition, the file labels and the animation are handed over
// without waiting (nothing comes back from them), and after shutdown() the folder choice answers "none"
// (the batch does not start) and the existing-file question ends the batch.
class ThreadedBatchHost final : public BatchHost
{
public:
    // `uiHost` (and `state`, if given) must outlive this object; both hosts live on the calling (UI)
    // thread.
    explicit ThreadedBatchHost(BatchHost& uiHost, CopyState* state = nullptr);

    ThreadedCopyHost& threaded() { return m_threaded; } // run(), isBusy(), shutdown(), jobFinished

    int ask(const platform::MessageBox& question) override { return m_threaded.ask(question); }
    void notify(const platform::MessageBox& notice) override { m_threaded.notify(notice); }
    ContinueChoice askContinueCopy(const QString& source, const QString& destination) override
    {
        return m_threaded.askContinueCopy(source, destination);
    }
    ExistingFileAnswer askExistingFile(const QString& source, const QString& destination) override
    {
        return m_threaded.askExistingFile(source, destination);
    }
    void log(const QString& entry) override { m_threaded.log(entry); }
    void progress(qint64 position, qint64 sourceLength) override
    {
        m_threaded.progress(position, sourceLength);
    }
    void modeChanged(CopyMode mode) override { m_threaded.modeChanged(mode); }

    QString chooseBatchFolder(bool& copyToSameDir) override;
    BatchExistingChoice askBatchExistingFile(const QString& source, const QString& destination) override;
    // Answers every question from here on with its default and waits for the batch's job, which stops
    // before the next file's first block: no file starts with no window to show it.
    void shutdown();
    void startAnimation() override;
    void stopAnimation() override;
    void showFile(const QString& sourceText, const QString& destinationText, const QString& countText,
        const QString& totalText) override;

private:
    BatchHost& m_uiHost;
    CopyState* m_state; // may be null
    ThreadedCopyHost m_threaded;
};

} // namespace vindaro::copy
