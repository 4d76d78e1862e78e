#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace vindaro::platform {

// The desktop's default application for a file type, found as the freedesktop MIME-applications rules
// find it: the mimeapps.list files (the desktop's own "<desktop>-mimeapps.list" before the plain one) in
// the config home, the config folders, the data home's and the data folders' "applications" folders, most
// important first; their [Default Applications], then [Added Associations] less what more important files
// list under [Removed Associations], then the MimeType= lists of the installed desktop entries; and, when
// a type has none, the same for its broader (parent) types.
//
// An application counts only when its desktop entry is installed and usable: Type=Application, not
// Hidden, with an Exec line, and its TryExec program found.
class MimeAssociations
{
public:
    struct Folders
    {
        QStringList config; // most important first: the config home, then the config folders
        QStringList data; // most important first: the data home, then the data folders
        QStringList desktops; // XDG_CURRENT_DESKTOP, lower case, in its order
    };

    // The folders the environment names (XDG_* with their documented defaults).
    static Folders foldersFromEnvironment();

    explicit MimeAssociations(Folders folders);

    // The desktop file id ("vlc.desktop") of the default application for `mimeType`; "" when none.
    QString defaultApplication(const QString& mimeType);
    // The same for a file, its type taken from its name only: reading the content of a file on a damaged
    // disc could hold the window for as long as the drive retries.
    QString defaultApplicationForFile(const QString& path);

private:
    struct Entry
    {
        bool usable = false;
        QStringList mimeTypes;
    };
    struct ListFile
    {
        QHash<QString, QStringList> defaults; // type -> desktop ids
        QHash<QString, QStringList> added;
        QHash<QString, QStringList> removed;
    };

    QString defaultForExactType(const QStringList& names);
    void loadOnce();

    Folders m_folders;
    bool m_loaded = false;
    QList<ListFile> m_lists; // most important first
    QHash<QString, Entry> m_entries; // by desktop file id; the most important folder's entry wins
    QStringList m_entryOrder; // ids in the order of their folders' importance
};

} // namespace vindaro::platform
