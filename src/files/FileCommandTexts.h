#pragma once

#include "platform/Shell.h"

#include <QString>

// The notices of file commands that failed, in the program's own words: what failed, on which path, and the
// system's reason. Lines are joined by CR LF; the box carries the title kReminderTitle and the exclamation
// icon, as the program's other notices.
namespace vindaro::files {

QString copyFailedText(const QString& source, const platform::FileOpResult& result);
QString moveFailedText(const QString& source, const platform::FileOpResult& result);
// Trash or permanent delete, as the result's step says.
QString deleteFailedText(const QString& path, const platform::FileOpResult& result);
// The reason of a failure: the result's own words, else the system's text for its error number.
QString failureReason(const platform::FileOpResult& result);

} // namespace vindaro::files
