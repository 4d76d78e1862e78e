#pragma once

#include <QSize>
#include <QString>
#include <QStringList>
#include <QTime>
#include <QtGlobal>

namespace vindaro::files {
class FileSystem;
}

// The texts of the player and the preview, built apart from their widgets so they are tested without a
// display.
namespace vindaro::media {

// Up to these many bytes a size line shows bytes, beyond them whole kilobytes.
constexpr qint64 kPlayerBytesLimit = 1023800;
constexpr qint64 kPreviewBytesLimit = 1024000;

// Hours, minutes and seconds of a position, as the windows keep the last one shown.
struct TimeParts
{
    qint16 hours = 0;
    qint16 minutes = 0; // 0..59
    qint16 seconds = 0; // 0..59
};
TimeParts timeParts(double seconds);
// "01:02:05" for 3,725 s; fractions are dropped, hours may run to more than two digits.
QString timeText(double seconds);

// "1,023,800字节" up to `bytesLimit`, else the whole kilobytes: "999KB" for 1,023,801.
QString sizeText(qint64 bytes, qint64 bytesLimit);

// What the file-system service says of a file.
struct FileFacts
{
    qint64 bytes = 0;
    QString typeName;
    QString created;
    QString modified;
    QString accessed;
    QString attributes;
};
FileFacts readFileFacts(files::FileSystem& fileSystem, const QString& path);

// The six lines the player prints into its video area: size, type, created, modified, accessed,
// attributes.
QStringList playerFactsLines(const FileFacts& facts);
// The preview's facts text, lines joined by "\n". An MP3 file gets its size, its ID3v1 tag when it has
// one and its first MPEG audio frame header; any other file its size, type, dates and attributes.
QString previewFactsText(const QString& path, const FileFacts& facts);

// A length or a position in seconds with two decimals: "83.50".
QString secondsText(double seconds);
// lblTotalLength of a video: whole seconds grouped, then the picture size once it is known:
// "1,234[352×288]"; "1,234" while it is not.
QString videoLengthText(double seconds, QSize picture);

// The preview's position strip: "00:00:05/00:01:00 14:03:27  5.250".
QString positionStripText(double positionSeconds, double durationSeconds, QTime clock);

} // namespace vindaro::media
