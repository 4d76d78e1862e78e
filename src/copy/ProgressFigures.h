#pragma once

#include <QString>
#include <QtGlobal>

namespace vindaro::copy {

// The arithmetic behind the copy window's progress figures, apart from any widget.

// Seconds to add at a one-second tick, from the second-of-minute (0..59) of this tick and of the one
// before. The minute wrapping (59 -> 0) adds 60; a tick in the same second as the last one still counts 1,
// so a late timer never stalls the elapsed time.
int tickDelta(int currentSecond, int lastSecond);

// What the one-second tick shows, all in whole numbers.
struct ProgressFigures
{
    qint64 bytesPerSecond = 0; // position / elapsed
    qint64 remainingSeconds = -1; // (length - position) / speed; -1 while the speed is not known
    qint64 estimatedSeconds = -1; // length / speed; -1 while the speed is not known
    qint64 kilobytesPerSecond = 0; // (position / 1024) / elapsed

    bool speedKnown() const { return bytesPerSecond > 0; }
};

// Figures for a copy at `position` of a `sourceLength`-byte source after `elapsedSeconds`. Until a whole
// byte per second has been copied (position < elapsed, or no second counted yet) the speed is 0 and the
// remaining and estimated times are unknown rather than a division by zero.
ProgressFigures computeFigures(qint64 position, qint64 sourceLength, qint64 elapsedSeconds);

// A duration for the time labels: "hh:mm:ss". The counts here are 64-bit, so nine hours and more (past
// what a 16-bit second count could hold) simply show more hours: 32768 s is "09:06:08", 100000 s is
// "27:46:40". An unknown time (negative) shows "--:--:--".
QString durationText(qint64 seconds);

// The progress bar's text: position / length as a percentage with two decimals, "37.50%". "0.00%" for an
// empty or unknown length.
QString percentText(qint64 position, qint64 sourceLength);

// How many of `barWidth` units the bar fills: the whole part of position / length x width, within
// [0, barWidth].
int filledWidth(qint64 position, qint64 sourceLength, int barWidth);

} // namespace vindaro::copy
