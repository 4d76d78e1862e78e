// The shell's file commands on a real temporary folder.
#include "platform/linux/ui/LinuxShell.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

using vindaro::platform::FileOpResult;
using vindaro::platform::LinuxShell;
using Status = FileOpResult::Status;
using namespace Qt::StringLiterals;

namespace {

class LinuxShellTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        shell.setReplaceQuestion([this](const QString& target, QWidget*) {
            questions << target;
            return replace;
        });
    }
    QString p(const QString& relative) const { return dir.filePath(relative); }
    QString write(const QString& relative, const QByteArray& bytes)
    {
        QDir().mkpath(QFileInfo(p(relative)).absolutePath());
        QFile file(p(relative));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return p(relative);
    }
    QByteArray read(const QString& relative) const
    {
        QFile file(p(relative));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }

    QTemporaryDir dir;
    LinuxShell shell;
    QStringList questions; // targets we were asked about
    bool replace = false;
};

// The trash must land under the data folder even when that folder does not exist yet.
TEST_F(LinuxShellTest, TrashCreatesTheDataFolderFirst)
{
    const QByteArray oldData = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", QFile::encodeName(p(u"fresh/share"_s)));
    const bool moved = shell.moveToTrash(write(u"a.dat"_s, "payload")).done();
    qputenv("XDG_DATA_HOME", oldData);
    ASSERT_TRUE(moved);
    EXPECT_FALSE(QFile::exists(p(u"a.dat"_s)));
    EXPECT_EQ(read(u"fresh/share/Trash/files/a.dat"_s), "payload");
    EXPECT_FALSE(QFile::exists(QDir::current().filePath(u"files/a.dat"_s)));
    EXPECT_FALSE(shell.moveToTrash(p(u"missing"_s)).done());
}

TEST_F(LinuxShellTest, RenameNeverReplaces)
{
    const QString a = write(u"a.dat"_s, "A");
    EXPECT_EQ(shell.rename(a, write(u"b.dat"_s, "B")), EEXIST);
    EXPECT_EQ(read(u"a.dat"_s) + read(u"b.dat"_s), "AB");
    EXPECT_EQ(shell.rename(a, p(u"c.dat"_s)), 0);
    EXPECT_EQ(read(u"c.dat"_s), "A");
    EXPECT_EQ(shell.rename(a, p(u"d.dat"_s)), ENOENT);
}

// Replacing asks first; a link is replaced itself, never what it points at; no temporary file is left.
TEST_F(LinuxShellTest, CopyAsksBeforeReplacing)
{
    const QString source = write(u"src/a.dat"_s, "new");
    write(u"dst/a.dat"_s, "old");
    EXPECT_EQ(shell.copyInto(source, p(u"dst"_s), nullptr).status, Status::Cancelled);
    EXPECT_EQ(read(u"dst/a.dat"_s), "old");
    EXPECT_EQ(questions, QStringList{p(u"dst/a.dat"_s)});

    replace = true;
    EXPECT_TRUE(shell.copyInto(source, p(u"dst"_s), nullptr).done());
    EXPECT_EQ(read(u"dst/a.dat"_s), "new");
    EXPECT_EQ(read(u"src/a.dat"_s), "new");
    EXPECT_EQ(QDir(p(u"dst"_s)).entryList(QDir::Files | QDir::Hidden), QStringList{u"a.dat"_s});

    write(u"elsewhere/keep.dat"_s, "keep");
    QDir().mkpath(p(u"lnk"_s));
    ASSERT_TRUE(QFile::link(p(u"elsewhere/keep.dat"_s), p(u"lnk/a.dat"_s)));
    EXPECT_TRUE(shell.copyInto(source, p(u"lnk"_s), nullptr).done());
    EXPECT_EQ(questions.last(), p(u"lnk/a.dat"_s));
    EXPECT_EQ(read(u"elsewhere/keep.dat"_s), "keep");
    EXPECT_FALSE(QFileInfo(p(u"lnk/a.dat"_s)).isSymLink());
    EXPECT_EQ(read(u"lnk/a.dat"_s), "new");
}

