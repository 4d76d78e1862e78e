#include "files/FileSystem.h"

#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "files/FileTexts.h"
#include "platform/linux/LinuxVolumes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

using namespace vindaro;
using namespace Qt::StringLiterals;
using files::FileSystem;

namespace {

// A host that records the boxes it was asked to show.
class RecordingHost final : public platform::Host
{
public:
    QList<platform::MessageBox> boxes;
    int showBox(const platform::MessageBox& box) override
    {
        boxes.append(box);
        return platform::kAnswerOk;
    }
    void log(const QString&) override { }
    void yield() override { }
};

const platform::VolumeSpace kCdSpace{734'003'200, 0, 0, 2048, 1, 358'400, 0};
const platform::VolumeIdentity kCdIdentity{u"VIDEOCD"_s, 0, u"iso9660"_s};

class FileSystemTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        const struct
        {
            const char* mount;
            int kind;
            const char* device;
        } mounts[]
            = {{"/", platform::kDriveFixed, "/dev/sda1"}, {"/home", platform::kDriveFixed, "/dev/sda2"},
                {"/media/cdrom", platform::kDriveCdRom, "/dev/sr0"},
                {"/media/usb", platform::kDriveRemovable, "/dev/sdb1"},
                {"/mnt/floppy", platform::kDriveRemovable, "/dev/fd0"},
                {"/net/share", platform::kDriveRemote, "srv:/x"},
                {"/dev/shm", platform::kDriveRamDisk, "tmpfs"}, {"/mnt/odd", platform::kDriveUnknown, ""}};
        for (const auto& m : mounts)
            volumes.add(QString::fromUtf8(m.mount), m.kind, QString::fromUtf8(m.device));
        volumes.spaces.insert(u"/media/cdrom"_s, kCdSpace);
        volumes.spaces.insert(u"/"_s,
            platform::VolumeSpace{10'000'000'000, 3'000'000'000, 3'500'000'000, 4096, 1, 2'441'406, 854'492});
        volumes.identities.insert(u"/media/cdrom"_s, kCdIdentity);
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

// Blanks and one closing slash are ignored; wildcards match in the last component; a folder is a file too.
TEST_F(FileSystemTest, ExistenceOfRealEntries)
{
    make(u"AVSEQ01.DAT"_s);
    ASSERT_TRUE(QDir().mkdir(dir.filePath(u"MPEGAV"_s)));
    const QString d = dir.path() + u'/';
    const struct
    {
        QString path;
        bool file;
        bool folder;
    } rows[] = {
        {d + u"AVSEQ01.DAT"_s, true, false},
        {u"  "_s + d + u"AVSEQ01.DAT/ "_s, true, false},
        {u" "_s + d + u"MPEGAV/"_s, true, true},
        {d + u"missing"_s, false, false},
        {QString(), false, false},
        {u"   "_s, false, false},
        {u"/"_s, true, true},
        {d + u"*.DAT"_s, true, false},
        {d + u"AVSEQ0?.DAT"_s, true, false},
        {d + u"*.vob"_s, false, false},
        {d + u"MPEG*"_s, true, true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(fs.FileExists(row.path), row.file) << row.path.toStdString();
        EXPECT_EQ(fs.FolderExists(row.path), row.folder) << row.path.toStdString();
    }
}

TEST_F(FileSystemTest, AttributesOfRealEntries)
{
    const QString folder = dir.filePath(u"plain"_s);
    ASSERT_TRUE(QDir().mkdir(folder));
    const QString readOnly = make(u"ro.dat"_s);
    ASSERT_TRUE(QFile::setPermissions(readOnly, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
    const QString link = dir.filePath(u"link"_s);
    ASSERT_TRUE(QFile::link(make(u"rw.dat"_s), link));
    const struct
    {
        QString path;
        int word;
    } rows[] = {{folder, 16}, {folder + u'/', 16}, {readOnly, 33}, {dir.filePath(u"rw.dat"_s), 32},
        {make(u".hidden"_s), 34}, {link, 64}, {dir.filePath(u"missing"_s), -1}};
    for (const auto& row : rows) {
        EXPECT_EQ(fs.GetFileAttributesNumber(row.path), row.word) << row.path.toStdString();
        EXPECT_EQ(fs.GetFileAttributesStr(row.path), files::attributeText(row.word));
    }
}

TEST_F(FileSystemTest, DriveKindsBySpaceAndMountPoint)
{
    const struct
    {
        const char* path;
        int kind;
        bool floppy;
    } rows[] = {{"/etc/passwd", 3, false}, {"/home/u/a.dat", 3, false}, {"/media/cdrom/MPEGAV", 5, false},
        {"/media/usb/a", 2, false}, {"/mnt/floppy/a.txt", 2, true}, {"/net/share/x", 4, false},
        {"/dev/shm/x", 6, false}, {"/mnt/odd", 0, false}, {"Q:\\x", 0, false}, {"", 0, false}};
    for (const auto& row : rows) {
        const QString path = QString::fromUtf8(row.path);
        const bool exists = path.startsWith(u'/');
        EXPECT_EQ(fs.GetDriveType(path), row.kind) << row.path;
        EXPECT_EQ(fs.GetDriveTypeStr(path), exists ? files::driveKindText(row.kind, row.floppy) : QString());
        EXPECT_EQ(fs.DriveExists(path), exists) << row.path;
    }
    EXPECT_EQ(fs.GetFixedDiskList(), u"//home/"_s);
    EXPECT_EQ(fs.GetDiskSpaceSize(u"/etc"_s, 0), 10'000'000'000.0);
    EXPECT_EQ(fs.GetDiskSpaceSize(u"/etc"_s, 1), 3'000'000'000.0);
    EXPECT_EQ(fs.GetDiskSpaceSize(u"/etc"_s, 2), 6'500'000'000.0);
    EXPECT_EQ(fs.GetDiskSpaceSize(u"/etc"_s, 5), 0.0);
    EXPECT_EQ(fs.GetDiskSpaceSize(u"Q:\\"_s, 0), -1.0); // no such drive
    EXPECT_EQ(fs.GetDiskSpaceSize(u"/media/usb/a"_s, 0), -1.0); // no figures
    EXPECT_TRUE(fs.SetDiskVolumeLabel(u"/media/usb/x"_s, u"NEW"_s));
    EXPECT_EQ(volumes.labelsSet.value(u"/media/usb"_s), u"NEW"_s);
    EXPECT_FALSE(fs.SetDiskVolumeLabel(u"E:\\"_s, u"NEW"_s));
}

TEST_F(FileSystemTest, DiskInformationComesFromTheVolumeOfThePath)
{
    const QString root = u"/media/cdrom/"_s;
    QStringList lines;
    for (int kind = 0; kind <= 10; ++kind) {
        lines << files::diskInformationLine(kind, kCdSpace, kCdIdentity);
        EXPECT_EQ(fs.GetDiskInformation(root, kind), lines.last());
    }
    EXPECT_EQ(fs.GetDiskInformationStr(root), lines.join(u"\r\n"_s));
    EXPECT_EQ(fs.GetDiskInformation(root, 11), QString());
    EXPECT_EQ(fs.GetDiskInformationA(root, 0).toLongLong(), 734'003'200LL);
    EXPECT_EQ(fs.GetDiskInformationA(root, 4).toString(), u"VIDEOCD"_s);
    // No figures: nothing at all; figures without an identity: the label line is there, empty.
    EXPECT_EQ(fs.GetDiskInformation(u"/media/usb"_s, 0), QString());
    EXPECT_EQ(fs.GetDiskInformationStr(u"/media/usb"_s), QString());
    EXPECT_FALSE(fs.GetDiskInformationA(u"/media/usb"_s, 0).isValid());
    EXPECT_EQ(fs.GetDiskInformation(u"relative"_s, 0), QString());
    EXPECT_EQ(fs.GetDiskInformation(u"/"_s, 4), files::diskInformationLine(4, {}, {}));
}

// A chroot without a mount table: the drive facts of a real folder come from the folder itself.
TEST_F(FileSystemTest, DriveFactsOfAPathTheMountTableDoesNotCover)
{
    platform::LinuxVolumes uncovered(dir.filePath(u"no-mountinfo"_s));
    FileSystem chroot(uncovered, shell, &host);
    const QString path = dir.filePath(u"new.dat"_s);
    EXPECT_TRUE(chroot.DriveExists(path));
    EXPECT_TRUE(chroot.DriveIsReady(path));
    EXPECT_GT(chroot.GetDiskSpaceSize(path, 0), 0.0);
    EXPECT_NE(chroot.GetDriveType(path), platform::kDriveUnknown);
    EXPECT_NE(chroot.GetDiskInformation(path, 6), files::diskInformationLine(6, {}, {})); // the type is named
}

TEST_F(FileSystemTest, DrivePropertyOfADriveWithoutMedium)
{
    volumes.notReady.insert(u"/media/cdrom"_s);
    EXPECT_FALSE(fs.DriveIsReady(u"/media/cdrom/x"_s));
    fs.ShowDriveProperty(u"/media/cdrom/x"_s, nullptr);
    ASSERT_EQ(host.boxes.size(), 1);
    EXPECT_EQ(host.boxes[0].text, u"驱动器没有准备好."_s);
    EXPECT_EQ(host.boxes[0].title, u"[/media/cdrom/]属性"_s);
    EXPECT_EQ(host.boxes[0].icon, platform::BoxIcon::Exclamation);
    EXPECT_TRUE(shell.calls.isEmpty());

    fs.ShowDriveProperty(u"/media/usb/a/b"_s, nullptr);
    EXPECT_EQ(shell.calls, QStringList{u"showProperties /media/usb"_s});
    EXPECT_EQ(host.boxes.size(), 1);
}

TEST_F(FileSystemTest, FolderChooserAnswersEndInASlash)
{
    for (const auto& [chosen, answer] : {std::pair{u"/media/cdrom"_s, u"/media/cdrom/"_s}, {u"/"_s, u"/"_s},
             {u"/video/"_s, u"/video/"_s}, {QString(), QString()}}) {
        shell.chosenFolder = chosen;
        EXPECT_EQ(fs.GetBrowseDirectoryWinNT(nullptr, u"t"_s), answer);
        EXPECT_EQ(fs.GetBrowseDirectoryWin9X(nullptr, u"t"_s), answer);
    }
}

TEST_F(FileSystemTest, CopyAndMoveAskForAFolderFirst)
{
    EXPECT_FALSE(fs.FileCopyTo(nullptr, u"/a/b.dat"_s));
    EXPECT_EQ(shell.calls, QStringList{u"chooseFolder"_s});
    EXPECT_EQ(shell.lastChooserTitle, u"选择文件保存路径"_s);

    shell.calls.clear();
    shell.chosenFolder = u"/backup"_s;
    // The transfer fails: still true, and the failure reaches the caller.
    shell.transferAnswer = platform::FileOpResult::failed(
        platform::FileOpResult::Step::WriteTarget, EROFS, u"/backup/b.dat"_s);
    platform::FileOpResult copied;
    platform::FileOpResult moved;
    EXPECT_TRUE(fs.FileCopyTo(nullptr, u"/a/b.dat"_s, &copied));
    EXPECT_TRUE(fs.FileMoveTo(nullptr, u"/a/c.dat"_s, &moved));
    EXPECT_EQ(copied.error, EROFS);
    EXPECT_EQ(moved.error, EROFS);
    EXPECT_EQ(shell.calls,
        (QStringList{u"chooseFolder"_s, u"copyInto /a/b.dat -> /backup/"_s, u"chooseFolder"_s,
            u"moveInto /a/c.dat -> /backup/"_s}));
}

TEST_F(FileSystemTest, OpeningFallsBackToTheChooser)
{
    fs.OpenFile(dir.filePath(u"missing"_s), nullptr);
    fs.FileOpenStyle(dir.filePath(u"missing"_s));
    EXPECT_TRUE(shell.calls.isEmpty());

    // Associated: open; no default application: straight to the chooser; associated but failing to start:
    // the chooser too.
    const QString file = make(u"a.dat"_s);
    const struct
    {
        bool associated;
        bool starts;
        QStringList calls;
    } rows[] = {
        {true, true, {u"open "_s + file}},
        {false, true, {u"openWith "_s + file}},
        {true, false, {u"open "_s + file, u"openWith "_s + file}},
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
    EXPECT_EQ(shell.calls, QStringList{u"open "_s + dir.path() + u'/'});
    // The type name is the desktop's, else made from the extension.
    EXPECT_EQ(fs.GetFileTypeName(u"/x/AVSEQ01.DAT"_s), files::fallbackTypeName(u"/x/AVSEQ01.DAT"_s));
    shell.typeNameAnswer = u"MPEG video"_s;
    EXPECT_EQ(fs.GetFileTypeName(u"/x/AVSEQ01.DAT"_s), u"MPEG video"_s);
}

TEST_F(FileSystemTest, TempFilesAreNewAndNamedByPrefixOrProgram)
{
    const QString first = fs.GetTempFileName(dir.path(), u"vcd"_s);
    const QString second = fs.GetTempFileName(dir.path(), u"vcd"_s);
    EXPECT_TRUE(QFileInfo(first).isFile());
    EXPECT_NE(first, second);
    EXPECT_TRUE(QFileInfo(first).fileName().startsWith(u"vcd"_s));
    EXPECT_EQ(QFileInfo(first).absolutePath(), dir.path());
    EXPECT_EQ(fs.GetTempFileName(dir.filePath(u"missing"_s), u"vcd"_s), QString());

    // Without a folder: in TMPDIR, named after the program.
    QTemporaryDir temp;
    const QByteArray oldTmp = qgetenv("TMPDIR");
    qputenv("TMPDIR", QFile::encodeName(temp.path()));
    EXPECT_EQ(fs.GetTempPath(), temp.path() + u'/');
    const QString made = fs.GetTempFileName(QString(), u"zzz"_s);
    qputenv("TMPDIR", oldTmp);
    EXPECT_TRUE(QFileInfo(made).isFile());
    EXPECT_EQ(QFileInfo(made).absolutePath(), temp.path());
    EXPECT_TRUE(QFileInfo(made).fileName().startsWith(u"files_tests"_s)) << made.toStdString();
}

TEST_F(FileSystemTest, DatesAndSixtyFourBitSizesOfRealFiles)
{
    const QString file = make(u"old.dat"_s);
    {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::ReadWrite));
        ASSERT_TRUE(
            f.setFileTime(QDateTime(QDate(2003, 5, 1), QTime(0, 0, 0)), QFileDevice::FileModificationTime));
        ASSERT_TRUE(
            f.setFileTime(QDateTime(QDate(2003, 5, 2), QTime(14, 5, 9)), QFileDevice::FileAccessTime));
    }
    // A stamp at midnight shows the clock's time of day.
    fs.setClock([] { return QDateTime(QDate(2020, 1, 1), QTime(14, 5, 9)); });
    const QDateTime shown(QDate(2003, 5, 1), QTime(14, 5, 9));
    EXPECT_EQ(fs.GetFileDateTime(file, 1), files::dateTimeText(shown, QTime(14, 5, 9), QLocale()));
    EXPECT_EQ(fs.GetFileDateTime(file, 2), files::dateTimeText(shown.addDays(1), QTime(14, 5, 9), QLocale()));
    EXPECT_EQ(fs.GetFileDateTime(dir.filePath(u"missing"_s), 1), u"未知"_s);
    EXPECT_FALSE(fs.GetFileDateTime(file, 0).isEmpty());

    const QString big = dir.filePath(u"big.vob"_s);
    {
        QFile f(big);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        ASSERT_TRUE(f.resize(5'000'000'000LL)); // sparse: no disk space used
    }
    EXPECT_EQ(fs.GetFileSize(big), 5'000'000'000LL);
    EXPECT_EQ(fs.GetFileSizeA(big), 5'000'000'000LL);
    EXPECT_EQ(fs.GetFileSize(dir.path()), 0);
    EXPECT_EQ(fs.GetFileSize(dir.filePath(u"missing"_s)), 0);
}

} // namespace
