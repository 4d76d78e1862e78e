#pragma once

#include <QString>
#include <QtGlobal>

// The program's number, size and time texts, shared by every window.
namespace vindaro::files {

// A whole number with comma digit groups and at least one digit: 0 -> "0", 1234567 -> "1,234,567".
QString groupDigits(qint64 value);
// value / divisor as "##,#0" shows a fraction: rounded to the nearest whole, halves away from zero, then
// grouped: (2047999, 1024) -> "2,000", (1024512, 1024) -> "1,001". `divisor` is positive.
QString groupDigitsRounded(qint64 value, qint64 divisor);
// "1,234字节"
QString formatBytes(qint64 bytes);
// Whole megabytes (bytes / 1024 / 1024, truncated), grouped: 734003200 -> "700".
QString formatWholeMegabytes(qint64 bytes);
// "1,024KB/秒"
QString formatKBps(qint64 kilobytesPerSecond);
// hh:mm:ss, two digits each; hours go beyond two digits rather than wrap.
QString formatDuration(qint64 seconds);

} // namespace vindaro::files
