#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <functional>

class QIODevice;

namespace vindaro::info {

// One row of the archive listing, as the property window's list shows it.
struct ZipRow
{
    QString text; // "[01]name" or "[01][文件夹]name/"
    QString size; // uncompressed, grouped; empty for a folder
    QString modified; // "2003-01-01 12:00:00"
    QString ratio; // "75.00%"; empty for a folder or an empty file
    QString compressedSize; // grouped; empty for a folder
    QString crc; // eight upper-case hex digits; empty for a folder
    QString toolTip; // the row's own text
    bool isFolder = false; // folder rows are drawn in kFolderRgb
};

// Lists a ZIP archive by walking its local file headers from the start of the file; the central directory
// is not read. The walk stops at the first four bytes that are not a local header (normally the central
// directory), at a header cut short, or where an entry's size points past the end, so a damaged archive
// lists the entries before the damage. Entries written with a trailing data descriptor (sizes 0 in the
// local header) end the walk after that entry, because the next header cannot be found without them.
class ZipInformation
{
public:
    static constexpr quint32 kFolderRgb = 0x00A8A8; // red 0, green 168, blue 168
    // Called once per entry; return false to stop the walk (for example when the window closes). The
    // caller may let pending events run here.
    using RowSink = std::function<bool(const ZipRow&)>;

    // Adds one row per entry. False only when the file cannot be opened.
    bool readZip(const QString& path, const RowSink& addRow);
    void readZip(QIODevice& device, const RowSink& addRow);
    // The four summary rows: an empty one, the folder count, the file count and the total size in KB.
    QStringList getFileQuantitySize() const;

    // "名称", "文件大小[字节]", "更改时间", "压缩比率", "压缩大小[字节]", "CRC"
    static QStringList columnCaptions();
    // "2003-01-01 12:00:00" from MS-DOS date and time words.
    static QString dosDateTime(quint16 date, quint16 time);

    qint64 fileCount() const { return m_files; }
    qint64 folderCount() const { return m_folders; }
    qint64 entryCount() const { return m_entries; }
    qint64 totalBytes() const { return m_totalBytes; } // uncompressed, folders included

private:
    qint64 m_files = 0;
    qint64 m_folders = 0;
    qint64 m_entries = 0;
    qint64 m_totalBytes = 0;
};

} // namespace vindaro::info
