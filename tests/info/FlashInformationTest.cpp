#include "FlashInformation.h"
#include "InfoSamples.h"
#include "InfoText.h"

#include <QBuffer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vindaro::info::FlashInformation;
using vindaro::testing::flashMovie;

namespace {

bool read(QByteArray bytes, FlashInformation& flash)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return flash.getFlashInformation(buffer);
}

TEST(FlashInformation, StageRateFramesAndColour)
{
    FlashInformation flash;
    ASSERT_TRUE(read(flashMovie("FWS", 15, 11000, 8000, 0x00, 0x0C, 120), flash));
    EXPECT_EQ(flash.version(), QStringLiteral("6"));
    EXPECT_EQ(flash.sizes(), 10000);
    EXPECT_EQ(flash.width(), 550);
    EXPECT_EQ(flash.height(), 400);
    EXPECT_EQ(flash.speed(), 12);
    EXPECT_EQ(flash.frames(), 120);
    EXPECT_DOUBLE_EQ(flash.seconds(), 10.0);
    EXPECT_EQ(flash.red(), 0x11);
    EXPECT_EQ(flash.blue(), 0x33);
}

TEST(FlashInformation, PlayingTimeInShortestForm)
{
    const struct
    {
        int bits;
        uchar fraction, rate;
        quint16 frames;
        qint64 speed;
        const char* seconds;
    } cases[] = {
        {15, 0, 24, 250, 24, "10.42"}, {15, 0, 24, 300, 24, "12.5"},
        {31, 0, 1, 65535, 1, "65535"}, // widest rectangle, largest count
        {1, 0x80, 0, 10, 0, "20"}, // half a frame per second: speed shows the whole part
        {5, 0xF6, 29, 2997, 29, "100.03"}, // 29.96 fps: the exact rate counts
        {0, 0, 0, 120, 0, "0"}, // no rate: no time rather than a division by zero
    };
    for (const auto& c : cases) {
        FlashInformation flash;
        ASSERT_TRUE(read(flashMovie("FWS", c.bits, 0, 0, c.fraction, c.rate, c.frames), flash)) << c.frames;
        EXPECT_EQ(flash.speed(), c.speed) << c.frames;
        EXPECT_EQ(flash.secondsText(), QString::fromLatin1(c.seconds)) << c.frames;
    }
}

TEST(FlashInformation, RefusesOtherSignaturesAndCutHeaders)
{
    const QByteArray good = flashMovie("FWS", 15, 11000, 8000, 0, 12, 120);
    FlashInformation flash;
    EXPECT_FALSE(read(flashMovie("CWS", 15, 11000, 8000, 0, 12, 120), flash));
    EXPECT_FALSE(read(QByteArray("FW"), flash));
    EXPECT_FALSE(read(QByteArray(), flash));
    // Cut inside the rectangle and inside the frame count.
    EXPECT_FALSE(read(good.left(12), flash));
    EXPECT_FALSE(read(good.left(8 + 9 + 3), flash));
    // Cut before the colour: still a movie, the colour stays unknown.
    EXPECT_TRUE(read(good.left(8 + 9 + 4), flash));
    EXPECT_EQ(flash.frames(), 120);

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("c.swf"));
    ASSERT_TRUE(vindaro::testing::writeFile(path, flashMovie("CWS", 15, 11000, 8000, 0, 12, 120)));
    EXPECT_EQ(vindaro::info::flashSummary(path), QString());
}

} // namespace
