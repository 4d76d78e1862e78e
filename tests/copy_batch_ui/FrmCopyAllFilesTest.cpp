#include "copy/ui/FrmCopyAllFiles.h"
#include "copy/ThreadedCopyHost.h"
#include "copy/ui/CopyAnimation.h"
#include "fakes/FakeCopyHost.h"
#include "fakes/MemoryFileLayer.h"
#include "platform/Volumes.h"

#include <QLabel>
#include <QPushButton>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <functional>

using namespace vindaro;
using copy::FrmCopyAllFiles;
using vindaro::testing::MemoryFileLayer;
using vindaro::testing::MemoryResumeStore;
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
    QList<copy::BatchExistingChoice>
        batchAnswers; // answers of the batch existing-file dialog; EndBatch when out
    QStringList asked; // "folder", "continue", "existing:<destination>"
    std::function<void()> whileAskingExisting; // runs inside the existing-file question

    int showBox(const platform::MessageBox& box, QWidget*) override
    {
        boxes.append(box);
        return box.buttons == platform::BoxButtons::Ok ? platform::kAnswerOk : platform::kAnswerNo;
    }
    QString chooseFolder(bool& copyToSameDir, QWidget*) override
    {
        asked << QStringLiteral("folder");
        copyToSameDir = sameDir;
        return folder;
    }
    copy::ContinueChoice askContinueCopy(const QString&, const QString&, QWidget*) override
    {
        asked << QStringLiteral("continue");
        return copy::ContinueChoice::GiveUp;
    }
    copy::BatchExistingChoice askBatchExistingFile(
        const QString&, const QString& destination, QWidget*) override
    {
        asked << QStringLiteral("existing:") + destination;
        if (whileAskingExisting)
            whileAskingExisting();
        return batchAnswers.isEmpty() ? copy::BatchExistingChoice::EndBatch : batchAnswers.takeFirst();
    }
};

// /media/cdrom is a ready optical drive; everything else a fixed drive with room to spare.
class Drives final : public copy::DriveFacts
{
public:
    int driveType(const QString& path) override
    {
        return path.startsWith(QLatin1String("/media/cdrom")) ? platform::kDriveCdRom : platform::kDriveFixed;
    }
    double freeBytes(const QString&) override { return 1e12; }
    bool driveIsReady(const QString&) override { return true; }
    QString driveName(const QString& path) override
    {
        return path.startsWith(QLatin1String("/media/cdrom")) ? QStringLiteral("/media/cdrom")
                                                              : QStringLiteral("/");
    }
    bool isFloppy(const QString&) override { return false; }
};

// Reads of chosen files at one offset hang until the test lets each go, as a scratched sector can.
struct HangingReads
{
    QSemaphore entered;
    QSemaphore release;

    void install(MemoryFileLayer& files, QStringList paths, qint64 offset)
    {
        files.setReadHook([this, paths, offset](const QString& path, qint64 at, qint64) {
            if (at == offset && paths.contains(path)) {
                entered.release();
                release.acquire();
            }
        });
    }
    bool waitEntered()
    {
        return QTest::qWaitFor([this] { return entered.tryAcquire(); }, kWaitMs);
    }
};

struct Rig
{
    MemoryFileLayer files;
    MemoryResumeStore store;
    Drives drives;
    ScriptedPrompts prompts;
    QStringList logged;
    QTime clock{10, 0, 0};
    // The ticks are taken by hand: tmrTime's own interval is out of reach of any test.
    FrmCopyAllFiles frm{copy::FrmCopyAllFilesServices{files, store, drives, prompts,
        [this](const QString& entry) { logged << entry; }, [this] { return clock; }, 3600 * 1000}};
    QSignalSpy finished{&frm, &FrmCopyAllFiles::batchFinished};

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
};

