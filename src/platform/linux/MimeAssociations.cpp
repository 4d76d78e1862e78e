#include "MimeAssociations.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMimeDatabase>
#include <QSet>
#include <QStandardPaths>

namespace vindaro::platform {

namespace {

// A key file (desktop entry, mimeapps.list) as groups of key -> value; localised keys ("Name[zh_CN]") and
// comments are kept out. Later duplicates of a key do not replace the first.
using KeyFile = QHash<QString, QHash<QString, QString>>;

KeyFile readKeyFile(const QString& path)
{
    KeyFile groups;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return groups;
    QString group;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            group = line.mid(1, line.size() - 2);
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals <= 0 || group.isEmpty())
            continue;
        const QString key = line.left(equals).trimmed();
        if (key.contains(QLatin1Char('[')))
            continue;
        QHash<QString, QString>& values = groups[group];
        if (!values.contains(key))
            values.insert(key, line.mid(equals + 1).trimmed());
    }
    return groups;
}

QStringList splitList(const QString& value)
{
    QStringList items;
    for (const QString& item : value.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QString trimmed = item.trimmed();
        if (!trimmed.isEmpty())
            items << trimmed;
    }
    return items;
}

QHash<QString, QStringList> listGroup(const KeyFile& file, const QString& group)
{
    QHash<QString, QStringList> lists;
    const auto values = file.value(group);
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        lists.insert(it.key(), splitList(it.value()));
    return lists;
}

QStringList pathList(const QByteArray& variable, const QStringList& fallback)
{
    const QString value = qEnvironmentVariable(variable.constData());
    QStringList folders;
    for (const QString& folder : value.split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
        if (QDir::isAbsolutePath(folder))
            folders << folder;
    }
    return folders.isEmpty() ? fallback : folders;
}

QString homeFolder(const QByteArray& variable, const QString& underHome)
{
    const QString value = qEnvironmentVariable(variable.constData());
    return QDir::isAbsolutePath(value) ? value : QDir::homePath() + QLatin1Char('/') + underHome;
}

// Ids listed for any name of the type (its canonical name or an alias).
QStringList idsFor(const QHash<QString, QStringList>& lists, const QStringList& names)
{
    QStringList ids;
    for (const QString& name : names)
        ids += lists.value(name);
    return ids;
}

} // namespace

MimeAssociations::Folders MimeAssociations::foldersFromEnvironment()
{
    Folders folders;
    folders.config << homeFolder("XDG_CONFIG_HOME", QStringLiteral(".config"))
                   << pathList("XDG_CONFIG_DIRS", {QStringLiteral("/etc/xdg")});
    folders.data << homeFolder("XDG_DATA_HOME", QStringLiteral(".local/share"))
                 << pathList(
                        "XDG_DATA_DIRS", {QStringLiteral("/usr/local/share"), QStringLiteral("/usr/share")});
    for (const QString& desktop :
        qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(QLatin1Char(':'), Qt::SkipEmptyParts))
        folders.desktops << desktop.toLower();
    return folders;
}

MimeAssociations::MimeAssociations(Folders folders)
    : m_folders(std::move(folders))
{
}

void MimeAssociations::loadOnce()
{
    if (m_loaded)
        return;
    m_loaded = true;

    QStringList listFolders = m_folders.config;
    for (const QString& data : std::as_const(m_folders.data))
        listFolders << data + QStringLiteral("/applications");
    for (const QString& folder : std::as_const(listFolders)) {
        QStringList names;
        for (const QString& desktop : std::as_const(m_folders.desktops))
            names << desktop + QStringLiteral("-mimeapps.list");
        names << QStringLiteral("mimeapps.list");
        for (const QString& name : std::as_const(names)) {
            const QString path = folder + QLatin1Char('/') + name;
            if (!QFileInfo::exists(path))
                continue;
            const KeyFile file = readKeyFile(path);
            m_lists.append({listGroup(file, QStringLiteral("Default Applications")),
                listGroup(file, QStringLiteral("Added Associations")),
                listGroup(file, QStringLiteral("Removed Associations"))});
        }
    }

    for (const QString& data : std::as_const(m_folders.data)) {
        const QString applications = data + QStringLiteral("/applications");
        QDirIterator it(
            applications, {QStringLiteral("*.desktop")}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            // The id of "applications/kde4/foo.desktop" is "kde4-foo.desktop".
            QString id = path.mid(applications.size() + 1);
            id.replace(QLatin1Char('/'), QLatin1Char('-'));
            if (m_entries.contains(id))
                continue; // a more important folder has it
            const QHash<QString, QString> group = readKeyFile(path).value(QStringLiteral("Desktop Entry"));
            Entry entry;
            const QString tryExec = group.value(QStringLiteral("TryExec"));
            entry.usable = group.value(QStringLiteral("Type")) == QLatin1String("Application")
                && group.value(QStringLiteral("Hidden")) != QLatin1String("true")
                && !group.value(QStringLiteral("Exec")).isEmpty()
                && (tryExec.isEmpty()
                    || (QDir::isAbsolutePath(tryExec) ? QFileInfo(tryExec).isExecutable()
                                                      : !QStandardPaths::findExecutable(tryExec).isEmpty()));
            entry.mimeTypes = splitList(group.value(QStringLiteral("MimeType")));
            m_entries.insert(id, entry);
            m_entryOrder << id;
        }
    }
}

QString MimeAssociations::defaultForExactType(const QStringList& names)
{
    const auto usable = [this](const QString& id) { return m_entries.value(id).usable; };
    for (const ListFile& list : std::as_const(m_lists)) {
        for (const QString& id : idsFor(list.defaults, names)) {
            if (usable(id))
                return id;
        }
    }
    // A removal in a file hides what less important files and the desktop entries add.
    QSet<QString> removed;
    for (const ListFile& list : std::as_const(m_lists)) {
        for (const QString& id : idsFor(list.added, names)) {
            if (!removed.contains(id) && usable(id))
                return id;
        }
        for (const QString& id : idsFor(list.removed, names))
            removed.insert(id);
    }
    for (const QString& id : std::as_const(m_entryOrder)) {
        const Entry& entry = m_entries[id];
        if (!entry.usable || removed.contains(id))
            continue;
        for (const QString& name : names) {
            if (entry.mimeTypes.contains(name))
                return id;
        }
    }
    return {};
}

QString MimeAssociations::defaultApplication(const QString& mimeType)
{
    loadOnce();
    const QMimeDatabase database;
    QStringList queue{mimeType};
    QSet<QString> seen;
    // The type, then its parents breadth first: an application for text/plain opens a C source.
    while (!queue.isEmpty()) {
        const QString name = queue.takeFirst();
        if (seen.contains(name))
            continue;
        seen.insert(name);
        const QMimeType type = database.mimeTypeForName(name);
        QStringList names{name};
        if (type.isValid()) {
            names = QStringList{type.name()} + type.aliases();
            queue += type.parentMimeTypes();
        }
        const QString id = defaultForExactType(names);
        if (!id.isEmpty())
            return id;
    }
    return {};
}

QString MimeAssociations::defaultApplicationForFile(const QString& path)
{
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchExtension);
    return defaultApplication(type.name());
}

} // namespace vindaro::platform
