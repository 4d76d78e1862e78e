// A burst of file changes (an `rm -rf` of a big tree) through the real monitor into the shown log window:
// how long until all are logged, the longest the window's thread went without handling its events, and
// the peak memory.
// Usage: oplog_burst_bench <empty folder> [files=100000] [files per folder=1000] [shown|hidden]
#include "oplog/OperationLog.h"
#include "oplog/ui/frmSystem.h"
#include "platform/linux/InotifyChangeMonitor.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <thread>
#include <time.h>
#include <unistd.h>

using namespace vindaro;

namespace {

// A line of /proc/self/status in kB ("VmHWM", "VmRSS").
long statusKb(const char* key)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray prefix = QByteArray(key) + ':';
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(prefix))
            return line.mid(prefix.size()).trimmed().split(' ').value(0).toLong();
    }
    return -1;
}

// CPU time of the calling thread in microseconds: set against the wall clock, it tells a stall of the
// program's own from one where the thread waited for a core (the machine is shared).
qint64 threadCpuMicroseconds()
{
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return qint64(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s <empty folder> [files] [files per folder] [shown|hidden]\n", argv[0]);
        return 2;
    }
    const QString base = QString::fromLocal8Bit(argv[1]);
    const int total = argc > 2 ? std::atoi(argv[2]) : 100'000;
    const int perFolder = qMax(1, argc > 3 ? std::atoi(argv[3]) : 1000);
    const bool shown = argc <= 4 || qstrcmp(argv[4], "hidden") != 0; // the window is hidden most of a run
    const QString root = base + QStringLiteral("/watched");
    const QString logPath = base + QStringLiteral("/OperationNotes.log");

    QList<QByteArray> files;
    QList<QByteArray> folders;
    files.reserve(total);
    for (int made = 0, d = 0; made < total; ++d) {
        const QString folder = root + QStringLiteral("/d%1").arg(d, 4, 10, QLatin1Char('0'));
        QDir().mkpath(folder);
        folders << QFile::encodeName(folder);
        for (int i = 0; i < perFolder && made < total; ++i, ++made) {
            files << QFile::encodeName(folder + QStringLiteral("/f%1.dat").arg(i));
            const int fd = ::open(files.last().constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
            if (fd >= 0)
                ::close(fd);
        }
    }
    const qint64 expected = files.size() + folders.size();

    oplog::OperationLogOptions options;
    options.logFilePath = logPath;
    oplog::OperationLog log(options);
    platform::InotifyMonitorOptions monitorOptions;
    monitorOptions.roots = {root};
    monitorOptions.mountInfoPath.clear();
    platform::InotifyChangeMonitor monitor(monitorOptions);
    oplog::ui::frmSystem window(log, &monitor);
    if (shown)
        window.show();
    std::printf("log window %s\n", shown ? "shown" : "hidden");
    QElapsedTimer clock;
    clock.start();
    while (!monitor.isReady())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    std::printf("watching %d folders after %lld ms\n", monitor.watchedFolders(), clock.elapsed());
    const long rssBefore = statusKb("VmRSS");

    qint64 logged = 0;
    QObject::connect(&log, &oplog::OperationLog::entriesAppended, &app,
        [&logged](const QString& text) { logged += text.count(QStringLiteral("\r\n")); });

    // The window's thread: a 1 ms timer whose longest gap is the longest stall, with the CPU time the
    // thread spent in that gap.
    qint64 longestStallMs = 0;
    qint64 longestStallCpuUs = 0;
    qint64 longestBusyUs = 0;
    qint64 cpuAtTick = 0;
    QElapsedTimer sinceTick;
    QTimer meter;
    meter.setTimerType(Qt::PreciseTimer);
    meter.setInterval(1);
    QObject::connect(&meter, &QTimer::timeout, &app, [&] {
        const qint64 gap = sinceTick.restart();
        const qint64 cpu = threadCpuMicroseconds();
        if (gap > longestStallMs) {
            longestStallMs = gap;
            longestStallCpuUs = cpu - cpuAtTick;
        }
        longestBusyUs = qMax(longestBusyUs, cpu - cpuAtTick);
        cpuAtTick = cpu;
    });

    std::atomic<bool> removed{false};
    QElapsedTimer burst;
    burst.start();
    sinceTick.start();
    cpuAtTick = threadCpuMicroseconds();
    meter.start();
    std::thread remover([&] {
        for (const QByteArray& file : std::as_const(files))
            ::unlink(file.constData());
        for (const QByteArray& folder : std::as_const(folders))
            ::rmdir(folder.constData());
        removed = true;
    });
    qint64 removedMs = -1;
    qint64 lastProgressMs = 0;
    qint64 lastLogged = -1;
    for (;;) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        if (removed && removedMs < 0)
            removedMs = burst.elapsed();
        const qint64 accounted = logged + log.changeQueue().summedUp();
        if (removed && log.changeQueue().isEmpty() && accounted >= expected)
            break;
        if (logged != lastLogged) {
            lastLogged = logged;
            lastProgressMs = burst.elapsed();
        } else if (burst.elapsed() - lastProgressMs > 10000) {
            std::printf("gave up: no entry for 10 s\n");
            break;
        }
    }
    const qint64 allLoggedMs = burst.elapsed();
    meter.stop();
    remover.join();

    std::printf("burst: %lld files and %lld folders removed in %lld ms\n", qint64(files.size()),
        qint64(folders.size()), removedMs);
    std::printf("all in the log after: %lld ms (%lld entries, %lld summed up as folder updates)\n",
        allLoggedMs, logged, log.changeQueue().summedUp());
    std::printf("longest stall of the window's thread: %lld ms (of which %lld ms on the CPU; the longest "
                "time on the CPU between two ticks: %lld ms)\n",
        longestStallMs, longestStallCpuUs / 1000, longestBusyUs / 1000);
    std::printf("RSS before the burst: %ld kB, peak RSS: %ld kB\n", rssBefore, statusKb("VmHWM"));
    std::printf("running text kept in memory: %lld characters (the rest written ahead)\n",
        qint64(log.runningText().size()));
    window.Unload();
    QDir(root).removeRecursively();
    QFile::remove(logPath);
    return 0;
}
