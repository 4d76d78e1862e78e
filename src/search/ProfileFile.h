#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace vindaro::search {

// A settings file in the INI (profile) format, read and written one value at a time the way the
// classic profile functions do:
//   "[name]" opens a section; "key=value" lines belong to the section above them; lines starting with
//   ";" are comments; blanks around names and values are ignored, and a value wrapped in a pair of " or '
//   is read without them;
//   section and key names compare without regard to case; of repeated sections or keys the first counts;
//   a missing file or section reads as no keys.
// Values are text in UTF-8, the encoding of file names and texts on Linux. Writing changes only the
// line of the key (or adds it at the end of its section, or adds the section at the end of the file) and
// leaves every other byte as it was, foreign encodings and line ends included; new lines take the
// file's own line end ("\n" for a new file). The file is replaced atomically (QSaveFile), its folder
// made when missing.
class ProfileFile
{
public:
    // A value read is cut to this many characters (the classic 255-character buffer, NUL included).
    static constexpr qsizetype kValueChars = 254;

    // The value of `key` in `section`, or `defaultValue` when there is none; either cut to kValueChars.
    static QString readString(
        const QString& path, const QString& section, const QString& key, const QString& defaultValue = {});
    // Sets `key` in `section` to `value`. False when the file could not be read or written, or the value
    // holds a line break (it could not be read back).
    static bool writeString(
        const QString& path, const QString& section, const QString& key, const QString& value);

    // The same on the file's bytes.
    static std::optional<QString> find(const QByteArray& content, const QString& section, const QString& key);
    static QByteArray withValue(
        const QByteArray& content, const QString& section, const QString& key, const QString& value);
};

} // namespace vindaro::search
