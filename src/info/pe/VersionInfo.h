#pragma once

#include <QByteArray>
#include <QString>

namespace vindaro::info::pe {

class PeImage;

// The eight version keys in the order they are shown.
inline constexpr const char* kVersionKeys[] = {"OriginalFilename", "InternalName", "FileVersion",
    "FileDescription", "ProductName", "ProductVersion", "CompanyName", "LegalCopyright"};

// The language tag of the first translation of a version resource: language and code page as 8 upper-case
// hexadecimal digits ("080404B0"); empty when the resource has no translation.
QString versionLanguageTag(const QByteArray& versionResource);

// The version text of a version resource: for each key with a non-empty value in the first translation's
// string table, the key, ":", CR LF, a tab, the value, CR LF; trimmed. Empty when nothing could be read.
QString versionText(const QByteArray& versionResource);

// The version text of a module: read from its own first version resource (type 16).
QString moduleVersionText(const PeImage& image);

} // namespace vindaro::info::pe
