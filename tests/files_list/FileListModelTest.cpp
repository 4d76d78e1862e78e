#include "files/FileListModel.h"
#include "ListFakes.h"
#include "files/FileListTexts.h"
#include "files/FolderScanner.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace vindaro;
using namespace Qt::StringLiterals;
using files::FileListModel;

namespace {

class FileListModelTest : public ::testing::Test
{
protected:
    vindaro::testing::ListWorld world;
    FileListModel list{world.fs};
};

// Depth first in name order, matching by the pattern's rule, without following linked folders (a cycle
// here) but with linked files.
TEST_F(FileListModelTest, WalkIsDepthFirstInNameOrder)
{
    const QString root = world.folder(u"tree"_s);
    const QStringList expected = {world.file(u"tree/a.dat"_s), world.file(u"tree/B/b1.dat"_s),
        world.file(u"tree/B/C/c1.dat"_s), world.file(u"tree/B/z.dat"_s), world.file(u"tree/c.dat"_s),
        world.file(u"tree/d/d1.dat"_s), root + u"/link.dat"_s};
    world.file(u"tree/B/other.vob"_s);
    world.folder(u"tree/empty"_s);
    ASSERT_TRUE(QFile::link(root, root + u"/loop"_s));
    ASSERT_TRUE(QFile::link(expected[0], expected.last()));
    const auto walk = [](const QString& folder, bool subfolders) {
        QStringList all;
        std::atomic<bool> cancelled{false};
        files::FolderScanner::walk(
            folder, u"*.DAT"_s, subfolders, cancelled, 2, [&](const QStringList& b) { all += b; });
        return all;
    };
    EXPECT_EQ(walk(root + u'/', true), expected);
    EXPECT_EQ(walk(root, false), (QStringList{expected[0], expected[4], expected[6]}));
    EXPECT_TRUE(walk(world.path(u"missing"_s), true).isEmpty());
}

// Scans run off the UI thread, one after another, in one busy period (the window sets the busy pointer on
// true and restores it on false: a true without its false would leave it busy for good), and the list is
// refreshed at the end.
TEST_F(FileListModelTest, QueuedScansRunOffTheUiThreadInOneBusyPeriod)
{
    const QString one = world.folder(u"one"_s);
    for (int d = 0; d < 3; ++d) {
        const QString folder = world.folder(u"one/d%1"_s.arg(d));
        for (int i = 0; i < 2000; ++i) // several batches
            QFile(folder + u"/f%1.dat"_s.arg(i, 4, 10, QLatin1Char('0'))).open(QIODevice::WriteOnly);
    }
    const QString b = world.file(u"two/b.dat"_s, 1024);
    QSignalSpy finished(&list, &FileListModel::scanFinished);
    QSignalSpy scanning(&list, &FileListModel::scanningChanged);
    list.scanFolder(files::FolderChoice{one, u"*.*"_s, true});
    list.scanFolder(files::FolderChoice{world.path(u"two"_s), u"*.*"_s, false});
    EXPECT_EQ(list.count(), 0); // nothing has arrived yet: the walk is elsewhere
    EXPECT_TRUE(list.isScanning());
    ASSERT_TRUE(QTest::qWaitFor([&] { return finished.size() == 2; }, 60'000));
    EXPECT_FALSE(finished.first().first().toBool());
    ASSERT_EQ(list.count(), 6001);
    EXPECT_EQ(list.entries().first(), one + u"/d0/f0000.dat"_s);
    EXPECT_EQ(list.entries().at(2000), one + u"/d1/f0000.dat"_s);
    EXPECT_EQ(list.entries().last(), b);
    EXPECT_EQ(list.currentText(), list.entries().first());
    EXPECT_EQ(list.filesInfo(), files::filesInfoLine(6001, 1024));
    ASSERT_EQ(scanning.size(), 2);
    EXPECT_TRUE(scanning.at(0).first().toBool());
    EXPECT_FALSE(scanning.at(1).first().toBool());
}

TEST_F(FileListModelTest, ResetDuringAScanStopsIt)
{
    const QString root = world.folder(u"s"_s);
    for (int i = 0; i < 200; ++i)
        world.file(u"s/%1.dat"_s.arg(i), 0);
    QSignalSpy finished(&list, &FileListModel::scanFinished);
    list.scanFolder(files::FolderChoice{root, u"*.*"_s, false});
    list.ResetFileList();
    ASSERT_EQ(finished.size(), 1);
    EXPECT_TRUE(finished.first().first().toBool());
    QSignalSpy rows(&list, &QAbstractItemModel::rowsInserted);
    // A later scan runs normally; nothing of the cancelled one turns up.
    list.scanFolder(files::FolderChoice{world.folder(u"empty"_s), u"*.*"_s, false});
    ASSERT_TRUE(finished.wait(10'000));
    EXPECT_EQ(list.count(), 0);
    EXPECT_EQ(rows.size(), 0);
}

TEST_F(FileListModelTest, DropRemovesEarlierCopiesAndIgnoresFolders)
{
    const QString a = world.file(u"a.dat"_s);
    const QString b = world.file(u"b.dat"_s);
    list.appendEntries({a, b, a});
    list.AddDroppedFiles({a});
    EXPECT_EQ(list.entries(), (QStringList{b, a}));
    EXPECT_EQ(list.currentText(), b);
    const QString c = world.file(u"c.dat"_s);
    list.AddDroppedFiles({world.folder(u"f"_s), world.path(u"missing.dat"_s), c});
    EXPECT_EQ(list.entries(), (QStringList{b, a, c}));
}

TEST_F(FileListModelTest, RemoveTakesOnlyTheCurrentEntryAndTheLastOneResetsTheDisplays)
{
    const QString a = world.file(u"a.dat"_s, 2048);
    const QString b = world.file(u"b.dat"_s, 1024);
    list.appendEntries({a, b});
    list.setCurrentText(u"typed text"_s); // no entry: nothing removed, the displays refreshed
    QSignalSpy info(&list, &FileListModel::filesInfoChanged);
    list.RemoveCurrentEntry();
    EXPECT_EQ(list.entries(), (QStringList{a, b}));
    EXPECT_EQ(list.currentText(), a);
    EXPECT_EQ(info.size(), 1);
    EXPECT_EQ(list.filesInfo(), files::filesInfoLine(2, 3072));

    list.RemoveCurrentEntry();
    list.setDestination(u"/out/b.dat"_s);
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
    const QString a = world.file(u"cd/MPEGAV/AVSEQ01.DAT"_s, 10);
    const QString b = world.file(u"cd/MPEGAV/AVSEQ02.DAT"_s, 20);
    list.appendEntries({a, b});
    list.setDestination(u"/out/old.dat"_s);
    list.ShowCurrentEntryInfo(1);
    EXPECT_EQ(list.currentText(), b);
    EXPECT_EQ(list.destination(), u"/out/AVSEQ02.DAT"_s);
    EXPECT_EQ(list.filesInfo(), files::filesInfoLine(2, 30, 2));
    EXPECT_EQ(list.facts().panelB, files::sizeTypePanel(20, u"Video"_s, world.fs.GetFileAttributesStr(b)));
    // A picked entry whose file vanished keeps the previous facts.
    QFile::remove(a);
    list.ShowCurrentEntryInfo(0);
    EXPECT_EQ(list.facts().path, b);
    EXPECT_EQ(list.filesInfo(), files::filesInfoLine(2, 30, 2));
}

// The head is read off the UI thread (a scratched disc can take minutes); the preview gets only a large
// enough video, with the flag set, that is still the current entry when the read is back.
TEST_F(FileListModelTest, PreviewFollowUpHandsOnlyTheCurrentLargeEnoughVideo)
{
    const QString video = world.file(u"v.dat"_s, 2048);
    const QString tiny = world.file(u"t.dat"_s, 2047);
    const QString other = world.file(u"o.vob"_s, 4096);
    list.appendEntries({video, tiny, other});
    QSignalSpy play(&list, &FileListModel::previewRequested);
    QSignalSpy stop(&list, &FileListModel::previewStopRequested);
    const auto followUp = [&](const QString& entry) {
        list.setCurrentText(entry);
        list.previewFollowUp();
    };
    const auto readsDone
        = [&] { return QTest::qWaitFor([&] { return !list.isReadingPreviewHead(); }, 10'000); };
    followUp(video);
    ASSERT_TRUE(readsDone());
    EXPECT_EQ(play.size(), 0); // flag off
    list.setPreviewFlag(true);
    followUp(video);
    EXPECT_EQ(play.size(), 0); // the follow-up returns before the read
    ASSERT_TRUE(play.wait(10'000));
    followUp(tiny);
    EXPECT_FALSE(list.isReadingPreviewHead()); // too small: nothing is read
    followUp(video);
    followUp(other); // the entry changed before the read was back
    ASSERT_TRUE(readsDone());
    QCoreApplication::processEvents();
    ASSERT_EQ(play.size(), 2);
    EXPECT_EQ(play.at(0).first().toString(), video);
    EXPECT_EQ(play.at(1).first().toString(), other);
    EXPECT_EQ(stop.size(), 5);
}

// The renamed file takes the place of the first entry whose file is missing (the old name itself, unless
// an earlier entry vanished), and becomes the current one; blanks around the name go.
TEST_F(FileListModelTest, RenameTakesThePlaceOfTheFirstVanishedEntry)
{
    const QString x = world.file(u"v/x.dat"_s);
    const QString a = world.file(u"v/a.dat"_s);
    const QString gone = world.path(u"v/gone.dat"_s);
    const QString b = world.path(u"v/b.dat"_s);
    const struct
    {
        QStringList before;
        QStringList after;
    } rows[] = {{{x, a, x}, {x, b, x}}, {{a, gone, a}, {b, gone, a}}, {{gone, a}, {b, a}}};
    for (const auto& row : rows) {
        world.file(u"v/a.dat"_s);
        QFile::remove(b);
        list.ResetFileList();
        list.appendEntries(row.before);
        ASSERT_TRUE(list.renameFile(a, u"  b.dat  "_s).renamed);
        EXPECT_EQ(list.entries(), row.after);
        EXPECT_EQ(list.currentText(), b);
        EXPECT_TRUE(QFile::exists(b));
    }
}

TEST_F(FileListModelTest, RefusedRenameLeavesListAndFileAndSaysWhy)
{
    const QString a = world.file(u"v/a.dat"_s);
    const QString taken = world.file(u"v/taken.dat"_s);
    list.appendEntries({a});
    list.setCurrentText(a);
    for (const QString& name : {u"taken.dat"_s, u"sub/x.dat"_s, u"   "_s, u".."_s}) {
        const auto result = list.renameFile(a, name);
        EXPECT_FALSE(result.renamed) << name.toStdString();
        EXPECT_EQ(result.refusal, files::renameRefusalText(a, world.path(u"v/"_s), name.trimmed()));
        EXPECT_EQ(list.entries(), QStringList{a});
        EXPECT_TRUE(QFile::exists(a));
    }
    EXPECT_TRUE(QFile::exists(taken));
    // The shell was never handed a name with a "/" or an empty one.
    EXPECT_EQ(world.shell.calls.filter(u"rename"_s).size(), 1);
}

} // namespace
