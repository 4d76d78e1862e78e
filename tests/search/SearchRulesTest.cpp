#include "search/SearchRules.h"

#include <QDir>

#include <sys/stat.h>

#include <gtest/gtest.h>

using namespace vindaro;
using namespace vindaro::search;

namespace {

struct NameCase
{
    const char* pattern;
    const char* name;
    bool matches;
};

class SearchName : public ::testing::TestWithParam<NameCase>
{
};

// The walk tests names on their bytes, the reference rule on text: both must give the same answer.
TEST_P(SearchName, BytesAndTextAgree)
{
    const NameCase& c = GetParam();
    const files::NameRule rule = searchNameRule(QString::fromUtf8(c.pattern));
    EXPECT_EQ(rule.matches(c.name, std::strlen(c.name)), c.matches) << c.pattern << " / " << c.name;
    EXPECT_EQ(rule.matches(QString::fromUtf8(c.name)), c.matches) << c.pattern << " / " << c.name;
}

INSTANTIATE_TEST_SUITE_P(Table, SearchName,
    ::testing::Values(NameCase{"*.DAT", "AVSEQ01.DAT", true}, NameCase{"*.DAT", "avseq02.dat", true},
        NameCase{"*.DAT", "notdat", true}, NameCase{"*.DAT", "update.dat", true},
        NameCase{"*.DAT", "update", false}, // only the last three characters count: "ATE"
        NameCase{"*.DAT", "a.vob", false}, NameCase{"*.DAT", "at", false},
        NameCase{"AVSEQ*.DAT", "readme.dat", true}, NameCase{"*.MPEG", "x.peg", true},
        NameCase{"*.MPEG", "a.mpg", false}, NameCase{"*", "x", false}, NameCase{"*", "*", false},
        NameCase{"abc*", "abc", false}, NameCase{"abc*", "xbc*", false},
        NameCase{"*.DAT;*.VOB", "a.vob", true}, NameCase{"*.DAT;*.VOB", "a.dat", false},
        NameCase{"  *.*  ", "noextension", true}, NameCase{"*.* ", ".hidden", true},
        // Without "*" the whole name, any case.
        NameCase{"avseq01.dat", "AVSEQ01.DAT", true}, NameCase{"avseq01.dat", "xavseq01.dat", false},
        NameCase{"avseq01.dat", "avseq01.dat.bak", false}, NameCase{"avseq01.dat", "avseq01.da", false},
        // Other scripts: the tail or the name is compared as text.
        NameCase{"*.DAT", "影片.dat", true}, NameCase{"*.影片", "新.影片", true},
        NameCase{"*.影片", "影片a", false}, NameCase{"影片.dat", "影片.DAT", true},
        NameCase{"*.MPÉ", "clip.mpé", true}, NameCase{"ÉTÉ.DAT", "été.dat", true},
        NameCase{"ete.dat", "été.dat", false}));

TEST(SearchRules, ScopeGetsAClosingSlashAndTildeIsHome)
{
    const QString home = QDir::homePath();
    EXPECT_EQ(scopeFolder(QStringLiteral("/media/cdrom")), QStringLiteral("/media/cdrom/"));
    EXPECT_EQ(scopeFolder(QStringLiteral("/")), QStringLiteral("/"));
    EXPECT_EQ(scopeFolder(QStringLiteral("~")), home + u'/');
    EXPECT_EQ(scopeFolder(QStringLiteral("~/Videos")), home + QStringLiteral("/Videos/"));
    EXPECT_EQ(scopeFolder(QStringLiteral("/data/~/x")), QStringLiteral("/data/~/x/"));
}

TEST(SearchRules, SizeClassBoundsAreInclusive)
{
    struct Row
    {
        qint64 bytes;
        bool inFirst, inSecond, inThird;
    };
    const Row rows[] = {{1'023, false, false, false}, {1'024, true, false, false},
        {10'240'000, true, true, false}, {10'240'001, false, true, false}, {10'485'760, false, true, false},
        {102'400'000, false, true, true}, {1'024'000'000, false, false, true},
        {1'073'741'824, false, false, false},
        // Sizes are 64-bit: a 4 GiB + 2 KiB file does not wrap into the first class.
        {4'294'969'344, false, false, false}};
    for (const Row& row : rows) {
        EXPECT_EQ(inSizeClass(row.bytes, kSizeClasses[0]), row.inFirst) << row.bytes;
        EXPECT_EQ(inSizeClass(row.bytes, kSizeClasses[1]), row.inSecond) << row.bytes;
        EXPECT_EQ(inSizeClass(row.bytes, kSizeClasses[2]), row.inThird) << row.bytes;
    }
}

TEST(SearchRules, FirstCheckedSizeBoxDecides)
{
    SearchOptions options;
    EXPECT_FALSE(sizeClassOf(options));
    options.size3 = true;
    EXPECT_EQ(sizeClassOf(options)->lowestBytes, 102'400'000);
    options.size2 = true;
    EXPECT_EQ(sizeClassOf(options)->lowestBytes, 10'240'000);
    options.size1 = true;
    EXPECT_EQ(sizeClassOf(options)->lowestBytes, 1'024);
}

TEST(SearchRules, AttributeFilterTakesFilesWithAnyCheckedAttribute)
{
    SearchOptions options;
    EXPECT_EQ(attributeMask(options), 0);
    EXPECT_TRUE(passesAttributes(0, 0)); // nothing checked: every file
    options.readOnly = true;
    options.hidden = true;
    const int mask = attributeMask(options);
    EXPECT_EQ(mask, kReadOnly | kHidden);
    EXPECT_TRUE(passesAttributes(kHidden | kArchive, mask));
    EXPECT_TRUE(passesAttributes(kReadOnly, mask));
    EXPECT_FALSE(passesAttributes(kArchive | kSystem, mask));
}

TEST(SearchRules, LinuxFactsBecomeAttributes)
{
    const quint32 me = 1000;
    const QList<quint32> myGroups{1000, 24};
    auto file = [](quint32 mode, quint32 owner, quint32 group) {
        files::WalkedFile f;
        f.mode = S_IFREG | mode;
        f.ownerId = owner;
        f.groupId = group;
        return f;
    };
    struct Row
    {
        files::WalkedFile facts;
        int word;
    };
    files::WalkedFile hidden = file(0644, me, me);
    hidden.hiddenName = true;
    files::WalkedFile onDisc = file(0644, me, me);
    onDisc.readOnlyVolume = true;
    files::WalkedFile packed = file(0644, me, me);
    packed.attributes = STATX_ATTR_COMPRESSED;
    const Row rows[] = {
        {file(0644, me, me), kArchive},
        {file(0444, me, me), kReadOnly | kArchive},
        {file(0664, 2000, 24), kArchive}, // writable through a group of mine
        {file(0644, 2000, 24), kReadOnly | kArchive}, // my group may not write
        {file(0644, 0, 0), kReadOnly | kSystem | kArchive}, // root's file
        {file(0666, 65534, 65534), kSystem | kArchive}, // nobody's
        {hidden, kHidden | kArchive},
        {onDisc, kReadOnly | kArchive},
        {packed, kArchive | kCompressed},
    };
    for (const Row& row : rows)
        EXPECT_EQ(attributeWord(row.facts, me, myGroups), row.word) << std::oct << row.facts.mode;
}

TEST(SearchRules, ExactNamesIgnoreTheBoxesAndPlainSearchesNeedNoStat)
{
    SearchOptions options;
    options.size1 = true;
    options.hidden = true;
    EXPECT_FALSE(walkOptions(QStringLiteral("avseq01.dat"), options).keep);
    EXPECT_TRUE(walkOptions(QStringLiteral("*.dat"), options).keep);
    EXPECT_FALSE(walkOptions(QStringLiteral("*.dat"), SearchOptions{}).keep);
    options.includeSubfolders = false;
    EXPECT_FALSE(walkOptions(QStringLiteral("*.dat"), options).includeSubfolders);
}

} // namespace
