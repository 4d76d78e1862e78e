// The arithmetic of the progress figures at its edges; the figures of a running copy are the progress
// meter's, tested with the copy engine.
#include "copy/ProgressFigures.h"

#include <gtest/gtest.h>

using namespace vindaro::copy;

namespace {

TEST(ProgressFigures, EdgesOfTheClockTheTextsAndTheBar)
{
    // Seconds added at a tick, from the second-of-minute of the last tick and of this one.
    const struct
    {
        int last, current, added;
    } ticks[] = {{59, 0, 1}, {30, 30, 1}, {58, 3, 5}, {10, 9, 59}}; // the wrap; the same second; late; early
    for (const auto& t : ticks)
        EXPECT_EQ(tickDelta(t.current, t.last), t.added) << t.last << " -> " << t.current;

    // Past what a 16-bit count held: more hours, no wrap into negative numbers; unknown: dashes.
    const std::pair<qint64, const char*> durations[] = {{0, "00:00:00"}, {61, "00:01:01"}, {3725, "01:02:05"},
        {32768, "09:06:08"}, {100000, "27:46:40"}, {-1, "--:--:--"}};
    for (const auto& [seconds, text] : durations)
        EXPECT_EQ(durationText(seconds), QLatin1String(text)) << seconds;

    // Below one byte a second, or before the first second, the times are unknown; no overflow past 4 GiB.
    EXPECT_FALSE(computeFigures(9, 1000, 10).speedKnown());
    EXPECT_EQ(computeFigures(9, 1000, 10).remainingSeconds, -1);
    EXPECT_EQ(computeFigures(9, 1000, 10).estimatedSeconds, -1);
    EXPECT_FALSE(computeFigures(5000, 10000, 0).speedKnown());
    EXPECT_EQ(computeFigures(10, 1000, 10).remainingSeconds, 990); // exactly one byte a second
    EXPECT_EQ(computeFigures(10, 1000, 10).estimatedSeconds, 1000);
    const qint64 fourGiB = qint64(4) << 30;
    EXPECT_EQ(computeFigures(fourGiB / 2, fourGiB, 1).kilobytesPerSecond, fourGiB / 2 / 1024);
    EXPECT_EQ(computeFigures(fourGiB / 2, fourGiB, 1).remainingSeconds, 1);

    // The bar's text with two decimals, and its filled part: the whole part, never past the end.
    const struct
    {
        qint64 position, length;
        const char* percent;
        int filled; // of 330
    } bars[] = {{3, 8, "37.50%", 123}, {1, 3, "33.33%", 110}, {2, 3, "66.67%", 220}, {8, 8, "100.00%", 330},
        {0, 8, "0.00%", 0}, {5, 0, "0.00%", 0}};
    for (const auto& b : bars) {
        EXPECT_EQ(percentText(b.position, b.length), QLatin1String(b.percent))
            << b.position << "/" << b.length;
        EXPECT_EQ(filledWidth(b.position, b.length, 330), b.filled) << b.position << "/" << b.length;
    }
    EXPECT_EQ(filledWidth(9, 8, 330), 330);
}

} // namespace
