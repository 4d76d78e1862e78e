#include "MP3Information.h"
#include "InfoSamples.h"
#include "InfoText.h"
#include "Mp3ID3v1TAG.h"

#include <QBuffer>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vindaro::info::MP3Information;
using vindaro::testing::kMpegHeader;
using vindaro::testing::mpegStream;

namespace {

MP3Information readBytes(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    MP3Information mpeg;
    mpeg.getMpegInfo(buffer, QStringLiteral("test.mp3"));
    return mpeg;
}

TEST(MP3Information, DecodesFirstHeaderAndEstimates)
{
    const struct
    {
        QByteArray header;
        qint64 fileSize;
        const char* versionLayer;
        qint64 bitRate, frequency, frameSize, frames, seconds;
        const char* crcs;
        const char* mode;
    } cases[] = {
        // 128 kbit/s, 44100 Hz: 417.96 rounds to 418; 4,180,000 bytes are 10000 frames and 261.25 s.
        {kMpegHeader, 4180000, "MPEG 1.0 Layer 3", 128, 44100, 418, 10000, 261, "No", "合成立体声"},
        {QByteArray("\xFF\xFB\x92\x64", 4), 4180000, "MPEG 1.0 Layer 3", 128, 44100, 419, 9976, 261, "No",
            "合成立体声"}, // padded
        // Version bit clear: the version-2 tables (Layer III index 9 = 80 kbit/s, 22050 Hz).
        {QByteArray("\xFF\xF3\x90\xC4", 4), 1000000, "MPEG 2.0 Layer 3", 80, 22050, 522, 1915, 100, "No",
            "单声道"},
        // Both version bits clear (MPEG 2.5) is read as version 2.
        {QByteArray("\xFF\xE3\x90\x04", 4), 1000000, "MPEG 2.0 Layer 3", 80, 22050, 522, 1915, 100, "No",
            "立体声"},
        // Bit-rate index 0 (free format): no bit rate, so no time and a frame size of 0.
        {QByteArray("\xFF\xFB\x00\x64", 4), 100000, "MPEG 1.0 Layer 3", 0, 44100, 0, 0, 0, "No",
            "合成立体声"},
        // Protection bit clear: CRC-protected, Layer I table (index 4 = 128 kbit/s), 48000 Hz, dual channel.
        {QByteArray("\xFF\xFE\x44\x80", 4), 48000, "MPEG 1.0 Layer 1", 128, 48000, 384, 125, 3, "Yes",
            "双声道"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.header.toHex().toStdString());
        const MP3Information mpeg = readBytes(mpegStream(c.header, 0, c.fileSize));
        EXPECT_EQ(mpeg.header(), QStringLiteral("0"));
        EXPECT_EQ(mpeg.versionLayer(), QString::fromUtf8(c.versionLayer));
        EXPECT_EQ(mpeg.bitRate(), c.bitRate);
        EXPECT_EQ(mpeg.frequency(), c.frequency);
        EXPECT_EQ(mpeg.frameSize(), c.frameSize);
        EXPECT_EQ(mpeg.frames(), c.frames);
        EXPECT_EQ(mpeg.seconds(), c.seconds);
        EXPECT_EQ(mpeg.crcs(), QString::fromUtf8(c.crcs));
        EXPECT_EQ(mpeg.mode(), QString::fromUtf8(c.mode));
        EXPECT_EQ(mpeg.bitStr().size(), 32);
    }
}

// Where the header is found and what is read there.
TEST(MP3Information, HeaderIsTheFirstFfByteWhateverFollows)
{
    QByteArray noSync = mpegStream(QByteArray("\xFF\x00\x90\x64", 4), 10, 5000);
    noSync[3] = 'x';
    QByteArray noHeader(300, 'a');
    noHeader[299] = '\xFF'; // the last byte is never examined
    const struct
    {
        QByteArray bytes;
        qint64 offset;
        const char* bitStr;
        qint64 bitRate;
    } cases[] = {
        // 0xFF followed by 0x00 is no frame sync, still the header; the reserved layer has no bit rate.
        {noSync, 10, "11111111000000001001000001100100", 0},
        // Past the 16-bit offsets: the true offset.
        {mpegStream(kMpegHeader, 70000, 80000), 70000, "11111111111110111001000001100100", 128},
        // Cut by the end of the file: the missing bytes read as zeros.
        {QByteArray("abc\xFF\xFB", 5), 3, "11111111111110110000000000000000", 0},
        {noHeader, -1, "", 0},
        {QByteArray(), -1, "", 0},
    };
    for (const auto& c : cases) {
        const MP3Information mpeg = readBytes(c.bytes);
        EXPECT_EQ(mpeg.headerOffset(), c.offset);
        EXPECT_EQ(mpeg.bitStr(), QLatin1String(c.bitStr)) << c.offset;
        EXPECT_EQ(mpeg.bitRate(), c.bitRate) << c.offset;
        EXPECT_EQ(mpeg.fileSizeBytes(), c.bytes.size()) << c.offset;
    }
}

TEST(MP3Information, FileNameSetterReadsAtOnceAndRefusesMissingFiles)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("song.mp3"));
    ASSERT_TRUE(vindaro::testing::writeFile(path, mpegStream(kMpegHeader, 0, 4180000)));
    MP3Information mpeg;
    mpeg.setFileName(path);
    EXPECT_EQ(mpeg.fileSize(), QStringLiteral("4180000"));
    EXPECT_EQ(mpeg.seconds(), 261);
    // A missing file is not measured: the earlier figures stay.
    mpeg.setFileName(dir.filePath(QStringLiteral("missing.mp3")));
    mpeg.getMpegInfo();
    EXPECT_EQ(mpeg.fileName(), path);
    EXPECT_EQ(mpeg.frames(), 10000);
}

