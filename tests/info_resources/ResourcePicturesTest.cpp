#include "resources/ResourcePictures.h"
#include "ResourceBuilder.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QMap>

#include <gtest/gtest.h>

using namespace vindaro::info::resources;

namespace {

QImage readImage(const QByteArray& bytes, const char* format = nullptr, int index = 0)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, format);
    if (index > 0)
        reader.jumpToImage(index);
    return reader.read();
}

quint16 word(const QByteArray& bytes, int at)
{
    return static_cast<quint16>(static_cast<quint8>(bytes[at]) | (static_cast<quint8>(bytes[at + 1]) << 8));
}

} // namespace

TEST(ResourcePictures, IconGroupWithTwoSizesReadsAsBoth)
{
    if (!QImageReader::supportedImageFormats().contains("ico"))
        GTEST_SKIP() << "Qt's ico image reader is not installed";
    const QMap<quint16, QByteArray> members = {{1, iconDib(16, 0xFFFF0000)}, {2, iconDib(32, 0xFF0000FF)}};
    // member 9 does not exist
    const QByteArray group
        = iconGroup({{16, members[1].size(), 1}, {32, members[2].size(), 2}, {48, 100, 9}});
    const QByteArray ico = iconFileFromGroup(
        group, [&members](quint16 number) { return members.value(number); }, false);
    ASSERT_FALSE(ico.isEmpty());
    EXPECT_EQ(word(ico, 2), 1); // icon
    EXPECT_EQ(word(ico, 4), 2); // the missing member is left out

    const QImage first = readImage(ico, "ico", 0);
    const QImage second = readImage(ico, "ico", 1);
    EXPECT_EQ(first.size(), QSize(16, 16));
    EXPECT_EQ(second.size(), QSize(32, 32));
    EXPECT_EQ(first.pixel(3, 3), 0xFFFF0000);
    EXPECT_EQ(second.pixel(30, 1), 0xFF0000FF);

    // a hostile group naming one 4 MiB member 60,000 times is refused, not built
    const QByteArray hostile = iconGroup(QList<IconGroupEntry>(60000, IconGroupEntry{0, 0, 1}));
    const QByteArray large = iconDib(1024, 0xFF000000);
    int lookups = 0;
    const auto lookup = [&](quint16) {
        ++lookups;
        return large;
    };
    EXPECT_TRUE(iconFileFromGroup(hostile, lookup, false).isEmpty());
    EXPECT_LT(lookups, 100);
}

TEST(ResourcePictures, SingleImagesDibAndPng)
{
    if (!QImageReader::supportedImageFormats().contains("ico"))
        GTEST_SKIP() << "Qt's ico image reader is not installed";
    EXPECT_EQ(readImage(iconFileFromImage(iconDib(48, 0xFF00FF00), false), "ico").size(), QSize(48, 48));

    QImage png(256, 256, QImage::Format_ARGB32);
    png.fill(Qt::red);
    QByteArray pngBytes;
    QBuffer buffer(&pngBytes);
    buffer.open(QIODevice::WriteOnly);
    ASSERT_TRUE(png.save(&buffer, "PNG"));
    const QByteArray ico = iconFileFromImage(pngBytes, false);
    ASSERT_FALSE(ico.isEmpty());
    EXPECT_EQ(static_cast<quint8>(ico[6]), 0); // 256 pixels wide is written as 0
    EXPECT_EQ(readImage(ico, "ico").size(), QSize(256, 256));

    for (const QByteArray& junk : {QByteArray(), QByteArray(39, '\0'), QByteArray("\x89PNG\r\n\x1a\n", 8),
             QByteArray::fromHex("28000000ffffffff20000000010020")})
        EXPECT_TRUE(iconFileFromImage(junk, false).isEmpty()) << junk.toHex().toStdString();
}

