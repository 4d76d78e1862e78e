#include "platform/linux/ui/LinuxShell.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

using vindaro::platform::FileOpResult;
using vindaro::platform::LinuxShell;
using Status = FileOpResult::Status;

namespace {

class LinuxShellTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }

    QString write(const QString& relative, const QByteArray& bytes)
    {
        const QString path = dir.filePath(relative);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return path;
    }
    static QByteArray read(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }

    QTemporaryDir dir;
    LinuxShell shell;
    QStringList questions; // targets we were asked about
};

// The trash must land under the data folder even when that folder does not exist yet.
TEST_F(LinuxShellTest, TrashCreatesTheDataFolderFirst)
{
    const QByteArray oldData = qgetenv("XDG_DATA_HOME");
    const QString data = dir.filePath(QStringLiteral("fresh/share"));
    qputenv("XDG_DATA_HOME", QFile::encodeName(data));
    const QString victim = write(QStringLiteral("a.dat"), "payload");

    const bool moved = shell.moveToTrash(victim).done();
    qputenv("XDG_DATA_HOME", oldData);

    ASSERT_TRUE(moved);
    EXPECT_FALSE(QFile::exists(victim));
    EXPECT_EQ(read(data + QStringLiteral("/Trash/files/a.dat")), QByteArray("payload"));
    EXPECT_FALSE(QFile::exists(QDir::current().filePath(QStringLiteral("files/a.dat"))));
    EXPECT_FALSE(shell.moveToTrash(dir.filePath(QStringLiteral("missing"))).done());
}

TEST_F(LinuxShellTest, RenameNeverReplaces)
{
    const QString a = write(QStringLiteral("a.dat"), "A");
    const QString b = write(QStringLiteral("b.dat"), "B");
    EXPECT_EQ(shell.rename(a, b), EEXIST);
    EXPECT_EQ(read(a), QByteArray("A"));
    EXPECT_EQ(read(b), QByteArray("B"));

    const QString c = dir.filePath(QStringLiteral("c.dat"));
    EXPECT_EQ(shell.rename(a, c), 0);
    EXPECT_EQ(read(c), QByteArray("A"));
    EXPECT_FALSE(QFile::exists(a));
    EXPECT_EQ(shell.rename(a, dir.filePath(QStringLiteral("d.dat"))), ENOENT);
}

TEST_F(LinuxShellTest, CopyAsksBeforeReplacing)
{
    const QString source = write(QStringLiteral("src/a.dat"), "new");
    const QString target = write(QStringLiteral("dst/a.dat"), "old");
    bool answer = false;
    shell.setReplaceQuestion([&](const QString& t, QWidget*) {
        questions << t;
        return answer;
    });

    EXPECT_EQ(shell.copyInto(source, dir.filePath(QStringLiteral("dst")), nullptr).status, Status::Cancelled);
    EXPECT_EQ(read(target), QByteArray("old"));
    EXPECT_EQ(questions, QStringList{target});

    answer = true;
    EXPECT_TRUE(shell.copyInto(source, dir.filePath(QStringLiteral("dst")), nullptr).done());
    EXPECT_EQ(read(target), QByteArray("new"));
    EXPECT_EQ(read(source), QByteArray("new"));
    // No leftovers of the write-then-rename.
    EXPECT_EQ(QDir(dir.filePath(QStringLiteral("dst"))).entryList(QDir::Files | QDir::Hidden),
        QStringList{QStringLiteral("a.dat")});
}

TEST_F(LinuxShellTest, ReplacingALinkReplacesTheLinkNotWhatItPointsAt)
{
    const QString elsewhere = write(QStringLiteral("elsewhere/keep.dat"), "keep");
    const QString source = write(QStringLiteral("src/a.dat"), "new");
    QDir().mkpath(dir.filePath(QStringLiteral("dst")));
    const QString target = dir.filePath(QStringLiteral("dst/a.dat"));
    ASSERT_TRUE(QFile::link(elsewhere, target));
    shell.setReplaceQuestion([&](const QString& t, QWidget*) {
        questions << t;
        return true;
    });
    EXPECT_TRUE(shell.copyInto(source, dir.filePath(QStringLiteral("dst")), nullptr).done());
    EXPECT_EQ(questions, QStringList{target});
    EXPECT_EQ(read(elsewhere), QByteArray("keep"));
    EXPECT_FALSE(QFileInfo(target).isSymLink());
    EXPECT_EQ(read(target), QByteArray("new"));
}

TEST_F(LinuxShellTest, CopiesAFolderTreeWithoutQuestions)
{
    const QByteArray big(3 * 1024 * 1024 + 7, 'x'); // more than one transfer chunk
    write(QStringLiteral("tree/MPEGAV/AVSEQ01.DAT"), big);
    write(QStringLiteral("tree/.hidden"), "h");
    QDir().mkpath(dir.filePath(QStringLiteral("tree/empty")));
    ASSERT_TRUE(QFile::link(QStringLiteral("MPEGAV/AVSEQ01.DAT"), dir.filePath(QStringLiteral("tree/link"))));
    QDir().mkpath(dir.filePath(QStringLiteral("out")));
    shell.setReplaceQuestion([&](const QString& t, QWidget*) {
        questions << t;
        return false;
    });

    EXPECT_TRUE(
        shell.copyInto(dir.filePath(QStringLiteral("tree")), dir.filePath(QStringLiteral("out")), nullptr)
            .done());
    EXPECT_TRUE(questions.isEmpty());
    EXPECT_EQ(read(dir.filePath(QStringLiteral("out/tree/MPEGAV/AVSEQ01.DAT"))), big);
    EXPECT_EQ(read(dir.filePath(QStringLiteral("out/tree/.hidden"))), QByteArray("h"));
    EXPECT_TRUE(QFileInfo(dir.filePath(QStringLiteral("out/tree/empty"))).isDir());
    const QFileInfo link(dir.filePath(QStringLiteral("out/tree/link")));
    EXPECT_TRUE(link.isSymLink());
    EXPECT_EQ(read(link.filePath()), big); // relative link still points inside the copy
}

