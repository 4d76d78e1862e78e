#include "platform/linux/LinuxVolumes.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>

using namespace vindaro::platform;

namespace {

void writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

TEST(MountInfo, ParsesFieldsAndUndoesEscapes)
{
    const QString text
        = QStringLiteral("22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                         "40 22 11:0 / /media/My\\040Disc rw,nosuid shared:5 master:2 - iso9660 /dev/sr0 ro\n"
                         "41 22 0:50 / /mnt/tab\\011and\\134slash rw - nfs4 srv:/export\\040x rw\n"
                         "42 22 0:51 / /mnt/no-optional rw - tmpfs tmpfs rw\n"
                         "garbage line without separator\n"
                         "43 22 0:52 / /mnt/short rw - ext4\n"
                         "\n");
    const QList<MountEntry> entries = parseMountInfo(text);
    ASSERT_EQ(entries.size(), 4);
    EXPECT_EQ(entries[0].mountPoint, QStringLiteral("/"));
    EXPECT_EQ(entries[0].device, QStringLiteral("/dev/sda1"));
    EXPECT_EQ(entries[0].fsType, QStringLiteral("ext4"));
    EXPECT_EQ(entries[1].mountPoint, QStringLiteral("/media/My Disc"));
    EXPECT_EQ(entries[1].fsType, QStringLiteral("iso9660"));
    EXPECT_EQ(entries[2].mountPoint, QStringLiteral("/mnt/tab\tand\\slash"));
    EXPECT_EQ(entries[2].device, QStringLiteral("srv:/export x"));
    EXPECT_EQ(entries[3].mountPoint, QStringLiteral("/mnt/no-optional"));
}

TEST(MountInfo, UnescapeLeavesNonOctalAlone)
{
    EXPECT_EQ(unescapeMountField(QStringLiteral("a\\040b")), QStringLiteral("a b"));
    EXPECT_EQ(unescapeMountField(QStringLiteral("a\\09b")), QStringLiteral("a\\09b"));
    EXPECT_EQ(unescapeMountField(QStringLiteral("end\\04")), QStringLiteral("end\\04"));
    EXPECT_EQ(unescapeMountField(QStringLiteral("\\012")), QStringLiteral("\n"));
}

TEST(MountInfo, PseudoAndRemoteFileSystems)
{
    for (const char* fs :
        {"proc", "sysfs", "cgroup2", "devpts", "tracefs", "mqueue", "binfmt_misc", "autofs"})
        EXPECT_TRUE(isPseudoFileSystem(QString::fromLatin1(fs))) << fs;
    for (const char* fs : {"ext4", "overlay", "tmpfs", "iso9660", "vfat", "nfs4"})
        EXPECT_FALSE(isPseudoFileSystem(QString::fromLatin1(fs))) << fs;

    EXPECT_TRUE(isRemoteFileSystem(QStringLiteral("nfs"), QStringLiteral("srv:/x")));
    EXPECT_TRUE(isRemoteFileSystem(QStringLiteral("fuse.sshfs"), QStringLiteral("me@host:")));
    EXPECT_TRUE(isRemoteFileSystem(QStringLiteral("cifs"), QStringLiteral("//srv/share")));
    EXPECT_TRUE(isRemoteFileSystem(QStringLiteral("fuse.unknown"), QStringLiteral("//srv/share")));
    EXPECT_TRUE(isRemoteFileSystem(QStringLiteral("fuse.unknown"), QStringLiteral("host:/export")));
    EXPECT_FALSE(isRemoteFileSystem(QStringLiteral("ext4"), QStringLiteral("/dev/sda1")));
    EXPECT_FALSE(isRemoteFileSystem(QStringLiteral("ext4"), QStringLiteral("/dev/disk/by-id/a:b/c")));
}

// A sysfs tree with a fixed disk sda, a removable disk sdb and a floppy fd0.
class FakeSystem : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(root.isValid());
        sys = root.filePath(QStringLiteral("sys"));
        dev = root.filePath(QStringLiteral("dev"));
        writeFile(sys + QStringLiteral("/block/sda/removable"), "0\n");
        QDir().mkpath(sys + QStringLiteral("/block/sda/sda1"));
        writeFile(sys + QStringLiteral("/block/sdb/removable"), "1\n");
        QDir().mkpath(sys + QStringLiteral("/block/sdb/sdb1"));
        writeFile(sys + QStringLiteral("/block/fd0/removable"), "1\n");
        QDir().mkpath(dev + QStringLiteral("/disk/by-label"));
        QDir().mkpath(dev + QStringLiteral("/disk/by-uuid"));
    }

    int kindOf(const char* device, const char* fsType)
    {
        LinuxVolumes volumes(root.filePath(QStringLiteral("mountinfo")), sys, dev);
        return volumes.classify(
            MountEntry{QStringLiteral("/x"), QString::fromLatin1(device), QString::fromLatin1(fsType)});
    }

    QTemporaryDir root;
    QString sys;
    QString dev;
};

