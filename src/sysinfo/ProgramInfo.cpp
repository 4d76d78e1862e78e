#include "ProgramInfo.h"

#include "sysinfo/ProgramBuild.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace vindaro::sysinfo {

ProgramVersion programVersion()
{
    return {VINDARO_VERSION_MAJOR, VINDARO_VERSION_MINOR, VINDARO_VERSION_PATCH};
}

QString programVersionText()
{
    const ProgramVersion v = programVersion();
    return QStringLiteral("%1.%2.%3").arg(v.major).arg(v.minor).arg(v.revision);
}

QString versionLine(const QString& toolName)
{
    return toolName + u' ' + programVersionText();
}

QString dataDirFor(const QString& binDir)
{
    return QDir::cleanPath(binDir + u'/' + QStringLiteral(VINDARO_BIN_TO_DATA));
}

QString installedDataFile(const QString& relativePath)
{
    QStringList dataDirs;
    if (QCoreApplication::instance())
        dataDirs << dataDirFor(QCoreApplication::applicationDirPath());
    dataDirs << QStringLiteral(VINDARO_INSTALL_DATADIR);
    for (const QString& dir : dataDirs) {
        const QString path = dir + u'/' + relativePath;
        if (QFileInfo(path).isFile())
            return path;
    }
    return {};
}

} // namespace vindaro::sysinfo
