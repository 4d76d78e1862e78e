#include "chrome/TrayController.h"

#include <QAction>
#include <QMenu>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QTest>
#include <QWidget>

#include <QMenu>
#include <QPointer>

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

TEST(TrayController, SendingHidesTheWindowBehindTheIcon)
{
    TrayFixture f(true);
    QSignalSpy sent(f.tray, &TrayController::sentToTray);
    EXPECT_TRUE(f.tray->sendToTray());
    EXPECT_EQ(sent.count(), 1);
    EXPECT_FALSE(f.window->isVisible());
    QSystemTrayIcon* icon = f.tray->trayIcon();
    ASSERT_NE(icon, nullptr);
    EXPECT_TRUE(icon->isVisible());
    EXPECT_EQ(icon->toolTip(), QStringLiteral("Vindaro2.0"));
    EXPECT_FALSE(icon->icon().isNull());
}

TEST(TrayController, ClickingTheIconBringsTheWindowBackAndTheIconStays)
{
    TrayFixture f(true);
    f.tray->sendToTray();
    QSystemTrayIcon* icon = f.tray->trayIcon();
    ASSERT_NE(icon, nullptr);
    emit icon->activated(QSystemTrayIcon::Context); // the menu, not a restore
    EXPECT_FALSE(f.window->isVisible());
    emit icon->activated(QSystemTrayIcon::Trigger);
    EXPECT_TRUE(f.window->isVisible());
    EXPECT_EQ(f.tray->trayIcon(), icon);

    f.tray->sendToTray(); // again: the same icon, hidden window
    EXPECT_FALSE(f.window->isVisible());
    EXPECT_EQ(f.tray->trayIcon(), icon);
}

TEST(TrayController, TheMenuRestoresAndExitsThroughTheWindowsClose)
{
    TrayFixture f(true);
    f.tray->sendToTray();
    QMenu* menu = f.tray->trayMenu();
    ASSERT_NE(menu, nullptr);
    auto* restore = menu->findChild<QAction*>(QStringLiteral("trayRestoreAction"));
    auto* exit = menu->findChild<QAction*>(QStringLiteral("trayExitAction"));
    ASSERT_NE(restore, nullptr);
    ASSERT_NE(exit, nullptr);
    EXPECT_EQ(restore->text(), QStringLiteral("恢复窗口(&R)"));
    EXPECT_EQ(exit->text(), QStringLiteral("退出(&X)"));

    restore->trigger();
    EXPECT_TRUE(f.window->isVisible());

    f.tray->sendToTray();
    exit->trigger(); // a plain QWidget accepts its close
    EXPECT_FALSE(f.window->isVisible());
}

TEST(TrayController, TheIconGoesWithTheWindow)
{
    TrayFixture f(true);
    f.tray->sendToTray();
    QPointer<QSystemTrayIcon> icon = f.tray->trayIcon();
    ASSERT_FALSE(icon.isNull());
    f.window.reset();
    EXPECT_TRUE(icon.isNull());
}

TEST(TrayController, TheIconCanBeRemovedBeforeTheWindowUnloads)
{
    TrayFixture f(true);
    f.tray->sendToTray();
    QPointer<QMenu> firstMenu = f.tray->trayMenu();
    f.tray->removeIcon();
    EXPECT_EQ(f.tray->trayIcon(), nullptr);
    EXPECT_TRUE(firstMenu.isNull()); // the menu goes with its icon
    f.tray->removeIcon(); // twice is harmless

    f.tray->sendToTray(); // and the tray can be used again
    EXPECT_NE(f.tray->trayIcon(), nullptr);
    EXPECT_NE(f.tray->trayMenu(), nullptr);
}

} // namespace
