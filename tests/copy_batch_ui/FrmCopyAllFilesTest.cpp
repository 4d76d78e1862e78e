// The batch window's wiring: the batch runs on the worker thread, its questions, log entries, files and
// figures reach the window, cancel and close act one tick later, and the window goes when the batch does.
// What the batch does with each file is the engine's, tested with it.
#include "copy/ui/FrmCopyAllFiles.h"
#include "copy/ThreadedCopyHost.h"
#include "copy/VolumeDriveFacts.h"
#include "copy/ui/CopyAnimation.h"
#include "copy_ui/HangingReads.h"
#include "fakes/FakeCopyHost.h"
#include "fakes/FakeVolumes.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <functional>

using namespace vindaro;
using copy::FrmCopyAllFiles;
using vindaro::testing::HangingReads;
using vindaro::testing::positionBytes;

namespace {

constexpr int kWaitMs = 20000;
constexpr qint64 kStep = 40960; // 10 blocks of 4096 from an optical drive
const QString kA = QStringLiteral("/media/cdrom/MPEGAV/AVSEQ01.DAT");
const QString kB = QStringLiteral("/media/cdrom/MPEGAV/AVSEQ02.DAT");
const QString kC = QStringLiteral("/media/cdrom/SEGMENT/ITEM0001.DAT");
const QString kOut = QStringLiteral("/home/u/out/");

class ScriptedPrompts final : public copy::BatchPrompts
{
public:
    QString folder = QStringLiteral("/home/u/out");
    bool sameDir = true;
    QList<platform::MessageBox> boxes;
    QList<copy::BatchExistingChoice> batchAnswers; // EndBatch when out
    int existingAsked = 0;
    std::function<void()> whileAskingExisting; // runs inside the existing-file question

    int showBox(const platform::MessageBox& box, QWidget*) override
    {
        boxes.append(box);
        return box.buttons == platform::BoxButtons::Ok ? platform::kAnswerOk : platform::kAnswerNo;
    }
    QString chooseFolder(bool& copyToSameDir, QWidget*) override
    {
        copyToSameDir = sameDir;
        return folder;
    }
    copy::ContinueChoice askContinueCopy(const QString&, const QString&, QWidget*) override
    {
        return copy::ContinueChoice::GiveUp;
    }
    copy::BatchExistingChoice askBatchExistingFile(const QString&, const QString&, QWidget*) override
    {
        ++existingAsked;
        if (whileAskingExisting)
            whileAskingExisting();
        return batchAnswers.isEmpty() ? copy::BatchExistingChoice::EndBatch : batchAnswers.takeFirst();
    }
};

struct Rig
{
    vindaro::testing::MemoryFileLayer files;
    vindaro::testing::MemoryResumeStore store;
    // /media/cdrom a ready optical drive, the rest a disk with room to spare.
    vindaro::testing::FakeVolumes volumes;
    copy::VolumeDriveFacts drives{volumes};
    ScriptedPrompts prompts;
    QStringList logged;
    QTime clock{10, 0, 0};
    // The ticks are taken by hand: tmrTime's own interval is out of reach of any test.
    FrmCopyAllFiles frm{copy::FrmCopyAllFilesServices{files, store, drives, prompts,
        [this](const QString& entry) { logged << entry; }, [this] { return clock; }, 3600 * 1000}};
    QSignalSpy finished{&frm, &FrmCopyAllFiles::batchFinished};

