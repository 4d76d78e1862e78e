#include "copy/ProgressFigures.h"
#include "files/Format.h"

#include <gtest/gtest.h>

using namespace vindaro::copy;

namespace {

struct TickCase
{
    int last;
    int current;
    int added;
};

class TickDelta : public ::testing::TestWithParam<TickCase>
{
};

TEST_P(TickDelta, CountsWallClockSecondsFromTheSecondOfMinute)
{
    EXPECT_EQ(tickDelta(GetParam().current, GetParam().last), GetParam().added);
}

INSTANTIATE_TEST_SUITE_P(MinuteWrap, TickDelta,
    ::testing::Values(TickCase{57, 58, 1}, TickCase{58, 59, 1}, TickCase{59, 0, 1}, TickCase{0, 1, 1},
        TickCase{30, 30, 1}, // a tick in the same second still counts one
        TickCase{58, 3, 5}, // a late tick across the wrap
        TickCase{10, 9, 59})); // the clock read a second early: almost a whole minute

TEST(TickDelta, TicksAroundTheWrapAddOneEach)
{
    int elapsed = 0;
    int last = 57;
    for (int second : {58, 59, 0, 1, 1}) {
        elapsed += tickDelta(second, last);
        last = second;
    }
    EXPECT_EQ(elapsed, 5);
}

TEST(DurationText, HoursMinutesSeconds)
{
    EXPECT_EQ(durationText(0), "00:00:00");
    EXPECT_EQ(durationText(7), "00:00:07");
    EXPECT_EQ(durationText(45), "00:00:45");
    EXPECT_EQ(durationText(61), "00:01:01");
    EXPECT_EQ(durationText(3725), "01:02:05");
    // Past what a 16-bit count held: more hours, no wrap into negative numbers.
    EXPECT_EQ(durationText(32768), "09:06:08");
    EXPECT_EQ(durationText(100000), "27:46:40");
    EXPECT_EQ(durationText(-1), "--:--:--");
}

TEST(ComputeFigures, ThroughputIsWholeKilobytesPerSecond)
{
    const ProgressFigures f = computeFigures(10485761, 20971522, 10);
    EXPECT_EQ(vindaro::files::formatKBps(f.kilobytesPerSecond), "1,024KB/秒");
    EXPECT_EQ(f.bytesPerSecond, 1048576);
    EXPECT_EQ(f.remainingSeconds, 10); // (20971522 - 10485761) / 1048576, whole
    EXPECT_EQ(f.estimatedSeconds, 20);
}

TEST(ComputeFigures, SpeedBelowOneBytePerSecondLeavesTimesUnknown)
{
    const ProgressFigures slow = computeFigures(9, 1000, 10);
    EXPECT_FALSE(slow.speedKnown());
    EXPECT_EQ(slow.remainingSeconds, -1);
    EXPECT_EQ(slow.estimatedSeconds, -1);
    EXPECT_EQ(slow.kilobytesPerSecond, 0);
    EXPECT_EQ(durationText(slow.remainingSeconds), "--:--:--");

    const ProgressFigures noSecond = computeFigures(5000, 10000, 0);
    EXPECT_FALSE(noSecond.speedKnown());

    const ProgressFigures oneByte = computeFigures(10, 1000, 10); // exactly one byte per second
    EXPECT_EQ(oneByte.remainingSeconds, 990);
    EXPECT_EQ(oneByte.estimatedSeconds, 1000);
}

TEST(ComputeFigures, LargeSourcesDoNotOverflow)
{
    const qint64 fourGiB = qint64(4) * 1024 * 1024 * 1024;
    const ProgressFigures f = computeFigures(fourGiB / 2, fourGiB, 1);
    EXPECT_EQ(f.kilobytesPerSecond, fourGiB / 2 / 1024);
    EXPECT_EQ(f.remainingSeconds, 1);
}

TEST(PercentText, TwoDecimals)
{
    EXPECT_EQ(percentText(3, 8), "37.50%");
    EXPECT_EQ(percentText(1, 3), "33.33%");
    EXPECT_EQ(percentText(2, 3), "66.67%");
    EXPECT_EQ(percentText(8, 8), "100.00%");
    EXPECT_EQ(percentText(5, 0), "0.00%");
}

TEST(FilledWidth, WholePartOfTheFractionOfTheWidth)
{
    EXPECT_EQ(filledWidth(3, 8, 330), 123); // 123.75
    EXPECT_EQ(filledWidth(8, 8, 330), 330);
    EXPECT_EQ(filledWidth(9, 8, 330), 330); // never past the end
    EXPECT_EQ(filledWidth(0, 8, 330), 0);
    EXPECT_EQ(filledWidth(4, 0, 330), 0);
}

} // namespace
