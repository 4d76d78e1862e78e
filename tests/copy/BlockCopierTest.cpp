#include "copy/BlockCopier.h"
#include "copy/CopyMessages.h"
#include "copy/CopySession.h"
#include "fakes/FakeCopyHost.h"
#include "fakes/MemoryFileLayer.h"
#include "fakes/MemoryRescueMapStore.h"

#include <gtest/gtest.h>

#include <cerrno>

using namespace vindaro::copy;
namespace fake = vindaro::testing;
namespace platform = vindaro::platform;
using fake::ByteRange;
using fake::positionBytes;

namespace {

const QString kSource = QStringLiteral("/media/cdrom/MPEGAV/AVSEQ01.DAT");
const QString kDest = QStringLiteral("/home/u/video/a.dat");
const QString kIndent(22, QLatin1Char(' '));

class BlockCopierTest : public ::testing::Test
{
protected:
    fake::MemoryFileLayer files;
    CopyState state;
    fake::FakeCopyHost host;
    fake::MemoryResumeStore store;
    bool cdRomNotReady = false;
    BlockCopier copier{state, host, files, store, [this](const QString&) { return cdRomNotReady; }};

    void start(qint64 blockBytes, int skipBlocks = 10)
    {
        state.blockBytes = blockBytes;
        state.skipBlocks = skipBlocks;
        state.position = 1;
        state.copyRunning = true;
    }
    CopyOutcome copy() { return copier.copyBlocks(kSource, kDest, state.blockBytes); }
    QString lastBoxText() const { return host.boxes.isEmpty() ? QString() : host.boxes.last().text; }
};

// The finish entry names the estimate and throughput the user last saw (the clock's last tick).
TEST_F(BlockCopierTest, SmallSourceGoesInOneRoundAndReportsTheFinish)
{
    const QByteArray data = positionBytes(10);
    files.put(kSource, data);
    start(40960);
    state.elapsedSeconds = 8;
    state.meter.start(0);
    state.meter.tick(1, 18 << 20, 36 << 20); // 9 s for 18 MiB: 2,048 KB/s, 18 s in all

    EXPECT_EQ(copy(), CopyOutcome::Finished);

    EXPECT_EQ(files.bytes(kDest), data);
    EXPECT_EQ(files.readCount(), 1);
    EXPECT_EQ(host.copiedShown, 10);
    ASSERT_EQ(host.boxes.size(), 1);
    EXPECT_EQ(host.boxes[0].title, QStringLiteral("文件复制完成！"));
    EXPECT_EQ(host.boxes[0].text, kSource + QStringLiteral("\r\n已被成功地复制到：") + kDest);
    ASSERT_EQ(host.entries.size(), 1);
    EXPECT_EQ(host.entries[0],
        kSource + "\r\n" + kIndent + QStringLiteral("被成功地复制到：") + "\r\n" + kIndent + kDest + "\r\n"
            + kIndent + QStringLiteral("文件大小：10字节  总计消耗：00:00:18  存取速度：2,048KB/秒"));
    EXPECT_EQ(host.switches, QStringList{QStringLiteral("idle")});
    EXPECT_FALSE(state.copyRunning);
}

// Reads take one byte more than the step and overlap by that byte; the short last stretch gets its own
// round that ends exactly at the last byte.
TEST_F(BlockCopierTest, ReadsOverlapByOneByteAndTheTailRoundEndsAtTheLastByte)
{
    const qint64 b = 1000;
    {
        const QByteArray data = positionBytes(b + 1);
        files.put(kSource, data);
        start(b);
        EXPECT_EQ(copy(), CopyOutcome::Finished);
        EXPECT_EQ(files.readOffsets(kSource), QList<qint64>{0});
        EXPECT_EQ(files.largestRead(), b + 1);
        EXPECT_EQ(files.bytes(kDest), data);
    }
    files.reset();
    {
        const QByteArray data = positionBytes(3 * b + 5);
        files.put(kSource, data);
        host = {};
        start(b);
        EXPECT_EQ(copy(), CopyOutcome::Finished);
        // three whole rounds from positions 1, b+1, 2b+1, then the tail from 3b+1 (offset 3b) with step 4
        EXPECT_EQ(files.readOffsets(kSource), (QList<qint64>{0, b, 2 * b, 3 * b}));
        // after each block, and the whole length at the finish
        EXPECT_EQ(host.progressPositions, (QList<qint64>{1, b + 1, 2 * b + 1, 3 * b + 1, 3 * b + 5}));
        EXPECT_EQ(files.bytes(kDest), data);
        EXPECT_EQ(state.position, 3 * b + 5);
    }
}

TEST_F(BlockCopierTest, EmptySourceIsCopiedWholeAndReportedFinished)
{
    files.put(kSource, QByteArray());
    start(40960);
    EXPECT_EQ(copy(), CopyOutcome::Finished);
    EXPECT_TRUE(files.contains(kDest));
    EXPECT_EQ(files.bytes(kDest).size(), 0);
    EXPECT_EQ(files.readCount(), 0);
    ASSERT_EQ(host.boxes.size(), 1);
    EXPECT_EQ(host.boxes[0].title, QStringLiteral("文件复制完成！"));
}

// Appending (or continuing) an empty source onto an existing destination adds nothing and keeps every
// byte already there: the plain file copy of an empty source must not replace the kept file.
TEST_F(BlockCopierTest, EmptySourceAppendedToAnExistingDestinationKeepsIt)
{
    files.put(kSource, QByteArray());
    files.put(kDest, QByteArray(1000, 'x'));
    start(40960);
    state.position = 1000; // the destination's length: the append position

    EXPECT_EQ(copy(), CopyOutcome::Finished);

    EXPECT_EQ(files.bytes(kDest), QByteArray(1000, 'x'));
    ASSERT_EQ(host.boxes.size(), 1);
    EXPECT_EQ(host.boxes[0].title, QStringLiteral("文件复制完成！"));
}

// The engine writes at positions and never cuts the destination: emptying it is the caller's choice.
TEST_F(BlockCopierTest, NeverTruncatesAnExistingDestination)
{
    const QByteArray data = positionBytes(10);
    files.put(kSource, data);
    files.put(kDest, QByteArray(1000, 'x'));
    start(40960);
    copy();
    const QByteArray out = files.bytes(kDest);
    ASSERT_EQ(out.size(), 1000);
    EXPECT_EQ(out.first(10), data);
    EXPECT_EQ(out.sliced(10), QByteArray(990, 'x'));
}

TEST_F(BlockCopierTest, UnreadableFirstBlockIsAFailure)
{
    files.put(kSource, positionBytes(5000));
    files.faults(kSource).badReads = {ByteRange{100, 1}};
    start(1000);
    EXPECT_EQ(copy(), CopyOutcome::Failed);
    ASSERT_EQ(host.boxes.size(), 1);
    EXPECT_EQ(host.boxes[0].text, QStringLiteral("路径/文件访问错误，请检查文件的访问权限。"));
    EXPECT_EQ(host.boxes[0].title, QStringLiteral("复制文件时出错！"));
    EXPECT_EQ(host.boxes[0].icon, platform::BoxIcon::Critical);
    EXPECT_EQ(host.entries,
        QStringList{QStringLiteral("复制文件“") + kSource + QStringLiteral("”时遇到错误。\r\n") + kIndent
            + QStringLiteral("错误原因：路径/文件访问错误，文件拒绝访问权限。")});
    EXPECT_EQ(files.openFiles(), 0);
}

// An unreadable block past the start jumps skipBlocks x 8 blocks; what was read before arrives intact and
// the stretch reads as zeros in the destination.
TEST_F(BlockCopierTest, UnreadableBlockLaterSkipsEightTimesTheSkipSlider)
{
    const qint64 b = 100;
    const QByteArray data = positionBytes(10000);
    files.put(kSource, data);
    files.faults(kSource).badReads = {ByteRange{350, 1}}; // inside the round at position 301
    start(b, 3);

    EXPECT_EQ(copy(), CopyOutcome::FinishedWithSkips);

    const qint64 resumeAt = 301 + 3 * b * 8; // 2701
    EXPECT_EQ(host.entries.first(), QStringLiteral("文件跳过：2,701字节"));
    const QByteArray out = files.bytes(kDest);
    ASSERT_EQ(out.size(), data.size());
    EXPECT_EQ(out.first(301), data.first(301)); // rounds 1..3 wrote bytes 1..301
    EXPECT_EQ(out.sliced(301, resumeAt - 1 - 301), QByteArray(resumeAt - 1 - 301, '\0'));
    EXPECT_EQ(out.sliced(resumeAt - 1), data.sliced(resumeAt - 1));
    EXPECT_EQ(copier.skippedStretches(), 1);
    EXPECT_EQ(host.boxes.last().title, QStringLiteral("文件复制完成！"));
}

TEST_F(BlockCopierTest, SkipPastTheEndFinishesWithAShorterDestination)
{
    const QByteArray data = positionBytes(1000);
    files.put(kSource, data);
    files.faults(kSource).badReads = {ByteRange{250, 1}};
    start(100, 10);

    EXPECT_EQ(copy(), CopyOutcome::FinishedWithSkips);
    EXPECT_EQ(files.bytes(kDest), data.first(201)); // rounds at 1 and 101 wrote up to byte 201
    EXPECT_EQ(host.copiedShown, -1); // the copied figure is not updated after a skip past the end
    EXPECT_EQ(host.boxes.last().title, QStringLiteral("文件复制完成！"));
    EXPECT_FALSE(host.entries.first().startsWith(QStringLiteral("文件跳过")));
}

TEST_F(BlockCopierTest, BadFileNumberSkipsOneStep)
{
    files.put(kSource, positionBytes(1000));
    files.faults(kSource).badReads = {ByteRange{450, 1}};
    files.faults(kSource).readErrno = EBADF;
    start(100);
    EXPECT_EQ(copy(), CopyOutcome::FinishedWithSkips);
    EXPECT_EQ(host.entries.first(), QStringLiteral("文件跳过：501字节"));
}

// Thousands of unreadable stretches: the restart is a loop, so files and memory stay flat.
TEST_F(BlockCopierTest, AnyNumberOfSkipsKeepsResourcesFlat)
{
    const qint64 b = 10;
    const qint64 length = 2'000'000;
    files.putGenerated(kSource, length);
    QList<ByteRange> bad;
    for (qint64 at = 1000; at < length; at += 80 * b + 50)
        bad.append(ByteRange{at, 1});
    files.faults(kSource).badReads = bad;
    start(b, 1);
    EXPECT_EQ(copy(), CopyOutcome::FinishedWithSkips);
    EXPECT_GT(copier.skippedStretches(), 2000);
    EXPECT_LE(files.maxOpenFiles(), 2);
    EXPECT_EQ(files.openFiles(), 0);
}

TEST_F(BlockCopierTest, MergeAppendsTheSourceBehindTheExistingBytes)
{
    const QByteArray head = QByteArray(50, 'h');
    const QByteArray data = positionBytes(100);
    files.put(kSource, data);
    files.put(kDest, head);
    start(40960);
    state.mergePosition = 51;

    EXPECT_EQ(copier.mergeBlocks(kSource, kDest, 40960), CopyOutcome::Finished);
    EXPECT_EQ(files.bytes(kDest), head + data);
    EXPECT_EQ(host.boxes.last().title, QStringLiteral("文件合并完成！"));
    EXPECT_EQ(host.boxes.last().text, kSource + QStringLiteral("\r\n已被成功地合并到：") + kDest);
    EXPECT_TRUE(host.entries.last().contains(QStringLiteral("被成功地合并到：")));
}

// In a merge only the read position jumps: what follows the stretch closes up behind what was written.
TEST_F(BlockCopierTest, MergeLeavesSkippedStretchesOut)
{
    const QByteArray data = positionBytes(3000);
    files.put(kSource, data);
    files.put(kDest, QByteArray("AB"));
    files.faults(kSource).badReads = {ByteRange{150, 1}};
    start(100, 1);
    state.mergePosition = 3;
    EXPECT_EQ(copier.mergeBlocks(kSource, kDest, 100), CopyOutcome::FinishedWithSkips);
    // the round at 1 wrote source bytes 1..101 at 3..103 and moved the write position to 103; the skip moves
    // the read to 101 + 800 = 901, whose bytes then go on from 103 (over the overlap byte)
    EXPECT_EQ(files.bytes(kDest), QByteArray("AB") + data.first(100) + data.sliced(900));
}

TEST_F(BlockCopierTest, EmptySourceMergeGoesThroughTheLoop)
{
    files.put(kSource, QByteArray());
    files.put(kDest, QByteArray("abc"));
    start(4096);
    state.mergePosition = 4;
    EXPECT_EQ(copier.mergeBlocks(kSource, kDest, 4096), CopyOutcome::Finished);
    EXPECT_EQ(files.bytes(kDest), QByteArray("abc"));
    EXPECT_EQ(host.boxes.last().title, QStringLiteral("文件合并完成！"));
}

// Every row of the failure table: the box, its title, and the log entry (or none). The failing file
// decides the row: only a source can be skipped or be on a drive without a disc, and a destination that
// fails (a write, its sync or its close) keeps only the disk-full and permission rows.
// Which failure box and log entry each failure gets (the words are the golden file's): the table of the
// engine's failures, read, write, sync and close, a copy and a merge, a source on a drive without its disc.
TEST_F(BlockCopierTest, FailuresShowTheirBoxAndLogTheirCause)
{
    enum Where
    {
        Read, // the source's read at byte 151
        Write, // the destination's write past 150 bytes
        Sync, // the destination's sync (before the finish)
        Close, // the destination's close (after the first pass)
    };
    constexpr auto kDescribed = Failure::Described; // "[code].description", nothing logged
    const struct
    {
        const char* name;
        Where where;
        int error;
        const char* description;
        bool merge;
        bool cdRomNotReady;
        Failure shown;
        int code = 0; // for kDescribed
        const char16_t* words = nullptr; // the program's own words in place of the system's
    } rows[] = {
        {"disk full", Write, ENOSPC, "x", false, false, Failure::DiskFull},
        {"disk full merge", Write, EDQUOT, "x", true, false, Failure::DiskFull},
        {"bad record", Read, ESPIPE, "x", false, false, Failure::BadRecord},
        {"permission", Write, EACCES, "x", false, false, Failure::SharingConflict},
        {"permission merge", Read, EBUSY, "x", true, false, Failure::SharingConflict},
        {"source without its disc", Read, ENOMEDIUM, "x", false, true, Failure::NoMedium},
        {"source gone, not on an optical drive", Read, ENODEV, "x", false, false, kDescribed, 71,
            u"磁盘未准备好"},
        {"cd not ready merge", Read, EMLINK, "x", true, true, Failure::NoMedium},
        {"described", Read, EMLINK, "Too many links", false, false, kDescribed, EMLINK},
        {"undescribed", Read, EMLINK, "", false, false, Failure::Unknown},
        {"undescribed merge", Read, EMLINK, "", true, false, Failure::Unknown},
        // the destination's own failures: never a skip, never the disc texts, even with the source's
        // drive not ready
        {"write EIO", Write, EIO, "Input/output error", false, true, kDescribed, EIO},
        {"write ETIMEDOUT merge", Write, ETIMEDOUT, "Connection timed out", true, false, kDescribed,
            ETIMEDOUT},
        {"write ENODEV", Write, ENODEV, "No such device", false, true, kDescribed, ENODEV},
        {"write ENOMEDIUM", Write, ENOMEDIUM, "No medium found", false, true, kDescribed, ENOMEDIUM},
        {"write EBADF", Write, EBADF, "Bad file descriptor", false, false, kDescribed, EBADF},
        {"write EIO undescribed", Write, EIO, "", false, true, Failure::Unknown},
        {"sync EIO", Sync, EIO, "Input/output error", false, false, kDescribed, EIO},
        {"close ESTALE", Close, ESTALE, "Stale file handle", false, true, kDescribed, ESTALE},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        files.reset();
        store.records.clear();
        host = {};
        files.put(kSource, positionBytes(500));
        files.put(kDest, QByteArray());
        auto& f = row.where == Read ? files.faults(kSource) : files.faults(kDest);
        const QString description = QString::fromLatin1(row.description);
        if (row.where == Read) {
            f.badReads = {ByteRange{150, 1}};
            f.readErrno = row.error;
            f.readText = description;
        } else {
            f.writeLimit = row.where == Write ? 150 : -1;
            f.writeErrno = row.where == Write ? row.error : f.writeErrno;
            f.syncErrno = row.where == Sync ? row.error : 0;
            f.closeErrno = row.where == Close ? row.error : 0;
            f.writeText = description;
        }
        cdRomNotReady = row.cdRomNotReady;
        start(100);
        state.mergePosition = 1;
        const CopyOutcome outcome = row.merge ? copier.mergeBlocks(kSource, kDest, 100) : copy();
        EXPECT_EQ(outcome, CopyOutcome::Failed);
        const QString words = row.words ? QString::fromUtf16(row.words) : description;
        const msg::FailureTexts texts = row.shown == kDescribed
            ? msg::FailureTexts{QString(), msg::describedFailure(row.code, words)}
            : msg::singleFailure(row.shown, row.merge, kSource);
        ASSERT_EQ(host.boxes.size(), 1);
        EXPECT_EQ(host.boxes[0].text,
            row.shown == kDescribed && row.code == 71
                ? msg::describedFailure(71, QStringLiteral("磁盘未准备好"))
                : texts.box);
        EXPECT_EQ(host.boxes[0].title, msg::errorBoxTitle(row.merge));
        EXPECT_EQ(host.boxes[0].icon, platform::BoxIcon::Critical);
        const QStringList logged = texts.cause.isEmpty()
            ? QStringList()
            : QStringList{msg::errorEntry(kSource, kDest, row.merge, texts.cause)};
        EXPECT_EQ(host.entries, logged);
        EXPECT_EQ(host.switches, QStringList{QStringLiteral("idle")});
        EXPECT_EQ(files.openFiles(), 0);
        // a failing destination keeps a record to go on from later; a failing source leaves none
        EXPECT_EQ(store.records.contains(kDest), row.where != Read);
    }
}

// After a failing destination the record names only bytes the device has confirmed: where the last sync
// succeeded (at a skip, or the failure itself when the device still answers), never the block that failed.
TEST_F(BlockCopierTest, ADestinationFailureKeepsARecordOfWhatIsOnTheDevice)
{
    const struct
    {
        const char* name;
        bool syncFailsAfterTheSkip;
        bool merge;
        qint64 continuePosition;
        qint64 writePosition;
    } rows[] = {
        // the round at 1401 fails; the device still syncs, so everything before it counts
        {"device answers", false, false, 1401, 0},
        // the device no longer syncs: only what was synced at the skip (before the round at 201) counts
        {"device gone", true, false, 201, 0},
        // a merge records both positions: read 201, write 4 + 200 (the skip does not move the write)
        {"merge, device gone", true, true, 201, 204},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        files.reset();
        store.records.clear();
        host = {};
        files.put(kSource, positionBytes(3000));
        files.put(kDest, row.merge ? QByteArray("abc") : QByteArray());
        files.faults(kSource).badReads = {ByteRange{250, 1}}; // the round at 201: skipped to 1001
        files.faults(kDest).writeLimit = row.merge ? 1000 : 1450;
        files.faults(kDest).writeErrno = EIO;
        host.onBlock = [&] {
            if (row.syncFailsAfterTheSkip && state.position > 1000)
                files.faults(kDest).syncErrno = EIO;
        };
        start(100, 1);
        state.mergePosition = 4;
        state.elapsedSeconds = 3;
        const CopyOutcome outcome = row.merge ? copier.mergeBlocks(kSource, kDest, 100) : copy();
        EXPECT_EQ(outcome, CopyOutcome::Failed);
        EXPECT_EQ(host.entries, QStringList{QStringLiteral("文件跳过：1,001字节")});
        ASSERT_TRUE(store.records.contains(kDest));
        const ResumeRecord& r = store.records[kDest];
        EXPECT_EQ(r.continuePosition, row.continuePosition);
        EXPECT_EQ(r.merge, row.merge);
        EXPECT_EQ(r.writePosition, row.writePosition);
        EXPECT_EQ(r.elapsedSeconds, 3);
    }
}

// The bytes are on the device before the finish box says so, and before a kept file's record is saved.
TEST_F(BlockCopierTest, TheDestinationIsSyncedBeforeTheFinishAndBeforeARecord)
{
    files.put(kSource, positionBytes(1000));
    QList<int> syncsAtBox;
    host.onBox = [&](const platform::MessageBox&) { syncsAtBox << files.syncCount(kDest); };
    start(100);
    EXPECT_EQ(copy(), CopyOutcome::Finished);
    EXPECT_EQ(syncsAtBox, QList<int>{1}); // one sync for the whole copy, before the box

    files.reset();
    host = {};
    syncsAtBox.clear();
    host.onBox = [&](const platform::MessageBox&) { syncsAtBox << files.syncCount(kDest); };
    files.put(kSource, positionBytes(1000));
    host.onBlock = [&] {
        state.stopRequested = true;
        state.cancelRequested = true;
    };
    start(100);
    EXPECT_EQ(copy(), CopyOutcome::Cancelled); // the question is answered No: kept with a record
    EXPECT_EQ(syncsAtBox, QList<int>{1});
    EXPECT_TRUE(store.records.contains(kDest));
}

TEST_F(BlockCopierTest, InvalidArgumentAsksAndRetriesTheSameRound)
{
    const QByteArray data = positionBytes(500);
    files.put(kSource, data);
    files.faults(kSource).badReads = {ByteRange{220, 1}};
    files.faults(kSource).readErrno = EINVAL;
    host.answers = {platform::kAnswerYes};
    host.onBox
        = [&](const platform::MessageBox&) { files.faults(kSource).badReads.clear(); }; // the retry succeeds
    start(100);
    EXPECT_EQ(copy(), CopyOutcome::Finished);
    EXPECT_EQ(host.boxes.first().text, QStringLiteral("复制文件时出错，是否继续复制？"));
    EXPECT_EQ(host.boxes.first().title, QStringLiteral("警告！"));
    EXPECT_EQ(host.boxes.first().buttons, platform::BoxButtons::YesNo);
    EXPECT_TRUE(host.switches.contains(QStringLiteral("copying")));
    EXPECT_EQ(files.bytes(kDest), data);

    // answered No: idle, nothing more
    files.reset();
    host = {};
    files.put(kSource, data);
    files.faults(kSource).badReads = {ByteRange{220, 1}};
    files.faults(kSource).readErrno = EINVAL;
    start(100);
    EXPECT_EQ(copier.mergeBlocks(kSource, kDest, 100), CopyOutcome::Failed);
    EXPECT_EQ(host.boxes.first().text, QStringLiteral("合并文件时出错，是否继续合并？"));
    EXPECT_EQ(host.boxes.size(), 1);
}

// A cancel the host holds (Ctrl-C during the preparation, a batch's cancel) survives the start of the copy,
// which otherwise clears the flags: the copy stops after its first block.
TEST_F(BlockCopierTest, AHeldCancelSurvivesTheStart)
{
    files.put(kSource, positionBytes(1000));
    start(100);
    state.cancelHeld = true;
    copier.enterCopyingState();
    EXPECT_TRUE(state.stopRequested);
    EXPECT_TRUE(state.cancelRequested);
    EXPECT_EQ(copy(), CopyOutcome::Cancelled);
    EXPECT_EQ(files.bytes(kDest).size(), 0); // stopped before its first block
}

TEST_F(BlockCopierTest, PauseKeepsThePositionAndClosesTheFiles)
{
    files.put(kSource, positionBytes(1000));
    host.onBlock = [&] {
        if (host.blocks == 2)
            state.stopRequested = true;
    };
    start(100);
    EXPECT_EQ(copy(), CopyOutcome::Paused);
    EXPECT_EQ(state.position, 201);
    EXPECT_EQ(files.openFiles(), 0);
    EXPECT_TRUE(host.boxes.isEmpty());
    EXPECT_EQ(host.switches, QStringList{QStringLiteral("timer-off")});

    // going on from there completes the copy byte for byte
    state.stopRequested = false;
    host.onBlock = nullptr;
    EXPECT_EQ(copier.copyBlocks(kSource, kDest, 100), CopyOutcome::Finished);
    EXPECT_EQ(files.bytes(kDest), positionBytes(1000));
}

TEST_F(BlockCopierTest, CancelAnsweredNoKeepsThePartialFileWithAResumeRecord)
{
    files.put(kSource, positionBytes(1000));
    host.onBlock = [&] {
        if (host.blocks == 3) {
            state.stopRequested = true;
            state.cancelRequested = true;
        }
    };
    host.answers = {platform::kAnswerNo};
    state.elapsedSeconds = 4;
    start(100);
    EXPECT_EQ(copy(), CopyOutcome::Cancelled);
    EXPECT_EQ(host.entries, QStringList{QStringLiteral("取消复制：") + kSource});
    ASSERT_EQ(host.boxes.size(), 1);
    EXPECT_EQ(host.boxes[0].text, kDest + QStringLiteral("\r\n该文件已经存在，是否删除？"));
    EXPECT_EQ(host.boxes[0].title, QStringLiteral("提醒！"));
    EXPECT_EQ(files.bytes(kDest).size(), 301);
    ASSERT_TRUE(store.records.contains(kDest));
    EXPECT_EQ(store.records[kDest].continuePosition, 301);
    EXPECT_EQ(store.records[kDest].copiedPosition, 301);
    EXPECT_EQ(store.records[kDest].elapsedSeconds, 4);
    EXPECT_EQ(host.switches, (QStringList{QStringLiteral("timer-off"), QStringLiteral("reset")}));
    EXPECT_EQ(state.elapsedSeconds, 0);
}

TEST_F(BlockCopierTest, CancelAnsweredYesDeletesTheDestination)
{
    files.put(kSource, positionBytes(1000));
    host.onBlock = [&] {
        state.stopRequested = true;
        state.cancelRequested = true;
    };
    host.answers = {platform::kAnswerYes};
    start(100);
    EXPECT_EQ(copier.mergeBlocks(kSource, kDest, 100), CopyOutcome::Cancelled);
    EXPECT_EQ(host.entries, QStringList{QStringLiteral("取消合并：") + kSource});
    EXPECT_FALSE(files.contains(kDest));
    EXPECT_TRUE(store.records.isEmpty());
}

// A move of the skip slider between blocks moves the next read forward.
TEST_F(BlockCopierTest, ManualSkipBetweenBlocksMovesTheNextRead)
{
    files.put(kSource, positionBytes(2000));
    host.onBlock = [&] {
        if (host.blocks == 1)
            state.position += 3 * state.blockBytes;
    };
    start(100);
    copy();
    EXPECT_EQ(files.readOffsets(kSource).mid(0, 2), (QList<qint64>{0, 400}));
}

// Whether `more` has every byte of `copy`, and where it differs (or goes on) holds the pattern source's own
// byte where `copy` has a zero.
bool holdsTheSameOrMore(const QByteArray& more, const QByteArray& copy, qint64 sourceLength)
{
    if (more.size() < copy.size() || more.size() > sourceLength)
        return false;
    for (qint64 i = 0; i < more.size(); ++i) {
        const char was = i < copy.size() ? copy[i] : '\0';
        if (more[i] != was && (was != '\0' || more[i] != fake::patternByte(i)))
            return false;
    }
    return true;
}

// Where the source reads ahead well, several blocks come in one read, or the system copies them without
// the program reading them; what the copy writes, logs and answers is the same as block by block, skips
// included, and after the first failed read every block is read on its own again.
TEST(BlockCopierReadAhead, GivesTheSameCopyAsBlockByBlock)
{
    struct Case
    {
        const char* name;
        qint64 length;
        qint64 blockBytes;
        QList<ByteRange> bad;
        int errnoValue;
        bool merge;
        qint64 manualSkipAtYield; // 0: none
    };
    const qint64 mib = 1 << 20;
    const Case cases[] = {
        {"clean, several read-ahead chunks", 10 * mib + 7, 61440, {}, EIO, false, 0},
        {"skip inside the second chunk", 10 * mib, 61440, {{5 * mib + 3, 1}}, EIO, false, 0},
        {"several skips, one past the end", 9 * mib, 61440, {{mib, 1}, {3 * mib, 9}, {9 * mib - 10, 1}}, EIO,
            false, 0},
        {"bad file number skips one step", 6 * mib, 61440, {{2 * mib, 1}}, EBADF, false, 0},
        {"merge closes up behind a skip", 7 * mib, 61440, {{4 * mib + 100, 1}}, EIO, true, 0},
        {"manual skip between blocks", 8 * mib, 61440, {}, EIO, false, 5},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        struct Result
        {
            CopyOutcome outcome;
            QByteArray destination;
            QStringList entries;
            int reads;
            int insideCopies;
        };
        const auto run = [&](bool readsAhead, bool copiesInside) {
            fake::MemoryFileLayer files;
            CopyState state;
            fake::FakeCopyHost host;
            fake::MemoryResumeStore store;
            BlockCopier copier(state, host, files, store, {});
            files.setReadsAhead(readsAhead);
            files.setCopiesInside(copiesInside);
            files.put(kSource, positionBytes(c.length));
            files.put(kDest, c.merge ? QByteArray("head") : QByteArray());
            files.faults(kSource).badReads = c.bad;
            files.faults(kSource).readErrno = c.errnoValue;
            host.onBlock = [&] {
                if (c.manualSkipAtYield && host.blocks == c.manualSkipAtYield)
                    state.position += 7 * state.blockBytes;
            };
            state.blockBytes = c.blockBytes;
            state.skipBlocks = 1;
            state.position = 1;
            state.mergePosition = 5;
            state.copyRunning = true;
            const CopyOutcome outcome = c.merge ? copier.mergeBlocks(kSource, kDest, c.blockBytes)
                                                : copier.copyBlocks(kSource, kDest, c.blockBytes);
            return Result{outcome, files.bytes(kDest), host.entries, files.readCount(), files.insideCopies()};
        };
        const Result plain = run(false, false);
        for (const bool inside : {false, true}) {
            SCOPED_TRACE(inside ? "copied inside the system" : "read ahead");
            const Result ahead = run(true, inside);
            EXPECT_EQ(ahead.outcome, plain.outcome);
            EXPECT_EQ(ahead.entries, plain.entries);
            if (inside && !c.bad.isEmpty()) {
                // A system copy that fails has put down the source's bytes up to the bad one; block by
                // block that stretch stays empty. Nothing else may differ.
                EXPECT_TRUE(holdsTheSameOrMore(ahead.destination, plain.destination, c.length))
                    << "the copies differ";
            } else {
                EXPECT_TRUE(ahead.destination == plain.destination) << "the copies differ";
            }
            if (c.bad.isEmpty()) {
                EXPECT_LT(ahead.reads * 10, plain.reads); // it does read ahead
                EXPECT_EQ(ahead.insideCopies > 0, inside);
            }
        }
    }
}

// Blocks read ahead are written together in runs of up to a read-ahead chunk. A destination that fails in
// the middle of a run is still never taken for a bad source: no skip, a record of what the device holds, and
// a continue from that record, once the device works again, gives the very copy an unbroken run would.
TEST(BlockCopierReadAhead, AWriteRunThatFailsIsContinuedFromWhatTheDeviceHolds)
{
    const qint64 mib = 1 << 20;
    const struct
    {
        const char* name;
        bool merge;
        qint64 writeLimit; // the destination takes this many bytes, then fails with EIO
        bool deviceGone; // from the failure on, the device confirms nothing more
        bool copiesInside; // the system copies the runs until one fails
    } rows[] = {
        {"copy, inside the second run", false, 5 * mib + 12345, false, false},
        {"copy, device gone", false, 6 * mib + 1, true, false},
        {"merge, inside the third run", true, 9 * mib, false, false},
        {"merge, device gone", true, 3 * mib, true, false},
        {"copy, copied inside the system", false, 5 * mib + 12345, false, true},
        {"copy, copied inside the system, device gone", false, 9 * mib, true, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const QByteArray head("head");
        const QByteArray source = positionBytes(12 * mib + 777);
        fake::MemoryFileLayer files;
        files.setReadsAhead(true);
        files.setCopiesInside(row.copiesInside);
        files.put(kSource, source);
        files.put(kDest, row.merge ? head : QByteArray());
        files.faults(kDest).writeLimit = row.writeLimit;
        files.faults(kDest).writeErrno = EIO;
        files.faults(kDest).syncErrno = row.deviceGone ? EIO : 0;
        CopyState state;
        fake::FakeCopyHost host;
        fake::MemoryResumeStore store;
        BlockCopier copier(state, host, files, store, {});
        const auto run = [&] {
            state.blockBytes = 61440;
            state.copyRunning = true;
            return row.merge ? copier.mergeBlocks(kSource, kDest, 61440)
                             : copier.copyBlocks(kSource, kDest, 61440);
        };
        state.position = 1;
        state.mergePosition = head.size() + 1;
        EXPECT_EQ(run(), CopyOutcome::Failed);
        EXPECT_TRUE(host.entries.filter(QStringLiteral("文件跳过")).isEmpty());
        ASSERT_EQ(host.boxes.size(), 1);
        EXPECT_TRUE(host.boxes[0].text.startsWith(QStringLiteral("[5].")));
        ASSERT_TRUE(store.records.contains(kDest));

        files.faults(kDest) = {};
        host = {};
        applyContinuePositions(store.records[kDest], kDest, files, state);
        EXPECT_EQ(run(), CopyOutcome::Finished);
        EXPECT_TRUE(files.bytes(kDest) == (row.merge ? head + source : source)) << "the copies differ";
    }
}

// A copy that keeps a map reads and writes exactly as one that does not; its map says what it copied, which
// block failed and what it jumped over, and is kept for the refine pass. A whole copy leaves none.
TEST(BlockCopierMap, MapsTheCopyWithoutChangingIt)
{
    for (const bool damaged : {true, false}) {
        SCOPED_TRACE(damaged ? "damaged" : "whole");
        const auto copy = [&](fake::MemoryRescueMapStore* maps) {
            fake::MemoryFileLayer files;
            CopyState state;
            fake::FakeCopyHost host;
            fake::MemoryResumeStore store;
            BlockCopier copier(state, host, files, store, {});
            copier.setRescueMapStore(maps);
            files.put(kSource, positionBytes(100'000));
            if (damaged)
                files.faults(kSource).badReads = {ByteRange{30'000, 1}};
            state.blockBytes = 1000;
            state.skipBlocks = 2;
            state.position = 1;
            state.copyRunning = true;
            const CopyOutcome outcome = copier.copyBlocks(kSource, kDest, 1000);
            return std::tuple{outcome, files.readOffsets(kSource), files.bytes(kDest), host.entries};
        };
        fake::MemoryRescueMapStore maps;
        EXPECT_EQ(copy(&maps), copy(nullptr));
        RescueMap map;
        ASSERT_EQ(maps.load(kDest, map), damaged);
        if (!damaged)
            continue;
        // The block at offsets 29,000..30,000 failed; its first byte was copied with the block before. The
        // stretch jumped (8 x 2 blocks) runs to offset 45,000, where copying went on.
        EXPECT_EQ(map.rangeAt(29'500).state, RescueState::NonTrimmed);
        EXPECT_EQ(map.rangeAt(29'500).offset, 29'001);
        EXPECT_EQ(map.rangeAt(29'500).end(), 30'001);
        EXPECT_EQ(map.rangeAt(40'000).state, RescueState::Untried);
        EXPECT_EQ(map.rangeAt(45'000).state, RescueState::Copied);
        EXPECT_EQ(map.bytes(RescueState::Copied), 100'000 - (45'000 - 29'001));
    }
}

// A destination that stops confirming its writes: the map kept with the record calls copied only what a sync
// confirmed, so a continue rewrites the rest instead of jumping over bytes that may be lost.
TEST(BlockCopierMap, KeepsOnlyConfirmedBytesCopiedAfterADestinationFailure)
{
    fake::MemoryFileLayer files;
    CopyState state;
    fake::FakeCopyHost host;
    fake::MemoryResumeStore store;
    fake::MemoryRescueMapStore maps;
    BlockCopier copier(state, host, files, store, {});
    copier.setRescueMapStore(&maps);
    files.put(kSource, positionBytes(3000));
    files.faults(kSource).badReads = {ByteRange{250, 1}}; // a skip (and its sync) at the round of 201
    files.faults(kDest).writeLimit = 1450;
    files.faults(kDest).writeErrno = EIO;
    host.onBlock = [&] {
        if (state.position > 1000)
            files.faults(kDest).syncErrno = EIO; // nothing after the skip is confirmed
    };
    state.blockBytes = 100;
    state.skipBlocks = 1;
    state.position = 1;
    state.copyRunning = true;
    EXPECT_EQ(copier.copyBlocks(kSource, kDest, 100), CopyOutcome::Failed);
    ASSERT_TRUE(store.records.contains(kDest));
    RescueMap map;
    ASSERT_TRUE(maps.load(kDest, map));
    EXPECT_EQ(store.records[kDest].continuePosition, 201);
    EXPECT_EQ(map.bytes(RescueState::Copied), 201); // written after 201 but never confirmed: untried
}

// A copy that goes on with a kept map reads nothing the map says was copied: it starts again after it.
TEST(BlockCopierMap, NothingCopiedIsReadAgain)
{
    fake::MemoryFileLayer files;
    CopyState state;
    fake::FakeCopyHost host;
    fake::MemoryResumeStore store;
    fake::MemoryRescueMapStore maps;
    BlockCopier copier(state, host, files, store, {});
    copier.setRescueMapStore(&maps);
    const QByteArray source = positionBytes(50'000);
    files.put(kSource, source);
    // 0..10,000 and 20,000..40,000 copied by an earlier run (or a ddrescue rescue), the rest not.
    QByteArray destination = source.first(40'000);
    destination.replace(10'000, 10'000, QByteArray(10'000, '\0'));
    files.put(kDest, destination);
    RescueMap map(50'000);
    map.mark(0, 10'000, RescueState::Copied);
    map.mark(20'000, 20'000, RescueState::Copied);
    maps.save(kDest, map);

    state.blockBytes = 1000;
    state.position = 10'000; // on the last copied byte, as a record says
    state.copyRunning = true;
    EXPECT_EQ(copier.copyBlocks(kSource, kDest, 1000), CopyOutcome::Finished);
    EXPECT_TRUE(files.bytes(kDest) == source);
    for (const qint64 offset : files.readOffsets(kSource))
        EXPECT_FALSE(offset >= 20'000 && offset < 39'999) << offset;
    EXPECT_FALSE(maps.load(kDest, map)); // whole now: no map kept
}

// Positions and lengths are 64-bit: a 3 GiB source copies to a byte-identical 3 GiB destination.
TEST_F(BlockCopierTest, CopiesSourcesBeyondFourGigabytePositions)
{
    const qint64 length = 3LL * 1024 * 1024 * 1024 + 12345;
    files.putGenerated(kSource, length);
    files.putGenerated(kDest, 0);
    start(614400);
    EXPECT_EQ(copy(), CopyOutcome::Finished);
    platform::IoResult io;
    EXPECT_EQ(files.length(kDest, io), length);
    EXPECT_EQ(files.patternMismatches(kDest), 0);
    EXPECT_EQ(host.copiedShown, length);
    EXPECT_TRUE(host.entries.last().contains(QStringLiteral("文件大小：3,221,237,817字节")));
}

} // namespace