TEST_F(FakeSystem, ClassifiesDriveKinds)
{
    EXPECT_EQ(kindOf("/dev/sda1", "ext4"), kDriveFixed);
    EXPECT_EQ(kindOf("/dev/sda", "ext4"), kDriveFixed);
    EXPECT_EQ(kindOf("/dev/sdb1", "vfat"), kDriveRemovable); // a partition counts as its disk
    EXPECT_EQ(kindOf("/dev/sdb", "vfat"), kDriveRemovable);
    EXPECT_EQ(kindOf("/dev/fd0", "vfat"), kDriveRemovable);
    EXPECT_EQ(kindOf("/dev/sr0", "udf"), kDriveCdRom);
    EXPECT_EQ(kindOf("/dev/sr1", "auto"), kDriveCdRom);
    EXPECT_EQ(kindOf("/dev/loop3", "iso9660"), kDriveCdRom); // a mounted disc image
    EXPECT_EQ(kindOf("tmpfs", "tmpfs"), kDriveRamDisk);
    EXPECT_EQ(kindOf("srv:/export", "nfs4"), kDriveRemote);
    EXPECT_EQ(kindOf("//srv/share", "cifs"), kDriveRemote);
    EXPECT_EQ(kindOf("overlay", "overlay"), kDriveFixed);
    EXPECT_EQ(kindOf("/dev/nvme0n1p2", "btrfs"), kDriveFixed); // unknown to sysfs: fixed
}

TEST_F(FakeSystem, ListSkipsPseudoMountsFilesAndHiddenMounts)
{
    const QString media = root.filePath(QStringLiteral("media"));
    const QString usb = root.filePath(QStringLiteral("media/usb stick"));
    QDir().mkpath(usb);
    writeFile(root.filePath(QStringLiteral("hosts")), "127.0.0.1 localhost\n");
    QString escapedUsb = usb;
    escapedUsb.replace(QLatin1Char(' '), QLatin1String("\\040"));
    const QString table = QStringLiteral("1 0 8:1 / / rw - overlay overlay rw\n"
                                         "2 1 0:3 / /proc rw - proc proc rw\n"
                                         "3 1 8:2 / %1 rw - ext4 /dev/sda1 rw\n"
                                         "4 1 8:3 / %2 rw - vfat /dev/sdb1 rw\n"
                                         "5 1 8:1 /etc/hosts %3 rw - ext4 /dev/sda1 rw\n"
                                         "6 1 8:4 / %1 rw - tmpfs tmpfs rw\n"
                                         "7 1 0:9 / /sys/fs/cgroup rw - tmpfs tmpfs rw\n")
                              .arg(media, escapedUsb, root.filePath(QStringLiteral("hosts")));
    writeFile(root.filePath(QStringLiteral("mountinfo")), table.toUtf8());

    LinuxVolumes volumes(root.filePath(QStringLiteral("mountinfo")), sys, dev);
    const QList<Volume> list = volumes.list();
    ASSERT_EQ(list.size(), 3);
    EXPECT_EQ(list[0].mountPoint, QStringLiteral("/"));
    EXPECT_EQ(list[0].kind, kDriveFixed);
    EXPECT_EQ(list[1].mountPoint, media);
    EXPECT_EQ(list[1].kind, kDriveRamDisk); // mounted over the ext4 one
    EXPECT_EQ(list[2].mountPoint, usb);
    EXPECT_EQ(list[2].kind, kDriveRemovable);
    EXPECT_EQ(list[2].device, QStringLiteral("/dev/sdb1"));
}