// Three files and an entry that no longer exists: the files arrive whole (an empty one too), a source
// that cannot be opened is logged and the batch goes on, and the window closes itself at the end.
TEST(FrmCopyAllFiles, CopiesEveryListedFileAndCloses)
{
    Rig rig;
    const QString locked = QStringLiteral("/media/cdrom/MPEGAV/LOCKED.DAT");
    rig.files.put(kA, positionBytes(3 * kStep + 17));
    rig.files.put(kB, positionBytes(kStep / 2));
    rig.files.put(kC, QByteArray());
    rig.files.put(locked, positionBytes(100));
    rig.files.faults(locked).openReadErrno = EACCES;

    ASSERT_TRUE(rig.frm.CopyingFiles({kA, QStringLiteral("/media/cdrom/gone.dat"), locked, kB, kC}));
    EXPECT_TRUE(rig.frm.isRunning());
    EXPECT_FALSE(rig.frm.CopyingFiles({kA})); // one batch per window
    ASSERT_TRUE(rig.waitFinished());

    EXPECT_EQ(rig.files.bytes(kOut + QStringLiteral("AVSEQ01.DAT")), positionBytes(3 * kStep + 17));
    EXPECT_EQ(rig.files.bytes(kOut + QStringLiteral("AVSEQ02.DAT")), positionBytes(kStep / 2));
    EXPECT_TRUE(rig.files.contains(kOut + QStringLiteral("ITEM0001.DAT")));
    const copy::BatchResult& r = rig.frm.result();
    EXPECT_TRUE(r.started);
    EXPECT_EQ(r.files, 4);
    EXPECT_EQ(r.finished, 3);
    EXPECT_EQ(r.failed, 1);
    ASSERT_EQ(rig.logged.size(), 1);
    EXPECT_TRUE(
        rig.logged[0].startsWith(QStringLiteral("复制文件“") + locked + QStringLiteral("”时遇到错误。")));
    EXPECT_TRUE(rig.logged[0].endsWith(QStringLiteral("错误原因：共享冲突,源文件或目标文件可能正在使用。")));
    EXPECT_EQ(rig.frm.counters().copiedBytes, 3 * kStep + 17 + kStep / 2 + 100); // a failed file counts too

    EXPECT_TRUE(rig.frm.isFinished());
    EXPECT_FALSE(rig.frm.isRunning());
    EXPECT_FALSE(rig.frm.isVisible());
    EXPECT_FALSE(rig.frm.animation().isRunning());
    EXPECT_FALSE(rig.frm.findChild<QTimer*>(QStringLiteral("tmrTime"))->isActive());
    EXPECT_EQ(rig.text("lblSurFilePath"), QStringLiteral("从“") + kC + QStringLiteral("”"));
    EXPECT_EQ(rig.text("lblDecFilePath"), QStringLiteral("到“") + kOut + QStringLiteral("ITEM0001.DAT”"));
    EXPECT_EQ(rig.text("lblTotalFiles"), QStringLiteral("4/4 ]"));
    EXPECT_EQ(rig.text("lblTotalLength"), QStringLiteral("[ 总共：140 KB")); // 143,477 bytes
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
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return rig.text("lblYiFuZhi") == QStringLiteral("40,961字节"); }, kWaitMs))
        << rig.text("lblYiFuZhi").toStdString();
    EXPECT_EQ(rig.text("lblSurFilePath"), QStringLiteral("从“") + kA + QStringLiteral("”"));
    EXPECT_EQ(
        rig.text("lblDecFilePath"), QStringLiteral("到“") + kOut + QStringLiteral("MPEGAV/AVSEQ01.DAT”"));
    EXPECT_EQ(rig.text("lblTotalFiles"), QStringLiteral("1/2 ]"));
    EXPECT_EQ(rig.text("lblTotalLength"), QStringLiteral("[ 总共：240 KB"));
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
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return rig.text("lblYiFuZhi") == QStringLiteral("163,842字节"); }, kWaitMs)) // 122,881 + 40,961
        << rig.text("lblYiFuZhi").toStdString();
    EXPECT_EQ(rig.text("lblTotalFiles"), QStringLiteral("2/2 ]"));
    EXPECT_EQ(rig.frm.counters().finishedSeconds, 3);
    rig.tick(5); // two seconds into the second file
    EXPECT_EQ(rig.text("lblZongJiHaoShi"), QStringLiteral("00:00:05"));
    EXPECT_EQ(rig.text("lblShuJuLiuLiang"), QStringLiteral("32KB/秒")); // 163,842 / 1024 / 5
    EXPECT_EQ(rig.text("lblGuJiXiaoHao"), QStringLiteral("00:00:07")); // 245,762 / (163,842 / 5) = 7.49998

    hang.release.release();
    ASSERT_TRUE(rig.waitFinished());
    EXPECT_EQ(rig.files.bytes(kOut + QStringLiteral("MPEGAV/AVSEQ02.DAT")), positionBytes(kLength));
    EXPECT_FALSE(rig.frm.animation().isRunning());
    EXPECT_FALSE(rig.frm.isVisible());
}

