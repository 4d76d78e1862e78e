#include "resources/ResourceTexts.h"
#include "ResourceBuilder.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace vindaro::info::resources;

namespace {

QStringList lines(const QString& listing)
{
    QStringList result = listing.split(QStringLiteral("\r\n"));
    EXPECT_TRUE(result.last().isEmpty()) << "every line ends with CR LF";
    result.removeLast();
    return result;
}

} // namespace

TEST(ResourceTexts, StringTableListsNonEmptyStringsWithTheirNumbers)
{
    const QByteArray table = stringTable({{1, QStringLiteral("Open")}, {3, QStringLiteral("Save")}});
    EXPECT_EQ(lines(*stringTableListing(table, 1)), QStringList({"1: Open", "3: Save"}));
    // table #3 holds strings 32 to 47
    EXPECT_EQ(lines(*stringTableListing(table, 3)), QStringList({"33: Open", "35: Save"}));

    const struct
    {
        QString text;
        QString shown;
    } rows[] = {
        {QStringLiteral("a\nb"), QStringLiteral("0: a\r\nb\r\n")},
        {QStringLiteral("a\r\nb"), QStringLiteral("0: a\r\nb\r\n")},
        {QStringLiteral("cut") + QChar(0) + QStringLiteral("away"), QStringLiteral("0: cut\r\n")},
        {QStringLiteral("中文"), QStringLiteral("0: 中文\r\n")},
    };
    for (const auto& row : rows)
        EXPECT_EQ(*stringTableListing(stringTable({{0, row.text}}), 1), row.shown) << row.shown.toStdString();

    QByteArray cut = table;
    cut.chop(3); // inside "Save"
    EXPECT_FALSE(stringTableListing(cut, 1));
    EXPECT_FALSE(stringTableListing({}, 1));
}

TEST(ResourceTexts, AcceleratorLinesStopAtTheLastEntryFlag)
{
    ResourceBuilder b;
    b.u16(9).u16(83).u16(100).u16(0); // FVIRTKEY | FCONTROL, 'S'
    b.u16(1 | 4 | 8 | 16).u16(112).u16(7).u16(0); // Shift+Ctrl+Alt+F1
    b.u16(1 | 0x80).u16(46).u16(65535).u16(0); // last entry: DEL
    b.u16(9).u16(65).u16(1).u16(0); // past the end flag: not listed
    EXPECT_EQ(lines(*acceleratorListing(b.bytes)),
        QStringList({
            "Ctrl+S (cmdID = 100)",
            "Shift+Ctrl+Alt+F1 (cmdID = 7)",
            "DEL (cmdID = 65535)",
        }));
    EXPECT_FALSE(acceleratorListing(QByteArray(7, '\0')));
}

TEST(ResourceTexts, MessageTableWithAnsiAndUtf16Entries)
{
    ResourceBuilder b;
    b.u32(2); // blocks
    b.u32(1).u32(2).u32(28); // messages 1 and 2 at 28
    b.u32(0x10).u32(0xFFFFFFFF).u32(52); // from 16 on: one entry, then a zero length that ends the block
    // 28: ANSI "Hi\n" padded with NULs, then UTF-16 "中\r\n"
    b.u16(12).u16(0).raw(QByteArray("Hi\n\0\0\0\0\0", 8));
    b.u16(12).u16(1).u16(0x4E2D).u16('\r').u16('\n').u16(0);
    // 52: UTF-16 "x", then the zero-length entry
    b.u16(8).u16(1).u16('x').u16(0);
    b.u16(0).u16(0);
    EXPECT_EQ(*messageTableListing(b.bytes), QStringLiteral("1: Hi\r\n2: 中\r\n16: x"));

    QByteArray pastEnd = b.bytes;
    pastEnd[24] = 100; // second block's entries start past the end
    EXPECT_FALSE(messageTableListing(pastEnd));
    EXPECT_FALSE(messageTableListing(QByteArray("\x05\0\0\0", 4))); // five blocks announced, none there
}

TEST(ResourceTexts, HexDumpLinesAre79CharactersWithTheLastPadded)
{
    QByteArray bytes;
    for (int i = 0; i < 17; ++i)
        bytes.append(static_cast<char>("ABCDEFGHIJKLMNOPQ"[i]));
    bytes[1] = '\x1f';
    bytes[2] = '\x7f';
    bytes[3] = '\xe4';
    const QString dump = hexDump(bytes);
    ASSERT_EQ(dump.size(), 2 * 79);
    EXPECT_EQ(dump.left(79),
        QStringLiteral("00000000 | 41 1F 7F E4 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 | A...EFGHIJKLMNOP\r\n"));
    EXPECT_EQ(dump.mid(79),
        QStringLiteral("00000010 | 51 ") + QString(45, QLatin1Char(' ')) + QStringLiteral("| Q")
            + QString(15, QLatin1Char(' ')) + QStringLiteral("\r\n"));

    EXPECT_EQ(hexDump(QByteArray(13264, 'x')).size(), 829 * 79);
    EXPECT_EQ(hexDump(QByteArray(13264, 'x')).right(81).left(10), QStringLiteral("\r\n000033C0"));
    EXPECT_TRUE(hexDump(QByteArray(13265, 'x')).isEmpty());
    EXPECT_TRUE(hexDump({}).isEmpty());
}

