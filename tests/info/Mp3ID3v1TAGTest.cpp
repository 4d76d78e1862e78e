#include "Mp3ID3v1TAG.h"
#include "InfoSamples.h"
#include "InfoText.h"

#include <QBuffer>
#include <QStringDecoder>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vindaro::info::Mp3ID3v1TAG;
using vindaro::testing::Id3Fields;

namespace {

QByteArray gbk(const char* utf8)
{
    QStringEncoder encoder("GB18030");
    return encoder.encode(QString::fromUtf8(utf8));
}

QByteArray field(QByteArray bytes, qsizetype width, char pad = '\0')
{
    return Id3Fields::field(std::move(bytes), width, pad);
}

// Reads `f` as the tail of a 200-byte file.
Mp3ID3v1TAG readTag(const Id3Fields& f)
{
    QByteArray bytes = QByteArray(200 - 128, 'x') + f.tag();
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    Mp3ID3v1TAG tag;
    EXPECT_TRUE(tag.getId3(buffer));
    return tag;
}

TEST(Mp3ID3v1TAG, TitleKeepsSignificantCharacters)
{
    const struct
    {
        QByteArray bytes; // the raw title field
        const char* expected;
    } cases[] = {
        {field("Song", 30), "Song"},
        {field("Song", 30, ' '), "Song"},
        {field("  A  B", 30, ' '), "A  B"}, // inner blanks kept
        {field("\x01\xFF Hi\x7F\x80", 30), "Hi"}, // control and high bytes trimmed
        {field(gbk("  中文歌曲 "), 30), "中文歌曲"},
        {field(gbk("\u3000歌"), 30), "\u3000歌"}, // the ideographic space is significant
        {field("  \xE4\xB8\xAD\xE6\x96\x87 ", 30), "中文"}, // UTF-8
        // A UTF-8 writer that cut a character at the width: the half character goes.
        {QByteArray(28, 'a') + "\xE4\xB8", "aaaaaaaaaaaaaaaaaaaaaaaaaaaa"},
        {field({}, 30), ""},
    };
    for (const auto& c : cases) {
        Id3Fields f;
        f.title = c.bytes;
        ASSERT_EQ(f.title.size(), 30);
        EXPECT_EQ(readTag(f).title(), QString::fromUtf8(c.expected)) << c.expected;
    }
}

TEST(Mp3ID3v1TAG, FieldsTrackAndGenre)
{
    Id3Fields f;
    f.album = field(gbk("专辑"), 30, ' ');
    f.year = "2003";
    f.comment = field("Ripped by X", 29);
    f.comment[20] = '\xFF';
    Mp3ID3v1TAG tag = readTag(f);
    EXPECT_EQ(tag.artist(), QStringLiteral("未知艺术家"));
    EXPECT_EQ(tag.album(), QStringLiteral("专辑"));
    EXPECT_EQ(tag.year(), QStringLiteral("2003"));
    EXPECT_EQ(tag.comments(), QStringLiteral("RippedbyX"));
    // The replacement for an empty artist is not stored: the field stays blank.
    EXPECT_EQ(tag.record().mid(30, 30), QByteArray(30, ' '));

    const std::pair<int, const char*> tracks[] = {{0, ""}, {32, ""}, {7, "7"}, {255, "255"}};
    for (const auto& [byte, text] : tracks) {
        f.track = static_cast<char>(byte);
        EXPECT_EQ(readTag(f).track(), QString::fromUtf8(text)) << byte;
    }
    const std::pair<int, const char*> genres[]
        = {{0, "Blues"}, {147, "Synth Pop"}, {148, "None"}, {255, "None"}};
    for (const auto& [byte, text] : genres) {
        f.genre = static_cast<char>(byte);
        EXPECT_EQ(readTag(f).genre(), QString::fromUtf8(text)) << byte;
    }
}

TEST(Mp3ID3v1TAG, NoTagLeavesTheRecord)
{
    Id3Fields f;
    f.title = field("Kept", 30);
    Mp3ID3v1TAG tag = readTag(f);
    for (QByteArray bytes : {QByteArray(100, 'x') + Id3Fields().tag("tag"), Id3Fields().tag().left(127)}) {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        EXPECT_FALSE(tag.getId3(buffer));
    }
    EXPECT_FALSE(tag.getId3(QStringLiteral("/nonexistent/file.mp3")));
    EXPECT_EQ(tag.title(), QStringLiteral("Kept"));
}

TEST(Mp3ID3v1TAG, SettersValidateNumbersAndNeverHalveCharacters)
{
    Mp3ID3v1TAG tag;
    EXPECT_TRUE(tag.setTrack(QStringLiteral("7.5"))); // halves to even
    EXPECT_EQ(tag.track(), QStringLiteral("8"));
    EXPECT_TRUE(tag.setTrack(QStringLiteral("6.5")));
    EXPECT_EQ(tag.track(), QStringLiteral("6"));
    EXPECT_FALSE(tag.setTrack(QStringLiteral("256")));
    EXPECT_FALSE(tag.setTrack(QStringLiteral("-1")));
    EXPECT_FALSE(tag.setGenre(QStringLiteral("Rock")));
    EXPECT_EQ(tag.track(), QStringLiteral("6"));
    EXPECT_TRUE(tag.setGenre(QStringLiteral("147")));
    EXPECT_EQ(tag.genre(), QStringLiteral("Synth Pop"));

    // 15 double-byte characters fill the 30-byte title exactly; a 16th would not fit and is dropped.
    tag.setTitle(QStringLiteral("A") + QString(15, QChar(0x4E2D)));
    EXPECT_EQ(tag.record().left(30), "A" + gbk("中").repeated(14) + " ");
    EXPECT_EQ(tag.title(), QStringLiteral("A") + QString(14, QChar(0x4E2D)));
    tag.setYear(QStringLiteral("20031"));
    EXPECT_EQ(tag.year(), QStringLiteral("2003"));
}

TEST(Mp3ID3v1TAG, SaveAppendsOnceThenRewritesInPlace)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.mp3"));
    const QByteArray audio(1000, '\x55');
    ASSERT_TRUE(vindaro::testing::writeFile(path, audio));
    Mp3ID3v1TAG tag;
    tag.setTitle(QStringLiteral("标题"));
    tag.setArtist(QStringLiteral("Artist"));
    ASSERT_TRUE(tag.setGenre(QStringLiteral("17")));
    ASSERT_TRUE(tag.saveId3(path));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray written = file.readAll();
    file.close();
    ASSERT_EQ(written.size(), 1128);
    EXPECT_EQ(written.left(1003), audio + "TAG");

