// The file commands against a real file system that fails: writes refused with EROFS, a file that cannot
// be removed, reads that fail with EIO or hang (tests run as root, so permission bits would not stop
// anything; a FUSE file system does).
#include "FuseMount.h"
#include "files/FileCommands.h"
#include "files_list/ListFakes.h"
#include "platform/linux/FileTransfer.h"
#include "platform/linux/ui/LinuxShell.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>

using namespace vindaro;
using platform::FileOpResult;
using vindaro::testing::listOnly;

namespace {

// A folder of four files of 3 MiB that refuses every write: good.dat reads fine, bad.dat fails from 2 MiB on
// (a scratch in the middle), hang.dat's reads from 1 MiB on hang until released, locked.dat cannot be
// removed. Mounted for the life of the object.
class FaultyFolder : public vindaro::testing::FuseMount
{
public:
    explicit FaultyFolder(const QString& mountPoint)
        : FuseMount(QStringLiteral(FAULTY_FS), mountPoint,
            {QStringLiteral("good.dat:3145728"), QStringLiteral("bad.dat:3145728:eio@2097152+1048576"),
                QStringLiteral("hang.dat:3145728:hang@1048576+2097152"),
                QStringLiteral("locked.dat:3145728:locked")})
    {
    }
    ~FaultyFolder() override { release(); }
    QString file(const char* name) const { return path(QLatin1String(name)); }
    // Lets every hanging read go on.
    void release() { QFileInfo::exists(file("release")); }
};

class FilesFuseTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        world.shell.real = &linuxShell;
        disc = std::make_unique<FaultyFolder>(world.path(QStringLiteral("fs")));
        VINDARO_SKIP_UNLESS_MOUNTED(*disc);
    }
    void TearDown() override
    {
        if (disc)
            disc->release();
        EXPECT_TRUE(platform::FileTransfer::waitForAbandonedWorkers(10000));
        disc.reset();
    }
    QStringList outEntries() const
    {
        return QDir(out).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    vindaro::testing::ListWorld world;
    vindaro::testing::ScriptedPrompter& prompts = world.prompts;
    platform::LinuxShell linuxShell;
    std::unique_ptr<FaultyFolder> disc;
    QString out = world.folder(QStringLiteral("out"));
    files::FileListModel list{world.fs};
    files::FileCommands commands{list, world.fs, prompts, prompts, nullptr};
};

TEST_F(FilesFuseTest, CopyIntoAFolderThatRefusesWritesIsToldAndKeepsTheEntry)
{
    const QString source = world.file(QStringLiteral("a.dat"), 100'000);
    listOnly(list, source);
    world.shell.chosenFolder = disc->mountPoint();

    commands.CopyTo();

    ASSERT_EQ(prompts.notices.size(), 1);
    EXPECT_TRUE(prompts.notices.first().contains(qt_error_string(EROFS)))
        << prompts.notices.first().toStdString();
    EXPECT_EQ(list.entries(), QStringList{source});
    EXPECT_FALSE(QFileInfo::exists(disc->file("a.dat")));
}

TEST_F(FilesFuseTest, FailedDeleteAndTrashAreToldAndKeepTheEntry)
{
    const QString locked = disc->file("locked.dat");
    for (const int answer : {int(platform::kAnswerYes), int(platform::kAnswerNo)}) {
        listOnly(list, locked);
        prompts.notices.clear();
        prompts.answers << answer;
        commands.Delete();
        ASSERT_EQ(prompts.notices.size(), 1) << answer;
        EXPECT_TRUE(prompts.notices.first().contains(locked));
        EXPECT_EQ(list.entries(), QStringList{locked});
        EXPECT_TRUE(QFileInfo::exists(locked));
    }
    // Into the home's trash would cross file systems; the mount refuses a trash of its own.
    EXPECT_TRUE(prompts.notices.first().contains(QStringLiteral("不能跨磁盘移入回收站")))
        << prompts.notices.first().toStdString();
}

// The original stays until every byte arrived: a scratch two thirds in fails the move, and the file system
// would have let the source be removed.
TEST_F(FilesFuseTest, MoveAcrossFileSystemsThatFailsMidwayKeepsTheSource)
{
    const QString bad = disc->file("bad.dat");
    listOnly(list, bad);
    world.shell.chosenFolder = out;
    commands.MoveTo();
    ASSERT_EQ(prompts.notices.size(), 1);
    EXPECT_TRUE(prompts.notices.first().contains(qt_error_string(EIO)))
        << prompts.notices.first().toStdString();
    EXPECT_EQ(list.entries(), QStringList{bad});
    EXPECT_TRUE(QFileInfo::exists(bad));
    EXPECT_EQ(outEntries(), QStringList{});

    // The same move of a readable file removes its source, so the check above means something.
    const FileOpResult moved = linuxShell.moveInto(disc->file("good.dat"), out, nullptr);
    EXPECT_TRUE(moved.done()) << moved.error;
    EXPECT_FALSE(QFileInfo::exists(disc->file("good.dat")));
    EXPECT_EQ(QFileInfo(out + QStringLiteral("/good.dat")).size(), 3 * 1024 * 1024);
}

// Cancel while the worker waits in a read that never returns: control comes back at once, the partial
// file is gone, and the file of the same name that was there before is untouched even though replacing it
// had been approved.
TEST_F(FilesFuseTest, CancelDuringAHangingReadReturnsAtOnceAndLeavesNoPartialFile)
{
    const QString existing = out + QStringLiteral("/hang.dat");
    QFile old(existing);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("the user's own file");
    old.close();
    QStringList asked;
    linuxShell.setReplaceQuestion([&](const QString& target, QWidget*) {
        asked << target;
        return true;
    });

    QWidget owner;
    QElapsedTimer sinceCancel;
    QObject::connect(&disc->process(), &QProcess::readyReadStandardOutput, &owner, [&] {
        if (!disc->process().readAllStandardOutput().contains("hang") || sinceCancel.isValid())
            return;
        auto* cancel = owner.findChild<QPushButton*>();
        ASSERT_NE(cancel, nullptr);
        sinceCancel.start();
        cancel->click();
    });
    QTimer giveUp; // should the read never hang, the test fails instead of waiting forever
    giveUp.setSingleShot(true);
    QObject::connect(&giveUp, &QTimer::timeout, &owner, [&] {
        if (auto* cancel = owner.findChild<QPushButton*>())
            cancel->click();
    });
    giveUp.start(30000);

    const FileOpResult result = linuxShell.copyInto(disc->file("hang.dat"), out, &owner);

    ASSERT_TRUE(sinceCancel.isValid()) << "the read never hung";
    EXPECT_LT(sinceCancel.elapsed(), 2000);
    EXPECT_EQ(result.status, FileOpResult::Status::Cancelled);
    EXPECT_EQ(asked, QStringList{existing});
    EXPECT_EQ(outEntries(), QStringList{QStringLiteral("hang.dat")});
    // The worker ends once its read returns, and leaves nothing behind either.
    disc->release();
    ASSERT_TRUE(platform::FileTransfer::waitForAbandonedWorkers(10000));
    EXPECT_EQ(outEntries(), QStringList{QStringLiteral("hang.dat")});
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_EQ(old.readAll(), QByteArray("the user's own file"));
}

} // namespace
