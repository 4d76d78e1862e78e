#pragma once

#include "platform/Volumes.h"

#include <QDateTime>
#include <QList>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

// Pure text and path helpers behind FileSystem: no file is touched here, so each rule can be tested alone.
namespace vindaro::files {

// Attribute bits as the rest of the program reads them.
enum AttributeBit : int
{
    kAttrReadOnly = 1,
    kAttrHidden = 2,
    kAttrSystem = 4,
    kAttrDirectory = 16,
    kAttrArchive = 32,
    kAttrLink = 64,
};

// Paths use "/" as separator.
// The text after the last "/"; the whole path when it has none.
QString fileNameOf(const QString& path);
// The text up to and including the last "/"; the whole path when it has none.
QString parentFolderOf(const QString& path);
// What an existence test looks up: blanks trimmed from both ends, then one trailing "/" removed
// (the root "/" itself is kept, so it stays a folder that exists).
QString existenceProbePath(const QString& path);
// `folder` with exactly one closing "/" added when it has none; empty stays empty.
QString withTrailingSlash(const QString& folder);
// True when the last path component holds a "*" or "?" wildcard.
bool hasWildcard(const QString& path);

// The Linux facts behind an attribute word.
struct PathFacts
{
    bool isLink = false; // the path itself is a symbolic link
    bool isDirectory = false; // a folder (not followed through links)
    bool isRegular = false; // a regular file
    bool readOnly = false; // the caller's permission class has no write bit, or the mount is read-only
    bool hidden = false; // the name starts with "."
};
// The attribute word built from Linux facts:
//   a symbolic link is 64 alone, whatever it points at (it reads "链接或快捷方式");
//   otherwise read-only 1 | hidden 2 | directory 16 | archive 32 for a regular file.
// So a plain folder is 16 ("未知(16)"), a plain file 32 ("存档"), a read-only file 33 ("只读,存档").
// Linux has no system, compressed or indexed flags: 4, 128, 2048 and 8192 never appear.
int attributeWord(const PathFacts& facts);
// The attribute word as text, looked up as a whole value; -1 (no such path) gives "".
QString attributeText(int word);

// True for a floppy device (/dev/fd0 ...), the one removable drive shown as "3.5英寸软盘".
bool isFloppyDevice(const QString& device);
// Drive kind as text; `floppy` only matters for removable drives.
QString driveKindText(int kind, bool floppy);

// The volume whose mount point is the longest component-wise prefix of the absolute `path`
// ("/media/cd" holds "/media/cd/a" but not "/media/cdrom"). Relative or empty paths have none.
std::optional<platform::Volume> volumeOfPath(const QList<platform::Volume>& volumes, const QString& path);

// A list of roots: each mount point with one trailing "/", run together ("/" "/home" -> "//home/").
// Every root starts and ends with "/" and holds no "//" itself, so a boundary is wherever two slashes
// meet; splitRootList() undoes joinRoots().
QString joinRoots(const QStringList& mountPoints);
QStringList splitRootList(const QString& roots);

// Upper-case hexadecimal without leading zeros; "" for 0.
QString serialText(quint32 serial);
// Disk information items 0..10: the bare value (64-bit numbers, texts) and the labelled line.
// Both are empty for a kind outside 0..10.
QVariant diskInformationValue(
    int kind, const platform::VolumeSpace& space, const platform::VolumeIdentity& identity);
QString diskInformationLine(
    int kind, const platform::VolumeSpace& space, const platform::VolumeIdentity& identity);

// The type name used when the desktop has none: the text after the last "." of the file name (the whole
// name when it has none), upper-cased, then " 文件": "/a/b.dat" -> "DAT 文件".
QString fallbackTypeName(const QString& path);

// A file's date and time for display. A time of exactly 00:00:00 is replaced by `now` (stamps written
// by tools that keep only the date would otherwise all show midnight).
// Format: the locale's long date form without the weekday, one blank, the locale's long time form
// without the time-zone name. Chinese gives "2003年5月1日 14:05:09", US English
// "May 1, 2003 2:05:09 PM".
QString dateTimeText(const QDateTime& local, const QTime& now, const QLocale& locale);

} // namespace vindaro::files
