#include "chrome/TitleBars.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

using vindaro::chrome::HTitleBar;
using vindaro::chrome::TitleBarArea;
using vindaro::chrome::VTitleBar;

namespace {

constexpr int kBarWidth = 300;

// A frameless window with the bar across its top.
struct BarWindow
{
    std::unique_ptr<QWidget> window = std::make_unique<QWidget>(nullptr, Qt::FramelessWindowHint);
    HTitleBar* bar = new HTitleBar;

    BarWindow()
    {
        auto* layout = new QVBoxLayout(window.get());
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(bar);
        layout->addStretch(1);
        window->resize(kBarWidth, 120);
        window->move(100, 100);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        EXPECT_EQ(bar->width(), kBarWidth);
    }
};

QPoint at(int x)
{
    return {x, HTitleBar::kHeight / 2};
}

void sendMouseAt(QWidget* widget, QEvent::Type type, const QPoint& globalPos, Qt::MouseButton button,
    Qt::MouseButtons held)
{
    QMouseEvent event(
        type, QPointF(widget->mapFromGlobal(globalPos)), QPointF(globalPos), button, held, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

void sendMouse(
    QWidget* widget, QEvent::Type type, const QPoint& pos, Qt::MouseButton button, Qt::MouseButtons held)
{
    sendMouseAt(widget, type, widget->mapToGlobal(pos), button, held);
}

// A left click on each area reaches that area's request only; the file menu opens under its button.
TEST(HTitleBar, LeftClickEmitsOnlyThatButtonsRequest)
{
    BarWindow w;
    QSignalSpy menu(w.bar, &HTitleBar::fileMenuRequested);
    QSignalSpy minimize(w.bar, &HTitleBar::minimizeRequested);
    QSignalSpy tray(w.bar, &HTitleBar::trayRequested);
    QSignalSpy close(w.bar, &HTitleBar::closeRequested);
    QSignalSpy* const spies[] = {&menu, &minimize, &tray, &close};
    const std::pair<int, QSignalSpy*> rows[] = {{10, &menu}, {kBarWidth - 45, &minimize},
        {kBarWidth - 25, &tray}, {kBarWidth - 10, &close}, {150, nullptr}};
    for (const auto& [x, spy] : rows) {
        QTest::mouseClick(w.bar, Qt::LeftButton, Qt::NoModifier, at(x));
        for (QSignalSpy* each : spies)
            EXPECT_EQ(each->count(), each == spy ? 1 : 0) << "x " << x;
        EXPECT_EQ(w.bar->pressedArea(), TitleBarArea::Outside); // nothing stays drawn pressed
        if (spy == &menu) {
            EXPECT_EQ(menu.at(0).at(0).toPoint(), w.bar->mapToGlobal(QPoint(0, w.bar->height())));
        }
        for (QSignalSpy* each : spies)
            each->clear();
    }
}

TEST(HTitleBar, PressDrawsTheButtonPressedOnlyWhileTheMouseIsOnIt)
{
    BarWindow w;
    QSignalSpy close(w.bar, &HTitleBar::closeRequested);
    QSignalSpy tray(w.bar, &HTitleBar::trayRequested);
    const QImage before = w.bar->grab().toImage();
    sendMouse(w.bar, QEvent::MouseButtonPress, at(kBarWidth - 10), Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(w.bar->pressedArea(), TitleBarArea::Close);
    EXPECT_NE(w.bar->grab().toImage(), before); // the close button looks pressed

    // Slide onto the tray button and let go there: neither acts.
    sendMouse(w.bar, QEvent::MouseMove, at(kBarWidth - 25), Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(w.bar->pressedArea(), TitleBarArea::Outside);
    sendMouse(w.bar, QEvent::MouseButtonRelease, at(kBarWidth - 25), Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(close.count(), 0);
    EXPECT_EQ(tray.count(), 0);
}

TEST(HTitleBar, RightClickOnTheTitleOpensTheMenuAtTheMouse)
{
    BarWindow w;
    QSignalSpy menu(w.bar, &HTitleBar::fileMenuRequested);
    QSignalSpy close(w.bar, &HTitleBar::closeRequested);
    QTest::mouseClick(w.bar, Qt::RightButton, Qt::NoModifier, at(120));
    ASSERT_EQ(menu.count(), 1);
    EXPECT_EQ(menu.at(0).at(0).toPoint(), w.bar->mapToGlobal(at(120)));
    QTest::mouseClick(w.bar, Qt::RightButton, Qt::NoModifier, at(kBarWidth - 10));
    EXPECT_EQ(menu.count(), 1); // not on the close button ...
    EXPECT_EQ(close.count(), 0); // ... which a right click does not press either
}

// Dragging the free area moves the window (offscreen has no system move: it follows the mouse itself);
// dragging from a button does not.
TEST(HTitleBar, DraggingTheFreeAreaMovesTheWindow)
{
    BarWindow w;
    const QPoint start = w.window->pos();
    sendMouse(w.bar, QEvent::MouseButtonPress, at(5), Qt::LeftButton, Qt::LeftButton);
    sendMouse(w.bar, QEvent::MouseMove, at(90), Qt::NoButton, Qt::LeftButton);
    sendMouse(w.bar, QEvent::MouseButtonRelease, at(90), Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(w.window->pos(), start);

    const QPoint grip = w.bar->mapToGlobal(at(100)); // the mouse moves on the screen, the window follows
    sendMouseAt(w.bar, QEvent::MouseButtonPress, grip, Qt::LeftButton, Qt::LeftButton);
    sendMouseAt(w.bar, QEvent::MouseMove, grip + QPoint(40, 0), Qt::NoButton, Qt::LeftButton);
    sendMouseAt(w.bar, QEvent::MouseMove, grip + QPoint(60, 5), Qt::NoButton, Qt::LeftButton);
    sendMouseAt(w.bar, QEvent::MouseButtonRelease, grip + QPoint(60, 5), Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(w.window->pos(), start + QPoint(60, 5));
}

TEST(VTitleBar, ClickEmitsButADragOnlyMoves)
{
    QWidget window(nullptr, Qt::FramelessWindowHint);
    auto* bar = new VTitleBar(&window);
    bar->setGeometry(0, 0, VTitleBar::kWidth, 200);
    window.resize(200, 200);
    window.move(50, 50);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QSignalSpy clicked(bar, &VTitleBar::clicked);
    QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, QPoint(10, 100));
    EXPECT_EQ(clicked.count(), 1);

    const QPoint start = window.pos();
    const QPoint grip = bar->mapToGlobal(QPoint(10, 100));
    sendMouseAt(bar, QEvent::MouseButtonPress, grip, Qt::LeftButton, Qt::LeftButton);
    sendMouseAt(bar, QEvent::MouseMove, grip + QPoint(0, 30), Qt::NoButton, Qt::LeftButton);
    sendMouseAt(bar, QEvent::MouseButtonRelease, grip + QPoint(0, 30), Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(window.pos(), start + QPoint(0, 30));
    EXPECT_EQ(clicked.count(), 1);
}

} // namespace
