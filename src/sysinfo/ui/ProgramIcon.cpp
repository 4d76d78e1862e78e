#include "ProgramIcon.h"

#include "chrome/Artwork.h"
#include "sysinfo/ProgramInfo.h"

namespace vindaro::sysinfo::ui {

QIcon programIcon()
{
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 128, 256}) {
        const QString path
            = installedDataFile(QStringLiteral("icons/hicolor/%1x%1/apps/%2.png").arg(side).arg(kIconName));
        if (!path.isEmpty())
            icon.addFile(path, QSize(side, side));
    }
    if (!icon.isNull())
        return icon;
    const QIcon themed = QIcon::fromTheme(kIconName);
    return themed.isNull() ? chrome::artworkIcon(chrome::ArtworkId::AppIcon) : themed;
}

} // namespace vindaro::sysinfo::ui
