#include "PictureButton.h"

#include "chrome/Artwork.h"
#include "chrome/Frame3D.h"

#include <QEnterEvent>
#include <QMouseEvent>
#include <QPainter>

namespace vindaro::chrome {

PictureButton::PictureButton(ArtworkId artwork, const QString& objectName, QWidget* parent)
    : QAbstractButton(parent)
    , m_artwork(artwork)
{
    setObjectName(objectName);
    setMouseTracking(true);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setIconSize(QSize(kPictureSize, kPictureSize));
    connect(this, &QAbstractButton::pressed, this, qOverload<>(&QWidget::update));
    connect(this, &QAbstractButton::released, this, qOverload<>(&QWidget::update));
}

PictureButton::Look PictureButton::look() const
{
    if (!isEnabled())
        return Look::Disabled;
    if (isDown())
        return Look::Pressed;
    if (m_hover)
        return Look::Hover;
    return Look::Normal;
}

QSize PictureButton::sizeHint() const
{
    return {kButtonSize, kButtonSize};
}

QSize PictureButton::minimumSizeHint() const
{
    return sizeHint();
}

void PictureButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const Look current = look();
    const QRect face = rect().adjusted(1, 1, -1, -1); // leaves room for the frame
    ArtworkLook art = ArtworkLook::Normal;
    switch (current) {
    case Look::Hover:
        painter.fillRect(face, QColor(255, 255, 255, 110));
        Draw3DFrame(
            painter, face.adjusted(1, 1, -1, -1), FrameStyle::Raised, Qt::white, QColor(128, 128, 128));
        art = ArtworkLook::Hover;
        break;
    case Look::Pressed:
        painter.fillRect(face, QColor(0, 40, 90, 28));
        Draw3DFrame(
            painter, face.adjusted(1, 1, -1, -1), FrameStyle::Sunken, Qt::white, QColor(128, 128, 128));
        art = ArtworkLook::Pressed;
        break;
    case Look::Disabled:
        art = ArtworkLook::Disabled;
        break;
    case Look::Normal:
        break;
    }
    QRect picture(0, 0, kPictureSize, kPictureSize);
    picture.moveCenter(rect().center());
    painter.drawPixmap(picture.topLeft(), artworkPixmap(m_artwork, picture.size(), devicePixelRatioF(), art));
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1, Qt::DotLine));
        painter.drawRect(rect().adjusted(3, 3, -4, -4));
    }
}

void PictureButton::setHover(bool hover)
{
    if (m_hover == hover)
        return;
    m_hover = hover;
    update();
}

void PictureButton::enterEvent(QEnterEvent* event)
{
    setHover(true);
    QAbstractButton::enterEvent(event);
}

void PictureButton::leaveEvent(QEvent* event)
{
    setHover(false);
    QAbstractButton::leaveEvent(event);
}

void PictureButton::mouseMoveEvent(QMouseEvent* event)
{
    setHover(rect().contains(event->position().toPoint()));
    QAbstractButton::mouseMoveEvent(event);
}

void PictureButton::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::EnabledChange) {
        if (!isEnabled())
            m_hover = false;
        update();
    }
    QAbstractButton::changeEvent(event);
}

} // namespace vindaro::chrome
