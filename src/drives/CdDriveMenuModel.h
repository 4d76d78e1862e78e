#pragma once

#include "drives/TrayCommand.h"
#include "platform/OpticalDrives.h"

#include <QList>
#include <QString>

#include <optional>

namespace vindaro::drives {

struct CdMenuItem
{
    int id = 0;
    QString caption; // shown as it stands: a drive's root carries no mnemonic
};

// The CD-ROM pop-up menu without its widgets: the fixed commands, then a separator, then the sub-menus
// "弹出    CD-ROM" and "关闭    CD-ROM" with one item per drive, and the command each identifier stands
// for. It keeps the drive list it was built from, so a choice acts on the drives the user saw even when
// a disc was mounted in between.
class CdDriveMenuModel
{
public:
    static constexpr int kEjectAllId = 1000;
    static constexpr int kCloseAllId = 1100;
    static constexpr int kEjectFirstId = 1200; // + k ejects the k-th drive (k from 0)
    static constexpr int kEjectLastId = 1230;
    static constexpr int kCloseFirstId = 1300; // + k closes the k-th drive
    static constexpr int kCloseLastId = 1330;
    // Drives beyond this many get no item: their identifiers would fall outside the accepted ranges.
    static constexpr int kMaxDriveItems = kEjectLastId - kEjectFirstId + 1;

    static const QString kEjectAllCaption; // "弹出[&E] 所有CD-ROM"
    static const QString kCloseAllCaption; // "关闭[&C] 所有CD-ROM"
    static const QString kEjectMenuTitle; // "弹出    CD-ROM" (four blanks)
    static const QString kCloseMenuTitle; // "关闭    CD-ROM"

    explicit CdDriveMenuModel(const QList<platform::OpticalDrive>& drives);

    // Eject all and close all, shown above the separator.
    QList<CdMenuItem> topItems() const;
    QList<CdMenuItem> ejectItems() const { return itemsFrom(kEjectFirstId); }
    QList<CdMenuItem> closeItems() const { return itemsFrom(kCloseFirstId); }

    // True for 1000, 1100, 1200..1230 and 1300..1330.
    static bool isAcceptedId(int id);
    // The tray command an identifier stands for; nullopt for an identifier outside the accepted ranges
    // or for a drive the menu does not have (nothing chosen, or k past the last drive).
    std::optional<TrayCommand> commandFor(int id) const;

private:
    QList<CdMenuItem> itemsFrom(int firstId) const;

    QList<platform::OpticalDrive> m_drives; // every drive; only the first kMaxDriveItems get items
};

} // namespace vindaro::drives
