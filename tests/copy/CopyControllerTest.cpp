#include "copy/CopyController.h"
#include "copy/ThreadedCopyHost.h"
#include "fakes/FakeCopyHost.h"
#include "fakes/MemoryFileLayer.h"
#include "platform/Volumes.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace vindaro::copy;
namespace fake = vindaro::testing;
namespace platform = vindaro::platform;

namespace {

class NoPrompts final : public CopyPrompts
{
public:
    int showBox(const platform::MessageBox&) override { return platform::kAnswerNo; }
    ContinueChoice askContinueCopy(const QString&, const QString&) override { return ContinueChoice::GiveUp; }
    ExistingFileAnswer askExistingFile(const QString&, const QString&) override { return {}; }
};

class FixedDrives final : public DriveFacts
{
public:
    int driveType(const QString&) override { return platform::kDriveCdRom; }
    double freeBytes(const QString&) override { return 1e12; }
    bool driveIsReady(const QString&) override { return true; }
    QString driveName(const QString&) override { return QStringLiteral("/media/cdrom"); }
    bool isFloppy(const QString&) override { return false; }
};

struct Rig
{
    fake::MemoryFileLayer files;
    fake::MemoryResumeStore store;
    FixedDrives drives;
    NoPrompts prompts;
    int second = 0;
    CopyController controller{
        CopyController::Services{files, store, drives, prompts, {}, [this] { return second; }}};
    CopyHost& engineSide() { return controller; } // what the worker's calls arrive at
    QTimer* timer() { return controller.findChild<QTimer*>(QStringLiteral("tmrTime")); }
};

CopyControls copying()
{
    CopyControls c;
    c.idle = false;
    c.destinationEnabled = false;
    c.setUpEnabled = false;
    c.pauseCaption = CopyController::kPauseCaption;
    c.pauseEnabled = true;
    c.cancelEnabled = true;
    return c;
}

// The switches of the engine and the pause button, from a running copy: what every control shows, whether
// the clock runs and which mode the controller is in.
TEST(CopyController, SwitchesSetEveryControl)
{
    CopyControls idle = copying();
    idle.idle = idle.destinationEnabled = idle.setUpEnabled = true;
    idle.pauseEnabled = idle.cancelEnabled = false;
    CopyControls paused = copying();
    paused.pauseCaption = CopyController::kContinueCaption;
    paused.cancelEnabled = false;
    paused.setUpEnabled = true;
    CopyControls stayPaused = copying();
    stayPaused.pauseCaption = CopyController::kContinueCaption;
    stayPaused.cancelEnabled = false;
    stayPaused.destinationEnabled = true;

    const struct
    {
        const char* name;
        std::function<void(Rig&)> act;
        CopyControls controls;
        bool clock;
        CopyController::Mode mode;
    } rows[] = {
        {"copying", [](Rig&) {}, copying(), true, CopyController::Mode::Copying},
        {"stopped", [](Rig& r) { r.engineSide().modeChanged(CopyMode::Stopped); }, copying(), false,
            CopyController::Mode::Copying},
        {"idle", [](Rig& r) { r.engineSide().modeChanged(CopyMode::Idle); }, idle, false,
            CopyController::Mode::Idle},
        {"idle after cancel", [](Rig& r) { r.engineSide().modeChanged(CopyMode::IdleAfterCancel); }, idle,
            false, CopyController::Mode::Idle},
        {"pause pressed", [](Rig& r) { r.controller.pauseOrContinue({}, {}); }, paused, true,
            CopyController::Mode::Paused},
        {"paused for room", [](Rig& r) { r.engineSide().modeChanged(CopyMode::StayPaused); }, stayPaused,
            true, CopyController::Mode::Paused},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Rig rig;
        QSignalSpy shown(&rig.controller, &CopyController::controlsChanged);
        rig.engineSide().modeChanged(CopyMode::Copying);
        row.act(rig);
        EXPECT_TRUE(rig.controller.controls() == row.controls);
        ASSERT_FALSE(shown.isEmpty());
        EXPECT_TRUE(shown.last().at(0).value<CopyControls>() == row.controls);
        EXPECT_EQ(rig.timer()->isActive(), row.clock);
        EXPECT_EQ(rig.controller.mode(), row.mode);
    }
}

// Idle keeps the last figures readable; after a cancel they go back to their idle texts.
TEST(CopyController, IdleKeepsTheFiguresAndACancelResetsThem)
{
    for (const bool cancelled : {false, true}) {
        Rig rig;
        CopyState& state = rig.controller.state();
        rig.engineSide().modeChanged(CopyMode::Copying);
        state.position = 10485761;
        state.sourceLength = 20971522;
        state.elapsedSeconds = 9;
        rig.second = 1;
        rig.controller.tick();
        rig.engineSide().modeChanged(cancelled ? CopyMode::IdleAfterCancel : CopyMode::Idle);
        EXPECT_EQ(state.meter.texts().throughput, cancelled ? "0KB/秒" : "1,024KB/秒");
    }
}

// The skip slider moved up while copying or paused moves the copy on; down, or while idle, it only sets the
// distance of later skips.
TEST(CopyController, SkipSliderMovesACopyInHandOn)
{
    Rig rig;
    CopyState& state = rig.controller.state();
    state.blockBytes = 4096;
    state.position = 1;
    rig.controller.setSkipBlocks(13);
    EXPECT_EQ(state.position, 1);
    EXPECT_EQ(state.skipBlocks, 13);
    rig.engineSide().modeChanged(CopyMode::Copying);
    rig.controller.setSkipBlocks(15);
    EXPECT_EQ(state.position, 1 + 2 * 4096);
    rig.controller.setSkipBlocks(5);
    EXPECT_EQ(state.position, 1 + 2 * 4096);
    rig.controller.pauseOrContinue({}, {});
    rig.controller.setSkipBlocks(6);
    EXPECT_EQ(state.position, 1 + 3 * 4096);
}

// One clock: the seconds count across the minute, the speed is unknown until a byte a second was copied,
// and a batch's figures keep their last estimate until one is known.
TEST(ProgressMeter, CountsSecondsAndWorksOutTheFigures)
{
    CopyState state;
    ProgressMeter& meter = state.meter;
    meter.start(57);
    for (int second : {58, 59, 0, 1, 1})
        meter.tick(second, 4, 1000); // slower than a byte per second
    EXPECT_EQ(state.elapsedSeconds, 5);
    ProgressTexts t = meter.texts();
    EXPECT_EQ(t.elapsed, "00:00:05");
    EXPECT_EQ(t.remaining, "--:--:--");
    EXPECT_EQ(t.estimated, "--:--:--");

    state.elapsedSeconds = 9;
    meter.tick(1, 10485761, 20971522); // the same second: counts one
    t = meter.texts();
    EXPECT_EQ(t.elapsed, "00:00:10");
    EXPECT_EQ(t.throughput, "1,024KB/秒");
    EXPECT_EQ(t.remaining, "00:00:10");
    EXPECT_EQ(t.estimated, "00:00:20");

    BatchCounters counters;
    CopyState batchState;
    batchState.meter.setBatch(&counters);
    counters.totalBytes = 1000;
    batchState.meter.start(0);
    batchState.meter.tick(1, 0, 0); // nothing copied: the estimate keeps its text
    EXPECT_EQ(batchState.meter.texts().estimated, "00:00:00");
    batchState.meter.tick(2, 500, 0);
    EXPECT_EQ(batchState.meter.texts().estimated, "00:00:04");
    EXPECT_EQ(batchState.meter.texts().elapsed, "00:00:02");
}

} // namespace
