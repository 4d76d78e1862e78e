// The cost of RescueMap::mark() under random marks on a DVD-sized map, the map holding
// tens of thousands of ranges as a badly scratched disc's map does.
//   rescue_map_bench [MARKS] [SIZE_BYTES]
#include "copy/RescueMap.h"

#include <QElapsedTimer>

#include <cstdio>
#include <cstdlib>
#include <random>

using namespace vindaro::copy;

int main(int argc, char** argv)
{
    const long long marks = argc > 1 ? std::atoll(argv[1]) : 1'000'000;
    const qint64 size = argc > 2 ? std::atoll(argv[2]) : qint64(8'500'000'000); // a dual-layer DVD
    std::mt19937_64 random(17);
    RescueMap map(size);
    // Sector-aligned marks of 1 to 64 sectors in any state, as a copy and a refine pass make them.
    QElapsedTimer timer;
    timer.start();
    int most = 0;
    for (long long i = 0; i < marks; ++i) {
        const qint64 offset = qint64(random() % quint64(size / 2048)) * 2048;
        const qint64 length = qint64(1 + random() % 64) * 2048;
        map.mark(offset, length, kRescueStates[random() % kRescueStates.size()]);
        most = map.rangeCount() > most ? map.rangeCount() : most;
    }
    const qint64 ns = timer.nsecsElapsed();
    std::printf(
        "rescue map: %lld random marks on %.1f GB: %.0f ns per mark; %d ranges at the end, %d at most\n",
        marks, double(size) / 1e9, double(ns) / double(marks), map.rangeCount(), most);

    // Saving and loading that map as a mapfile, as a copy does every 30 seconds.
    MapfileHeader header;
    header.creator = QStringLiteral("rescue_map_bench");
    timer.restart();
    const QByteArray text = formatMapfile(map, header);
    const qint64 formatNs = timer.nsecsElapsed();
    timer.restart();
    const MapfileResult read = parseMapfile(text, size);
    std::printf("rescue map: its mapfile (%.1f MB): written in %.1f ms, read in %.1f ms%s\n",
        double(text.size()) / 1e6, double(formatNs) / 1e6, double(timer.nsecsElapsed()) / 1e6,
        read.ok() && read.map == map ? "" : " WRONG");

    // The same number of marks in sector order, as one copy pass makes them.
    RescueMap pass(size);
    timer.restart();
    for (long long i = 0; i < marks; ++i)
        pass.mark(qint64(i) * 4096, 2048, i % 50 == 0 ? RescueState::Bad : RescueState::Copied);
    std::printf("rescue map: %lld marks in order: %.0f ns per mark; %d ranges\n", marks,
        double(timer.nsecsElapsed()) / double(marks), pass.rangeCount());
    return 0;
}
