#include "copy/ThreadedCopyHost.h"
#include "HangingReads.h"
#include "copy/BlockCopier.h"
#include "fakes/FakeCopyHost.h"
#include "fakes/MemoryFileLayer.h"

#include <QApplication>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

using namespace vindaro;
using copy::CopyOutcome;
using copy::ThreadedCopyHost;
using vindaro::testing::FakeCopyHost;
using vindaro::testing::HangingReads;
using vindaro::testing::MemoryFileLayer;
using vindaro::testing::MemoryResumeStore;
using vindaro::testing::positionBytes;

namespace {

constexpr qint64 kBlock = 1024;
constexpr int kWaitMs = 10000;
const QString kSource = QStringLiteral("/cd/a.dat");
const QString kDestination = QStringLiteral("/out/a.dat");

struct Rig
{
    MemoryFileLayer files;
    MemoryResumeStore store;
    FakeCopyHost ui; // lives on the UI thread
    copy::CopyState state;
    ThreadedCopyHost host{ui};
    copy::BlockCopier copier{state, host, files, store};
    QSignalSpy finished{&host, &ThreadedCopyHost::jobFinished};

    Rig(qint64 sourceLength, qint64 blockBytes)
    {
        files.put(kSource, positionBytes(sourceLength));
        state.blockBytes = blockBytes;
        state.position = 1;
        state.copyRunning = true;
    }
    bool start(qint64 step)
    {
        return host.run([this, step] { return int(copier.copyBlocks(kSource, kDestination, step)); });
    }
    int waitForOutcome()
    {
        if (finished.isEmpty() && !finished.wait(kWaitMs))
            return -1;
        return finished.takeFirst().at(0).toInt();
    }
};

// While one read hangs, the UI thread goes on: timers fire, the latest progress is shown, and a pause
// button can be clicked; the pause acts once that block is done.
TEST(ThreadedCopyHost, HangingReadLeavesTheWindowResponsive)
{
    Rig rig(8 * kBlock + 1, kBlock);
    HangingReads hang;
    hang.install(rig.files, {kSource}, 3 * kBlock);
    ASSERT_TRUE(rig.start(kBlock));
    ASSERT_TRUE(hang.waitEntered());

    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return ticks >= 3; }, kWaitMs));

    // The blocks before the hanging one reach the display without any other call from the worker.
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            return !rig.ui.progressPositions.isEmpty() && rig.ui.progressPositions.last() == 2 * kBlock + 1;
        },
        kWaitMs));

    QPushButton pause(QStringLiteral("pause"));
    QObject::connect(&pause, &QPushButton::clicked, [&] {
        rig.state.copyRunning = false;
        rig.state.stopRequested = true;
    });
    pause.show();
    QTest::mouseClick(&pause, Qt::LeftButton);
    EXPECT_TRUE(rig.state.stopRequested);
    EXPECT_TRUE(rig.host.isBusy());
    EXPECT_TRUE(rig.finished.isEmpty());

    hang.release.release();
    EXPECT_EQ(rig.waitForOutcome(), int(CopyOutcome::Paused));
    // The hanging block was finished and written; nothing after it was read.
    EXPECT_EQ(rig.state.position, 4 * kBlock + 1);
    EXPECT_EQ(rig.files.readOffsets(kSource).last(), 3 * kBlock);
    EXPECT_EQ(rig.files.bytes(kDestination), positionBytes(4 * kBlock + 1));
    EXPECT_EQ(rig.ui.switches, QStringList{QStringLiteral("timer-off")});
    EXPECT_FALSE(rig.host.isBusy());
}

// 20000 one-byte blocks: the display is refreshed at display rate, not once per block, and ends on the
// whole length the finish shows. Without the periodic refresh, the display still gets the final position
// before the finish, once.
TEST(ThreadedCopyHost, CoalescesProgressAndFlushesItBeforeOtherCalls)
{
    Rig many(20001, 1); // positions 1 .. 20000, the last one as the tail round
    ASSERT_TRUE(many.start(1));
    EXPECT_EQ(many.waitForOutcome(), int(CopyOutcome::Finished));
    EXPECT_EQ(many.files.bytes(kDestination), positionBytes(20001));
    EXPECT_EQ(many.ui.progressPositions.size(), many.host.progressRefreshes());
    EXPECT_GE(many.host.progressRefreshes(), 1);
    EXPECT_LT(many.host.progressRefreshes(), 20000 / 20);
    EXPECT_EQ(many.ui.progressPositions.last(), 20001);

    Rig unrefreshed(2001, 1);
    unrefreshed.host.setRefreshInterval(600000);
    ASSERT_TRUE(unrefreshed.start(1));
    EXPECT_EQ(unrefreshed.waitForOutcome(), int(CopyOutcome::Finished));
    EXPECT_EQ(unrefreshed.ui.progressPositions, QList<qint64>{2001});
    EXPECT_EQ(unrefreshed.ui.switches, QStringList{QStringLiteral("idle")});
}

// Questions are asked on the UI thread while the worker waits, and their answers reach the engine.
TEST(ThreadedCopyHost, AsksQuestionsOnTheUiThread)
{
    Rig rig(4 * kBlock + 1, kBlock);
    rig.state.stopRequested = true;
    rig.state.cancelRequested = true;
    rig.ui.answers = {platform::kAnswerYes};
    QThread* askedOn = nullptr;
    rig.ui.onBox = [&](const platform::MessageBox&) { askedOn = QThread::currentThread(); };
    ASSERT_TRUE(rig.start(kBlock));
    EXPECT_FALSE(rig.start(kBlock)); // one job at a time
    EXPECT_EQ(rig.waitForOutcome(), int(CopyOutcome::Cancelled));

    EXPECT_EQ(askedOn, qApp->thread());
    EXPECT_EQ(rig.ui.boxes.size(), 1); // delete the partial file?
    EXPECT_EQ(rig.ui.entries.size(), 1); // the cancel's log entry
    EXPECT_EQ(rig.ui.switches, (QStringList{QStringLiteral("timer-off"), QStringLiteral("reset")}));
    EXPECT_FALSE(rig.files.contains(kDestination)); // Yes deleted it
}

// Closing the window while the worker waits for an answer must not deadlock: the question is answered
// with the choice that keeps the user's file, and nothing is shown.
TEST(ThreadedCopyHost, ShutdownAnswersPendingQuestionsWithoutShowingThem)
{
    Rig rig(8 * kBlock + 1, kBlock);
    HangingReads hang;
    hang.install(rig.files, {kSource}, 2 * kBlock);
    ASSERT_TRUE(rig.start(kBlock));
    ASSERT_TRUE(hang.waitEntered());
    rig.state.stopRequested = true;
    rig.state.cancelRequested = true;
    hang.release.release(); // the worker goes on to its cancel question, which the UI thread never takes

    rig.host.shutdown();
    EXPECT_FALSE(rig.host.run([] { return 0; })); // nothing more runs after a shutdown
    EXPECT_TRUE(rig.ui.boxes.isEmpty());
    EXPECT_TRUE(rig.files.contains(kDestination));
    EXPECT_TRUE(rig.store.records.contains(kDestination)); // "No": kept, with a resume record
    EXPECT_EQ(rig.store.records.value(kDestination).continuePosition, 3 * kBlock + 1);
}

} // namespace