TEST_F(LinuxShellTest, CopiesAFolderTreeWithoutQuestions)
{
    const QByteArray big(3 * 1024 * 1024 + 7, 'x'); // more than one transfer chunk
    write(u"tree/MPEGAV/AVSEQ01.DAT"_s, big);
    write(u"tree/.hidden"_s, "h");
    QDir().mkpath(p(u"tree/empty"_s));
    ASSERT_TRUE(QFile::link(u"MPEGAV/AVSEQ01.DAT"_s, p(u"tree/link"_s)));
    QDir().mkpath(p(u"out"_s));
    EXPECT_TRUE(shell.copyInto(p(u"tree"_s), p(u"out"_s), nullptr).done());
    EXPECT_TRUE(questions.isEmpty());
    EXPECT_EQ(read(u"out/tree/MPEGAV/AVSEQ01.DAT"_s), big);
    EXPECT_EQ(read(u"out/tree/.hidden"_s), "h");
    EXPECT_TRUE(QFileInfo(p(u"out/tree/empty"_s)).isDir());
    EXPECT_TRUE(QFileInfo(p(u"out/tree/link"_s)).isSymLink());
    EXPECT_EQ(read(u"out/tree/link"_s), big); // the relative link still points inside the copy
}

TEST_F(LinuxShellTest, RefusesSenselessTransfersBeforeTouchingAnything)
{
    write(u"f/a.dat"_s, "A");
    QDir().mkpath(p(u"f/inner"_s));
    QDir().mkpath(p(u"g/a.dat"_s)); // a folder by the file's name
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
        const QString source = p(QString::fromLatin1(row.source));
        const QString folder = p(QString::fromLatin1(row.folder));
        const FileOpResult result
            = row.move ? shell.moveInto(source, folder, nullptr) : shell.copyInto(source, folder, nullptr);
        EXPECT_EQ(result.status, Status::Failed) << row.source << " -> " << row.folder;
        EXPECT_EQ(result.error, row.error) << row.source << " -> " << row.folder;
    }
    EXPECT_EQ(read(u"f/a.dat"_s), "A");
    EXPECT_TRUE(QFileInfo(p(u"g/a.dat"_s)).isDir());
}

TEST_F(LinuxShellTest, MoveTakesTheSourceAwayAndMergesIntoAFolderOfTheSameName)
{
    write(u"m/a.dat"_s, "A");
    write(u"m/sub/b.dat"_s, "B");
    write(u"to/sub/c.dat"_s, "C");
    EXPECT_TRUE(shell.moveInto(p(u"m/a.dat"_s), p(u"to"_s), nullptr).done());
    EXPECT_FALSE(QFile::exists(p(u"m/a.dat"_s)));
    EXPECT_EQ(read(u"to/a.dat"_s), "A");
    replace = true;
    EXPECT_TRUE(shell.moveInto(p(u"m/sub"_s), p(u"to"_s), nullptr).done());
    EXPECT_FALSE(QFile::exists(p(u"m/sub"_s)));
    EXPECT_EQ(read(u"to/sub/b.dat"_s) + read(u"to/sub/c.dat"_s), "BC");
}

TEST_F(LinuxShellTest, PermanentDeleteRemovesTreesButNotWhatLinksPointAt)
{
    const QString kept = write(u"keep/k.dat"_s, "K");
    write(u"doomed/x/y.dat"_s, "Y");
    ASSERT_TRUE(QFile::link(p(u"keep"_s), p(u"doomed/link"_s)));
    EXPECT_TRUE(shell.deletePermanently(p(u"doomed/"_s)).done());
    EXPECT_FALSE(QFileInfo::exists(p(u"doomed"_s)));
    EXPECT_EQ(read(u"keep/k.dat"_s), "K");
    EXPECT_TRUE(shell.deletePermanently(kept).done());
    EXPECT_FALSE(QFile::exists(kept));
    const FileOpResult again = shell.deletePermanently(kept);
    EXPECT_EQ(again.status, Status::Failed);
    EXPECT_EQ(again.error, ENOENT);
    EXPECT_EQ(again.path, kept);
}

TEST_F(LinuxShellTest, TypeNameComesFromTheNameOnly)
{
    EXPECT_FALSE(shell.typeName(write(u"notes.txt"_s, "hello\n")).isEmpty());
    EXPECT_EQ(
        shell.typeName(write(u"blob.qqzz"_s, "\x01\x02\x03")), QString()); // the caller shows "QQZZ 文件"
    // A picture's bytes under an unknown ending are not read (on a damaged disc reading them could hang the
    // window).
    EXPECT_EQ(
        shell.typeName(write(u"frame.qqzz"_s, QByteArray("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16))), QString());
}

} // namespace
