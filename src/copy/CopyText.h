#pragma once

#include "platform/Host.h"

#include <QString>

// Small pieces of text and boxes shared by the single copy, its preparation and the batch.
namespace vindaro::copy::text {

inline const QString kCrLf = QStringLiteral("\r\n");
inline const QString kIndent = QString(22, QLatin1Char(' ')); // continuation lines of log entries

// The text after the last "/"; the folder part up to and including it.
inline QString fileNameOf(const QString& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}
inline QString folderOf(const QString& path)
{
    return path.left(path.lastIndexOf(QLatin1Char('/')) + 1);
}

inline platform::MessageBox box(const QString& text, const QString& title, platform::BoxIcon icon,
    platform::BoxButtons buttons = platform::BoxButtons::Ok)
{
    return platform::MessageBox{text, title, icon, buttons};
}
// A notice with the exclamation icon, titled "提醒！" unless told otherwise.
inline platform::MessageBox notice(const QString& text, const QString& title = QStringLiteral("提醒！"))
{
    return box(text, title, platform::BoxIcon::Exclamation);
}
// A Yes/No question with the exclamation icon, titled "提醒！".
inline platform::MessageBox question(const QString& text)
{
    return box(text, QStringLiteral("提醒！"), platform::BoxIcon::Exclamation, platform::BoxButtons::YesNo);
}

} // namespace vindaro::copy::text
