#include "files/FileCommands.h"
#include "ListFakes.h"
#include "files/FileCommandTexts.h"
#include "files/FileListTexts.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <cerrno>

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
    QSignalSpy player(&commands, &FileCommands::playerRequested);
    commands.Delete();
    commands.Rename();
    commands.CopyTo();
    commands.MoveTo();
    commands.Properties();
    commands.CopyAllFilesTo();
    commands.PlayFile();
    EXPECT_TRUE(prompts.asked.isEmpty());
    EXPECT_TRUE(world.shell.calls.isEmpty());
    EXPECT_EQ(rename.size() + batch.size() + player.size(), 0);
    EXPECT_EQ(list.entries(), QStringList{gone});
}

// Move and delete take the entry out only when they succeeded; every failure is told once, and a
// cancelled transfer or folder chooser says nothing.
TEST_F(FileCommandsTest, EntryLeavesOnlyOnSuccessAndFailuresAreTold)
{
    using platform::FileOpResult;
    const FileOpResult failed
        = FileOpResult::failed(FileOpResult::Step::WriteTarget, EROFS, QStringLiteral("/x"));
    const struct
    {
        const char* command;
        std::optional<FileOpResult> outcome; // nothing: the fake acts on the disk and succeeds
        bool entryStays;
        bool told;
    } rows[] = {
        {"delete", std::nullopt, false, false},
        {"delete", failed, true, true},
        {"trash", std::nullopt, false, false},
        {"trash", failed, true, true},
        {"move", std::nullopt, false, false},
        {"move", failed, true, true},
        {"move", FileOpResult::cancelled(), true, false},
        {"copy", std::nullopt, true, false},
        {"copy", failed, true, true},
        {"move, chooser cancelled", std::nullopt, true, false},
    };
    const QString target = world.folder(QStringLiteral("target")) + u'/';
    for (const auto& row : rows) {
        const std::string label = std::string(row.command) + (row.outcome ? " forced" : " acting");
        const QString a = world.file(QStringLiteral("a.dat"));
        QFile::remove(world.path(QStringLiteral("target/a.dat")));
        list.ResetFileList();
        list.appendEntries({a});
        list.RefreshFileList();
        prompts.notices.clear();
        world.shell.forced = row.outcome;
        const QByteArray command(row.command);
        world.shell.chosenFolder = command.contains("cancelled") ? QString() : target;
        if (command == "delete" || command == "trash") {
            prompts.answers << (command == "delete" ? platform::kAnswerYes : platform::kAnswerNo);
            commands.Delete();
        } else if (command.startsWith("move")) {
            commands.MoveTo();
        } else {
            commands.CopyTo();
        }
        EXPECT_EQ(list.entries() == QStringList{a}, row.entryStays) << label;
        ASSERT_EQ(prompts.notices.size(), row.told ? 1 : 0) << label;
        if (row.told) {
            EXPECT_TRUE(prompts.notices.first().contains(a)) << label;
        }
    }
}

// The one table of failure notices: what failed, on which path, the system's reason, and what the user
// still has.
TEST(FileCommandTexts, NoticesNameTheFailureThePathAndTheReason)
{
    using platform::FileOpResult;
    using Step = FileOpResult::Step;
    const QString src = QStringLiteral("/media/cdrom/AVSEQ01.DAT");
    const struct
    {
        QString text;
        QString expected;
    } rows[] = {
        {files::copyFailedText(
             src, FileOpResult::failed(Step::WriteTarget, EROFS, QStringLiteral("/ro/AVSEQ01.DAT"))),
            QStringLiteral("复制文件失败！\r\n文件：/media/cdrom/AVSEQ01.DAT\r\n写入失败：/ro/AVSEQ01.DAT\r\n"
                           "原因：Read-only file system\r\n目标文件夹中没有留下不完整的文件。")},
        {files::moveFailedText(src, FileOpResult::failed(Step::ReadSource, EIO, src)),
            QStringLiteral(
                "移动文件失败！\r\n文件：/media/cdrom/AVSEQ01.DAT\r\n读取失败：/media/cdrom/AVSEQ01.DAT\r\n"
                "原因：Input/output error\r\n原文件没有改动，目标文件夹中也没有留下不完整的文件。")},
        {files::moveFailedText(src, FileOpResult::failed(Step::RemoveSource, EROFS, src)),
            QStringLiteral("移动文件失败！\r\n文件：/media/cdrom/AVSEQ01.DAT\r\n"
                           "文件已经完整复制到目标文件夹，但原文件无法删除：/media/cdrom/AVSEQ01.DAT\r\n"
                           "原因：Read-only file system")},
        {files::copyFailedText(src,
             FileOpResult::failed(Step::Check, EINVAL, QStringLiteral("/media/cdrom/"),
                 QStringLiteral("目标文件夹就是文件所在的文件夹"))),
            QStringLiteral("复制文件失败！\r\n文件：/media/cdrom/AVSEQ01.DAT\r\n无法复制到：/media/cdrom/\r\n"
                           "原因：目标文件夹就是文件所在的文件夹\r\n目标文件夹中没有留下不完整的文件。")},
        {files::deleteFailedText(src, FileOpResult::failed(Step::Trash, 0, src, QStringLiteral("no trash"))),
            QStringLiteral("删除到回收站失败！\r\n文件：/media/cdrom/AVSEQ01.DAT\r\n原因：no trash\r\n"
                           "文件仍然保留在列表中。")},
        {files::deleteFailedText(src, FileOpResult::failed(Step::Delete, EACCES, src)),
            QStringLiteral("删除文件失败！\r\n文件：/media/cdrom/AVSEQ01.DAT\r\n原因：Permission denied\r\n"
                           "文件仍然保留在列表中。")},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.text, row.expected);
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
