#include "Mp3ID3v1TAG.h"
#include "InfoText.h"

#include <QBuffer>
#include <QFile>
#include <QStringDecoder>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vindaro::info::Mp3ID3v1TAG;

namespace {

QByteArray gbk(const char* utf8)
{
    QStringEncoder encoder("GB18030");
    return encoder.encode(QString::fromUtf8(utf8));
}

QByteArray field(QByteArray bytes, qsizetype width, char pad = '\0')
{
    bytes.append(width - bytes.size(), pad);
    return bytes;
}

struct TagFields
{
    QByteArray title = field({}, 30);
    QByteArray artist = field({}, 30);
    QByteArray album = field({}, 30);
    QByteArray year = field({}, 4);
    QByteArray comment = field({}, 29);
    char track = 0;
    char genre = 0;
};

QByteArray tagBytes(const TagFields& f, const char* marker = "TAG")
{
    return QByteArray(marker, 3) + f.title + f.artist + f.album + f.year + f.comment + f.track + f.genre;
}

// Reads `f` as the tail of a 200-byte file.
Mp3ID3v1TAG readTag(const TagFields& f)
{
    QByteArray bytes = QByteArray(200 - 128, 'x') + tagBytes(f);
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    Mp3ID3v1TAG tag;
    EXPECT_TRUE(tag.getId3(buffer));
    return tag;
}

struct TextCase
{
    const char* name;
    QByteArray bytes; // the raw title field
    const char* expected;
};

class Id3v1Trimming : public ::testing::TestWithParam<TextCase>
{
};

TEST_P(Id3v1Trimming, TitleKeepsSignificantCharacters)
{
    TagFields f;
    f.title = GetParam().bytes;
    ASSERT_EQ(f.title.size(), 30);
    Mp3ID3v1TAG tag = readTag(f);
    EXPECT_EQ(tag.title(), QString::fromUtf8(GetParam().expected));
    // The cleaned value is stored back, padded with blanks, and reads the same again.
    EXPECT_EQ(tag.title(), QString::fromUtf8(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(Table, Id3v1Trimming,
    ::testing::Values(TextCase{"NulPadded", field("Song", 30), "Song"},
        TextCase{"BlankPadded", field("Song", 30, ' '), "Song"},
        TextCase{"InnerBlanksKept", field("  A  B", 30, ' '), "A  B"},
        TextCase{"ControlAndHighBytesTrimmed", field("\x01\xFF Hi\x7F\x80", 30), "Hi"},
        TextCase{"Gbk", field(gbk("  中文歌曲 "), 30), "中文歌曲"},
        TextCase{"GbkIdeographicSpaceIsSignificant", field(gbk("\u3000歌"), 30), "\u3000歌"},
        TextCase{"Utf8", field("  \xE4\xB8\xAD\xE6\x96\x87 ", 30), "中文"},
        // A UTF-8 writer that cut a character at the width: the half character goes.
        TextCase{"Utf8CutAtWidth", QByteArray(28, 'a') + "\xE4\xB8", "aaaaaaaaaaaaaaaaaaaaaaaaaaaa"},
        TextCase{"Empty", field({}, 30), ""}),
    [](const ::testing::TestParamInfo<TextCase>& param) { return std::string(param.param.name); });

TEST(Mp3ID3v1TAG, GettersOfEveryField)
{
    TagFields f;
    f.album = field(gbk("专辑"), 30, ' ');
    f.year = "2003";
    f.comment = field("Ripped by X", 29);
    f.comment[20] = '\xFF';
    f.track = 7;
    f.genre = 17;
    Mp3ID3v1TAG tag = readTag(f);
    EXPECT_EQ(tag.artist(), QStringLiteral("未知艺术家"));
    EXPECT_EQ(tag.album(), QStringLiteral("专辑"));
    EXPECT_EQ(tag.year(), QStringLiteral("2003"));
    EXPECT_EQ(tag.comments(), QStringLiteral("RippedbyX"));
    EXPECT_EQ(tag.track(), QStringLiteral("7"));
    EXPECT_EQ(tag.genre(), QStringLiteral("Rock"));
    // The replacement for an empty artist is not stored: the field stays blank.
    EXPECT_EQ(tag.record().mid(30, 30), QByteArray(30, ' '));
}

TEST(Mp3ID3v1TAG, TrackAndGenreBytes)
{
    const std::pair<int, const char*> tracks[] = {{0, ""}, {32, ""}, {7, "7"}, {255, "255"}};
    for (const auto& [byte, text] : tracks) {
        TagFields f;
        f.track = static_cast<char>(byte);
        EXPECT_EQ(readTag(f).track(), QString::fromUtf8(text)) << byte;
    }
    const std::pair<int, const char*> genres[]
        = {{0, "Blues"}, {17, "Rock"}, {67, "Phychedelic"}, {147, "Synth Pop"}, {148, "None"}, {255, "None"}};
    for (const auto& [byte, text] : genres) {
        TagFields f;
        f.genre = static_cast<char>(byte);
        EXPECT_EQ(readTag(f).genre(), QString::fromUtf8(text)) << byte;
    }
    EXPECT_EQ(Mp3ID3v1TAG::getGenreList().size(), 148);
}

TEST(Mp3ID3v1TAG, NoTagLeavesTheRecord)
{
    TagFields f;
    f.title = field("Kept", 30);
    Mp3ID3v1TAG tag = readTag(f);

    QByteArray lower = QByteArray(100, 'x') + tagBytes(TagFields(), "tag");
    QBuffer lowerBuffer(&lower);
    lowerBuffer.open(QIODevice::ReadOnly);
    EXPECT_FALSE(tag.getId3(lowerBuffer));

    QByteArray shortFile = tagBytes(TagFields()).left(127);
    QBuffer shortBuffer(&shortFile);
    shortBuffer.open(QIODevice::ReadOnly);
    EXPECT_FALSE(tag.getId3(shortBuffer));

    EXPECT_EQ(tag.title(), QStringLiteral("Kept"));
    EXPECT_FALSE(tag.getId3(QStringLiteral("/nonexistent/file.mp3")));
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
    const QString fifteen = QString(15, QChar(0x4E2D));
    tag.setTitle(QStringLiteral("A") + fifteen);
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
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(audio);
    }
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
    EXPECT_EQ(written.left(1000), audio);
    EXPECT_EQ(written.mid(1000, 3), "TAG");

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

TEST(Mp3ID3v1TAG, TextBlockAndSummaryOrder)
{
    TagFields f;
    f.title = field("Song", 30);
    f.track = 32;
    f.genre = '\xFF';
    Mp3ID3v1TAG tag = readTag(f);
    EXPECT_EQ(vindaro::info::id3v1TextBlock(tag),
        QStringLiteral("\r\n[ID3v1信息]--------------------------------"
                       "\r\n曲名：Song"
                       "\r\n艺人：未知艺术家"
                       "\r\n专集："
                       "\r\n年份："
                       "\r\n流派：None"
                       "\r\n音轨序号："
                       "\r\n备注："));

    QTemporaryDir dir;
    const QString tagged = dir.filePath(QStringLiteral("t.mp3"));
    const QString plain = dir.filePath(QStringLiteral("p.mp3"));
    QFile a(tagged);
    ASSERT_TRUE(a.open(QIODevice::WriteOnly));
    a.write(QByteArray("\xFF\xFB\x90\x64", 4) + QByteArray(1000, '\0') + tagBytes(f));
    a.close();
    QFile b(plain);
    ASSERT_TRUE(b.open(QIODevice::WriteOnly));
    b.write(QByteArray("\xFF\xFB\x90\x64", 4) + QByteArray(1000, '\0'));
    b.close();

    const QString withTag = vindaro::info::mp3Summary(tagged);
    EXPECT_TRUE(withTag.startsWith(QStringLiteral("\r\n[ID3v1信息]")));
    EXPECT_LT(withTag.indexOf(QStringLiteral("[ID3v1信息]")), withTag.indexOf(QStringLiteral("[MPEG信息]")));
    EXPECT_TRUE(vindaro::info::mp3Summary(plain).startsWith(QStringLiteral("\r\n\r\n[MPEG信息]")));
}

} // namespace
