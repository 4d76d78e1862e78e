#pragma once

#include <QColor>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QWidget>

class QAbstractButton;
class QPainter;

namespace vindaro::chrome {

enum class FrameStyle
{
    Raised, // light top and left, dark bottom and right
    Sunken // the other way round
};

// Draws a one-pixel frame just outside control (a rectangle on the control's container): for Raised the
// top and left edges in light and the bottom and right in dark, for Sunken the other way round.
void Draw3DFrame(QPainter& painter, const QRect& control, FrameStyle style,
    const QColor& light = QColor(255, 255, 255), const QColor& dark = QColor(128, 128, 128));

// A 3D frame round a control, drawn on the control's container and following it as it moves, resizes,
// shows, hides and changes container (so it may be made before the control is put in a layout). It sits
// under the control and lets the mouse through.
class Frame3D : public QWidget
{
    Q_OBJECT

public:
    explicit Frame3D(QWidget* control, FrameStyle style = FrameStyle::Raised);

    FrameStyle frameStyle() const { return m_style; }
    void setFrameStyle(FrameStyle style);
    void setColours(const QColor& light, const QColor& dark);
    QWidget* control() const { return m_control; }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void follow();

    QPointer<QWidget> m_control;
    FrameStyle m_style;
    QColor m_light{255, 255, 255};
    QColor m_dark{128, 128, 128};
};

// The CD-ROM option buttons optOpenCD and optCloseCD: a 3D frame round the button, sunken while the left
// button is down on it and raised when it comes up; a right button down asks for the CD-ROM pop-up menu.
// The button keeps its own click; this only watches its mouse.
class OptionButtonChrome : public QObject
{
    Q_OBJECT

public:
    explicit OptionButtonChrome(QAbstractButton* button);

    Frame3D* frame() const { return m_frame; }

signals:
    void cdMenuRequested(const QPoint& globalPos);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Frame3D* m_frame; // owned by the button's container
};

} // namespace vindaro::chrome
