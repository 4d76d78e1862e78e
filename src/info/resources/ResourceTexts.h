#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace vindaro::info::resources {

// The tree's text of an integer resource type ("Bitmap resource"; "User-defined custom resource" for
// numbers without a text of their own).
QString resourceTypeText(int type);

// The listings shown for text resources. Each answers nothing when the bytes cannot be read as that kind,
// so the window can say "Error: Can not load resourse.". Lines end with CR LF.
std::optional<QString> menuListing(const QByteArray& menuResource);
// `tableNumber` is the N of the resource name "#N": the table holds strings (N - 1) * 16 to N * 16 - 1.
std::optional<QString> stringTableListing(const QByteArray& stringTable, int tableNumber);
std::optional<QString> acceleratorListing(const QByteArray& acceleratorTable);
std::optional<QString> messageTableListing(const QByteArray& messageTable);
QString acceleratorKeyName(int virtualKey);

// Lines of 79 characters, 16 bytes each; the empty text for a resource of more than 13,264 bytes.
QString hexDump(const QByteArray& bytes);

// What is appended to the preview text box for `text`, measured in the system code page's bytes: the text
// itself (raising the box's limit to 1,024,000 from 65,535 bytes on), or from 1,024,001 bytes on the three
// "too long" lines.
struct TextAppend
{
    QString text;
    int limit = 0; // 0: leave the box's limit as it is
};
TextAppend textToAppend(const QString& text);

} // namespace vindaro::info::resources
