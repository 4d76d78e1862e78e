// The main window's file list, title bars, picture buttons, CD-ROM buttons, tooltips and batch copy.
#include "FrmCopyRig.h"
#include "chrome/MenuBand.h"
#include "chrome/PictureButton.h"
#include "chrome/TitleBars.h"
#include "chrome/ToolTipTable.h"
#include "chrome/ToolTips.h"
#include "chrome/TrayController.h"
#include "copy/ui/ProgressBar.h"
#include "files/ui/FileListCombo.h"
#include "files/ui/FileListController.h"
#include "files/ui/FileMenu.h"
#include "info/ui/frmFileProperty.h"
#include "media/MediaSession.h"
#include "media/ui/frmPlaying.h"
#include "media/ui/frmPrevVideo.h"
#include "oplog/LogFile.h"
#include "oplog/ui/frmSystem.h"
#include "sysinfo/ui/frmSplash.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

using namespace vindaro;
using namespace vindaro::testing;

namespace {

constexpr qint64 kFileBytes = 3 * 40960 + 17; // three blocks and a short one

// Files that exist both on disk (for the file list) and in the copy's memory file layer, with equal bytes.
struct ListedFiles
{
    QTemporaryDir dir;

    QString make(Rig& rig, const QString& name)
    {
        const QString path = dir.path() + u'/' + name;
        const QByteArray bytes = positionBytes(kFileBytes);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        rig.files.put(path, bytes);
        return path;
    }
};

files::FileMenu* fileMenu(Rig& rig)
{
    return rig.frm.findChild<files::FileMenu*>();
}

void triggerMenuEntry(Rig& rig, const char* name)
{
    QAction* action = fileMenu(rig)->entry(QLatin1String(name));
    ASSERT_NE(action, nullptr) << name;
    ASSERT_TRUE(action->isEnabled()) << name;
    action->trigger();
}

TEST(FrmCopyShell, StartsFramelessWithBothBarsAndThePictureButtons)
{
    Rig rig;
    EXPECT_TRUE(rig.frm.windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_TRUE(rig.frm.isWindow());
    EXPECT_FALSE(rig.frm.windowIcon().isNull());

    auto* vbar = rig.child<chrome::VTitleBar>("picVTitleBar");
    auto* hbar = rig.child<chrome::HTitleBar>("picHTitleBar");
    ASSERT_TRUE(vbar && hbar);
    EXPECT_TRUE(vbar->isVisible());
    EXPECT_TRUE(hbar->isVisible());
    // The vertical bar runs down the left edge, the horizontal one across the top of the rest.
    EXPECT_LE(vbar->geometry().left(), 1);
    EXPECT_GE(vbar->height(), rig.frm.height() - 2);
    EXPECT_LE(hbar->geometry().top(), 1);
    EXPECT_GE(hbar->geometry().left(), vbar->geometry().right());
    EXPECT_EQ(hbar->geometry().right(), rig.frm.width() - 2);

    const std::pair<const char*, chrome::ArtworkId> buttons[]
        = {{"picRefresh", chrome::ArtworkId::Refresh}, {"picSearch", chrome::ArtworkId::Search},
            {"picSetUp", chrome::ArtworkId::SetUp}, {"picWatch", chrome::ArtworkId::Watch}};
    for (const auto& [name, artwork] : buttons) {
        auto* button = rig.child<chrome::PictureButton>(name);
        ASSERT_NE(button, nullptr) << name;
        EXPECT_EQ(button->artwork(), artwork) << name;
        EXPECT_TRUE(button->isVisible()) << name;
        EXPECT_GT(button->geometry().top(), hbar->geometry().bottom()) << name;
    }

    EXPECT_EQ(rig.child<QRadioButton>("optOpenCD")->text(), "弹出 CD_ROM[&A]");
    EXPECT_EQ(rig.child<QRadioButton>("optCloseCD")->text(), "关闭 CD_ROM[&Z]");
    EXPECT_EQ(rig.label("lblFilesInfo")->text(), "文件总数：0个，总计大小：0M，0字节");
    for (const char* name : {"stbFileInfoShowsArea_A", "stbFileInfoShowsArea_B"})
        EXPECT_TRUE(rig.child<QStatusBar>(name)->currentMessage().isEmpty()) << name;
    for (const char* name : {"PicSmallIcon_16A", "PicSmallIcon_16B", "Image1"})
        EXPECT_NE(rig.child<QLabel>(name), nullptr);
}

// The open dialog's files fill the list; the first becomes the box's text and the source of a copy.
TEST(FrmCopyShell, ChosenFilesFillTheListAndTheFirstIsCopied)
{
    Rig rig;
    ListedFiles listed;
    const QString first = listed.make(rig, QStringLiteral("AVSEQ01.DAT"));
    const QString second = listed.make(rig, QStringLiteral("AVSEQ02.DAT"));
    ASSERT_NE(dynamic_cast<files::FileListCombo*>(rig.combo()), nullptr);
    rig.text("txtFileCopy")->setText(kDestination);
    static_cast<copy::CopyHost&>(rig.frm.controller()).progress(99, 99);

    rig.listPrompts.openAnswer = {first, second};
    rig.click("cmdSourceFile");
    EXPECT_EQ(rig.figures(), kIdleFigures);
    ASSERT_EQ(rig.combo()->count(), 2);
    EXPECT_EQ(rig.combo()->itemText(1), second);
    EXPECT_EQ(rig.combo()->currentText(), first);
    EXPECT_TRUE(rig.text("txtFileCopy")->text().isEmpty()); // the list was reset first
    EXPECT_EQ(rig.label("lblFilesInfo")->text(), "文件总数:2个  总计大小:0MB [245,794字节]");
    EXPECT_TRUE(rig.child<QStatusBar>("stbFileInfoShowsArea_B")->currentMessage().contains("[122,897字节]"));
    EXPECT_TRUE(fileMenu(rig)->entry(QStringLiteral("mnuCopyTo"))->isEnabled());

    rig.text("txtFileCopy")->setText(kDestination);
    rig.click("cmdStartCopy");
    EXPECT_EQ(rig.waitForOutcome(), int(copy::CopyOutcome::Finished));
    EXPECT_EQ(rig.files.bytes(kDestination), positionBytes(kFileBytes));
    EXPECT_TRUE(rig.log.entries().last().startsWith(first));
}

// The drive report comes in the background after start-up: it fills an empty box, never a chosen source.
TEST(FrmCopyShell, LateDriveReportNeverReplacesAChosenSource)
{
    Rig rig;
    rig.frm.showStartText(QStringLiteral("光盘驱动器/dev/sr0还没有准备好\r\n"));
    EXPECT_EQ(rig.combo()->currentText(), QStringLiteral("光盘驱动器/dev/sr0还没有准备好"));

    ListedFiles listed;
    const QString first = listed.make(rig, QStringLiteral("AVSEQ01.DAT"));
    rig.listPrompts.openAnswer = {first};
    rig.click("cmdSourceFile");
    rig.frm.showStartText(QStringLiteral("你可能没有安装光盘驱动器，或者驱动程序不正常。"));
    EXPECT_EQ(rig.combo()->currentText(), first);
}

// Picking another entry moves the destination's name along; refresh and clear act on the list and the
// copy's figures.
TEST(FrmCopyShell, RefreshAndClearActOnTheListAndTheFigures)
{
    Rig rig;
    ListedFiles listed;
    const QString first = listed.make(rig, QStringLiteral("a.dat"));
    const QString second = listed.make(rig, QStringLiteral("b.dat"));
    rig.listPrompts.openAnswer = {first, second};
    rig.click("cmdSourceFile");
    rig.text("txtFileCopy")->setText(QStringLiteral("/home/user/out/old.dat"));

    rig.combo()->setCurrentIndex(1);
    emit rig.combo()->activated(1); // as when the user picks it
    EXPECT_EQ(rig.text("txtFileCopy")->text(), "/home/user/out/b.dat");
    EXPECT_EQ(rig.label("lblFilesInfo")->text(), "文件总数:2/2个  总计大小:0MB [245,794字节]");

    rig.click("picRefresh");
    EXPECT_EQ(rig.combo()->currentText(), first);

    static_cast<copy::CopyHost&>(rig.frm.controller()).progress(40961, 81922);
    rig.frm.copyState().elapsedSeconds = 3;
    rig.frm.controller().tick();
    ASSERT_NE(rig.figures(), kIdleFigures);
    triggerMenuEntry(rig, "mnuClearAllListItem");
    EXPECT_EQ(rig.figures(), kIdleFigures);
    EXPECT_TRUE(rig.child<copy::ProgressBar>("picProgressBar")->text().isEmpty());
    EXPECT_EQ(rig.combo()->count(), 0);
    EXPECT_EQ(rig.label("lblFilesInfo")->text(), "文件总数：0个，总计大小：0M，0字节");
    EXPECT_FALSE(fileMenu(rig)->entry(QStringLiteral("mnuCopyTo"))->isEnabled());
}

// The file menu's properties entry opens the program's own window for a ZIP file (closed here as soon as
// it shows) and hands other files to the desktop.
TEST(FrmCopyShell, PropertiesOpensTheOwnWindowForZipAndTheDesktopSheetForOthers)
{
    Rig rig;
    ListedFiles listed;
    const QString zip = listed.make(rig, QStringLiteral("a.zip"));
    const QString dat = listed.make(rig, QStringLiteral("b.dat"));
    rig.listPrompts.openAnswer = {zip, dat};
    rig.click("cmdSourceFile");

    QStringList shown;
    const auto closeWhenShown = [&] {
        QTimer::singleShot(0, [&] {
            for (QWidget* top : QApplication::topLevelWidgets()) {
                if (auto* window = qobject_cast<info::ui::frmFileProperty*>(top);
                    window && window->isVisible()) {
                    shown << window->windowTitle();
                    window->reject();
                }
            }
        });
    };
    closeWhenShown();
    triggerMenuEntry(rig, "mnuFileroperty");
    EXPECT_EQ(shown, QStringList{QStringLiteral("a.zip 属性")});
    EXPECT_FALSE(rig.shell.calls.contains(QStringLiteral("showProperties ") + zip));

    rig.combo()->setCurrentIndex(1);
    emit rig.combo()->activated(1);
    closeWhenShown();
    triggerMenuEntry(rig, "mnuFileroperty");
    EXPECT_EQ(shown.size(), 1);
    EXPECT_TRUE(rig.shell.calls.contains(QStringLiteral("showProperties ") + dat));
}

TEST(FrmCopyShell, TheListOpensThePreviewAndTheFileMenuThePlayer)
{
    Rig rig;
    const QString video = QStringLiteral("/nowhere/AVSEQ01.DAT");
    emit rig.frm.fileList().previewRequested(video);
    auto* preview = rig.frm.findChild<media::frmPrevVideo*>();
    ASSERT_NE(preview, nullptr);
    EXPECT_EQ(preview->session().path(), video);
    emit rig.frm.fileList().playerRequested(video);
    auto* player = rig.frm.findChild<media::frmPlaying*>();
    ASSERT_NE(player, nullptr);
    EXPECT_EQ(player->session().path(), video);
}

// A file dropped on any control, even one made late in the window's construction, joins the list.
TEST(FrmCopyShell, FilesDroppedOnAControlJoinTheList)
{
    Rig rig;
    ListedFiles listed;
    const QString path = listed.make(rig, QStringLiteral("dropped.vob"));
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(path), QUrl::fromLocalFile(listed.dir.path())});
    QWidget* target = rig.child("cmdCancelCopy");
    const QPoint at(4, 4);
    QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &drop);

    ASSERT_EQ(rig.combo()->count(), 1); // the folder is left out
    EXPECT_EQ(rig.combo()->currentText(), path);
}

