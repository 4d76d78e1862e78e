#pragma once

#include "copy/CopyHost.h"

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
// - yield() does nothing: the UI thread runs on its own.
// - Progress is coalesced: updateProgress() only keeps the latest position, and the UI host is refreshed
//   at most once per refresh interval while a job runs, plus once before every other call to the UI host
//   (so a switch to idle that clears the bar is never overdrawn by an older position) and once when the
//   job ends. A copy of a million tiny blocks redraws the window a few dozen times a second, not a million.
// - shutdown() answers every pending and later question with its default (No, OK, give up) without
//   showing it, and waits for the job to return; whoever calls it must have asked the copy to stop.
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
    void setRefreshInterval(int milliseconds) { m_refreshTimer.setInterval(milliseconds); }
    int progressRefreshes() const { return m_refreshes; } // calls made to the UI host's updateProgress
    void flushProgress(); // hands the latest position to the UI host, if it changed

    // CopyHost, called on the worker thread (called on the UI thread, each goes straight to the UI host).
    int showBox(const platform::MessageBox& box) override;
    void log(const QString& entry) override;
    void yield() override { }
    void enterCopyingState() override;
    void enterIdleState() override;
    void resetAfterCancel() override;
    void stopTimer() override;
    void updateProgress(qint64 position, qint64 sourceLength) override;
    void showCopiedBytes(qint64 bytes) override;
    QString estimatedText() override;
    QString throughputText() override;
    int askContinueCopy(const QString& source, const QString& destination) override;
    int askExistingFile(const QString& source, const QString& destination, QString& newName) override;
    void stayPaused() override;

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

} // namespace vindaro::copy
