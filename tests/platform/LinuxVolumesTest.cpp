#include "platform/linux/LinuxVolumes.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>

using namespace vindaro::platform;
using namespace Qt::StringLiterals;

namespace {

void writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

TEST(MountInfo, ParsesFieldsAndUndoesOctalEscapesOnly)
{
    const QList<MountEntry> entries
        = parseMountInfo(u"22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                         "40 22 11:0 / /media/My\\040Disc rw,nosuid shared:5 master:2 - iso9660 /dev/sr0 ro\n"
                         "41 22 0:50 / /mnt/tab\\011and\\134slash rw - nfs4 srv:/export\\040x rw\n"
                         "garbage line without separator\n"
                         "43 22 0:52 / /mnt/short rw - ext4\n\n"_s);
    ASSERT_EQ(entries.size(), 3);
    EXPECT_EQ(entries[0].device, u"/dev/sda1"_s);
    EXPECT_EQ(entries[1].mountPoint, u"/media/My Disc"_s);
    EXPECT_EQ(entries[1].fsType, u"iso9660"_s);
    EXPECT_EQ(entries[2].mountPoint, u"/mnt/tab\tand\\slash"_s);
    EXPECT_EQ(entries[2].device, u"srv:/export x"_s);
    EXPECT_EQ(unescapeMountField(u"a\\09b"_s), u"a\\09b"_s); // not octal
    EXPECT_EQ(unescapeMountField(u"end\\04"_s), u"end\\04"_s); // cut short
}

TEST(MountInfo, PseudoAndRemoteFileSystems)
{
    for (const char* fs :
        {"proc", "sysfs", "cgroup2", "devpts", "tracefs", "mqueue", "binfmt_misc", "autofs"})
        EXPECT_TRUE(isPseudoFileSystem(QString::fromLatin1(fs))) << fs;
    for (const char* fs : {"ext4", "overlay", "tmpfs", "iso9660", "vfat", "nfs4"})
        EXPECT_FALSE(isPseudoFileSystem(QString::fromLatin1(fs))) << fs;
    const struct
    {
        const char* fsType;
        const char* device;
        bool remote;
    } rows[] = {{"nfs", "srv:/x", true}, {"fuse.sshfs", "me@host:", true}, {"cifs", "//srv/share", true},
        {"fuse.unknown", "//srv/share", true}, {"fuse.unknown", "host:/export", true},
        {"ext4", "/dev/sda1", false}, {"ext4", "/dev/disk/by-id/a:b/c", false}};
    for (const auto& row : rows)
        EXPECT_EQ(
            isRemoteFileSystem(QString::fromLatin1(row.fsType), QString::fromLatin1(row.device)), row.remote)
            << row.fsType << " " << row.device;
}

// A sysfs tree with a fixed disk sda, a removable disk sdb and a floppy fd0.
class FakeSystem : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(root.isValid());
        writeFile(sys + u"/block/sda/removable"_s, "0\n");
        QDir().mkpath(sys + u"/block/sda/sda1"_s);
        writeFile(sys + u"/block/sdb/removable"_s, "1\n");
        QDir().mkpath(sys + u"/block/sdb/sdb1"_s);
        writeFile(sys + u"/block/fd0/removable"_s, "1\n");
        QDir().mkpath(dev + u"/disk/by-label"_s);
        QDir().mkpath(dev + u"/disk/by-uuid"_s);
    }
    LinuxVolumes volumes() { return LinuxVolumes(table, sys, dev); }

    QTemporaryDir root;
    const QString sys = root.filePath(u"sys"_s);
    const QString dev = root.filePath(u"dev"_s);
    const QString table = root.filePath(u"mountinfo"_s);
};

TEST_F(FakeSystem, ClassifiesDriveKinds)
{
    const struct
    {
        const char* device;
        const char* fsType;
        int kind;
    } rows[] = {{"/dev/sda1", "ext4", kDriveFixed}, {"/dev/sda", "ext4", kDriveFixed},
        {"/dev/sdb1", "vfat", kDriveRemovable}, // a partition counts as its disk
        {"/dev/sdb", "vfat", kDriveRemovable}, {"/dev/fd0", "vfat", kDriveRemovable},
        {"/dev/sr0", "udf", kDriveCdRom}, {"/dev/sr1", "auto", kDriveCdRom},
        {"/dev/loop3", "iso9660", kDriveCdRom}, // a mounted disc image
        {"tmpfs", "tmpfs", kDriveRamDisk}, {"srv:/export", "nfs4", kDriveRemote},
        {"//srv/share", "cifs", kDriveRemote}, {"overlay", "overlay", kDriveFixed},
        {"/dev/nvme0n1p2", "btrfs", kDriveFixed}}; // unknown to sysfs: fixed
    for (const auto& row : rows)
        EXPECT_EQ(volumes().classify(
                      MountEntry{u"/x"_s, QString::fromLatin1(row.device), QString::fromLatin1(row.fsType)}),
            row.kind)
            << row.device;
}