TEST(ResourceTexts, AppendLimitsCountCodePageBytes)
{
    // Past the limit a note (in the golden file of tests/info) stands for the text.
    const QString tooLong = textToAppend(QString(1024001, QLatin1Char('a'))).text;
    EXPECT_LT(tooLong.size(), 200);
    const struct
    {
        QString text;
        int limit;
        bool appended;
    } rows[] = {
        {QString(65534, QLatin1Char('a')), 0, true},
        {QString(65535, QLatin1Char('a')), 1024000, true},
        {QString(32767, QChar(0x4E2D)), 0, true}, // two bytes each in the Chinese code page
        {QString(32768, QChar(0x4E2D)), 1024000, true},
        {QString(1024000, QLatin1Char('a')), 1024000, true},
        {QString(1024001, QLatin1Char('a')), 0, false},
    };
    for (const auto& row : rows) {
        const TextAppend append = textToAppend(row.text);
        EXPECT_EQ(append.limit, row.limit) << row.text.size();
        EXPECT_EQ(append.text, row.appended ? row.text : tooLong) << row.text.size();
    }
}

// One menu, in both template forms:
//   &File (popup) > Open (100), separator, Recent (popup) > a.txt (checked, 201); Exit (300)
class MenuForms : public ::testing::TestWithParam<bool>
{
public:
    static QByteArray menu(bool extended)
    {
        ResourceBuilder b;
        if (!extended) {
            b.u16(0).u16(0);
            b.u16(0x10).sz(QStringLiteral("&File"));
            b.u16(0).u16(100).sz(QStringLiteral("Open"));
            b.u16(0).u16(0).sz({}); // separator
            b.u16(0x10 | 0x80).sz(QStringLiteral("Recent"));
            b.u16(0x08 | 0x80).u16(201).sz(QStringLiteral("a.txt"));
            b.u16(0x80).u16(300).sz(QStringLiteral("Exit"));
            return b.bytes;
        }
        b.u16(1).u16(4).u32(0);
        auto item = [&b](quint32 type, quint32 state, quint32 id, quint16 resInfo, const QString& text) {
            b.u32(type).u32(state).u32(id).u16(resInfo).sz(text).align4();
            if (resInfo & 1)
                b.u32(0); // help id
        };
        item(0, 0, 10, 0x01, QStringLiteral("&File"));
        item(0, 0, 100, 0, QStringLiteral("Open"));
        item(0x800, 0, 0, 0, {});
        item(0, 0, 20, 0x81, QStringLiteral("Recent"));
        item(0, 0x08, 201, 0x80, QStringLiteral("a.txt"));
        item(0, 0, 300, 0x80, QStringLiteral("Exit"));
        return b.bytes;
    }
};

TEST_P(MenuForms, NestedPopupSeparatorAndCheckedItem)
{
    const bool extended = GetParam();
    const QByteArray bytes = menu(extended);
    // a classic popup has no command number of its own
    const QString file = extended ? QStringLiteral("10") : QStringLiteral("0");
    const QString recent = extended ? QStringLiteral("20") : QStringLiteral("0");
    EXPECT_EQ(lines(*menuListing(bytes)),
        QStringList({"&File (cmdID = " + file + ")", ".....Open (cmdID = 100)", ".....[MENU SEPARATOR]",
            ".....Recent (cmdID = " + recent + ")", "..........a.txt (checked) (cmdID = 201)",
            "Exit (cmdID = 300)"}));
    // every cut inside the items leaves a template that cannot be walked
    for (qsizetype size = extended ? 9 : 5; size < bytes.size(); ++size)
        EXPECT_FALSE(menuListing(bytes.left(size))) << size;
}

INSTANTIATE_TEST_SUITE_P(ClassicAndExtended, MenuForms, ::testing::Bool());

TEST(ResourceTexts, MenuTextIsCutAt256AndDepthIsCapped)
{
    ResourceBuilder b;
    b.u16(0).u16(0).u16(0x80).u16(1).sz(QString(300, QLatin1Char('m')));
    EXPECT_EQ(*menuListing(b.bytes), QString(256, QLatin1Char('m')) + QStringLiteral(" (cmdID = 1)\r\n"));

    ResourceBuilder deep; // 10,000 nested popups: refused, not a stack overflow
    deep.u16(0).u16(0);
    for (int i = 0; i < 10000; ++i)
        deep.u16(0x10 | 0x80).sz({});
    deep.u16(0x80).u16(1).sz({});
    EXPECT_FALSE(menuListing(deep.bytes));
    EXPECT_FALSE(menuListing(QByteArray("\x02\0\0\0", 4))); // unknown version
}