// The log window is loaded hidden with the program and follows changes from the start; picWatch shows it,
// its own close only hides it, and quitting unloads it, which appends the run to the log file.
TEST(FrmCopyShell, PicWatchShowsTheLogWindowAndQuittingWritesTheLog)
{
    Rig rig;
    oplog::ui::frmSystem& logWindow = rig.frm.logWindow();
    EXPECT_FALSE(logWindow.isVisible());
    EXPECT_TRUE(logWindow.KeepLoaded());
    EXPECT_TRUE(rig.changeMonitor.running());

    rig.click("picWatch");
    EXPECT_TRUE(logWindow.isVisible());
    EXPECT_FALSE(logWindow.close());
    EXPECT_FALSE(logWindow.isVisible());
    EXPECT_TRUE(rig.changeMonitor.running());

    rig.changeMonitor.deliver({{oplog::kCreate, QStringLiteral("/home/u/a.dat"), {}}});
    EXPECT_TRUE(QTest::qWaitFor([&] { return rig.log.entries().size() == 1; }, kWaitMs));
    rig.frm.log(QStringLiteral("取消复制：") + kSource);

    QFile::remove(oplog::defaultLogFilePath());
    rig.boxes.answers = {platform::kAnswerYes};
    EXPECT_TRUE(rig.frm.close());
    EXPECT_TRUE(logWindow.isUnloaded());
    EXPECT_FALSE(rig.changeMonitor.running());
    QFile file(oplog::defaultLogFilePath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString written = QString::fromUtf8(file.readAll());
    EXPECT_TRUE(written.contains(QStringLiteral("] 创建文件：“/home/u/a.dat”\r\n"))) << written.toStdString();
    EXPECT_TRUE(written.endsWith(QStringLiteral("] 取消复制：") + kSource + QStringLiteral("\r\n\r\n")))
        << written.toStdString();
}

// Left clicks on the horizontal bar: 10 from the left the file menu, 10 from the right close (which asks),
// 25 from the right the notification area (minimised here, where there is none).
TEST(FrmCopyShell, TitleBarButtonsOpenTheMenuCloseAndSendToTheTray)
{
    Rig rig;
    auto* hbar = rig.child<chrome::HTitleBar>("picHTitleBar");
    ASSERT_NE(hbar, nullptr);
    const int y = hbar->height() / 2;
    QMenu* menu = fileMenu(rig);
    ASSERT_NE(menu, nullptr);
    EXPECT_NE(chrome::menuBandOf(menu), nullptr); // the file menu has the chrome's band

    QTest::mouseClick(hbar, Qt::LeftButton, {}, QPoint(10, y));
    EXPECT_TRUE(QTest::qWaitFor([&] { return menu->isVisible(); }, kWaitMs));
    menu->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !menu->isVisible(); }, kWaitMs));
    EXPECT_TRUE(rig.boxes.shown.isEmpty());

    QTest::mouseClick(hbar, Qt::LeftButton, {}, QPoint(hbar->width() - 10, y));
    ASSERT_EQ(rig.boxes.shown.size(), 1);
    EXPECT_EQ(rig.boxes.shown[0].text, "真的要退出Vindaro吗？");
    EXPECT_TRUE(rig.frm.isVisible()); // answered no

    auto* tray = rig.frm.findChild<chrome::TrayController*>();
    ASSERT_NE(tray, nullptr);
    QSignalSpy minimised(tray, &chrome::TrayController::minimizedInstead);
    QTest::mouseClick(hbar, Qt::LeftButton, {}, QPoint(hbar->width() - 25, y));
    EXPECT_EQ(minimised.count(), 1);
    EXPECT_TRUE(rig.frm.isMinimized());
    EXPECT_EQ(rig.boxes.shown.size(), 1);
}

