#include "MediaWindowParts.h"

#include "MediaArtwork.h"
#include "media/MediaSession.h"

#include <QFontDatabase>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>

namespace vindaro::media {

QFont mediaWindowFont(const QFont& base)
{
    QFont font = base;
    if (QFontDatabase::hasFamily(QStringLiteral("宋体"))) {
        font.setFamily(QStringLiteral("宋体"));
        font.setPointSize(9);
    } else {
        font.setFamily(QStringLiteral("MS Sans Serif"));
        font.setPointSize(8);
    }
    return font;
}

QTimer* makeTickTimer(QWidget* window, MediaSession& session)
{
    auto* timer = new QTimer(window);
    timer->setObjectName(QStringLiteral("tmrTime"));
    timer->setInterval(100);
    QObject::connect(&session, &MediaSession::timerEnabledChanged, timer, [timer](bool enabled) {
        if (enabled)
            timer->start();
        else
            timer->stop();
    });
    return timer;
}

ControlButton::ControlButton(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("picMediaControlButton"));
}

void ControlButton::setLook(ControlLook look)
{
    m_look = look;
    update();
}

void ControlButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QSize half(width() / 2, height());
    painter.drawPixmap(0, 0, playIcon(m_look.playActive, half));
    painter.drawPixmap(half.width(), 0, stopIcon(m_look.stopActive, half));
}

void ControlButton::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && onPress)
        onPress(controlHalfAt(event->position().toPoint().x(), width()));
}

TipStrip::TipStrip(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("picVideoTipInfo"));
    setFixedHeight(fontMetrics().height() + 4);
}

void TipStrip::setText(const QString& text)
{
    m_text = text;
    update();
}

void TipStrip::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    const QRect room = rect().adjusted(4, 0, 0, 0);
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
        fontMetrics().elidedText(m_text, Qt::ElideRight, room.width()));
}

} // namespace vindaro::media
