#include "files/FileCommands.h"
#include "ListFakes.h"
#include "files/FileListTexts.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace vindaro;
using files::FileCommands;
using files::FileListModel;

namespace {

class FileCommandsTest : public ::testing::Test
{
protected:
    vindaro::testing::ListWorld world;
    vindaro::testing::ScriptedPrompter prompts;
    vindaro::testing::ScriptedDialogs dialogs;
    FileListModel list{world.fs};
    FileCommands commands{list, world.fs, prompts, dialogs, nullptr};

    void SetUp() override { commands.setOsName(QStringLiteral("Debian GNU/Linux 12 (bookworm)")); }
};

TEST_F(FileCommandsTest, DeleteCancelledLeavesFileAndList)
{
    const QString a = world.file(QStringLiteral("a.dat"));
    list.appendEntries({a});
    list.RefreshFileList();
    prompts.answers.enqueue(files::kAnswerCancel);
    commands.Delete();
    ASSERT_EQ(prompts.asked.size(), 1);
    EXPECT_EQ(prompts.asked.first(), files::deleteQuestionText(a));
    EXPECT_TRUE(QFile::exists(a));
    EXPECT_EQ(list.entries(), QStringList{a});
}

TEST_F(FileCommandsTest, DeleteYesIsPermanentNoGoesToTheTrash)
{
    const QString a = world.file(QStringLiteral("a.dat"));
    const QString b = world.file(QStringLiteral("b.dat"));
    list.appendEntries({a, b});
    list.RefreshFileList();
    prompts.answers << platform::kAnswerYes << platform::kAnswerNo;
    commands.Delete();
    EXPECT_EQ(list.entries(), QStringList{b});
    commands.Delete();
    EXPECT_EQ(world.shell.calls,
        (QStringList{QStringLiteral("deletePermanently ") + a, QStringLiteral("moveToTrash ") + b}));
    // Deleting the only entry leaves the list empty with the reset texts.
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(list.filesInfo(), files::kResetFilesInfo);
}

TEST_F(FileCommandsTest, GuardedCommandsDoNothingOnAVanishedFileOrEmptyList)
{
    commands.Delete();
    commands.CopyTo();
    commands.MoveTo();
    commands.Properties();
    const QString gone = world.path(QStringLiteral("gone.dat"));
    list.appendEntries({gone});
    list.setCurrentText(gone);
    QSignalSpy rename(&commands, &FileCommands::renameRequested);
    QSignalSpy batch(&commands, &FileCommands::batchCopyRequested);
    commands.Delete();
    commands.Rename();
    commands.CopyTo();
    commands.MoveTo();
    commands.Properties();
    commands.CopyAllFilesTo();
    EXPECT_TRUE(prompts.asked.isEmpty());
    EXPECT_TRUE(world.shell.calls.isEmpty());
    EXPECT_EQ(rename.size() + batch.size(), 0);
    EXPECT_EQ(list.entries(), QStringList{gone});
}

TEST_F(FileCommandsTest, MoveKeepsTheEntryWhenTheChooserIsCancelled)
{
    const QString a = world.file(QStringLiteral("a.dat"));
    list.appendEntries({a});
    list.RefreshFileList();
    commands.MoveTo();
    EXPECT_EQ(list.entries(), QStringList{a});
    EXPECT_EQ(world.shell.calls, QStringList{QStringLiteral("chooseFolder")});
}

TEST_F(FileCommandsTest, MoveTakesTheEntryOutOnceAFolderWasChosenWhateverTheShellDid)
{
    const QString a = world.file(QStringLiteral("a.dat"));
    const QString b = world.file(QStringLiteral("b.dat"));
    const QString target = world.folder(QStringLiteral("target"));
    world.file(QStringLiteral("target/a.dat")); // the move fails: the name is taken there
    list.appendEntries({a, b});
    list.RefreshFileList();
    world.shell.chosenFolder = target;
    commands.MoveTo();
    EXPECT_EQ(list.entries(), QStringList{b});
    EXPECT_EQ(list.currentText(), b);
    // Copy leaves the list as it is.
    commands.CopyTo();
    EXPECT_EQ(list.entries(), QStringList{b});
    EXPECT_TRUE(QFile::exists(target + QStringLiteral("/b.dat")));
}

TEST_F(FileCommandsTest, PropertiesChooseOwnWindowOrDesktopSheet)
{
    const QString mp3 = world.file(QStringLiteral("song.mp3"));
    const QString dat = world.file(QStringLiteral("movie.dat"));
    QStringList ownWindow;
    list.appendEntries({mp3, dat});
    list.setCurrentText(mp3);
    commands.Properties(); // no property window yet: the desktop's sheet
    commands.setPropertyWindow([&](const QString& path) { ownWindow << path; });
    commands.Properties();
    commands.setOsName(QStringLiteral("Microsoft Windows XP"));
    commands.Properties();
    list.setCurrentText(dat);
    commands.setOsName(QStringLiteral("Debian"));
    commands.Properties();
    EXPECT_EQ(ownWindow, QStringList{mp3});
    EXPECT_EQ(world.shell.calls.filter(QStringLiteral("showProperties")).size(), 3);
}

TEST_F(FileCommandsTest, AddFolderRefusedOverCapacityAndSilentWhenCancelled)
{
    commands.setCapacityLimit(files::addFolderCapacity(1));
    list.appendEntries(QStringList(32'737, world.path(QStringLiteral("x"))));
    commands.AddFolderToList();
    EXPECT_EQ(prompts.notices, QStringList{files::kOverCapacityText});
    EXPECT_EQ(dialogs.folderAsked, 0);
    commands.setCapacityLimit(std::nullopt);
    commands.AddFolderToList(); // cancelled chooser
    EXPECT_EQ(dialogs.folderAsked, 1);
    EXPECT_FALSE(list.isScanning());
}

TEST_F(FileCommandsTest, AddFolderScansWithTheChosenPattern)
{
    const QString folder = world.folder(QStringLiteral("MPEGAV"));
    const QString a = world.file(QStringLiteral("MPEGAV/AVSEQ01.DAT"));
    world.file(QStringLiteral("MPEGAV/x.vob"));
    dialogs.folderAnswer = files::FolderChoice{folder, QStringLiteral("*.DAT"), false};
    QSignalSpy finished(&list, &FileListModel::scanFinished);
    commands.AddFolderToList();
    ASSERT_TRUE(finished.wait(10'000));
    EXPECT_EQ(list.entries(), QStringList{a});
    EXPECT_EQ(list.currentText(), a);
}

TEST_F(FileCommandsTest, FileChooserReplacesTheList)
{
    const QString a = world.file(QStringLiteral("a.dat"));
    const QString b = world.file(QStringLiteral("b.vob"));
    list.appendEntries({world.file(QStringLiteral("old.dat"))});
    dialogs.openAnswer = {a, b};
    commands.AddFromFileChooser();
    EXPECT_EQ(list.entries(), (QStringList{a, b}));
    EXPECT_EQ(list.currentText(), a);
    dialogs.openAnswer.clear();
    commands.AddFromFileChooser(); // cancelled: the list stays empty
    EXPECT_TRUE(list.isEmpty());
}

} // namespace
