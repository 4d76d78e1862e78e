#pragma once

#include "FailurePolicy.h"
#include "platform/Host.h"

#include <QString>
#include <QtGlobal>

// Every text the copy engine shows or logs: the boxes, questions and log entries of the single copy, its
// preparation and the batch, in one place. Paths go in as they are; sizes are formatted here.
namespace vindaro::copy::msg {

// The log cause ("错误原因：...") and the box of a failure that ends a single copy.
struct FailureTexts
{
    QString cause;
    QString box;
};
// DiskFull, BadRecord, SharingConflict, UnreadableStart and NoMedium have texts of their own; any other
// failure gets the "unknown error" ones.
FailureTexts singleFailure(Failure failure, bool merge, const QString& source);
// The log cause of a failure in a batch, which names no merge and has words of its own for some.
QString batchFailureCause(Failure failure);
// A failure the system describes: "[code].description"; shown, not logged.
QString describedFailure(int code, const QString& description);

QString errorBoxTitle(bool merge); // "复制文件时出错！" or "合并文件时出错！"
// "复制文件“source”时遇到错误。" (a merge names both files) and the cause on the next line.
QString errorEntry(const QString& source, const QString& destination, bool merge, const QString& cause);

QString finishedEntry(const QString& source, const QString& destination, qint64 sourceLength, bool merge,
    const QString& estimated, const QString& throughput);
platform::MessageBox finishedNotice(const QString& source, const QString& destination, bool merge);
QString skippedEntry(qint64 position); // "文件跳过：1,001字节"
platform::MessageBox retryQuestion(bool merge); // after EINVAL: read the block again?
QString cancelledEntry(const QString& source, bool merge);
platform::MessageBox deletePartialQuestion(const QString& destination);

// Copy preparation.
platform::MessageBox emptyPathsNotice();
platform::MessageBox invalidDestinationNotice();
platform::MessageBox sameFileNotice();
QString lowSpaceEntry(const QString& source, const QString& driveName, double freeBytes, qint64 sourceLength);
platform::MessageBox lowSpaceQuestion(const QString& driveName, double freeBytes, qint64 sourceLength);
// The same when a paused copy goes on: the destination can be changed before continuing.
platform::MessageBox lowSpaceOnResumeQuestion(
    const QString& driveName, double freeBytes, qint64 sourceLength);
QString continuedEntry(const QString& source, const QString& destination); // "续拷文件：..."
platform::MessageBox overwriteOrAppendQuestion(const QString& destination);

// The batch.
platform::MessageBox tooManyFilesNotice();
platform::MessageBox batchLowSpaceQuestion(const QString& driveName, double freeBytes, qint64 totalBytes);
// One sync of a file system written to failed: the folder and the system's words.
platform::MessageBox batchSyncFailure(const QString& folder, int code, const QString& description);
QString batchTotal(qint64 totalBytes); // "[ 总共：" and the total as whole MB, whole KB or bytes
QString batchFromText(const QString& source); // the file labels: "从“source”", "到“destination”"
QString batchToText(const QString& destination);
QString batchCountText(qint64 number, qint64 count); // "3/12 ]"

} // namespace vindaro::copy::msg
