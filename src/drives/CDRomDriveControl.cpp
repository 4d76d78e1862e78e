#include "CDRomDriveControl.h"

#include <QStringList>

namespace vindaro::drives {

namespace {

QString withoutTrailingSlash(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

} // namespace

const QString CDRomDriveControl::kNoDriveText
    = QStringLiteral("你可能没有安装光盘驱动器，或者驱动程序不正常。");
const QString CDRomDriveControl::kRootSeparator = QStringLiteral("、");

CDRomDriveControl::CDRomDriveControl(platform::OpticalDrives& drives)
    : m_drives(drives)
{
}

bool CDRomDriveControl::moveTray(TrayMove move, const QString& device)
{
    if (device.isEmpty())
        return false;
    return move == TrayMove::Open ? m_drives.openTray(device) : m_drives.closeTray(device);
}

QString CDRomDriveControl::deviceForRoot(const QString& root)
{
    const QString wanted = withoutTrailingSlash(root.trimmed());
    if (wanted.isEmpty())
        return {};
    const QList<platform::OpticalDrive> drives = m_drives.list();
    for (const platform::OpticalDrive& drive : drives) {
        if (wanted == withoutTrailingSlash(drive.root()) || wanted == drive.device)
            return drive.device;
    }
    return {};
}

bool CDRomDriveControl::OpenFirstCDdoor()
{
    const QList<platform::OpticalDrive> drives = m_drives.list();
    return !drives.isEmpty() && moveTray(TrayMove::Open, drives.first().device);
}

bool CDRomDriveControl::CloseFirstCDdoor()
{
    const QList<platform::OpticalDrive> drives = m_drives.list();
    return !drives.isEmpty() && moveTray(TrayMove::Close, drives.first().device);
}

bool CDRomDriveControl::OpenSpecialCDDoor(const QString& root)
{
    return moveTray(TrayMove::Open, deviceForRoot(root));
}

bool CDRomDriveControl::CloseSpecialCDDoor(const QString& root)
{
    return moveTray(TrayMove::Close, deviceForRoot(root));
}

int CDRomDriveControl::carryOut(const TrayCommand& command)
{
    int moved = 0;
    for (const QString& device : command.devices) {
        if (moveTray(command.move, device))
            ++moved;
    }
    return moved;
}

QString CDRomDriveControl::GetCDRomInforStr()
{
    const QList<platform::OpticalDrive> drives = m_drives.list();
    if (drives.isEmpty())
        return kNoDriveText;
    QStringList notReady;
    for (const platform::OpticalDrive& drive : drives) {
        if (!m_drives.isReady(drive)) // each drive on its own: one bad drive does not hide the others
            notReady.append(drive.root());
    }
    if (notReady.isEmpty())
        return {};
    return QStringLiteral("光盘驱动器") + notReady.join(kRootSeparator) + QStringLiteral("还没有准备好\r\n");
}

QString CDRomDriveControl::GetCDRomListStr()
{
    QStringList roots;
    const QList<platform::OpticalDrive> drives = m_drives.list();
    for (const platform::OpticalDrive& drive : drives)
        roots.append(drive.root());
    return roots.join(kRootSeparator);
}

} // namespace vindaro::drives
