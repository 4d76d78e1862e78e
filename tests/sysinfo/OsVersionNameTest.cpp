#include "sysinfo/OsVersionName.h"

#include <gtest/gtest.h>

using namespace vindaro::sysinfo;
using namespace Qt::StringLiterals;

namespace {

TEST(OsVersionName, NamesTheVersionCode)
{
    const struct
    {
        OsVersion version;
        const char* name;
    } rows[] = {{{1, 4, 0}, "Microsoft Windows 95"}, {{1, 4, 10}, "Microsoft Windows 98"},
        {{1, 4, 90}, "Microsoft Windows Me"}, {{2, 3, 51}, "WindowsNT 3.51"}, {{2, 4, 0}, "WindowsNT 4.0"},
        {{2, 5, 0}, "Microsoft Windows 2000"}, {{2, 5, 1}, "Microsoft Windows XP"},
        // Unknown codes: the family prefix, then the code without padding.
        {{2, 6, 0}, "WindowsNT 2.6.0"}, {{0, 3, 10}, "Windows3X 0.3.10"}, {{1, 4, 1}, "Windows9X 1.4.1"},
        {{3, 10, 0}, "Windows9X 3.10.0"},
        // "1.4.1" + "0" must not be read as 1.4.10, nor 2.5.10 as XP.
        {{1, 41, 0}, "Windows9X 1.41.0"}, {{2, 5, 10}, "WindowsNT 2.5.10"}};
    for (const auto& row : rows)
        EXPECT_EQ(GetOSVersionName(row.version).toStdString(), row.name);
    // A refused version gives the error text, which is never XP.
    EXPECT_EQ(GetOSVersionName(std::optional<OsVersion>{}), u"Get Operating System Verion Error!"_s);
    EXPECT_EQ(GetOSVersionName(std::optional<OsVersion>{OsVersion{2, 5, 1}}), kWindowsXpName);
}

TEST(OsVersionName, ReadsThePrettyNameFromOsReleaseOrFallsBack)
{
    const std::pair<QString, QString> rows[] = {
        {u"NAME=\"Debian GNU/Linux\"\nVERSION=\"12 (bookworm)\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"_s,
            u"Debian GNU/Linux 12 (bookworm)"_s},
        // Single quotes, escapes, comments and blanks around the line.
        {u"# comment\n  PRETTY_NAME='Say \\\"hi\\\" OS'  \n"_s, u"Say \"hi\" OS"_s},
        {u"PRETTY_NAME=Alpine"_s, u"Alpine"_s}, // unquoted
        {u"NAME=Fedora\nVERSION=\"39 (Workstation)\"\n"_s, u"Fedora 39 (Workstation)"_s},
        {u"NAME=Arch\n"_s, u"Arch"_s}, {QString(), QString()},
        {u"garbage\n=novalue\nPRETTY_NAME=\"\"\n"_s, QString()}};
    for (const auto& [text, name] : rows)
        EXPECT_EQ(osReleasePrettyName(text), name) << text.toStdString();
}

TEST(OsVersionName, RunningSystemHasAName)
{
    const QString name = GetOSVersionName();
    EXPECT_FALSE(name.isEmpty());
    EXPECT_NE(name, kWindowsXpName);
}

} // namespace
