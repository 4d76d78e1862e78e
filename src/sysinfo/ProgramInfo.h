#pragma once

#include <QString>

// What the program says about itself: its title, maker and version from the build, and where its
// installed data is.
namespace vindaro::sysinfo {

inline const QString kProgramTitle = QStringLiteral("Vindaro");
inline const QString kCompanyName = QStringLiteral("Vindaro 开发组");
// The program's id on the desktop: the name of its desktop entry (without ".desktop") and of its
// AppStream file, as installed from packaging/.
inline const QString kAppId = QStringLiteral("org.vindaro.Vindaro");
// The year of issue the about window shows.
inline const QString kIssueYear = QStringLiteral("2003");

struct ProgramVersion
{
    int major = 0;
    int minor = 0;
    int revision = 0;
};

ProgramVersion programVersion();
// "2.0.0"
QString programVersionText();
// What `--version` prints: "vindaro-copy 2.0.0".
QString versionLine(const QString& toolName);

// The data folder (…/share) that belongs with executables in binDir: the install layout's path from the
// executables to the data, so an installed tree works wherever its prefix was moved to.
QString dataDirFor(const QString& binDir);

// A file under the installed data folder ("icons/hicolor/48x48/apps/vindaro.png"): looked for beside the
// running executable first, then under the prefix the build was configured with. "" when neither has it,
// as for a program run from its build folder.
QString installedDataFile(const QString& relativePath);

} // namespace vindaro::sysinfo