TEST_F(LinuxShellTest, RefusesSenselessTransfersBeforeTouchingAnything)
{
    const QString file = write(QStringLiteral("f/a.dat"), "A");
    QDir().mkpath(dir.filePath(QStringLiteral("f/inner")));
    QDir().mkpath(dir.filePath(QStringLiteral("g/a.dat"))); // a folder by the file's name
    const struct
    {
        const char* source;
        const char* folder;
        bool move;
        int error;
    } rows[] = {
        {"f/a.dat", "f", false, EINVAL}, // onto itself
        {"f", "f/inner", true, EINVAL}, // a folder into its own subfolder
        {"nothing", "", false, ENOENT}, {"f/a.dat", "no-folder", false, ENOTDIR},
        {"f/a.dat", "g", false, EISDIR}, // a file never replaces a folder
    };
    for (const auto& row : rows) {
        const QString source = dir.filePath(QString::fromLatin1(row.source));
        const QString folder = dir.filePath(QString::fromLatin1(row.folder));
        const FileOpResult result
            = row.move ? shell.moveInto(source, folder, nullptr) : shell.copyInto(source, folder, nullptr);
        EXPECT_EQ(result.status, Status::Failed) << row.source << " -> " << row.folder;
        EXPECT_EQ(result.error, row.error) << row.source << " -> " << row.folder;
    }
    EXPECT_EQ(read(file), QByteArray("A"));
    EXPECT_TRUE(QFileInfo(dir.filePath(QStringLiteral("g/a.dat"))).isDir());
}

TEST_F(LinuxShellTest, MoveTakesTheSourceAway)
{
    const QString file = write(QStringLiteral("m/a.dat"), "A");
    write(QStringLiteral("m/sub/b.dat"), "B");
    QDir().mkpath(dir.filePath(QStringLiteral("to")));
    EXPECT_TRUE(shell.moveInto(file, dir.filePath(QStringLiteral("to")), nullptr).done());
    EXPECT_FALSE(QFile::exists(file));
    EXPECT_EQ(read(dir.filePath(QStringLiteral("to/a.dat"))), QByteArray("A"));

    // Into an existing folder of the same name: merged by copying, then the source goes.
    write(QStringLiteral("to/sub/c.dat"), "C");
    shell.setReplaceQuestion([](const QString&, QWidget*) { return true; });
    EXPECT_TRUE(
        shell.moveInto(dir.filePath(QStringLiteral("m/sub")), dir.filePath(QStringLiteral("to")), nullptr)
            .done());
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("m/sub"))));
    EXPECT_EQ(read(dir.filePath(QStringLiteral("to/sub/b.dat"))), QByteArray("B"));
    EXPECT_EQ(read(dir.filePath(QStringLiteral("to/sub/c.dat"))), QByteArray("C"));
}

TEST_F(LinuxShellTest, PermanentDeleteRemovesTreesButNotWhatLinksPointAt)
{
    const QString kept = write(QStringLiteral("keep/k.dat"), "K");
    write(QStringLiteral("doomed/x/y.dat"), "Y");
    ASSERT_TRUE(
        QFile::link(dir.filePath(QStringLiteral("keep")), dir.filePath(QStringLiteral("doomed/link"))));
    EXPECT_TRUE(shell.deletePermanently(dir.filePath(QStringLiteral("doomed/"))).done());
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("doomed"))));
    EXPECT_EQ(read(kept), QByteArray("K"));
    EXPECT_TRUE(shell.deletePermanently(kept).done());
    EXPECT_FALSE(QFile::exists(kept));
    const FileOpResult again = shell.deletePermanently(kept);
    EXPECT_EQ(again.status, Status::Failed);
    EXPECT_EQ(again.error, ENOENT);
    EXPECT_EQ(again.path, kept);
}

TEST_F(LinuxShellTest, TypeNameComesFromTheMimeDatabase)
{
    const QString text = write(QStringLiteral("notes.txt"), "hello\n");
    EXPECT_FALSE(shell.typeName(text).isEmpty());
    const QString unknown = write(QStringLiteral("blob.qqzz"), QByteArray("\x01\x02\x03\xff\xfe", 5));
    EXPECT_EQ(shell.typeName(unknown), QString()); // the caller then shows "QQZZ 文件"
    // Only the name counts: a picture's bytes under an unknown ending are not read (on a damaged disc
    // reading them could hang the window).
    const QString png
        = write(QStringLiteral("frame.qqzz"), QByteArray("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16));
    EXPECT_EQ(shell.typeName(png), QString());
}

} // namespace
