#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>

class QMenu;
class QSystemTrayIcon;
class QWidget;

namespace vindaro::chrome {

// Sends the main window to the notification area and brings it back.
//
// sendToTray() hides the window and shows the tray icon (tip "Vindaro2.0") with the balloon
// "Vindaro is Running..." (warning icon, 2000 ms). A click on the icon, or "恢复窗口(&R)" in its menu,
// brings the window back; "退出(&X)" brings it back and closes it, so the window's own exit question
// still runs. Where the desktop has no notification area the window is minimised instead.
// The icon stays from the first sendToTray() until the window is destroyed, the application quits or
// removeIcon() is called.
class TrayController : public QObject
{
    Q_OBJECT

public:
    static const QString kTipText; // "Vindaro2.0"
    static const QString kBalloonText; // "Vindaro is Running..."
    static constexpr int kBalloonMs = 2000;
    static const QString kRestoreCaption; // "恢复窗口(&R)"
    static const QString kExitCaption; // "退出(&X)"

    // trayAvailable answers whether the desktop has a notification area; by default
    // QSystemTrayIcon::isSystemTrayAvailable().
    explicit TrayController(QWidget* window, std::function<bool()> trayAvailable = {});
    ~TrayController() override;

    // Milliseconds of the rectangle flying to the lower right corner; 0 for none. Default 180.
    void setAnimationMs(int ms) { m_animationMs = ms; }

    // True when the window went to the notification area, false when it was minimised instead.
    bool sendToTray();
    void restoreWindow();
    void removeIcon();

    QSystemTrayIcon* trayIcon() const { return m_icon; } // null until the first sendToTray()
    QMenu* trayMenu() const { return m_menu; }

signals:
    void sentToTray();
    void minimizedInstead();
    void restored();

private:
    void ensureIcon();
    void animateAway();

    QPointer<QWidget> m_window;
    std::function<bool()> m_trayAvailable;
    QSystemTrayIcon* m_icon = nullptr; // a child of this controller
    QMenu* m_menu = nullptr; // owned here: a QMenu cannot be a child of a QObject that is no widget
    int m_animationMs = 180;
};

} // namespace vindaro::chrome
