#include "oplog/OperationLog.h"
#include "oplog/LogFile.h"
#include "oplog/LogTexts.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <thread>

using namespace vindaro::oplog;

namespace {

constexpr int kWaitMs = 5000;
const QString kCrLf = QStringLiteral("\r\n");

// 14 May 2003, 21:07:31 local time, as in the examples of the log.
const QDateTime kEvening(QDate(2003, 5, 14), QTime(21, 7, 31));
const QString kEveningStamp = QStringLiteral("[5/14/03 09:07:31 PM] ");

ChangeEvent change(quint32 code, const char* path1, const char* path2 = "")
{
    return ChangeEvent{code, QString::fromUtf8(path1), QString::fromUtf8(path2)};
}

QByteArray readBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class OperationLogTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("OperationNotes.log"));
    QDateTime now = kEvening;

    OperationLogOptions options(qsizetype capacity = ChangeQueue::kDefaultCapacity)
    {
        OperationLogOptions o;
        o.logFilePath = path;
        o.now = [this] { return now; };
        o.queueCapacity = capacity;
        return o;
    }
    // The entries of `text` without their stamps.
    static QStringList descriptions(const QString& text)
    {
        QStringList lines = text.split(kCrLf);
        EXPECT_TRUE(lines.takeLast().isEmpty()); // every entry ends with CR LF
        for (QString& line : lines)
            line = line.mid(line.indexOf(QStringLiteral("] ")) + 2);
        return lines;
    }
};

TEST_F(OperationLogTest, EntryIsStampedWithShortDateAndTwelveHourTime)
{
    EXPECT_EQ(entryStamp(kEvening), kEveningStamp);
    EXPECT_EQ(entryStamp(QDateTime(QDate(2003, 5, 14), QTime(0, 5, 9))), "[5/14/03 12:05:09 AM] ");
    // The date follows the locale; the AM/PM letters stay.
    EXPECT_EQ(entryStamp(kEvening, QLocale(QLocale::Chinese, QLocale::China)), "[2003/5/14 09:07:31 PM] ");

    OperationLog log(options());
    log.GetFileCopyLog(QStringLiteral("取消复制：/tmp/a.dat"));
    EXPECT_TRUE(log.addChange(change(0x80000, "/x"))); // an unknown code: a stamped empty entry
    EXPECT_EQ(log.runningText(),
        kEveningStamp + QStringLiteral("取消复制：/tmp/a.dat") + kCrLf + kEveningStamp + kCrLf);
}

// Immediate repeats of a change are logged once; the copy engine's messages never are dropped and do not
// count as the last change.
TEST_F(OperationLogTest, RepeatedChangeIsLoggedOnceUntilAnotherChange)
{
    OperationLog log(options());
    const ChangeEvent update = change(kUpdateDirectory, "/home/u");
    EXPECT_TRUE(log.addChange(update));
    EXPECT_FALSE(log.addChange(update));
    log.GetFileCopyLog(QStringLiteral("文件跳过：1,024字节"));
    log.GetFileCopyLog(QStringLiteral("文件跳过：1,024字节"));
    EXPECT_FALSE(log.addChange(update));
    EXPECT_TRUE(log.addChange(change(kCreate, "/home/u/a")));
    EXPECT_TRUE(log.addChange(update));
    EXPECT_EQ(descriptions(log.runningText()),
        QStringList({"更新文件夹 “/home/u”", "文件跳过：1,024字节", "文件跳过：1,024字节",
            "创建文件：“/home/u/a”", "更新文件夹 “/home/u”"}));
}

// Changes delivered on another thread are logged on the log's thread, in order, and the running text is
// shown again.
TEST_F(OperationLogTest, QueuedChangesFromAnotherThreadAreLoggedInOrder)
{
    OperationLog log(options());
    log.viewFile();
    ASSERT_EQ(log.shown(), OperationLog::Shown::FileView);
    std::thread monitor([&log] {
        for (int i = 0; i < 10; ++i)
            log.changeQueue().addChanges({change(kCreate, qPrintable(QStringLiteral("/t/%1").arg(i)))});
    });
    monitor.join();
    ASSERT_TRUE(QTest::qWaitFor([&] { return descriptions(log.runningText()).size() == 10; }, kWaitMs));
    EXPECT_EQ(descriptions(log.runningText()).last(), "创建文件：“/t/9”");
    EXPECT_EQ(log.shown(), OperationLog::Shown::RunningText);
}

// A full queue keeps what came first and sums up the rest as one update of the folder holding them all,
// logged after them; what comes once there is room follows the summary.
TEST_F(OperationLogTest, OverflowIsSummedUpAsOneFolderUpdate)
{
    OperationLog log(options(3));
    log.changeQueue().addChanges(
        {change(kDelete, "/big/a/1"), change(kDelete, "/big/a/2"), change(kDelete, "/big/a/3"),
            change(kDelete, "/big/a/4"), change(kDelete, "/big/b/5"), change(kRemoveDirectory, "/big/b")});
    EXPECT_EQ(log.changeQueue().summedUp(), 3);
    ASSERT_TRUE(QTest::qWaitFor([&] { return log.changeQueue().isEmpty(); }, kWaitMs));
    log.changeQueue().addChanges({change(kRemoveDirectory, "/big")});
    ASSERT_TRUE(QTest::qWaitFor([&] { return log.changeQueue().isEmpty(); }, kWaitMs));
    EXPECT_EQ(descriptions(log.runningText()),
        QStringList({"删除文件：“/big/a/1”", "删除文件：“/big/a/2”", "删除文件：“/big/a/3”",
            "更新文件夹 “/big”", "删除文件夹：“/big”"}));
}

