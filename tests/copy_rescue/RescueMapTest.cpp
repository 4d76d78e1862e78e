#include "copy/RescueMap.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace vindaro::copy;

namespace {

constexpr qint64 kGiB = qint64(1) << 30;

// The map as one character a byte, for comparison with a plain reference.
std::string expand(const RescueMap& map)
{
    std::string bytes;
    for (const RescueRange& r : map.ranges())
        bytes.append(size_t(r.length), char(r.state));
    return bytes;
}

// The promises every map keeps: contiguous from 0 to size, no empty range, no equal neighbours, counts right.
void expectWellFormed(const RescueMap& map)
{
    qint64 end = 0;
    qint64 counted[128] = {};
    const std::vector<RescueRange> ranges = map.ranges();
    for (size_t i = 0; i < ranges.size(); ++i) {
        ASSERT_EQ(ranges[i].offset, end);
        ASSERT_GT(ranges[i].length, 0);
        if (i > 0) {
            ASSERT_NE(ranges[i].state, ranges[i - 1].state) << "at " << ranges[i].offset;
        }
        counted[int(ranges[i].state)] += ranges[i].length;
        end = ranges[i].end();
    }
    EXPECT_EQ(end, map.size());
    for (const RescueState s : kRescueStates)
        EXPECT_EQ(map.bytes(s), counted[int(s)]) << char(s);
    EXPECT_EQ(map.rangeCount(), int(ranges.size()));
}

TEST(RescueMap, RandomMarksAndResizesMatchAByteReference)
{
    for (const unsigned seed : {1u, 2u, 3u, 4u, 5u}) {
        std::mt19937 random(seed);
        const qint64 size = 300;
        RescueMap map(size);
        std::string reference(size_t(size), '?');
        for (int step = 0; step < 2000; ++step) {
            const RescueState state = kRescueStates[random() % kRescueStates.size()];
            if (step % 97 == 96) { // now and then the source grows or shrinks
                const qint64 newSize = qint64(random() % 400);
                map.resize(newSize, state);
                reference.resize(size_t(newSize), char(state));
            } else {
                // offsets and lengths reach past both ends, which mark() must cut off
                const qint64 offset = qint64(random() % 340) - 20;
                const qint64 length = qint64(random() % 60) - 5;
                map.mark(offset, length, state);
                for (qint64 i = qMax<qint64>(offset, 0); i < offset + length && i < qint64(reference.size());
                     ++i)
                    reference[size_t(i)] = char(state);
            }
            ASSERT_EQ(expand(map), reference) << "seed " << seed << " step " << step;
            ASSERT_NO_FATAL_FAILURE(expectWellFormed(map));
            if (!reference.empty()) {
                const qint64 probe = qint64(random() % reference.size());
                ASSERT_EQ(char(map.stateAt(probe)), reference[size_t(probe)]);
            }
        }
    }
}

TEST(RescueMap, PositionsPastFourGibibytesAndNearTheLargestOffsetStayExact)
{
    RescueMap map(5 * kGiB);
    map.mark(4 * kGiB + 1, 2048, RescueState::Bad);
    map.mark(4 * kGiB + 2049, std::numeric_limits<qint64>::max(), RescueState::Copied); // cut at the end
    map.mark(-kGiB, kGiB + 10, RescueState::Copied); // [0, 10)
    EXPECT_EQ(map.ranges(),
        (std::vector<RescueRange>{{0, 10, RescueState::Copied}, {10, 4 * kGiB - 9, RescueState::Untried},
            {4 * kGiB + 1, 2048, RescueState::Bad}, {4 * kGiB + 2049, kGiB - 2049, RescueState::Copied}}));
    EXPECT_EQ(map.bytes(RescueState::Copied), 10 + kGiB - 2049);

    map.resize(qint64(1) << 62);
    EXPECT_EQ(map.rangeAt((qint64(1) << 62) - 1).offset, 5 * kGiB);
    map.mark(0, std::numeric_limits<qint64>::max(), RescueState::Copied);
    EXPECT_EQ(map.rangeCount(), 1);
    EXPECT_TRUE(map.isComplete());
}

TEST(RescueMap, NextRangeAndCutRangesStartWhereAsked)
{
    RescueMap map(100, RescueState::Copied);
    map.mark(10, 10, RescueState::Untried);
    map.mark(50, 20, RescueState::Untried);
    map.mark(30, 5, RescueState::Bad);
    struct Row
    {
        RescueState state;
        qint64 from;
        std::optional<RescueRange> expected;
    };
    const Row rows[] = {
        {RescueState::Untried, -5, RescueRange{10, 10, RescueState::Untried}},
        {RescueState::Untried, 15, RescueRange{15, 5, RescueState::Untried}}, // cut to `from`
        {RescueState::Untried, 20, RescueRange{50, 20, RescueState::Untried}},
        {RescueState::Untried, 70, std::nullopt},
        {RescueState::Bad, 0, RescueRange{30, 5, RescueState::Bad}},
        {RescueState::NonTrimmed, 0, std::nullopt},
        {RescueState::Copied, 99, RescueRange{99, 1, RescueState::Copied}},
        {RescueState::Copied, 100, std::nullopt},
    };
    for (const Row& row : rows)
        EXPECT_EQ(map.nextRange(row.state, row.from), row.expected)
            << char(row.state) << " from " << row.from;

    EXPECT_EQ(map.ranges(15, 20),
        (std::vector<RescueRange>{
            {15, 5, RescueState::Untried}, {20, 10, RescueState::Copied}, {30, 5, RescueState::Bad}}));
    EXPECT_TRUE(map.ranges(100, 5).empty());
    EXPECT_FALSE(RescueMap(0).nextRange(RescueState::Untried, 0));
    EXPECT_TRUE(RescueMap(0).isComplete());
}

} // namespace
