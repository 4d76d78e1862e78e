#include "CopyAnimation.h"

#include <QPainter>
#include <QPainterPath>
#include <QVariantAnimation>

#include <algorithm>
#include <cmath>

namespace vindaro::copy {

namespace {

// Design units. The sheet's centre flies from (46, 36) to (226, 36) and rises 30 units at mid-flight;
// at both ends it sits inside a folder, behind the folder's front flap.
constexpr qreal kLeftFolderX = 14;
constexpr qreal kRightFolderX = 194;
constexpr qreal kFolderWidth = 64;
constexpr qreal kFolderTop = 18;
constexpr qreal kFolderBottom = 52;
constexpr qreal kFlapTop = 25;
constexpr qreal kSheetWidth = 16;
constexpr qreal kSheetHeight = 20;
constexpr qreal kFlightStartX = kLeftFolderX + kFolderWidth / 2;
constexpr qreal kFlightEndX = kRightFolderX + kFolderWidth / 2;
constexpr qreal kFlightBaseY = 37;
constexpr qreal kFlightRise = 30;
constexpr qreal kPi = 3.14159265358979323846;

const QColor kFolderBack(0xD9, 0xA4, 0x2E);
const QColor kFolderFront(0xF4, 0xC9, 0x5D);
const QColor kFolderEdge(0x9A, 0x6E, 0x12);
const QColor kSheetEdge(0x6F, 0x6F, 0x6F);
const QColor kSheetLines(0x8F, 0xA3, 0xC8);

QPointF sheetCentre(qreal phase)
{
    return {kFlightStartX + (kFlightEndX - kFlightStartX) * phase,
        kFlightBaseY - kFlightRise * std::sin(kPi * phase)};
}

void drawFolderBack(QPainter& p, qreal x)
{
    QPainterPath back;
    back.moveTo(x, kFolderBottom);
    back.lineTo(x, kFolderTop - 5);
    back.lineTo(x + 22, kFolderTop - 5);
    back.lineTo(x + 26, kFolderTop);
    back.lineTo(x + kFolderWidth, kFolderTop);
    back.lineTo(x + kFolderWidth, kFolderBottom);
    back.closeSubpath();
    p.setBrush(kFolderBack);
    p.drawPath(back);
}

void drawFolderFront(QPainter& p, qreal x)
{
    // The open flap leans forward: its top edge is wider than the folder.
    QPainterPath front;
    front.moveTo(x, kFolderBottom);
    front.lineTo(x - 4, kFlapTop);
    front.lineTo(x + kFolderWidth + 4, kFlapTop);
    front.lineTo(x + kFolderWidth, kFolderBottom);
    front.closeSubpath();
    p.setBrush(kFolderFront);
    p.drawPath(front);
}

void drawSheet(QPainter& p, qreal phase)
{
    const QPointF centre = sheetCentre(phase);
    p.save();
    p.translate(centre);
    p.rotate(-20 + 40 * phase); // it turns over a little on the way
    const QRectF sheet(-kSheetWidth / 2, -kSheetHeight / 2, kSheetWidth, kSheetHeight);
    constexpr qreal fold = 5;
    QPainterPath outline;
    outline.moveTo(sheet.topLeft());
    outline.lineTo(sheet.right() - fold, sheet.top());
    outline.lineTo(sheet.right(), sheet.top() + fold);
    outline.lineTo(sheet.bottomRight());
    outline.lineTo(sheet.bottomLeft());
    outline.closeSubpath();
    p.setPen(QPen(kSheetEdge, 0.8));
    p.setBrush(Qt::white);
    p.drawPath(outline);
    p.drawLine(QPointF(sheet.right() - fold, sheet.top()), QPointF(sheet.right() - fold, sheet.top() + fold));
    p.drawLine(QPointF(sheet.right() - fold, sheet.top() + fold), QPointF(sheet.right(), sheet.top() + fold));
    p.setPen(QPen(kSheetLines, 1.0));
    for (int line = 0; line < 4; ++line) {
        const qreal y = sheet.top() + 8 + line * 3;
        p.drawLine(QPointF(sheet.left() + 3, y), QPointF(sheet.right() - 3, y));
    }
    p.restore();
}

} // namespace

CopyAnimation::CopyAnimation(QWidget* parent)
    : QWidget(parent)
    , m_animation(new QVariantAnimation(this))
{
    m_animation->setStartValue(0.0);
    m_animation->setEndValue(1.0);
    m_animation->setDuration(kFlightMilliseconds);
    m_animation->setLoopCount(-1);
    m_animation->setEasingCurve(QEasingCurve::InOutSine); // slow out of a folder and into the next
    connect(m_animation, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        m_phase = value.toReal();
        update();
    });
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void CopyAnimation::start()
{
    if (isRunning())
        return;
    m_phase = 0;
    m_animation->start();
    update();
}

void CopyAnimation::stop()
{
    m_animation->stop();
    m_phase = 0;
    update();
}

bool CopyAnimation::isRunning() const
{
    return m_animation->state() == QAbstractAnimation::Running;
}

void CopyAnimation::setPhase(qreal phase)
{
    m_phase = std::clamp<qreal>(phase, 0, 1);
    update();
}

qreal CopyAnimation::scale() const
{
    return std::min(qreal(width()) / kDesignWidth, qreal(height()) / kDesignHeight);
}

QPointF CopyAnimation::origin() const
{
    const qreal s = scale();
    return {(width() - kDesignWidth * s) / 2, (height() - kDesignHeight * s) / 2};
}

QRectF CopyAnimation::sheetRect(qreal phase) const
{
    const QPointF centre = sheetCentre(std::clamp<qreal>(phase, 0, 1));
    const qreal s = scale();
    const QPointF topLeft = origin() + (centre - QPointF(kSheetWidth / 2, kSheetHeight / 2)) * s;
    return {topLeft, QSizeF(kSheetWidth * s, kSheetHeight * s)};
}

void CopyAnimation::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.fillRect(rect(), palette().color(QPalette::Window));
    p.translate(origin());
    p.scale(scale(), scale());
    p.setPen(QPen(kFolderEdge, 1.0));
    drawFolderBack(p, kLeftFolderX);
    drawFolderBack(p, kRightFolderX);
    if (isRunning())
        drawSheet(p, m_phase);
    p.setPen(QPen(kFolderEdge, 1.0));
    drawFolderFront(p, kLeftFolderX);
    drawFolderFront(p, kRightFolderX);
}

} // namespace vindaro::copy
