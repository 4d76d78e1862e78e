#pragma once

#include <QString>

namespace vindaro::oplog {

// OperationNotes.log: a sequence of entries, each "[date time] text" and CR LF, in UTF-8. Every run's
// entries are appended followed by one more CR LF, so the runs are apart by an empty line.

// <the user's data folder>/vindaro/OperationNotes.log ($XDG_DATA_HOME, ~/.local/share by default); the
// window and vindaro-copy share it.
QString defaultLogFilePath();

// The file's lines joined, each followed by CR LF (a lone LF ends a line too); empty when the file cannot
// be read. Of a file bigger than `maxBytes` only the lines that start in its last `maxBytes` are read, so
// a log grown over years is shown without holding up the window.
constexpr qint64 kLogViewBytes = 8 << 20;
QString readLogFile(const QString& path, qint64 maxBytes = kLogViewBytes);

// Appends `text` as it is, creating the folder and the file when missing. False when it could not be
// written whole.
bool appendToLogFile(const QString& path, const QString& text);

// Rewrites the file to hold exactly one empty line (CR LF).
bool emptyLogFile(const QString& path);

} // namespace vindaro::oplog
