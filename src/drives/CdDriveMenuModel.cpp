#include "CdDriveMenuModel.h"

namespace vindaro::drives {

const QString CdDriveMenuModel::kEjectAllCaption = QStringLiteral("弹出[&E] 所有CD-ROM");
const QString CdDriveMenuModel::kCloseAllCaption = QStringLiteral("关闭[&C] 所有CD-ROM");
const QString CdDriveMenuModel::kEjectMenuTitle = QStringLiteral("弹出    CD-ROM");
const QString CdDriveMenuModel::kCloseMenuTitle = QStringLiteral("关闭    CD-ROM");

CdDriveMenuModel::CdDriveMenuModel(const QList<platform::OpticalDrive>& drives)
    : m_drives(drives)
{
}

QList<CdMenuItem> CdDriveMenuModel::topItems() const
{
    return {CdMenuItem{kEjectAllId, kEjectAllCaption}, CdMenuItem{kCloseAllId, kCloseAllCaption}};
}

QList<CdMenuItem> CdDriveMenuModel::itemsFrom(int firstId) const
{
    QList<CdMenuItem> items;
    const int count = qMin(static_cast<int>(m_drives.size()), kMaxDriveItems);
    for (int k = 0; k < count; ++k)
        items.append(CdMenuItem{firstId + k, m_drives.at(k).root()});
    return items;
}

bool CdDriveMenuModel::isAcceptedId(int id)
{
    return id == kEjectAllId || id == kCloseAllId || (id >= kEjectFirstId && id <= kEjectLastId)
        || (id >= kCloseFirstId && id <= kCloseLastId);
}

std::optional<TrayCommand> CdDriveMenuModel::commandFor(int id) const
{
    if (!isAcceptedId(id))
        return std::nullopt;
    TrayCommand command;
    const bool ejects = id == kEjectAllId || (id >= kEjectFirstId && id <= kEjectLastId);
    command.move = ejects ? TrayMove::Open : TrayMove::Close;
    if (id == kEjectAllId || id == kCloseAllId) {
        for (const platform::OpticalDrive& drive : m_drives)
            command.devices.append(drive.device);
        return command;
    }
    const int k = id - (command.move == TrayMove::Open ? kEjectFirstId : kCloseFirstId);
    if (k < 0 || k >= m_drives.size())
        return std::nullopt;
    command.devices.append(m_drives.at(k).device);
    return command;
}

} // namespace vindaro::drives
