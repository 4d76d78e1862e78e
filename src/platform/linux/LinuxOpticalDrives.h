#pragma once

#include "platform/OpticalDrives.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

namespace vindaro::platform {

// The two tray ioctls.
enum class TrayIoctl
{
    Eject, // CDROMEJECT
    Close, // CDROMCLOSETRAY
};

// How LinuxOpticalDrives moves trays.
struct TrayOptions
{
    // The longest one openTray() waits for the disk service, all its calls together; a stuck
    // service costs this once, then the ioctl is tried or the request fails.
    int diskServiceTimeoutMs = 30000;
    // Runs a tray ioctl on a device node; true when the tray moved. Empty: the real ioctl. Tests
    // replace it so that no real drive moves.
    std::function<bool(const QString& devicePath, TrayIoctl request)> trayIoctl;
};

// Optical drives of a Linux machine: the sr block devices of sysfs and /dev, their mount points from
// /proc/self/mountinfo and readiness from the CDROM_DRIVE_STATUS ioctl.
//
// A tray opens through the desktop's disk service (UDisks2), which unmounts a mounted disc first: the
// kernel refuses CDROMEJECT while a disc is mounted, and on a desktop a disc is normally mounted. Where
// the service is missing or will not eject, CDROMEJECT is tried. A refused unmount ends the request:
// the disc stays mounted and openTray() answers false. Trays close with CDROMCLOSETRAY.
//
// Holds no state beyond its settings, so one instance may be shared between threads.
class LinuxOpticalDrives final : public OpticalDrives
{
public:
    // One line of a mountinfo table, as far as drives need it.
    struct MountEntry
    {
        QString majorMinor; // "11:0"
        QString mountPoint; // octal escapes (\040 ...) decoded
        QString fsType;
        QString source; // e.g. /dev/sr0
    };

    // rootPath lets tests point the class at a fake tree holding sys/block, dev and proc/self/mountinfo.
    // The disk service knows the real system's devices only, so it is asked only when rootPath is "/".
    explicit LinuxOpticalDrives(const QString& rootPath = QStringLiteral("/"), TrayOptions trayOptions = {});

    QList<OpticalDrive> list() override;
    bool isReady(const OpticalDrive& drive) override;
    bool openTray(const QString& device) override;
    bool closeTray(const QString& device) override;

    // Parses mountinfo text: "36 35 11:0 / /media/cd ro,relatime shared:1 - iso9660 /dev/sr0 ro".
    // Malformed lines are skipped.
    static QList<MountEntry> parseMountInfo(const QByteArray& text);

private:
    QString hostPath(const QString& absolutePath) const;
    bool runTrayIoctl(const QString& device, TrayIoctl request) const;

    QString m_rootPath;
    TrayOptions m_trayOptions;
};

} // namespace vindaro::platform
