#pragma once

#include "platform/Host.h"
#include "platform/Shell.h"
#include "platform/Volumes.h"

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <functional>

class QWidget;

namespace vindaro::files {

// The one service through which every window asks questions of the file system and hands files to the
// desktop: path splitting, existence, sizes, dates, attribute and type texts, drive facts, the folder
// chooser, and the desktop's copy, move, delete, rename, open and property operations.
//
// It keeps no state between calls, never throws and never reports an error to its caller: a failure shows
// only as "", false, 0 or -1. Paths use "/" as separator. A "drive" is the mounted volume whose mount point
// is the longest prefix of an absolute path; a path that is not absolute has no drive. Where a drive is
// named (a root, a property title) its mount point stands in for a drive letter.
//
// Notices (the "drive not ready" box) go to the Host given at construction: windows pass their own,
// tests a scripted one. Without a Host the notice only reaches the debug log.
class FileSystem
{
public:
    FileSystem(platform::Volumes& volumes, platform::Shell& shell, platform::Host* host = nullptr);

    // Desktop operations.
    void ShowFile_FolderProperty(const QString& path, QWidget* owner);
    void ShowDriveProperty(const QString& path, QWidget* owner);
    // Ask for a folder, then hand the copy (move) to the desktop, which runs it off the window's thread
    // behind a progress window. True once a folder was chosen, whatever the copy itself then does; false
    // when the chooser was cancelled. `result`, when given, receives how the transfer ended (untouched when
    // the chooser was cancelled).
    bool FileCopyTo(QWidget* owner, const QString& source, platform::FileOpResult* result = nullptr);
    bool FileMoveTo(QWidget* owner, const QString& source, platform::FileOpResult* result = nullptr);
    // Into the trash, or for good; no questions. The answer tells the caller of a failure and its reason.
    platform::FileOpResult FileDelToRecycle(const QString& path);
    platform::FileOpResult FileDeleted(const QString& path);
    // Never replaces an existing `newPath`; true when the rename happened.
    bool ReName(const QString& oldPath, const QString& newPath);
    void FileOpenStyle(const QString& path);
    // Opens an existing file with the application the desktop's type defaults name for it; with none
    // named (or when it cannot be started), offers the open-with chooser.
    void OpenFile(const QString& path, QWidget* owner);
    void OpenFolder(const QString& path, QWidget* owner);
    // The chosen folder, always ending in "/" ("/media/cdrom/", "/"); "" when cancelled. Linux has one
    // folder chooser, so both forms show it.
    QString GetBrowseDirectoryWinNT(QWidget* owner, const QString& title);
    QString GetBrowseDirectoryWin9X(QWidget* owner, const QString& title);

    // File facts.
    // Date kind 0 created (birth time where the file system keeps one, else modified), 1 modified,
    // 2 accessed; local time, see dateTimeText(). "未知" when the path matches nothing.
    QString GetFileDateTime(const QString& path, int dateKind);
    QString GetFileTypeName(const QString& path);
    QString GetFileName(const QString& path) const;
    QString GetFolderName(const QString& path) const;
    QString GetParentFolderName(const QString& path) const;
    QString GetFilePath(const QString& path) const;
    // Linux has no short names: the path itself when it exists, "" otherwise.
    QString GetShortPathName(const QString& path) const;
    // The temporary folder with a closing "/".
    QString GetTempPath() const;
    // Creates a new empty file "<prefix><unique>.tmp" in `folder` and answers its path ("" on failure).
    // With an empty folder: in GetTempPath(), named after the executable, whatever `prefix` says.
    QString GetTempFileName(const QString& folder, const QString& prefix) const;
    // Length in bytes of a file (links followed); 0 for a folder or a path that cannot be examined. A Video
    // CD track on a mounted disc counts what its copy holds: 2,324 bytes a sector.
    qint64 GetFileSize(const QString& path) const;
    qint64 GetFileSizeA(const QString& path) const;
    // See attributeWord() for how Linux facts become the word; -1 for a missing path.
    int GetFileAttributesNumber(const QString& path) const;
    QString GetFileAttributesStr(const QString& path) const;
    // Blanks around the path and one closing "/" are ignored; "*" and "?" in the last component match as
    // in a folder listing (hidden names included). A folder counts as existing.
    bool FileExists(const QString& path) const;
    // As FileExists, and the entry is a folder (or a link to one).
    bool FolderExists(const QString& path) const;

    // Drive facts; `root` is any path on the volume.
    QString GetDiskInformation(const QString& root, int kind);
    QVariant GetDiskInformationA(const QString& root, int kind);
    QString GetDiskInformationStr(const QString& root);
    // Space kind 0 total, 1 free for the caller, 2 used; other kinds 0; -1 without drive or figures.
    double GetDiskSpaceSize(const QString& path, int spaceKind);
    int GetDriveType(const QString& path);
    QString GetDriveTypeStr(const QString& path);
    bool DriveExists(const QString& path);
    // The volume's root can be listed (a medium is present and readable).
    bool DriveIsReady(const QString& path);
    // Mount points of the fixed volumes, each with a closing "/", run together ("//home/"); split them
    // with splitRootList().
    QString GetFixedDiskList();
    bool SetDiskVolumeLabel(const QString& root, const QString& label);

    // For tests: the clock that the midnight rule of GetFileDateTime reads.
    void setClock(std::function<QDateTime()> clock) { m_clock = std::move(clock); }

private:
    std::optional<platform::Volume> volumeOf(const QString& path);
    struct DiskFacts
    {
        platform::VolumeSpace space;
        platform::VolumeIdentity identity;
    };
    // The space and identity of the volume of `root`; nothing when it has no volume or no space figures.
    std::optional<DiskFacts> diskFacts(const QString& root);
    QString browseFolder(QWidget* owner, const QString& title);

    platform::Volumes& m_volumes;
    platform::Shell& m_shell;
    platform::Host* m_host; // may be null
    std::function<QDateTime()> m_clock;
};

} // namespace vindaro::files
