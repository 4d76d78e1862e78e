#pragma once

#include <QHash>
#include <QString>

#include <optional>

// The name of the operating system the program runs on. The file commands and the property window compare
// it with kWindowsXpName to choose between the program's own property window and the desktop's sheet.
namespace vindaro::sysinfo {

// Version numbers as a platform reports them: platform identifier (0 Win32s, 1 the 9x family, 2 the NT
// family), major and minor version.
struct OsVersion
{
    int platformId = 0;
    int majorVersion = 0;
    int minorVersion = 0;
};

inline const QString kWindowsXpName = QStringLiteral("Microsoft Windows XP");
// The answer when the version cannot be learnt (the spelling is the program's, kept as users know it).
inline const QString kVersionErrorName = QStringLiteral("Get Operating System Verion Error!");

// The name for a version code "platform.major.minor": a known code gives its name ("Microsoft Windows 98"),
// any other the family prefix and the code ("WindowsNT 2.6.0", "Windows3X 0.3.10", "Windows9X 1.5.0").
QString GetOSVersionName(const OsVersion& version);
// As above; no version (the platform refused to report one) gives kVersionErrorName.
QString GetOSVersionName(const std::optional<OsVersion>& version);

// Every KEY=value line of an os-release file's text, values unquoted and unescaped; comments and lines
// without "=" are skipped, and a later line wins over an earlier one with the same key.
QHash<QString, QString> osReleaseValues(const QString& osReleaseText);

// The text of /etc/os-release, else of /usr/lib/os-release; "" when neither can be read.
QString readOsRelease();

// The PRETTY_NAME of an os-release file's text ("Debian GNU/Linux 12 (bookworm)"), unquoted and
// unescaped; NAME plus VERSION when PRETTY_NAME is missing; "" when neither is there.
QString osReleasePrettyName(const QString& osReleaseText);

// The running system's name: on Linux the os-release pretty name (/etc/os-release, else
// /usr/lib/os-release), else the kernel's name and release ("Linux 6.1.0-13-amd64"); kVersionErrorName
// when none of these can be read. It never equals kWindowsXpName.
QString GetOSVersionName();

} // namespace vindaro::sysinfo
