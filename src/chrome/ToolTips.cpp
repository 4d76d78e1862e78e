#include "ToolTips.h"

#include <QEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>

#include <algorithm>

namespace vindaro::chrome {

namespace {

constexpr int kPadding = 8;
constexpr int kPointerHeight = 9;
constexpr int kPointerInset = 14; // from the balloon's left edge to the pointer's tip
constexpr int kTitleGap = 4;
constexpr qreal kRadius = 5.0;
const QColor kFill(255, 255, 225);
const QColor kBorder(96, 96, 96);

QFont titleFont(const QFont& base)
{
    QFont bold = base;
    bold.setBold(true);
    return bold;
}

} // namespace

BalloonTip::BalloonTip(QWidget* owner)
    : QWidget(owner, Qt::ToolTip | Qt::FramelessWindowHint)
{
    setObjectName(QStringLiteral("balloonTip"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_DeleteOnClose, false);
    m_hideTimer.setSingleShot(true);
    m_hideTimer.setInterval(kShowMs);
    connect(&m_hideTimer, &QTimer::timeout, this, &QWidget::hide);
}

void BalloonTip::setContent(const QString& title, const QString& text)
{
    m_title = title;
    m_lines = text.isEmpty() ? QStringList() : toolTipLines(text);
    resize(sizeHint());
    update();
}

QSize BalloonTip::sizeHint() const
{
    const QFontMetrics textMetrics(font());
    const QFontMetrics titleMetrics(titleFont(font()));
    int width = 0;
    int height = 0;
    if (!m_title.isEmpty()) {
        width = titleMetrics.horizontalAdvance(m_title);
        height = titleMetrics.height() + (m_lines.isEmpty() ? 0 : kTitleGap);
    }
    for (const QString& line : m_lines)
        width = std::max(width, textMetrics.horizontalAdvance(line));
    height += static_cast<int>(m_lines.size()) * textMetrics.lineSpacing();
    return {std::max(width + 2 * kPadding, 2 * kPointerInset + 8), height + 2 * kPadding + kPointerHeight};
}

QRect BalloonTip::bodyRect() const
{
    return m_pointsUp ? rect().adjusted(0, kPointerHeight, 0, 0) : rect().adjusted(0, 0, 0, -kPointerHeight);
}

QPainterPath BalloonTip::outline() const
{
    const QRectF body = QRectF(bodyRect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath box;
    box.addRoundedRect(body, kRadius, kRadius);
    QPainterPath pointer;
    const qreal x = kPointerInset;
    if (m_pointsUp) {
        pointer.moveTo(x, 0.5);
        pointer.lineTo(x, body.top() + 1);
        pointer.lineTo(x + 14, body.top() + 1);
    } else {
        pointer.moveTo(x, height() - 0.5);
        pointer.lineTo(x, body.bottom() - 1);
        pointer.lineTo(x + 14, body.bottom() - 1);
    }
    pointer.closeSubpath();
    return box.united(pointer);
}

void BalloonTip::showAt(const QPoint& target)
{
    resize(sizeHint());
    QScreen* screen = QGuiApplication::screenAt(target);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    const QRect area = screen ? screen->availableGeometry() : QRect(target, size());
    // Below the mouse pointer's hot spot, clear of the pointer itself, when there is room.
    const QPoint below = target + QPoint(0, 16);
    m_pointsUp = below.y() + height() <= area.bottom();
    int left = target.x() - kPointerInset;
    left = std::clamp(left, area.left(), std::max(area.left(), area.right() - width()));
    const int top = m_pointsUp ? below.y() : target.y() - 4 - height();
    move(left, top);
    resizeEvent(nullptr); // the mask follows the pointer's side
    update();
    show();
    raise();
    m_hideTimer.start();
}

void BalloonTip::resizeEvent(QResizeEvent*)
{
    // A shaped window rather than a translucent one: it looks the same with or without a compositor.
    setMask(QRegion(outline().toFillPolygon().toPolygon()));
}

void BalloonTip::mousePressEvent(QMouseEvent*)
{
    hide();
}

void BalloonTip::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.fillRect(rect(), kFill);
    painter.setPen(QPen(kBorder, 1.0));
    painter.setBrush(kFill);
    painter.drawPath(outline());

    const QRect text = bodyRect().adjusted(kPadding, kPadding, -kPadding, -kPadding);
    int y = text.top();
    painter.setPen(Qt::black);
    if (!m_title.isEmpty()) {
        const QFont bold = titleFont(font());
        const QFontMetrics metrics(bold);
        painter.setFont(bold);
        painter.drawText(
            QRect(text.left(), y, text.width(), metrics.height()), Qt::AlignLeft | Qt::AlignVCenter, m_title);
        y += metrics.height() + kTitleGap;
        painter.setFont(font());
    }
    const QFontMetrics metrics(font());
    for (const QString& line : m_lines) {
        painter.drawText(QRect(text.left(), y, text.width(), metrics.lineSpacing()),
            Qt::AlignLeft | Qt::AlignVCenter, line);
        y += metrics.lineSpacing();
    }
}

// --- ToolTips ---

ToolTips::ToolTips(QObject* parent)
    : QObject(parent)
{
}

void ToolTips::OwnerhWnd(QWidget* owner)
{
    if (m_owner)
        m_owner->removeEventFilter(this);
    m_owner = owner;
}

void ToolTips::ToolTipsTitle(const QString& title)
{
    m_title = title;
    if (m_balloon)
        m_balloon->setContent(m_title, m_text);
}

void ToolTips::ToolTipsText(const QString& text)
{
    m_text = text;
    if (m_balloon)
        m_balloon->setContent(m_title, m_text);
}

bool ToolTips::CreateToolTipsWindow()
{
    if (!m_owner)
        return false;
    if (!m_balloon) {
        m_balloon = new BalloonTip(m_owner);
        m_owner->installEventFilter(this);
    }
    m_balloon->setContent(m_title, m_text);
    return true;
}

ToolTips* ToolTips::of(const QWidget* control)
{
    return control ? control->findChild<ToolTips*>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
}

bool ToolTips::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_owner || !m_balloon)
        return false;
    switch (event->type()) {
    case QEvent::ToolTip: {
        const auto* help = static_cast<QHelpEvent*>(event);
        m_balloon->showAt(help->globalPos());
        return true;
    }
    case QEvent::Leave:
    case QEvent::MouseButtonPress:
    case QEvent::Hide:
    case QEvent::WindowDeactivate:
        m_balloon->hide();
        break;
    default:
        break;
    }
    return false;
}

QStringList attachToolTips(QWidget* window, const QList<ToolTipEntry>& table)
{
    QStringList missing;
    for (const ToolTipEntry& entry : table) {
        QWidget* control = window ? window->findChild<QWidget*>(entry.control) : nullptr;
        if (!control) {
            missing.append(entry.control);
            continue;
        }
        ToolTips* tips = ToolTips::of(control);
        if (!tips)
            tips = new ToolTips(control);
        tips->OwnerhWnd(control);
        tips->ToolTipsTitle(entry.title);
        tips->ToolTipsText(entry.text());
        tips->CreateToolTipsWindow();
    }
    return missing;
}

} // namespace vindaro::chrome
