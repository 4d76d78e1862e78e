#include "OsVersionName.h"

#include <QFile>
#include <QStringList>

#include <sys/utsname.h>

namespace vindaro::sysinfo {

namespace {

struct NamedVersion
{
    const char* code;
    const char* name;
};

// Compared in this order; the first equal code wins.
constexpr NamedVersion kNamedVersions[] = {
    {"1.4.0", "Microsoft Windows 95"},
    {"1.4.10", "Microsoft Windows 98"},
    {"1.4.90", "Microsoft Windows Me"},
    {"2.3.51", "WindowsNT 3.51"},
    {"2.4.0", "WindowsNT 4.0"},
    {"2.5.0", "Microsoft Windows 2000"},
    {"2.5.1", "Microsoft Windows XP"},
};

QString familyPrefix(int platformId)
{
    switch (platformId) {
    case 0:
        return QStringLiteral("Windows3X ");
    case 2:
        return QStringLiteral("WindowsNT ");
    default:
        return QStringLiteral("Windows9X ");
    }
}

// One os-release value: the text after "=", with shell-style quotes and backslash escapes undone.
QString unquote(QStringView value)
{
    value = value.trimmed();
    if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'')
        && value.back() == value.front())
        value = value.sliced(1, value.size() - 2);
    QString out;
    out.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] == u'\\' && i + 1 < value.size())
            ++i;
        out.append(value[i]);
    }
    return out;
}

QString readSmallFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.read(64 * 1024)); // os-release is a few hundred bytes
}

} // namespace

QString GetOSVersionName(const OsVersion& version)
{
    const QString code = QStringLiteral("%1.%2.%3")
                             .arg(version.platformId)
                             .arg(version.majorVersion)
                             .arg(version.minorVersion);
    for (const NamedVersion& row : kNamedVersions) {
        if (code == QLatin1String(row.code))
            return QString::fromLatin1(row.name);
    }
    return familyPrefix(version.platformId) + code;
}

QString GetOSVersionName(const std::optional<OsVersion>& version)
{
    return version ? GetOSVersionName(*version) : kVersionErrorName;
}

QHash<QString, QString> osReleaseValues(const QString& osReleaseText)
{
    QHash<QString, QString> values;
    const QStringList lines = osReleaseText.split(u'\n');
    for (const QString& rawLine : lines) {
        const QStringView line = QStringView(rawLine).trimmed();
        if (line.isEmpty() || line.front() == u'#')
            continue;
        const qsizetype eq = line.indexOf(u'=');
        if (eq <= 0)
            continue;
        values.insert(line.first(eq).toString(), unquote(line.sliced(eq + 1)));
    }
    return values;
}

QString osReleasePrettyName(const QString& osReleaseText)
{
    const QHash<QString, QString> values = osReleaseValues(osReleaseText);
    const QString pretty = values.value(QStringLiteral("PRETTY_NAME"));
    if (!pretty.isEmpty())
        return pretty;
    const QString name = values.value(QStringLiteral("NAME"));
    if (name.isEmpty())
        return {};
    const QString versionText = values.value(QStringLiteral("VERSION"));
    return versionText.isEmpty() ? name : name + u' ' + versionText;
}

QString readOsRelease()
{
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        const QString text = readSmallFile(QString::fromLatin1(path));
        if (!text.isEmpty())
            return text;
    }
    return {};
}

QString GetOSVersionName()
{
    const QString name = osReleasePrettyName(readOsRelease());
    if (!name.isEmpty() && name != kWindowsXpName)
        return name;
    struct utsname uts;
    if (::uname(&uts) == 0)
        return QString::fromUtf8(uts.sysname) + u' ' + QString::fromUtf8(uts.release);
    return kVersionErrorName;
}

} // namespace vindaro::sysinfo
