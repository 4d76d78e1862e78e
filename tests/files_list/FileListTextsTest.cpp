#include "files/FileListTexts.h"

#include <gtest/gtest.h>

#include <limits>

using namespace vindaro::files;

namespace {

struct PatternCase
{
    const char* name;
    const char* pattern;
    bool matches;
};

class ScanPattern : public ::testing::TestWithParam<PatternCase>
{
};

TEST_P(ScanPattern, ComparesOnlyTheLastThreeCharacters)
{
    const PatternCase& c = GetParam();
    EXPECT_EQ(matchesScanPattern(QString::fromUtf8(c.name), QString::fromUtf8(c.pattern)), c.matches)
        << c.name << " / " << c.pattern;
}

INSTANTIATE_TEST_SUITE_P(Table, ScanPattern,
    ::testing::Values(PatternCase{"AVSEQ01.DAT", "*.DAT", true}, PatternCase{"update.dat", "*.DAT", true},
        PatternCase{"notdat", "*.DAT", true}, PatternCase{"Movie.Dat", "*.dat", true},
        PatternCase{"a.vob", "*.DAT", false}, PatternCase{"at", "*.DAT", false},
        // The rest of the pattern is never looked at.
        PatternCase{"readme.dat", "AVSEQ*.DAT", true},
        // Only the all-files pattern is trimmed.
        PatternCase{"a.vob", "  *.*  ", true}, PatternCase{"a.dat", "*.DAT ", false},
        PatternCase{"noextension", "*.*", true}));

TEST(FileListTexts, ListLineWithAndWithoutPosition)
{
    EXPECT_EQ(filesInfoLine(12, 1'470'103'552, 3),
        QStringLiteral("文件总数:3/12个  总计大小:1,402MB [1,470,103,552字节]"));
    EXPECT_EQ(filesInfoLine(1, 1023), QStringLiteral("文件总数:1个  总计大小:0MB [1,023字节]"));
    EXPECT_EQ(kResetFilesInfo, QStringLiteral("文件总数：0个，总计大小：0M，0字节"));
}

TEST(FileListTexts, StatusPanels)
{
    EXPECT_EQ(sizeTypePanel(1'048'576, QStringLiteral("DAT 文件"), QStringLiteral("只读")),
        QStringLiteral("  大小：1,024KB [1,048,576字节]  类型：DAT 文件  属性：只读"));
    EXPECT_EQ(sizeTypePanel(1023, QStringLiteral("T"), QString()),
        QStringLiteral("  大小：0KB [1,023字节]  类型：T  属性："));
    EXPECT_EQ(
        datesPanel(QStringLiteral("m"), QStringLiteral("a")), QStringLiteral("  修改时间：m  访问时间：a"));
}

TEST(FileListTexts, DestinationFollowsTheEntrysName)
{
    EXPECT_EQ(followedDestination(
                  QStringLiteral("/out/old.dat"), QStringLiteral("/media/cdrom/MPEGAV/AVSEQ02.DAT")),
        QStringLiteral("/out/AVSEQ02.DAT"));
    EXPECT_EQ(followedDestination(QString(), QStringLiteral("/m/AVSEQ02.DAT")), QString());
    EXPECT_EQ(followedDestination(QStringLiteral("/out/"), QStringLiteral("/m/a.dat")),
        QStringLiteral("/out/a.dat"));
    // A destination without a folder keeps its text as the folder.
    EXPECT_EQ(followedDestination(QStringLiteral("old.dat"), QStringLiteral("/m/a.dat")),
        QStringLiteral("old.dat/a.dat"));
}

TEST(FileListTexts, DeleteQuestionSpellsOutTheChoices)
{
    EXPECT_EQ(deleteQuestionText(QStringLiteral("/v/a.dat")),
        QStringLiteral("真的要删除：/v/a.dat 吗？\r\n\r\n是[Y]：永久删除文件\r\n否[N]：删除到回收站\r\n取 "
                       "消：取消删除文件\r\n"));
}

TEST(FileListTexts, PropertiesWindowByEndingAndSystem)
{
    const QString xp = QStringLiteral("Microsoft Windows XP");
    const QString linux = QStringLiteral("Debian GNU/Linux 12 (bookworm)");
    EXPECT_TRUE(propertiesUseOwnWindow(QStringLiteral("/a/song.mp3"), linux));
    EXPECT_FALSE(propertiesUseOwnWindow(QStringLiteral("/a/song.mp3"), xp));
    EXPECT_TRUE(propertiesUseOwnWindow(
        QStringLiteral("/a/song.mp3"), QStringLiteral("Get Operating System Verion Error!")));
    EXPECT_FALSE(propertiesUseOwnWindow(QStringLiteral("/a/movie.dat"), linux));
    for (const char* name : {"/a/b.zip", "/a/B.SWF", "/a/c.exe", "/a/d.Dll"})
        EXPECT_TRUE(propertiesUseOwnWindow(QString::fromLatin1(name), xp)) << name;
}

TEST(FileListTexts, AddFolderCapacityByFamily)
{
    EXPECT_TRUE(addFolderAllowed(32'736, addFolderCapacity(1)));
    EXPECT_FALSE(addFolderAllowed(32'737, addFolderCapacity(1)));
    EXPECT_TRUE(addFolderAllowed(2'147'483'615, addFolderCapacity(2)));
    EXPECT_FALSE(addFolderAllowed(2'147'483'616, addFolderCapacity(2)));
    EXPECT_TRUE(addFolderAllowed(5'000'000'000, addFolderCapacity(0)));
}

TEST(FileListTexts, PreviewVideosAndPictures)
{
    EXPECT_TRUE(isPreviewVideo(QStringLiteral("/cd/MPEGAV/AVSEQ01.DAT")));
    EXPECT_TRUE(isPreviewVideo(QStringLiteral("/v/clip.mpeg")));
    EXPECT_FALSE(isPreviewVideo(QStringLiteral("//server/share/a.dat")));
    EXPECT_FALSE(isPreviewVideo(QStringLiteral("/v/clip.mpg")));
    EXPECT_TRUE(isPictureEnding(QStringLiteral("/p/a.JPG")));
    EXPECT_FALSE(isPictureEnding(QStringLiteral("/p/a.jpeg")));
}

// Kilobytes are rounded as "##,#0" rounds a fraction, not cut.
TEST(FileListTexts, RenameSizeLineSwitchesToRoundedKilobytesAbove1024000Bytes)
{
    const struct
    {
        qint64 bytes;
        const char* line;
    } rows[] = {
        {0, "文件大小：0字节"},
        {1'024'000, "文件大小：1,024,000字节"},
        {1'024'001, "文件大小：1,000KB"},
        {1'024'511, "文件大小：1,000KB"}, // 1000.499
        {1'024'512, "文件大小：1,001KB"}, // 1000.5: halves go up
        {2'047'999, "文件大小：2,000KB"}, // 1999.999
        {5'000'000'000'000, "文件大小：4,882,812,500KB"}, // 64-bit sizes
        {std::numeric_limits<qint64>::max(), "文件大小：9,007,199,254,740,992KB"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(renameSizeLine(row.bytes), QString::fromUtf8(row.line)) << row.bytes;
}

TEST(FileListTexts, RenameFactsWithAndWithoutTag)
{
    RenameFacts facts;
    facts.sizeBytes = 5;
    facts.typeName = QStringLiteral("MP3 文件");
    facts.created = QStringLiteral("c");
    facts.modified = QStringLiteral("m");
    facts.accessed = QStringLiteral("a");
    facts.attributes = QStringLiteral("存档");
    const QString general
        = QStringLiteral("文件大小：5字节\r\n文件类型：MP3 "
                         "文件\r\n创建时间：c\r\n修改时间：m\r\n访问时间：a\r\n文件属性：存档");
    EXPECT_EQ(renameFactsText(facts), general);
    facts.tag = RenameFacts::Tag{QStringLiteral("Song"), QStringLiteral("未知艺术家"), QStringLiteral("Al"),
        QStringLiteral("2003"), QStringLiteral("Rock"), QStringLiteral("7"), QStringLiteral("c")};
    EXPECT_EQ(renameFactsText(facts),
        general
            + QStringLiteral("\r\n曲名：Song\r\n艺人：未知艺术家\r\n专集：Al\r\n年份：2003  流派：Rock  "
                             "音轨序号：7\r\n备注：c"));
}

TEST(FileListTexts, TitleBreaksEvery36Characters)
{
    EXPECT_EQ(wrapTitle(QString(36, u'a')), QString(36, u'a'));
    EXPECT_EQ(wrapTitle(QString(37, u'a')), QString(36, u'a') + u'\n' + u'a');
    EXPECT_EQ(wrapTitle(QString(80, u'b')).count(u'\n'), 2);
    EXPECT_EQ(proposedNewName(QStringLiteral("AVSEQ01.DAT")), QStringLiteral("N[01]AVSEQ01.DAT"));
}

} // namespace