// Cancel acts one tick later, between blocks: the click itself changes no flag. The file in hand keeps
// what was copied and gets a resume record; the files after it are not started.
TEST(FrmCopyAllFiles, CancelActsAtTheStopTickAndKeepsThePartialFile)
{
    Rig rig;
    rig.files.put(kA, positionBytes(5 * kStep + 1));
    rig.files.put(kB, positionBytes(kStep));
    HangingReads hang;
    hang.install(rig.files, {kA}, 2 * kStep);
    ASSERT_TRUE(rig.frm.CopyingFiles({kA, kB}));
    ASSERT_TRUE(hang.waitEntered());

    auto* cancel = rig.frm.findChild<QPushButton*>(QStringLiteral("cmdCancel"));
    ASSERT_NE(cancel, nullptr);
    QTest::mouseClick(cancel, Qt::LeftButton);
    EXPECT_FALSE(rig.frm.copyState().stopRequested);
    EXPECT_FALSE(rig.frm.copyState().cancelRequested);
    EXPECT_TRUE(rig.frm.findChild<QTimer*>(QStringLiteral("tmrStop"))->isActive());
    EXPECT_TRUE(QTest::qWaitFor([&] { return rig.frm.copyState().cancelRequested.load(); }, kWaitMs));
    EXPECT_TRUE(rig.frm.copyState().stopRequested);
    EXPECT_FALSE(rig.frm.findChild<QTimer*>(QStringLiteral("tmrStop"))->isActive()); // one tick only

    hang.release.release(); // the hanging block is finished, then the loop leaves
    ASSERT_TRUE(rig.waitFinished());
    const QString destination = kOut + QStringLiteral("AVSEQ01.DAT");
    EXPECT_EQ(rig.files.bytes(destination), positionBytes(3 * kStep + 1));
    ASSERT_TRUE(rig.store.records.contains(destination));
    EXPECT_EQ(rig.store.records[destination].continuePosition, 3 * kStep + 1);
    EXPECT_FALSE(rig.files.contains(kOut + QStringLiteral("AVSEQ02.DAT")));
    EXPECT_TRUE(rig.frm.result().cancelled);
    EXPECT_FALSE(rig.frm.isVisible());
    EXPECT_TRUE(rig.prompts.boxes.isEmpty()); // a batch cancel asks nothing
}

// A cancel whose stop tick fires while the existing-file question is open ends the batch at that file.
// When the answer leaves the file alone, nothing of it was copied: it gets no resume record, even though
// the file before it stopped half-way and left its position behind.
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
    auto* cancel = rig.frm.findChild<QPushButton*>(QStringLiteral("cmdCancel"));
    ASSERT_NE(cancel, nullptr);
    rig.prompts.whileAskingExisting = [&] {
        if (rig.prompts.asked.size() < 3)
            return; // the question for the first file
        QTest::mouseClick(cancel, Qt::LeftButton);
        EXPECT_TRUE(QTest::qWaitFor([&] { return rig.frm.copyState().cancelRequested.load(); }, kWaitMs));
    };
    ASSERT_TRUE(rig.frm.CopyingFiles({kA, kB}));
    ASSERT_TRUE(rig.waitFinished());

    EXPECT_EQ(rig.prompts.asked.size(), 3);
    EXPECT_EQ(rig.logged.size(), 1); // the first file's failure
    EXPECT_EQ(rig.files.bytes(destinationB), QByteArray(kStep, 'b'));
    EXPECT_FALSE(rig.store.records.contains(destinationB));
    EXPECT_TRUE(rig.frm.result().cancelled);
    EXPECT_EQ(rig.frm.result().skipped, 1);
}

