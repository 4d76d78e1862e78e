#pragma once

#include <QList>
#include <QString>

namespace vindaro::platform {

// One optical drive. A drive has no letter on Linux: the user knows it by its mount point while a
// medium is mounted, else by its device node.
struct OpticalDrive
{
    QString device; // the device node, e.g. /dev/sr0
    QString mountPoint; // where its medium is mounted, without a trailing slash; empty when not mounted

    // The drive's name for the user: the mount point when mounted, else the device path.
    QString root() const { return mountPoint.isEmpty() ? device : mountPoint; }
};

inline bool operator==(const OpticalDrive& a, const OpticalDrive& b)
{
    return a.device == b.device && a.mountPoint == b.mountPoint;
}

// The machine's optical drives and their trays.
// Every call may be made from any thread and may take seconds (a drive spinning up or moving its tray),
// so windows call the tray operations off their own thread. No call throws or shows anything.
class OpticalDrives
{
public:
    virtual ~OpticalDrives() = default;
    // The drives in a stable order (sr0, sr1, ... sr10); empty when there is none.
    virtual QList<OpticalDrive> list() = 0;
    // True when a medium is present and, when mounted, its root can be listed.
    virtual bool isReady(const OpticalDrive& drive) = 0;
    // Move the tray of the drive with that device path; opening unmounts a mounted medium first. False
    // when the drive has no tray motor, its medium is in use and stays mounted, it is busy, cannot be
    // opened for lack of permission, or does not exist.
    virtual bool openTray(const QString& device) = 0;
    virtual bool closeTray(const QString& device) = 0;
};

} // namespace vindaro::platform
