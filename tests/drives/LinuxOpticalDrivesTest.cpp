#include "platform/linux/LinuxOpticalDrives.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vindaro::platform::LinuxOpticalDrives;
using vindaro::platform::OpticalDrive;

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

TEST(LinuxOpticalDrives, ParsesMountInfo)
{
    const QList<LinuxOpticalDrives::MountEntry> entries = LinuxOpticalDrives::parseMountInfo(kMountInfo);
    ASSERT_EQ(entries.size(), 5);
    EXPECT_EQ(entries[0].mountPoint, QStringLiteral("/"));
    EXPECT_EQ(entries[1].majorMinor, QStringLiteral("11:1"));
    EXPECT_EQ(entries[1].mountPoint, QStringLiteral("/media/user/MY DISC"));
    EXPECT_EQ(entries[1].fsType, QStringLiteral("iso9660"));
    EXPECT_EQ(entries[1].source, QStringLiteral("/dev/sr1"));
    EXPECT_EQ(entries[3].mountPoint, QStringLiteral("/media/cd10"));
    EXPECT_EQ(entries[4].source, QStringLiteral("server:/export"));
}

TEST(LinuxOpticalDrives, ParsesTruncatedAndOddLinesWithoutCrashing)
{
    EXPECT_TRUE(LinuxOpticalDrives::parseMountInfo("").isEmpty());
    EXPECT_TRUE(LinuxOpticalDrives::parseMountInfo("1 2 3 4 5 6 -").isEmpty());
    EXPECT_TRUE(LinuxOpticalDrives::parseMountInfo("1 2 3 / /x o - iso9660").isEmpty());
    const auto tail = LinuxOpticalDrives::parseMountInfo("1 2 3:4 / /a\\04 o - t /dev/sr0 ro");
    ASSERT_EQ(tail.size(), 1);
    EXPECT_EQ(tail[0].mountPoint, QStringLiteral("/a\\04")); // a cut escape stays as written
}

class FakeSystemTree : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        for (const char* name : {"sda", "loop0", "sr0", "sr1", "sr10"})
            writeFile(QStringLiteral("sys/block/%1/size").arg(QLatin1String(name)), "0\n");
        writeFile(QStringLiteral("sys/block/sr0/dev"), "11:0\n");
        writeFile(QStringLiteral("sys/block/sr1/dev"), "11:1\n");
        writeFile(QStringLiteral("sys/block/sr10/dev"), "11:10\n");
        for (const char* name : {"sda", "sr0", "sr1", "sr2", "sr10", "srx", "cdrom"})
            writeFile(QStringLiteral("dev/%1").arg(QLatin1String(name)), "");
        writeFile(QStringLiteral("proc/self/mountinfo"), kMountInfo);
        ASSERT_TRUE(QDir(m_dir.path()).mkpath(QStringLiteral("media/user/MY DISC")));
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
    EXPECT_EQ(list[1].root(), QStringLiteral("/media/user/MY DISC"));
    EXPECT_EQ(list[0].root(), QStringLiteral("/dev/sr0"));
}

TEST_F(FakeSystemTree, EmptyTreeHasNoDrives)
{
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
    writeFile(QStringLiteral("sys/block/sr0/size"), "1331200\n");
    EXPECT_TRUE(drives.isReady(OpticalDrive{"/dev/sr0", ""}));
    EXPECT_FALSE(drives.isReady(OpticalDrive{"/dev/sr2", ""})); // no sysfs entry at all
    EXPECT_FALSE(drives.isReady(OpticalDrive{}));
}

TEST_F(FakeSystemTree, TraysOfDevicesThatAreNoDrivesFailQuietly)
{
    LinuxOpticalDrives drives(m_dir.path());
    EXPECT_FALSE(drives.openTray(QStringLiteral("/dev/sr0"))); // a plain file: the ioctl is refused
    EXPECT_FALSE(drives.closeTray(QStringLiteral("/dev/sr0")));
    EXPECT_FALSE(drives.openTray(QString()));
}

TEST(LinuxOpticalDrives, TrayOfMissingDeviceFailsQuietly)
{
    LinuxOpticalDrives drives;
    EXPECT_FALSE(drives.openTray(QStringLiteral("/dev/vindaro-no-such-drive")));
    EXPECT_FALSE(drives.closeTray(QStringLiteral("/dev/vindaro-no-such-drive")));
    EXPECT_FALSE(drives.isReady(OpticalDrive{"/dev/vindaro-no-such-drive", ""}));
}

} // namespace