TEST(ResourcePictures, CursorHotSpotMovesIntoTheEntry)
{
    const QByteArray image = iconDib(32, 0xFF000000);
    const QByteArray member = ResourceBuilder().u16(5).u16(7).raw(image).bytes;
    ResourceBuilder group; // cursor group entry: WORD width, WORD doubled height, planes, bits, bytes, number
    group.u16(0).u16(2).u16(1).u16(32).u16(64).u16(1).u16(32).u32(static_cast<quint32>(member.size())).u16(4);
    const QByteArray fromGroup = iconFileFromGroup(
        group.bytes, [&member](quint16 n) { return n == 4 ? member : QByteArray(); }, true);
    EXPECT_EQ(fromGroup, iconFileFromImage(member, true));
    ASSERT_EQ(fromGroup.size(), 6 + 16 + image.size());
    EXPECT_EQ(word(fromGroup, 2), 2); // cursor file
    EXPECT_EQ(static_cast<quint8>(fromGroup[6]), 32);
    EXPECT_EQ(static_cast<quint8>(fromGroup[7]), 32);
    EXPECT_EQ(word(fromGroup, 10), 5);
    EXPECT_EQ(word(fromGroup, 12), 7);
    EXPECT_EQ(fromGroup.mid(22), image); // the hot spot is not left in the image
    if (QImageReader::supportedImageFormats().contains("cur")) {
        EXPECT_EQ(readImage(fromGroup, "cur").size(), QSize(32, 32));
    }
}

// A 3×2 bitmap in the layouts whose pixels start at different offsets.
TEST(ResourcePictures, DibBecomesABitmapFileQtReads)
{
    const struct
    {
        const char* name;
        int bitCount;
        quint32 compression;
        quint32 coloursUsed;
    } rows[] = {{"8 bpp full palette", 8, 0, 0}, {"8 bpp two colours used", 8, 0, 2}, {"4 bpp", 4, 0, 0},
        {"24 bpp", 24, 0, 0}, {"16 bpp bit fields", 16, 3, 0}, {"32 bpp with a palette", 32, 0, 3}};
    for (const auto& row : rows) {
        ResourceBuilder b;
        b.u32(40).u32(3).u32(2).u16(1).u16(static_cast<quint32>(row.bitCount)).u32(row.compression);
        b.u32(0).u32(0).u32(0).u32(row.coloursUsed).u32(0);
        if (row.compression == 3)
            b.u32(0xF800).u32(0x07E0).u32(0x001F); // 5-6-5
        const quint32 paletteSize
            = row.coloursUsed ? row.coloursUsed : (row.bitCount <= 8 ? 1u << row.bitCount : 0);
        for (quint32 i = 0; i < paletteSize; ++i)
            b.u32(i == 1 ? 0x0000FF00 : 0x00000000); // index 1 is green
        const qsizetype pixelsOffset = 14 + b.bytes.size();
        const int rowBytes = ((3 * row.bitCount + 31) / 32) * 4;
        for (int y = 0; y < 2; ++y) {
            QByteArray line(rowBytes, '\0');
            // every pixel green: index 1, or the colour itself
            for (int x = 0; x < 3; ++x) {
                if (row.bitCount == 8)
                    line[x] = 1;
                else if (row.bitCount == 4)
                    line[x / 2] = static_cast<char>(line[x / 2] | (x % 2 ? 0x01 : 0x10));
                else if (row.bitCount == 24)
                    line[3 * x + 1] = '\xff';
                else if (row.bitCount == 16)
                    line[2 * x] = '\xe0', line[2 * x + 1] = '\x07';
                else
                    line[4 * x + 1] = '\xff';
            }
            b.raw(line);
        }
        const QByteArray bmp = bitmapFileFromDib(b.bytes);
        ASSERT_EQ(bmp.size(), 14 + b.bytes.size()) << row.name;
        EXPECT_EQ(word(bmp, 10), pixelsOffset)
            << row.name; // Qt's reader forgives an offset short of the pixels
        const QImage image = readImage(bmp, "bmp");
        EXPECT_EQ(image.size(), QSize(3, 2)) << row.name;
        const QRgb pixel = image.pixel(2, 1);
        EXPECT_TRUE(qRed(pixel) == 0 && qGreen(pixel) >= 0xF8 && qBlue(pixel) == 0)
            << row.name; // 5-6-5: 0xFC
    }
    EXPECT_TRUE(bitmapFileFromDib({}).isEmpty());
    EXPECT_TRUE(
        bitmapFileFromDib(QByteArray::fromHex("28000000030000000200000001000800")).isEmpty()); // no palette
}
