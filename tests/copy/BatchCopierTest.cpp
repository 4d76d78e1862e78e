#include "copy/BatchCopier.h"
#include "fakes/FakeBatchHost.h"
#include "fakes/MemoryFileLayer.h"
#include "platform/Volumes.h"

#include <gtest/gtest.h>

#include <cerrno>

using namespace vindaro::copy;
namespace fake = vindaro::testing;
namespace platform = vindaro::platform;
using fake::ByteRange;
using fake::positionBytes;

namespace {

class PrefixDrives final : public DriveFacts
{
public:
    double free = 1e12;
    int typeLookups = 0; // each one reads the mount table on Linux
    int nameLookups = 0;
    int driveType(const QString& path) override
    {
        ++typeLookups;
        if (path.startsWith(QLatin1String("/media/cdrom")))
            return platform::kDriveCdRom;
        return path.startsWith(QLatin1Char('/')) ? platform::kDriveFixed : 0;
    }
    double freeBytes(const QString& path) override { return path.startsWith(QLatin1Char('/')) ? free : -1; }
    bool ready = true; // the optical drive's
    bool driveIsReady(const QString& path) override
    {
        return ready || !path.startsWith(QLatin1String("/media/cdrom"));
    }
    QString driveName(const QString& path) override
    {
        ++nameLookups;
        return path.startsWith(QLatin1String("/media/cdrom")) ? QStringLiteral("/media/cdrom")
                                                              : QStringLiteral("/");
    }
    bool isFloppy(const QString&) override { return false; }
};

// Counts the looks at the file system that a batch makes per file.
class CountingFiles final : public platform::FileLayer
{
public:
    explicit CountingFiles(fake::MemoryFileLayer& files)
        : m_files(files)
    {
    }
    int lengths = 0;
    int existsAsked = 0;
    int foldersMade = 0;

