#include "sysinfo/OsVersionName.h"

#include <gtest/gtest.h>

#include <ostream>

using namespace vindaro::sysinfo;

namespace {

struct NameCase
{
    OsVersion version;
    const char* name;
};

void PrintTo(const NameCase& c, std::ostream* os)
{
    *os << c.version.platformId << '.' << c.version.majorVersion << '.' << c.version.minorVersion;
}

class OsVersionNameTable : public ::testing::TestWithParam<NameCase>
{
};

TEST_P(OsVersionNameTable, NamesTheVersionCode)
{
    EXPECT_EQ(GetOSVersionName(GetParam().version), QString::fromUtf8(GetParam().name));
}

INSTANTIATE_TEST_SUITE_P(KnownAndUnknownCodes, OsVersionNameTable,
    ::testing::Values(NameCase{{1, 4, 0}, "Microsoft Windows 95"},
        NameCase{{1, 4, 10}, "Microsoft Windows 98"}, NameCase{{1, 4, 90}, "Microsoft Windows Me"},
        NameCase{{2, 3, 51}, "WindowsNT 3.51"}, NameCase{{2, 4, 0}, "WindowsNT 4.0"},
        NameCase{{2, 5, 0}, "Microsoft Windows 2000"}, NameCase{{2, 5, 1}, "Microsoft Windows XP"},
        // Unknown codes: the family prefix, then the code without padding.
        NameCase{{2, 6, 0}, "WindowsNT 2.6.0"}, NameCase{{0, 3, 10}, "Windows3X 0.3.10"},
        NameCase{{1, 4, 1}, "Windows9X 1.4.1"}, NameCase{{3, 10, 0}, "Windows9X 3.10.0"},
        // "1.4.1" + "0" must not be read as 1.4.10, nor 2.5.10 as XP.
        NameCase{{1, 41, 0}, "Windows9X 1.41.0"}, NameCase{{2, 5, 10}, "WindowsNT 2.5.10"}));

TEST(OsVersionName, RefusedVersionGivesTheErrorTextThatIsNeverXp)
{
    EXPECT_EQ(
        GetOSVersionName(std::optional<OsVersion>{}), QStringLiteral("Get Operating System Verion Error!"));
    EXPECT_EQ(GetOSVersionName(std::optional<OsVersion>{OsVersion{2, 5, 1}}), kWindowsXpName);
}

TEST(OsVersionName, ReadsPrettyNameFromOsRelease)
{
    const QString debian = QStringLiteral("NAME=\"Debian GNU/Linux\"\nVERSION=\"12 (bookworm)\"\n"
                                          "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nID=debian\n");
    EXPECT_EQ(osReleasePrettyName(debian), QStringLiteral("Debian GNU/Linux 12 (bookworm)"));
    // Single quotes, escapes, comments and blanks around the line.
    EXPECT_EQ(osReleasePrettyName(QStringLiteral("# comment\n  PRETTY_NAME='Say \\\"hi\\\" OS'  \n")),
        QStringLiteral("Say \"hi\" OS"));
    // Unquoted value.
    EXPECT_EQ(osReleasePrettyName(QStringLiteral("PRETTY_NAME=Alpine")), QStringLiteral("Alpine"));
}

TEST(OsVersionName, FallsBackToNameAndVersionOrNothing)
{
    EXPECT_EQ(osReleasePrettyName(QStringLiteral("NAME=Fedora\nVERSION=\"39 (Workstation)\"\n")),
        QStringLiteral("Fedora 39 (Workstation)"));
    EXPECT_EQ(osReleasePrettyName(QStringLiteral("NAME=Arch\n")), QStringLiteral("Arch"));
    EXPECT_EQ(osReleasePrettyName(QString()), QString());
    EXPECT_EQ(osReleasePrettyName(QStringLiteral("garbage\n=novalue\nPRETTY_NAME=\"\"\n")), QString());
}

TEST(OsVersionName, RunningSystemHasAName)
{
    const QString name = GetOSVersionName();
    EXPECT_FALSE(name.isEmpty());
    EXPECT_NE(name, kWindowsXpName);
}

} // namespace
