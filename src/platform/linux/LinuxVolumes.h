#pragma once

#include "../Volumes.h"

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QString>

namespace vindaro::platform {

// One line of /proc/self/mountinfo, with the octal escapes (\040 blank, \011 tab, \012 newline,
// \134 backslash) undone.
struct MountEntry
{
    QString mountPoint;
    QString device; // the mount source: /dev/sda1, server:/share, tmpfs
    QString fsType;
};

// Parses mountinfo text:
//   36 35 98:0 /mnt1 /mnt/parent rw,noatime master:1 - ext3 /dev/root rw,errors=continue
//   (id parent major:minor root mount-point options optional-fields... "-" fs-type source super-options)
// Lines without the " - " separator or with too few fields are skipped.
QList<MountEntry> parseMountInfo(const QString& text);
QString unescapeMountField(const QString& field);

// Kernel bookkeeping mounts that are no drive: proc, sysfs, cgroup, devpts ... overlay is kept (it is the
// root of a container) and counts as fixed.
bool isPseudoFileSystem(const QString& fsType);
bool isRemoteFileSystem(const QString& fsType, const QString& device);

// Label and serial read from the first 0x8800 bytes of a volume:
//   ext2/3/4: magic 0xEF53 (little-endian) at 0x438, UUID 16 bytes at 0x468, label 16 bytes at 0x478;
//   iso9660: "CD001" at 0x8001, volume identifier 32 blank-padded bytes at 0x8028.
// The serial is the first 32 bits of the UUID read big-endian, as the UUID is written; 0 when none.
struct SuperblockFacts
{
    bool recognised = false;
    QString label;
    quint32 serial = 0;
};
constexpr qsizetype kSuperblockBytes = 0x8800;
SuperblockFacts readSuperblock(const QByteArray& head);
// The first eight hexadecimal digits of a UUID text as a number ("ABCD-1234" -> 0xABCD1234); 0 when it has
// fewer. udev's names for FAT volumes are exactly the serial the volume carries.
quint32 serialFromUuid(const QString& uuid);

// The machine's mounted volumes as drives (pseudo file systems and anything mounted below /proc or /sys
// left out): the mount table from mountinfo, kinds from the mount source,
// the file system and sysfs, space from statvfs, label and serial from udev's /dev/disk/by-label and
// by-uuid links or, when the device can be read, from its superblock. Everything is best effort: a fact
// that cannot be read is left empty, never reported.
//
// Kinds: CD-ROM for /dev/sr*, /dev/scd* or iso9660/udf; remote for network file systems or a
// "host:/path" or "//host/share" source; RAM disk for tmpfs and ramfs; removable when
// <sys>/block/<disk>/removable is 1 (a partition counts as its disk), floppies /dev/fd* included;
// fixed otherwise.
//
// Space: bytes per sector = f_frsize, sectors per cluster = f_bsize / f_frsize (at least 1), clusters are
// counted in units of that cluster size (equal to f_blocks and f_bfree when f_bsize == f_frsize, the
// usual case); free for the caller uses f_bavail, total free f_bfree.
//
// A path that no mount entry holds (a chroot or rescue system whose root is no mount point, or no /proc at
// all) still has a volume: the highest folder above it on the same device (st_dev), named by that folder,
// its kind from the device's sysfs entry and the file-system type (fixed unless known otherwise).
//
// The parsed table is kept and read again only after it changed: for /proc's mountinfo the kernel's change
// notice (POLLPRI on the open file) says so, for any other file its inode, size and time stamp. Every call
// may come from any thread.
class LinuxVolumes final : public Volumes
{
public:
    explicit LinuxVolumes(QString mountInfoPath = QStringLiteral("/proc/self/mountinfo"),
        QString sysRoot = QStringLiteral("/sys"), QString devRoot = QStringLiteral("/dev"));
    ~LinuxVolumes() override;
    LinuxVolumes(const LinuxVolumes&) = delete;
    LinuxVolumes& operator=(const LinuxVolumes&) = delete;

    QList<Volume> list() override;
    std::optional<Volume> volumeOf(const QString& path) override;
    std::optional<VolumeSpace> space(const QString& mountPoint) override;
    std::optional<VolumeIdentity> identity(const QString& mountPoint) override;
    // An optical drive must hold a disc (CDROM_DRIVE_STATUS), and the first entry of the root must be
    // readable: a mounted medium whose directory read fails (EIO) is not ready.
    bool isReady(const QString& mountPoint) override;
    // Changing a label needs a tool per file system and usually root; not offered: always false.
    bool setLabel(const QString& mountPoint, const QString& label) override;

    // The drive kind of one mount entry (reads sysfs for the removable flag).
    int classify(const MountEntry& entry) const;
    // How many times the mount table was read and parsed; for tests of the change notice.
    int tableReads() const;

private:
    struct Table
    {
        QList<MountEntry> entries; // as the file has them
        QList<Volume> volumes; // what list() answers
    };
    // The present table: read again when it changed, else the kept one.
    Table table();
    void reloadLocked(const QByteArray& text);
    std::optional<Volume> volumeFromPath(const QString& path) const;
    QString diskOfDevice(const QString& deviceName) const;
    QString udevName(const QString& folder, const QString& device) const;

    QString m_mountInfoPath;
    QString m_sysRoot;
    QString m_devRoot;

    mutable QMutex m_mutex; // guards everything below
    Table m_table;
    bool m_loaded = false;
    int m_noticeFd = -1; // procfs mountinfo kept open: poll() flags POLLPRI once the table changed
    QByteArray m_fileStamp; // inode, size and time of a plain mountinfo file when last read
    int m_tableReads = 0;
};

} // namespace vindaro::platform
