#include "ResumeRecord.h"

#include <cmath>

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
    if (elapsedSeconds > 0 && position > 0) {
        const double bytesPerSecond = double(position) / elapsedSeconds;
        record.estimatedSeconds = int(roundHalfEven(double(sourceLength) / bytesPerSecond));
        record.speedKBps = int(roundHalfEven(double(position) / 1024.0 / elapsedSeconds));
    }
    return record;
}

} // namespace vindaro::copy
