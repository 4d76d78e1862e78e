// The file list's rules; its texts are checked in tests/files against the golden file.
#include "files/FileListTexts.h"

#include <gtest/gtest.h>

using namespace vindaro::files;
using namespace Qt::StringLiterals;

namespace {

TEST(FileListRules, ScanPatternComparesOnlyTheLastThreeCharacters)
{
    const struct
    {
        const char* name;
        const char* pattern;
        bool matches;
    } rows[] = {
        {"AVSEQ01.DAT", "*.DAT", true},
        {"update.dat", "*.DAT", true},
        {"notdat", "*.DAT", true},
        {"Movie.Dat", "*.dat", true},
        {"a.vob", "*.DAT", false},
        {"at", "*.DAT", false},
        {"readme.dat", "AVSEQ*.DAT", true}, // the rest of the pattern is never looked at
        {"a.vob", "  *.*  ", true},
        {"a.dat", "*.DAT ", false}, // only the all-files pattern is trimmed
        {"noextension", "*.*", true},
    };
    for (const auto& row : rows)
        EXPECT_EQ(
            matchesScanPattern(QString::fromUtf8(row.name), QString::fromUtf8(row.pattern)), row.matches)
            << row.name << " / " << row.pattern;
}

TEST(FileListRules, WhichFilesArePreviewedAndShowTheirOwnProperties)
{
    for (const auto& [path, video] : {std::pair{"/cd/MPEGAV/AVSEQ01.DAT", true}, {"/v/clip.mpeg", true},
             {"//server/share/a.dat", false}, {"/v/clip.mpg", false}})
        EXPECT_EQ(isPreviewVideo(QString::fromUtf8(path)), video) << path;
    EXPECT_TRUE(isPictureEnding(u"/p/a.JPG"_s));
    EXPECT_FALSE(isPictureEnding(u"/p/a.jpeg"_s));

    const QString xp = u"Microsoft Windows XP"_s;
    const QString linux = u"Debian GNU/Linux 12 (bookworm)"_s;
    EXPECT_TRUE(propertiesUseOwnWindow(u"/a/song.mp3"_s, linux));
    EXPECT_FALSE(propertiesUseOwnWindow(u"/a/song.mp3"_s, xp));
    EXPECT_TRUE(propertiesUseOwnWindow(u"/a/song.mp3"_s, u"Get Operating System Verion Error!"_s));
    EXPECT_FALSE(propertiesUseOwnWindow(u"/a/movie.dat"_s, linux));
    for (const char* name : {"/a/b.zip", "/a/B.SWF", "/a/c.exe", "/a/d.Dll"})
        EXPECT_TRUE(propertiesUseOwnWindow(QString::fromLatin1(name), xp)) << name;
}

TEST(FileListRules, AddFolderCapacityByFamily)
{
    EXPECT_TRUE(addFolderAllowed(32'736, addFolderCapacity(1)));
    EXPECT_FALSE(addFolderAllowed(32'737, addFolderCapacity(1)));
    EXPECT_TRUE(addFolderAllowed(2'147'483'615, addFolderCapacity(2)));
    EXPECT_FALSE(addFolderAllowed(2'147'483'616, addFolderCapacity(2)));
    EXPECT_TRUE(addFolderAllowed(5'000'000'000, addFolderCapacity(0)));
}

TEST(FileListRules, DestinationFollowsTheEntrysNameAndTitlesBreak)
{
    EXPECT_EQ(
        followedDestination(u"/out/old.dat"_s, u"/media/cdrom/MPEGAV/AVSEQ02.DAT"_s), u"/out/AVSEQ02.DAT"_s);
    EXPECT_EQ(followedDestination(QString(), u"/m/AVSEQ02.DAT"_s), QString());
    EXPECT_EQ(followedDestination(u"/out/"_s, u"/m/a.dat"_s), u"/out/a.dat"_s);
    // A destination without a folder keeps its text as the folder.
    EXPECT_EQ(followedDestination(u"old.dat"_s, u"/m/a.dat"_s), u"old.dat/a.dat"_s);

    EXPECT_EQ(wrapTitle(QString(36, u'a')), QString(36, u'a'));
    EXPECT_EQ(wrapTitle(QString(37, u'a')), QString(36, u'a') + u'\n' + u'a');
    EXPECT_EQ(wrapTitle(QString(80, u'b')).count(u'\n'), 2);
}

} // namespace
