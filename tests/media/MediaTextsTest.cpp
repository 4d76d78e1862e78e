#include "media/MediaTexts.h"
#include "media/MediaKind.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vindaro::media;

namespace {

TEST(MediaKind, DecidedByTheEndingAloneInAnyCase)
{
    const struct
    {
        const char* path;
        MediaKind kind;
    } rows[] = {
        {"/cd/MPEGAV/AVSEQ01.DAT", MediaKind::Video},
        {"/dvd/VIDEO_TS/VTS_01_1.vob", MediaKind::Video},
        {"clip.mpeg", MediaKind::Video},
        {"xdat", MediaKind::Video}, // no dot needed
        {"film.Mpg", MediaKind::Video},
        {"sound.aiff", MediaKind::Audio},
        {"sound.au", MediaKind::Audio},
        {"tune.MIDI", MediaKind::Audio},
        {"song.mp3", MediaKind::Audio},
        {"notes.txt", MediaKind::None},
        {"archive.mp3.zip", MediaKind::None},
        {"", MediaKind::None},
    };
    for (const auto& row : rows)
        EXPECT_EQ(mediaKindOf(QString::fromUtf8(row.path)), row.kind) << row.path;
}

TEST(MediaTexts, TimeTextDropsFractionsAndLetsHoursGrow)
{
    EXPECT_EQ(timeText(3725), QStringLiteral("01:02:05"));
    EXPECT_EQ(timeText(59.99), QStringLiteral("00:00:59"));
    EXPECT_EQ(timeText(0), QStringLiteral("00:00:00"));
    EXPECT_EQ(timeText(-1), QStringLiteral("00:00:00"));
    EXPECT_EQ(timeText(360000), QStringLiteral("100:00:00"));
}

TEST(MediaTexts, SizeShowsBytesUpToEachWindowsLimitThenWholeKilobytes)
{
    EXPECT_EQ(sizeText(1023800, kPlayerBytesLimit), QStringLiteral("1,023,800字节"));
    EXPECT_EQ(sizeText(1023801, kPlayerBytesLimit), QStringLiteral("999KB"));
    EXPECT_EQ(sizeText(1024000, kPreviewBytesLimit), QStringLiteral("1,024,000字节"));
    EXPECT_EQ(sizeText(1024001, kPreviewBytesLimit), QStringLiteral("1,000KB"));
    EXPECT_EQ(sizeText(4700000000LL, kPreviewBytesLimit), QStringLiteral("4,589,843KB"));
}

TEST(MediaTexts, LengthsAndThePositionStrip)
{
    EXPECT_EQ(videoLengthText(1234.9, QSize(352, 288)), QStringLiteral("1,234[352×288]"));
    EXPECT_EQ(videoLengthText(83.5, QSize()), QStringLiteral("83"));
    EXPECT_EQ(secondsText(83.456), QStringLiteral("83.46"));
    EXPECT_EQ(
        positionStripText(5.25, 60, QTime(14, 3, 27)), QStringLiteral("00:00:05/00:01:00 14:03:27  5.250"));
}

FileFacts sampleFacts(qint64 bytes)
{
    return {bytes, QStringLiteral("DAT 文件"), QStringLiteral("2024-01-02 03:04:05"),
        QStringLiteral("2024-01-02 03:04:06"), QStringLiteral("2024-01-02 03:04:07"), QStringLiteral("只读")};
}

TEST(MediaTexts, PlayerFactsLines)
{
    EXPECT_EQ(playerFactsLines(sampleFacts(1023801)),
        (QStringList{QStringLiteral("大小：999KB"), QStringLiteral("类型：DAT 文件"),
            QStringLiteral("创建：2024-01-02 03:04:05"), QStringLiteral("修改：2024-01-02 03:04:06"),
            QStringLiteral("访问：2024-01-02 03:04:07"), QStringLiteral("属性：只读")}));
}

TEST(MediaTexts, PreviewFactsOfAVideoFile)
{
    const QString rule(31, QLatin1Char('-'));
    EXPECT_EQ(previewFactsText(QStringLiteral("/cd/AVSEQ01.DAT"), sampleFacts(1024000)),
        QStringList(
            {rule, QStringLiteral("文件大小：1,024,000字节"), QStringLiteral("类型：DAT 文件"),
                QStringLiteral("创建：2024-01-02 03:04:05"), QStringLiteral("修改：2024-01-02 03:04:06"),
                QStringLiteral("访问：2024-01-02 03:04:07"), QStringLiteral("属性：只读"), rule})
            .join(QLatin1Char('\n')));
}

// An MP3 file of one MPEG-1 Layer III header (128 kbit/s, 44,100 Hz, joint stereo, no CRC) after 10 zero
// bytes, padded to 4,096 bytes, and an ID3v1 tag with a title, an artist and no album.
TEST(MediaTexts, PreviewFactsOfAnMp3FileShowTagAndHeader)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("song.mp3"));
    QByteArray bytes(10, '\0');
    bytes += QByteArray::fromHex("FFFB9064");
    bytes += QByteArray(4096 - 128 - bytes.size(), '\0');
    QByteArray tag = "TAG" + QByteArray("Title").leftJustified(30, '\0')
        + QByteArray("Artist").leftJustified(30, '\0') + QByteArray(30, '\0') + QByteArray("1999")
        + QByteArray(28, '\0') + '\0' + char(7) + char(17);
    bytes += tag;
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();

    const QStringList lines = previewFactsText(path, sampleFacts(bytes.size())).split(QLatin1Char('\n'));
    const QString rule(31, QLatin1Char('-'));
    const QStringList expected{rule, QStringLiteral("文件大小：4,096字节"),
        QStringLiteral("[ID3v1信息]") + QString(20, QLatin1Char('-')), QStringLiteral("曲名：Title"),
        QStringLiteral("艺人：Artist"), QStringLiteral("专集：-"), QStringLiteral("音轨序号：7"),
        QStringLiteral("年份：1999"), QStringLiteral("流派：Rock"), QStringLiteral("备注：-"),
        QStringLiteral("[MPEG信息]") + QString(21, QLatin1Char('-')), QStringLiteral("标头创建于：10字节"),
        QStringLiteral("长度：0秒"), QStringLiteral("MPEG 1.0 Layer 3"), QStringLiteral("128kbit/s  9帧"),
        QStringLiteral("44100Hz  合成立体声"), QStringLiteral("CRCs：No"), QStringLiteral("版权作品：No"),
        QStringLiteral("正本原件：Yes"), QStringLiteral("信号加重：None"), rule};
    EXPECT_EQ(lines, expected);
}

} // namespace
