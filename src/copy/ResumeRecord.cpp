#include "ResumeRecord.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vindaro::copy {

qint64 roundHalfEven(double value)
{
    return qint64(std::nearbyint(value)); // the default rounding mode is to nearest, ties to even
}

ResumeRecord makeResumeRecord(
    qint64 destinationLength, qint64 position, qint64 sourceLength, int elapsedSeconds)
{
    ResumeRecord record;
    record.continuePosition = destinationLength;
    record.copiedPosition = position;
    record.elapsedSeconds = elapsedSeconds;
    // A copy stopped early in a long source can estimate more seconds than an int holds: the figure is
    // held at the largest count rather than wrapped into a negative one.
    const auto count = [](double value) {
        return int(std::min<qint64>(roundHalfEven(value), std::numeric_limits<int>::max()));
    };
    if (elapsedSeconds > 0 && position > 0) {
        const double bytesPerSecond = double(position) / elapsedSeconds;
        record.estimatedSeconds = count(double(sourceLength) / bytesPerSecond);
        record.speedKBps = count(double(position) / 1024.0 / elapsedSeconds);
    }
    return record;
}

} // namespace vindaro::copy
