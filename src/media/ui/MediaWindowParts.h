#pragma once

#include "media/MediaLayout.h"

#include <QWidget>

#include <functional>

class QTimer;

namespace vindaro::media {

class MediaSession;

// The font of both media windows: "宋体" at 9 points where installed, else "MS Sans Serif" at 8.
QFont mediaWindowFont(const QFont& base);
// tmrTime: 100 ms, disabled; it runs while the session asks for it.
QTimer* makeTickTimer(QWidget* window, MediaSession& session);

// picMediaControlButton: the play icon on the left half, the stop icon on the right, each active or grey.
class ControlButton : public QWidget
{
public:
    explicit ControlButton(QWidget* parent = nullptr);
    void setLook(ControlLook look);
    ControlLook look() const { return m_look; }
    // A left press on the half, active or not.
    std::function<void(ControlHalf)> onPress;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    ControlLook m_look;
};

// picVideoTipInfo: one line drawn 4 pixels from the left edge, cut with an ellipsis when too long.
class TipStrip : public QWidget
{
public:
    explicit TipStrip(QWidget* parent = nullptr);
    void setText(const QString& text);
    QString text() const { return m_text; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
};

} // namespace vindaro::media
