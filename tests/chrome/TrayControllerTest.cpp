#include "chrome/TrayController.h"

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>

using vindaro::chrome::TrayController;

namespace {

struct TrayFixture
{
    std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
    TrayController* tray;

    explicit TrayFixture(bool available)
        : tray(new TrayController(window.get(), [available] { return available; }))
    {
        tray->setAnimationMs(0);
        window->resize(200, 150);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }
};

TEST(TrayController, WithoutANotificationAreaTheWindowIsMinimised)
{
    TrayFixture f(false);
    QSignalSpy minimized(f.tray, &TrayController::minimizedInstead);
    EXPECT_FALSE(f.tray->sendToTray());
    EXPECT_EQ(minimized.count(), 1);
    EXPECT_TRUE(f.window->isMinimized());
    EXPECT_EQ(f.tray->trayIcon(), nullptr);
    f.tray->restoreWindow();
    EXPECT_FALSE(f.window->isMinimized());
    EXPECT_TRUE(f.window->isVisible());
}

// Sending hides the window behind the icon; a click on the icon (not the context menu) brings it back,
// and the icon stays for the next time.
TEST(TrayController, SendingHidesTheWindowBehindTheIconAndAClickBringsItBack)
{
    TrayFixture f(true);
    QSignalSpy sent(f.tray, &TrayController::sentToTray);
    EXPECT_TRUE(f.tray->sendToTray());
    EXPECT_EQ(sent.count(), 1);
    EXPECT_FALSE(f.window->isVisible());
    QSystemTrayIcon* icon = f.tray->trayIcon();
    ASSERT_NE(icon, nullptr);
    EXPECT_TRUE(icon->isVisible());
    EXPECT_EQ(icon->toolTip(), TrayController::kTipText);
    EXPECT_FALSE(icon->icon().isNull());

    emit icon->activated(QSystemTrayIcon::Context);
    EXPECT_FALSE(f.window->isVisible());
    emit icon->activated(QSystemTrayIcon::Trigger);
    EXPECT_TRUE(f.window->isVisible());
    f.tray->sendToTray();
    EXPECT_FALSE(f.window->isVisible());
    EXPECT_EQ(f.tray->trayIcon(), icon);
}

TEST(TrayController, TheMenuRestoresAndExitsThroughTheWindowsClose)
{
    TrayFixture f(true);
    f.tray->sendToTray();
    ASSERT_NE(f.tray->trayMenu(), nullptr);
    auto* restore = f.tray->trayMenu()->findChild<QAction*>(QStringLiteral("trayRestoreAction"));
    auto* exit = f.tray->trayMenu()->findChild<QAction*>(QStringLiteral("trayExitAction"));
    ASSERT_TRUE(restore && exit);
    EXPECT_EQ(restore->text(), TrayController::kRestoreCaption);
    EXPECT_EQ(exit->text(), TrayController::kExitCaption);
    restore->trigger();
    EXPECT_TRUE(f.window->isVisible());
    f.tray->sendToTray();
    exit->trigger(); // a plain QWidget accepts its close
    EXPECT_FALSE(f.window->isVisible());
}

// The icon and its menu go with the window, or before it when removed; the tray can be used again.
TEST(TrayController, TheIconGoesWithTheWindowOrWhenRemoved)
{
    TrayFixture f(true);
    f.tray->sendToTray();
    QPointer<QMenu> firstMenu = f.tray->trayMenu();
    f.tray->removeIcon();
    EXPECT_EQ(f.tray->trayIcon(), nullptr);
    EXPECT_TRUE(firstMenu.isNull());
    f.tray->removeIcon(); // twice is harmless
    f.tray->sendToTray();
    EXPECT_NE(f.tray->trayMenu(), nullptr);
    QPointer<QSystemTrayIcon> icon = f.tray->trayIcon();
    ASSERT_FALSE(icon.isNull());
    f.window.reset();
    EXPECT_TRUE(icon.isNull());
}

} // namespace
