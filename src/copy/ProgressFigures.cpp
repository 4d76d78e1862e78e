#include "ProgressFigures.h"

#include "files/Format.h"

#include <algorithm>

namespace vindaro::copy {

int tickDelta(int currentSecond, int lastSecond)
{
    int delta = currentSecond - lastSecond;
    if (delta < 0)
        delta += 60; // the minute wrapped
    if (delta == 0)
        delta = 1;
    return delta;
}

ProgressFigures computeFigures(qint64 position, qint64 sourceLength, qint64 elapsedSeconds)
{
    ProgressFigures figures;
    if (elapsedSeconds <= 0)
        return figures;
    figures.bytesPerSecond = std::max<qint64>(0, position) / elapsedSeconds;
    figures.kilobytesPerSecond = (std::max<qint64>(0, position) / 1024) / elapsedSeconds;
    if (figures.bytesPerSecond > 0) {
        figures.remainingSeconds = std::max<qint64>(0, sourceLength - position) / figures.bytesPerSecond;
        figures.estimatedSeconds = std::max<qint64>(0, sourceLength) / figures.bytesPerSecond;
    }
    return figures;
}

QString durationText(qint64 seconds)
{
    if (seconds < 0)
        return QStringLiteral("--:--:--");
    return files::formatDuration(seconds);
}

QString percentText(qint64 position, qint64 sourceLength)
{
    const double fraction = sourceLength > 0 ? double(position) / double(sourceLength) : 0.0;
    return QString::number(fraction * 100.0, 'f', 2) + QLatin1Char('%');
}

int filledWidth(qint64 position, qint64 sourceLength, int barWidth)
{
    if (sourceLength <= 0 || position <= 0 || barWidth <= 0)
        return 0;
    const double fraction = double(position) / double(sourceLength);
    return std::clamp(static_cast<int>(fraction * barWidth), 0, barWidth);
}

} // namespace vindaro::copy
