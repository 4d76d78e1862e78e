#include "Artwork.h"

#include <QIconEngine>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QtMath>

namespace vindaro::chrome {

namespace {

const QColor kBlue(49, 106, 197);
const QColor kDeepBlue(0, 92, 128);
const QColor kPaleBlue(216, 228, 248);
const QColor kInk(60, 64, 72);
const QColor kPaper(252, 252, 250);
const QColor kGreen(46, 150, 70);
const QColor kRed(200, 48, 40);
const QColor kFolder(236, 184, 60);

QPen pen(const QColor& colour, qreal width = 1.0)
{
    return QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

// A sheet of paper with a folded corner, lines optional.
void paintPage(QPainter& p, const QRectF& r, bool lines)
{
    QPainterPath page;
    const qreal fold = 3.5;
    page.moveTo(r.left(), r.top());
    page.lineTo(r.right() - fold, r.top());
    page.lineTo(r.right(), r.top() + fold);
    page.lineTo(r.right(), r.bottom());
    page.lineTo(r.left(), r.bottom());
    page.closeSubpath();
    p.setPen(pen(kInk, 0.9));
    p.setBrush(kPaper);
    p.drawPath(page);
    p.setBrush(QColor(220, 222, 226));
    QPainterPath corner;
    corner.moveTo(r.right() - fold, r.top());
    corner.lineTo(r.right() - fold, r.top() + fold);
    corner.lineTo(r.right(), r.top() + fold);
    p.drawPath(corner);
    if (lines) {
        p.setPen(pen(QColor(150, 160, 175), 0.8));
        for (qreal y = r.top() + fold + 2; y < r.bottom() - 1.5; y += 2.2)
            p.drawLine(QPointF(r.left() + 2, y), QPointF(r.right() - 2, y));
    }
}

void paintDisc(QPainter& p, const QPointF& centre, qreal radius)
{
    QRadialGradient shine(centre - QPointF(radius / 3, radius / 3), radius * 1.6);
    shine.setColorAt(0.0, QColor(250, 252, 255));
    shine.setColorAt(0.45, QColor(200, 214, 236));
    shine.setColorAt(0.7, QColor(236, 226, 246));
    shine.setColorAt(1.0, QColor(150, 170, 200));
    p.setPen(pen(QColor(90, 104, 128), 0.8));
    p.setBrush(shine);
    p.drawEllipse(centre, radius, radius);
    p.setBrush(QColor(255, 255, 255));
    p.drawEllipse(centre, radius * 0.28, radius * 0.28);
    p.setPen(pen(QColor(255, 255, 255, 170), 0.7));
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(centre.x() - radius * 0.65, centre.y() - radius * 0.65, radius * 1.3, radius * 1.3),
        100 * 16, 70 * 16);
}

void paintArrow(QPainter& p, const QPointF& from, const QPointF& to, const QColor& colour, qreal width)
{
    p.setPen(pen(colour, width));
    p.drawLine(from, to);
    const qreal angle = qAtan2(to.y() - from.y(), to.x() - from.x());
    const qreal head = width * 2.2;
    QPolygonF tip;
    tip << to + QPointF(qCos(angle) * head * 0.6, qSin(angle) * head * 0.6)
        << to + QPointF(qCos(angle + 2.3) * head, qSin(angle + 2.3) * head)
        << to + QPointF(qCos(angle - 2.3) * head, qSin(angle - 2.3) * head);
    p.setPen(pen(colour, 0.6));
    p.setBrush(colour);
    p.drawPolygon(tip);
}

void paintEjectSymbol(QPainter& p, const QRectF& r, const QColor& colour, bool pointsUp)
{
    QPolygonF triangle;
    const qreal mid = r.center().x();
    if (pointsUp)
        triangle << QPointF(mid, r.top()) << QPointF(r.right(), r.top() + r.height() * 0.6)
                 << QPointF(r.left(), r.top() + r.height() * 0.6);
    else
        triangle << QPointF(mid, r.top() + r.height() * 0.6) << QPointF(r.right(), r.top())
                 << QPointF(r.left(), r.top());
    p.setPen(pen(colour.darker(130), 0.7));
    p.setBrush(colour);
    p.drawPolygon(triangle);
    p.drawRoundedRect(
        QRectF(r.left(), r.bottom() - r.height() * 0.22, r.width(), r.height() * 0.22), 0.6, 0.6);
}

void paintIn16(QPainter& p, ArtworkId id)
{
    switch (id) {
    case ArtworkId::AppIcon:
    case ArtworkId::FileMenuButton:
        paintDisc(p, QPointF(7.5, 7.5), 6.8);
        paintArrow(p, QPointF(9.5, 13.2), QPointF(14.6, 13.2), kGreen, 1.6);
        break;
    case ArtworkId::MinimizeButton:
        p.setPen(pen(Qt::white, 1.8));
        p.drawLine(QPointF(4, 12), QPointF(12, 12));
        break;
    case ArtworkId::TrayButton:
        p.setPen(pen(Qt::white, 1.4));
        p.setBrush(Qt::NoBrush);
        p.drawPolyline(QPolygonF({QPointF(3, 9), QPointF(3, 13.5), QPointF(13, 13.5), QPointF(13, 9)}));
        paintArrow(p, QPointF(4.5, 3), QPointF(9.5, 9), Qt::white, 1.5);
        break;
    case ArtworkId::CloseButton:
        p.setPen(pen(Qt::white, 1.9));
        p.drawLine(QPointF(4.5, 4.5), QPointF(11.5, 11.5));
        p.drawLine(QPointF(11.5, 4.5), QPointF(4.5, 11.5));
        break;
    case ArtworkId::Refresh: {
        p.setBrush(Qt::NoBrush);
        p.setPen(pen(kGreen, 1.8));
        const QRectF ring(2.8, 2.8, 10.4, 10.4);
        p.drawArc(ring, 20 * 16, 150 * 16);
        p.setPen(pen(kBlue, 1.8));
        p.drawArc(ring, 200 * 16, 150 * 16);
        p.setPen(pen(kGreen, 0.5));
        p.setBrush(kGreen);
        p.drawPolygon(QPolygonF({QPointF(14.9, 4.6), QPointF(14.4, 9.6), QPointF(10.2, 6.9)}));
        p.setPen(pen(kBlue, 0.5));
        p.setBrush(kBlue);
        p.drawPolygon(QPolygonF({QPointF(1.1, 11.4), QPointF(1.6, 6.4), QPointF(5.8, 9.1)}));
        break;
    }
    case ArtworkId::Search: {
        p.setPen(pen(kInk, 2.4));
        p.drawLine(QPointF(10.2, 10.2), QPointF(14.2, 14.2));
        QRadialGradient glass(QPointF(5.5, 5.5), 6);
        glass.setColorAt(0, Qt::white);
        glass.setColorAt(1, kPaleBlue.darker(108));
        p.setPen(pen(kBlue, 1.5));
        p.setBrush(glass);
        p.drawEllipse(QPointF(6.8, 6.8), 4.6, 4.6);
        break;
    }
    case ArtworkId::SetUp: {
        p.setPen(pen(kInk, 1.2));
        for (const qreal y : {4.0, 8.0, 12.0})
            p.drawLine(QPointF(2, y), QPointF(14, y));
        p.setPen(pen(kDeepBlue, 0.9));
        p.setBrush(kBlue);
        p.drawRoundedRect(QRectF(8.5, 2.2, 3, 3.6), 0.8, 0.8);
        p.setBrush(kGreen);
        p.drawRoundedRect(QRectF(3.5, 6.2, 3, 3.6), 0.8, 0.8);
        p.setBrush(kFolder);
        p.drawRoundedRect(QRectF(10.0, 10.2, 3, 3.6), 0.8, 0.8);
        break;
    }
    case ArtworkId::Watch: {
        paintPage(p, QRectF(1.5, 1, 10, 13.5), true);
        QPainterPath eye;
        eye.moveTo(6.5, 11.5);
        eye.quadTo(10.75, 6.5, 15, 11.5);
        eye.quadTo(10.75, 16.5, 6.5, 11.5);
        p.setPen(pen(kDeepBlue, 0.9));
        p.setBrush(Qt::white);
        p.drawPath(eye);
        p.setBrush(kBlue);
        p.drawEllipse(QPointF(10.75, 11.5), 1.8, 1.8);
        break;
    }
    case ArtworkId::OpenFile: {
        p.setPen(pen(QColor(160, 110, 20), 0.9));
        p.setBrush(kFolder.darker(110));
        p.drawPath([] {
            QPainterPath back;
            back.moveTo(1.5, 13.5);
            back.lineTo(1.5, 3);
            back.lineTo(5.5, 3);
            back.lineTo(7, 4.5);
            back.lineTo(12.5, 4.5);
            back.lineTo(12.5, 13.5);
            back.closeSubpath();
            return back;
        }());
        p.setBrush(kFolder);
        p.drawPolygon(QPolygonF({QPointF(1.5, 13.5), QPointF(4, 7), QPointF(15, 7), QPointF(12.5, 13.5)}));
        break;
    }
    case ArtworkId::AddToList:
        p.setPen(pen(kInk, 1.3));
        for (const qreal y : {3.0, 6.5, 10.0})
            p.drawLine(QPointF(1.5, y), QPointF(10, y));
        p.setPen(pen(kGreen, 2.0));
        p.drawLine(QPointF(12, 9), QPointF(12, 15));
        p.drawLine(QPointF(9, 12), QPointF(15, 12));
        break;
    case ArtworkId::DeleteFile:
        paintPage(p, QRectF(1.5, 1, 10, 13.5), true);
        p.setPen(pen(kRed, 2.0));
        p.drawLine(QPointF(9, 9), QPointF(14, 14));
        p.drawLine(QPointF(14, 9), QPointF(9, 14));
        break;
    case ArtworkId::CopyTo:
        paintPage(p, QRectF(1, 1, 8.5, 11), true);
        paintPage(p, QRectF(6, 4.5, 8.5, 11), true);
        break;
    case ArtworkId::MoveTo:
        paintPage(p, QRectF(1.5, 1, 9, 12.5), true);
        paintArrow(p, QPointF(6, 11.5), QPointF(13.5, 11.5), kBlue, 1.8);
        break;
    case ArtworkId::Properties:
        paintPage(p, QRectF(1.5, 1, 10.5, 13.5), false);
        p.setPen(pen(kBlue, 1.1));
        for (const qreal y : {6.0, 8.5, 11.0}) {
            p.drawPoint(QPointF(4, y));
            p.drawLine(QPointF(5.8, y), QPointF(9.8, y));
        }
        break;
    case ArtworkId::About:
        p.setPen(pen(kDeepBlue, 0.9));
        p.setBrush(kBlue);
        p.drawEllipse(QPointF(8, 8), 6.6, 6.6);
        p.setPen(pen(Qt::white, 2.0));
        p.drawLine(QPointF(8, 7.4), QPointF(8, 11.6));
        p.drawPoint(QPointF(8, 4.6));
        break;
    case ArtworkId::CloseAllCd:
        paintDisc(p, QPointF(6.5, 6.5), 5.6);
        paintEjectSymbol(p, QRectF(9, 8.5, 6.5, 6.5), kGreen, false);
        break;
    case ArtworkId::EjectCd:
        paintDisc(p, QPointF(6.5, 6.5), 5.6);
        paintEjectSymbol(p, QRectF(9, 8.5, 6.5, 6.5), kBlue, true);
        break;
    }
}

void toGrey(QImage& image)
{
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const QRgb px = line[x];
            const int grey = qGray(px) / 2 + 96;
            line[x] = qRgba(grey, grey, grey, qAlpha(px) * 5 / 8);
        }
    }
}

