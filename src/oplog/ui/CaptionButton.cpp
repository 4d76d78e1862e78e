#include "CaptionButton.h"

#include "chrome/Frame3D.h"

#include <QMouseEvent>
#include <QPainter>

namespace vindaro::oplog::ui {

CaptionButton::CaptionButton(const QString& caption, const QString& objectName, QWidget* parent)
    : QAbstractButton(parent)
{
    setObjectName(objectName);
    setText(caption);
    setMouseTracking(true);
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_Hover);
}

CaptionButton::Look CaptionButton::look() const
{
    if (isDown())
        return Look::Sunken;
    return m_hover && isEnabled() ? Look::Raised : Look::Flat;
}

QSize CaptionButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    return QSize(metrics.horizontalAdvance(text()) + 24, metrics.height() + 10);
}

void CaptionButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect inside = rect().adjusted(1, 1, -1, -1);
    const Look now = look();
    if (now != Look::Flat)
        chrome::Draw3DFrame(
            painter, inside, now == Look::Raised ? chrome::FrameStyle::Raised : chrome::FrameStyle::Sunken);
    painter.setPen(
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText));
    // A pressed caption moves one pixel down and right, as on a pushed key.
    const QRect textRect = now == Look::Sunken ? inside.translated(1, 1) : inside;
    painter.drawText(textRect, Qt::AlignCenter, text());
}

void CaptionButton::setHover(bool hover)
{
    if (m_hover == hover)
        return;
    m_hover = hover;
    update();
}

void CaptionButton::enterEvent(QEnterEvent* event)
{
    setHover(true);
    QAbstractButton::enterEvent(event);
}

void CaptionButton::leaveEvent(QEvent* event)
{
    setHover(false);
    QAbstractButton::leaveEvent(event);
}

void CaptionButton::mouseMoveEvent(QMouseEvent* event)
{
    setHover(rect().contains(event->position().toPoint()));
    QAbstractButton::mouseMoveEvent(event);
}

} // namespace vindaro::oplog::ui
