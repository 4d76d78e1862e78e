#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

namespace vindaro::platform {

// An installed, usable application as its desktop entry describes it. String values have their escapes
// (\s, \n, \t, \r, \\) undone; the Exec line's own quoting is left for DesktopExec.
struct DesktopApplication
{
    QString id; // the desktop file id: "vlc.desktop", "kde4-foo.desktop"
    QString name; // in the language asked for when the entry has it, else the plain Name
    QString icon; // a theme icon name or an absolute path; "" for none
    QString exec;
    QString workingFolder; // Path=; "" for none
    QString entryPath; // the desktop entry file
    bool terminal = false;
    bool noDisplay = false;
};

// The desktop's default application for a file type, found as the freedesktop MIME-applications rules
// find it: the mimeapps.list files (the desktop's own "<desktop>-mimeapps.list" before the plain one) in
// the config home, the config folders, the data home's and the data folders' "applications" folders, most
// important first; their [Default Applications], then [Added Associations] less what more important files
// list under [Removed Associations], then the MimeType= lists of the installed desktop entries; and, when
// a type has none, the same for its broader (parent) types.
//
// An application counts only when its desktop entry is installed and usable: Type=Application, not
// Hidden, with an Exec line, and its TryExec program found.
//
// It also lists the usable applications for an "open with" chooser, those of the file's type first.
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

    // `language` picks the names: "zh_CN" asks for Name[zh_CN], then Name[zh], then Name (a modifier, as
    // in "sr_RS@latin", is tried first when given). The program speaks Chinese, hence the default.
    explicit MimeAssociations(Folders folders, QString language = QStringLiteral("zh_CN"));

    // The desktop file id ("vlc.desktop") of the default application for `mimeType`; "" when none.
    QString defaultApplication(const QString& mimeType);
    // The same for a file, its type taken from its name only: reading the content of a file on a damaged
    // disc could hold the window for as long as the drive retries.
    QString defaultApplicationForFile(const QString& path);

    // The usable applications to offer for a file of `mimeType`: those associated with the type, then
    // with its parent types, in the order the default is chosen (so the default comes first); then every
    // other application by name. An associated application is offered even when its entry asks not to be
    // displayed (it exists to open such files); the others only when displayed.
    QList<DesktopApplication> applicationsFor(const QString& mimeType);
    // The same for a file, its type taken from its name only.
    QList<DesktopApplication> applicationsForFile(const QString& path);

private:
    struct Entry
    {
        bool usable = false;
        QStringList mimeTypes;
        DesktopApplication application;
    };
    struct ListFile
    {
        QHash<QString, QStringList> defaults; // type -> desktop ids
        QHash<QString, QStringList> added;
        QHash<QString, QStringList> removed;
    };

    QStringList associatedWithExactType(const QStringList& names);
    QStringList associated(const QString& mimeType);
    void loadOnce();

    Folders m_folders;
    QString m_language;
    QStringList m_nameKeys; // "Name[zh_CN]", "Name[zh]", "Name"
    bool m_loaded = false;
    QList<ListFile> m_lists; // most important first
    QHash<QString, Entry> m_entries; // by desktop file id; the most important folder's entry wins
    QStringList m_entryOrder; // ids in the order of their folders' importance
};

} // namespace vindaro::platform
