#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <optional>

// The file list's texts and matching rules, apart from any file or window so each can be tested alone.
namespace vindaro::files {

// lblFilesInfo on an empty list (full-width colons, unlike the list line).
inline const QString kResetFilesInfo = QStringLiteral("文件总数：0个，总计大小：0M，0字节");
// The list box's tooltip over its first quarter.
inline const QString kListBoxHint = QStringLiteral("右击弹出快捷菜单.双击显示文件列表");
inline const QString kReminderTitle = QStringLiteral("提醒！");
inline const QString kOverCapacityText
    = QStringLiteral("文件数目已超出了允许的最大范围，不能再添加文件到列表！");

// The last three characters of `text` in upper case (the whole text when it is shorter).
QString lastThreeUpper(const QString& text);

// The add-folder rule: every file when the pattern, trimmed, is "*.*"; otherwise only the name's last three
// characters are compared with the pattern's, without regard to case ("*.DAT" takes "a.dat" and "notdat").
bool matchesScanPattern(const QString& fileName, const QString& pattern);

// The most entries the add-folder command accepts to start with, by the platform family the version query
// reports: 1 (the 9x family) 32,736; 2 (the NT family) 2,147,483,615; any other family has no limit.
std::optional<qint64> addFolderCapacity(int platformId);
// The command runs unless the list already holds more than the limit.
bool addFolderAllowed(qint64 entryCount, std::optional<qint64> limit);

// lblFilesInfo for a list: "文件总数:3/12个  总计大小:1,402MB [1,470,103,552字节]"; position 0 leaves out
// the "3/" part.
QString filesInfoLine(qint64 entryCount, qint64 totalBytes, qint64 position = 0);
// Panel B: "  大小：1,024KB [1,048,576字节]  类型：DAT 文件  属性：只读".
QString sizeTypePanel(qint64 bytes, const QString& typeName, const QString& attributes);
// Panel A: "  修改时间：<modified>  访问时间：<accessed>".
QString datesPanel(const QString& modified, const QString& accessed);

// Endings (ICO, CUR, BMP, DIB, JPG, GIF, WMF, EMF) whose file is shown itself as the entry's picture.
bool isPictureEnding(const QString& path);
// A video the preview takes: not a "//" network path, and ending in DAT, VOB, AVI, ASF, ASX or MPEG.
bool isPreviewVideo(const QString& path);

// The destination after the current entry changed: the destination's folder (with a closing "/") and the
// entry's file name. An empty destination stays empty.
QString followedDestination(const QString& destination, const QString& currentEntry);

// The delete question, its lines ended by CR LF.
QString deleteQuestionText(const QString& path);

// Whether the properties command opens the program's own property window (true) or the desktop's sheet:
// ZIP, SWF, EXE and DLL always; MP3 except on the system named "Microsoft Windows XP".
bool propertiesUseOwnWindow(const QString& path, const QString& osName);

// Rename dialog texts.
// "文件大小：1,024,000字节" below 1,024,001 bytes, else KB rounded to the nearest whole: "文件大小：2,000KB"
// for 2,047,999 bytes.
QString renameSizeLine(qint64 bytes);
struct RenameFacts
{
    qint64 sizeBytes = 0;
    QString typeName;
    QString created;
    QString modified;
    QString accessed;
    QString attributes;
    // ID3v1 lines, present for an MP3 file whose tag was read.
    struct Tag
    {
        QString title, artist, album, year, genre, track, comments;
    };
    std::optional<Tag> tag;
};
// The facts, one a line, joined by CR LF.
QString renameFactsText(const RenameFacts& facts);
// "N[01]" + the file name: the proposal in the name field.
QString proposedNewName(const QString& fileName);
// The title broken after every `width` characters.
QString wrapTitle(const QString& title, int width = 36);
// Why a rename to `newName` (already trimmed) in `folder` cannot have worked, in the user's words; the
// checks are on the name and on what the folder holds now. `oldPath` is the file that was to be renamed.
QString renameRefusalText(const QString& oldPath, const QString& folder, const QString& newName);

} // namespace vindaro::files
