// Times the folder walk against find on a generated tree, then a search through the main list and its
// box, with a 5 ms timer on the window's thread to catch the longest stall.
// Usage: search_bench <empty folder> [files=500000] [files per folder=500] [runs=3]
#include "files/FileListModel.h"
#include "files/FolderWalker.h"
#include "files/ui/FileIcons.h"
#include "files/ui/FileListCombo.h"
#include "platform/linux/LinuxVolumes.h"
#include "platform/linux/ui/LinuxShell.h"
#include "search/FileListResults.h"
#include "search/FileSearch.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QTimer>

#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

using namespace vindaro;

namespace {

struct Count final : files::WalkSink
{
    qint64 files = 0;
    void found(const QString&) override { ++files; }
};

// One timed walk on this thread: seconds, entries examined, files found.
struct Walked
{
    double seconds = 0;
    qint64 examined = 0;
    qint64 found = 0;
};

Walked walkOnce(const QString& root)
{
    std::atomic<bool> stop{false};
    files::FolderWalker::Options options;
    options.names = files::NameRule::lastThree(QStringLiteral("*.DAT"));
    options.includeSubfolders = true;
    files::FolderWalker walker(options, stop);
    Count count;
    QElapsedTimer clock;
    clock.start();
    walker.walk(root, count);
    return {double(clock.nsecsElapsed()) / 1e9, walker.examined(), count.files};
}

double findOnce(const QString& root)
{
    QProcess find;
    find.setStandardOutputFile(QProcess::nullDevice());
    QElapsedTimer clock;
    clock.start();
    find.start(QStringLiteral("find"), {root, QStringLiteral("-name"), QStringLiteral("*.dat")});
    find.waitForFinished(-1);
    return double(clock.nsecsElapsed()) / 1e9;
}

// Adds the time each call of the list takes to the window thread's account.
class TimedResults final : public search::SearchResults
{
public:
    explicit TimedResults(files::FileListModel& list)
        : m_real(list)
    {
    }
    qint64 refreshMs = -1;
    qint64 lastAddAt = 0;
    QElapsedTimer* clock = nullptr;

