#include "copy/MpegClock.h"
#include "ProgramStream.h"
#include "fakes/MemoryFileLayer.h"

#include <gtest/gtest.h>

using namespace vindaro::copy;
using vindaro::testing::ByteRange;
using vindaro::testing::MemoryFileLayer;
using vindaro::testing::programStream;

namespace {

constexpr qint64 kSecond = 27'000'000; // 27 MHz ticks

std::optional<PackHeader> decode(const QByteArray& bytes)
{
    return decodePackHeader(reinterpret_cast<const uchar*>(bytes.constData()), bytes.size(), 0);
}

QByteArray hex(const char* text)
{
    return QByteArray::fromHex(text);
}

TEST(MpegClock, DecodesPackHeadersOfBothLayoutsAndRefusesBrokenOnes)
{
    struct Row
    {
        const char* bytes;
        std::optional<qint64> clock27MHz;
        bool mpeg2;
    };
    const Row rows[] = {
        // Worked out by hand: 90,000 ticks of 90 kHz (one second); MPEG-2 with an extension of 150.
        {"000001BA2100 05BF21 801B83", 90000 * 300, false},
        {"000001BA4400 16FC852D 0189C3F8", 90000 * 300 + 150, true}, {"000001BA210001000180 1B83", 0, false},
        {"000001BA2100 05BF21 801B82", std::nullopt, false}, // last marker bit cleared
        {"000001BA2100 05BF21 000000", std::nullopt, false}, // mux rate marker and rate 0
        {"000001BA4400 12FC852D 0189C3F8", std::nullopt, true}, // SCR marker cleared
        {"000001BA4400 16FC8659 0189C3F8", std::nullopt, true}, // extension 300
        {"000001BA4400 16FC852D 0189C3", std::nullopt, true}, // cut short
        {"000001BAFF00 16FC852D 0189C3F8", std::nullopt, false}, // neither layout
        {"000001BB2100 05BF21 801B83", std::nullopt, false}, // not a pack start code
    };
    for (const Row& row : rows) {
        const std::optional<PackHeader> pack = decode(hex(row.bytes));
        ASSERT_EQ(pack.has_value(), row.clock27MHz.has_value()) << row.bytes;
        if (pack) {
            EXPECT_EQ(pack->clock27MHz, *row.clock27MHz) << row.bytes;
            EXPECT_EQ(pack->mpeg2, row.mpeg2) << row.bytes;
        }
    }
    // The helpers that build the test streams write what the hand-made rows say, up to the largest clock.
    EXPECT_EQ(vindaro::testing::mpeg1PackHeader(90000, 3521), hex(rows[0].bytes));
    EXPECT_EQ(vindaro::testing::mpeg2PackHeader(90000 * 300 + 150), hex(rows[1].bytes));
    const qint64 largest = ((qint64(1) << 33) - 1) * 300 + 299;
    EXPECT_EQ(decode(vindaro::testing::mpeg2PackHeader(largest))->clock27MHz, largest);
    EXPECT_EQ(decode(vindaro::testing::mpeg1PackHeader((qint64(1) << 33) - 1))->clock27MHz, largest - 299);
}

class MpegClockTest : public ::testing::Test
{
protected:
    // A file in the fake layer and a clock over it.
    MpegClock& open(const QString& name, const QByteArray& bytes)
    {
        m_files.put(name, bytes);
        vindaro::platform::IoResult io;
        m_file = m_files.openForReading(name, io);
        m_clock.emplace(*m_file, bytes.size());
        return *m_clock;
    }

