#include "chrome/PictureButton.h"
#include "chrome/Frame3D.h"

#include <QApplication>
#include <QEnterEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using vindaro::chrome::ArtworkId;
using vindaro::chrome::FrameStyle;
using vindaro::chrome::OptionButtonChrome;
using vindaro::chrome::PictureButton;
using Look = vindaro::chrome::PictureButton::Look;

namespace {

void enter(QWidget* widget)
{
    QEnterEvent event(QPointF(5, 5), QPointF(5, 5), QPointF(widget->mapToGlobal(QPoint(5, 5))));
    QApplication::sendEvent(widget, &event);
}

class PictureButtonTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        button = new PictureButton(ArtworkId::Refresh, QStringLiteral("picRefresh"), &window);
        button->move(20, 20);
        window.resize(100, 80);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    QWidget window;
    PictureButton* button = nullptr;
};

TEST_F(PictureButtonTest, LooksFollowTheMouse)
{
    QSignalSpy clicked(button, &QAbstractButton::clicked);
    const QImage normal = button->grab().toImage();
    EXPECT_EQ(button->look(), Look::Normal);
    enter(button);
    EXPECT_EQ(button->look(), Look::Hover);
    const QImage hover = button->grab().toImage();
    EXPECT_NE(hover, normal);

    QTest::mousePress(button, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    EXPECT_EQ(button->look(), Look::Pressed);
    const QImage pressed = button->grab().toImage();
    EXPECT_NE(pressed, hover);
    EXPECT_NE(pressed, normal);
    EXPECT_EQ(clicked.count(), 0); // acts on release, not on press
    QTest::mouseRelease(button, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    EXPECT_EQ(clicked.count(), 1);
    EXPECT_EQ(button->look(), Look::Hover); // the mouse is still on it

    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(button, &leave);
    EXPECT_EQ(button->look(), Look::Normal);
    EXPECT_EQ(button->grab().toImage(), normal);

    // Moving off the button drops the hover look too.
    enter(button);
    button->setMouseTracking(true);
    QMouseEvent outside(QEvent::MouseMove, QPointF(-10, -10), QPointF(button->mapToGlobal(QPoint(-10, -10))),
        Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(button, &outside);
    EXPECT_EQ(button->look(), Look::Normal);

    // Released off the button: no click, no pressed look left.
    QTest::mousePress(button, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    QTest::mouseRelease(button, Qt::LeftButton, Qt::NoModifier, QPoint(60, 60));
    EXPECT_EQ(clicked.count(), 1);
    EXPECT_NE(button->look(), Look::Pressed);
}

TEST_F(PictureButtonTest, DisabledLooksGreyAndIgnoresClicksAndSetDownLooksPressed)
{
    QSignalSpy clicked(button, &QAbstractButton::clicked);
    const QImage normal = button->grab().toImage();
    enter(button);
    button->setEnabled(false);
    EXPECT_EQ(button->look(), Look::Disabled);
    EXPECT_NE(button->grab().toImage(), normal);
    QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    EXPECT_EQ(clicked.count(), 0);
    button->setEnabled(true);
    EXPECT_EQ(button->look(), Look::Normal); // hover was dropped while disabled

    button->setDown(true);
    EXPECT_EQ(button->look(), Look::Pressed);
    button->setDown(false);
    EXPECT_EQ(button->look(), Look::Normal);
}

TEST(OptionButtonChrome, FrameSinksWhileTheLeftButtonIsDownAndRightButtonAsksForTheMenu)
{
    QWidget window;
    auto* option = new QPushButton(QStringLiteral("弹出 CD_ROM[&A]"), &window);
    option->setObjectName(QStringLiteral("optOpenCD"));
    option->setGeometry(30, 30, 120, 26);
    auto* chrome = new OptionButtonChrome(option);
    window.resize(200, 100);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QSignalSpy menu(chrome, &OptionButtonChrome::cdMenuRequested);
    QSignalSpy clicked(option, &QAbstractButton::clicked);

    EXPECT_EQ(chrome->frame()->frameStyle(), FrameStyle::Raised);
    EXPECT_EQ(chrome->frame()->geometry(), option->geometry().adjusted(-1, -1, 1, 1));
    QTest::mousePress(option, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    EXPECT_EQ(chrome->frame()->frameStyle(), FrameStyle::Sunken);
    QTest::mouseRelease(option, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    EXPECT_EQ(chrome->frame()->frameStyle(), FrameStyle::Raised);
    EXPECT_EQ(clicked.count(), 1); // the button's own click still comes

    QTest::mousePress(option, Qt::RightButton, Qt::NoModifier, QPoint(12, 8));
    ASSERT_EQ(menu.count(), 1);
    EXPECT_EQ(menu.at(0).at(0).toPoint(), option->mapToGlobal(QPoint(12, 8)));
    QTest::mouseRelease(option, Qt::RightButton, Qt::NoModifier, QPoint(12, 8));

    option->move(60, 50); // the frame follows its control
    EXPECT_EQ(chrome->frame()->geometry(), option->geometry().adjusted(-1, -1, 1, 1));
    option->hide();
    EXPECT_FALSE(chrome->frame()->isVisible());
}

TEST(OptionButtonChrome, FrameMadeBeforeTheButtonIsPlacedMovesToItsContainer)
{
    auto* option = new QPushButton(QStringLiteral("关闭 CD_ROM[&Z]"));
    auto* chrome = new OptionButtonChrome(option); // no container yet
    EXPECT_FALSE(chrome->frame()->isWindow() && chrome->frame()->isVisible());
    QWidget window;
    option->setParent(&window);
    option->setGeometry(10, 10, 100, 24);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    EXPECT_EQ(chrome->frame()->parentWidget(), &window);
    EXPECT_TRUE(chrome->frame()->isVisible());
    EXPECT_EQ(chrome->frame()->geometry(), option->geometry().adjusted(-1, -1, 1, 1));
}

TEST(Draw3DFrame, RaisedIsLightAboveAndDarkBelowSunkenTheReverse)
{
    QImage image(20, 20, QImage::Format_RGB32);
    const QColor light(250, 250, 250);
    const QColor dark(90, 90, 90);
    const QRect control(5, 5, 10, 10);
    for (FrameStyle style : {FrameStyle::Raised, FrameStyle::Sunken}) {
        image.fill(Qt::black);
        QPainter painter(&image);
        vindaro::chrome::Draw3DFrame(painter, control, style, light, dark);
        painter.end();
        const QColor top = image.pixelColor(10, 4);
        const QColor left = image.pixelColor(4, 10);
        const QColor bottom = image.pixelColor(10, 15);
        const QColor right = image.pixelColor(15, 10);
        EXPECT_EQ(top, style == FrameStyle::Raised ? light : dark);
        EXPECT_EQ(left, top);
        EXPECT_EQ(bottom, style == FrameStyle::Raised ? dark : light);
        EXPECT_EQ(right, bottom);
        EXPECT_EQ(image.pixelColor(10, 10), QColor(Qt::black)); // the control itself is left alone
    }
}

} // namespace