// The option buttons move the first drive's tray on another thread: the click returns while the drive is
// still busy, with the busy pointer up, and the tray call arrives once the drive lets it.
TEST(FrmCopyShell, OptionButtonsMoveTheFirstTrayWithoutBlocking)
{
    Rig rig;
    rig.opticalDrives->add(QStringLiteral("/dev/sr0"));
    rig.opticalDrives->add(QStringLiteral("/dev/sr1"), QStringLiteral("/media/cdrom1"));
    rig.opticalDrives->holdTrays();

    rig.click("optOpenCD");
    EXPECT_TRUE(rig.opticalDrives->calls().isEmpty());
    ASSERT_NE(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::BusyCursor);
    rig.click("optCloseCD"); // queued behind the first
    rig.opticalDrives->releaseTrays();

    const QStringList expected{QStringLiteral("open /dev/sr0"), QStringLiteral("close /dev/sr0")};
    EXPECT_TRUE(QTest::qWaitFor([&] { return rig.opticalDrives->calls() == expected; }, kWaitMs))
        << rig.opticalDrives->calls().join(u',').toStdString();
    EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::overrideCursor() == nullptr; }, kWaitMs));
}

// A right button down on either option button opens the CD-ROM menu (here closed again without a choice).
TEST(FrmCopyShell, RightClickOnAnOptionButtonOpensTheCdRomMenu)
{
    Rig rig;
    rig.opticalDrives->add(QStringLiteral("/dev/sr0"));
    QString bandTitle;
    QStringList captions;
    QTimer closer;
    closer.setInterval(5);
    QObject::connect(&closer, &QTimer::timeout, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return;
        if (const chrome::MenuBand* band = chrome::menuBandOf(menu))
            bandTitle = band->look().title;
        for (const QAction* action : menu->actions())
            captions << action->text();
        closer.stop();
        menu->close();
    });
    closer.start();

    QWidget* option = rig.child("optCloseCD");
    QTest::mousePress(option, Qt::RightButton);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !captions.isEmpty(); }, kWaitMs));
    QTest::mouseRelease(option, Qt::RightButton);
    EXPECT_EQ(bandTitle, "CD-ROM");
    EXPECT_TRUE(captions.contains(QStringLiteral("弹出[&E] 所有CD-ROM")));
    EXPECT_TRUE(captions.contains(QStringLiteral("关闭    CD-ROM")));
    EXPECT_FALSE(rig.child<QRadioButton>("optCloseCD")->isChecked());
    EXPECT_TRUE(rig.opticalDrives->calls().isEmpty()); // nothing chosen, no tray moved
}