    MemoryFileLayer m_files;
    std::unique_ptr<vindaro::platform::RandomAccessFile> m_file;
    std::optional<MpegClock> m_clock;
};

TEST_F(MpegClockTest, TellsThePlayingTimeAroundAZeroedStretch)
{
    // A Video CD track: 2,324-byte packs, 75 a second, its clock starting at 10 s.
    for (const bool mpeg2 : {false, true}) {
        const int packBytes = mpeg2 ? 2048 : 2324;
        const qint64 step = kSecond / 75;
        QByteArray stream = programStream(mpeg2, 3000, packBytes, 10 * kSecond, step);
        stream.replace(1'000'000, 500'000, QByteArray(500'000, '\0'));
        MpegClock& clock = open(QStringLiteral("/a.dat"), stream);

        ASSERT_TRUE(clock.firstPack());
        const auto before = clock.packAtOrBefore(999'999);
        const auto after = clock.packAtOrAfter(1'500'000);
        ASSERT_TRUE(before && after);
        const qint64 lastBefore = 999'999 / packBytes;
        const qint64 firstAfter = (1'500'000 + packBytes - 1) / packBytes;
        EXPECT_EQ(before->offset, lastBefore * packBytes);
        EXPECT_EQ(after->offset, firstAfter * packBytes);
        EXPECT_EQ(before->mpeg2, mpeg2);
        EXPECT_NEAR(*clock.secondsAt(*before), double(lastBefore) / 75, 1e-6);
        EXPECT_NEAR(*clock.secondsAt(*after), double(firstAfter) / 75, 1e-6);
        // A pack header counts from its own start: at that offset it is found both ways.
        EXPECT_EQ(clock.packAtOrBefore(after->offset)->offset, after->offset);
        EXPECT_EQ(clock.packAtOrAfter(after->offset)->offset, after->offset);
    }
}

TEST_F(MpegClockTest, SearchesStayWithinTheirWindowTheFileAndTheFirstFailedRead)
{
    // 8 MiB without a pack header: each search reads about its window and answers nothing.
    m_files.putGenerated(QStringLiteral("/noise.vob"), 8 << 20);
    vindaro::platform::IoResult io;
    m_file = m_files.openForReading(QStringLiteral("/noise.vob"), io);
    MpegClock noise(*m_file, 8 << 20);
    const int piecesPerWindow = int(MpegClock::kSearchBytes / MpegClock::kChunkBytes) + 1;
    EXPECT_FALSE(noise.packAtOrAfter(4 << 20));
    EXPECT_LE(noise.reads(), piecesPerWindow);
    EXPECT_FALSE(noise.packAtOrBefore(4 << 20));
    EXPECT_LE(noise.reads(), 2 * piecesPerWindow);
    EXPECT_FALSE(noise.packAtOrAfter((8 << 20) - 5)); // too close to the end for a header
    EXPECT_FALSE(noise.packAtOrAfter(9 << 20));
    for (const qint64 offset : m_files.readOffsets(QStringLiteral("/noise.vob")))
        EXPECT_LT(offset, 8 << 20);

    // A header just past the window is not looked at.
    const QByteArray stream = programStream(false, 10, 2324, 0, 1000);
    MpegClock& clock = open(QStringLiteral("/b.dat"), QByteArray(3 << 20, '\0') + stream);
    EXPECT_FALSE(clock.packAtOrAfter(0));
    EXPECT_FALSE(clock.packAtOrAfter(2 << 20));
    EXPECT_EQ(clock.packAtOrAfter((2 << 20) + 1)->offset, 3 << 20);
    // The first pack is looked for further; the lost bytes before it count at the stream's rate
    // (3,528 x 50 bytes a second).
    ASSERT_EQ(clock.firstPack()->offset, 3 << 20);
    EXPECT_NEAR(*clock.secondsAt(*clock.firstPack()), double(3 << 20) / 176'400, 1e-6);

    // A read that fails ends the search.
    m_files.faults(QStringLiteral("/c.dat")).badReads = {ByteRange{0, 4096}};
    MpegClock& damaged = open(QStringLiteral("/c.dat"), stream);
    EXPECT_FALSE(damaged.packAtOrAfter(0));
    EXPECT_FALSE(damaged.packAtOrBefore(5000));
    EXPECT_EQ(damaged.packAtOrAfter(4096)->offset, 2324 * 2);
}

TEST_F(MpegClockTest, CountsAcrossTheClockWrapButNotBackwards)
{
    const qint64 wrap = (qint64(1) << 33) * 300;
    // Starts two seconds before the wrap; 75 packs a second.
    MpegClock& clock
        = open(QStringLiteral("/w.vob"), programStream(true, 400, 2048, wrap - 2 * kSecond, kSecond / 75));
    const auto late = clock.packAtOrAfter(300 * 2048);
    ASSERT_TRUE(late);
    EXPECT_NEAR(*clock.secondsAt(*late), 4.0, 1e-6);

    // A stream whose clock starts again a little lower (two recordings joined) tells no time there.
    QByteArray joined = programStream(true, 100, 2048, 50 * kSecond, kSecond / 75)
        + programStream(true, 100, 2048, 40 * kSecond, kSecond / 75);
    MpegClock& rejoined = open(QStringLiteral("/j.vob"), joined);
    EXPECT_FALSE(rejoined.secondsAt(*rejoined.packAtOrAfter(150 * 2048)));
    EXPECT_TRUE(MpegClock::isProgramStreamName(QStringLiteral("/x/AVSEQ01.DAT")));
    EXPECT_TRUE(MpegClock::isProgramStreamName(QStringLiteral("VTS_01_1.VOB")));
    EXPECT_FALSE(MpegClock::isProgramStreamName(QStringLiteral("a.mp3")));
}

} // namespace
