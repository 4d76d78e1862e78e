#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace vindaro::chrome {

// Every picture the chrome draws. The artwork itself is painted in code (Artwork.h), so it stays sharp
// at any scale.
enum class ArtworkId
{
    AppIcon,
    // Horizontal title bar buttons.
    FileMenuButton,
    MinimizeButton,
    TrayButton,
    CloseButton,
    // Picture buttons.
    Refresh,
    Search,
    SetUp,
    Watch,
    // Menu icons, in the order of the menu captions that carry them.
    OpenFile,
    AddToList,
    DeleteFile,
    CopyTo,
    MoveTo,
    Properties,
    About,
    CloseAllCd,
    EjectCd
};

struct MenuIcon
{
    QString caption; // the menu entry's text as shown, access key included
    ArtworkId artwork;
};

// The nine styled menu captions that carry an icon, in order.
QList<MenuIcon> styledMenuIcons();

// The icon for a menu caption; nullopt for a caption without one. Matches the caption exactly.
std::optional<ArtworkId> menuIconFor(const QString& caption);

} // namespace vindaro::chrome
