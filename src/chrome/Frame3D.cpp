#include "Frame3D.h"

#include <QAbstractButton>
#include <QEvent>
#include <QMouseEvent>
#include <QPainter>

namespace vindaro::chrome {

void Draw3DFrame(
    QPainter& painter, const QRect& control, FrameStyle style, const QColor& light, const QColor& dark)
{
    const QRect r = control.adjusted(-1, -1, 1, 1); // the frame's own rectangle, one pixel outside
    const QColor topLeft = style == FrameStyle::Raised ? light : dark;
    const QColor bottomRight = style == FrameStyle::Raised ? dark : light;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(topLeft);
    painter.drawLine(r.left(), r.top(), r.right(), r.top());
    painter.drawLine(r.left(), r.top(), r.left(), r.bottom());
    painter.setPen(bottomRight);
    painter.drawLine(r.left() + 1, r.bottom(), r.right(), r.bottom());
    painter.drawLine(r.right(), r.top() + 1, r.right(), r.bottom());
    painter.restore();
}

Frame3D::Frame3D(QWidget* control, FrameStyle style)
    : QWidget(control ? control->parentWidget() : nullptr)
    , m_control(control)
    , m_style(style)
{
    setObjectName(control ? control->objectName() + QStringLiteral("Frame") : QString());
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::NoFocus);
    if (control) {
        control->installEventFilter(this);
        connect(control, &QObject::destroyed, this, &QObject::deleteLater);
        follow();
    }
}

void Frame3D::setFrameStyle(FrameStyle style)
{
    if (m_style == style)
        return;
    m_style = style;
    update();
}

void Frame3D::setColours(const QColor& light, const QColor& dark)
{
    m_light = light;
    m_dark = dark;
    update();
}

void Frame3D::follow()
{
    if (!m_control)
        return;
    if (parentWidget() != m_control->parentWidget())
        setParent(m_control->parentWidget()); // the control went into a layout after the frame was made
    if (!parentWidget())
        return; // never a window of its own
    setGeometry(m_control->geometry().adjusted(-1, -1, 1, 1));
    setVisible(!m_control->isHidden());
    stackUnder(m_control);
}

void Frame3D::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    Draw3DFrame(painter, rect().adjusted(1, 1, -1, -1), m_style, m_light, m_dark);
}

bool Frame3D::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_control) {
        switch (event->type()) {
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::Show:
        case QEvent::Hide:
        case QEvent::ZOrderChange:
        case QEvent::ParentChange:
            follow();
            break;
        default:
            break;
        }
    }
    return QWidget::eventFilter(watched, event);
}

OptionButtonChrome::OptionButtonChrome(QAbstractButton* button)
    : QObject(button)
    , m_frame(new Frame3D(button, FrameStyle::Raised))
{
    button->installEventFilter(this);
}

bool OptionButtonChrome::eventFilter(QObject* watched, QEvent* event)
{
    auto* button = qobject_cast<QAbstractButton*>(watched);
    if (!button)
        return false;
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton) {
            m_frame->setFrameStyle(FrameStyle::Sunken);
        } else if (mouse->button() == Qt::RightButton && button->isEnabled()) {
            emit cdMenuRequested(mouse->globalPosition().toPoint());
            return true;
        }
    } else if (event->type() == QEvent::MouseButtonRelease) {
        if (static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
            m_frame->setFrameStyle(FrameStyle::Raised);
    }
    return false;
}

} // namespace vindaro::chrome
