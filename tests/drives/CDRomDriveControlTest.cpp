#include "drives/CDRomDriveControl.h"
#include "drives/CdDriveMenuModel.h"
#include "drives/TrayJob.h"
#include "fakes/FakeOpticalDrives.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>

using vindaro::drives::CdDriveMenuModel;
using vindaro::drives::CDRomDriveControl;
using vindaro::testing::FakeOpticalDrives;
using namespace Qt::StringLiterals;

namespace {

// Every text of the drive commands, once.
TEST(DrivesTexts, SayWhatTheProgramSays)
{
    EXPECT_EQ(CdDriveMenuModel::kEjectAllCaption, u"弹出[&E] 所有CD-ROM"_s);
    EXPECT_EQ(CdDriveMenuModel::kCloseAllCaption, u"关闭[&C] 所有CD-ROM"_s);
    EXPECT_EQ(CdDriveMenuModel::kEjectMenuTitle, u"弹出    CD-ROM"_s); // four blanks
    EXPECT_EQ(CdDriveMenuModel::kCloseMenuTitle, u"关闭    CD-ROM"_s);
    FakeOpticalDrives none;
    EXPECT_EQ(
        CDRomDriveControl(none).GetCDRomInforStr(), u"你可能没有安装光盘驱动器，或者驱动程序不正常。"_s);
    FakeOpticalDrives two;
    two.add(u"/dev/sr0"_s);
    two.add(u"/dev/sr1"_s, u"/media/My Disc"_s);
    two.setNotReady(u"/dev/sr0"_s);
    two.setNotReady(u"/dev/sr1"_s);
    EXPECT_EQ(
        CDRomDriveControl(two).GetCDRomInforStr(), u"光盘驱动器/dev/sr0、/media/My Disc还没有准备好\r\n"_s);
    EXPECT_EQ(CDRomDriveControl(two).GetCDRomListStr(), u"/dev/sr0、/media/My Disc"_s);
}

// The report names only the drives that are not ready, each by its root.
TEST(CDRomDriveControl, ReportNamesOnlyTheDrivesThatAreNotReady)
{
    const struct
    {
        bool firstReady, secondReady;
        const char* named; // empty: no report
    } rows[] = {{true, true, ""}, {false, true, "/dev/sr0"}, {true, false, "/media/cd1"}};
    for (const auto& row : rows) {
        FakeOpticalDrives fake;
        fake.add(u"/dev/sr0"_s);
        fake.add(u"/dev/sr1"_s, u"/media/cd1"_s);
        if (!row.firstReady)
            fake.setNotReady(u"/dev/sr0"_s);
        if (!row.secondReady)
            fake.setNotReady(u"/dev/sr1"_s);
        const QString report = CDRomDriveControl(fake).GetCDRomInforStr();
        EXPECT_EQ(report.isEmpty(), !*row.named) << row.named;
        EXPECT_EQ(report.contains(u"/dev/sr0"_s), !row.firstReady) << report.toStdString();
        EXPECT_EQ(report.contains(u"/media/cd1"_s), !row.secondReady) << report.toStdString();
    }
}

// The first drive's door; a drive named by its root as the report shows it, by its device path, with or
// without a final "/"; a failed tray is a plain false.
TEST(CDRomDriveControl, DoorsReachTheDriveNamed)
{
    const struct
    {
        const char* root; // nullptr: the first drive
        const char* device; // empty: no drive has that root
    } rows[] = {{nullptr, "/dev/sr0"}, {"/media/cd1", "/dev/sr1"}, {"/media/cd1/", "/dev/sr1"},
        {"/dev/sr1", "/dev/sr1"}, {"/dev/sr0/", "/dev/sr0"}, {"/media", ""}, {"/", ""}, {"", ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.root ? row.root : "first");
        FakeOpticalDrives fake;
        fake.add(u"/dev/sr0"_s);
        fake.add(u"/dev/sr1"_s, u"/media/cd1"_s);
        CDRomDriveControl control(fake);
        const QString root = QString::fromUtf8(row.root);
        const QString device = QString::fromUtf8(row.device);
        EXPECT_EQ(row.root ? control.OpenSpecialCDDoor(root) : control.OpenFirstCDdoor(), !device.isEmpty());
        EXPECT_EQ(
            row.root ? control.CloseSpecialCDDoor(root) : control.CloseFirstCDdoor(), !device.isEmpty());
        EXPECT_EQ(fake.calls(),
            device.isEmpty() ? QStringList() : QStringList({"open " + device, "close " + device}));
    }
    FakeOpticalDrives none;
    EXPECT_FALSE(CDRomDriveControl(none).OpenFirstCDdoor());
    EXPECT_FALSE(CDRomDriveControl(none).CloseFirstCDdoor());
    EXPECT_TRUE(none.calls().isEmpty());
}

TEST(CDRomDriveControl, AStuckTrayIsFalseAndCarryOutGoesOnPastIt)
{
    FakeOpticalDrives fake;
    fake.add(u"/dev/sr0"_s);
    fake.add(u"/dev/sr1"_s);
    fake.setTrayFails(u"/dev/sr0"_s);
    CDRomDriveControl control(fake);
    EXPECT_FALSE(control.OpenFirstCDdoor());
    const vindaro::drives::TrayCommand all{vindaro::drives::TrayMove::Open, {"/dev/sr0", "/dev/sr1"}};
    EXPECT_EQ(control.carryOut(all), 1);
    EXPECT_EQ(fake.calls(), QStringList({"open /dev/sr0", "open /dev/sr0", "open /dev/sr1"}));
}

// Jobs leave the calling thread at once, reach the drives in start order and report back on the main
// thread.
TEST(TrayJob, RunsInOrderOffTheMainThread)
{
    auto fake = std::make_shared<FakeOpticalDrives>();
    fake->add(u"/dev/sr0"_s);
    fake->add(u"/dev/sr1"_s);
    fake->holdTrays();
    std::atomic<int> workersOnMainThread{0};
    int donesOnMainThread = 0;
    int dones = 0;
    for (const bool open : {true, false}) {
        vindaro::drives::runTrayJob(
            fake,
            [&, open](CDRomDriveControl& control) {
                if (QThread::currentThread() == qApp->thread())
                    ++workersOnMainThread;
                for (const QString& device : {u"/dev/sr0"_s, u"/dev/sr1"_s})
                    open ? control.OpenSpecialCDDoor(device) : control.CloseSpecialCDDoor(device);
            },
            [&] {
                ++dones;
                donesOnMainThread += QThread::currentThread() == qApp->thread() ? 1 : 0;
            });
    }
    EXPECT_TRUE(fake->calls().isEmpty()); // both wait on the held drive, not on us
    EXPECT_EQ(dones, 0);

    fake->releaseTrays();
    ASSERT_TRUE(QTest::qWaitFor([&] { return dones == 2; }, 5000));
    EXPECT_EQ(donesOnMainThread, 2);
    EXPECT_EQ(workersOnMainThread.load(), 0);
    EXPECT_EQ(
        fake->calls(), QStringList({"open /dev/sr0", "open /dev/sr1", "close /dev/sr0", "close /dev/sr1"}));
}

} // namespace
