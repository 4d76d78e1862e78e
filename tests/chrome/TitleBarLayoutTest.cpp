#include "chrome/TitleBarLayout.h"

#include <gtest/gtest.h>

using vindaro::chrome::TitleBarArea;
using vindaro::chrome::TitleBarLayout;

namespace {

struct HitCase
{
    qint64 x;
    qint64 width;
    TitleBarArea expected;
};

class TitleBarHit : public ::testing::TestWithParam<HitCase>
{
};

TEST_P(TitleBarHit, FindsTheAreaUnderX)
{
    const HitCase c = GetParam();
    EXPECT_EQ(TitleBarLayout::areaAt(c.x, c.width), c.expected) << "x " << c.x << " width " << c.width;
}

// The boundaries of every area on a 300-wide bar, and what a bar too narrow for all buttons gives.
INSTANTIATE_TEST_SUITE_P(Boundaries, TitleBarHit,
    ::testing::Values(HitCase{-1, 300, TitleBarArea::Outside}, HitCase{0, 300, TitleBarArea::FileMenu},
        HitCase{10, 300, TitleBarArea::FileMenu}, HitCase{17, 300, TitleBarArea::FileMenu},
        HitCase{18, 300, TitleBarArea::Caption}, HitCase{245, 300, TitleBarArea::Caption},
        HitCase{246, 300, TitleBarArea::Minimize}, HitCase{263, 300, TitleBarArea::Minimize},
        HitCase{264, 300, TitleBarArea::Tray}, HitCase{275, 300, TitleBarArea::Tray},
        HitCase{281, 300, TitleBarArea::Tray}, HitCase{282, 300, TitleBarArea::Close},
        HitCase{290, 300, TitleBarArea::Close}, HitCase{299, 300, TitleBarArea::Close},
        HitCase{300, 300, TitleBarArea::Outside},
        // 30 wide: the file menu keeps 0..17, close takes the rest.
        HitCase{17, 30, TitleBarArea::FileMenu}, HitCase{18, 30, TitleBarArea::Close},
        HitCase{0, 0, TitleBarArea::Outside}));

TEST(TitleBarLayout, SpansMatchTheirAreas)
{
    const qint64 width = 500;
    for (TitleBarArea area :
        {TitleBarArea::FileMenu, TitleBarArea::Minimize, TitleBarArea::Tray, TitleBarArea::Close}) {
        const auto span = TitleBarLayout::spanOf(area, width);
        ASSERT_EQ(span.right - span.left, TitleBarLayout::kButtonWidth);
        EXPECT_EQ(TitleBarLayout::areaAt(span.left, width), area);
        EXPECT_EQ(TitleBarLayout::areaAt(span.right - 1, width), area);
    }
    EXPECT_TRUE(TitleBarLayout::spanOf(TitleBarArea::Caption, width).isEmpty());
}

TEST(TitleBarLayout, RightClickOpensTheMenuOnlyOffTheRightHandButtons)
{
    EXPECT_TRUE(TitleBarLayout::opensFileMenuOnRightClick(TitleBarArea::Caption));
    EXPECT_TRUE(TitleBarLayout::opensFileMenuOnRightClick(TitleBarArea::FileMenu));
    EXPECT_FALSE(TitleBarLayout::opensFileMenuOnRightClick(TitleBarArea::Close));
    EXPECT_FALSE(TitleBarLayout::opensFileMenuOnRightClick(TitleBarArea::Tray));
    EXPECT_FALSE(TitleBarLayout::opensFileMenuOnRightClick(TitleBarArea::Minimize));
    EXPECT_FALSE(TitleBarLayout::opensFileMenuOnRightClick(TitleBarArea::Outside));
}

} // namespace
