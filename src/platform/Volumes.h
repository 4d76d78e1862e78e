#pragma once

#include <QList>
#include <QString>
#include <QtGlobal>

#include <optional>

namespace vindaro::platform {

// Drive kinds, with the values the rest of the program keys on.
enum DriveKind : int
{
    kDriveUnknown = 0,
    kDriveNoRoot = 1,
    kDriveRemovable = 2,
    kDriveFixed = 3,
    kDriveRemote = 4,
    kDriveCdRom = 5,
    kDriveRamDisk = 6,
};

// One mounted volume: on Linux a "drive" is a mount point.
struct Volume
{
    QString mountPoint; // absolute, without a trailing slash except for "/"
    QString device; // e.g. /dev/sr0, server:/share, tmpfs
    QString fsType; // e.g. ext4, iso9660, nfs
    int kind = kDriveUnknown;
};

struct VolumeSpace
{
    quint64 totalBytes = 0;
    quint64 freeBytes = 0; // free for an unprivileged caller
    quint64 totalFreeBytes = 0; // free including reserved blocks
    quint32 bytesPerSector = 0; // the fragment size
    quint32 sectorsPerCluster = 0; // block size / fragment size
    quint64 totalClusters = 0;
    quint64 freeClusters = 0;
};

struct VolumeIdentity
{
    QString label;
    quint32 serial = 0; // 0 when the file system has none we can read
    QString fsName;
};

// The volume whose mount point is the longest component-wise prefix of the absolute `path`
// ("/media/cd" holds "/media/cd/a" but not "/media/cdrom"); a later entry on the same mount point hides an
// earlier one. Relative or empty paths have none.
std::optional<Volume> volumeHolding(const QList<Volume>& volumes, const QString& path);

// The machine's volumes. The Linux implementation reads the mount table and sysfs; tests use a fake table.
class Volumes
{
public:
    virtual ~Volumes() = default;
    // Mounted volumes in mount-table order; optical drives come first among equals only as the table has
    // them.
    virtual QList<Volume> list() = 0;
    // The volume that holds `path`. The Linux class also answers for a path the mount table does not
    // cover (a chroot whose root is no mount point), from the path itself.
    virtual std::optional<Volume> volumeOf(const QString& path) { return volumeHolding(list(), path); }
    virtual std::optional<VolumeSpace> space(const QString& mountPoint) = 0;
    virtual std::optional<VolumeIdentity> identity(const QString& mountPoint) = 0;
    // True when a medium is present and the first entry of the volume's root can be read.
    virtual bool isReady(const QString& mountPoint) = 0;
    virtual bool setLabel(const QString& mountPoint, const QString& label) = 0;
};

} // namespace vindaro::platform