TEST_F(FakeSystem, PlainMountTableIsReadAgainOnlyWhenItChanges)
{
    const QString table = root.filePath(QStringLiteral("mountinfo"));
    writeFile(table, "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n");
    LinuxVolumes volumes(table, sys, dev);
    EXPECT_EQ(volumes.list().size(), 1);
    EXPECT_EQ(volumes.list().size(), 1);
    EXPECT_EQ(volumes.tableReads(), 1);
    writeFile(table,
        QStringLiteral("1 0 8:1 / / rw - ext4 /dev/sda1 rw\n2 1 0:5 / %1 rw - tmpfs tmpfs rw\n")
            .arg(root.path())
            .toUtf8());
    EXPECT_EQ(volumes.list().size(), 2);
    EXPECT_EQ(volumes.tableReads(), 2);
}

// A chroot or rescue system: the mount table lists neither "/" nor the path's volume, or cannot be read.
// The volume then comes from the path itself, so a destination there is not refused.
struct UncoveredRow
{
    const char* table;
    bool deviceInSysfs; // sysfs names the device behind the folder's device number: the removable sdb1
};

class UncoveredPath : public FakeSystem, public ::testing::WithParamInterface<UncoveredRow>
{
};

TEST_P(UncoveredPath, VolumeComesFromThePathItself)
{
    const UncoveredRow row = GetParam();
    const QString table = root.filePath(QStringLiteral("mountinfo"));
    if (row.table)
        writeFile(table, QByteArray(row.table));
    struct stat folder;
    ASSERT_EQ(::stat(QFile::encodeName(root.path()).constData(), &folder), 0);
    if (row.deviceInSysfs)
        writeFile(sys
                + QStringLiteral("/dev/block/%1:%2/uevent")
                      .arg(major(folder.st_dev))
                      .arg(minor(folder.st_dev)),
            "MAJOR=8\nMINOR=17\nDEVNAME=sdb1\nDEVTYPE=partition\n");
    LinuxVolumes volumes(table, sys, dev);
    ASSERT_FALSE(volumeHolding(volumes.list(), root.path()).has_value()); // the table does not cover it

    // A destination that does not exist yet, in a folder that does not either.
    const auto volume = volumes.volumeOf(root.filePath(QStringLiteral("new/dest.dat")));
    ASSERT_TRUE(volume.has_value());
    // Named by the highest folder above the path on the same device.
    const QString top = volume->mountPoint;
    EXPECT_TRUE(top == QLatin1String("/") || root.path().startsWith(top + QLatin1Char('/')))
        << top.toStdString();
    struct stat st;
    ASSERT_EQ(::stat(QFile::encodeName(top).constData(), &st), 0);
    EXPECT_EQ(st.st_dev, folder.st_dev);
    if (top != QLatin1String("/")) {
        ASSERT_EQ(::stat(QFile::encodeName(QFileInfo(top).path()).constData(), &st), 0);
        EXPECT_NE(st.st_dev, folder.st_dev);
    }
    struct statfs fs;
    ASSERT_EQ(::statfs(QFile::encodeName(top).constData(), &fs), 0);
    const bool ramDisk = fs.f_type == 0x01021994; // tmpfs
    EXPECT_EQ(volume->kind, ramDisk ? kDriveRamDisk : row.deviceInSysfs ? kDriveRemovable : kDriveFixed);
    EXPECT_EQ(volume->device, row.deviceInSysfs ? QStringLiteral("/dev/sdb1") : QString());
    const auto space = volumes.space(top);
    ASSERT_TRUE(space.has_value());
    EXPECT_GT(space->totalBytes, 0u);
    EXPECT_TRUE(volumes.isReady(top));
}

