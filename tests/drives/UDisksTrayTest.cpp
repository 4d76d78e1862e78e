// Trays moved through a real D-Bus daemon: a private bus stands in for the system bus
// (DBUS_SYSTEM_BUS_ADDRESS) and a stand-in UDisks2 service of our own answers on it. The tray ioctl is
// replaced by a recorder, so no real drive moves whatever happens.
#include "drives/TrayJob.h"
#include "platform/PlatformTestSupport.h"
#include "platform/linux/LinuxOpticalDrives.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

using vindaro::platform::LinuxOpticalDrives;
using vindaro::platform::TrayIoctl;
using vindaro::platform::TrayOptions;
using namespace vindaro::testing;

namespace {

const QString kDevice = QStringLiteral("/dev/vindaro-standin-sr0");
const char kBlock[] = "/org/freedesktop/UDisks2/block_devices/standin0";
const char kDrive[] = "/org/freedesktop/UDisks2/drives/StandIn_DVD_RW";

class UDisksTray : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        if (const QString why = m_bus.start(); !why.isEmpty())
            GTEST_SKIP() << why.toStdString();
    }
    void TearDown() override { stopProcess(m_standIn); }

    void startStandIn(const QStringList& flags)
    {
        ASSERT_TRUE(startService(m_standIn, QStringLiteral(UDISKS2_STANDIN),
            QStringList{QStringLiteral("--device"), kDevice, QStringLiteral("--log"), m_logPath} + flags))
            << m_standIn.readAllStandardError().toStdString();
    }

    // The action calls the stand-in received, in order.
    QStringList calls() const
    {
        QFile file(m_logPath);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    LinuxOpticalDrives drives(int timeoutMs = 10000)
    {
        TrayOptions options;
        options.diskServiceTimeoutMs = timeoutMs;
        options.trayIoctl = [this](const QString& path, TrayIoctl request) {
            m_ioctls.append(
                (request == TrayIoctl::Eject ? QStringLiteral("eject ") : QStringLiteral("close ")) + path);
            return m_ioctlMoves;
        };
        return LinuxOpticalDrives(QStringLiteral("/"), options);
    }

    QTemporaryDir m_dir;
    PrivateBus m_bus{m_dir.path(), true};
    QProcess m_standIn;
    const QString m_logPath = m_dir.filePath(QStringLiteral("calls.log"));
    QStringList m_ioctls;
    bool m_ioctlMoves = true;
};

struct EjectCase
{
    const char* name;
    bool service; // false: no UDisks2 on the bus at all
    QStringList standInFlags;
    bool ioctlMoves;
    bool opened;
    QStringList calls;
    QStringList ioctls;
};

void PrintTo(const EjectCase& c, std::ostream* out)
{
    *out << c.name;
}

class UDisksEject : public UDisksTray, public ::testing::WithParamInterface<EjectCase>
{
};

const QString kUnmount = QStringLiteral("Unmount ") + QLatin1String(kBlock);
const QString kEject = QStringLiteral("Eject ") + QLatin1String(kDrive);
const QString kIoctlEject = QStringLiteral("eject ") + kDevice;

TEST_P(UDisksEject, UnmountsThenEjectsOrFallsBackToTheIoctl)
{
    const EjectCase& c = GetParam();
    if (c.service)
        startStandIn(c.standInFlags);
    m_ioctlMoves = c.ioctlMoves;
    EXPECT_EQ(drives().openTray(kDevice), c.opened);
    EXPECT_EQ(calls(), c.calls);
    EXPECT_EQ(m_ioctls, c.ioctls);
}

INSTANTIATE_TEST_SUITE_P(Table, UDisksEject,
    ::testing::Values(EjectCase{"MountedDisc", true, {"--mounted"}, false, true, {kUnmount, kEject}, {}},
        EjectCase{"UnmountedDisc", true, {}, false, true, {kEject}, {}},
        EjectCase{"AudioDiscWithoutFilesystem", true, {"--no-filesystem"}, false, true, {kEject}, {}},
        // A busy file system stays mounted: no eject, and no ioctl that the kernel would refuse anyway.
        EjectCase{"UnmountRefused", true, {"--mounted", "--unmount-busy"}, true, false, {kUnmount}, {}},
        EjectCase{"EjectRefusedIoctlMoves", true, {"--mounted", "--eject-fails"}, true, true,
            {kUnmount, kEject}, {kIoctlEject}},
        EjectCase{"EjectRefusedIoctlFails", true, {"--eject-fails"}, false, false, {kEject}, {kIoctlEject}},
        EjectCase{"ServiceAbsent", false, {}, true, true, {}, {kIoctlEject}},
        EjectCase{"ServiceAbsentIoctlFails", false, {}, false, false, {}, {kIoctlEject}}),
    [](const ::testing::TestParamInfo<EjectCase>& param) { return std::string(param.param.name); });

// A device the service does not know, and closing (the service has no close method): the ioctl's.
TEST_F(UDisksTray, UnknownDevicesAndClosingUseTheIoctl)
{
    startStandIn({QStringLiteral("--mounted")});
    EXPECT_TRUE(drives().openTray(QStringLiteral("/dev/vindaro-other")));
    EXPECT_TRUE(drives().closeTray(kDevice));
    EXPECT_EQ(calls(), QStringList());
    EXPECT_EQ(m_ioctls,
        QStringList({QStringLiteral("eject /dev/vindaro-other"), QStringLiteral("close ") + kDevice}));
}

// A service that never answers the unmount holds the tray request for the timeout only, not for the
// 25 s that D-Bus waits by default.
TEST_F(UDisksTray, StuckServiceEndsAfterTheTimeout)
{
    startStandIn({QStringLiteral("--mounted"), QStringLiteral("--unmount-stalls")});
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(drives(2000).openTray(kDevice));
    EXPECT_GE(clock.elapsed(), 1900);
    EXPECT_LT(clock.elapsed(), 20000);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !calls().isEmpty(); }, 5000));
    EXPECT_EQ(calls(), QStringList{kUnmount});
    EXPECT_EQ(m_ioctls, QStringList());
}

// As the window runs it: on a pool thread of the tray queue, with its own connection to the bus.
TEST_F(UDisksTray, EjectsFromTheTrayJobThread)
{
    startStandIn({QStringLiteral("--mounted")});
    auto shared = std::make_shared<LinuxOpticalDrives>(drives());
    // Shared with the job, which may outlive a failed wait.
    auto opened = std::make_shared<std::atomic<bool>>(false);
    auto done = std::make_shared<bool>(false);
    vindaro::drives::runTrayJob(
        shared,
        [shared, opened](vindaro::drives::CDRomDriveControl&) { *opened = shared->openTray(kDevice); },
        [done] { *done = true; });
    ASSERT_TRUE(QTest::qWaitFor([done] { return *done; }, 20000));
    EXPECT_TRUE(*opened);
    EXPECT_EQ(calls(), (QStringList{kUnmount, kEject}));
}

TEST_F(UDisksTray, NoBusAtAllUsesTheIoctl)
{
    m_bus.pointNowhere();
    EXPECT_TRUE(drives().openTray(kDevice));
    EXPECT_EQ(m_ioctls, QStringList{kIoctlEject});
}

} // namespace
