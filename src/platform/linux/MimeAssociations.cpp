#include "MimeAssociations.h"

#include <QCollator>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QLocale>
#include <QMimeDatabase>
#include <QSet>
#include <QStandardPaths>

#include <algorithm>

namespace vindaro::platform {

namespace {

// A key file (desktop entry, mimeapps.list) as groups of key -> value, localised keys ("Name[zh_CN]") under
// their full name; comments are kept out. Later duplicates of a key do not replace the first.
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
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        if (!it.key().contains(QLatin1Char('[')))
            lists.insert(it.key(), splitList(it.value()));
    }
    return lists;
}

// A string value with the key file's escapes undone. An unknown escape stays as it stands, so that an Exec
// line written with "\$" where "\\$" was due still reaches the Exec parser as "\$".
QString unescaped(const QString& value)
{
    QString text;
    text.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar c = value.at(i);
        if (c != QLatin1Char('\\') || i + 1 == value.size()) {
            text += c;
            continue;
        }
        const QChar next = value.at(++i);
        switch (next.unicode()) {
        case 's':
            text += QLatin1Char(' ');
            break;
        case 'n':
            text += QLatin1Char('\n');
            break;
        case 't':
            text += QLatin1Char('\t');
            break;
        case 'r':
            text += QLatin1Char('\r');
            break;
        case '\\':
            text += QLatin1Char('\\');
            break;
        default:
            text += c + QString(next);
            break;
        }
    }
    return text;
}

// The keys to try for a localised value, most specific first: lang_COUNTRY@MODIFIER, lang_COUNTRY,
// lang@MODIFIER, lang, then the plain key.
QStringList localisedKeys(const QString& key, const QString& language)
{
    QString lang = language.section(QLatin1Char('.'), 0, 0); // an encoding plays no part
    QString modifier;
    if (const qsizetype at = language.indexOf(QLatin1Char('@')); at >= 0) {
        modifier = language.mid(at + 1);
        lang = lang.section(QLatin1Char('@'), 0, 0);
    }
    const QString country = lang.section(QLatin1Char('_'), 1);
    lang = lang.section(QLatin1Char('_'), 0, 0);
    QStringList locales;
    if (!country.isEmpty() && !modifier.isEmpty())
        locales << lang + QLatin1Char('_') + country + QLatin1Char('@') + modifier;
    if (!country.isEmpty())
        locales << lang + QLatin1Char('_') + country;
    if (!modifier.isEmpty())
        locales << lang + QLatin1Char('@') + modifier;
    if (!lang.isEmpty())
        locales << lang;
    QStringList keys;
    for (const QString& locale : std::as_const(locales))
        keys << key + QLatin1Char('[') + locale + QLatin1Char(']');
    return keys << key;
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

MimeAssociations::MimeAssociations(Folders folders, QString language)
    : m_folders(std::move(folders))
    , m_language(language)
    , m_nameKeys(localisedKeys(QStringLiteral("Name"), language))
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
            const auto string
                = [&group](const char* key) { return unescaped(group.value(QLatin1String(key))); };
            Entry entry;
            const QString tryExec = string("TryExec");
            entry.usable = group.value(QStringLiteral("Type")) == QLatin1String("Application")
                && group.value(QStringLiteral("Hidden")) != QLatin1String("true")
                && !group.value(QStringLiteral("Exec")).isEmpty()
                && (tryExec.isEmpty()
                    || (QDir::isAbsolutePath(tryExec) ? QFileInfo(tryExec).isExecutable()
                                                      : !QStandardPaths::findExecutable(tryExec).isEmpty()));
            entry.mimeTypes = splitList(group.value(QStringLiteral("MimeType")));
            DesktopApplication& application = entry.application;
            application.id = id;
            for (const QString& key : std::as_const(m_nameKeys)) {
                application.name = unescaped(group.value(key));
                if (!application.name.isEmpty())
                    break;
            }
            application.icon = string("Icon");
            application.exec = string("Exec");
            application.workingFolder = string("Path");
            application.entryPath = path;
            application.terminal = group.value(QStringLiteral("Terminal")) == QLatin1String("true");
            application.noDisplay = group.value(QStringLiteral("NoDisplay")) == QLatin1String("true");
            m_entries.insert(id, entry);
            m_entryOrder << id;
        }
    }
}

// The usable applications for one type (its canonical name or an alias), in the order the default is
// chosen: the [Default Applications] of each list file, then its [Added Associations] less what more
// important files removed, then the desktop entries that list the type.
QStringList MimeAssociations::associatedWithExactType(const QStringList& names)
{
    QStringList ids;
    const auto offer = [this, &ids](const QString& id) {
        if (m_entries.value(id).usable && !ids.contains(id))
            ids << id;
    };
    for (const ListFile& list : std::as_const(m_lists)) {
        for (const QString& id : idsFor(list.defaults, names))
            offer(id);
    }
    // A removal in a file hides what less important files and the desktop entries add.
    QSet<QString> removed;
    for (const ListFile& list : std::as_const(m_lists)) {
        for (const QString& id : idsFor(list.added, names)) {
            if (!removed.contains(id))
                offer(id);
        }
        for (const QString& id : idsFor(list.removed, names))
            removed.insert(id);
    }
    for (const QString& id : std::as_const(m_entryOrder)) {
        if (removed.contains(id))
            continue;
        for (const QString& name : names) {
            if (m_entries[id].mimeTypes.contains(name)) {
                offer(id);
                break;
            }
        }
    }
    return ids;
}

QStringList MimeAssociations::associated(const QString& mimeType)
{
    loadOnce();
    const QMimeDatabase database;
    QStringList queue{mimeType};
    QSet<QString> seen;
    QStringList ids;
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
        for (const QString& id : associatedWithExactType(names)) {
            if (!ids.contains(id))
                ids << id;
        }
    }
    return ids;
}

QString MimeAssociations::defaultApplication(const QString& mimeType)
{
    return associated(mimeType).value(0);
}

QList<DesktopApplication> MimeAssociations::applicationsFor(const QString& mimeType)
{
    const QStringList first = associated(mimeType);
    QList<DesktopApplication> applications;
    for (const QString& id : first)
        applications << m_entries[id].application;
    QList<DesktopApplication> rest;
    for (const QString& id : std::as_const(m_entryOrder)) {
        const Entry& entry = m_entries[id];
        if (entry.usable && !entry.application.noDisplay && !first.contains(id))
            rest << entry.application;
    }
    // Names as a reader of the language would order them; the id settles a tie, so the order is stable.
    QCollator collator{QLocale(m_language)};
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(
        rest.begin(), rest.end(), [&collator](const DesktopApplication& a, const DesktopApplication& b) {
            const int order = collator.compare(a.name, b.name);
            return order != 0 ? order < 0 : a.id < b.id;
        });
    return applications + rest;
}

QList<DesktopApplication> MimeAssociations::applicationsForFile(const QString& path)
{
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchExtension);
    return applicationsFor(type.name());
}

QString MimeAssociations::defaultApplicationForFile(const QString& path)
{
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchExtension);
    return defaultApplication(type.name());
}

} // namespace vindaro::platform
