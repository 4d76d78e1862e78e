#include "FrmCopyRig.h"
#include "chrome/ToolTips.h"
#include "copy/RescueMessages.h"
#include "copy/ThreadedCopyHost.h"
#include "copy/ui/DamageReportDialog.h"
#include "copy/ui/ProgressBar.h"
#include "copy/ui/RescueMapView.h"

#include <QCheckBox>
#include <QSemaphore>
#include <QSlider>

using namespace vindaro;
using namespace vindaro::testing;
using app::FrmCopy;
using copy::CopyOutcome;

namespace {

constexpr qint64 kBlock = 40960; // 10 blocks of 4096 from an optical drive

// The window with a source and a destination typed in.
struct CopyRig : Rig
{
    CopyRig() { typePaths(); }
};

// One read of the source hangs until the test lets it go.
struct HangingRead
{
    QSemaphore entered;
    QSemaphore release;

    MemoryFileLayer* hooked = nullptr;

    // A test that fails before letting the read go must not leave the worker stuck for the window's
    // destructor to wait on.
    ~HangingRead()
    {
        if (hooked)
            hooked->setReadHook(nullptr);
        release.release();
    }
    void install(MemoryFileLayer& files, qint64 offset)
    {
        hooked = &files;
        files.setReadHook([this, offset](const QString& path, qint64 at, qint64) {
            if (path == kSource && at == offset) {
                entered.release();
                release.acquire();
            }
        });
    }
    bool waitEntered()
    {
        return QTest::qWaitFor([this] { return entered.available() > 0; }, kWaitMs);
    }
};

TEST(FrmCopy, StartsIdleWithItsCaptionsAndDefaults)
{
    CopyRig rig;
    EXPECT_EQ(rig.button("cmdSourceFile")->text(), "要拷贝的文件[&F]");
    EXPECT_EQ(rig.button("cmdDestinationPath")->text(), "文件保存路径[&P]");
    EXPECT_EQ(rig.button("cmdStartCopy")->text(), "开始复制[&B]");
    EXPECT_EQ(rig.button("cmdPauseCopy")->text(), "暂停复制[&S]");
    EXPECT_EQ(rig.button("cmdCancelCopy")->text(), "取消复制[&C]");
    EXPECT_EQ(rig.button("cmdBackCopy")->text(), "返回设置>>");
    EXPECT_EQ(chrome::ToolTips::of(rig.button("cmdPauseCopy"))->text(), "暂停/继续复制文件");
    EXPECT_EQ(
        chrome::ToolTips::of(rig.child("sldReadBlocks"))->text(), "如果盘片质量不太好，建议块数设小一点");
    EXPECT_EQ(rig.figures(), kIdleFigures);
    EXPECT_EQ(rig.label("lblBlock1")->text(), "10块");
    EXPECT_EQ(rig.label("lblBlock2")->text(), "10块");
    ASSERT_NE(rig.timer(), nullptr);
    EXPECT_EQ(rig.timer()->interval(), 1000);
    EXPECT_FALSE(rig.timer()->isActive());
    EXPECT_FALSE(rig.button("cmdPauseCopy")->isEnabled());
    EXPECT_TRUE(rig.child("Picture1")->isVisible());
    EXPECT_FALSE(rig.child("Picture2")->isVisible());

    // The destination's tooltip follows its whole text.
    EXPECT_EQ(rig.text("txtFileCopy")->toolTip(), kDestination);
}

TEST(FrmCopy, SlidersOnTheSettingsPanelSetBlocks)
{
    CopyRig rig;
    auto* read = rig.child<QSlider>("sldReadBlocks");
    auto* skip = rig.child<QSlider>("sldSkipBlocks");
    EXPECT_EQ(read->maximum(), 100);
    EXPECT_EQ(read->minimum(), 1);
    EXPECT_EQ(skip->maximum(), 30);
    EXPECT_EQ(skip->minimum(), 1);

    rig.click("picSetUp");
    EXPECT_TRUE(rig.child("Picture2")->isVisible());
    EXPECT_FALSE(rig.child("Picture1")->isVisible());
    EXPECT_FALSE(rig.child("picSetUp")->isEnabled()); // until the panel is left

    read->setFocus();
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(read, Qt::Key_Left);
    EXPECT_EQ(rig.label("lblBlock1")->text(), "5块");
    EXPECT_EQ(rig.frm.copyState().readBlocks, 5);
    EXPECT_EQ(rig.frm.copyState().blockBytes, 5 * 4096);

    rig.combo()->setEditText(QStringLiteral("/media/cdrom/VIDEO_TS/VTS_01_1.vob"));
    read->setValue(10);
    EXPECT_EQ(rig.frm.copyState().blockBytes, 51200); // DVD sectors

    const qint64 positionBefore = rig.frm.copyState().position;
    skip->setValue(7);
    EXPECT_EQ(rig.label("lblBlock2")->text(), "7块");
    EXPECT_EQ(rig.frm.copyState().skipBlocks, 7);
    EXPECT_EQ(rig.frm.copyState().position, positionBefore); // idle: only the distance is kept

    rig.click("cmdBackCopy");
    EXPECT_TRUE(rig.child("Picture1")->isVisible());
    EXPECT_FALSE(rig.child("Picture2")->isVisible());
    EXPECT_TRUE(rig.child("picSetUp")->isEnabled());
}

// The controller's switches reach every control of the copy area; the figures follow its clock.
TEST(FrmCopy, ControlsAndFiguresFollowTheController)
{
    CopyRig rig;
    copy::CopyHost& engineSide = rig.frm.controller();
    const char* const inputs[] = {"cmbFileCopy", "txtFileCopy", "cmdStartCopy", "cmdSourceFile",
        "cmdDestinationPath", "picVTitleBar", "picRefresh", "picSearch", "picSetUp", "picWatch"};
    for (const bool copying : {true, false}) {
        SCOPED_TRACE(copying ? "copying" : "idle");
        engineSide.modeChanged(copying ? copy::CopyMode::Copying : copy::CopyMode::Idle);
        for (const char* name : inputs)
            EXPECT_EQ(rig.child(name)->isEnabled(), !copying) << name;
        EXPECT_EQ(rig.child("cmdPauseCopy")->isEnabled(), copying);
        EXPECT_EQ(rig.child("cmdCancelCopy")->isEnabled(), copying);
        EXPECT_EQ(rig.timer()->isActive(), copying);
    }
    engineSide.modeChanged(copy::CopyMode::Copying);
    rig.frm.copyState().position = 10485761;
    rig.frm.copyState().sourceLength = 20971522;
    rig.frm.copyState().elapsedSeconds = 9;
    engineSide.progress(10485761, 20971522);
    rig.frm.controller().tick();
    EXPECT_EQ(
        rig.figures(), (QStringList{"10,485,761字节", "00:00:10", "00:00:10", "00:00:20", "1,024KB/秒"}));
    EXPECT_FALSE(rig.child<copy::ProgressBar>("picProgressBar")->text().isEmpty());
    engineSide.modeChanged(copy::CopyMode::IdleAfterCancel);
    EXPECT_EQ(rig.figures(), kIdleFigures);
    EXPECT_TRUE(rig.child<copy::ProgressBar>("picProgressBar")->text().isEmpty());

    // The settings panel keeps its button off while it is open, whatever the switches say.
    rig.click("picSetUp");
    engineSide.modeChanged(copy::CopyMode::Idle);
    EXPECT_FALSE(rig.child("picSetUp")->isEnabled());
}

TEST(FrmCopy, ExitIsRefusedSilentlyDuringACopyAndAskedOtherwise)
{
    CopyRig rig;
    rig.frm.copyState().copyRunning = true;
    EXPECT_FALSE(rig.frm.close());
    EXPECT_TRUE(rig.boxes.shown.isEmpty());

    rig.frm.copyState().copyRunning = false;
    rig.boxes.answers = {platform::kAnswerNo, platform::kAnswerYes};
    EXPECT_FALSE(rig.frm.close());
    ASSERT_EQ(rig.boxes.shown.size(), 1);
    const platform::MessageBox& box = rig.boxes.shown[0];
    EXPECT_EQ(box.text, "真的要退出Vindaro吗？");
    EXPECT_EQ(box.title, "提醒！");
    EXPECT_EQ(box.icon, platform::BoxIcon::Exclamation);
    EXPECT_EQ(box.buttons, platform::BoxButtons::YesNo);
    EXPECT_TRUE(rig.frm.isVisible());

    EXPECT_TRUE(rig.frm.close());
}

// Quitting while a paused or cancelled copy still hangs in a read: the window closes at once, the record
// names what was written, and the abandoned worker writes nothing when its read returns at last.
TEST(FrmCopy, QuitWhileAReadHangsSavesTheRecordAndAbandonsTheWorker)
{
    for (const char* stop : {"cmdPauseCopy", "cmdCancelCopy"}) {
        SCOPED_TRACE(stop);
        CopyRig rig;
        rig.files.put(kSource, positionBytes(20 * kBlock + 1));
        HangingRead hang;
        hang.install(rig.files, 3 * kBlock);
        rig.click("cmdStartCopy");
        ASSERT_TRUE(hang.waitEntered());
        rig.click(stop);

        rig.boxes.answers = {platform::kAnswerYes};
        EXPECT_TRUE(rig.frm.close());
        EXPECT_TRUE(rig.frm.workerAbandoned());
        ASSERT_TRUE(rig.store.records.contains(kDestination));
        EXPECT_EQ(rig.store.records[kDestination].continuePosition, 3 * kBlock + 1);
        const QByteArray atQuit = rig.files.bytes(kDestination);
        EXPECT_EQ(atQuit, positionBytes(3 * kBlock + 1));

        hang.release.release();
        EXPECT_NE(rig.waitForOutcome(), -1); // the worker returns...
        EXPECT_EQ(rig.files.bytes(kDestination), atQuit); // ...without writing the block it had read
        EXPECT_EQ(rig.boxes.shown.size(), 1); // the quit question, nothing after it
    }
}

// A paused copy whose worker is idle is quit normally, and its record is kept too.
TEST(FrmCopy, QuitWhilePausedKeepsTheRecord)
{
    CopyRig rig;
    rig.files.put(kSource, positionBytes(20 * kBlock + 1));
    HangingRead hang;
    hang.install(rig.files, 2 * kBlock);
    rig.click("cmdStartCopy");
    ASSERT_TRUE(hang.waitEntered());
    rig.click("cmdPauseCopy");
    hang.release.release();
    EXPECT_EQ(rig.waitForOutcome(), int(CopyOutcome::Paused));

    rig.boxes.answers = {platform::kAnswerYes};
    EXPECT_TRUE(rig.frm.close());
    EXPECT_FALSE(rig.frm.workerAbandoned());
    ASSERT_TRUE(rig.store.records.contains(kDestination));
    EXPECT_EQ(rig.store.records[kDestination].continuePosition, 3 * kBlock + 1);
}

// A copy paused in a hanging read, skipped on by 3 blocks from the settings panel, and continued: the
// skipped stretch stays zero in the destination and the rest arrives.
TEST(FrmCopy, PauseSkipAndContinue)
{
    CopyRig rig;
    const qint64 length = 20 * kBlock + 1;
    rig.files.put(kSource, positionBytes(length));
    HangingRead hang;
    hang.install(rig.files, 2 * kBlock);

    rig.click("cmdStartCopy");
    ASSERT_TRUE(hang.waitEntered());
    EXPECT_EQ(rig.frm.copyState().blockBytes, kBlock);
    EXPECT_EQ(rig.frm.mode(), FrmCopy::Mode::Copying);
    EXPECT_FALSE(rig.child("picSetUp")->isEnabled());
    EXPECT_FALSE(rig.frm.close()); // nothing asked during a copy
    EXPECT_TRUE(rig.boxes.shown.isEmpty());

    rig.click("cmdPauseCopy");
    EXPECT_EQ(rig.button("cmdPauseCopy")->text(), "继续复制[&P]");
    EXPECT_FALSE(rig.button("cmdCancelCopy")->isEnabled());
    EXPECT_TRUE(rig.child("picSetUp")->isEnabled());
    EXPECT_FALSE(rig.button("cmdPauseCopy")->isEnabled()); // until the hanging block is done

    rig.boxes.answers = {platform::kAnswerNo}; // closing while paused asks; stay
    EXPECT_FALSE(rig.frm.close());
    ASSERT_EQ(rig.boxes.shown.size(), 1);
    EXPECT_EQ(rig.boxes.shown[0].text, "真的要退出Vindaro吗？");

    hang.release.release();
    EXPECT_EQ(rig.waitForOutcome(), int(CopyOutcome::Paused));
    EXPECT_TRUE(rig.button("cmdPauseCopy")->isEnabled());
    EXPECT_EQ(rig.frm.copyState().position, 3 * kBlock + 1);

    rig.click("picSetUp");
    auto* skip = rig.child<QSlider>("sldSkipBlocks");
    skip->setValue(13);
    EXPECT_EQ(rig.frm.copyState().position, 3 * kBlock + 1 + 122880);
    skip->setValue(11); // down: no step back
    EXPECT_EQ(rig.frm.copyState().position, 6 * kBlock + 1);
    rig.click("cmdBackCopy");

    rig.boxes.answers = {platform::kAnswerNo}; // the destination exists: append, do not overwrite
    rig.click("cmdPauseCopy");
    EXPECT_EQ(rig.waitForOutcome(), int(CopyOutcome::Finished));
    ASSERT_GE(rig.boxes.shown.size(), 3);
    EXPECT_TRUE(rig.boxes.shown[1].text.contains("该文件已经存在，是否覆盖或以追加方式继续复制？"));
    EXPECT_EQ(rig.boxes.shown.last().title, "文件复制完成！");

    const QByteArray source = positionBytes(length);
    const QByteArray copied = rig.files.bytes(kDestination);
    ASSERT_EQ(copied.size(), length);
    EXPECT_EQ(copied.left(3 * kBlock + 1), source.left(3 * kBlock + 1));
    EXPECT_EQ(copied.mid(3 * kBlock + 1, 3 * kBlock - 1), QByteArray(3 * kBlock - 1, '\0'));
    EXPECT_EQ(copied.mid(6 * kBlock), source.mid(6 * kBlock));
    EXPECT_EQ(rig.frm.mode(), FrmCopy::Mode::Idle);
    EXPECT_EQ(rig.button("cmdPauseCopy")->text(), "暂停复制[&S]");
}

// A pause pressed during the last block comes too late: the copy finishes. The next copy must still offer
// pause, and pausing it must work.
TEST(FrmCopy, PauseInTheLastBlockLeavesTheNextCopyPausable)
{
    CopyRig rig;
    rig.files.put(kSource, positionBytes(3 * kBlock + 1)); // blocks at offsets 0 and kBlock, tail at 2 kBlock
    {
        HangingRead lastBlock;
        lastBlock.install(rig.files, 2 * kBlock);
        rig.click("cmdStartCopy");
        ASSERT_TRUE(lastBlock.waitEntered());
        rig.click("cmdPauseCopy");
        EXPECT_EQ(rig.button("cmdPauseCopy")->text(), "继续复制[&P]");
        lastBlock.release.release();
        EXPECT_EQ(rig.waitForOutcome(), int(CopyOutcome::Finished));
        rig.files.setReadHook({});
    }
    EXPECT_EQ(rig.frm.mode(), FrmCopy::Mode::Idle);

    rig.typePaths(kSource, QStringLiteral("/home/user/video/b.dat"));
    HangingRead secondBlock;
    secondBlock.install(rig.files, kBlock);
    rig.click("cmdStartCopy");
    ASSERT_TRUE(secondBlock.waitEntered());
    EXPECT_EQ(rig.button("cmdPauseCopy")->text(), "暂停复制[&S]");
    rig.click("cmdPauseCopy");
    EXPECT_TRUE(rig.frm.copyState().stopRequested);
    secondBlock.release.release();
    EXPECT_EQ(rig.waitForOutcome(), int(CopyOutcome::Paused));
    EXPECT_EQ(rig.frm.mode(), FrmCopy::Mode::Paused);
}

// After a finished copy the figures stay as they were at the end; the copied figure shows the whole size.
TEST(FrmCopy, FinishedCopyKeepsItsFigures)
{
    CopyRig rig;
    const qint64 length = 4 * kBlock + 1;
    rig.files.put(kSource, positionBytes(length));
    HangingRead hang;
    hang.install(rig.files, 2 * kBlock);
    QStringList atFinish;
    rig.boxes.onBox = [&](const platform::MessageBox& box) {
        if (box.title == QStringLiteral("文件复制完成！"))
            atFinish = rig.figures();
    };

    rig.click("cmdStartCopy");
    ASSERT_TRUE(hang.waitEntered());
    rig.second = 5; // five seconds after the start
    rig.frm.controller().tick();
    hang.release.release();
    EXPECT_EQ(rig.waitForOutcome(), int(CopyOutcome::Finished));

    EXPECT_EQ(rig.figures(), atFinish);
    EXPECT_EQ(rig.label("lblYiFuZhi")->text(), "163,841字节");
    EXPECT_NE(rig.label("lblZongJiHaoShi")->text(), "00:00:00");
    EXPECT_NE(rig.label("lblShuJuLiuLiang")->text(), "0KB/秒");
    ASSERT_FALSE(rig.log.entries().isEmpty());
    EXPECT_TRUE(rig.log.entries().last().contains("被成功地复制到："));
    EXPECT_TRUE(rig.log.entries().last().endsWith(QStringLiteral("存取速度：") + atFinish[4]));
    EXPECT_TRUE(rig.child("cmdStartCopy")->isEnabled());
    EXPECT_FALSE(rig.timer()->isActive());
}

// A cancel answered with deletion removes the partial file and puts the figures back to their idle texts.
TEST(FrmCopy, CancelWithDeletionResetsTheFigures)
{
    CopyRig rig;
    rig.files.put(kSource, positionBytes(8 * kBlock + 1));
    HangingRead hang;
    hang.install(rig.files, 2 * kBlock);

    rig.click("cmdStartCopy");
    ASSERT_TRUE(hang.waitEntered());
    rig.second = 3;
    rig.frm.controller().tick();
    EXPECT_NE(rig.figures(), kIdleFigures);
    rig.boxes.answers = {platform::kAnswerYes};
    rig.click("cmdCancelCopy");
    hang.release.release();
    EXPECT_EQ(rig.waitForOutcome(), int(CopyOutcome::Cancelled));

    ASSERT_EQ(rig.boxes.shown.size(), 1);
    EXPECT_EQ(rig.boxes.shown[0].text, kDestination + QStringLiteral("\r\n该文件已经存在，是否删除？"));
    EXPECT_EQ(rig.figures(), kIdleFigures);
    EXPECT_FALSE(rig.files.contains(kDestination));
    EXPECT_TRUE(rig.log.entries().contains(QStringLiteral("取消复制：") + kSource));
    EXPECT_EQ(rig.frm.mode(), FrmCopy::Mode::Idle);
    EXPECT_TRUE(rig.child("cmdStartCopy")->isEnabled());
}

// A copy that skipped bytes asks whether to read them now (or, with the option set, does so at once); the
// refine pass reads them, the picture shows the map, and what stays missing comes in the damage report.
TEST(FrmCopy, SkippedBytesAreOfferedToTheRefinePassThenReported)
{
    for (const bool automatic : {false, true}) {
        SCOPED_TRACE(automatic ? "automatic" : "asked");
        CopyRig rig;
        rig.files.put(kSource, positionBytes(12 * kBlock));
        rig.files.faults(kSource).badReads = {ByteRange{5 * kBlock + 100, 1}};
        rig.child<QCheckBox>("chkAutoRefine")->setChecked(automatic);
        rig.boxes.answers = {platform::kAnswerYes};
        QSignalSpy reported(&rig.frm.controller(), &copy::CopyController::damageReportReady);

        rig.click("cmdStartCopy");
        EXPECT_EQ(rig.waitForOutcome(), int(CopyOutcome::FinishedWithSkips)); // the copy
        EXPECT_EQ(rig.waitForOutcome(), int(CopyOutcome::FinishedWithSkips)); // the refine pass: one bad byte
        const bool asked = std::any_of(
            rig.boxes.shown.begin(), rig.boxes.shown.end(), [](const platform::MessageBox& box) {
                return box.text.contains(QStringLiteral("是否现在读取跳过的部分"));
            });
        EXPECT_EQ(asked, !automatic);

        // Everything but the bad sector around byte 5 x 40,960 + 100 is in place.
        const QByteArray copied = rig.files.bytes(kDestination);
        ASSERT_EQ(copied.size(), 12 * kBlock);
        for (qint64 i = 0; i < copied.size(); i += 997) {
            if (i / 512 != (5 * kBlock + 100) / 512) {
                ASSERT_EQ(copied[i], positionBytes(12 * kBlock)[i]) << i;
            }
        }
        // The bad 512-byte sector, less its first byte, which the copy had read with the block before.
        const copy::RescueMap shown = rig.child<copy::RescueMapView>("picRescueMap")->map();
        EXPECT_EQ(shown.bytes(copy::RescueState::Bad), 511);
        EXPECT_EQ(
            copy::RescueMapView::cellState(shown, 0, shown.size()), copy::RescueState::Bad); // worst shows
        EXPECT_FALSE(rig.label("lblRefine")->text().isEmpty());
        ASSERT_TRUE(QTest::qWaitFor([&] { return !reported.isEmpty(); }, kWaitMs));
        EXPECT_NE(rig.frm.findChild<copy::DamageReportDialog*>(), nullptr);
        EXPECT_TRUE(rig.log.entries().last().startsWith(QStringLiteral("损坏报告")));
    }
}

} // namespace