TEST(FrmCopyShell, EveryTipOfTheTableIsAttached)
{
    Rig rig;
    for (const chrome::ToolTipEntry& entry : chrome::mainWindowToolTips()) {
        const chrome::ToolTips* tips = chrome::ToolTips::of(rig.child(entry.control.toLatin1().constData()));
        ASSERT_NE(tips, nullptr) << entry.control.toStdString();
        EXPECT_EQ(tips->title(), entry.title) << entry.control.toStdString();
        EXPECT_EQ(tips->text(), entry.text()) << entry.control.toStdString();
        EXPECT_NE(tips->balloon(), nullptr) << entry.control.toStdString();
    }
    EXPECT_EQ(chrome::attachToolTips(&rig.frm), QStringList());
    EXPECT_EQ(chrome::ToolTips::of(rig.child("lblBlock2Title"))->text(),
        "当遇到大块的坏区不能读取时\r\n建议你手动跳过去否则会消耗很长时间");

    rig.typePaths();
    EXPECT_EQ(rig.text("txtFileCopy")->toolTip(), kDestination); // its own tip: the whole path
}

TEST(FrmCopyShell, FileMenuExitAsksAndAboutOpensTheAboutWindow)
{
    Rig rig;
    triggerMenuEntry(rig, "mnuAboutMe");
    auto* about = rig.frm.findChild<sysinfo::ui::frmSplash*>();
    ASSERT_NE(about, nullptr);
    EXPECT_TRUE(about->isVisible());
    EXPECT_TRUE(about->isModal());
    EXPECT_TRUE(rig.boxes.shown.isEmpty());
    QPointer<sysinfo::ui::frmSplash> closed(about);
    about->cmdOK->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return closed.isNull(); }, kWaitMs)); // deleted once closed

    rig.boxes.answers = {platform::kAnswerYes};
    triggerMenuEntry(rig, "mnuExit");
    ASSERT_EQ(rig.boxes.shown.size(), 1);
    EXPECT_EQ(rig.boxes.shown[0].text, "真的要退出Vindaro吗？");
    EXPECT_FALSE(rig.frm.isVisible());
}

