#include "MenuIcons.h"

namespace vindaro::chrome {

QList<MenuIcon> styledMenuIcons()
{
    return {
        {QStringLiteral("打开当前文件(&O)"), ArtworkId::OpenFile},
        {QStringLiteral("加文件到列表(&D)"), ArtworkId::AddToList},
        {QStringLiteral("删除当前文件(&K)"), ArtworkId::DeleteFile},
        {QStringLiteral("复制该文件到(&C)..."), ArtworkId::CopyTo},
        {QStringLiteral("移动该文件到(&M)..."), ArtworkId::MoveTo},
        {QStringLiteral("查看文件属性(&P)"), ArtworkId::Properties},
        {QStringLiteral("&About Vindaro"), ArtworkId::About},
        {QStringLiteral("关闭[&C] 所有CD-ROM"), ArtworkId::CloseAllCd},
        {QStringLiteral("弹出    CD-ROM"), ArtworkId::EjectCd},
    };
}

std::optional<ArtworkId> menuIconFor(const QString& caption)
{
    const QList<MenuIcon> icons = styledMenuIcons();
    for (const MenuIcon& icon : icons) {
        if (icon.caption == caption)
            return icon.artwork;
    }
    return std::nullopt;
}

} // namespace vindaro::chrome
