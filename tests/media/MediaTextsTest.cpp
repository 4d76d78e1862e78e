// The player's and the preview's texts checked once against a golden file; the window tests check facts,
// not wording. After a deliberate change of a text, run with VINDARO_UPDATE_GOLDEN=1 and review the diff.
#include "media/MediaTexts.h"
#include "info/GoldenText.h"
#include "media/MediaKind.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vindaro::media;
using namespace Qt::StringLiterals;

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

TEST(MediaTexts, EveryTextIsTheGoldenOne)
{
    vindaro::testing::GoldenText golden;
    for (const double s : {3725.0, 59.99, 0.0, -1.0, 360000.0})
        golden.add(u"time %1"_s.arg(s), timeText(s));
    for (const qint64 bytes : {1023800LL, 1023801LL, 1024000LL, 1024001LL, 4700000000LL}) {
        golden.add(u"player size %1"_s.arg(bytes), sizeText(bytes, kPlayerBytesLimit));
        golden.add(u"preview size %1"_s.arg(bytes), sizeText(bytes, kPreviewBytesLimit));
    }
    golden.add(u"video length"_s, videoLengthText(1234.9, QSize(352, 288)));
    golden.add(u"video length, picture not known"_s, videoLengthText(83.5, QSize()));
    golden.add(u"seconds"_s, secondsText(83.456));
    golden.add(u"position strip"_s, positionStripText(5.25, 60, QTime(14, 3, 27)));

    const FileFacts facts{1023801, u"DAT 文件"_s, u"2024-01-02 03:04:05"_s, u"2024-01-02 03:04:06"_s,
        u"2024-01-02 03:04:07"_s, u"只读"_s};
    golden.add(u"player facts"_s, playerFactsLines(facts).join(u'|'));
    golden.add(u"preview facts"_s, previewFactsText(u"/cd/AVSEQ01.DAT"_s, facts));
    // An MP3 file: one MPEG-1 Layer III header (128 kbit/s, 44,100 Hz, joint stereo, no CRC) after 10 zero
    // bytes, padded to 4,096 bytes, and an ID3v1 tag with a title, an artist, a year, no album.
    QTemporaryDir folder;
    const QString mp3 = folder.filePath(u"song.mp3"_s);
    QByteArray bytes = QByteArray(10, '\0') + QByteArray::fromHex("FFFB9064");
    bytes += QByteArray(4096 - 128 - bytes.size(), '\0');
    bytes += "TAG" + QByteArray("Title").leftJustified(30, '\0')
        + QByteArray("Artist").leftJustified(30, '\0') + QByteArray(30, '\0') + QByteArray("1999")
        + QByteArray(28, '\0') + '\0' + char(7) + char(17);
    QFile file(mp3);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    golden.add(u"preview facts of an mp3 file"_s,
        previewFactsText(mp3, FileFacts{bytes.size(), {}, {}, {}, {}, {}}));
    golden.check(QStringLiteral(VINDARO_GOLDEN_DIR "/media_texts.txt"));
}

} // namespace
