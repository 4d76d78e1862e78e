#include "sysinfo/ui/frmSplash.h"
#include "sysinfo/SplashPage.h"

#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

using namespace vindaro::sysinfo;
using vindaro::sysinfo::ui::frmSplash;
using namespace Qt::StringLiterals;

namespace {

SplashFacts someFacts()
{
    SplashFacts facts;
    facts.computerName = QStringLiteral("disc-box");
    facts.userName = QStringLiteral("ming");
    facts.memory = {267911168, 133955584};
    facts.registry.setValue(RootKey::LocalMachine, kNtSystemKey, QStringLiteral("ProductName"),
        FactValue::string(QStringLiteral("Debian GNU/Linux")));
    facts.registry.setValue(
        RootKey::LocalMachine, kProcessorKey, QStringLiteral("~Mhz"), FactValue::numberValue(1800));
    return facts;
}

struct Window
{
    int starts = 0;
    frmSplash window{someFacts(), [this] {
                         ++starts;
                         return false; // no tool installed: the window closes all the same
                     }};

    Window()
    {
        window.move(100, 100);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
};

// Each label shows its field of the page (lines end in LF on screen); the captions are the window's own.
TEST(frmSplash, ShowsThePageOnItsLabels)
{
    Window w;
    const SplashPage page = composeSplashPage(someFacts());
    const auto onScreen = [](QString text) { return text.replace(u"\r\n"_s, u"\n"_s); };
    const std::pair<QLabel*, QString> rows[] = {{w.window.lblProductName, page.productName},
        {w.window.lblVersion, page.version}, {w.window.lblIssueYear, page.issueYear},
        {w.window.Label3, page.company}, {w.window.Label4, page.computerName},
        {w.window.Label5, page.userName}, {w.window.Label6, onScreen(page.memory)},
        {w.window.lblComputerInfo, onScreen(page.computerInfo).chopped(1)}, // no empty line after the last
        {w.window.lblCPUInformation, onScreen(page.cpuInformation)}};
    for (const auto& [label, text] : rows)
        EXPECT_EQ(label->text(), text) << label->objectName().toStdString();
    EXPECT_TRUE(page.computerInfo.startsWith(u"Debian GNU/Linux\r\n"_s)); // the facts reached the page
    EXPECT_EQ(w.window.cmdOK->text(), u"Sure(&S)"_s);
    EXPECT_EQ(w.window.cmdSysInfo->text(), u"SystemInfo(&I)"_s);
    EXPECT_TRUE(w.window.windowFlags() & Qt::FramelessWindowHint);
    for (const char* name : {"linFrame1", "linFrame2", "linFrame3"}) { // each line pair: grey above white
        auto* line = w.window.findChild<QWidget*>(QLatin1String(name));
        ASSERT_NE(line, nullptr) << name;
        const QImage pixels = line->grab().toImage();
        EXPECT_EQ(QColor(pixels.pixel(5, 0)), QColor(128, 128, 128)) << name;
        EXPECT_EQ(QColor(pixels.pixel(5, 1)), QColor(255, 255, 255)) << name;
    }
}

TEST(frmSplash, SysInfoStartsTheToolAndClosesOkOnlyCloses)
{
    {
        Window w;
        QTest::mouseClick(w.window.cmdSysInfo, Qt::LeftButton);
        EXPECT_EQ(w.starts, 1);
        EXPECT_FALSE(w.window.isVisible());
    }
    Window w;
    QTest::mouseClick(w.window.cmdOK, Qt::LeftButton);
    EXPECT_EQ(w.starts, 0);
    EXPECT_FALSE(w.window.isVisible());
}

void sendMouse(QWidget* target, QEvent::Type type, const QPoint& global, Qt::MouseButton button,
    Qt::MouseButtons buttons)
{
    QMouseEvent event(type, target->mapFromGlobal(global), global, button, buttons, Qt::NoModifier);
    QApplication::sendEvent(target, &event);
}

TEST(frmSplash, DraggedByItsBackgroundAndItsLabels)
{
    Window w;
    for (QWidget* handle : {static_cast<QWidget*>(&w.window), static_cast<QWidget*>(w.window.Label5)}) {
        const QPoint start = w.window.pos();
        const QPoint grip = handle->mapToGlobal(QPoint(3, 3));
        sendMouse(handle, QEvent::MouseButtonPress, grip, Qt::LeftButton, Qt::LeftButton);
        sendMouse(handle, QEvent::MouseMove, grip + QPoint(40, 25), Qt::NoButton, Qt::LeftButton);
        sendMouse(handle, QEvent::MouseButtonRelease, grip + QPoint(40, 25), Qt::LeftButton, Qt::NoButton);
        EXPECT_EQ(w.window.pos(), start + QPoint(40, 25)) << handle->objectName().toStdString();
    }
    EXPECT_TRUE(w.window.isVisible());
}

} // namespace
