#pragma once

#include <functional>
#include <initializer_list>
#include <thread>

namespace vindaro::oplog {

// Writes what the log holds when the program is ended by a signal it can catch (SIGTERM, SIGINT and
// SIGHUP by default), then ends it as the signal would have. The handler only writes the signal's number
// to a pipe; a thread of its own waits on the pipe, runs `writePending` and raises the signal again with
// its default action, so it works even while the window's thread is busy. A signal the process was told to
// ignore (nohup) stays ignored. One instance per process; the destructor puts the old handlers back.
class PendingLogOnSignal
{
public:
    explicit PendingLogOnSignal(std::function<void()> writePending, std::initializer_list<int> caught = {});
    ~PendingLogOnSignal();
    PendingLogOnSignal(const PendingLogOnSignal&) = delete;
    PendingLogOnSignal& operator=(const PendingLogOnSignal&) = delete;

    bool isActive() const { return m_active; }

private:
    void waitForSignal();

    std::function<void()> m_writePending;
    int m_signals[8] = {};
    int m_signalCount = 0;
    bool m_active = false;
    std::thread m_thread;
};

} // namespace vindaro::oplog
