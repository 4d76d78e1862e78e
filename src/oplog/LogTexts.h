#pragma once

#include <QList>
#include <QString>

namespace vindaro::oplog {

// The description of one change for the log: the table of change codes with their first and second paths
// (empty when the change has none). A code not in the table, or one carrying several event bits, gets the
// empty description.
QString describeChange(quint32 code, const QString& path1, const QString& path2);

// A note of the log's own, said once when the system's limit on watched folders is reached at `folder`.
QString watchLimitNote(const QString& folder);

// The window's texts.
extern const QString kLogWindowTitle; // "文件/文件夹操作日志记录"
extern const QString kLogWindowDescription; // the description label above the text
extern const QString kNoLogRecords; // "无日志记录！", shown by View for an empty file
extern const QString kMonitorUnavailable; // "系统不支持操作监视程序."

// The four drawn buttons of the log window, left to right.
enum class LogButton
{
    View,
    ClearFile,
    ClearRunningText,
    Exit
};
struct LogButtonText
{
    LogButton button;
    QString control; // the object name
    QString caption;
    QString tip;
};
QList<LogButtonText> logButtonTexts();

} // namespace vindaro::oplog
