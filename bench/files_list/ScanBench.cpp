// Times the add-folder scan on a generated tree and how long the UI thread is kept from its events.
// Usage: filelist_scan_bench <empty folder> [files=100000] [files per folder=500]
#include "files/FileListModel.h"
#include "files/FolderScanner.h"
#include "files/ui/FileIcons.h"
#include "files/ui/FileListCombo.h"
#include "platform/linux/LinuxVolumes.h"
#include "platform/linux/ui/LinuxShell.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <cstdio>

using namespace vindaro;

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s <empty folder> [files] [files per folder]\n", argv[0]);
        return 2;
    }
    const QString root = QString::fromLocal8Bit(argv[1]);
    const int total = argc > 2 ? std::atoi(argv[2]) : 100'000;
    const int perFolder = qMax(1, argc > 3 ? std::atoi(argv[3]) : 500);

    QElapsedTimer clock;
    clock.start();
    int made = 0;
    for (int d = 0; made < total; ++d) {
        const QString folder = root + QStringLiteral("/d%1/sub").arg(d, 4, 10, QLatin1Char('0'));
        QDir().mkpath(folder);
        for (int i = 0; i < perFolder && made < total; ++i, ++made) {
            const QString name = (i % 5 == 4) ? QStringLiteral("/f%1.vob") : QStringLiteral("/f%1.dat");
            QFile(folder + name.arg(i)).open(QIODevice::WriteOnly);
        }
    }
    std::printf("tree: %d files in %.2f s\n", made, double(clock.elapsed()) / 1000.0);

    clock.restart();
    std::atomic<bool> cancelled{false};
    qsizetype walked = 0;
    files::FolderScanner::walk(root, QStringLiteral("*.DAT"), true, cancelled, 4096,
        [&](const QStringList& batch) { walked += batch.size(); });
    std::printf("walk on the calling thread: %lld matches in %.3f s\n", static_cast<long long>(walked),
        double(clock.elapsed()) / 1000.0);

    platform::LinuxVolumes volumes;
    platform::LinuxShell shell;
    files::FileSystem fs(volumes, shell);
    files::FileListModel list(fs);
    files::FileIcons icons;
    files::FileListCombo combo(list, fs, icons);
    combo.show();

    // A 5 ms tick on the UI thread: the longest gap between ticks is the longest the window stood still.
    QElapsedTimer tickClock;
    qint64 lastTick = 0;
    qint64 longestGap = 0;
    int ticks = 0;
    QTimer tick;
    tick.setInterval(5);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        const qint64 now = tickClock.elapsed();
        longestGap = qMax(longestGap, now - lastTick);
        lastTick = now;
        ++ticks;
    });
    int batches = 0;
    qint64 firstBatchMs = -1;
    QObject::connect(&list, &QAbstractItemModel::rowsInserted, [&] {
        ++batches;
        if (firstBatchMs < 0)
            firstBatchMs = tickClock.elapsed();
    });
    qint64 scanMs = 0;
    qint64 refreshMs = 0;
    QObject::connect(&list, &files::FileListModel::scanFinished, [&](bool) {
        scanMs = tickClock.elapsed();
        // Tick on a little so the gap includes the closing refresh.
        QTimer::singleShot(20, &app, [&] {
            tick.stop();
            QApplication::quit();
        });
    });
    QObject::connect(&list, &files::FileListModel::busyChanged, [&](bool busy) {
        static qint64 started = 0;
        if (busy)
            started = tickClock.elapsed();
        else
            refreshMs = tickClock.elapsed() - started;
    });
    tickClock.start();
    tick.start();
    list.scanFolder(files::FolderChoice{root, QStringLiteral("*.DAT"), true});
    app.exec();

    std::printf("scan through the list: %lld entries in %.3f s, first entries after %lld ms, %d batches\n",
        static_cast<long long>(list.count()), double(scanMs) / 1000.0, static_cast<long long>(firstBatchMs),
        batches);
    std::printf("closing refresh (sums every file's size): %lld ms\n", static_cast<long long>(refreshMs));
    std::printf("UI thread: %d ticks of 5 ms, longest gap %lld ms (closing refresh included)\n", ticks,
        static_cast<long long>(longestGap));
    return list.count() == walked ? 0 : 1;
}
