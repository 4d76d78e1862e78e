#include "DamageReport.h"

#include "MpegClock.h"

#include <cmath>

namespace vindaro::copy {

namespace {

std::vector<DamageHole> holesOf(const RescueMap& map)
{
    std::vector<DamageHole> holes;
    bool open = false;
    for (const RescueRange& range : map.ranges()) {
        if (range.state == RescueState::Copied) {
            open = false;
            continue;
        }
        if (!open)
            holes.push_back(DamageHole{range.offset, 0, 0, 0, std::nullopt, std::nullopt, false});
        open = true;
        DamageHole& hole = holes.back();
        hole.length += range.length;
        (range.state == RescueState::Untried ? hole.skippedBytes : hole.badBytes) += range.length;
        hole.atEnd = range.end() == map.size();
    }
    return holes;
}

// Fills in the playing times of `file`'s holes from its destination's clock; false when the destination
// cannot be read or holds no pack header near its start.
bool addPlayingTimes(DamagedFile& file, platform::FileLayer& files)
{
    platform::IoResult io;
    const qint64 length = files.length(file.destination, io);
    if (length <= 0)
        return false;
    const std::unique_ptr<platform::RandomAccessFile> in = files.openForReading(file.destination, io);
    if (!in)
        return false;
    MpegClock clock(*in, length);
    if (!clock.firstPack())
        return false;
    for (DamageHole& hole : file.holes) {
        if (hole.offset == 0) {
            hole.fromSecond = 0;
        } else if (const auto before = clock.packAtOrBefore(hole.offset - 1)) {
            if (const auto seconds = clock.secondsAt(*before))
                hole.fromSecond = qint64(std::floor(*seconds));
        }
        if (hole.end() < length) {
            if (const auto after = clock.packAtOrAfter(hole.end())) {
                if (const auto seconds = clock.secondsAt(*after))
                    hole.toSecond = qint64(std::ceil(*seconds));
            }
        }
        // A clock that runs backwards across the hole tells nothing.
        if (hole.fromSecond && hole.toSecond && *hole.toSecond < *hole.fromSecond) {
            hole.fromSecond.reset();
            hole.toSecond.reset();
        }
    }
    in->close();
    return true;
}

} // namespace

qint64 DamageReport::missingBytes() const
{
    qint64 total = 0;
    for (const DamagedFile& file : files)
        total += file.missingBytes();
    return total;
}

DamageReport makeDamageReport(
    const std::vector<DamageInput>& copies, const QStringList& notReached, platform::FileLayer* files)
{
    DamageReport report;
    report.notReached = notReached;
    for (const DamageInput& copy : copies) {
        if (copy.map.isComplete())
            continue;
        DamagedFile file;
        file.source = copy.source;
        file.destination = copy.destination;
        file.sourceSize = copy.sourceSize;
        file.holes = holesOf(copy.map);
        for (const DamageHole& hole : file.holes) {
            file.badBytes += hole.badBytes;
            file.skippedBytes += hole.skippedBytes;
        }
        if (files
            && (MpegClock::isProgramStreamName(copy.source)
                || MpegClock::isProgramStreamName(copy.destination)))
            file.timed = addPlayingTimes(file, *files);
        report.files.push_back(std::move(file));
    }
    return report;
}

} // namespace vindaro::copy