// Hover and pressed recolour the drawn pixels only, so the transparent surround stays transparent.
void tint(QImage& image, const QColor& colour, int alpha)
{
    QPainter p(&image);
    p.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    QColor overlay = colour;
    overlay.setAlpha(alpha);
    p.fillRect(image.rect(), overlay);
}

class ArtworkIconEngine final : public QIconEngine
{
public:
    explicit ArtworkIconEngine(ArtworkId id)
        : m_id(id)
    {
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal dpr = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
        const QPixmap pm = artworkPixmap(m_id, rect.size(), dpr, lookFor(mode));
        Q_UNUSED(state);
        painter->drawPixmap(rect, pm);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        Q_UNUSED(state);
        return artworkPixmap(m_id, size, 1.0, lookFor(mode));
    }

    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override { return size; }
    QIconEngine* clone() const override { return new ArtworkIconEngine(m_id); }
    QString key() const override { return QStringLiteral("vindaro-artwork"); }

private:
    static ArtworkLook lookFor(QIcon::Mode mode)
    {
        switch (mode) {
        case QIcon::Disabled:
            return ArtworkLook::Disabled;
        case QIcon::Active:
            return ArtworkLook::Hover;
        case QIcon::Normal:
        case QIcon::Selected:
            break;
        }
        return ArtworkLook::Normal;
    }

