#include "files/FileSystem.h"

#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "platform/linux/LinuxVolumes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

using namespace vindaro;
using files::FileSystem;

namespace {

// A host that records the boxes it was asked to show.
class RecordingHost final : public platform::Host
{
public:
    QList<platform::MessageBox> boxes;
    int yields = 0;
    int showBox(const platform::MessageBox& box) override
    {
        boxes.append(box);
        return platform::kAnswerOk;
    }
    void log(const QString&) override { }
    void yield() override { ++yields; }
};

class FileSystemTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        volumes.add(
            QStringLiteral("/"), platform::kDriveFixed, QStringLiteral("/dev/sda1"), QStringLiteral("ext4"));
        volumes.add(QStringLiteral("/home"), platform::kDriveFixed, QStringLiteral("/dev/sda2"),
            QStringLiteral("ext4"));
        volumes.add(QStringLiteral("/media/cdrom"), platform::kDriveCdRom, QStringLiteral("/dev/sr0"),
            QStringLiteral("iso9660"));
        volumes.add(QStringLiteral("/media/usb"), platform::kDriveRemovable, QStringLiteral("/dev/sdb1"),
            QStringLiteral("vfat"));
        volumes.add(QStringLiteral("/mnt/floppy"), platform::kDriveRemovable, QStringLiteral("/dev/fd0"),
            QStringLiteral("vfat"));
        volumes.add(QStringLiteral("/net/share"), platform::kDriveRemote, QStringLiteral("srv:/export"),
            QStringLiteral("nfs4"));
        volumes.add(QStringLiteral("/dev/shm"), platform::kDriveRamDisk, QStringLiteral("tmpfs"),
            QStringLiteral("tmpfs"));
        volumes.add(QStringLiteral("/mnt/odd"), platform::kDriveUnknown);
        volumes.spaces.insert(
            QStringLiteral("/media/cdrom"), platform::VolumeSpace{734'003'200, 0, 0, 2048, 1, 358'400, 0});
        volumes.spaces.insert(QStringLiteral("/"),
            platform::VolumeSpace{10'000'000'000, 3'000'000'000, 3'500'000'000, 4096, 1, 2'441'406, 854'492});
        volumes.identities.insert(QStringLiteral("/media/cdrom"),
            platform::VolumeIdentity{QStringLiteral("VIDEOCD"), 0, QStringLiteral("iso9660")});
    }

    QString make(const QString& name, const QByteArray& bytes = "data")
    {
        const QString path = dir.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return path;
    }

    QTemporaryDir dir;
    vindaro::testing::FakeVolumes volumes;
    vindaro::testing::FakeShell shell;
    RecordingHost host;
    FileSystem fs{volumes, shell, &host};
};

TEST_F(FileSystemTest, ExistenceIgnoresBlanksAndOneClosingSlash)
{
    const QString file = make(QStringLiteral("x"));
    const QString folder = dir.filePath(QStringLiteral("sub"));
    ASSERT_TRUE(QDir().mkdir(folder));

    EXPECT_TRUE(fs.FileExists(file));
    EXPECT_TRUE(fs.FileExists(QStringLiteral("  ") + file + QStringLiteral("/ ")));
    EXPECT_TRUE(fs.FileExists(folder + QLatin1Char('/'))); // a folder counts as existing
    EXPECT_TRUE(fs.FolderExists(QStringLiteral(" ") + folder + QStringLiteral("/")));
    EXPECT_FALSE(fs.FolderExists(file));
    EXPECT_FALSE(fs.FileExists(dir.filePath(QStringLiteral("missing"))));
    EXPECT_FALSE(fs.FileExists(QString()));
    EXPECT_FALSE(fs.FileExists(QStringLiteral("   ")));
    EXPECT_TRUE(fs.FolderExists(QStringLiteral("/")));
}

TEST_F(FileSystemTest, ExistenceMatchesWildcardsInTheLastComponent)
{
    make(QStringLiteral("AVSEQ01.DAT"));
    ASSERT_TRUE(QDir().mkdir(dir.filePath(QStringLiteral("MPEGAV"))));
    EXPECT_TRUE(fs.FileExists(dir.filePath(QStringLiteral("*.DAT"))));
    EXPECT_TRUE(fs.FileExists(dir.filePath(QStringLiteral("AVSEQ0?.DAT"))));
    EXPECT_FALSE(fs.FileExists(dir.filePath(QStringLiteral("*.vob"))));
    EXPECT_TRUE(fs.FolderExists(dir.filePath(QStringLiteral("MPEG*"))));
    EXPECT_FALSE(fs.FolderExists(dir.filePath(QStringLiteral("AVSEQ*"))));
}

TEST_F(FileSystemTest, AttributesOfRealEntries)
{
    const QString folder = dir.filePath(QStringLiteral("plain"));
    ASSERT_TRUE(QDir().mkdir(folder));
    const QString readOnly = make(QStringLiteral("ro.dat"));
    ASSERT_TRUE(QFile::setPermissions(readOnly, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
    const QString writable = make(QStringLiteral("rw.dat"));
    const QString hidden = make(QStringLiteral(".hidden"));
    const QString link = dir.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(writable, link));

    EXPECT_EQ(fs.GetFileAttributesNumber(folder), 16);
    EXPECT_EQ(fs.GetFileAttributesStr(folder), QStringLiteral("未知(16)"));
    EXPECT_EQ(fs.GetFileAttributesNumber(folder + QLatin1Char('/')), 16);
    EXPECT_EQ(fs.GetFileAttributesNumber(readOnly), 33);
    EXPECT_EQ(fs.GetFileAttributesStr(readOnly), QStringLiteral("只读,存档"));
    EXPECT_EQ(fs.GetFileAttributesStr(writable), QStringLiteral("存档"));
    EXPECT_EQ(fs.GetFileAttributesStr(hidden), QStringLiteral("隐藏,存档"));
    EXPECT_EQ(fs.GetFileAttributesStr(link), QStringLiteral("链接或快捷方式"));
    EXPECT_EQ(fs.GetFileAttributesNumber(dir.filePath(QStringLiteral("missing"))), -1);
    EXPECT_EQ(fs.GetFileAttributesStr(dir.filePath(QStringLiteral("missing"))), QString());
}

TEST_F(FileSystemTest, DriveKindTextsByMountPoint)
{
    const struct
    {
        const char* path;
        int kind;
        const char* text;
    } cases[] = {
        {"/etc/passwd", 3, "本地磁盘"},
        {"/home/u/a.dat", 3, "本地磁盘"},
        {"/media/cdrom/MPEGAV", 5, "光盘"},
        {"/media/usb/a", 2, "可移动磁盘"},
        {"/mnt/floppy/a.txt", 2, "3.5英寸软盘"},
        {"/net/share/x", 4, "远程磁盘"},
        {"/dev/shm/x", 6, "Ram磁盘"},
        {"/mnt/odd", 0, "未知磁盘"},
        {"Q:\\x", 0, ""},
        {"", 0, ""},
    };
    for (const auto& c : cases) {
        const QString path = QString::fromUtf8(c.path);
        EXPECT_EQ(fs.GetDriveType(path), c.kind) << c.path;
        EXPECT_EQ(fs.GetDriveTypeStr(path), QString::fromUtf8(c.text)) << c.path;
        EXPECT_EQ(fs.DriveExists(path), path.startsWith(QLatin1Char('/'))) << c.path;
    }
}

TEST_F(FileSystemTest, DiskSpaceByKind)
{
    EXPECT_EQ(fs.GetDiskSpaceSize(QStringLiteral("/etc"), 0), 10'000'000'000.0);
    EXPECT_EQ(fs.GetDiskSpaceSize(QStringLiteral("/etc"), 1), 3'000'000'000.0);
    EXPECT_EQ(fs.GetDiskSpaceSize(QStringLiteral("/etc"), 2), 6'500'000'000.0);
    EXPECT_EQ(fs.GetDiskSpaceSize(QStringLiteral("/etc"), 5), 0.0);
    EXPECT_EQ(fs.GetDiskSpaceSize(QStringLiteral("Q:\\"), 0), -1.0); // no such drive
    EXPECT_EQ(fs.GetDiskSpaceSize(QStringLiteral("/media/usb/a"), 0), -1.0); // no figures
}

TEST_F(FileSystemTest, DiskInformationOfAnOpticalDisc)
{
    const QString root = QStringLiteral("/media/cdrom/");
    EXPECT_EQ(fs.GetDiskInformation(root, 5), QStringLiteral("序列号："));
    EXPECT_EQ(fs.GetDiskInformation(root, 0), QStringLiteral("总计空间：734,003,200 字节"));
    EXPECT_EQ(fs.GetDiskInformation(root, 11), QString());
    EXPECT_EQ(fs.GetDiskInformationA(root, 0).toLongLong(), 734'003'200LL);
    EXPECT_EQ(fs.GetDiskInformationA(root, 4).toString(), QStringLiteral("VIDEOCD"));
    EXPECT_EQ(fs.GetDiskInformationStr(root),
        QStringLiteral("总计空间：734,003,200 字节\r\n可用空间：0 字节\r\n可用空间：0 字节\r\n"
                       "已用空间：734,003,200 字节\r\n卷标：VIDEOCD\r\n序列号：\r\n文件系统：iso9660\r\n"
                       "总的簇数：358400\r\n每簇的扇区数：1\r\n每扇区的字节数：2048\r\n剩余的簇数：0"));
}

TEST_F(FileSystemTest, DiskInformationWithoutFiguresIsEmpty)
{
    EXPECT_EQ(fs.GetDiskInformation(QStringLiteral("/media/usb"), 0), QString()); // space query fails
    EXPECT_EQ(fs.GetDiskInformationStr(QStringLiteral("/media/usb")), QString());
    EXPECT_FALSE(fs.GetDiskInformationA(QStringLiteral("/media/usb"), 0).isValid());
    EXPECT_EQ(fs.GetDiskInformation(QStringLiteral("relative"), 0), QString());
    // Space known, identity not: the label line is there, empty.
    EXPECT_EQ(fs.GetDiskInformation(QStringLiteral("/"), 4), QStringLiteral("卷标："));
}

// A chroot without a mount table: the drive facts of a real folder come from the folder itself.
TEST_F(FileSystemTest, DriveFactsOfAPathTheMountTableDoesNotCover)
{
    platform::LinuxVolumes uncovered(dir.filePath(QStringLiteral("no-mountinfo")));
    FileSystem chroot(uncovered, shell, &host);
    const QString path = dir.filePath(QStringLiteral("new.dat"));
    EXPECT_TRUE(chroot.DriveExists(path));
    EXPECT_TRUE(chroot.DriveIsReady(path));
    EXPECT_GT(chroot.GetDiskSpaceSize(path, 0), 0.0);
    EXPECT_NE(chroot.GetDriveType(path), platform::kDriveUnknown);
    EXPECT_NE(chroot.GetDiskInformation(path, 6), QStringLiteral("文件系统：")); // the type is named
}

TEST_F(FileSystemTest, FixedDiskListJoinsRootsWithClosingSlashes)
{
    EXPECT_EQ(fs.GetFixedDiskList(), QStringLiteral("//home/"));
}

TEST_F(FileSystemTest, DrivePropertyOfADriveWithoutMedium)
{
    volumes.notReady.insert(QStringLiteral("/media/cdrom"));
    EXPECT_FALSE(fs.DriveIsReady(QStringLiteral("/media/cdrom/x")));
    fs.ShowDriveProperty(QStringLiteral("/media/cdrom/x"), nullptr);
    ASSERT_EQ(host.boxes.size(), 1);
    EXPECT_EQ(host.boxes[0].text, QStringLiteral("驱动器没有准备好."));
    EXPECT_EQ(host.boxes[0].title, QStringLiteral("[/media/cdrom/]属性"));
    EXPECT_EQ(host.boxes[0].icon, platform::BoxIcon::Exclamation);
    EXPECT_TRUE(shell.calls.isEmpty());

    EXPECT_TRUE(fs.DriveIsReady(QStringLiteral("/media/usb")));
    fs.ShowDriveProperty(QStringLiteral("/media/usb/a/b"), nullptr);
    EXPECT_EQ(shell.calls, QStringList{QStringLiteral("showProperties /media/usb")});
    EXPECT_EQ(host.boxes.size(), 1);
}

TEST_F(FileSystemTest, FolderChooserAnswersEndInASlash)
{
    const struct
    {
        const char* chosen;
        const char* answer;
    } cases[] = {{"/media/cdrom", "/media/cdrom/"}, {"/", "/"}, {"/video/", "/video/"}, {"", ""}};
    for (const auto& c : cases) {
        shell.chosenFolder = QString::fromUtf8(c.chosen);
        EXPECT_EQ(fs.GetBrowseDirectoryWinNT(nullptr, QStringLiteral("t")), QString::fromUtf8(c.answer));
        EXPECT_EQ(fs.GetBrowseDirectoryWin9X(nullptr, QStringLiteral("t")), QString::fromUtf8(c.answer));
    }
}

TEST_F(FileSystemTest, CopyAndMoveAskForAFolderFirst)
{
    shell.chosenFolder.clear();
    EXPECT_FALSE(fs.FileCopyTo(nullptr, QStringLiteral("/a/b.dat")));
    EXPECT_EQ(shell.calls, QStringList{QStringLiteral("chooseFolder")});
    EXPECT_EQ(shell.lastChooserTitle, QStringLiteral("选择文件保存路径"));

    shell.calls.clear();
    shell.chosenFolder = QStringLiteral("/backup");
    // The transfer fails: still true, and the failure reaches the caller.
    shell.transferAnswer = platform::FileOpResult::failed(
        platform::FileOpResult::Step::WriteTarget, EROFS, QStringLiteral("/backup/b.dat"));
    platform::FileOpResult copied;
    platform::FileOpResult moved;
    EXPECT_TRUE(fs.FileCopyTo(nullptr, QStringLiteral("/a/b.dat"), &copied));
    EXPECT_TRUE(fs.FileMoveTo(nullptr, QStringLiteral("/a/c.dat"), &moved));
    EXPECT_EQ(copied.error, EROFS);
    EXPECT_EQ(moved.error, EROFS);
    EXPECT_EQ(shell.calls,
        (QStringList{QStringLiteral("chooseFolder"), QStringLiteral("copyInto /a/b.dat -> /backup/"),
            QStringLiteral("chooseFolder"), QStringLiteral("moveInto /a/c.dat -> /backup/")}));
}

TEST_F(FileSystemTest, RenameIsTrueOnlyWhenTheShellSucceeds)
{
    EXPECT_TRUE(fs.ReName(QStringLiteral("/a"), QStringLiteral("/b")));
    shell.renameAnswer = 17;
    EXPECT_FALSE(fs.ReName(QStringLiteral("/a"), QStringLiteral("/b")));
}

TEST_F(FileSystemTest, OpeningFallsBackToTheChooser)
{
    fs.OpenFile(dir.filePath(QStringLiteral("missing")), nullptr);
    fs.FileOpenStyle(dir.filePath(QStringLiteral("missing")));
    EXPECT_TRUE(shell.calls.isEmpty());

    // Associated: open; no default application: straight to the chooser; associated but failing to start:
    // the chooser too.
    const QString file = make(QStringLiteral("a.dat"));
    const struct
    {
        bool associated;
        bool starts;
        QStringList calls;
    } rows[] = {
        {true, true, {QStringLiteral("open ") + file}},
        {false, true, {QStringLiteral("openWith ") + file}},
        {true, false, {QStringLiteral("open ") + file, QStringLiteral("openWith ") + file}},
    };
    for (const auto& row : rows) {
        shell.calls.clear();
        shell.associated = row.associated;
        shell.openAnswer = row.starts;
        fs.OpenFile(file, nullptr);
        EXPECT_EQ(shell.calls, row.calls);
    }

    shell.calls.clear();
    fs.OpenFolder(file, nullptr);
    EXPECT_EQ(shell.calls, QStringList{QStringLiteral("open ") + dir.path() + QLatin1Char('/')});
}

TEST_F(FileSystemTest, TypeNameFallsBackToTheExtension)
{
    EXPECT_EQ(fs.GetFileTypeName(QStringLiteral("/x/AVSEQ01.DAT")), QStringLiteral("DAT 文件"));
    shell.typeNameAnswer = QStringLiteral("MPEG video");
    EXPECT_EQ(fs.GetFileTypeName(QStringLiteral("/x/AVSEQ01.DAT")), QStringLiteral("MPEG video"));
}

TEST_F(FileSystemTest, TempFileWithoutFolderIsNamedAfterTheProgram)
{
    QTemporaryDir temp;
    const QByteArray oldTmp = qgetenv("TMPDIR");
    qputenv("TMPDIR", QFile::encodeName(temp.path()));
    EXPECT_EQ(fs.GetTempPath(), temp.path() + QLatin1Char('/'));
    const QString made = fs.GetTempFileName(QString(), QStringLiteral("zzz"));
    qputenv("TMPDIR", oldTmp);

    EXPECT_TRUE(QFileInfo(made).isFile());
    EXPECT_EQ(QFileInfo(made).absolutePath(), temp.path());
    EXPECT_TRUE(QFileInfo(made).fileName().startsWith(QStringLiteral("FileSystemTest")))
        << made.toStdString();
}

TEST_F(FileSystemTest, TempFileInAFolderUsesThePrefixAndIsNew)
{
    const QString first = fs.GetTempFileName(dir.path(), QStringLiteral("vcd"));
    const QString second = fs.GetTempFileName(dir.path(), QStringLiteral("vcd"));
    EXPECT_TRUE(QFileInfo(first).isFile());
    EXPECT_NE(first, second);
    EXPECT_TRUE(QFileInfo(first).fileName().startsWith(QStringLiteral("vcd")));
    EXPECT_EQ(QFileInfo(first).absolutePath(), dir.path());
    EXPECT_EQ(fs.GetTempFileName(dir.filePath(QStringLiteral("missing")), QStringLiteral("vcd")), QString());
}

TEST_F(FileSystemTest, DateOfAFileStampedAtMidnightShowsTheCurrentTime)
{
    const QString file = make(QStringLiteral("old.dat"));
    {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::ReadWrite));
        ASSERT_TRUE(
            f.setFileTime(QDateTime(QDate(2003, 5, 1), QTime(0, 0, 0)), QFileDevice::FileModificationTime));
        ASSERT_TRUE(
            f.setFileTime(QDateTime(QDate(2003, 5, 2), QTime(14, 5, 9)), QFileDevice::FileAccessTime));
    }
    fs.setClock([] { return QDateTime(QDate(2020, 1, 1), QTime(14, 5, 9)); });
    EXPECT_EQ(fs.GetFileDateTime(file, 1), QStringLiteral("May 1, 2003 2:05:09 PM"));
    EXPECT_EQ(fs.GetFileDateTime(file, 2), QStringLiteral("May 2, 2003 2:05:09 PM"));
    EXPECT_EQ(fs.GetFileDateTime(dir.filePath(QStringLiteral("missing")), 1), QStringLiteral("未知"));
    EXPECT_FALSE(fs.GetFileDateTime(file, 0).isEmpty());
}

TEST_F(FileSystemTest, SizesAreSixtyFourBit)
{
    const QString big = dir.filePath(QStringLiteral("big.vob"));
    {
        QFile f(big);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        ASSERT_TRUE(f.resize(5'000'000'000LL)); // sparse: no disk space used
    }
    EXPECT_EQ(fs.GetFileSize(big), 5'000'000'000LL);
    EXPECT_EQ(fs.GetFileSizeA(big), 5'000'000'000LL);
    EXPECT_EQ(fs.GetFileSize(dir.path()), 0);
    EXPECT_EQ(fs.GetFileSize(dir.filePath(QStringLiteral("missing"))), 0);
}

TEST_F(FileSystemTest, ShortPathNameIsThePathItself)
{
    const QString file = make(QStringLiteral("long name.dat"));
    EXPECT_EQ(fs.GetShortPathName(file), file);
    EXPECT_EQ(fs.GetShortPathName(dir.filePath(QStringLiteral("missing"))), QString());
}

TEST_F(FileSystemTest, VolumeLabelGoesToTheVolumeOfThePath)
{
    EXPECT_TRUE(fs.SetDiskVolumeLabel(QStringLiteral("/media/usb/x"), QStringLiteral("NEW")));
    EXPECT_EQ(volumes.labelsSet.value(QStringLiteral("/media/usb")), QStringLiteral("NEW"));
    EXPECT_FALSE(fs.SetDiskVolumeLabel(QStringLiteral("E:\\"), QStringLiteral("NEW")));
}

} // namespace
