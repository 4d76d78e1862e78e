#include "copy/CopySession.h"
#include "fakes/FakeCopyHost.h"
#include "fakes/MemoryFileLayer.h"
#include "platform/Volumes.h"

#include <gtest/gtest.h>

using namespace vindaro::copy;
namespace fake = vindaro::testing;
namespace platform = vindaro::platform;
using fake::positionBytes;

namespace {

// Drives by path prefix, as a mount table would give them.
class FakeDriveFacts final : public DriveFacts
{
public:
    struct Drive
    {
        QString root;
        int kind;
        double freeBytes;
        bool ready = true;
        bool floppy = false;
    };
    QList<Drive> drives;

    const Drive* find(const QString& path) const
    {
        const Drive* best = nullptr;
        for (const Drive& d : drives) {
            if (path.startsWith(d.root) && (!best || d.root.size() > best->root.size()))
                best = &d;
        }
        return best;
    }
    int driveType(const QString& path) override { return find(path) ? find(path)->kind : 0; }
    double freeBytes(const QString& path) override { return find(path) ? find(path)->freeBytes : -1; }
    bool driveIsReady(const QString& path) override { return find(path) && find(path)->ready; }
    QString driveName(const QString& path) override { return find(path) ? find(path)->root : QString(); }
    bool isFloppy(const QString& path) override { return find(path) && find(path)->floppy; }
};

const QString kCdSource = QStringLiteral("/media/cdrom/MPEGAV/AVSEQ01.DAT");
const QString kDest = QStringLiteral("/home/u/video/a.dat");

class CopySessionTest : public ::testing::Test
{
protected:
    fake::MemoryFileLayer files;
    CopyState state;
    fake::FakeCopyHost host;
    fake::MemoryResumeStore store;
    FakeDriveFacts drives;
    CopySession session{state, host, files, store, drives};

