#include "files/FileTexts.h"
#include "files/Format.h"

#include <gtest/gtest.h>

#include <limits>

using namespace vindaro::files;
using vindaro::platform::Volume;
using vindaro::platform::VolumeIdentity;
using vindaro::platform::VolumeSpace;

namespace {

struct SplitCase
{
    const char* path;
    const char* name;
    const char* parent;
};

class PathSplit : public ::testing::TestWithParam<SplitCase>
{
};

TEST_P(PathSplit, NameAndParent)
{
    const SplitCase c = GetParam();
    EXPECT_EQ(fileNameOf(QString::fromUtf8(c.path)), QString::fromUtf8(c.name));
    EXPECT_EQ(parentFolderOf(QString::fromUtf8(c.path)), QString::fromUtf8(c.parent));
}

INSTANTIATE_TEST_SUITE_P(FileTexts, PathSplit,
    ::testing::Values(SplitCase{"/a/b.dat", "b.dat", "/a/"},
        SplitCase{"b.dat", "b.dat", "b.dat"}, // no "/": whole, both ways
        SplitCase{"/a/b/", "", "/a/b/"}, SplitCase{"/", "", "/"}, SplitCase{"", "", ""},
        SplitCase{"/媒体/影片 1.vob", "影片 1.vob", "/媒体/"}));

TEST(FileTexts, ExistenceProbeTrimsBlanksAndOneClosingSlash)
{
    EXPECT_EQ(existenceProbePath(QStringLiteral("  /tmp/x/  ")), QStringLiteral("/tmp/x"));
    EXPECT_EQ(existenceProbePath(QStringLiteral("/tmp/x//")), QStringLiteral("/tmp/x/"));
    EXPECT_EQ(existenceProbePath(QStringLiteral("/")), QStringLiteral("/"));
    EXPECT_EQ(existenceProbePath(QStringLiteral(" / ")), QStringLiteral("/"));
    EXPECT_EQ(existenceProbePath(QStringLiteral("\t/x")), QStringLiteral("\t/x")); // only blanks go
}

TEST(FileTexts, TrailingSlashIsAddedOnce)
{
    EXPECT_EQ(withTrailingSlash(QStringLiteral("/media/cd")), QStringLiteral("/media/cd/"));
    EXPECT_EQ(withTrailingSlash(QStringLiteral("/")), QStringLiteral("/"));
    EXPECT_EQ(withTrailingSlash(QString()), QString());
}

TEST(FileTexts, AttributeWordFromLinuxFacts)
{
    PathFacts folder;
    folder.isDirectory = true;
    EXPECT_EQ(attributeWord(folder), 16);

    PathFacts readOnlyFile;
    readOnlyFile.isRegular = true;
    readOnlyFile.readOnly = true;
    EXPECT_EQ(attributeWord(readOnlyFile), 33);

    PathFacts hiddenFile;
    hiddenFile.isRegular = true;
    hiddenFile.hidden = true;
    EXPECT_EQ(attributeWord(hiddenFile), 34);

    PathFacts link;
    link.isLink = true;
    link.readOnly = true;
    link.hidden = true;
    EXPECT_EQ(attributeWord(link), 64); // a link reads as a link, nothing else

    PathFacts device; // neither file nor folder: no archive bit
    EXPECT_EQ(attributeWord(device), 0);
}

TEST(FileTexts, AttributeTextIsLookedUpAsAWholeValue)
{
    const struct
    {
        int word;
        const char* text;
    } cases[] = {
        {-1, ""},
        {0, "正常(无任何属性)"},
        {5, "系统,只读"},
        {16, "未知(16)"},
        {32, "存档"},
        {33, "只读,存档"},
        {34, "隐藏,存档"},
        {35, "只读,隐藏,存档"},
        {48, "未知(48)"},
        {64, "链接或快捷方式"},
        {2083, "只读,隐藏,系统,压缩,编制索引"},
        {2087, "只读,隐藏,系统,存档,压缩"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(attributeText(c.word), QString::fromUtf8(c.text)) << c.word;
}

TEST(FileTexts, DriveKindTexts)
{
    EXPECT_EQ(driveKindText(0, false), QStringLiteral("未知磁盘"));
    EXPECT_EQ(driveKindText(1, false), QStringLiteral("无效磁盘"));
    EXPECT_EQ(driveKindText(2, true), QStringLiteral("3.5英寸软盘"));
    EXPECT_EQ(driveKindText(2, false), QStringLiteral("可移动磁盘"));
    EXPECT_EQ(driveKindText(3, true), QStringLiteral("本地磁盘")); // the floppy rule is for removables only
    EXPECT_EQ(driveKindText(4, false), QStringLiteral("远程磁盘"));
    EXPECT_EQ(driveKindText(5, false), QStringLiteral("光盘"));
    EXPECT_EQ(driveKindText(6, false), QStringLiteral("Ram磁盘"));
    EXPECT_TRUE(isFloppyDevice(QStringLiteral("/dev/fd0")));
    EXPECT_FALSE(isFloppyDevice(QStringLiteral("/dev/sdb1")));
}

TEST(FileTexts, VolumeOfPathIsTheLongestComponentPrefix)
{
    const QList<Volume> volumes = {
        {QStringLiteral("/"), {}, {}, 3}, {QStringLiteral("/media/cd"), {}, {}, 5},
        {QStringLiteral("/media/cd/inner"), {}, {}, 2},
        {QStringLiteral("/home"), QStringLiteral("old"), {}, 3},
        {QStringLiteral("/home"), QStringLiteral("new"), {}, 4}, // mounted over the first
    };
    const auto mountOf = [&](const char* path) {
        const auto v = volumeOfPath(volumes, QString::fromUtf8(path));
        return v ? v->mountPoint : QStringLiteral("<none>");
    };
    EXPECT_EQ(mountOf("/media/cd/a.dat"), QStringLiteral("/media/cd"));
    EXPECT_EQ(mountOf("/media/cd"), QStringLiteral("/media/cd"));
    EXPECT_EQ(mountOf("/media/cd/"), QStringLiteral("/media/cd"));
    EXPECT_EQ(mountOf("/media/cdrom/a.dat"), QStringLiteral("/")); // not a component prefix
    EXPECT_EQ(mountOf("/media/cd/inner/x"), QStringLiteral("/media/cd/inner"));
    EXPECT_EQ(mountOf("/media/cd/inner/../x"), QStringLiteral("/media/cd"));
    EXPECT_EQ(mountOf("//media//cd"), QStringLiteral("/media/cd"));
    EXPECT_EQ(mountOf("Q:\\x"), QStringLiteral("<none>"));
    EXPECT_EQ(mountOf("relative/x"), QStringLiteral("<none>"));
    EXPECT_EQ(mountOf(""), QStringLiteral("<none>"));
    EXPECT_EQ(volumeOfPath(volumes, QStringLiteral("/home/u"))->device, QStringLiteral("new"));
    EXPECT_FALSE(volumeOfPath({}, QStringLiteral("/x")).has_value());
}

TEST(FileTexts, RootListsSplitBackIntoTheirRoots)
{
    const QStringList mounts = {QStringLiteral("/"), QStringLiteral("/home"),
        QStringLiteral("/media/my disc"), QStringLiteral("/srv/")};
    const QString joined = joinRoots(mounts);
    EXPECT_EQ(joined, QStringLiteral("//home//media/my disc//srv/"));
    EXPECT_EQ(splitRootList(joined),
        (QStringList{QStringLiteral("/"), QStringLiteral("/home/"), QStringLiteral("/media/my disc/"),
            QStringLiteral("/srv/")}));
    EXPECT_EQ(splitRootList(QStringLiteral("/home/")), QStringList{QStringLiteral("/home/")});
    EXPECT_TRUE(splitRootList(QString()).isEmpty());
}

class DiskInformation : public ::testing::Test
{
protected:
    VolumeSpace space{5'000'000'000, 1'234'567, 2'000'000, 512, 8, 1'220'703, 488};
    VolumeIdentity identity{QStringLiteral("VIDEO_CD"), 0x0A1B2C3D, QStringLiteral("iso9660")};
};

TEST_F(DiskInformation, EveryLine)
{
    const char* const expected[] = {
        "总计空间：5,000,000,000 字节",
        "可用空间：1,234,567 字节",
        "可用空间：2,000,000 字节",
        "已用空间：4,998,000,000 字节",
        "卷标：VIDEO_CD",
        "序列号：A1B2C3D",
        "文件系统：iso9660",
        "总的簇数：1220703",
        "每簇的扇区数：8",
        "每扇区的字节数：512",
        "剩余的簇数：488",
    };
    for (int kind = 0; kind <= 10; ++kind)
        EXPECT_EQ(diskInformationLine(kind, space, identity), QString::fromUtf8(expected[kind])) << kind;
    EXPECT_EQ(diskInformationLine(11, space, identity), QString());
    EXPECT_EQ(diskInformationLine(-1, space, identity), QString());
}

TEST_F(DiskInformation, SerialZeroLeavesTheLabelAlone)
{
    identity.serial = 0;
    EXPECT_EQ(diskInformationLine(5, space, identity), QStringLiteral("序列号："));
    EXPECT_EQ(diskInformationValue(5, space, identity).toString(), QString());
}

TEST_F(DiskInformation, BareValuesKeepSixtyFourBits)
{
    EXPECT_EQ(diskInformationValue(0, space, identity).toLongLong(), 5'000'000'000LL);
    EXPECT_EQ(diskInformationValue(3, space, identity).toLongLong(), 4'998'000'000LL);
    EXPECT_EQ(diskInformationValue(4, space, identity).toString(), QStringLiteral("VIDEO_CD"));
    EXPECT_EQ(diskInformationValue(9, space, identity).toLongLong(), 512);
    EXPECT_FALSE(diskInformationValue(11, space, identity).isValid());
    space.totalFreeBytes = space.totalBytes + 1; // inconsistent figures must not wrap around
    EXPECT_EQ(diskInformationValue(3, space, identity).toLongLong(), 0);
}

TEST(FileTexts, SerialText)
{
    EXPECT_EQ(serialText(0), QString());
    EXPECT_EQ(serialText(0xABCD1234), QStringLiteral("ABCD1234"));
    EXPECT_EQ(serialText(0x1F), QStringLiteral("1F"));
}

TEST(FileTexts, FallbackTypeName)
{
    EXPECT_EQ(fallbackTypeName(QStringLiteral("/a/b.dat")), QStringLiteral("DAT 文件"));
    EXPECT_EQ(fallbackTypeName(QStringLiteral("/a.d/README")), QStringLiteral("README 文件"));
    EXPECT_EQ(fallbackTypeName(QStringLiteral("x.tar.gz")), QStringLiteral("GZ 文件"));
}

TEST(FileTexts, DateTimeInChineseLongForm)
{
    const QLocale chinese(QLocale::Chinese, QLocale::China);
    const QDateTime stamp(QDate(2003, 5, 1), QTime(14, 5, 9));
    EXPECT_EQ(dateTimeText(stamp, QTime(9, 0, 0), chinese), QStringLiteral("2003年5月1日 14:05:09"));
    const QLocale us(QLocale::English, QLocale::UnitedStates);
    EXPECT_EQ(dateTimeText(stamp, QTime(9, 0, 0), us), QStringLiteral("May 1, 2003 2:05:09 PM"));
    const QLocale german(QLocale::German, QLocale::Germany);
    EXPECT_EQ(dateTimeText(stamp, QTime(9, 0, 0), german), QStringLiteral("1. Mai 2003 14:05:09"));
}

TEST(FileTexts, MidnightShowsTheCurrentTimeOfDay)
{
    const QLocale chinese(QLocale::Chinese, QLocale::China);
    EXPECT_EQ(dateTimeText(QDateTime(QDate(2003, 5, 1), QTime(0, 0, 0)), QTime(21, 7, 3), chinese),
        QStringLiteral("2003年5月1日 21:07:03"));
    // One second past midnight is a real time and stays.
    EXPECT_EQ(dateTimeText(QDateTime(QDate(2003, 5, 1), QTime(0, 0, 1)), QTime(21, 7, 3), chinese),
        QStringLiteral("2003年5月1日 00:00:01"));
}

TEST(Format, GroupDigits)
{
    EXPECT_EQ(groupDigits(0), QStringLiteral("0"));
    EXPECT_EQ(groupDigits(999), QStringLiteral("999"));
    EXPECT_EQ(groupDigits(1000), QStringLiteral("1,000"));
    EXPECT_EQ(groupDigits(1234567), QStringLiteral("1,234,567"));
    EXPECT_EQ(groupDigits(-1234567), QStringLiteral("-1,234,567"));
    EXPECT_EQ(groupDigits(-999), QStringLiteral("-999"));
    EXPECT_EQ(groupDigits(std::numeric_limits<qint64>::min()), QStringLiteral("-9,223,372,036,854,775,808"));
    EXPECT_EQ(formatBytes(1234), QStringLiteral("1,234字节"));
    EXPECT_EQ(formatWholeMegabytes(734003200), QStringLiteral("700"));
    EXPECT_EQ(formatWholeMegabytes(1024 * 1024 - 1), QStringLiteral("0"));
}

TEST(Format, Durations)
{
    EXPECT_EQ(formatDuration(0), QStringLiteral("00:00:00"));
    EXPECT_EQ(formatDuration(7), QStringLiteral("00:00:07"));
    EXPECT_EQ(formatDuration(45), QStringLiteral("00:00:45"));
    EXPECT_EQ(formatDuration(61), QStringLiteral("00:01:01"));
    EXPECT_EQ(formatDuration(3725), QStringLiteral("01:02:05"));
    EXPECT_EQ(formatDuration(360000), QStringLiteral("100:00:00")); // hours do not wrap
    EXPECT_EQ(formatDuration(-5), QStringLiteral("00:00:00"));
}

TEST(Format, Throughput)
{
    EXPECT_EQ(formatKBps(0), QStringLiteral("0KB/秒"));
    EXPECT_EQ(formatKBps(1024), QStringLiteral("1,024KB/秒"));
}

} // namespace
