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
            if (reference.empty())
                continue;
            // From a byte on: its state, the next range in a state, and the ranges of a window, as the bytes
            // say.
            const qint64 probe = qint64(random() % reference.size());
            ASSERT_EQ(char(map.stateAt(probe)), reference[size_t(probe)]);
            const RescueState wanted = kRescueStates[random() % kRescueStates.size()];
            const size_t at = reference.find(char(wanted), size_t(probe));
            const std::optional<RescueRange> next = map.nextRange(wanted, probe);
            ASSERT_EQ(next.has_value(), at != std::string::npos);
            if (next) {
                const size_t end = std::min(reference.find_first_not_of(char(wanted), at), reference.size());
                ASSERT_EQ(*next, (RescueRange{qint64(at), qint64(end - at), wanted}));
            }
            const qint64 window = qint64(random() % 50);
            const std::vector<RescueRange> cut = map.ranges(probe, window);
            std::string cutBytes;
            for (const RescueRange& r : cut)
                cutBytes.append(size_t(r.length), char(r.state));
            ASSERT_EQ(cutBytes, reference.substr(size_t(probe), size_t(window)));
            ASSERT_TRUE(cut.empty() || cut.front().offset == probe);
        }
    }
}

// Positions past 4 GiB and near the largest offset stay exact; searches before the start and past the end
// find what is there.
TEST(RescueMap, PositionsPastFourGibibytesAndAtBothEndsStayExact)
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

    map.mark(10, 10, RescueState::Untried);
    EXPECT_EQ(map.nextRange(RescueState::Untried, -5), (RescueRange{10, 10, RescueState::Untried}));
    EXPECT_FALSE(map.nextRange(RescueState::Copied, map.size()));
    EXPECT_TRUE(map.ranges(map.size(), 5).empty());
    EXPECT_FALSE(RescueMap(0).nextRange(RescueState::Untried, 0));
    EXPECT_TRUE(RescueMap(0).isComplete());
}

} // namespace
