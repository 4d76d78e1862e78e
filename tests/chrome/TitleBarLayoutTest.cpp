#include "chrome/TitleBarLayout.h"

#include <gtest/gtest.h>

using vindaro::chrome::TitleBarArea;
using vindaro::chrome::TitleBarLayout;

namespace {

// The boundaries of every area on a 300-wide bar, and what a bar too narrow for all buttons gives.
TEST(TitleBarLayout, FindsTheAreaUnderX)
{
    const struct
    {
        qint64 x;
        qint64 width;
        TitleBarArea area;
    } rows[] = {{-1, 300, TitleBarArea::Outside}, {0, 300, TitleBarArea::FileMenu},
        {17, 300, TitleBarArea::FileMenu}, {18, 300, TitleBarArea::Caption},
        {245, 300, TitleBarArea::Caption}, {246, 300, TitleBarArea::Minimize},
        {263, 300, TitleBarArea::Minimize}, {264, 300, TitleBarArea::Tray}, {281, 300, TitleBarArea::Tray},
        {282, 300, TitleBarArea::Close}, {299, 300, TitleBarArea::Close}, {300, 300, TitleBarArea::Outside},
        // 30 wide: the file menu keeps 0..17, close takes the rest.
        {17, 30, TitleBarArea::FileMenu}, {18, 30, TitleBarArea::Close}, {0, 0, TitleBarArea::Outside}};
    for (const auto& row : rows)
        EXPECT_EQ(TitleBarLayout::areaAt(row.x, row.width), row.area)
            << "x " << row.x << " width " << row.width;
}

// Each button's span holds its area; a right click opens the file menu only off the right-hand buttons.
TEST(TitleBarLayout, SpansMatchTheirAreas)
{
    const struct
    {
        TitleBarArea area;
        bool rightClickOpensMenu;
    } rows[] = {{TitleBarArea::FileMenu, true}, {TitleBarArea::Minimize, false}, {TitleBarArea::Tray, false},
        {TitleBarArea::Close, false}};
    for (const auto& row : rows) {
        const auto span = TitleBarLayout::spanOf(row.area, 500);
        ASSERT_EQ(span.right - span.left, TitleBarLayout::kButtonWidth);
        EXPECT_EQ(TitleBarLayout::areaAt(span.left, 500), row.area);
        EXPECT_EQ(TitleBarLayout::areaAt(span.right - 1, 500), row.area);
        EXPECT_EQ(TitleBarLayout::opensFileMenuOnRightClick(row.area), row.rightClickOpensMenu);
    }
    EXPECT_TRUE(TitleBarLayout::spanOf(TitleBarArea::Caption, 500).isEmpty());
    EXPECT_TRUE(TitleBarLayout::opensFileMenuOnRightClick(TitleBarArea::Caption));
    EXPECT_FALSE(TitleBarLayout::opensFileMenuOnRightClick(TitleBarArea::Outside));
}

} // namespace