    Rig()
    {
        volumes.add(QStringLiteral("/"), platform::kDriveFixed, QStringLiteral("/dev/sda1"));
        volumes.add(QStringLiteral("/media/cdrom"), platform::kDriveCdRom, QStringLiteral("/dev/sr0"));
        volumes.spaces.insert(QStringLiteral("/"), platform::VolumeSpace{quint64(1) << 40, quint64(1) << 40});
    }
    QString text(const char* name)
    {
        auto* label = frm.findChild<QLabel*>(QLatin1String(name));
        EXPECT_NE(label, nullptr) << name;
        return label ? label->text() : QString();
    }
    bool waitFinished() { return !finished.isEmpty() || finished.wait(kWaitMs); }
    void tick(int second)
    {
        clock = QTime(10, 0, second);
        frm.tmrTimeTimer();
    }
    bool waitCopied(const QString& copied)
    {
        return QTest::qWaitFor([&] { return text("lblYiFuZhi") == copied; }, kWaitMs);
    }
};

// Every listed file is copied, an entry that cannot be opened reaches the log and the batch goes on, the last
// file stays shown, and the window closes itself at the end with its timers and animation stopped.
TEST(FrmCopyAllFiles, CopiesEveryListedFileAndCloses)
{
    Rig rig;
    const QString locked = QStringLiteral("/media/cdrom/MPEGAV/LOCKED.DAT");
    rig.files.put(kA, positionBytes(3 * kStep + 17));
    rig.files.put(kC, QByteArray());
    rig.files.put(locked, positionBytes(100));
    rig.files.faults(locked).openReadErrno = EACCES;

    ASSERT_TRUE(rig.frm.CopyingFiles({kA, locked, kC}));
    EXPECT_TRUE(rig.frm.isRunning());
    EXPECT_FALSE(rig.frm.CopyingFiles({kA})); // one batch per window
    ASSERT_TRUE(rig.waitFinished());

    EXPECT_EQ(rig.files.bytes(kOut + QStringLiteral("AVSEQ01.DAT")), positionBytes(3 * kStep + 17));
    EXPECT_TRUE(rig.files.contains(kOut + QStringLiteral("ITEM0001.DAT")));
    EXPECT_EQ(rig.frm.result().finished, 2);
    EXPECT_EQ(rig.frm.result().failed, 1);
    ASSERT_EQ(rig.logged.size(), 1);
    EXPECT_TRUE(rig.logged[0].contains(locked));

    EXPECT_TRUE(rig.frm.isFinished());
    EXPECT_FALSE(rig.frm.isRunning());
    EXPECT_FALSE(rig.frm.isVisible());
    EXPECT_FALSE(rig.frm.animation().isRunning());
    EXPECT_FALSE(rig.frm.findChild<QTimer*>(QStringLiteral("tmrTime"))->isActive());
    EXPECT_TRUE(rig.text("lblSurFilePath").contains(kC));
    EXPECT_TRUE(rig.text("lblDecFilePath").contains(kOut + QStringLiteral("ITEM0001.DAT")));
    EXPECT_TRUE(rig.text("lblTotalFiles").startsWith(QStringLiteral("3/3")));
}

// While a read hangs, the window shows the file in hand and the copied bytes of the whole batch, its
// animation runs, and the one-second tick computes the batch's figures: seconds of the finished files
// plus the current one, copied = finished files + position of the current one.
TEST(FrmCopyAllFiles, ShowsBatchFiguresOverTwoFilesWhileReadsHang)
{
    Rig rig;
    constexpr qint64 kLength = 3 * kStep + 1;
    rig.files.put(kA, positionBytes(kLength));
    rig.files.put(kB, positionBytes(kLength));
    rig.prompts.sameDir = false; // each file keeps its folder below the disc
    HangingReads hang;
    hang.install(rig.files, {kA, kB}, 2 * kStep); // the third block of each file
    ASSERT_TRUE(rig.frm.CopyingFiles({kA, kB}));

    ASSERT_TRUE(hang.waitEntered());
    EXPECT_TRUE(rig.waitCopied(QStringLiteral("40,961字节"))) << rig.text("lblYiFuZhi").toStdString();
    EXPECT_TRUE(rig.text("lblSurFilePath").contains(kA));
    EXPECT_TRUE(rig.text("lblDecFilePath").contains(kOut + QStringLiteral("MPEGAV/AVSEQ01.DAT")));
    EXPECT_TRUE(rig.text("lblTotalFiles").startsWith(QStringLiteral("1/2")));
    EXPECT_TRUE(rig.frm.isVisible());
    EXPECT_TRUE(rig.frm.animation().isRunning());
    const qreal phase = rig.frm.animation().phase();
    EXPECT_TRUE(QTest::qWaitFor([&] { return rig.frm.animation().phase() != phase; }, kWaitMs)); // it moves

    rig.tick(3); // three seconds into the first file
    EXPECT_EQ(rig.text("lblZongJiHaoShi"), QStringLiteral("00:00:03"));
    EXPECT_EQ(rig.text("lblCurrentTime"), QStringLiteral("10:00:03"));
    EXPECT_EQ(rig.text("lblShuJuLiuLiang"), QStringLiteral("13KB/秒")); // 40,961 / 1024 / 3
    EXPECT_EQ(rig.text("lblGuJiXiaoHao"), QStringLiteral("00:00:18")); // 245,762 / (40,961 / 3)

    hang.release.release();
    ASSERT_TRUE(hang.waitEntered()); // the second file, at its third block
    EXPECT_TRUE(rig.waitCopied(QStringLiteral("163,842字节"))) // 122,881 + 40,961
        << rig.text("lblYiFuZhi").toStdString();
    EXPECT_TRUE(rig.text("lblTotalFiles").startsWith(QStringLiteral("2/2")));
    rig.tick(5); // two seconds into the second file
    EXPECT_EQ(rig.text("lblZongJiHaoShi"), QStringLiteral("00:00:05"));
    EXPECT_EQ(rig.text("lblShuJuLiuLiang"), QStringLiteral("32KB/秒")); // 163,842 / 1024 / 5
    EXPECT_EQ(rig.text("lblGuJiXiaoHao"), QStringLiteral("00:00:07")); // 245,762 / (163,842 / 5) = 7.49998

    hang.release.release();
    ASSERT_TRUE(rig.waitFinished());
    EXPECT_FALSE(rig.frm.animation().isRunning());
    EXPECT_FALSE(rig.frm.isVisible());
}

// Cancel, and closing the window while files are copied, act one tick later, between blocks: the click
// itself changes no flag and the window stays. Made in the middle of a file, the file keeps what was copied
// with a resume record; made in its last block, the file is complete and has none. Either way the files
// after it are never created, and nothing is asked.
TEST(FrmCopyAllFiles, CancelAndCloseActAtTheStopTickAndEndTheBatchAtTheFileInHand)
{
    const struct
    {
        bool byClose;
        qint64 lengthA; // the read of the third block hangs: the middle or the last block
        bool record;
    } rows[] = {{false, 5 * kStep + 1, true}, {true, 3 * kStep + 1, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.byClose ? "close" : "cancel");
        Rig rig;
        rig.files.put(kA, positionBytes(row.lengthA));
        rig.files.put(kB, positionBytes(kStep));
        HangingReads hang;
        hang.install(rig.files, {kA}, 2 * kStep);
        ASSERT_TRUE(rig.frm.CopyingFiles({kA, kB}));
        ASSERT_TRUE(hang.waitEntered());

        auto* stopTick = rig.frm.findChild<QTimer*>(QStringLiteral("tmrStop"));
        if (row.byClose)
            EXPECT_FALSE(rig.frm.close()); // refused, and taken as a cancel
        else
            QTest::mouseClick(rig.frm.findChild<QPushButton*>(QStringLiteral("cmdCancel")), Qt::LeftButton);
        EXPECT_FALSE(rig.frm.copyState().stopRequested);
        EXPECT_FALSE(rig.frm.copyState().cancelRequested);
        EXPECT_TRUE(stopTick->isActive());
        EXPECT_TRUE(rig.frm.isVisible());
        EXPECT_TRUE(QTest::qWaitFor([&] { return rig.frm.copyState().cancelRequested.load(); }, kWaitMs));
        EXPECT_TRUE(rig.frm.copyState().stopRequested);
        EXPECT_FALSE(stopTick->isActive()); // one tick only

        hang.release.release(); // the hanging block is finished, then the loop leaves
        ASSERT_TRUE(rig.waitFinished());
        const QString destination = kOut + QStringLiteral("AVSEQ01.DAT");
        EXPECT_EQ(rig.files.bytes(destination), positionBytes(3 * kStep + 1));
        EXPECT_EQ(rig.store.records.contains(destination), row.record);
        EXPECT_FALSE(rig.files.contains(kOut + QStringLiteral("AVSEQ02.DAT")));
        EXPECT_TRUE(rig.frm.result().cancelled);
        EXPECT_FALSE(rig.frm.isVisible());
        EXPECT_TRUE(rig.prompts.boxes.isEmpty());
    }
}

// The existing-file question reaches the prompts on the UI thread and its answer comes back. A cancel whose
// stop tick fires while the question is open ends the batch at that file; when the answer leaves the file
// alone, nothing of it was copied: it gets no resume record, even though the file before it stopped
// half-way and left its position behind.
TEST(FrmCopyAllFiles, CancelDuringAQuestionLeavesNoRecordForAFileNotCopied)
{
    Rig rig;
    rig.files.put(kA, positionBytes(5 * kStep));
    rig.files.put(kB, positionBytes(kStep));
    const QString destinationA = kOut + QStringLiteral("AVSEQ01.DAT");
    const QString destinationB = kOut + QStringLiteral("AVSEQ02.DAT");
    rig.files.put(destinationA, QByteArray());
    rig.files.faults(destinationA).writeLimit = 2 * kStep;
    rig.files.faults(destinationA).writeErrno = EACCES; // logged; the batch goes on with the next file
    rig.files.put(destinationB, QByteArray(kStep, 'b')); // the same length: "keep both" skips it
    rig.prompts.batchAnswers = {copy::BatchExistingChoice::Overwrite, copy::BatchExistingChoice::KeepBoth};
    bool onUiThread = true;
    rig.prompts.whileAskingExisting = [&] {
        onUiThread = onUiThread && QThread::currentThread() == qApp->thread();
        if (rig.prompts.existingAsked < 2)
            return; // the question for the first file
        rig.frm.findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click();
        EXPECT_TRUE(QTest::qWaitFor([&] { return rig.frm.copyState().cancelRequested.load(); }, kWaitMs));
    };
    ASSERT_TRUE(rig.frm.CopyingFiles({kA, kB}));
    ASSERT_TRUE(rig.waitFinished());

    EXPECT_TRUE(onUiThread);
    EXPECT_EQ(rig.prompts.existingAsked, 2);
    EXPECT_EQ(rig.files.bytes(destinationA), positionBytes(2 * kStep)); // overwritten up to the fault
    EXPECT_EQ(rig.logged.size(), 1); // the first file's failure
    EXPECT_EQ(rig.files.bytes(destinationB), QByteArray(kStep, 'b'));
    EXPECT_FALSE(rig.store.records.contains(destinationB));
    EXPECT_TRUE(rig.frm.result().cancelled);
    EXPECT_EQ(rig.frm.result().skipped, 1);
}

// A window destroyed while its batch runs (the program ends) waits for the worker, and the batch ends
// with the file in hand, even when the end of that file clears the engine's flags: the files after it
// are not copied without a window.
TEST(FrmCopyAllFiles, DestroyedWindowEndsTheBatchAtTheFileInHand)
{
    Rig rig;
    auto* frm
        = new FrmCopyAllFiles(copy::FrmCopyAllFilesServices{rig.files, rig.store, rig.drives, rig.prompts});
    const QStringList sources = {kA, kB, kC};
    for (const QString& source : sources)
        rig.files.put(source, positionBytes(kStep + 1));
    std::atomic<bool> waiting{false};
    rig.files.setReadHook([&](const QString& path, qint64 at, qint64) {
        if (path != kA || at != 0)
            return;
        waiting = true;
        while (!frm->worker().isShuttingDown()) // the window's destructor has begun
            QThread::yieldCurrentThread();
    });
    ASSERT_TRUE(frm->CopyingFiles(sources));
    ASSERT_TRUE(QTest::qWaitFor([&] { return waiting.load(); }, kWaitMs));
    delete frm;

    EXPECT_EQ(rig.files.bytes(kOut + QStringLiteral("AVSEQ01.DAT")), positionBytes(kStep + 1)); // one block
    EXPECT_FALSE(rig.files.contains(kOut + QStringLiteral("ITEM0001.DAT")));
}

// No folder chosen: nothing is read, the window never shows and closes at once.
TEST(FrmCopyAllFiles, NoFolderEndsTheBatchWithoutShowingTheWindow)
{
    Rig rig;
    rig.files.put(kA, positionBytes(10));
    rig.prompts.folder.clear();
    ASSERT_TRUE(rig.frm.CopyingFiles({kA}));
    ASSERT_TRUE(rig.waitFinished());
    EXPECT_FALSE(rig.frm.result().started);
    EXPECT_FALSE(rig.frm.isVisible());
    EXPECT_FALSE(rig.frm.animation().isRunning());
    EXPECT_EQ(rig.files.readCount(), 0);
}

} // namespace
