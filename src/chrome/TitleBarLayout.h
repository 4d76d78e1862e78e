#pragma once

#include <QtGlobal>

namespace vindaro::chrome {

// The parts of the horizontal title bar, measured from its left edge in its own units.
enum class TitleBarArea
{
    Outside, // x < 0 or x >= the bar's width
    FileMenu, // 0 <= x < 18
    Caption, // the free area: the title, and the handle the window is dragged by
    Minimize, // width - 54 <= x < width - 36: minimise to the task bar
    Tray, // width - 36 <= x < width - 18: send to the notification area
    Close // width - 18 <= x < width
};

// A button's span [left, right) on the bar.
struct AreaSpan
{
    qint64 left = 0;
    qint64 right = 0;
    bool isEmpty() const { return right <= left; }
    bool contains(qint64 x) const { return x >= left && x < right; }
};

// Where the buttons of the horizontal title bar lie. The file menu button sits at the left; close, tray
// and minimise follow from the right edge, each kButtonWidth wide. On a bar too narrow for all of them the
// areas overlap and are taken in the order file menu, close, tray, minimise.
class TitleBarLayout
{
public:
    static constexpr qint64 kButtonWidth = 18;

    static TitleBarArea areaAt(qint64 x, qint64 scaleWidth);
    // Empty for Outside and Caption, whose extent is whatever the buttons leave.
    static AreaSpan spanOf(TitleBarArea area, qint64 scaleWidth);
    static bool isButton(TitleBarArea area);
    // Right button up here opens the file menu: the caption and the file menu button.
    static bool opensFileMenuOnRightClick(TitleBarArea area);
};

} // namespace vindaro::chrome
