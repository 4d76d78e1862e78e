#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

// The desktop's own system-information tool, which the about window's SystemInfo button starts.
namespace vindaro::sysinfo {

struct SysInfoTool
{
    QString program; // a name in knownSysInfoTools(), a full path once found
    QStringList arguments;
};

// The tools looked for, in this order: dedicated system-information programs first, then the desktops'
// own about pages, then system monitors opened on the page closest to system facts.
QList<SysInfoTool> knownSysInfoTools();

// The first known tool that is an executable file in one of searchPaths (the folders of PATH when
// empty), with its full path; nullopt when none is installed.
std::optional<SysInfoTool> findSysInfoTool(const QStringList& searchPaths = {});

// Starts a program on its own, outliving the caller; true when it started.
using ProgramLauncher = std::function<bool(const QString& program, const QStringList& arguments)>;
bool launchDetached(const QString& program, const QStringList& arguments);

// Starts the first tool found through launch. False, having done nothing, when none is installed; false
// too when the tool would not start.
bool StartSysInfo(const ProgramLauncher& launch = launchDetached, const QStringList& searchPaths = {});

} // namespace vindaro::sysinfo
