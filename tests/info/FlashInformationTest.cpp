#include "FlashInformation.h"
#include "InfoText.h"

#include <QBuffer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vindaro::info::FlashInformation;

namespace {

// Appends `count` bits of `value`, most significant first.
struct BitWriter
{
    QByteArray bytes;
    int used = 8;
    void put(quint32 value, int count)
    {
        for (int i = count - 1; i >= 0; --i) {
            if (used == 8) {
                bytes.append('\0');
                used = 0;
            }
            if ((value >> i) & 1u)
                bytes[bytes.size() - 1] = static_cast<char>(bytes.back() | (0x80 >> used));
            ++used;
        }
    }
};

QByteArray movie(const char* signature, int bits, quint32 xMax, quint32 yMax, uchar rateFraction, uchar rate,
    quint16 frames)
{
    BitWriter rect;
    rect.put(static_cast<quint32>(bits), 5);
    rect.put(0, bits);
    rect.put(xMax, bits);
    rect.put(0, bits);
    rect.put(yMax, bits);
    QByteArray bytes(signature, 3);
    bytes += '\x06';
    bytes += QByteArray("\x10\x27\x00\x00", 4); // declared length 10000
    bytes += rect.bytes;
    bytes += static_cast<char>(rateFraction);
    bytes += static_cast<char>(rate);
    bytes += static_cast<char>(frames & 0xFF);
    bytes += static_cast<char>(frames >> 8);
    bytes += QByteArray("\x43\x02\x11\x22\x33", 5); // SetBackgroundColor, 3 bytes
    return bytes;
}

bool read(QByteArray bytes, FlashInformation& flash)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return flash.getFlashInformation(buffer);
}

TEST(FlashInformation, StageRateFramesAndTextBlock)
{
    FlashInformation flash;
    ASSERT_TRUE(read(movie("FWS", 15, 11000, 8000, 0x00, 0x0C, 120), flash));
    EXPECT_EQ(flash.version(), QStringLiteral("6"));
    EXPECT_EQ(flash.sizes(), 10000);
    EXPECT_EQ(flash.width(), 550);
    EXPECT_EQ(flash.height(), 400);
    EXPECT_EQ(flash.speed(), 12);
    EXPECT_EQ(flash.frames(), 120);
    EXPECT_DOUBLE_EQ(flash.seconds(), 10.0);
    EXPECT_EQ(flash.red(), 0x11);
    EXPECT_EQ(flash.blue(), 0x33);
    EXPECT_EQ(vindaro::info::flashTextBlock(flash),
        QStringLiteral("\r\n帧    数：120帧"
                       "\r\n速    度：12帧/秒"
                       "\r\n版    本：Flash 6"
                       "\r\n长    度：10秒"
                       "\r\n宽 × 高：550×400像素"));
}

struct TimeCase
{
    int bits;
    uchar fraction;
    uchar rate;
    quint16 frames;
    qint64 speed;
    const char* seconds;
};

TEST(FlashInformation, PlayingTimeInShortestForm)
{
    const TimeCase cases[] = {
        {15, 0, 24, 250, 24, "10.42"}, {15, 0, 24, 300, 24, "12.5"},
        {31, 0, 1, 65535, 1, "65535"}, // widest rectangle, largest count
        {1, 0x80, 0, 10, 0, "20"}, // half a frame per second: speed shows the whole part
        {5, 0xF6, 29, 2997, 29, "100.03"}, // 29.96 fps: the exact rate counts
        {0, 0, 0, 120, 0, "0"}, // no rate: no time rather than a division by zero
    };
    for (const TimeCase& c : cases) {
        FlashInformation flash;
        ASSERT_TRUE(read(movie("FWS", c.bits, 0, 0, c.fraction, c.rate, c.frames), flash)) << c.frames;
        EXPECT_EQ(flash.speed(), c.speed) << c.frames;
        EXPECT_EQ(flash.secondsText(), QString::fromLatin1(c.seconds)) << c.frames;
    }
}

TEST(FlashInformation, RefusesOtherSignaturesAndCutHeaders)
{
    const QByteArray good = movie("FWS", 15, 11000, 8000, 0, 12, 120);
    FlashInformation flash;
    EXPECT_FALSE(read(movie("CWS", 15, 11000, 8000, 0, 12, 120), flash));
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
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(movie("CWS", 15, 11000, 8000, 0, 12, 120));
    file.close();
    EXPECT_EQ(vindaro::info::flashSummary(path), QString());
}

} // namespace