TEST_F(FakeSystem, ListSkipsPseudoMountsFilesAndHiddenMountsAndRereadsOnlyAChangedTable)
{
    const QString media = root.filePath(u"media"_s);
    const QString usb = root.filePath(u"media/usb stick"_s);
    QDir().mkpath(usb);
    writeFile(root.filePath(u"hosts"_s), "127.0.0.1 localhost\n");
    writeFile(table,
        u"1 0 8:1 / / rw - overlay overlay rw\n"
        "2 1 0:3 / /proc rw - proc proc rw\n"
        "3 1 8:2 / %1 rw - ext4 /dev/sda1 rw\n"
        "4 1 8:3 / %2 rw - vfat /dev/sdb1 rw\n"
        "5 1 8:1 /etc/hosts %3 rw - ext4 /dev/sda1 rw\n"
        "6 1 8:4 / %1 rw - tmpfs tmpfs rw\n"
        "7 1 0:9 / /sys/fs/cgroup rw - tmpfs tmpfs rw\n"_s
            .arg(media, QString(usb).replace(u' ', u"\\040"_s), root.filePath(u"hosts"_s))
            .toUtf8());
    LinuxVolumes volumes = this->volumes();
    const QList<Volume> list = volumes.list();
    ASSERT_EQ(list.size(), 3);
    EXPECT_EQ(list[0].mountPoint, u"/"_s);
    EXPECT_EQ(list[1].mountPoint, media);
    EXPECT_EQ(list[1].kind, kDriveRamDisk); // mounted over the ext4 one
    EXPECT_EQ(list[2].mountPoint, usb);
    EXPECT_EQ(list[2].kind, kDriveRemovable);
    EXPECT_EQ(list[2].device, u"/dev/sdb1"_s);

    EXPECT_EQ(volumes.list().size(), 3);
    EXPECT_EQ(volumes.tableReads(), 1);
    writeFile(table, "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n");
    EXPECT_EQ(volumes.list().size(), 1);
    EXPECT_EQ(volumes.tableReads(), 2);
}