// The summary reads the header twice, the second run starting from what the first left. Every file is
// 418,000 bytes with a V1 Layer III joint-stereo header FF FB xx 64 at offset 0; figures worked out by hand:
// - reserved frequency, padded: the frame size has no divisor and stays, 0 + 1 after the first run and
//   1 + 1 after the second, so 418,000 / 2 = 209,000 frames; 418,000 x 8 / 128,000 = 26.125 s gives 26;
// - reserved frequency, unpadded: the frame size stays 0, so the frame count keeps its 0;
// - reserved bit rate: the rate keeps its 0, so no time; the frame size is computed again each run,
//   0 x 144,000 / 44,100 = 0, + 1 = 1, so 418,000 frames;
// - both reserved, padded: 0 + 1 + 1 = 2 as in the first row, with no time;
// - a valid padded header: 418 + 1 both times, 418,000 / 419 = 997 frames.
TEST(MP3Information, SummaryShowsTheFiguresOfTheSecondRun)
{
    const struct
    {
        char bitRateFrequencyPadding; // the third header byte: EEEEFFGH
        const char* figures; // the length, header, bit-rate and frequency lines
    } cases[] = {
        {'\x9E', "\r\n长度：26秒\r\n标头创建于：0字节\r\n128kbit/s  209000帧\r\n0Hz  合成立体声\r\n"},
        {'\x9C', "\r\n长度：26秒\r\n标头创建于：0字节\r\n128kbit/s  0帧\r\n0Hz  合成立体声\r\n"},
        {'\xF2', "\r\n长度：0秒\r\n标头创建于：0字节\r\n0kbit/s  418000帧\r\n44100Hz  合成立体声\r\n"},
        {'\xFE', "\r\n长度：0秒\r\n标头创建于：0字节\r\n0kbit/s  209000帧\r\n0Hz  合成立体声\r\n"},
        {'\x92', "\r\n长度：26秒\r\n标头创建于：0字节\r\n128kbit/s  997帧\r\n44100Hz  合成立体声\r\n"},
    };
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.mp3"));
    for (const auto& c : cases) {
        const char header[] = {'\xFF', '\xFB', c.bitRateFrequencyPadding, '\x64'};
        ASSERT_TRUE(vindaro::testing::writeFile(path, mpegStream(QByteArray(header, 4), 0, 418000)));
        const QString summary = vindaro::info::mp3Summary(path);
        EXPECT_TRUE(summary.contains(QString::fromUtf8(c.figures))) << summary.toStdString();
    }
}

// A file from a real encoder (LAME through GStreamer), when the machine has one, with an ID3v1 footer.
TEST(MP3Information, ReadsTheOutputOfARealEncoder)
{
    const QString launcher = QStandardPaths::findExecutable(QStringLiteral("gst-launch-1.0"));
    if (launcher.isEmpty())
        GTEST_SKIP() << "gst-launch-1.0 is not installed";
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("tone.mp3"));
    QProcess encoder;
    encoder.start(launcher,
        QString::fromLatin1(
            "-q audiotestsrc num-buffers=200 ! audio/x-raw,rate=44100,channels=2 ! lamemp3enc "
            "target=bitrate bitrate=128 cbr=true ! taginject tags=title=Tone,artist=Encoder ! id3mux "
            "write-v1=true write-v2=false ! filesink")
                .split(QLatin1Char(' '))
            << QStringLiteral("location=") + path);
    if (!encoder.waitForFinished(60000) || encoder.exitCode() != 0 || !QFile::exists(path))
        GTEST_SKIP() << "the LAME or ID3 GStreamer plugin is missing";

    MP3Information mpeg;
    mpeg.setFileName(path);
    EXPECT_EQ(mpeg.header(), QStringLiteral("0"));
    EXPECT_EQ(mpeg.versionLayer(), QStringLiteral("MPEG 1.0 Layer 3"));
    EXPECT_EQ(mpeg.bitRate(), 128);
    EXPECT_EQ(mpeg.frequency(), 44100);
    EXPECT_EQ(mpeg.frames(), QFileInfo(path).size() / mpeg.frameSize());
    EXPECT_EQ(mpeg.seconds(), 5); // 200 x 1024 samples at 44100 Hz: about 4.7 s at 128 kbit/s

    vindaro::info::Mp3ID3v1TAG tag;
    ASSERT_TRUE(tag.getId3(path));
    EXPECT_EQ(tag.title(), QStringLiteral("Tone"));
    EXPECT_EQ(tag.artist(), QStringLiteral("Encoder"));
}

} // namespace