TEST(CommonFolder, IsTheDeepestFolderHoldingBoth)
{
    EXPECT_EQ(commonFolder(QStringLiteral("/a/b/c"), QStringLiteral("/a/bc")), "/a");
    EXPECT_EQ(commonFolder(QStringLiteral("/a/b"), QStringLiteral("/a/b/c")), "/a/b");
    EXPECT_EQ(commonFolder(QStringLiteral("/x"), QStringLiteral("/y")), "/");
}

// The note of the watch limit is an entry of its own, never taken for a repeat.
TEST_F(OperationLogTest, WatchLimitNoteIsLogged)
{
    OperationLog log(options());
    log.changeQueue().watchLimitReached(QStringLiteral("/home/u/deep"));
    ASSERT_TRUE(log.takeQueuedChanges(-1));
    EXPECT_EQ(log.runningText(), kEveningStamp + watchLimitNote(QStringLiteral("/home/u/deep")) + kCrLf);
}

// Each run appends its entries and one empty line; the next run's entries follow the empty line.
TEST_F(OperationLogTest, RunsAreAppendedApartByAnEmptyLine)
{
    {
        OperationLog run(options());
        run.GetFileCopyLog(QStringLiteral("first"));
        run.changeQueue().addChanges({change(kCreate, "/f")}); // still queued when the run ends
        ASSERT_TRUE(run.writeRunningText());
        EXPECT_TRUE(run.runningText().isEmpty());
    }
    {
        OperationLog idle(options()); // a run that logged nothing writes nothing
        ASSERT_TRUE(idle.writeRunningText());
    }
    now = now.addSecs(3600);
    OperationLog next(options());
    next.GetFileCopyLog(QStringLiteral("second"));
    ASSERT_TRUE(next.writeRunningText());
    const QString expected = kEveningStamp + "first\r\n" + kEveningStamp + "创建文件：“/f”\r\n\r\n"
        + "[5/14/03 10:07:31 PM] second\r\n\r\n";
    EXPECT_EQ(QString::fromUtf8(readBytes(path)), expected);
}

// View shows the file's lines, or "无日志记录！" for a missing or emptied file; the clears show the
// running text again.
TEST_F(OperationLogTest, ViewAndClears)
{
    OperationLog log(options());
    QSignalSpy shown(&log, &OperationLog::shownChanged);
    log.viewFile();
    EXPECT_EQ(log.fileView(), kNoLogRecords + kCrLf);

    ASSERT_TRUE(appendToLogFile(path, QStringLiteral("[a] one\r\n[b] two\n[c] three\r\n")));
    log.viewFile();
    EXPECT_EQ(log.fileView(), "[a] one\r\n[b] two\r\n[c] three\r\n");
    EXPECT_EQ(log.shown(), OperationLog::Shown::FileView);

    log.emptyFile();
    EXPECT_EQ(readBytes(path), "\r\n");
    EXPECT_EQ(log.shown(), OperationLog::Shown::RunningText);
    log.viewFile();
    EXPECT_EQ(log.fileView(), kNoLogRecords + kCrLf);

    log.GetFileCopyLog(QStringLiteral("entry"));
    EXPECT_EQ(log.shown(), OperationLog::Shown::FileView); // the engine's entries leave the view alone
    log.emptyRunningText();
    EXPECT_TRUE(log.runningText().isEmpty());
    EXPECT_EQ(log.shown(), OperationLog::Shown::RunningText);
    EXPECT_EQ(shown.size(), 4);
}

// A long run keeps a bounded running text: the older entries are written ahead, and the file still ends
// up with every entry once and a single empty line after the run.
TEST_F(OperationLogTest, LongRunIsWrittenAheadAndKeptBounded)
{
    OperationLogOptions o = options();
    o.runningTextLimit = 4096;
    OperationLog log(o);
    QString all;
    for (int i = 0; i < 500; ++i) {
        const QString text = QStringLiteral("entry %1").arg(i);
        log.GetFileCopyLog(text);
        all += kEveningStamp + text + kCrLf;
        ASSERT_LE(log.runningText().size(), 4096 + 64);
    }
    ASSERT_TRUE(log.writeRunningText());
    EXPECT_EQ(QString::fromUtf8(readBytes(path)), all + kCrLf);
}

TEST(LogFile, ViewOfABigFileStartsAtALineInItsTail)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("big.log"));
    ASSERT_TRUE(appendToLogFile(path, QStringLiteral("0123456789\r\nabcdefghij\r\nABC\r\n")));
    EXPECT_EQ(readLogFile(path, 17), "abcdefghij\r\nABC\r\n"); // the tail starts at "abcdefghij"
    EXPECT_EQ(readLogFile(path, 16), "ABC\r\n");
    EXPECT_EQ(readLogFile(path, 0), "0123456789\r\nabcdefghij\r\nABC\r\n");
}

} // namespace
