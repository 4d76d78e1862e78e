#include "Format.h"

namespace vindaro::files {

QString groupDigits(qint64 value)
{
    const bool negative = value < 0;
    // Work on the unsigned magnitude so the most negative value survives.
    quint64 magnitude = negative ? quint64(0) - quint64(value) : quint64(value);
    QString digits = QString::number(magnitude);
    for (qsizetype at = digits.size() - 3; at > 0; at -= 3)
        digits.insert(at, QLatin1Char(','));
    return negative ? QLatin1Char('-') + digits : digits;
}

QString groupDigitsRounded(qint64 value, qint64 divisor)
{
    Q_ASSERT(divisor > 0);
    // Quotient and remainder rather than (value + divisor / 2) / divisor, which overflows near the top.
    qint64 quotient = value / divisor;
    const qint64 remainder = value % divisor;
    if (remainder >= divisor - remainder)
        ++quotient;
    else if (-remainder >= divisor + remainder)
        --quotient;
    return groupDigits(quotient);
}

QString formatBytes(qint64 bytes)
{
    return groupDigits(bytes) + QStringLiteral("字节");
}

QString formatWholeMegabytes(qint64 bytes)
{
    return groupDigits(bytes / 1024 / 1024);
}

QString formatKBps(qint64 kilobytesPerSecond)
{
    return groupDigits(kilobytesPerSecond) + QStringLiteral("KB/秒");
}

QString formatDuration(qint64 seconds)
{
    // Negative counts cannot come from the timer; show them as zero rather than as "-1:-1:-1".
    if (seconds < 0)
        seconds = 0;
    const auto two = [](qint64 v) { return QStringLiteral("%1").arg(v, 2, 10, QLatin1Char('0')); };
    return two(seconds / 3600) + QLatin1Char(':') + two((seconds / 60) % 60) + QLatin1Char(':')
        + two(seconds % 60);
}

} // namespace vindaro::files
