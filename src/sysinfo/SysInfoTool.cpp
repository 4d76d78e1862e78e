#include "SysInfoTool.h"

#include <QProcess>
#include <QStandardPaths>

namespace vindaro::sysinfo {

QList<SysInfoTool> knownSysInfoTools()
{
    return {
        {QStringLiteral("hardinfo2"), {}},
        {QStringLiteral("hardinfo"), {}},
        {QStringLiteral("kinfocenter"), {}},
        {QStringLiteral("cpu-x"), {}},
        {QStringLiteral("gnome-control-center"), {QStringLiteral("info-overview")}},
        {QStringLiteral("xfce4-about"), {}},
        {QStringLiteral("mate-system-monitor"), {QStringLiteral("--show-system-tab")}},
        {QStringLiteral("gnome-system-monitor"), {QStringLiteral("--show-resources-tab")}},
        {QStringLiteral("plasma-systemmonitor"), {}},
        {QStringLiteral("lxtask"), {}},
    };
}

std::optional<SysInfoTool> findSysInfoTool(const QStringList& searchPaths)
{
    for (SysInfoTool tool : knownSysInfoTools()) {
        const QString path = QStandardPaths::findExecutable(tool.program, searchPaths);
        if (!path.isEmpty()) {
            tool.program = path;
            return tool;
        }
    }
    return std::nullopt;
}

bool launchDetached(const QString& program, const QStringList& arguments)
{
    return QProcess::startDetached(program, arguments);
}

bool StartSysInfo(const ProgramLauncher& launch, const QStringList& searchPaths)
{
    const std::optional<SysInfoTool> tool = findSysInfoTool(searchPaths);
    return tool && launch(tool->program, tool->arguments);
}

} // namespace vindaro::sysinfo