    void ResetFileList() override { m_real.ResetFileList(); }
    void addItems(const QStringList& paths) override
    {
        m_real.addItems(paths);
        lastAddAt = clock->elapsed();
    }
    void setEditText(const QString& text) override { m_real.setEditText(text); }
    void RefreshFileList() override
    {
        QElapsedTimer t;
        t.start();
        m_real.RefreshFileList();
        refreshMs = t.elapsed();
    }

private:
    search::FileListResults m_real;
};

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s <empty folder> [files] [files per folder] [runs]\n", argv[0]);
        return 2;
    }
    const QString root = QString::fromLocal8Bit(argv[1]);
    const int total = argc > 2 ? std::atoi(argv[2]) : 500'000;
    const int perFolder = qMax(1, argc > 3 ? std::atoi(argv[3]) : 500);
    const int runs = qMax(1, argc > 4 ? std::atoi(argv[4]) : 3);

    QElapsedTimer clock;
    clock.start();
    int made = 0;
    int folders = 0;
    for (int d = 0; made < total; ++d, ++folders) {
        const QByteArray folder
            = QFile::encodeName(root + QStringLiteral("/d%1/sub").arg(d, 4, 10, QLatin1Char('0')));
        QDir().mkpath(QFile::decodeName(folder));
        for (int i = 0; i < perFolder && made < total; ++i, ++made) {
            const QByteArray name = folder + "/f" + QByteArray::number(i) + (i % 5 == 4 ? ".vob" : ".dat");
            const int fd = ::open(name.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
            if (fd >= 0)
                ::close(fd);
        }
    }
    std::printf("tree: %d files in %d folders (4 in 5 named *.dat), made in %.1f s\n", made, folders * 2,
        double(clock.elapsed()) / 1000.0);

    // Warm the cache for both, then take the best of `runs`, alternating.
    walkOnce(root);
    findOnce(root);
    double bestFind = 1e9;
    Walked bestWalk{1e9, 0, 0};
    for (int r = 0; r < runs; ++r) {
        bestFind = qMin(bestFind, findOnce(root));
        const Walked w = walkOnce(root);
        if (w.seconds < bestWalk.seconds)
            bestWalk = w;
    }
    const double entries = double(bestWalk.examined);
    std::printf("find -name '*.dat':        %.3f s, %.0f entries/s (best of %d, cache warm)\n", bestFind,
        entries / bestFind, runs);
    std::printf("walker, one thread:        %.3f s, %.0f entries/s, %lld files matched (%.2f x find)\n",
        bestWalk.seconds, entries / bestWalk.seconds, static_cast<long long>(bestWalk.found),
        bestFind / bestWalk.seconds);

    // The search as the window runs it: the real list and its box, shown offscreen.
    platform::LinuxVolumes volumes;
    platform::LinuxShell shell;
    files::FileSystem fs(volumes, shell);
    files::FileListModel list(fs);
    files::FileIcons icons;
    files::FileListCombo combo(list, fs, icons);
    combo.show();
    TimedResults results(list);
    search::FileSearch search(results);

    QElapsedTimer tickClock;
    results.clock = &tickClock;
    qint64 lastTick = 0;
    qint64 longestGap = 0;
    qint64 searchEndedAt = -1;
    QTimer tick;
    tick.setInterval(5);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        const qint64 now = tickClock.elapsed();
        if (searchEndedAt < 0) // the closing refresh is reported on its own
            longestGap = qMax(longestGap, now - lastTick);
        lastTick = now;
    });
    QObject::connect(&search, &search::FileSearch::finished, [&](int, bool) {
        searchEndedAt = tickClock.elapsed();
        QTimer::singleShot(20, &app, [&] { QApplication::quit(); });
    });
    tickClock.start();
    tick.start();
    QTimer::singleShot(0, &app, [&] {
        search::SearchOptions options;
        search.StartSearch(root, QStringLiteral("*.DAT"), options);
    });
    app.exec();
    const double walkSeconds = double(search.walkNanoseconds()) / 1e9;
    std::printf(
        "search through the window: walk %.3f s on its thread (%.0f entries/s); %lld files in the list "
        "after %.3f s, search over after %.3f s\n",
        walkSeconds, double(search.examinedCount()) / walkSeconds, static_cast<long long>(list.count()),
        double(results.lastAddAt) / 1000.0, double(searchEndedAt) / 1000.0);
    std::printf("window thread: longest stall %lld ms during the search; closing refresh (sums every file's "
                "size) %lld ms\n",
        static_cast<long long>(longestGap), static_cast<long long>(results.refreshMs));

    const qsizetype listed = list.count();

    // Stop a tenth of the way in: how long from the request to the end of the search, as the window sees it.
    const int stopAfterMs = qMax(1, int(results.lastAddAt / 10));
    QSignalSpy finished(&search, &search::FileSearch::finished);
    search.StartSearch(root, QStringLiteral("*.DAT"), {});
    qint64 stopNs = -1;
    results.refreshMs = -1;
    QTimer::singleShot(stopAfterMs, &app, [&] {
        QElapsedTimer stopClock;
        stopClock.start();
        search.requestStop();
        stopNs = stopClock.nsecsElapsed();
    });
    finished.wait(60'000);
    if (!finished.isEmpty() && finished.first().at(1).toBool()) {
        std::printf("stop after %d ms: search over %.1f ms after the request, of which the list's closing "
                    "refresh %lld ms; %lld files listed by then\n",
            stopAfterMs, double(stopNs) / 1e6, static_cast<long long>(results.refreshMs),
            static_cast<long long>(list.count()));
    } else {
        std::printf("stop after %d ms: the search had ended already\n", stopAfterMs);
    }
    return listed == bestWalk.found ? 0 : 1;
}
