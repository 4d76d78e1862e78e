// Real modules found on the machine, read by us and by objdump (binutils): the leaves, their data RVAs,
// sizes and code pages must agree. Folders searched: $VINDARO_PE_SAMPLES (separated by ':'), else the pip
// package of the python3 on PATH (its launchers are Windows executables with icons and version resources).
#include "pe/PeImage.h"

#include <QDirIterator>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <gtest/gtest.h>

using vindaro::info::pe::PeImage;
using vindaro::info::pe::ResourceEntry;

namespace {

QString run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(30000) || process.exitCode() != 0)
        return {};
    return QString::fromUtf8(process.readAllStandardOutput());
}

QStringList sampleModules()
{
    QStringList folders
        = qEnvironmentVariable("VINDARO_PE_SAMPLES").split(QLatin1Char(':'), Qt::SkipEmptyParts);
    if (folders.isEmpty() && !QStandardPaths::findExecutable(QStringLiteral("python3")).isEmpty())
        folders << run(QStringLiteral("python3"),
            {QStringLiteral("-c"), QStringLiteral("import os, pip; print(os.path.dirname(pip.__file__))")})
                       .trimmed();
    QStringList modules;
    for (const QString& folder : folders) {
        if (folder.isEmpty())
            continue;
        QDirIterator it(folder, {QStringLiteral("*.exe"), QStringLiteral("*.dll")}, QDir::Files,
            QDirIterator::Subdirectories);
        while (it.hasNext() && modules.size() < 30)
            modules << it.next();
    }
    return modules;
}

} // namespace

TEST(RealModules, LeavesAgreeWithObjdump)
{
    const QString objdump = QStandardPaths::findExecutable(QStringLiteral("objdump"));
    const QStringList modules = sampleModules();
    if (objdump.isEmpty() || modules.isEmpty())
        GTEST_SKIP() << "needs objdump and Windows modules (set VINDARO_PE_SAMPLES to folders holding some)";
    const QRegularExpression leafLine(
        QStringLiteral("Leaf: Addr: 0x([0-9a-f]+), Size: 0x([0-9a-f]+), Codepage: (\\d+)"));
    int compared = 0;
    int withResources = 0;
    for (const QString& path : modules) {
        SCOPED_TRACE(path.toStdString());
        const QString dump = run(objdump, {QStringLiteral("-p"), path});
        if (dump.isEmpty())
            continue; // a machine objdump does not know (ARM64 launchers)
        QStringList expected;
        auto matches = leafLine.globalMatch(dump);
        while (matches.hasNext()) {
            const auto match = matches.next();
            expected << QStringLiteral("%1 %2 %3")
                            .arg(match.captured(1).toUInt(nullptr, 16))
                            .arg(match.captured(2).toUInt(nullptr, 16))
                            .arg(match.captured(3));
        }
        const PeImage image = PeImage::fromFile(path);
        ASSERT_TRUE(image.isValid());
        QStringList actual;
        for (const ResourceEntry& entry : image.resources()) {
            actual << QStringLiteral("%1 %2 %3").arg(entry.dataRva).arg(entry.size).arg(entry.codePage);
            EXPECT_EQ(image.data(entry).size(), qsizetype(entry.size));
        }
        EXPECT_EQ(
            actual.join(QLatin1Char('\n')).toStdString(), expected.join(QLatin1Char('\n')).toStdString());
        ++compared;
        withResources += actual.isEmpty() ? 0 : 1;
    }
    if (compared == 0)
        GTEST_SKIP() << "objdump reads none of the modules found";
    EXPECT_GT(withResources, 0) << "none of the modules found has resources";
}
