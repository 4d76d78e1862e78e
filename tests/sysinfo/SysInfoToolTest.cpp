#include "sysinfo/SysInfoTool.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace vindaro::sysinfo;

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
        QFile::Permissions permissions = QFile::ReadOwner | QFile::WriteOwner;
        if (executable)
            permissions |= QFile::ExeOwner;
        file.setPermissions(permissions);
        return file.fileName();
    }
};

struct Launch
{
    QString program;
    QStringList arguments;
};

TEST(StartSysInfo, StartsTheFirstInstalledToolInOrder)
{
    ToolFolder path;
    path.add(QStringLiteral("hardinfo2"), "not a program", false); // not executable: passed over
    path.add(QStringLiteral("gnome-system-monitor"));
    const QString kinfocenter = path.add(QStringLiteral("kinfocenter"));

    QList<Launch> launches;
    const auto record = [&launches](const QString& program, const QStringList& arguments) {
        launches.append({program, arguments});
        return true;
    };
    EXPECT_TRUE(StartSysInfo(record, {path.dir.path()}));
    ASSERT_EQ(launches.size(), 1);
    EXPECT_EQ(launches[0].program, kinfocenter);
    EXPECT_TRUE(launches[0].arguments.isEmpty());

    QFile::remove(kinfocenter);
    EXPECT_TRUE(StartSysInfo(record, {path.dir.path()}));
    ASSERT_EQ(launches.size(), 2);
    EXPECT_EQ(launches[1].program, path.dir.filePath(QStringLiteral("gnome-system-monitor")));
    EXPECT_EQ(launches[1].arguments, QStringList{QStringLiteral("--show-resources-tab")});
}

TEST(StartSysInfo, NoToolInstalledDoesNothing)
{
    ToolFolder path;
    path.add(QStringLiteral("some-other-program"));
    bool launched = false;
    EXPECT_FALSE(StartSysInfo(
        [&launched](const QString&, const QStringList&) { return launched = true; }, {path.dir.path()}));
    EXPECT_FALSE(launched);
}

// The real launcher: the tool runs as a process of its own and gets its arguments.
TEST(StartSysInfo, LaunchesARealProcess)
{
    ToolFolder path;
    const QString marker = path.dir.filePath(QStringLiteral("started"));
    path.add(QStringLiteral("mate-system-monitor"),
        QByteArray("#!/bin/sh\nprintf '%s' \"$*\" > '") + marker.toUtf8() + "'.part && mv '" + marker.toUtf8()
            + ".part' '" + marker.toUtf8() + "'\n");
    ASSERT_TRUE(StartSysInfo(launchDetached, {path.dir.path()}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return QFile::exists(marker); }, 10000));
    QFile written(marker);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), "--show-system-tab");
}

} // namespace
