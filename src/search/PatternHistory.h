#pragma once

#include <QString>
#include <QStringList>

namespace vindaro::search {

// The patterns the user searched for, kept between runs in "Vindarosearch.ini": section "SECTION",
// keys "0TYPE" to "9TYPE", index 0 the first entry of the pattern list.
namespace PatternHistory {

inline constexpr int kStoredPatterns = 10;
inline const QString kFileName = QStringLiteral("Vindarosearch.ini");
inline const QString kSection = QStringLiteral("SECTION");
// "0TYPE" ... "9TYPE".
QString keyFor(int index);

// The folder the file lives in, with a closing "/": "vindaro" in the user's configuration folder
// (~/.config/vindaro/ or $XDG_CONFIG_HOME/vindaro/), beside the other settings of the program. The
// generic location is used rather than the per-application one, which would follow the application name
// of whichever program asks. Empty when the system names no configuration folder.
QString settingsFolder();
// settingsFolder() + kFileName; empty when there is no folder (the history is then neither read nor
// written).
QString settingsFilePath();

// The stored patterns in key order; the first empty (or missing) key ends the list, so keys after a gap
// are not read. No file, or no section, gives an empty list.
QStringList load(const QString& path);
// Every text once, at the position of its first occurrence; texts are compared exactly ("*.dat" and
// "*.DAT" are two).
QStringList withoutDuplicates(const QStringList& patterns);
// Writes the first kStoredPatterns of withoutDuplicates(patterns) under keys 0TYPE... in index order;
// keys beyond them keep what an earlier run wrote. An empty list writes nothing. False when a write
// failed (nobody is told: the history of this run is lost).
bool save(const QString& path, const QStringList& patterns);

} // namespace PatternHistory

} // namespace vindaro::search
