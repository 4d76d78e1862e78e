#include "drives/CDRomDriveControl.h"
#include "drives/TrayJob.h"
#include "fakes/FakeOpticalDrives.h"

#include "DrivesTestSupport.h"

#include <QCoreApplication>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>

using vindaro::drives::CDRomDriveControl;
using vindaro::testing::FakeOpticalDrives;

namespace {

struct DriveSetup
{
    const char* device;
    const char* mountPoint;
    bool ready;
};

struct ReportCase
{
    const char* name;
    std::vector<DriveSetup> drives;
    QString report;
    QString list;
};

void fill(FakeOpticalDrives& fake, const std::vector<DriveSetup>& drives)
{
    for (const DriveSetup& setup : drives) {
        fake.add(QString::fromUtf8(setup.device), QString::fromUtf8(setup.mountPoint));
        if (!setup.ready)
            fake.setNotReady(QString::fromUtf8(setup.device));
    }
}

class ReadinessReport : public ::testing::TestWithParam<ReportCase>
{
};

TEST_P(ReadinessReport, NamesOnlyTheDrivesThatAreNotReady)
{
    FakeOpticalDrives fake;
    fill(fake, GetParam().drives);
    CDRomDriveControl control(fake);
    EXPECT_EQ(control.GetCDRomInforStr(), GetParam().report);
    EXPECT_EQ(control.GetCDRomListStr(), GetParam().list);
}

INSTANTIATE_TEST_SUITE_P(Drives, ReadinessReport,
    ::testing::Values(
        ReportCase{"None", {}, QStringLiteral("你可能没有安装光盘驱动器，或者驱动程序不正常。"), QString()},
        ReportCase{"AllReady", {{"/dev/sr0", "/media/cd0", true}, {"/dev/sr1", "/media/cd1", true}},
            QString(), QStringLiteral("/media/cd0、/media/cd1")},
        ReportCase{"FirstEmpty", {{"/dev/sr0", "", false}, {"/dev/sr1", "/media/cd1", true}},
            QStringLiteral("光盘驱动器/dev/sr0还没有准备好\r\n"), QStringLiteral("/dev/sr0、/media/cd1")},
        ReportCase{"SecondUnreadable", {{"/dev/sr0", "", true}, {"/dev/sr1", "/media/My Disc", false}},
            QStringLiteral("光盘驱动器/media/My Disc还没有准备好\r\n"),
            QStringLiteral("/dev/sr0、/media/My Disc")},
        ReportCase{"BothEmpty", {{"/dev/sr0", "", false}, {"/dev/sr1", "", false}},
            QStringLiteral("光盘驱动器/dev/sr0、/dev/sr1还没有准备好\r\n"),
            QStringLiteral("/dev/sr0、/dev/sr1")}),
    [](const ::testing::TestParamInfo<ReportCase>& param) { return param.param.name; });

TEST(CDRomDriveControl, FirstDoorMovesOnlyTheFirstDrive)
{
    FakeOpticalDrives fake;
    fake.add(QStringLiteral("/dev/sr0"));
    fake.add(QStringLiteral("/dev/sr1"), QStringLiteral("/media/cd1"));
    CDRomDriveControl control(fake);
    EXPECT_TRUE(control.OpenFirstCDdoor());
    EXPECT_TRUE(control.CloseFirstCDdoor());
    EXPECT_EQ(fake.calls(), QStringList({"open /dev/sr0", "close /dev/sr0"}));
}

TEST(CDRomDriveControl, FirstDoorWithoutDrivesDoesNothing)
{
    FakeOpticalDrives fake;
    CDRomDriveControl control(fake);
    EXPECT_FALSE(control.OpenFirstCDdoor());
    EXPECT_FALSE(control.CloseFirstCDdoor());
    EXPECT_TRUE(fake.calls().isEmpty());
}

TEST(CDRomDriveControl, FailedTrayIsReportedAsFalseOnly)
{
    FakeOpticalDrives fake;
    fake.add(QStringLiteral("/dev/sr0"));
    fake.setTrayFails(QStringLiteral("/dev/sr0"));
    CDRomDriveControl control(fake);
    EXPECT_FALSE(control.OpenFirstCDdoor());
    EXPECT_EQ(fake.calls(), QStringList({"open /dev/sr0"}));
}

// A drive is named by its root as the report shows it, by its device path, with or without a final "/".
TEST(CDRomDriveControl, SpecialDoorFindsTheDriveByItsRoot)
{
    const struct
    {
        QString root;
        QString expectedCall; // empty: no drive has that root
    } cases[] = {
        {QStringLiteral("/media/cd1"), QStringLiteral("/dev/sr1")},
        {QStringLiteral("/media/cd1/"), QStringLiteral("/dev/sr1")},
        {QStringLiteral("/dev/sr1"), QStringLiteral("/dev/sr1")},
        {QStringLiteral("/dev/sr0/"), QStringLiteral("/dev/sr0")},
        {QStringLiteral("/media"), QString()},
        {QStringLiteral("/"), QString()},
        {QString(), QString()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.root.toStdString());
        FakeOpticalDrives fake;
        fake.add(QStringLiteral("/dev/sr0"));
        fake.add(QStringLiteral("/dev/sr1"), QStringLiteral("/media/cd1"));
        CDRomDriveControl control(fake);
        EXPECT_EQ(control.OpenSpecialCDDoor(c.root), !c.expectedCall.isEmpty());
        EXPECT_EQ(control.CloseSpecialCDDoor(c.root), !c.expectedCall.isEmpty());
        const QStringList expected = c.expectedCall.isEmpty()
            ? QStringList()
            : QStringList(
                {QStringLiteral("open ") + c.expectedCall, QStringLiteral("close ") + c.expectedCall});
        EXPECT_EQ(fake.calls(), expected);
    }
}

TEST(CDRomDriveControl, CarryOutGoesOnPastAStuckTray)
{
    FakeOpticalDrives fake;
    fake.add(QStringLiteral("/dev/sr0"));
    fake.add(QStringLiteral("/dev/sr1"));
    fake.setTrayFails(QStringLiteral("/dev/sr0"));
    CDRomDriveControl control(fake);
    const vindaro::drives::TrayCommand all{vindaro::drives::TrayMove::Open, {"/dev/sr0", "/dev/sr1"}};
    EXPECT_EQ(control.carryOut(all), 1);
    EXPECT_EQ(fake.calls(), QStringList({"open /dev/sr0", "open /dev/sr1"}));
}

// Jobs leave the calling thread at once, reach the drives in start order and report back on the main
// thread.
TEST(TrayJob, RunsInOrderOffTheMainThread)
{
    auto fake = std::make_shared<FakeOpticalDrives>();
    fake->add(QStringLiteral("/dev/sr0"));
    fake->add(QStringLiteral("/dev/sr1"));
    fake->holdTrays();

    std::atomic<int> workersOnMainThread{0};
    int donesOnMainThread = 0;
    int dones = 0;
    const auto job = [&](bool open) {
        vindaro::drives::runTrayJob(
            fake,
            [&, open](CDRomDriveControl& control) {
                if (QThread::currentThread() == qApp->thread())
                    ++workersOnMainThread;
                for (const QString& device : {QStringLiteral("/dev/sr0"), QStringLiteral("/dev/sr1")})
                    open ? control.OpenSpecialCDDoor(device) : control.CloseSpecialCDDoor(device);
            },
            [&] {
                ++dones;
                if (QThread::currentThread() == qApp->thread())
                    ++donesOnMainThread;
            });
    };
    job(true);
    job(false);
    EXPECT_TRUE(fake->calls().isEmpty()); // both wait on the held drive, not on us
    EXPECT_EQ(dones, 0);

    fake->releaseTrays();
    ASSERT_TRUE(vindaro::testing::waitFor([&] { return dones == 2; }));
    EXPECT_EQ(donesOnMainThread, 2);
    EXPECT_EQ(workersOnMainThread.load(), 0);
    EXPECT_EQ(
        fake->calls(), QStringList({"open /dev/sr0", "open /dev/sr1", "close /dev/sr0", "close /dev/sr1"}));
}

} // namespace
