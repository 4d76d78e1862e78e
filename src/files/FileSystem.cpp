#include "FileSystem.h"

#include "FileTexts.h"
#include "disc/MountedDiscFiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>
#include <QtDebug>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace vindaro::files {

namespace {

QByteArray nativePath(const QString& path)
{
    return QFile::encodeName(path);
}

// The first entry that `path` names: the path itself, or with "*" / "?" in its last component the first
// matching name of the folder listing (hidden names included). Empty when nothing matches.
QString firstMatch(const QString& path)
{
    if (path.isEmpty())
        return {};
    if (!hasWildcard(path)) {
        struct stat st;
        return ::lstat(nativePath(path).constData(), &st) == 0 ? path : QString();
    }
    const QString folder = parentFolderOf(path);
    const QString pattern = fileNameOf(path);
    QDir dir(folder == path ? QStringLiteral(".") : folder);
    const QStringList names = dir.entryList(QStringList{pattern},
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    if (names.isEmpty())
        return {};
    return folder == path ? names.first() : folder + names.first();
}

// Read-only for the caller: the write bit of the caller's class (owner, group, others) is clear, or the
// volume is mounted read-only. The permission bits are read rather than access(2), so root too sees a
// 0444 file as read-only.
bool isReadOnlyFor(const QByteArray& path, const struct stat& st)
{
    struct statvfs vfs;
    if (::statvfs(path.constData(), &vfs) == 0 && (vfs.f_flag & ST_RDONLY))
        return true;
    mode_t writeBit = S_IWOTH;
    if (st.st_uid == ::geteuid()) {
        writeBit = S_IWUSR;
    } else if (st.st_gid == ::getegid()) {
        writeBit = S_IWGRP;
    } else {
        gid_t groups[256];
        const int count = ::getgroups(256, groups);
        for (int i = 0; i < count; ++i) {
            if (groups[i] == st.st_gid) {
                writeBit = S_IWGRP;
                break;
            }
        }
    }
    return (st.st_mode & writeBit) == 0;
}

} // namespace

FileSystem::FileSystem(platform::Volumes& volumes, platform::Shell& shell, platform::Host* host)
    : m_volumes(volumes)
    , m_shell(shell)
    , m_host(host)
    , m_clock([] { return QDateTime::currentDateTime(); })
{
}

std::optional<platform::Volume> FileSystem::volumeOf(const QString& path)
{
    if (!path.startsWith(QLatin1Char('/')))
        return std::nullopt; // spare the mount table read
    return m_volumes.volumeOf(path);
}

void FileSystem::ShowFile_FolderProperty(const QString& path, QWidget* owner)
{
    m_shell.showProperties(path, owner);
    if (m_host)
        m_host->yield();
}

void FileSystem::ShowDriveProperty(const QString& path, QWidget* owner)
{
    const auto volume = volumeOf(path);
    if (volume && m_volumes.isReady(volume->mountPoint)) {
        m_shell.showProperties(volume->mountPoint, owner);
        return;
    }
    platform::MessageBox box;
    box.text = QStringLiteral("驱动器没有准备好.");
    box.title = QLatin1Char('[') + (volume ? withTrailingSlash(volume->mountPoint) : path)
        + QStringLiteral("]属性");
    box.icon = platform::BoxIcon::Exclamation;
    if (m_host)
        m_host->showBox(box);
    else
        qWarning().noquote() << box.title << box.text;
}

bool FileSystem::FileCopyTo(QWidget* owner, const QString& source, platform::FileOpResult* result)
{
    const QString folder = GetBrowseDirectoryWinNT(owner, QStringLiteral("选择文件保存路径"));
    if (folder.isEmpty())
        return false;
    const platform::FileOpResult outcome = m_shell.copyInto(source, folder, owner);
    if (result)
        *result = outcome;
    return true;
}

bool FileSystem::FileMoveTo(QWidget* owner, const QString& source, platform::FileOpResult* result)
{
    const QString folder = GetBrowseDirectoryWinNT(owner, QStringLiteral("选择文件保存路径"));
    if (folder.isEmpty())
        return false;
    const platform::FileOpResult outcome = m_shell.moveInto(source, folder, owner);
    if (result)
        *result = outcome;
    return true;
}

platform::FileOpResult FileSystem::FileDelToRecycle(const QString& path)
{
    return m_shell.moveToTrash(path);
}

platform::FileOpResult FileSystem::FileDeleted(const QString& path)
{
    return m_shell.deletePermanently(path);
}

bool FileSystem::ReName(const QString& oldPath, const QString& newPath)
{
    return m_shell.rename(oldPath, newPath) == 0;
}

void FileSystem::FileOpenStyle(const QString& path)
{
    if (FileExists(path))
        m_shell.openWith(path);
}

void FileSystem::OpenFile(const QString& path, QWidget* owner)
{
    Q_UNUSED(owner);
    if (!FileExists(path))
        return;
    // The type's default decides, not whether a launcher started: a launcher starts for any file.
    if (!m_shell.hasDefaultApplication(path) || !m_shell.open(path))
        m_shell.openWith(path);
}

void FileSystem::OpenFolder(const QString& path, QWidget* owner)
{
    Q_UNUSED(owner);
    if (FileExists(path)) {
        m_shell.open(GetFilePath(path));
    } else if (FolderExists(path)) {
        m_shell.open(path);
    } else {
        // Nothing by that name: let a relative path name something beside the program.
        const QString resolved
            = QDir::isAbsolutePath(path) ? path : QDir(QCoreApplication::applicationDirPath()).filePath(path);
        m_shell.open(resolved);
    }
}

QString FileSystem::browseFolder(QWidget* owner, const QString& title)
{
    QString folder = m_shell.chooseFolder(title, owner);
    const qsizetype nul = folder.indexOf(QChar(0));
    if (nul >= 0)
        folder.truncate(nul);
    return withTrailingSlash(folder);
}

QString FileSystem::GetBrowseDirectoryWinNT(QWidget* owner, const QString& title)
{
    return browseFolder(owner, title);
}

QString FileSystem::GetBrowseDirectoryWin9X(QWidget* owner, const QString& title)
{
    return browseFolder(owner, title);
}

QString FileSystem::GetFileDateTime(const QString& path, int dateKind)
{
    const QString found = firstMatch(path);
    if (found.isEmpty())
        return QStringLiteral("未知");
    const QByteArray native = nativePath(found);
    struct statx sx;
    const unsigned mask = STATX_BTIME | STATX_MTIME | STATX_ATIME;
    // Follow a link to what it names; a dangling link still has its own times.
    if (::statx(AT_FDCWD, native.constData(), 0, mask, &sx) != 0
        && ::statx(AT_FDCWD, native.constData(), AT_SYMLINK_NOFOLLOW, mask, &sx) != 0)
        return QStringLiteral("未知");
    struct statx_timestamp stamp = sx.stx_mtime;
    // Some file systems claim a birth time and report zero: treat that as none.
    const bool hasBirth
        = (sx.stx_mask & STATX_BTIME) && (sx.stx_btime.tv_sec != 0 || sx.stx_btime.tv_nsec != 0);
    if (dateKind == 0 && hasBirth)
        stamp = sx.stx_btime;
    else if (dateKind == 2)
        stamp = sx.stx_atime;
    const QDateTime local = QDateTime::fromSecsSinceEpoch(stamp.tv_sec).toLocalTime();
    return dateTimeText(local, m_clock().time(), QLocale());
}

QString FileSystem::GetFileTypeName(const QString& path)
{
    const QString name = m_shell.typeName(path);
    return name.isEmpty() ? fallbackTypeName(path) : name;
}

QString FileSystem::GetFileName(const QString& path) const
{
    return fileNameOf(path);
}

QString FileSystem::GetFolderName(const QString& path) const
{
    return fileNameOf(path);
}

QString FileSystem::GetParentFolderName(const QString& path) const
{
    return parentFolderOf(path);
}

QString FileSystem::GetFilePath(const QString& path) const
{
    return parentFolderOf(path);
}

QString FileSystem::GetShortPathName(const QString& path) const
{
    struct stat st;
    if (path.isEmpty() || ::lstat(nativePath(path).constData(), &st) != 0)
        return {};
    return path;
}

QString FileSystem::GetTempPath() const
{
    return withTrailingSlash(QDir::tempPath());
}

QString FileSystem::GetTempFileName(const QString& folder, const QString& prefix) const
{
    QString where = folder;
    QString namePrefix = prefix;
    if (folder.isEmpty()) {
        where = GetTempPath();
        namePrefix = QCoreApplication::instance()
            ? QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName()
            : QStringLiteral("vindaro");
    }
    namePrefix.replace(QLatin1Char('/'), QLatin1Char('_'));
    QTemporaryFile file(withTrailingSlash(where) + namePrefix + QStringLiteral("XXXXXX.tmp"));
    file.setAutoRemove(false);
    if (!file.open())
        return {};
    return file.fileName();
}

qint64 FileSystem::GetFileSize(const QString& path) const
{
    struct stat st;
    if (path.isEmpty() || ::stat(nativePath(path).constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return 0;
    // A Video CD track on a mounted disc: the kernel counts 2,048 bytes a sector, its copy holds 2,324.
    if (const std::optional<qint64> form2 = disc::form2Length(m_volumes, path))
        return *form2;
    return static_cast<qint64>(st.st_size);
}

qint64 FileSystem::GetFileSizeA(const QString& path) const
{
    return GetFileSize(path);
}

int FileSystem::GetFileAttributesNumber(const QString& path) const
{
    if (path.isEmpty())
        return -1;
    const QByteArray native = nativePath(path);
    struct stat st;
    if (::lstat(native.constData(), &st) != 0)
        return -1;
    PathFacts facts;
    facts.isLink = S_ISLNK(st.st_mode);
    facts.isDirectory = S_ISDIR(st.st_mode);
    facts.isRegular = S_ISREG(st.st_mode);
    facts.readOnly = isReadOnlyFor(native, st);
    QString name = path;
    if (name.size() > 1 && name.endsWith(QLatin1Char('/')))
        name.chop(1);
    name = fileNameOf(name);
    facts.hidden
        = name.startsWith(QLatin1Char('.')) && name != QLatin1String(".") && name != QLatin1String("..");
    return attributeWord(facts);
}

QString FileSystem::GetFileAttributesStr(const QString& path) const
{
    return attributeText(GetFileAttributesNumber(path));
}

bool FileSystem::FileExists(const QString& path) const
{
    return !firstMatch(existenceProbePath(path)).isEmpty();
}

bool FileSystem::FolderExists(const QString& path) const
{
    const QString found = firstMatch(existenceProbePath(path));
    return !found.isEmpty() && QFileInfo(found).isDir();
}

std::optional<FileSystem::DiskFacts> FileSystem::diskFacts(const QString& root)
{
    const auto volume = volumeOf(root);
    if (!volume)
        return std::nullopt;
    const auto space = m_volumes.space(volume->mountPoint);
    if (!space)
        return std::nullopt; // nothing else is asked when the space query fails
    return DiskFacts{*space, m_volumes.identity(volume->mountPoint).value_or(platform::VolumeIdentity{})};
}

QString FileSystem::GetDiskInformation(const QString& root, int kind)
{
    if (kind < 0 || kind > 10)
        return {};
    const auto facts = diskFacts(root);
    return facts ? diskInformationLine(kind, facts->space, facts->identity) : QString();
}

QVariant FileSystem::GetDiskInformationA(const QString& root, int kind)
{
    if (kind < 0 || kind > 10)
        return {};
    const auto facts = diskFacts(root);
    return facts ? diskInformationValue(kind, facts->space, facts->identity) : QVariant();
}

QString FileSystem::GetDiskInformationStr(const QString& root)
{
    const auto volume = volumeOf(root);
    if (!volume)
        return {};
    const auto space = m_volumes.space(volume->mountPoint);
    if (!space)
        return {};
    const auto identity = m_volumes.identity(volume->mountPoint).value_or(platform::VolumeIdentity{});
    QStringList lines;
    for (int kind = 0; kind <= 10; ++kind)
        lines.append(diskInformationLine(kind, *space, identity));
    return lines.join(QStringLiteral("\r\n"));
}

double FileSystem::GetDiskSpaceSize(const QString& path, int spaceKind)
{
    const auto volume = volumeOf(path);
    if (!volume)
        return -1;
    const auto space = m_volumes.space(volume->mountPoint);
    if (!space)
        return -1;
    switch (spaceKind) {
    case 0:
        return static_cast<double>(space->totalBytes);
    case 1:
        return static_cast<double>(space->freeBytes);
    case 2:
        return space->totalBytes >= space->totalFreeBytes
            ? static_cast<double>(space->totalBytes - space->totalFreeBytes)
            : 0.0;
    default:
        return 0;
    }
}

int FileSystem::GetDriveType(const QString& path)
{
    const auto volume = volumeOf(path);
    return volume ? volume->kind : platform::kDriveUnknown;
}

QString FileSystem::GetDriveTypeStr(const QString& path)
{
    const auto volume = volumeOf(path);
    if (!volume)
        return {};
    return driveKindText(volume->kind, isFloppyDevice(volume->device));
}

bool FileSystem::DriveExists(const QString& path)
{
    return volumeOf(path).has_value();
}

bool FileSystem::DriveIsReady(const QString& path)
{
    const auto volume = volumeOf(path);
    return volume && m_volumes.isReady(volume->mountPoint);
}

QString FileSystem::GetFixedDiskList()
{
    QStringList roots;
    for (const platform::Volume& v : m_volumes.list()) {
        if (v.kind == platform::kDriveFixed)
            roots.append(v.mountPoint);
    }
    return joinRoots(roots);
}

bool FileSystem::SetDiskVolumeLabel(const QString& root, const QString& label)
{
    const auto volume = volumeOf(root);
    return volume && m_volumes.setLabel(volume->mountPoint, label);
}

} // namespace vindaro::files
