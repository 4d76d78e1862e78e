#include "oplog/ui/frmSystem.h"
#include "chrome/ToolTips.h"
#include "fakes/FakeChangeMonitor.h"
#include "oplog/LogFile.h"
#include "oplog/LogTexts.h"
#include "oplog/ui/CaptionButton.h"

#include <QFile>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace vindaro;
using oplog::ui::CaptionButton;
using oplog::ui::frmSystem;

namespace {

constexpr int kWaitMs = 5000;

struct Window
{
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("OperationNotes.log"));
    vindaro::testing::FakeChangeMonitor monitor;
    oplog::OperationLog log{[this] {
        oplog::OperationLogOptions o;
        o.logFilePath = path;
        return o;
    }()};
    std::unique_ptr<frmSystem> frm;

    explicit Window(bool monitorAvailable = true)
    {
        monitor.available = monitorAvailable;
        frm = std::make_unique<frmSystem>(log, &monitor);
        frm->setKeepLoaded(true);
    }
    QPlainTextEdit* text(const char* name) { return frm->findChild<QPlainTextEdit*>(QLatin1String(name)); }
    CaptionButton* button(const char* name) { return frm->findChild<CaptionButton*>(QLatin1String(name)); }
    void click(const char* name) { QTest::mouseClick(button(name), Qt::LeftButton); }
    QByteArray file() const
    {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
};

// Loaded hidden with monitoring on; a title-bar close only hides it and monitoring goes on; unloading at
// the end stops the monitor and appends the run to the file.
TEST(FrmSystem, CloseHidesWhileKeptLoadedAndUnloadWritesTheRun)
{
    Window w;
    EXPECT_FALSE(w.frm->isVisible());
    EXPECT_TRUE(w.frm->isMonitoring());
    EXPECT_TRUE(w.monitor.running());
    EXPECT_TRUE(w.log.runningText().isEmpty());

    w.frm->show();
    EXPECT_FALSE(w.frm->close());
    EXPECT_FALSE(w.frm->isVisible());
    EXPECT_TRUE(w.monitor.running());

    w.monitor.deliver({{oplog::kRenameItem, QStringLiteral("/h/a.txt"), QStringLiteral("/h/b.txt")}});
    ASSERT_TRUE(QTest::qWaitFor([&] { return !w.log.runningText().isEmpty(); }, kWaitMs));
    EXPECT_TRUE(w.text("tText")->toPlainText().contains(QStringLiteral("重命名文件 “/h/a.txt”为“/h/b.txt”")));

    w.frm->setKeepLoaded(false);
    w.frm->show();
    EXPECT_TRUE(w.frm->close());
    EXPECT_TRUE(w.frm->isUnloaded());
    EXPECT_EQ(w.monitor.stops, 1);
    EXPECT_TRUE(w.file().endsWith("”为“/h/b.txt”\r\n\r\n"));
}

// Without a way to watch, the window says so in its running text and still takes the engine's entries.
TEST(FrmSystem, WithoutMonitoringItIsAViewer)
{
    Window w(false);
    EXPECT_FALSE(w.frm->isMonitoring());
    w.frm->GetFileCopyLog(QStringLiteral("取消复制：/tmp/a.dat"));
    const QString shown = w.text("tText")->toPlainText();
    EXPECT_TRUE(shown.startsWith(oplog::kMonitorUnavailable + QLatin1Char('\n'))) << shown.toStdString();
    EXPECT_TRUE(shown.contains(QStringLiteral("] 取消复制：/tmp/a.dat")));
}

// The four buttons: View shows the file in lText (or "无日志记录！"), 清除记录 empties the file,
// 清空记录 the running text, 退出 hides; each has its balloon tip.
TEST(FrmSystem, ButtonsActOnTheFileAndTheRunningText)
{
    Window w;
    w.frm->show();
    for (const oplog::LogButtonText& entry : oplog::logButtonTexts()) {
        CaptionButton* button = w.button(qPrintable(entry.control));
        ASSERT_NE(button, nullptr) << entry.control.toStdString();
        EXPECT_EQ(button->text(), entry.caption);
        ASSERT_NE(chrome::ToolTips::of(button), nullptr);
        EXPECT_EQ(chrome::ToolTips::of(button)->text(), entry.tip);
    }
    ASSERT_TRUE(oplog::appendToLogFile(w.path, QStringLiteral("[1] a\r\n[2] b\r\n[3] c\r\n")));

    w.click("picView");
    EXPECT_TRUE(w.text("lText")->isVisible());
    EXPECT_FALSE(w.text("tText")->isVisible());
    EXPECT_EQ(w.text("lText")->toPlainText(), "[1] a\n[2] b\n[3] c\n");

    w.click("picClear");
    EXPECT_EQ(w.file(), "\r\n");
    EXPECT_TRUE(w.text("tText")->isVisible());
    w.click("picView");
    EXPECT_EQ(w.text("lText")->toPlainText(), oplog::kNoLogRecords + QLatin1Char('\n'));

    w.frm->GetFileCopyLog(QStringLiteral("entry"));
    w.click("picDelete");
    EXPECT_TRUE(w.log.runningText().isEmpty());
    EXPECT_TRUE(w.text("tText")->toPlainText().isEmpty());
    EXPECT_TRUE(w.text("tText")->isVisible());

    w.click("picView");
    w.click("picExit");
    EXPECT_FALSE(w.frm->isVisible());
    EXPECT_FALSE(w.frm->isUnloaded());
    EXPECT_EQ(w.log.shown(), oplog::OperationLog::Shown::RunningText);
}

TEST(FrmSystem, ButtonIsRaisedUnderThePointerAndSunkenWhilePressed)
{
    Window w;
    w.frm->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(w.frm.get()));
    CaptionButton* view = w.button("picView");
    EXPECT_EQ(view->look(), CaptionButton::Look::Flat);
    QTest::mouseMove(view, view->rect().center());
    EXPECT_EQ(view->look(), CaptionButton::Look::Raised);
    QTest::mousePress(view, Qt::LeftButton, {}, view->rect().center());
    EXPECT_EQ(view->look(), CaptionButton::Look::Sunken);
    QTest::mouseRelease(view, Qt::LeftButton, {}, view->rect().center());
    QTest::mouseMove(w.frm.get(), QPoint(2, 2));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(view, &leave);
    EXPECT_EQ(view->look(), CaptionButton::Look::Flat);
}

} // namespace