    std::unique_ptr<platform::RandomAccessFile> openForReading(
        const QString& p, platform::IoResult& r) override
    {
        return m_files.openForReading(p, r);
    }
    std::unique_ptr<platform::RandomAccessFile> openForUpdate(
        const QString& p, platform::IoResult& r) override
    {
        return m_files.openForUpdate(p, r);
    }
    qint64 length(const QString& p, platform::IoResult& r) override
    {
        ++lengths;
        return m_files.length(p, r);
    }
    platform::IoResult copyWhole(const QString& s, const QString& d) override
    {
        return m_files.copyWhole(s, d);
    }
    platform::IoResult truncate(const QString& p) override { return m_files.truncate(p); }
    platform::IoResult remove(const QString& p) override { return m_files.remove(p); }
    bool exists(const QString& p) override
    {
        ++existsAsked;
        return m_files.exists(p);
    }
    platform::IoResult makeFolders(const QString& p) override
    {
        ++foldersMade;
        return m_files.makeFolders(p);
    }
    platform::IoResult syncFileSystem(const QString& p) override { return m_files.syncFileSystem(p); }

private:
    fake::MemoryFileLayer& m_files;
};

const QString kA = QStringLiteral("/media/cdrom/MPEGAV/AVSEQ01.DAT");
const QString kB = QStringLiteral("/media/cdrom/MPEGAV/AVSEQ02.DAT");
const QString kOut = QStringLiteral("/home/u/out/");

class BatchCopierTest : public ::testing::Test
{
protected:
    fake::MemoryFileLayer files;
    CopyState state;
    fake::FakeBatchHost host;
    fake::MemoryResumeStore store;
    PrefixDrives drives;
    BatchCopier batch{state, host, files, store, drives};
};

TEST_F(BatchCopierTest, AListOfVanishedFilesCopiesNothing)
{
    const BatchResult r = batch.copyingFiles({kA, kB});
    EXPECT_EQ(r.files, 0);
    EXPECT_EQ(r.finished, 0);
    EXPECT_EQ(files.readCount(), 0);
    EXPECT_EQ(batch.counters().totalBytes, 0);
}

TEST_F(BatchCopierTest, DestinationsKeepTheSourceFoldersBelowTheVolumeUnlessSameFolder)
{
    EXPECT_EQ(batch.destinationFor(kA, kOut, true), kOut + QStringLiteral("AVSEQ01.DAT"));
    EXPECT_EQ(batch.destinationFor(kA, kOut, false), kOut + QStringLiteral("MPEGAV/AVSEQ01.DAT"));
    EXPECT_EQ(batch.destinationFor(QStringLiteral("/media/cdrom/x.dat"), kOut, false),
        kOut + QStringLiteral("x.dat"));
    EXPECT_EQ(batch.destinationFor(QStringLiteral("/home/u/a.dat"), kOut, false),
        kOut + QStringLiteral("home/u/a.dat"));

    files.put(kA, positionBytes(5000));
    host.sameDir = false;
    host.folder = QStringLiteral("/home/u/out"); // no closing slash: one is added
    const BatchResult r = batch.copyingFiles({kA});
    EXPECT_EQ(r.finished, 1);
    EXPECT_EQ(files.bytes(kOut + QStringLiteral("MPEGAV/AVSEQ01.DAT")), positionBytes(5000));
    EXPECT_TRUE(files.foldersMade().contains(kOut + QStringLiteral("MPEGAV/")));
    EXPECT_EQ(host.shownFiles.first(),
        QStringLiteral("从“") + kA + QStringLiteral("”|到“") + kOut
            + QStringLiteral("MPEGAV/AVSEQ01.DAT”|1/1 ]|[ 总共：5,000 字节"));
    EXPECT_TRUE(host.base.boxes.isEmpty()); // no finish box in a batch
    EXPECT_TRUE(host.base.entries.isEmpty());
}

// Thousands of small files: the drive of a folder is looked up once per batch, each destination folder
// is made once, and a file is examined no more than the copy needs (its length for the total and for the
// block loop, whether its destination exists).
TEST_F(BatchCopierTest, PerFileWorkIsOnlyWhatTheCopyNeeds)
{
    CountingFiles counting(files);
    BatchCopier counted(state, host, counting, store, drives);
    QStringList list;
    for (int i = 0; i < 20; ++i) {
        list << QStringLiteral("/media/cdrom/MPEGAV/f%1.dat").arg(i)
             << QStringLiteral("/home/u/v/g%1.dat").arg(i);
        files.put(list[list.size() - 2], positionBytes(100 + i));
        files.put(list.last(), positionBytes(200 + i));
    }
    host.sameDir = false;
    for (int batchRun = 1; batchRun <= 2; ++batchRun) {
        SCOPED_TRACE(batchRun);
        host.batchAnswers = {BatchExistingChoice::OverwriteAll}; // the second run overwrites
        const BatchResult r = counted.copyingFiles(list);
        EXPECT_EQ(r.finished, 40);
        EXPECT_EQ(counted.counters().copiedBytes, counted.counters().totalBytes);
        EXPECT_EQ(drives.typeLookups, 2 * batchRun); // two folders; a new batch looks again
        EXPECT_EQ(drives.nameLookups, 2 * batchRun);
        EXPECT_EQ(counting.foldersMade, 3 * batchRun); // the chosen folder and one per source folder
    }
    EXPECT_EQ(files.bytes(kOut + QStringLiteral("MPEGAV/f7.dat")), positionBytes(107));
    EXPECT_EQ(files.bytes(kOut + QStringLiteral("home/u/v/g19.dat")), positionBytes(219));
    EXPECT_LE(counting.lengths, 2 * 80);
    EXPECT_LE(counting.existsAsked, 80);
}

// A file's end checks only its close: the batch syncs the file systems it wrote to once at its end, and
// a finished file's record goes only when that sync confirms the bytes; a failure is said in a box.
TEST_F(BatchCopierTest, TheBatchEndsWithOneSyncBeforeRecordsGo)
{
    for (const int syncErrno : {0, EIO}) {
        SCOPED_TRACE(syncErrno);
        files.reset();
        store.records.clear();
        host.base.boxes.clear();
        files.syncFileSystemErrno = syncErrno;
        files.fileSystemsSynced.clear();
        files.put(kA, positionBytes(5000));
        files.put(kB, positionBytes(7000));
        const QString destinationA = kOut + QStringLiteral("AVSEQ01.DAT");
        store.save(destinationA, ResumeRecord{100, 100, 0, 1, 0}); // left over from an earlier try

        const BatchResult r = batch.copyingFiles({kA, kB});

        EXPECT_EQ(r.finished, 2);
        EXPECT_EQ(files.fileSystemsSynced, QStringList{kOut});
        ResumeRecord kept;
        EXPECT_EQ(store.load(destinationA, kept), syncErrno != 0);
        EXPECT_EQ(r.syncFailed, syncErrno != 0);
        EXPECT_EQ(host.base.boxes.size(), syncErrno ? 1 : 0);
        if (syncErrno) {
            EXPECT_EQ(host.base.boxes[0].text, kOut + QStringLiteral("\r\n[5].Input/output error"));
        }
    }
}

TEST_F(BatchCopierTest, KeepBothSkipsEqualLengthsAndCopiesOthersUnderANewName)
{
    files.put(kA, positionBytes(3000));
    files.put(kB, positionBytes(4000));
    files.put(kOut + QStringLiteral("AVSEQ01.DAT"), QByteArray(3000, 'x')); // same length
    files.put(kOut + QStringLiteral("AVSEQ02.DAT"), QByteArray(10, 'x')); // different length
    host.batchAnswers = {BatchExistingChoice::KeepBoth, BatchExistingChoice::KeepBoth};

    const BatchResult r = batch.copyingFiles({kA, kB});
    EXPECT_EQ(r.skipped, 1);
    EXPECT_EQ(r.finished, 1);
    EXPECT_EQ(files.bytes(kOut + QStringLiteral("AVSEQ01.DAT")), QByteArray(3000, 'x'));
    EXPECT_EQ(files.bytes(kOut + QStringLiteral("AVSEQ02.DAT")), QByteArray(10, 'x'));
    EXPECT_EQ(files.bytes(kOut + QStringLiteral("N[01]AVSEQ02.DAT")), positionBytes(4000));
    EXPECT_EQ(batch.counters().copiedBytes, 4000); // the skipped file is not counted
    EXPECT_EQ(batch.counters().totalBytes, 7000);
}

TEST_F(BatchCopierTest, OverwriteAllAnswersEveryLaterConflict)
{
    QStringList list;
    for (int i = 0; i < 4; ++i) {
        const QString src = QStringLiteral("/media/cdrom/f%1.dat").arg(i);
        files.put(src, positionBytes(100 + i));
        files.put(kOut + QStringLiteral("f%1.dat").arg(i), QByteArray(500, 'o'));
        list << src;
    }
    host.batchAnswers = {BatchExistingChoice::OverwriteAll};
    const BatchResult r = batch.copyingFiles(list);
    EXPECT_EQ(host.batchAsked, 1);
    EXPECT_EQ(r.finished, 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(
            files.bytes(kOut + QStringLiteral("f%1.dat").arg(i)), positionBytes(100 + i)); // emptied first
}

// A file listed from the chosen folder itself is its own destination: neither an earlier "overwrite all"
// nor a question may empty it.
TEST_F(BatchCopierTest, AFileThatIsItsOwnDestinationIsLeftAlone)
{
    const QString own = kOut + QStringLiteral("own.dat");
    files.put(kA, positionBytes(300));
    files.put(kOut + QStringLiteral("AVSEQ01.DAT"), QByteArray(10, 'x'));
    files.put(own, positionBytes(700));
    host.batchAnswers = {BatchExistingChoice::OverwriteAll};
    BatchResult r = batch.copyingFiles({kA, own});
    EXPECT_EQ(host.batchAsked, 1);
    EXPECT_EQ(r.finished, 1);
    EXPECT_EQ(r.skipped, 1);
    EXPECT_EQ(files.bytes(own), positionBytes(700));
    EXPECT_EQ(batch.counters().copiedBytes, 300);

    host = {};
    host.batchAnswers = {BatchExistingChoice::Overwrite};
    r = batch.copyingFiles({own});
    EXPECT_EQ(host.batchAsked, 0);
    EXPECT_EQ(r.skipped, 1);
    EXPECT_EQ(files.bytes(own), positionBytes(700));
}

TEST_F(BatchCopierTest, CancelKeepsThePartialFileWithAResumeRecord)
{
    files.put(kA, positionBytes(500000));
    files.put(kB, positionBytes(500000));
    host.base.onBlock = [&] {
        if (host.base.blocks == 3) {
            state.stopRequested = true;
            state.cancelRequested = true;
        }
    };
    state.elapsedSeconds = 0;
    const BatchResult r = batch.copyingFiles({kA, kB});
    EXPECT_TRUE(r.cancelled);
    const QString dest = kOut + QStringLiteral("AVSEQ01.DAT");
    const qint64 partial = files.bytes(dest).size();
    EXPECT_EQ(partial, 3 * 40960 + 1);
    ASSERT_TRUE(store.records.contains(dest));
    EXPECT_EQ(store.records[dest].continuePosition, partial);
    EXPECT_FALSE(files.contains(kOut + QStringLiteral("AVSEQ02.DAT")));
    EXPECT_TRUE(host.base.boxes.isEmpty()); // no delete question in a batch
}

// A cancel the window holds, made in a file's last block: the file finishes, and the batch ends without
// creating the next file.
TEST_F(BatchCopierTest, CancelBetweenFilesTouchesNoFurtherDestination)
{
    files.put(kA, positionBytes(1000));
    files.put(kB, positionBytes(1000));
    host.base.onBlock = [&] {
        state.cancelHeld = true;
        state.stopRequested = true;
        state.cancelRequested = true;
    };
    const BatchResult r = batch.copyingFiles({kA, kB});
    EXPECT_EQ(r.finished, 1);
    EXPECT_FALSE(files.contains(kOut + QStringLiteral("AVSEQ02.DAT")));
    EXPECT_TRUE(store.records.isEmpty());
}

TEST_F(BatchCopierTest, UnreadableStretchSkipsEightyBlocksWithoutALogEntry)
{
    const QByteArray data = positionBytes(4'000'000);
    files.put(kA, data);
    files.faults(kA).badReads = {ByteRange{100000, 1}}; // in the round at position 81921
    const BatchResult r = batch.copyingFiles({kA});
    EXPECT_EQ(r.finished, 1);
    const QByteArray out = files.bytes(kOut + QStringLiteral("AVSEQ01.DAT"));
    ASSERT_EQ(out.size(), data.size());
    const qint64 resumeAt = 81921 + 80 * 40960;
    EXPECT_EQ(out.sliced(resumeAt - 1), data.sliced(resumeAt - 1));
    EXPECT_EQ(out.sliced(81921, resumeAt - 1 - 81921), QByteArray(resumeAt - 1 - 81921, '\0'));
    EXPECT_TRUE(host.base.entries.isEmpty());
}

// Sharing and record failures go on with the next file; a full disk or a source drive without its disc
// ends the batch and keeps a record. A failing destination is never skipped over nor taken for a missing
// disc, and its partial file keeps a record either way.
TEST_F(BatchCopierTest, FailuresEitherGoOnOrEndTheBatch)
{
    const QString head
        = QStringLiteral("复制文件“") + kA + QStringLiteral("”时遇到错误。\r\n") + QString(22, ' ');
    const struct
    {
        bool destination; // else the source's read fails
        int error;
        bool cdRomNotReady;
        QString cause; // empty: nothing logged
        QString box; // empty: no box
        bool endsBatch;
    } rows[] = {
        {true, EACCES, false, QStringLiteral("错误原因：共享冲突,源文件或目标文件可能正在使用。"), {}, false},
        {false, ESPIPE, false, QStringLiteral("错误原因：未知错误，请检查文件访问权限。"), {}, false},
        {true, ENOSPC, false, QStringLiteral("错误原因：磁盘已满，没有足够的可用空间用来复制文件。"), {},
            true},
        {false, ENOMEDIUM, true, QStringLiteral("错误原因：复制文件被意外地终止，可能是光驱中没有光盘。"), {},
            true},
        {true, EIO, true, {}, QStringLiteral("[5].sys"), false},
        {true, ENOMEDIUM, true, {}, QStringLiteral("[123].sys"), false},
        {true, ETIMEDOUT, false, {}, QStringLiteral("[110].sys"), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.error);
        files.reset();
        store.records.clear();
        host = {};
        files.put(kA, positionBytes(200000));
        files.put(kB, positionBytes(1000));
        const QString destA = kOut + QStringLiteral("AVSEQ01.DAT");
        files.put(destA, QByteArray());
        if (row.destination) {
            files.faults(destA).writeLimit = 50000;
            files.faults(destA).writeErrno = row.error;
            files.faults(destA).writeText = QStringLiteral("sys");
        } else {
            files.faults(kA).badReads = {ByteRange{50000, 1}};
            files.faults(kA).readErrno = row.error;
        }
        drives.ready = !row.cdRomNotReady;
        host.batchAnswers = {BatchExistingChoice::Overwrite};

        const BatchResult r = batch.copyingFiles({kA, kB});
        EXPECT_EQ(host.base.entries, row.cause.isEmpty() ? QStringList() : QStringList{head + row.cause});
        EXPECT_EQ(host.base.boxes.size(), row.box.isEmpty() ? 0 : 1);
        if (!row.box.isEmpty() && !host.base.boxes.isEmpty()) {
            EXPECT_EQ(host.base.boxes[0].text, row.box);
        }
        EXPECT_EQ(files.contains(kOut + QStringLiteral("AVSEQ02.DAT")), !row.endsBatch);
        EXPECT_EQ(r.cancelled, row.endsBatch);
        EXPECT_EQ(r.finished, row.endsBatch ? 0 : 1); // never counted as finished with skips
        EXPECT_EQ(r.withSkips, 0);
        EXPECT_EQ(store.records.contains(destA), row.endsBatch || row.destination);
        if (row.endsBatch && !row.destination) {
            // the source failed in the round at 40961 (blocks of 40960): all before it is on the device
            EXPECT_EQ(store.records.value(destA).continuePosition, 40961);
        }
        EXPECT_FALSE(state.copyRunning);
    }
}

TEST_F(BatchCopierTest, TooLittleRoomAsksWithTheBatchTotal)
{
    files.putGenerated(kA, 700LL * 1024 * 1024);
    drives.free = 500.0 * 1024 * 1024;
    host.base.answers = {platform::kAnswerNo};
    const BatchResult r = batch.copyingFiles({kA});
    EXPECT_FALSE(r.started);
    EXPECT_EQ(host.base.boxes.first().text,
        QStringLiteral("/盘空间不足，请重新选择文件保存路径\r\n可用空间：500MB\r\n文件容量：700MB\r\n\r\n"
                       "是[Y]：忽略，继续复制\r\n否[N]：取消复制，重新选择文件保存路径"));
    EXPECT_EQ(files.readCount(), 0);

    host = {};
    host.folder = QStringLiteral("relative/out");
    EXPECT_FALSE(batch.copyingFiles({kA}).started);
    EXPECT_EQ(host.base.boxes.first().text, QStringLiteral("无效的文件保存路径。"));
}

} // namespace
