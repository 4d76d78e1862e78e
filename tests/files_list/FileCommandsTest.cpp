#include "files/FileCommands.h"
#include "ListFakes.h"
#include "files/FileCommandTexts.h"
#include "files/FileListTexts.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <cerrno>

using namespace vindaro;
using namespace Qt::StringLiterals;
using files::FileCommands;
using files::FileListModel;
using platform::FileOpResult;
using vindaro::testing::listOnly;

namespace {

class FileCommandsTest : public ::testing::Test
{
protected:
    vindaro::testing::ListWorld world;
    vindaro::testing::ScriptedPrompter& prompts = world.prompts;
    FileListModel list{world.fs};
    FileCommands commands{list, world.fs, prompts, prompts, nullptr};

    void SetUp() override { commands.setOsName(u"Debian GNU/Linux 12 (bookworm)"_s); }
};

TEST_F(FileCommandsTest, GuardedCommandsDoNothingOnAVanishedFileOrEmptyList)
{
    QSignalSpy rename(&commands, &FileCommands::renameRequested);
    QSignalSpy batch(&commands, &FileCommands::batchCopyRequested);
    QSignalSpy player(&commands, &FileCommands::playerRequested);
    const QString gone = world.path(u"gone.dat"_s);
    for (const QStringList& entries : {QStringList(), QStringList{gone}}) {
        list.appendEntries(entries);
        list.setCurrentText(gone);
        commands.Delete();
        commands.Rename();
        commands.CopyTo();
        commands.MoveTo();
        commands.Properties();
        commands.CopyAllFilesTo();
        commands.PlayFile();
    }
    EXPECT_TRUE(prompts.asked.isEmpty());
    EXPECT_TRUE(world.shell.calls.isEmpty());
    EXPECT_EQ(rename.size() + batch.size() + player.size(), 0);
    EXPECT_EQ(list.entries(), QStringList{gone});
}

// Delete asks first (yes: for good, no: to the trash, cancel: nothing); move and delete take the entry out
// only when they succeeded; every failure is told once, and a cancelled transfer or chooser says nothing.
TEST_F(FileCommandsTest, EntryLeavesOnlyOnSuccessAndFailuresAreTold)
{
    const FileOpResult failed = FileOpResult::failed(FileOpResult::Step::WriteTarget, EROFS, u"/x"_s);
    const struct
    {
        const char* command;
        std::optional<FileOpResult> outcome; // nothing: the fake acts on the disk and succeeds
        const char* call; // what reached the desktop
        bool entryStays;
        bool told;
    } rows[] = {
        {"delete", std::nullopt, "deletePermanently", false, false},
        {"delete", failed, "deletePermanently", true, true},
        {"trash", std::nullopt, "moveToTrash", false, false},
        {"trash", failed, "moveToTrash", true, true},
        {"delete, cancelled", std::nullopt, "", true, false},
        {"move", std::nullopt, "moveInto", false, false},
        {"move", failed, "moveInto", true, true},
        {"move", FileOpResult::cancelled(), "moveInto", true, false},
        {"copy", std::nullopt, "copyInto", true, false},
        {"copy", failed, "copyInto", true, true},
        {"move, chooser cancelled", std::nullopt, "", true, false},
    };
    const QString target = world.folder(u"target"_s) + u'/';
    for (const auto& row : rows) {
        const std::string label = std::string(row.command) + (row.outcome ? " forced" : " acting");
        const QString a = world.file(u"a.dat"_s);
        QFile::remove(world.path(u"target/a.dat"_s));
        listOnly(list, a);
        prompts.notices.clear();
        prompts.asked.clear();
        world.shell.calls.clear();
        world.shell.forced = row.outcome;
        const QByteArray command(row.command);
        world.shell.chosenFolder = command.contains("cancelled") ? QString() : target;
        if (command.startsWith("delete") || command == "trash") {
            if (!command.contains("cancelled"))
                prompts.answers << (command == "delete" ? platform::kAnswerYes : platform::kAnswerNo);
            commands.Delete();
            EXPECT_EQ(prompts.asked, QStringList{files::deleteQuestionText(a)}) << label;
        } else if (command.startsWith("move")) {
            commands.MoveTo();
        } else {
            commands.CopyTo();
        }
        EXPECT_EQ(world.shell.calls.filter(u" "_s + a).join(u'|'),
            *row.call ? QString::fromLatin1(row.call) + u' ' + a : QString())
            << label;
        EXPECT_EQ(list.entries() == QStringList{a}, row.entryStays) << label;
        EXPECT_EQ(QFile::exists(a), row.entryStays) << label;
        ASSERT_EQ(prompts.notices.size(), row.told ? 1 : 0) << label;
        if (row.told) {
            EXPECT_TRUE(prompts.notices.first().contains(a)) << label;
        }
    }
}

TEST_F(FileCommandsTest, PropertiesChooseOwnWindowOrDesktopSheet)
{
    const QString mp3 = world.file(u"song.mp3"_s);
    const QString dat = world.file(u"movie.dat"_s);
    QStringList ownWindow;
    list.appendEntries({mp3, dat});
    list.setCurrentText(mp3);
    commands.Properties(); // no property window yet: the desktop's sheet
    commands.setPropertyWindow([&](const QString& path) { ownWindow << path; });
    commands.Properties();
    commands.setOsName(u"Microsoft Windows XP"_s);
    commands.Properties();
    list.setCurrentText(dat);
    commands.setOsName(u"Debian"_s);
    commands.Properties();
    EXPECT_EQ(ownWindow, QStringList{mp3});
    EXPECT_EQ(world.shell.calls.filter(u"showProperties"_s).size(), 3);
}

TEST_F(FileCommandsTest, AddFolderIsRefusedOverCapacityAndScansWithTheChosenPattern)
{
    commands.setCapacityLimit(files::addFolderCapacity(1));
    list.appendEntries(QStringList(32'737, world.path(u"x"_s)));
    commands.AddFolderToList();
    EXPECT_EQ(prompts.notices, QStringList{files::kOverCapacityText});
    EXPECT_EQ(prompts.folderAsked, 0);
    commands.setCapacityLimit(std::nullopt);
    commands.AddFolderToList(); // cancelled chooser
    EXPECT_EQ(prompts.folderAsked, 1);
    EXPECT_FALSE(list.isScanning());

    list.ResetFileList();
    const QString folder = world.folder(u"MPEGAV"_s);
    const QString a = world.file(u"MPEGAV/AVSEQ01.DAT"_s);
    world.file(u"MPEGAV/x.vob"_s);
    prompts.folderAnswer = files::FolderChoice{folder, u"*.DAT"_s, false};
    QSignalSpy finished(&list, &FileListModel::scanFinished);
    commands.AddFolderToList();
    ASSERT_TRUE(finished.wait(10'000));
    EXPECT_EQ(list.entries(), QStringList{a});
    EXPECT_EQ(list.currentText(), a);
}

TEST_F(FileCommandsTest, FileChooserReplacesTheList)
{
    const QString a = world.file(u"a.dat"_s);
    const QString b = world.file(u"b.vob"_s);
    list.appendEntries({world.file(u"old.dat"_s)});
    prompts.openAnswer = {a, b};
    commands.AddFromFileChooser();
    EXPECT_EQ(list.entries(), (QStringList{a, b}));
    EXPECT_EQ(list.currentText(), a);
    prompts.openAnswer.clear();
    commands.AddFromFileChooser(); // cancelled: the list stays empty
    EXPECT_TRUE(list.isEmpty());
}

} // namespace
