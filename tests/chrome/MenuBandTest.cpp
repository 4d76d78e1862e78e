#include "chrome/MenuBand.h"
#include "drives/CdDriveMenuModel.h"

#include <QAction>
#include <QMenu>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

using vindaro::chrome::applyMenuBand;
using vindaro::chrome::applyMenuIcons;
using vindaro::chrome::cdMenuBandLook;
using vindaro::chrome::fileMenuBandLook;
using vindaro::chrome::menuBandOf;

namespace {

bool between(int value, int a, int b)
{
    return value >= std::min(a, b) - 2 && value <= std::max(a, b) + 2;
}

// True when colour lies in the band's gradient.
bool inBand(const QColor& colour, const vindaro::chrome::MenuBandLook& look)
{
    return between(colour.red(), look.bandFoot.red(), look.bandHead.red())
        && between(colour.green(), look.bandFoot.green(), look.bandHead.green())
        && between(colour.blue(), look.bandFoot.blue(), look.bandHead.blue());
}

QImage render(QMenu& menu)
{
    menu.ensurePolished();
    menu.resize(menu.sizeHint());
    return menu.grab().toImage();
}

TEST(MenuBand, PaintsTheBandAndMovesTheEntriesClearOfIt)
{
    QMenu menu;
    QAction* first = menu.addAction(QStringLiteral("打开当前文件(&O)"));
    menu.addAction(QStringLiteral("加文件到列表(&D)"));
    menu.addSeparator();
    menu.addAction(QStringLiteral("&About Vindaro"));
    const vindaro::chrome::MenuBandLook look = cdMenuBandLook();
    applyMenuBand(&menu, look);
    const QImage image = render(menu);

    ASSERT_NE(menuBandOf(&menu), nullptr);
    for (const int y : {4, image.height() / 2, image.height() - 4}) {
        const QColor edge = image.pixelColor(3, y);
        EXPECT_TRUE(inBand(edge, look)) << "y " << y << " " << qPrintable(edge.name());
    }
    // The body is the background colour, and entries start right of the band.
    const QColor body = image.pixelColor(image.width() - 4, menu.actionGeometry(first).center().y() + 6);
    EXPECT_EQ(body, QColor(249, 248, 247));
    EXPECT_GE(menu.actionGeometry(first).left(), look.bandWidth);
}

// Applying again replaces the look; the title's white letters run up the middle of the otherwise blue band.
TEST(MenuBand, TheBandCarriesItsTitle)
{
    QMenu menu;
    for (int i = 0; i < 6; ++i)
        menu.addAction(QStringLiteral("entry %1").arg(i));
    applyMenuBand(&menu, cdMenuBandLook());
    applyMenuBand(&menu, fileMenuBandLook());
    EXPECT_EQ(menu.findChildren<vindaro::chrome::MenuBand*>().size(), 1);
    EXPECT_EQ(menuBandOf(&menu)->look().title, fileMenuBandLook().title);
    const QImage image = render(menu);
    int whitish = 0;
    for (int y = 0; y < image.height(); ++y) {
        const QColor c = image.pixelColor(fileMenuBandLook().bandWidth / 2 + 1, y);
        whitish += c.red() > 200 && c.green() > 200 && c.blue() > 200 ? 1 : 0;
    }
    EXPECT_GT(whitish, 3);
}

TEST(MenuIcons, OnlyTheStyledCaptionsGetIconsSubMenusIncluded)
{
    QMenu menu;
    QAction* open = menu.addAction(QStringLiteral("打开当前文件(&O)"));
    QAction* other = menu.addAction(QStringLiteral("重命名(&R)"));
    QMenu* sub = menu.addMenu(QStringLiteral("弹出    CD-ROM"));
    QAction* closeAll = sub->addAction(QStringLiteral("关闭[&C] 所有CD-ROM"));
    EXPECT_EQ(applyMenuIcons(&menu), 3);
    EXPECT_FALSE(open->icon().isNull());
    EXPECT_TRUE(other->icon().isNull());
    EXPECT_FALSE(sub->menuAction()->icon().isNull());
    EXPECT_FALSE(closeAll->icon().isNull());
}

// The drive menu gets the CD band and the icons of its styled captions.
TEST(StyledCdDriveMenu, HasTheCdBandAndIcons)
{
    const vindaro::drives::CdDriveMenuModel model(
        {vindaro::platform::OpticalDrive{QStringLiteral("/dev/sr0"), {}}});
    std::unique_ptr<QMenu> menu(vindaro::chrome::buildStyledCdDriveMenu(model, nullptr));
    ASSERT_NE(menuBandOf(menu.get()), nullptr);
    EXPECT_EQ(menuBandOf(menu.get())->look().title, cdMenuBandLook().title);
    QStringList withIcons;
    for (const QAction* action : menu->actions()) {
        if (!action->icon().isNull())
            withIcons << action->text();
    }
    EXPECT_EQ(withIcons,
        QStringList({vindaro::drives::CdDriveMenuModel::kCloseAllCaption,
            vindaro::drives::CdDriveMenuModel::kEjectMenuTitle}));
}

} // namespace
