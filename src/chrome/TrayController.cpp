#include "TrayController.h"

#include "chrome/Artwork.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QMenu>
#include <QPainter>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QVariantAnimation>
#include <QWidget>

namespace vindaro::chrome {

const QString TrayController::kTipText = QStringLiteral("Vindaro2.0");
const QString TrayController::kBalloonText = QStringLiteral("Vindaro is Running...");
const QString TrayController::kRestoreCaption = QStringLiteral("恢复窗口(&R)");
const QString TrayController::kExitCaption = QStringLiteral("退出(&X)");

namespace {

// The outline that flies from the window to the notification area.
class FlyingFrame final : public QWidget
{
public:
    FlyingFrame()
        : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowTransparentForInput)
    {
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_DeleteOnClose);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        QLinearGradient fill(rect().topLeft(), rect().topRight());
        fill.setColorAt(0.0, QColor(0, 92, 128));
        fill.setColorAt(1.0, QColor(49, 106, 197));
        painter.fillRect(rect(), fill);
        painter.setPen(QColor(216, 228, 248));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
};

} // namespace

TrayController::TrayController(QWidget* window, std::function<bool()> trayAvailable)
    : QObject(window)
    , m_window(window)
    , m_trayAvailable(std::move(trayAvailable))
{
    setObjectName(QStringLiteral("trayController"));
    if (!m_trayAvailable)
        m_trayAvailable = [] { return QSystemTrayIcon::isSystemTrayAvailable(); };
    connect(qApp, &QCoreApplication::aboutToQuit, this, &TrayController::removeIcon);
}

TrayController::~TrayController()
{
    removeIcon();
    delete m_menu;
}

void TrayController::ensureIcon()
{
    if (m_icon)
        return;
    m_menu = new QMenu;
    m_menu->setObjectName(QStringLiteral("trayMenu"));
    QAction* restore = m_menu->addAction(kRestoreCaption, this, &TrayController::restoreWindow);
    restore->setObjectName(QStringLiteral("trayRestoreAction"));
    m_menu->addSeparator();
    QAction* exit = m_menu->addAction(kExitCaption, this, [this] {
        restoreWindow();
        if (m_window)
            m_window->close(); // the window asks its exit question; a refusal leaves it shown
    });
    exit->setObjectName(QStringLiteral("trayExitAction"));

    // The window's own icon (the installed one where the program is installed), else the artwork.
    const QIcon icon = m_window && !m_window->windowIcon().isNull() ? m_window->windowIcon()
                                                                    : artworkIcon(ArtworkId::AppIcon);
    m_icon = new QSystemTrayIcon(icon, this);
    m_icon->setObjectName(QStringLiteral("trayIcon"));
    m_icon->setToolTip(kTipText);
    m_icon->setContextMenu(m_menu);
    connect(m_icon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
            restoreWindow();
    });
}

bool TrayController::sendToTray()
{
    if (!m_window)
        return false;
    if (!m_trayAvailable()) {
        m_window->showMinimized();
        emit minimizedInstead();
        return false;
    }
    if (m_animationMs > 0)
        animateAway();
    m_window->hide();
    ensureIcon();
    m_icon->show();
    if (QSystemTrayIcon::supportsMessages())
        m_icon->showMessage(kTipText, kBalloonText, QSystemTrayIcon::Warning, kBalloonMs);
    emit sentToTray();
    return true;
}

void TrayController::restoreWindow()
{
    if (!m_window)
        return;
    if (m_window->isMinimized())
        m_window->showNormal();
    else
        m_window->show();
    m_window->raise();
    m_window->activateWindow();
    emit restored();
}

void TrayController::removeIcon()
{
    if (!m_icon)
        return;
    m_icon->hide();
    delete m_icon;
    m_icon = nullptr;
    delete m_menu; // the next send to the tray builds both again
    m_menu = nullptr;
}

void TrayController::animateAway()
{
    const QRect from = m_window->frameGeometry();
    QScreen* screen = m_window->screen() ? m_window->screen() : QGuiApplication::primaryScreen();
    if (!screen || from.isEmpty())
        return;
    const QRect corner = screen->availableGeometry();
    const QRect to(corner.bottomRight() - QPoint(24, 24), QSize(24, 24));
    auto* frame = new FlyingFrame;
    frame->setGeometry(from);
    frame->show();
    auto* animation = new QVariantAnimation(frame);
    animation->setDuration(m_animationMs);
    animation->setStartValue(from);
    animation->setEndValue(to);
    animation->setEasingCurve(QEasingCurve::InQuad);
    connect(animation, &QVariantAnimation::valueChanged, frame,
        [frame](const QVariant& value) { frame->setGeometry(value.toRect()); });
    connect(animation, &QVariantAnimation::finished, frame, &QWidget::close);
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

} // namespace vindaro::chrome