// "Copy all files to" runs the batch window over the whole list, with the main window disabled until the
// batch has ended, and refuses to close meanwhile.
TEST(FrmCopyShell, BatchCopyDisablesTheWindowUntilItEnds)
{
    Rig rig;
    ListedFiles listed;
    const QString first = listed.make(rig, QStringLiteral("AVSEQ01.DAT"));
    const QString second = listed.make(rig, QStringLiteral("AVSEQ02.DAT"));
    rig.listPrompts.openAnswer = {first, second};
    rig.click("cmdSourceFile");

    bool enabledWhileAsked = true;
    bool closedWhileAsked = true;
    rig.batchPrompts.folder = QStringLiteral("/home/user/out");
    rig.batchPrompts.sameFolder = true; // every file straight into the folder
    rig.batchPrompts.onChooseFolder = [&] {
        enabledWhileAsked = rig.frm.isEnabled();
        closedWhileAsked = rig.frm.close();
    };
    QSignalSpy ended(&rig.frm, &app::FrmCopy::batchCopyFinished);
    triggerMenuEntry(rig, "mnuCopyAllFilesTo");
    ASSERT_TRUE(ended.count() == 1 || ended.wait(kWaitMs));

    EXPECT_FALSE(enabledWhileAsked);
    EXPECT_FALSE(closedWhileAsked);
    EXPECT_TRUE(rig.boxes.shown.isEmpty()); // refused without a word
    EXPECT_TRUE(rig.frm.isEnabled());
    EXPECT_EQ(rig.files.bytes(QStringLiteral("/home/user/out/AVSEQ01.DAT")), positionBytes(kFileBytes));
    EXPECT_EQ(rig.files.bytes(QStringLiteral("/home/user/out/AVSEQ02.DAT")), positionBytes(kFileBytes));
    EXPECT_TRUE(QTest::qWaitFor([&] { return rig.frm.batchWindow() == nullptr; }, kWaitMs));
}

} // namespace
