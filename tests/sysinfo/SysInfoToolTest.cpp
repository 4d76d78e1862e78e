#include "sysinfo/SysInfoTool.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace vindaro::sysinfo;
using namespace Qt::StringLiterals;

namespace {

// A folder standing in for PATH, with the programs a test puts there.
struct ToolFolder
{
    QTemporaryDir dir;

    QString add(const QString& name, const QByteArray& script = "#!/bin/sh\nexit 0\n", bool executable = true)
    {
        QFile file(dir.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(script);
        file.close();
        file.setPermissions(
            QFile::ReadOwner | QFile::WriteOwner | (executable ? QFile::ExeOwner : QFile::Permissions()));
        return file.fileName();
    }
};

TEST(StartSysInfo, StartsTheFirstInstalledToolInOrder)
{
    ToolFolder path;
    path.add(u"some-other-program"_s);
    QStringList launches; // program and arguments
    const auto record = [&launches](const QString& program, const QStringList& arguments) {
        launches.append((QStringList{program} + arguments).join(u' '));
        return true;
    };
    EXPECT_FALSE(StartSysInfo(record, {path.dir.path()})); // no tool installed: nothing started

    path.add(u"hardinfo2"_s, "not a program", false); // not executable: passed over
    path.add(u"gnome-system-monitor"_s);
    const QString kinfocenter = path.add(u"kinfocenter"_s);
    EXPECT_TRUE(StartSysInfo(record, {path.dir.path()}));
    QFile::remove(kinfocenter);
    EXPECT_TRUE(StartSysInfo(record, {path.dir.path()}));
    EXPECT_EQ(launches,
        QStringList(
            {kinfocenter, path.dir.filePath(u"gnome-system-monitor"_s) + u" --show-resources-tab"_s}));
}

// The real launcher: the tool runs as a process of its own and gets its arguments.
TEST(StartSysInfo, LaunchesARealProcess)
{
    ToolFolder path;
    const QByteArray marker = QFile::encodeName(path.dir.filePath(u"started"_s));
    path.add(u"mate-system-monitor"_s,
        "#!/bin/sh\nprintf '%s' \"$*\" > '" + marker + ".part' && mv '" + marker + ".part' '" + marker
            + "'\n");
    ASSERT_TRUE(StartSysInfo(launchDetached, {path.dir.path()}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return QFile::exists(QFile::decodeName(marker)); }, 10000));
    QFile written(QFile::decodeName(marker));
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), "--show-system-tab");
}

} // namespace
