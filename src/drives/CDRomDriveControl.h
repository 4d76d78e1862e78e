#pragma once

#include "drives/TrayCommand.h"
#include "platform/OpticalDrives.h"

#include <QString>

namespace vindaro::drives {

// Opens and closes the trays of the optical drives and reports which of them are not ready.
// Holds no state of its own: make one for each use. Tray calls may take seconds; windows run them
// through runTrayJob (TrayJob.h) so they never wait on a drive.
//
// A drive is named by its root (platform::OpticalDrive::root()): its mount point while a medium is
// mounted, else its device path. Root lists are joined with "、" (the enumeration comma), so that paths
// with blanks stay readable: "/dev/sr0、/media/cdrom1". Paths are case-sensitive and kept as they are.
class CDRomDriveControl
{
public:
    explicit CDRomDriveControl(platform::OpticalDrives& drives);

    static const QString kNoDriveText; // "你可能没有安装光盘驱动器，或者驱动程序不正常。"
    static const QString kRootSeparator; // "、"

    // The default drive is the first optical drive. False when there is none or its tray did not move.
    bool OpenFirstCDdoor();
    bool CloseFirstCDdoor();

    // The drive named by root: its mount point or device path, with or without a trailing "/".
    // False when no drive has that root or its tray did not move.
    bool OpenSpecialCDDoor(const QString& root);
    bool CloseSpecialCDDoor(const QString& root);

    // Moves each listed tray in order, going on past failures; returns how many moved.
    int carryOut(const TrayCommand& command);

    // "光盘驱动器" + the roots of the drives that are not ready + "还没有准备好" + CR LF;
    // kNoDriveText when there is no optical drive; empty when every drive is ready.
    // Asks every drive and reads a mounted medium's root: a slow drive makes this slow too.
    QString GetCDRomInforStr();
    // The roots of all drives joined with kRootSeparator; empty when there is none.
    QString GetCDRomListStr();

private:
    bool moveTray(TrayMove move, const QString& device);
    QString deviceForRoot(const QString& root);

    platform::OpticalDrives& m_drives;
};

} // namespace vindaro::drives
