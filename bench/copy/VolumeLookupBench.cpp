// Times the drive lookups a batch copy makes for each file (the source's drive kind and name,
// the destination's free space) on the machine's real mount table.
//   volume_lookup_bench [FILES] [FOLDER]
#include "copy/VolumeDriveFacts.h"
#include "platform/linux/LinuxVolumes.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTextStream>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const int files = args.size() > 1 ? args.at(1).toInt() : 10000;
    const QString folder = args.size() > 2 ? args.at(2) : QDir::tempPath();

    vindaro::platform::LinuxVolumes volumes;
    vindaro::copy::VolumeDriveFacts drives(volumes);
    QElapsedTimer timer;
    timer.start();
    qint64 checksum = 0; // keeps the calls from being optimised away
    for (int i = 0; i < files; ++i) {
        const QString source = folder + QStringLiteral("/file%1.dat").arg(i);
        checksum += drives.driveType(source);
        checksum += drives.driveName(source).size();
        checksum += drives.freeBytes(folder) >= 0 ? 1 : 0;
    }
    const qint64 ns = timer.nsecsElapsed();
    QTextStream(stdout) << files << " files: " << ns / 1'000'000 << " ms, " << ns / 1000 / qMax(1, files)
                        << " us per file (checksum " << checksum << ")\n";
    return 0;
}
