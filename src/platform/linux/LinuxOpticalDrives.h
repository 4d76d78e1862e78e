#pragma once

#include "platform/OpticalDrives.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace vindaro::platform {

// Optical drives of a Linux machine: the sr block devices of sysfs and /dev, their mount points from
// /proc/self/mountinfo, readiness from the CDROM_DRIVE_STATUS ioctl and trays moved with CDROMEJECT and
// CDROMCLOSETRAY. Holds no state beyond the file-system root it reads, so one instance may be shared
// between threads.
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
    explicit LinuxOpticalDrives(const QString& rootPath = QStringLiteral("/"));

    QList<OpticalDrive> list() override;
    bool isReady(const OpticalDrive& drive) override;
    bool openTray(const QString& device) override;
    bool closeTray(const QString& device) override;

    // Parses mountinfo text: "36 35 11:0 / /media/cd ro,relatime shared:1 - iso9660 /dev/sr0 ro".
    // Malformed lines are skipped.
    static QList<MountEntry> parseMountInfo(const QByteArray& text);

private:
    QString hostPath(const QString& absolutePath) const;

    QString m_rootPath;
};

} // namespace vindaro::platform
