#pragma once

#include "chrome/TitleBarLayout.h"

#include <QPoint>
#include <QWidget>

namespace vindaro::chrome {

// Drags a top-level window by one of its widgets: the platform's own move where it has one
// (QWindow::startSystemMove), else the window follows the mouse.
class WindowDragger
{
public:
    explicit WindowDragger(QWidget* handle);

    void press(const QPoint& globalPos);
    // True while this press has turned into a drag (the mouse moved far enough with the button held).
    bool move(const QPoint& globalPos);
    void release();
    bool isDragging() const { return m_dragging; }

private:
    QWidget* m_handle;
    bool m_armed = false; // the left button went down on the handle and has not come up
    bool m_dragging = false;
    bool m_systemMove = false; // the window manager moves the window; we only wait for the release
    QPoint m_pressGlobal;
    QPoint m_windowStart;
};

// The horizontal title bar picHTitleBar: a file menu button at the left, the title "Vindaro", and the
// minimise, tray and close buttons at the right (see TitleBarLayout for the areas). A button acts when
// the left button goes down and comes up on it; dragging the free area moves the window; a right click
// on the free area or the file menu button asks for the file menu. The bar only signals: the window
// decides what the requests do.
class HTitleBar : public QWidget
{
    Q_OBJECT

public:
    static const QString kTitle; // "Vindaro"
    static constexpr int kHeight = 20;

    explicit HTitleBar(QWidget* parent = nullptr);

    void setTitle(const QString& title);
    QString title() const { return m_title; }

    // The button drawn pressed: the area the left button went down on while the mouse stays on it.
    TitleBarArea pressedArea() const;
    TitleBarArea hoverArea() const { return m_hoverArea; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    // globalPos: where the menu should open (under the button, or at the mouse for a right click).
    void fileMenuRequested(const QPoint& globalPos);
    void minimizeRequested();
    void trayRequested();
    void closeRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    TitleBarArea areaAt(const QPoint& pos) const;
    QRect buttonRect(TitleBarArea area) const;
    void paintButton(QPainter& painter, TitleBarArea area);

    QString m_title;
    WindowDragger m_dragger;
    TitleBarArea m_pressArea = TitleBarArea::Outside; // where the left button went down
    TitleBarArea m_hoverArea = TitleBarArea::Outside;
    bool m_pressStillOver = false; // the mouse is still over m_pressArea
};

// The vertical bar picVTitleBar down the window's side, with "VINDARO2.0" in Arial reading upwards.
// Dragging it moves the window; a click on it (no drag) emits clicked().
class VTitleBar : public QWidget
{
    Q_OBJECT

public:
    static const QString kCaption; // "VINDARO2.0"
    static constexpr int kWidth = 22;

    explicit VTitleBar(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void clicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    WindowDragger m_dragger;
};

// The bars' fill: a blue gradient running along the bar.
void paintTitleBarBackground(QPainter& painter, const QRect& rect, Qt::Orientation orientation, bool enabled);

} // namespace vindaro::chrome
