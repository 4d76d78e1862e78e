#include "MediaArtwork.h"

#include "media/MediaLayout.h"

#include <QPainter>
#include <QPainterPath>

namespace vindaro::media {

namespace {

const QColor kActiveColour(0, 92, 128);
const QColor kGreyColour(160, 160, 160);

QPixmap blank(QSize size)
{
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

} // namespace

QPixmap playIcon(bool active, QSize size)
{
    QPixmap pixmap = blank(size);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal side = qMin(size.width(), size.height()) * 0.6;
    const QPointF centre(size.width() / 2.0, size.height() / 2.0);
    QPainterPath triangle;
    triangle.moveTo(centre + QPointF(-side / 2.5, -side / 2));
    triangle.lineTo(centre + QPointF(side / 1.8, 0));
    triangle.lineTo(centre + QPointF(-side / 2.5, side / 2));
    triangle.closeSubpath();
    painter.fillPath(triangle, active ? kActiveColour : kGreyColour);
    return pixmap;
}

QPixmap stopIcon(bool active, QSize size)
{
    QPixmap pixmap = blank(size);
    QPainter painter(&pixmap);
    const int side = qMin(size.width(), size.height()) / 2;
    painter.fillRect(QRect((size.width() - side) / 2, (size.height() - side) / 2, side, side),
        active ? kActiveColour : kGreyColour);
    return pixmap;
}

QList<QPixmap> animationFrames()
{
    QList<QPixmap> frames;
    for (int frame = 0; frame < kAnimationFrames; ++frame) {
        QPixmap pixmap = blank(QSize(32, 32));
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(QColor(80, 80, 80), 1));
        painter.setBrush(QColor(200, 215, 235));
        painter.drawEllipse(QRectF(2, 2, 28, 28));
        // The bright sector goes a quarter turn further each frame.
        painter.setPen(Qt::NoPen);
        painter.setBrush(kActiveColour);
        painter.drawPie(QRectF(2, 2, 28, 28), (90 - frame * 90) * 16, 60 * 16);
        painter.setBrush(Qt::white);
        painter.setPen(QPen(QColor(80, 80, 80), 1));
        painter.drawEllipse(QRectF(12, 12, 8, 8));
        frames << pixmap;
    }
    return frames;
}

} // namespace vindaro::media