    CopySessionTest()
    {
        drives.drives = {{QStringLiteral("/media/cdrom"), platform::kDriveCdRom, 0},
            {QStringLiteral("/media/floppy"), platform::kDriveRemovable, 1e6, true, true},
            {QStringLiteral("/media/usb"), platform::kDriveRemovable, 1e9},
            {QStringLiteral("/mnt/nfs"), platform::kDriveRemote, 1e9},
            {QStringLiteral("/dev/shm"), platform::kDriveRamDisk, 1e9},
            {QStringLiteral("/home"), platform::kDriveFixed, 1e12}};
    }
    QString boxTexts() const
    {
        QStringList texts;
        for (const auto& b : host.boxes)
            texts << b.text;
        return texts.join(QLatin1Char('|'));
    }
};

TEST_F(CopySessionTest, BlockSizeFollowsDriveKindFileKindAndReadSlider)
{
    const struct
    {
        QString source;
        QString destination;
        int slider;
        int family;
        qint64 blockBytes;
    } table[] = {
        {kCdSource, kDest, 10, 3, 40960},
        {QStringLiteral("/media/cdrom/VIDEO_TS/VTS_01_1.vob"), kDest, 10, 3, 51200},
        {QStringLiteral("/home/u/a.dat"), kDest, 10, 3, 61440}, // Linux: "not known" family
        {QStringLiteral("/home/u/a.dat"), kDest, 10, 2, 61440},
        {QStringLiteral("/home/u/a.dat"), kDest, 10, 1, 614400},
        {QStringLiteral("/media/floppy/a.dat"), kDest, 1, 3, 128},
        {QStringLiteral("/media/usb/a.dat"), kDest, 10, 3, 10240},
        {QStringLiteral("/mnt/nfs/a.dat"), kDest, 10, 3, 40960},
        {QStringLiteral("/dev/shm/a.dat"), kDest, 10, 3, 40960},
        {QStringLiteral("relative.dat"), kDest, 10, 3, 40960},
        {QStringLiteral("/home/u/a.dat"), QStringLiteral("//server/share/a.dat"), 10, 3, 40960},
        {kCdSource, kDest, 100, 3, 409600},
    };
    for (const auto& row : table) {
        state.readBlocks = row.slider;
        session.setPlatformFamily(row.family);
        EXPECT_EQ(session.computeBlockBytes(row.source, row.destination), row.blockBytes)
            << row.source.toStdString();
        EXPECT_EQ(state.blockBytes, row.blockBytes);
    }
    // the oldest family leaves the block size of fixed drives as it was
    state.blockBytes = 777;
    session.setPlatformFamily(0);
    EXPECT_EQ(session.computeBlockBytes(QStringLiteral("/home/u/a.dat"), kDest), 777);
}

TEST_F(CopySessionTest, EmptyPathsAndMissingDrivesStopWithTheirBox)
{
    EXPECT_EQ(session.startCopy(QStringLiteral("  "), kDest), CopyOutcome::NotStarted);
    EXPECT_EQ(host.boxes.last().text, QStringLiteral("源文件路径与文件保存路径不能为空。"));
    EXPECT_EQ(host.boxes.last().title, QStringLiteral("提醒！"));

    files.put(kCdSource, positionBytes(10));
    EXPECT_EQ(session.startCopy(kCdSource, QStringLiteral("Q:\\video\\a.dat")), CopyOutcome::NotStarted);
    EXPECT_EQ(host.boxes.last().text, QStringLiteral("无效的文件保存路径。"));
    EXPECT_EQ(host.boxes.last().title, QStringLiteral("Error"));
    EXPECT_EQ(files.readCount(), 0);
}

TEST_F(CopySessionTest, LowSpaceAnsweredNoCopiesNothingAndLogsWholeMegabytes)
{
    files.putGenerated(kCdSource, 700LL * 1024 * 1024 + 5);
    drives.drives.last().freeBytes = 500.0 * 1024 * 1024 + 1000;
    host.answers = {platform::kAnswerNo};

    EXPECT_EQ(session.startCopy(kCdSource, kDest), CopyOutcome::NotStarted);
    EXPECT_FALSE(files.contains(kDest));
    const QString indent(22, QLatin1Char(' '));
    EXPECT_EQ(host.entries,
        QStringList{QStringLiteral("复制文件“") + kCdSource + QStringLiteral("”时遇到错误。\r\n") + indent
            + QStringLiteral("错误原因：/home盘空间不足\r\n") + indent + QStringLiteral("可用空间：500MB\r\n")
            + indent + QStringLiteral("文件大小：700MB")});
    EXPECT_EQ(host.boxes.last().text,
        QStringLiteral("/home盘空间不足，请重新选择文件保存路径\r\n可用空间：500MB\r\n文件大小："
                       "700MB\r\n\r\n是[Y]：忽略，继续复制\r\n否[N]：取消复制，重新选择文件保存路径"));
}

TEST_F(CopySessionTest, NetworkDestinationSkipsTheSpaceCheck)
{
    files.put(kCdSource, positionBytes(100));
    EXPECT_EQ(session.startCopy(kCdSource, QStringLiteral("//server/share/a.dat")), CopyOutcome::Finished);
    EXPECT_EQ(files.bytes(QStringLiteral("//server/share/a.dat")), positionBytes(100));
}

TEST_F(CopySessionTest, ContinuesFromTheResumeRecordWithItsSeconds)
{
    const QByteArray data = positionBytes(100000);
    files.put(kCdSource, data);
    files.put(kDest, data.first(40961));
    store.records.insert(kDest, makeResumeRecord(40961, 40961, 100000, 17));
    host.continueAnswers = {ContinueChoice::Continue};
    int elapsedAtFirstBlock = -1;
    host.onBlock = [&] {
        if (elapsedAtFirstBlock < 0)
            elapsedAtFirstBlock = state.elapsedSeconds;
    };

    EXPECT_EQ(session.startCopy(kCdSource, kDest), CopyOutcome::Finished);
    EXPECT_EQ(files.readOffsets(kCdSource).first(), 40960);
    EXPECT_EQ(elapsedAtFirstBlock, 17);
    EXPECT_EQ(files.bytes(kDest), data);
    EXPECT_EQ(host.entries.first(),
        QStringLiteral("续拷文件：") + kCdSource + "\r\n" + QString(22, ' ') + QStringLiteral("到：")
            + kDest);
    EXPECT_FALSE(store.records.contains(kDest)); // a finished copy leaves no record behind

    // a destination cut short since the record was saved goes on from its own length, leaving no hole
    files.put(kDest, data.first(1000));
    store.records.insert(kDest, makeResumeRecord(40961, 40961, 100000, 17));
    host = {};
    host.continueAnswers = {ContinueChoice::Continue};
    EXPECT_EQ(session.startCopy(kCdSource, kDest), CopyOutcome::Finished);
    EXPECT_EQ(files.bytes(kDest), data);
}

TEST_F(CopySessionTest, ExistingDestinationChoices)
{
    const QByteArray data = positionBytes(100000);
    const QByteArray old = QByteArray(150000, 'o');
    struct Row
    {
        const char* name;
        ExistingFileChoice choice;
        QByteArray before;
        QByteArray after; // empty: the file is gone
        CopyOutcome outcome;
    };
    const QList<Row> rows = {
        {"overwrite", ExistingFileChoice::Overwrite, old, data, CopyOutcome::Finished},
        {"append", ExistingFileChoice::Append, data.first(5000), data, CopyOutcome::Finished},
        {"merge", ExistingFileChoice::Merge, QByteArray("head"), QByteArray("head") + data,
            CopyOutcome::Finished},
        {"delete", ExistingFileChoice::Delete, old, QByteArray(), CopyOutcome::NotStarted},
        {"give up", ExistingFileChoice::GiveUp, old, old, CopyOutcome::NotStarted},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        files.reset();
        host = {};
        files.put(kCdSource, data);
        files.put(kDest, row.before);
        host.existingAnswers = {row.choice};
        EXPECT_EQ(session.startCopy(kCdSource, kDest), row.outcome);
        EXPECT_EQ(host.dialogs, QStringList{QStringLiteral("existing")});
        if (row.after.isEmpty())
            EXPECT_FALSE(files.contains(kDest));
        else
            EXPECT_EQ(files.bytes(kDest), row.after);
    }
}

TEST_F(CopySessionTest, NewNameGoesIntoTheSameFolderAndNeverIntoAnotherExistingFile)
{
    const QByteArray data = positionBytes(1000);
    const QString copy2 = QStringLiteral("/home/u/video/copy2.dat");
    files.put(kCdSource, data);
    files.put(kDest, QByteArray("keep"));
    files.put(copy2, QByteArray("also keep"));
    host.newName = QStringLiteral("copy2.dat");
    host.existingAnswers = {ExistingFileChoice::Rename,
        ExistingFileChoice::GiveUp}; // the new name exists too: asked again, and given up
    EXPECT_EQ(session.startCopy(kCdSource, kDest), CopyOutcome::NotStarted);
    EXPECT_EQ(files.bytes(copy2), QByteArray("also keep"));
    EXPECT_EQ(host.dialogs.size(), 2);

    files.remove(copy2);
    host = {};
    host.newName = QStringLiteral("copy2.dat");
    host.existingAnswers = {ExistingFileChoice::Rename};
    EXPECT_EQ(session.startCopy(kCdSource, kDest), CopyOutcome::Finished);
    EXPECT_EQ(files.bytes(copy2), data);
    EXPECT_EQ(files.bytes(kDest), QByteArray("keep"));
}

// Overwriting a destination that is the source itself would empty the source before it is read: refused
// with a box, whether chosen at the start or on continuing a paused copy, and the file keeps its bytes.
TEST_F(CopySessionTest, OverwritingTheSourceItselfIsRefused)
{
    const QByteArray data = positionBytes(300000);
    const QString& sameFile = kDest;
    const QString refused
        = QStringLiteral("源文件和文件保存路径是同一个文件，不能覆盖。请重新选择文件保存路径。");
    files.put(kDest, data);
    host.existingAnswers = {ExistingFileChoice::Overwrite};
    EXPECT_EQ(session.startCopy(kDest, sameFile), CopyOutcome::NotStarted);
    ASSERT_EQ(host.boxes.size(), 1);
    EXPECT_EQ(host.boxes[0].text, refused);
    EXPECT_EQ(host.boxes[0].title, QStringLiteral("提醒！"));
    EXPECT_EQ(files.bytes(kDest), data);

    // A paused copy whose destination was changed to its source: "overwrite" keeps it paused.
    files.put(kCdSource, data);
    host = {};
    host.onBlock = [&] { state.stopRequested = true; };
    ASSERT_EQ(session.startCopy(kCdSource, QStringLiteral("/home/u/video/b.dat")), CopyOutcome::Paused);
    host = {};
    host.answers = {platform::kAnswerYes};
    state.stopRequested = false;
    state.copyRunning = true;
    EXPECT_EQ(session.resumeCopy(kDest, sameFile), CopyOutcome::Paused);
    EXPECT_EQ(host.boxes.last().text, refused);
    EXPECT_EQ(host.switches, QStringList{QStringLiteral("stay-paused")});
    EXPECT_EQ(files.bytes(kDest), data);
}

TEST_F(CopySessionTest, ResumeAfterPauseAsksOverwriteOrAppendAndAppendsExactly)
{
    const QByteArray data = positionBytes(300000);
    files.put(kCdSource, data);
    host.onBlock = [&] {
        if (host.blocks == 2)
            state.stopRequested = true;
    };
    EXPECT_EQ(session.startCopy(kCdSource, kDest), CopyOutcome::Paused);
    const qint64 pausedAt = state.position;
    EXPECT_EQ(pausedAt, 2 * 40960 + 1); // a CD-ROM source reads 40960 bytes per block

    host.onBlock = nullptr;
    host.answers = {platform::kAnswerNo};
    state.stopRequested = false;
    state.copyRunning = true;
    EXPECT_EQ(session.resumeCopy(kCdSource, kDest), CopyOutcome::Finished);
    EXPECT_EQ(host.boxes.first().text,
        kDest
            + QStringLiteral("\r\n该文件已经存在，是否覆盖或以追加方式继续复制？\r\n"
                             "是[Y]：覆盖该文件\r\n否[N]：以追加方式继续复制"));
    EXPECT_EQ(files.readOffsets(kCdSource)[2], pausedAt - 1);
    EXPECT_EQ(files.bytes(kDest), data);
}

TEST_F(CopySessionTest, ResumeWithTooLittleRoomStaysPausedOnNo)
{
    files.put(kCdSource, positionBytes(300000));
    host.onBlock = [&] { state.stopRequested = true; };
    session.startCopy(kCdSource, kDest);
    host = {};
    drives.drives.last().freeBytes = 1000;
    host.answers = {platform::kAnswerNo};
    EXPECT_EQ(session.resumeCopy(kCdSource, kDest), CopyOutcome::Paused);
    EXPECT_TRUE(host.boxes.first().text.startsWith(
        QStringLiteral("/home盘空间不足，请重新选择文件保存路径，然后单击[继续]并继续复制\r\n可用空间:0MB")));
    EXPECT_EQ(host.switches, QStringList{QStringLiteral("stay-paused")});
    EXPECT_FALSE(state.copyRunning);
    EXPECT_TRUE(host.entries.first().contains(QStringLiteral("盘空间不足")));
}

TEST_F(CopySessionTest, PausedMergeGoesOnAsAMerge)
{
    const QByteArray data = positionBytes(300000);
    files.put(kCdSource, data);
    files.put(kDest, QByteArray("head"));
    host.existingAnswers = {ExistingFileChoice::Merge};
    host.onBlock = [&] {
        if (host.blocks == 1)
            state.stopRequested = true;
    };
    EXPECT_EQ(session.startCopy(kCdSource, kDest), CopyOutcome::Paused);
    host.onBlock = nullptr;
    host.answers = {platform::kAnswerNo};
    state.stopRequested = false;
    EXPECT_EQ(session.resumeCopy(kCdSource, kDest), CopyOutcome::Finished);
    EXPECT_EQ(files.bytes(kDest), QByteArray("head") + data);
}

// A merge cancelled with "keep" and continued from its record goes on as a merge: the result is byte for
// byte that of a merge never interrupted, an unreadable stretch skipped in both.
TEST_F(CopySessionTest, AMergeContinuedFromItsRecordEndsAsAnUninterruptedMerge)
{
    using fake::ByteRange;
    const QString whole = QStringLiteral("/home/u/video/whole.dat");
    for (const bool withScratch : {false, true}) {
        SCOPED_TRACE(withScratch ? "with a skipped stretch" : "clean");
        files.reset();
        store.records.clear();
        files.putGenerated(kCdSource, 2'000'000);
        if (withScratch)
            files.faults(kCdSource).badReads = {ByteRange{1'200'000, 1}};
        state.skipBlocks = 1;
        for (const QString& d : {kDest, whole})
            files.put(d, QByteArray("head"));

        host = {};
        host.existingAnswers = {ExistingFileChoice::Merge};
        ASSERT_EQ(session.startCopy(kCdSource, whole),
            withScratch ? CopyOutcome::FinishedWithSkips : CopyOutcome::Finished);

        host = {};
        host.existingAnswers = {ExistingFileChoice::Merge};
        host.answers = {platform::kAnswerNo}; // keep the partial file
        host.onBlock = [&] {
            if (host.blocks == 5) {
                state.stopRequested = true;
                state.cancelRequested = true;
            }
        };
        ASSERT_EQ(session.startCopy(kCdSource, kDest), CopyOutcome::Cancelled);
        ASSERT_TRUE(store.records.contains(kDest));
        EXPECT_TRUE(store.records[kDest].merge);
        EXPECT_EQ(store.records[kDest].continuePosition, 5 * 40960 + 1);
        EXPECT_EQ(store.records[kDest].writePosition, 5 * 40960 + 5);

        host = {};
        host.continueAnswers = {ContinueChoice::Continue};
        EXPECT_EQ(session.startCopy(kCdSource, kDest),
            withScratch ? CopyOutcome::FinishedWithSkips : CopyOutcome::Finished);
        EXPECT_EQ(host.boxes.last().title, QStringLiteral("文件合并完成！"));
        EXPECT_EQ(files.bytes(kDest), files.bytes(whole));
        EXPECT_EQ(files.bytes(kDest).first(4), QByteArray("head"));
        EXPECT_FALSE(store.records.contains(kDest));
    }
}

} // namespace