    ArtworkId m_id;
};

} // namespace

void paintArtwork(QPainter& painter, ArtworkId id, const QRectF& box)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.translate(box.topLeft());
    painter.scale(box.width() / 16.0, box.height() / 16.0);
    paintIn16(painter, id);
    painter.restore();
}

QPixmap artworkPixmap(ArtworkId id, QSize logicalSize, qreal devicePixelRatio, ArtworkLook look)
{
    if (logicalSize.isEmpty())
        return QPixmap();
    const qreal dpr = devicePixelRatio > 0 ? devicePixelRatio : 1.0;
    const QSize pixels(qCeil(logicalSize.width() * dpr), qCeil(logicalSize.height() * dpr));
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter p(&image);
        const qreal shift = look == ArtworkLook::Pressed ? pixels.width() / 32.0 : 0.0;
        paintArtwork(p, id, QRectF(shift, shift, pixels.width(), pixels.height()));
    }
    switch (look) {
    case ArtworkLook::Normal:
        break;
    case ArtworkLook::Hover:
        tint(image, Qt::white, 60);
        break;
    case ArtworkLook::Pressed:
        tint(image, QColor(0, 30, 70), 50);
        break;
    case ArtworkLook::Disabled:
        image = image.convertToFormat(QImage::Format_ARGB32);
        toGrey(image);
        image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        break;
    }
    QPixmap pixmap = QPixmap::fromImage(image);
    pixmap.setDevicePixelRatio(dpr);
    return pixmap;
}

QIcon artworkIcon(ArtworkId id)
{
    return QIcon(new ArtworkIconEngine(id));
}

} // namespace vindaro::chrome