    Mp3ID3v1TAG reread;
    ASSERT_TRUE(reread.getId3(path));
    EXPECT_EQ(reread.title(), QStringLiteral("标题"));
    EXPECT_EQ(reread.artist(), QStringLiteral("Artist"));
    EXPECT_EQ(reread.genre(), QStringLiteral("Rock"));

    reread.setTitle(QStringLiteral("New"));
    ASSERT_TRUE(reread.saveId3(path));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    written = file.readAll();
    EXPECT_EQ(written.size(), 1128);
    EXPECT_EQ(written.left(1000), audio);
    EXPECT_EQ(written.mid(1003, 30), field("New", 30, ' '));

    EXPECT_FALSE(tag.saveId3(dir.filePath(QStringLiteral("missing.mp3"))));
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("missing.mp3"))));
}

// The tag's block comes first, and only when the file has a tag.
TEST(Mp3ID3v1TAG, SummaryBeginsWithTheTagWhenThereIsOne)
{
    QTemporaryDir dir;
    const QString tagged = dir.filePath(QStringLiteral("t.mp3"));
    const QString plain = dir.filePath(QStringLiteral("p.mp3"));
    const QByteArray audio = vindaro::testing::mpegStream(vindaro::testing::kMpegHeader, 0, 1004);
    ASSERT_TRUE(vindaro::testing::writeFile(tagged, audio + Id3Fields().tag()));
    ASSERT_TRUE(vindaro::testing::writeFile(plain, audio));
    const QString withTag = vindaro::info::mp3Summary(tagged);
    EXPECT_TRUE(withTag.startsWith(QStringLiteral("\r\n[ID3v1信息]")));
    EXPECT_LT(withTag.indexOf(QStringLiteral("[ID3v1信息]")), withTag.indexOf(QStringLiteral("[MPEG信息]")));
    EXPECT_TRUE(vindaro::info::mp3Summary(plain).startsWith(QStringLiteral("\r\n\r\n[MPEG信息]")));
}

} // namespace
