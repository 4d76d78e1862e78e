#pragma once

#include <QString>
#include <QtGlobal>

// The texts and decisions of the file property window, kept apart from its widgets so they are tested
// without a display.
namespace vindaro::info {

// The size line of the general page: up to 1,024,000 bytes "1,024,000字节"; from 1,024,001 bytes on the
// whole kilobytes, then the bytes: "1,000KB [1,024,001字节]".
QString fileLengthText(qint64 bytes);

// The drive page's long form "1,234 字节" and short form: below 1 KB the long form, then two decimals of
// KB, MB or GB with grouped digits ("1,023.99 MB", "2.00 GB").
QString spaceLongText(qint64 bytes);
QString spaceShortText(qint64 bytes);
// part / total as a percentage with two decimals ("45.67%"); "0.00%" for an empty total.
QString percentText(qint64 part, qint64 total);
// "Drive:/media/cd  SN:1A2B  p(A/T):25.00%  p(U/T):75.00%": the mount point stands in for the letter.
QString driveNameText(
    const QString& root, const QString& serialHex, qint64 freeBytes, qint64 usedBytes, qint64 totalBytes);
// The third tab's caption: "本地磁盘(/home)属性".
QString driveTabCaption(const QString& diskTypeText, const QString& root);

// The attribute word Apply writes: read-only 1, hidden 2, archive 32. The system box is shown but left out
// of the word, as the window always did: Linux has no system flag to write.
int attributeWordFromBoxes(bool readOnly, bool hidden, bool archive);
// Writes what Linux can hold of an attribute word: read-only clears every write permission bit, its
// absence gives the owner the write bit back. Hidden (a name starting with ".") and archive are not
// applied: making a file hidden would rename it under the user. False when the system refused (a
// read-only volume, no permission); the file is then unchanged.
bool applyAttributeWord(const QString& path, int word);

// What the summary tab shows, from the last three characters of the name, any case.
enum class SummaryKind
{
    None,
    Mp3,
    Swf,
    Zip,
    Module, // EXE and DLL: the resource browser
};
SummaryKind summaryKindOf(const QString& path);

// The pie of the drive page: the span of the used part in degrees (0..360), the rest is free space.
double usedSpanDegrees(qint64 usedBytes, qint64 totalBytes);

} // namespace vindaro::info
