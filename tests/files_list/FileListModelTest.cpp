#include "files/FileListModel.h"
#include "ListFakes.h"
#include "files/FileListTexts.h"
#include "files/FolderScanner.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace vindaro;
using files::FileListModel;
using files::FolderScanner;

namespace {

class FileListModelTest : public ::testing::Test
{
protected:
    vindaro::testing::ListWorld world;
    FileListModel list{world.fs};

    QStringList walk(const QString& folder, const QString& pattern, bool subfolders)
    {
        QStringList all;
        std::atomic<bool> cancelled{false};
        FolderScanner::walk(
            folder, pattern, subfolders, cancelled, 2, [&](const QStringList& b) { all += b; });
        return all;
    }
};

TEST_F(FileListModelTest, ScanTakesNamesEndingInThePatternsLastThreeCharacters)
{
    const QString mpegav = world.folder(QStringLiteral("MPEGAV"));
    const QString a = world.file(QStringLiteral("MPEGAV/AVSEQ01.DAT"));
    const QString u = world.file(QStringLiteral("MPEGAV/update.dat"));
    const QString n = world.file(QStringLiteral("MPEGAV/notdat"));
    world.file(QStringLiteral("MPEGAV/other.vob"));
    world.file(QStringLiteral("MPEGAV/sub/deep.dat"));
    EXPECT_EQ(walk(mpegav, QStringLiteral("*.DAT"), false), (QStringList{a, n, u}));
}

TEST_F(FileListModelTest, ScanWithSubfoldersIsDepthFirstInNameOrder)
{
    const QString root = world.folder(QStringLiteral("tree"));
    const QStringList expected
        = {world.file(QStringLiteral("tree/a.dat")), world.file(QStringLiteral("tree/B/b1.dat")),
            world.file(QStringLiteral("tree/B/C/c1.dat")), world.file(QStringLiteral("tree/B/z.dat")),
            world.file(QStringLiteral("tree/c.dat")), world.file(QStringLiteral("tree/d/d1.dat"))};
    world.folder(QStringLiteral("tree/empty"));
    EXPECT_EQ(walk(root + u'/', QStringLiteral("*.*"), true), expected);
    EXPECT_EQ(walk(root, QStringLiteral("*.*"), false), (QStringList{expected[0], expected[4]}));
    EXPECT_TRUE(walk(world.path(QStringLiteral("missing")), QStringLiteral("*.*"), true).isEmpty());
}

TEST_F(FileListModelTest, ScanSkipsLinkedFoldersAndSpecialFiles)
{
    const QString root = world.folder(QStringLiteral("t"));
    const QString f = world.file(QStringLiteral("t/f.dat"));
    ASSERT_TRUE(QFile::link(root, root + QStringLiteral("/loop"))); // a cycle if it were followed
    ASSERT_TRUE(QFile::link(f, root + QStringLiteral("/link.dat")));
    EXPECT_EQ(walk(root, QStringLiteral("*.*"), true), (QStringList{f, root + QStringLiteral("/link.dat")}));
}

TEST_F(FileListModelTest, FolderScanRunsOffTheUiThreadAndRefreshesAtTheEnd)
{
    const QString root = world.folder(QStringLiteral("big"));
    // 20 folders of 1,000 files: the list must grow while the event loop keeps running.
    for (int d = 0; d < 20; ++d) {
        const QString folder = world.folder(QStringLiteral("big/d%1").arg(d, 2, 10, QLatin1Char('0')));
        for (int i = 0; i < 1000; ++i)
            QFile(folder + QStringLiteral("/f%1.dat").arg(i, 4, 10, QLatin1Char('0')))
                .open(QIODevice::WriteOnly);
    }
    QSignalSpy finished(&list, &FileListModel::scanFinished);
    QSignalSpy scanning(&list, &FileListModel::scanningChanged);
    list.scanFolder(files::FolderChoice{root, QStringLiteral("*.DAT"), true});
    EXPECT_EQ(list.count(), 0); // nothing has arrived yet: the walk is elsewhere
    EXPECT_TRUE(list.isScanning());
    ASSERT_TRUE(finished.wait(60'000));
    EXPECT_FALSE(finished.first().first().toBool());
    ASSERT_EQ(list.count(), 20'000);
    EXPECT_EQ(list.entries().first(), root + QStringLiteral("/d00/f0000.dat"));
    EXPECT_EQ(list.entries().at(1000), root + QStringLiteral("/d01/f0000.dat"));
    EXPECT_EQ(list.entries().last(), root + QStringLiteral("/d19/f0999.dat"));
    EXPECT_EQ(list.currentText(), list.entries().first());
    EXPECT_EQ(list.filesInfo(), QStringLiteral("文件总数:20000个  总计大小:0MB [0字节]"));
    EXPECT_EQ(scanning.size(), 2);
}

TEST_F(FileListModelTest, QueuedScansMakeOneBusyPeriod)
{
    // The window sets the busy pointer on true and restores it on false: a true without its false would
    // leave the pointer busy for good.
    const QString one = world.folder(QStringLiteral("one"));
    const QString two = world.folder(QStringLiteral("two"));
    const QString a = world.file(QStringLiteral("one/a.dat"));
    const QString b = world.file(QStringLiteral("two/b.dat"));
    QSignalSpy finished(&list, &FileListModel::scanFinished);
    QSignalSpy scanning(&list, &FileListModel::scanningChanged);
    list.scanFolder(files::FolderChoice{one, QStringLiteral("*.*"), false});
    list.scanFolder(files::FolderChoice{two, QStringLiteral("*.*"), false});
    ASSERT_TRUE(QTest::qWaitFor([&] { return finished.size() == 2; }, 10'000));
    EXPECT_EQ(list.entries(), (QStringList{a, b}));
    ASSERT_EQ(scanning.size(), 2);
    EXPECT_TRUE(scanning.at(0).first().toBool());
    EXPECT_FALSE(scanning.at(1).first().toBool());
    EXPECT_FALSE(list.isScanning());
}

TEST_F(FileListModelTest, ResetDuringAScanStopsIt)
{
    const QString root = world.folder(QStringLiteral("s"));
    for (int i = 0; i < 200; ++i)
        world.file(QStringLiteral("s/%1.dat").arg(i), 0);
    QSignalSpy finished(&list, &FileListModel::scanFinished);
    list.scanFolder(files::FolderChoice{root, QStringLiteral("*.*"), false});
    list.ResetFileList();
    ASSERT_EQ(finished.size(), 1);
    EXPECT_TRUE(finished.first().first().toBool());
    QSignalSpy rows(&list, &QAbstractItemModel::rowsInserted);
    // A later scan runs normally; nothing of the cancelled one turns up.
    list.scanFolder(files::FolderChoice{world.folder(QStringLiteral("empty")), QStringLiteral("*.*"), false});
    ASSERT_TRUE(finished.wait(10'000));
    EXPECT_EQ(list.count(), 0);
    EXPECT_EQ(rows.size(), 0);
}

TEST_F(FileListModelTest, DropRemovesEarlierCopiesAndIgnoresFolders)
{
    const QString a = world.file(QStringLiteral("a.dat"));
    const QString b = world.file(QStringLiteral("b.dat"));
    const QString folder = world.folder(QStringLiteral("f"));
    list.appendEntries({a, b, a});
    list.AddDroppedFiles({a});
    EXPECT_EQ(list.entries(), (QStringList{b, a}));
    EXPECT_EQ(list.currentText(), b);
    list.AddDroppedFiles({folder, world.path(QStringLiteral("missing.dat"))});
    EXPECT_EQ(list.entries(), (QStringList{b, a}));
    const QString c = world.file(QStringLiteral("c.dat"));
    list.AddDroppedFiles({folder, c});
    EXPECT_EQ(list.entries(), (QStringList{b, a, c}));
}

TEST_F(FileListModelTest, RemoveWithNoMatchingEntryRemovesNothingButRefreshes)
{
    const QString a = world.file(QStringLiteral("a.dat"), 2048);
    const QString b = world.file(QStringLiteral("b.dat"), 1024);
    list.appendEntries({a, b});
    list.setCurrentText(QStringLiteral("typed text"));
    QSignalSpy info(&list, &FileListModel::filesInfoChanged);
    list.RemoveCurrentEntry();
    EXPECT_EQ(list.entries(), (QStringList{a, b}));
    EXPECT_EQ(list.currentText(), a);
    ASSERT_EQ(info.size(), 1);
    EXPECT_EQ(list.filesInfo(), QStringLiteral("文件总数:2个  总计大小:0MB [3,072字节]"));
}

TEST_F(FileListModelTest, RemovingTheLastEntryResetsTextsAndDestination)
{
    const QString a = world.file(QStringLiteral("a.dat"));
    list.appendEntries({a});
    list.RefreshFileList();
    list.setDestination(QStringLiteral("/out/a.dat"));
    QSignalSpy reset(&list, &FileListModel::displaysReset);
    QSignalSpy destination(&list, &FileListModel::destinationChanged);
    list.RemoveCurrentEntry();
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(list.filesInfo(), files::kResetFilesInfo);
    EXPECT_EQ(list.destination(), QString());
    EXPECT_EQ(list.currentText(), QString());
    EXPECT_EQ(reset.size(), 1);
    ASSERT_GE(destination.size(), 1);
    EXPECT_EQ(destination.last().first().toString(), QString());
}

TEST_F(FileListModelTest, PickingAnEntryMovesTheDestinationAndShowsThePosition)
{
    const QString a = world.file(QStringLiteral("cd/MPEGAV/AVSEQ01.DAT"), 10);
    const QString b = world.file(QStringLiteral("cd/MPEGAV/AVSEQ02.DAT"), 20);
    list.appendEntries({a, b});
    list.setDestination(QStringLiteral("/out/old.dat"));
    list.ShowCurrentEntryInfo(1);
    EXPECT_EQ(list.currentText(), b);
    EXPECT_EQ(list.destination(), QStringLiteral("/out/AVSEQ02.DAT"));
    EXPECT_EQ(list.filesInfo(), QStringLiteral("文件总数:2/2个  总计大小:0MB [30字节]"));
    EXPECT_EQ(list.facts().panelB, QStringLiteral("  大小：0KB [20字节]  类型：Video  属性：存档"));
    // A picked entry whose file vanished keeps the previous facts.
    QFile::remove(a);
    list.ShowCurrentEntryInfo(0);
    EXPECT_EQ(list.facts().path, b);
    EXPECT_EQ(list.filesInfo(), QStringLiteral("文件总数:2/2个  总计大小:0MB [30字节]"));
}

TEST_F(FileListModelTest, PreviewFollowUpHandsOnlyLargeEnoughVideosWithTheFlagSet)
{
    const QString video = world.file(QStringLiteral("v.dat"), 2048);
    const QString tiny = world.file(QStringLiteral("t.dat"), 2047);
    list.appendEntries({video, tiny});
    QSignalSpy play(&list, &FileListModel::previewRequested);
    QSignalSpy stop(&list, &FileListModel::previewStopRequested);
    const auto readsDone
        = [&] { return QTest::qWaitFor([&] { return !list.isReadingPreviewHead(); }, 10'000); };
    list.setCurrentText(video);
    list.previewFollowUp();
    ASSERT_TRUE(readsDone());
    EXPECT_EQ(play.size(), 0); // flag off
    list.setPreviewFlag(true);
    list.previewFollowUp();
    // The head is read off the UI thread (a scratched disc can take minutes): the follow-up returns first.
    EXPECT_EQ(play.size(), 0);
    ASSERT_TRUE(play.wait(10'000));
    ASSERT_EQ(play.size(), 1);
    EXPECT_EQ(play.first().first().toString(), video);
    list.setCurrentText(tiny);
    list.previewFollowUp();
    EXPECT_FALSE(list.isReadingPreviewHead()); // too small: nothing is read
    EXPECT_EQ(play.size(), 1);
    EXPECT_EQ(stop.size(), 3);
}

TEST_F(FileListModelTest, PreviewIsNotHandedAnEntryThatIsNoLongerCurrent)
{
    const QString first = world.file(QStringLiteral("first.dat"), 4096);
    const QString second = world.file(QStringLiteral("second.vob"), 4096);
    list.appendEntries({first, second});
    list.setPreviewFlag(true);
    QSignalSpy play(&list, &FileListModel::previewRequested);
    list.setCurrentText(first);
    list.previewFollowUp();
    list.setCurrentText(second);
    list.previewFollowUp();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !list.isReadingPreviewHead(); }, 10'000));
    ASSERT_EQ(play.size(), 1);
    EXPECT_EQ(play.first().first().toString(), second);
}

class RenameTest : public FileListModelTest
{
};

TEST_F(RenameTest, KeepsTheListPositionAndTrimsBlanks)
{
    const QString x = world.file(QStringLiteral("v/x.dat"));
    const QString a = world.file(QStringLiteral("v/a.dat"));
    const QString y = world.file(QStringLiteral("v/y.dat"));
    list.appendEntries({x, a, y});
    list.setCurrentText(a);
    const auto result = list.renameFile(a, QStringLiteral("  b.dat  "));
    ASSERT_TRUE(result.renamed);
    const QString b = world.path(QStringLiteral("v/b.dat"));
    EXPECT_EQ(list.entries(), (QStringList{x, b, y}));
    EXPECT_EQ(list.currentText(), b);
    EXPECT_TRUE(QFile::exists(b));
}

TEST_F(RenameTest, ReplacesTheFirstVanishedEntry)
{
    const QString gone = world.path(QStringLiteral("v/gone.dat"));
    const QString a = world.file(QStringLiteral("v/a.dat"));
    list.appendEntries({a, gone, a});
    list.setCurrentText(a);
    ASSERT_TRUE(list.renameFile(a, QStringLiteral("b.dat")).renamed);
    const QString b = world.path(QStringLiteral("v/b.dat"));
    // The first entry whose file is missing is the first a.dat itself (renamed away).
    EXPECT_EQ(list.entries(), (QStringList{b, gone, a}));

    // With an earlier vanished entry, that one is replaced.
    const QString c = world.file(QStringLiteral("v/c.dat"));
    FileListModel other{world.fs};
    other.appendEntries({gone, c});
    ASSERT_TRUE(other.renameFile(c, QStringLiteral("d.dat")).renamed);
    EXPECT_EQ(other.entries(), (QStringList{world.path(QStringLiteral("v/d.dat")), c}));
}

TEST_F(RenameTest, RefusedNameLeavesListAndFileAndSaysWhy)
{
    const QString a = world.file(QStringLiteral("v/a.dat"));
    const QString taken = world.file(QStringLiteral("v/taken.dat"));
    list.appendEntries({a});
    list.setCurrentText(a);
    struct Case
    {
        QString name;
        QString reasonPart;
    };
    for (const Case& c : {Case{QStringLiteral("taken.dat"), QStringLiteral("同名")},
             Case{QStringLiteral("sub/x.dat"), QStringLiteral("“/”")},
             Case{QStringLiteral("   "), QStringLiteral("空")},
             Case{QStringLiteral(".."), QStringLiteral("“..”")}}) {
        const auto result = list.renameFile(a, c.name);
        EXPECT_FALSE(result.renamed) << qPrintable(c.name);
        EXPECT_TRUE(result.refusal.contains(c.reasonPart)) << qPrintable(result.refusal);
        EXPECT_EQ(list.entries(), QStringList{a});
        EXPECT_TRUE(QFile::exists(a));
    }
    EXPECT_TRUE(QFile::exists(taken));
    // The shell was never handed a name with a "/" or an empty one.
    EXPECT_EQ(world.shell.calls.filter(QStringLiteral("rename")).size(), 1);
}

} // namespace