INSTANTIATE_TEST_SUITE_P(MountTable, UncoveredPath,
    ::testing::Values(UncoveredRow{nullptr, false},
        UncoveredRow{
            "2 1 0:3 / /proc rw - proc proc rw\n3 1 8:2 / /vindaro-elsewhere rw - ext4 /dev/sda2 rw\n",
            true}));

TEST_F(FakeSystem, MissingMountTableListsNothingButRootsStillHaveAnIdentity)
{
    LinuxVolumes volumes(root.filePath(QStringLiteral("absent")), sys, dev);
    EXPECT_TRUE(volumes.list().isEmpty());
    EXPECT_TRUE(volumes.identity(QStringLiteral("/")).has_value()); // "/" is always a file system's root
    EXPECT_FALSE(volumes.identity(root.filePath(QStringLiteral("absent"))).has_value()); // no such folder
}

QByteArray ext4Head(const QByteArray& label, const QByteArray& uuid)
{
    QByteArray head(kSuperblockBytes, '\0');
    head[0x438] = '\x53';
    head[0x439] = '\xEF';
    head.replace(0x468, uuid.size(), uuid);
    head.replace(0x478, label.size(), label);
    return head;
}

TEST(Superblock, ReadsExtLabelAndSerial)
{
    const QByteArray uuid = QByteArray::fromHex("2f1c9a0b44d34c5e8f0011223344aabb");
    const SuperblockFacts facts = readSuperblock(ext4Head("backup", uuid));
    EXPECT_TRUE(facts.recognised);
    EXPECT_EQ(facts.label, QStringLiteral("backup"));
    EXPECT_EQ(facts.serial, 0x2F1C9A0Bu);
}

TEST(Superblock, ReadsIsoVolumeIdentifier)
{
    QByteArray head(kSuperblockBytes, '\0');
    head.replace(0x8001, 5, "CD001");
    head.replace(0x8028, 32, QByteArray("VIDEOCD").leftJustified(32, ' '));
    const SuperblockFacts facts = readSuperblock(head);
    EXPECT_TRUE(facts.recognised);
    EXPECT_EQ(facts.label, QStringLiteral("VIDEOCD"));
    EXPECT_EQ(facts.serial, 0u);
}

TEST(Superblock, UnknownOrShortDataIsNotRecognised)
{
    EXPECT_FALSE(readSuperblock(QByteArray(kSuperblockBytes, '\0')).recognised);
    EXPECT_FALSE(readSuperblock(ext4Head("x", "0123456789abcdef").left(0x480)).recognised);
    EXPECT_FALSE(readSuperblock(QByteArray()).recognised);
    QByteArray iso(0x8030, '\0'); // cut inside the volume identifier
    iso.replace(0x8001, 5, "CD001");
    EXPECT_FALSE(readSuperblock(iso).recognised);
}

TEST(Superblock, SerialFromUuidText)
{
    EXPECT_EQ(serialFromUuid(QStringLiteral("ABCD-1234")), 0xABCD1234u);
    EXPECT_EQ(serialFromUuid(QStringLiteral("2f1c9a0b-44d3-4c5e-8f00-11223344aabb")), 0x2F1C9A0Bu);
    EXPECT_EQ(serialFromUuid(QStringLiteral("1234")), 0u);
    EXPECT_EQ(serialFromUuid(QStringLiteral("not-a-uuid-at-all")), 0u);
    EXPECT_EQ(serialFromUuid(QString()), 0u);
}