// Closing the window while files are copied is a cancel. Made during the last block of a file, it ends
// the batch there: that file is complete (so no resume record), and the next one is never created.
TEST(FrmCopyAllFiles, CloseDuringTheLastBlockEndsTheBatchAfterThatFile)
{
    Rig rig;
    rig.files.put(kA, positionBytes(3 * kStep + 1));
    rig.files.put(kB, positionBytes(kStep));
    HangingReads hang;
    hang.install(rig.files, {kA}, 2 * kStep); // the last block of the first file
    ASSERT_TRUE(rig.frm.CopyingFiles({kA, kB}));
    ASSERT_TRUE(hang.waitEntered());

    EXPECT_FALSE(rig.frm.close()); // refused, and taken as a cancel
    EXPECT_TRUE(rig.frm.isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return rig.frm.copyState().cancelRequested.load(); }, kWaitMs));
    hang.release.release();
    ASSERT_TRUE(rig.waitFinished());

    EXPECT_EQ(rig.files.bytes(kOut + QStringLiteral("AVSEQ01.DAT")), positionBytes(3 * kStep + 1));
    EXPECT_FALSE(rig.files.contains(kOut + QStringLiteral("AVSEQ02.DAT")));
    EXPECT_TRUE(rig.store.records.isEmpty());
    EXPECT_TRUE(rig.frm.result().cancelled);
    EXPECT_EQ(rig.frm.result().finished, 1);
    EXPECT_FALSE(rig.frm.isVisible());
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

// The existing-file question reaches the prompts from the worker thread and its answer comes back:
// "overwrite all" on the first conflict overwrites the second without asking again.
TEST(FrmCopyAllFiles, ExistingFileQuestionIsAskedOnTheUiThread)
{
    Rig rig;
    rig.files.put(kA, positionBytes(kStep + 5));
    rig.files.put(kB, positionBytes(7));
    rig.files.put(kOut + QStringLiteral("AVSEQ01.DAT"), QByteArray(3 * kStep, 'x'));
    rig.files.put(kOut + QStringLiteral("AVSEQ02.DAT"), QByteArray(9, 'y'));
    rig.prompts.batchAnswers = {copy::BatchExistingChoice::OverwriteAll};
    ASSERT_TRUE(rig.frm.CopyingFiles({kA, kB}));
    ASSERT_TRUE(rig.waitFinished());
    EXPECT_EQ(rig.prompts.asked,
        (QStringList{
            QStringLiteral("folder"), QStringLiteral("existing:") + kOut + QStringLiteral("AVSEQ01.DAT")}));
    EXPECT_EQ(rig.files.bytes(kOut + QStringLiteral("AVSEQ01.DAT")), positionBytes(kStep + 5));
    EXPECT_EQ(rig.files.bytes(kOut + QStringLiteral("AVSEQ02.DAT")), positionBytes(7));
}

// No folder chosen: nothing is copied, the window never shows and closes at once.
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

// Ten thousand small files (some empty) in one batch: every one arrives and the counters add up.
TEST(FrmCopyAllFiles, TenThousandSmallFiles)
{
    Rig rig;
    constexpr int kFiles = 10000;
    QStringList entries;
    qint64 total = 0;
    for (int i = 0; i < kFiles; ++i) {
        const QString path = QStringLiteral("/media/cdrom/MANY/F%1.DAT").arg(i, 5, 10, QLatin1Char('0'));
        const qint64 length = i % 97; // 0 .. 96 bytes
        rig.files.put(path, positionBytes(length));
        total += length;
        entries << path;
    }
    ASSERT_TRUE(rig.frm.CopyingFiles(entries));
    ASSERT_TRUE(rig.waitFinished());

    const copy::BatchResult& r = rig.frm.result();
    EXPECT_EQ(r.files, kFiles);
    EXPECT_EQ(r.finished, kFiles);
    EXPECT_EQ(rig.frm.counters().totalBytes, total);
    EXPECT_EQ(rig.frm.counters().copiedBytes, total);
    EXPECT_EQ(rig.text("lblTotalFiles"), QStringLiteral("10000/10000 ]"));
    int wrong = 0;
    for (int i = 0; i < kFiles; ++i) {
        const QString name = QStringLiteral("F%1.DAT").arg(i, 5, 10, QLatin1Char('0'));
        if (rig.files.bytes(kOut + name) != positionBytes(i % 97))
            ++wrong;
    }
    EXPECT_EQ(wrong, 0);
    // The display followed at its own pace, not once per file.
    EXPECT_LT(rig.frm.worker().progressRefreshes(), kFiles);
}

} // namespace
