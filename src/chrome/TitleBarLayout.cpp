#include "TitleBarLayout.h"

namespace vindaro::chrome {

AreaSpan TitleBarLayout::spanOf(TitleBarArea area, qint64 scaleWidth)
{
    const qint64 w = kButtonWidth;
    switch (area) {
    case TitleBarArea::FileMenu:
        return {0, w};
    case TitleBarArea::Close:
        return {scaleWidth - w, scaleWidth};
    case TitleBarArea::Tray:
        return {scaleWidth - 2 * w, scaleWidth - w};
    case TitleBarArea::Minimize:
        return {scaleWidth - 3 * w, scaleWidth - 2 * w};
    case TitleBarArea::Outside:
    case TitleBarArea::Caption:
        break;
    }
    return {};
}

TitleBarArea TitleBarLayout::areaAt(qint64 x, qint64 scaleWidth)
{
    if (x < 0 || x >= scaleWidth)
        return TitleBarArea::Outside;
    for (TitleBarArea area :
        {TitleBarArea::FileMenu, TitleBarArea::Close, TitleBarArea::Tray, TitleBarArea::Minimize}) {
        const AreaSpan span = spanOf(area, scaleWidth);
        if (span.contains(x))
            return area;
    }
    return TitleBarArea::Caption;
}

bool TitleBarLayout::isButton(TitleBarArea area)
{
    return area != TitleBarArea::Outside && area != TitleBarArea::Caption;
}

bool TitleBarLayout::opensFileMenuOnRightClick(TitleBarArea area)
{
    return area == TitleBarArea::Caption || area == TitleBarArea::FileMenu;
}

} // namespace vindaro::chrome
