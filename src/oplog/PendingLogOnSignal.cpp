#include "PendingLogOnSignal.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace vindaro::oplog {

namespace {

int g_pipe[2] = {-1, -1};
struct sigaction g_previous[NSIG];
volatile std::sig_atomic_t g_caught = 0;

extern "C" void onSignal(int signal)
{
    if (++g_caught > 1) {
        // Asked again while the log is being written (a write that hangs): end now.
        std::signal(signal, SIG_DFL);
        std::raise(signal);
        return;
    }
    const int savedErrno = errno;
    const unsigned char number = static_cast<unsigned char>(signal);
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &number, 1);
    errno = savedErrno;
}

} // namespace

PendingLogOnSignal::PendingLogOnSignal(std::function<void()> writePending, std::initializer_list<int> caught)
    : m_writePending(std::move(writePending))
{
    if (g_pipe[0] >= 0 || ::pipe2(g_pipe, O_CLOEXEC) != 0)
        return;
    g_caught = 0; // one instance per process; without a pipe the signals keep their default action
    const std::initializer_list<int> defaults = {SIGTERM, SIGINT, SIGHUP};
    for (const int signal : caught.size() > 0 ? caught : defaults) {
        if (signal <= 0 || signal >= NSIG || signal > 255
            || m_signalCount == int(sizeof m_signals / sizeof m_signals[0]))
            continue;
        struct sigaction previous
        {
        };
        if (::sigaction(signal, nullptr, &previous) != 0 || previous.sa_handler == SIG_IGN)
            continue;
        struct sigaction action
        {
        };
        action.sa_handler = onSignal;
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_RESTART;
        if (::sigaction(signal, &action, &g_previous[signal]) == 0)
            m_signals[m_signalCount++] = signal;
    }
    m_active = true;
    m_thread = std::thread([this] { waitForSignal(); });
}

PendingLogOnSignal::~PendingLogOnSignal()
{
    if (!m_active)
        return;
    for (int i = 0; i < m_signalCount; ++i)
        ::sigaction(m_signals[i], &g_previous[m_signals[i]], nullptr);
    const unsigned char stop = 0;
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &stop, 1);
    m_thread.join();
    ::close(g_pipe[0]);
    ::close(g_pipe[1]);
    g_pipe[0] = g_pipe[1] = -1;
}

void PendingLogOnSignal::waitForSignal()
{
    unsigned char number = 0;
    for (;;) {
        const ssize_t got = ::read(g_pipe[0], &number, 1);
        if (got == 1)
            break;
        if (got < 0 && errno == EINTR)
            continue;
        return;
    }
    if (number == 0)
        return; // the destructor's stop
    if (m_writePending)
        m_writePending();
    // Ended as the signal would have ended it, so the parent sees which signal it was.
    const int signal = number;
    struct sigaction action
    {
    };
    action.sa_handler = SIG_DFL;
    sigemptyset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
    sigset_t unblock;
    sigemptyset(&unblock);
    sigaddset(&unblock, signal);
    ::pthread_sigmask(SIG_UNBLOCK, &unblock, nullptr);
    ::raise(signal);
    ::_exit(128 + signal); // not reached unless the signal was held off
}

} // namespace vindaro::oplog