// A chroot or rescue system: the mount table lists neither "/" nor the path's volume, or cannot be read.
// The volume then comes from the path itself, so a destination there is not refused.
TEST_F(FakeSystem, AnUncoveredPathGetsItsVolumeFromThePathItself)
{
    struct stat folder;
    ASSERT_EQ(::stat(QFile::encodeName(root.path()).constData(), &folder), 0);
    for (const bool readable : {false, true}) {
        SCOPED_TRACE(readable ? "table without the path" : "no table");
        if (readable) { // and sysfs names the device behind the folder's device number: the removable sdb1
            writeFile(
                table, "2 1 0:3 / /proc rw - proc proc rw\n3 1 8:2 / /elsewhere rw - ext4 /dev/sda2 rw\n");
            writeFile(sys + u"/dev/block/%1:%2/uevent"_s.arg(major(folder.st_dev)).arg(minor(folder.st_dev)),
                "MAJOR=8\nMINOR=17\nDEVNAME=sdb1\nDEVTYPE=partition\n");
        }
        LinuxVolumes volumes = this->volumes();
        ASSERT_FALSE(volumeHolding(volumes.list(), root.path()).has_value());
        const auto volume = volumes.volumeOf(root.filePath(u"new/dest.dat"_s)); // not there yet
        ASSERT_TRUE(volume.has_value());
        // Named by the highest folder above the path on the same device.
        const QString top = volume->mountPoint;
        EXPECT_TRUE(top == u"/"_s || root.path().startsWith(top + u'/')) << top.toStdString();
        struct stat st;
        ASSERT_EQ(::stat(QFile::encodeName(top).constData(), &st), 0);
        EXPECT_EQ(st.st_dev, folder.st_dev);
        if (top != u"/"_s) {
            ASSERT_EQ(::stat(QFile::encodeName(QFileInfo(top).path()).constData(), &st), 0);
            EXPECT_NE(st.st_dev, folder.st_dev);
        }
        struct statfs fs;
        ASSERT_EQ(::statfs(QFile::encodeName(top).constData(), &fs), 0);
        const bool ramDisk = fs.f_type == 0x01021994; // tmpfs
        EXPECT_EQ(volume->kind, ramDisk ? kDriveRamDisk : readable ? kDriveRemovable : kDriveFixed);
        EXPECT_EQ(volume->device, readable ? u"/dev/sdb1"_s : QString());
        const auto space = volumes.space(top);
        ASSERT_TRUE(space.has_value());
        EXPECT_GT(space->totalBytes, 0u);
        EXPECT_TRUE(volumes.isReady(top));
        if (!readable) {
            EXPECT_TRUE(volumes.list().isEmpty());
            EXPECT_TRUE(volumes.identity(u"/"_s).has_value()); // "/" is always a file system's root
            EXPECT_FALSE(volumes.identity(root.filePath(u"absent"_s)).has_value());
        }
    }
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

QByteArray isoHead(int bytes = kSuperblockBytes)
{
    QByteArray head(bytes, '\0');
    head.replace(0x8001, 5, "CD001");
    head.replace(0x8028, std::min(32, bytes - 0x8028), QByteArray("VIDEOCD").leftJustified(32, ' '));
    return head.left(bytes);
}

TEST(Superblock, LabelAndSerialOfExtAndIsoAndNothingElse)
{
    const struct
    {
        QByteArray head;
        bool recognised;
        QString label;
        quint32 serial;
    } rows[] = {{ext4Head("backup", QByteArray::fromHex("2f1c9a0b44d34c5e8f0011223344aabb")), true,
                    u"backup"_s, 0x2F1C9A0Bu},
        {isoHead(), true, u"VIDEOCD"_s, 0}, {QByteArray(kSuperblockBytes, '\0'), false, {}, 0},
        {ext4Head("x", "0123456789abcdef").left(0x480), false, {}, 0}, {QByteArray(), false, {}, 0},
        {isoHead(0x8030), false, {}, 0}}; // cut inside the volume identifier
    for (const auto& row : rows) {
        const SuperblockFacts facts = readSuperblock(row.head);
        EXPECT_EQ(facts.recognised, row.recognised) << row.head.size();
        if (row.recognised) {
            EXPECT_EQ(facts.label, row.label);
            EXPECT_EQ(facts.serial, row.serial);
        }
    }
    EXPECT_EQ(serialFromUuid(u"ABCD-1234"_s), 0xABCD1234u);
    EXPECT_EQ(serialFromUuid(u"2f1c9a0b-44d3-4c5e-8f00-11223344aabb"_s), 0x2F1C9A0Bu);
    for (const QString& bad : {u"1234"_s, u"not-a-uuid-at-all"_s, QString()})
        EXPECT_EQ(serialFromUuid(bad), 0u) << bad.toStdString();
}

TEST_F(FakeSystem, IdentityFromUdevLinksThenFromTheSuperblock)
{
    const QString stick = root.filePath(u"stick"_s);
    const QString disk = root.filePath(u"disk"_s);
    QDir().mkpath(stick);
    QDir().mkpath(disk);
    // udev names sdb1 by label and uuid; sdc1 has no links but a readable ext4 superblock.
    ASSERT_TRUE(QFile::link(u"../../sdb1"_s, dev + u"/disk/by-label/My\\x20Stick"_s));
    ASSERT_TRUE(QFile::link(u"../../sdb1"_s, dev + u"/disk/by-uuid/ABCD-1234"_s));
    writeFile(dev + u"/sdc1"_s, ext4Head("data", QByteArray::fromHex("00000001aaaaaaaaaaaaaaaaaaaaaaaa")));
    writeFile(table,
        u"1 0 8:17 / %1 rw - vfat /dev/sdb1 rw\n2 0 8:33 / %2 rw - ext4 /dev/sdc1 rw\n"_s.arg(stick, disk)
            .toUtf8());
    LinuxVolumes volumes = this->volumes();
    const auto stickId = volumes.identity(stick);
    ASSERT_TRUE(stickId.has_value());
    EXPECT_EQ(stickId->label, u"My Stick"_s);
    EXPECT_EQ(stickId->serial, 0xABCD1234u);
    EXPECT_EQ(stickId->fsName, u"vfat"_s);
    const auto diskId = volumes.identity(disk);
    ASSERT_TRUE(diskId.has_value());
    EXPECT_EQ(diskId->label, u"data"_s);
    EXPECT_EQ(diskId->serial, 1u);
    EXPECT_EQ(diskId->fsName, u"ext4"_s);
    EXPECT_FALSE(volumes.identity(root.filePath(u"elsewhere"_s)).has_value());
}

// This machine's own mount table and a real folder.
TEST(LinuxVolumesReal, ThisMachine)
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
    EXPECT_EQ(space->totalClusters,
        space->totalBytes / (quint64(space->bytesPerSector) * space->sectorsPerCluster));
    EXPECT_FALSE(volumes.space(dir.filePath(u"missing"_s)).has_value());
    EXPECT_TRUE(volumes.isReady(dir.path()));
    EXPECT_FALSE(volumes.isReady(dir.filePath(u"missing"_s)));

    const QList<Volume> list = volumes.list();
    EXPECT_TRUE(
        std::any_of(list.begin(), list.end(), [](const Volume& v) { return v.mountPoint == u"/"_s; }));
    for (const Volume& v : list)
        EXPECT_FALSE(isPseudoFileSystem(v.fsType)) << v.mountPoint.toStdString();
}

} // namespace
