#include "platform/linux/LinuxOpticalDrives.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vindaro::platform::LinuxOpticalDrives;
using vindaro::platform::OpticalDrive;
using namespace Qt::StringLiterals;

namespace {

// Optional fields (shared:, master:) vary in number; blanks in paths are written \040.
const QByteArray kMountInfo = "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                              "40 22 11:1 / /media/user/MY\\040DISC ro,nosuid shared:5 master:2 - iso9660 "
                              "/dev/sr1 ro,uid=1000\n"
                              "41 22 11:1 / /mnt/bind ro shared:6 - iso9660 /dev/sr1 ro\n"
                              "garbage line without separator\n"
                              "42 22 0:50 / /media/cd10/ ro - udf /dev/sr10 ro\n"
                              "43 22 0:51 / /net rw - nfs server:/export rw\n"
                              "44 22 0:52 / relative rw - tmpfs tmpfs rw\n";

TEST(LinuxOpticalDrives, ParsesMountInfoAndOddLinesWithoutCrashing)
{
    const QList<LinuxOpticalDrives::MountEntry> entries = LinuxOpticalDrives::parseMountInfo(kMountInfo);
    ASSERT_EQ(entries.size(), 5);
    EXPECT_EQ(entries[0].mountPoint, u"/"_s);
    EXPECT_EQ(entries[1].majorMinor, u"11:1"_s);
    EXPECT_EQ(entries[1].mountPoint, u"/media/user/MY DISC"_s);
    EXPECT_EQ(entries[1].fsType, u"iso9660"_s);
    EXPECT_EQ(entries[1].source, u"/dev/sr1"_s);
    EXPECT_EQ(entries[3].mountPoint, u"/media/cd10"_s);
    EXPECT_EQ(entries[4].source, u"server:/export"_s);
    for (const char* line : {"", "1 2 3 4 5 6 -", "1 2 3 / /x o - iso9660"})
        EXPECT_TRUE(LinuxOpticalDrives::parseMountInfo(line).isEmpty()) << line;
    const auto tail = LinuxOpticalDrives::parseMountInfo("1 2 3:4 / /a\\04 o - t /dev/sr0 ro");
    ASSERT_EQ(tail.size(), 1);
    EXPECT_EQ(tail[0].mountPoint, u"/a\\04"_s); // a cut escape stays as written
}

class FakeSystemTree : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        for (const char* name : {"sda", "loop0", "sr0", "sr1", "sr10"})
            writeFile(u"sys/block/%1/size"_s.arg(QLatin1String(name)), "0\n");
        writeFile(u"sys/block/sr0/dev"_s, "11:0\n");
        writeFile(u"sys/block/sr1/dev"_s, "11:1\n");
        writeFile(u"sys/block/sr10/dev"_s, "11:10\n");
        for (const char* name : {"sda", "sr0", "sr1", "sr2", "sr10", "srx", "cdrom"})
            writeFile(u"dev/%1"_s.arg(QLatin1String(name)), "");
        writeFile(u"proc/self/mountinfo"_s, kMountInfo);
        ASSERT_TRUE(QDir(m_dir.path()).mkpath(u"media/user/MY DISC"_s));
    }

    void writeFile(const QString& relative, const QByteArray& bytes)
    {
        const QString path = m_dir.filePath(relative);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).absolutePath()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QTemporaryDir m_dir;
};

// sr drives from sysfs and /dev in number order; the mount found by device number or by source.
TEST_F(FakeSystemTree, ListsDrivesWithTheirMountPoints)
{
    LinuxOpticalDrives drives(m_dir.path());
    const QList<OpticalDrive> list = drives.list();
    ASSERT_EQ(list.size(), 4);
    EXPECT_EQ(list[0], (OpticalDrive{"/dev/sr0", ""}));
    EXPECT_EQ(list[1], (OpticalDrive{"/dev/sr1", "/media/user/MY DISC"}));
    EXPECT_EQ(list[2], (OpticalDrive{"/dev/sr2", ""}));
    EXPECT_EQ(list[3], (OpticalDrive{"/dev/sr10", "/media/cd10"}));
    EXPECT_EQ(list[1].root(), u"/media/user/MY DISC"_s);
    EXPECT_EQ(list[0].root(), u"/dev/sr0"_s);
    QTemporaryDir empty;
    EXPECT_TRUE(LinuxOpticalDrives(empty.path()).list().isEmpty());
}

// The fake device nodes answer no ioctl, so readiness falls back on the mount point and the sysfs size.
TEST_F(FakeSystemTree, ReadinessFromMountPointOrMediumSize)
{
    LinuxOpticalDrives drives(m_dir.path());
    EXPECT_TRUE(drives.isReady(OpticalDrive{"/dev/sr1", "/media/user/MY DISC"}));
    EXPECT_FALSE(drives.isReady(OpticalDrive{"/dev/sr10", "/media/cd10"})); // mount point missing
    EXPECT_FALSE(drives.isReady(OpticalDrive{"/dev/sr0", ""})); // size 0: no medium
    writeFile(u"sys/block/sr0/size"_s, "1331200\n");
    EXPECT_TRUE(drives.isReady(OpticalDrive{"/dev/sr0", ""}));
    EXPECT_FALSE(drives.isReady(OpticalDrive{"/dev/sr2", ""})); // no sysfs entry at all
    EXPECT_FALSE(drives.isReady(OpticalDrive{}));
}

// Trays of a plain file (the ioctl is refused), of nothing and of a missing device fail quietly.
TEST_F(FakeSystemTree, TraysOfDevicesThatAreNoDrivesFailQuietly)
{
    LinuxOpticalDrives drives(m_dir.path());
    for (const QString& device : {u"/dev/sr0"_s, QString(), u"/dev/vindaro-no-such-drive"_s}) {
        EXPECT_FALSE(drives.openTray(device)) << device.toStdString();
        EXPECT_FALSE(drives.closeTray(device)) << device.toStdString();
    }
    EXPECT_FALSE(LinuxOpticalDrives().isReady(OpticalDrive{"/dev/vindaro-no-such-drive", ""}));
}

} // namespace
