#pragma once

#include "DamageReport.h"
#include "RescueMap.h"
#include "platform/Host.h"

#include <QString>

// Every text of the rescue map, its mapfiles and the damage report, in one place.
namespace vindaro::copy::msg {

// Why a mapfile was not taken, naming the file and ending with the assurance that nothing changed.
QString mapfileRefused(const QString& path, const MapfileResult& result);
platform::MessageBox mapfileRefusedNotice(const QString& path, const MapfileResult& result);
QString mapfileWriteFailed(const QString& path, const QString& reason);

QString mapStoreNoDestination();
QString mapStoreFolderFailed(const QString& folder);

// "1,048,577至1,060,864字节": a range as the 1-based numbers of its first and last byte.
QString byteSpan(qint64 offset, qint64 length);
// "00:12:03–00:12:05", "00:12:03–结尾"; empty when the hole has no time.
QString playingTimeSpan(const DamageHole& hole);

// The damage report as a log entry (CR LF, continuation lines indented as every log entry) and as the
// plain text vindaro-copy prints (LF, two-blank indents). At most kListedHoles holes a file are listed;
// a line says how many more there are.
inline constexpr int kListedHoles = 50;
QString damageReportEntry(const DamageReport& report);
QString damageReportText(const DamageReport& report);

// The refine pass: reading what a copy skipped.
platform::MessageBox noRescueMapNotice(const QString& destination);
QString refineStartedEntry(const QString& source, const QString& destination);
QString refineCancelledEntry(const QString& source);
QString refineFinishedEntry(const QString& source, const QString& destination, qint64 untriedBytes,
    qint64 badBytes, qint64 failedReads, bool outOfTime);
platform::MessageBox refineFinishedNotice(const QString& destination, qint64 missingBytes);
// After a copy or batch with skipped bytes: read them now?
platform::MessageBox refineQuestion(qint64 untriedBytes);
// The refine figures under the progress bar: "未读：…字节  坏区：…字节  读取失败：…次".
QString refineFigures(qint64 untriedBytes, qint64 badBytes, qint64 failedReads);

} // namespace vindaro::copy::msg