TEST_F(FakeSystem, IdentityFromUdevLinksThenFromTheSuperblock)
{
    const QString stick = root.filePath(QStringLiteral("stick"));
    const QString disk = root.filePath(QStringLiteral("disk"));
    QDir().mkpath(stick);
    QDir().mkpath(disk);
    // udev names sdb1 by label and uuid; sdc1 has no links but a readable ext4 superblock.
    ASSERT_TRUE(
        QFile::link(QStringLiteral("../../sdb1"), dev + QStringLiteral("/disk/by-label/My\\x20Stick")));
    ASSERT_TRUE(QFile::link(QStringLiteral("../../sdb1"), dev + QStringLiteral("/disk/by-uuid/ABCD-1234")));
    writeFile(dev + QStringLiteral("/sdc1"),
        ext4Head("data", QByteArray::fromHex("00000001aaaaaaaaaaaaaaaaaaaaaaaa")));
    writeFile(root.filePath(QStringLiteral("mountinfo")),
        QStringLiteral("1 0 8:17 / %1 rw - vfat /dev/sdb1 rw\n2 0 8:33 / %2 rw - ext4 /dev/sdc1 rw\n")
            .arg(stick, disk)
            .toUtf8());
    LinuxVolumes volumes(root.filePath(QStringLiteral("mountinfo")), sys, dev);

    const auto stickId = volumes.identity(stick);
    ASSERT_TRUE(stickId.has_value());
    EXPECT_EQ(stickId->label, QStringLiteral("My Stick"));
    EXPECT_EQ(stickId->serial, 0xABCD1234u);
    EXPECT_EQ(stickId->fsName, QStringLiteral("vfat"));

    const auto diskId = volumes.identity(disk);
    ASSERT_TRUE(diskId.has_value());
    EXPECT_EQ(diskId->label, QStringLiteral("data"));
    EXPECT_EQ(diskId->serial, 1u);
    EXPECT_EQ(diskId->fsName, QStringLiteral("ext4"));

    EXPECT_FALSE(volumes.identity(root.filePath(QStringLiteral("elsewhere"))).has_value());
}

TEST(LinuxVolumesReal, SpaceFiguresAgreeWithEachOther)
{
    QTemporaryDir dir;
    LinuxVolumes volumes;
    const auto space = volumes.space(dir.path());
    ASSERT_TRUE(space.has_value());
    EXPECT_GT(space->totalBytes, 0u);
    EXPECT_GE(space->totalBytes, space->totalFreeBytes);
    EXPECT_GE(space->totalFreeBytes, space->freeBytes);
    EXPECT_GT(space->bytesPerSector, 0u);
    EXPECT_GE(space->sectorsPerCluster, 1u);
    const quint64 clusterBytes = quint64(space->bytesPerSector) * space->sectorsPerCluster;
    EXPECT_EQ(space->totalClusters, space->totalBytes / clusterBytes);
    EXPECT_FALSE(volumes.space(dir.filePath(QStringLiteral("missing"))).has_value());
}

TEST(LinuxVolumesReal, ReadyWhenTheRootCanBeListed)
{
    QTemporaryDir dir;
    LinuxVolumes volumes;
    EXPECT_TRUE(volumes.isReady(dir.path()));
    EXPECT_FALSE(volumes.isReady(dir.filePath(QStringLiteral("missing"))));
}

TEST(LinuxVolumesReal, TheRootIsAlwaysADrive)
{
    LinuxVolumes volumes;
    const QList<Volume> list = volumes.list();
    const bool hasRoot = std::any_of(
        list.begin(), list.end(), [](const Volume& v) { return v.mountPoint == QLatin1String("/"); });
    EXPECT_TRUE(hasRoot);
    for (const Volume& v : list)
        EXPECT_FALSE(isPseudoFileSystem(v.fsType)) << v.mountPoint.toStdString();
}

} // namespace
