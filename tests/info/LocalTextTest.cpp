#include "LocalText.h"

#include <QStringEncoder>

#include <gtest/gtest.h>

using namespace vindaro::info;

namespace {

TEST(LocalText, DecodesUtf8OrGb18030)
{
    const QString chinese = QStringLiteral("中文歌曲");
    EXPECT_EQ(decodeLocalText(chinese.toUtf8()), chinese);
    EXPECT_EQ(decodeLocalText(QByteArray(QStringEncoder("GB18030").encode(chinese))), chinese);
    EXPECT_EQ(decodeLocalText("plain"), QStringLiteral("plain"));
    // Overlong and surrogate forms are not UTF-8.
    EXPECT_EQ(detectEncoding("\xC0\xAF"), TextEncoding::Gb18030);
    EXPECT_EQ(detectEncoding("\xED\xA0\x80"), TextEncoding::Gb18030);
    EXPECT_EQ(detectEncoding("ab\xE4\xB8"), TextEncoding::Gb18030);
    EXPECT_EQ(detectEncoding("ab\xE4\xB8", true), TextEncoding::Utf8);
}

TEST(LocalText, EncodedFieldsKeepWholeCharacters)
{
    // "€" is two bytes and "𠀀" four in GB18030; neither may be cut at the width.
    EXPECT_EQ(encodeField(QStringLiteral("abc中"), 4), QByteArray("abc "));
    EXPECT_EQ(encodeField(QStringLiteral("ab\U00020000"), 5), QByteArray("ab   "));
    EXPECT_EQ(encodeField(QStringLiteral("ab\U00020000"), 6).left(2), QByteArray("ab"));
    EXPECT_EQ(
        decodeLocalText(encodeField(QStringLiteral("ab\U00020000"), 6)), QStringLiteral("ab\U00020000"));
    EXPECT_EQ(encodeField(QString(), 3), QByteArray("   "));
    EXPECT_EQ(padField("a\xE4\xB8\xAD", 3, TextEncoding::Utf8), QByteArray("a  "));
}

// Tags are GB18030 unless the locale names a double-byte page of its own (Big5 for Taiwan and Hong Kong).
TEST(LocalText, TagCodePageFollowsADoubleByteLocaleOnly)
{
    const struct
    {
        const char* codeset;
        const char* page;
    } table[] = {
        {"UTF-8", "GB18030"},
        {"ANSI_X3.4-1968", "GB18030"},
        {"GBK", "GB18030"},
        {"GB18030", "GB18030"},
        {"ISO-8859-1", "GB18030"},
        {"EUC-JP", "GB18030"},
        {"BIG5", "BIG5"},
        {"big5-hkscs", "BIG5-HKSCS"},
        {"EUC-KR", "EUC-KR"},
    };
    for (const auto& row : table)
        EXPECT_EQ(tagCodePageFor(row.codeset), QByteArray(row.page)) << row.codeset;
    // the tests run under C.UTF-8
    EXPECT_EQ(tagCodePage(), QByteArray("GB18030"));

    // a Big5 field keeps whole characters too: "中文" is A4 A4 A4 E5
    EXPECT_EQ(encodeField(QStringLiteral("中文"), 5, "BIG5"), QByteArray("\xA4\xA4\xA4\xE5 "));
    EXPECT_EQ(encodeField(QStringLiteral("中文"), 3, "BIG5"), QByteArray("\xA4\xA4 "));
}

} // namespace
