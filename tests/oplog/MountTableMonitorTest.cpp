#include "FuseMount.h"
#include "oplog/ChangeQueue.h"
#include "platform/linux/InotifyChangeMonitor.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace vindaro;

namespace {

constexpr int kWaitMs = 10000;

struct MountRow
{
    const char* name;
    const char* fsName; // the mount source the table shows: /dev/sr7 makes it an optical drive
    quint32 mounted;
    quint32 unmounted;
};

void PrintTo(const MountRow& row, std::ostream* out)
{
    *out << row.name;
}

class MountTableMonitor : public ::testing::TestWithParam<MountRow>
{
};

// The kernel's own mount table: a FUSE medium mounted and unmounted under the monitor's eyes.
TEST_P(MountTableMonitor, MountAndUnmountAreReported)
{
    const MountRow row = GetParam();
    QTemporaryDir dir;
    QDir().mkpath(dir.filePath(QStringLiteral("home")));
    oplog::ChangeQueue queue;
    platform::InotifyMonitorOptions options;
    options.roots = {dir.filePath(QStringLiteral("home"))};
    platform::InotifyChangeMonitor monitor(options);
    ASSERT_TRUE(monitor.start(queue));
    ASSERT_TRUE(QTest::qWaitFor([&] { return monitor.isReady(); }, kWaitMs));

    QList<oplog::ChangeEvent> seen;
    const auto waitFor = [&](const oplog::ChangeEvent& change) {
        return QTest::qWaitFor(
            [&] {
                for (const oplog::QueuedChange& item : queue.take(1024))
                    seen.append(item.change);
                return seen.contains(change);
            },
            kWaitMs);
    };
    const QString mountPoint = dir.filePath(QStringLiteral("medium"));
    {
        vindaro::testing::FuseMount medium(QStringLiteral(OPLOG_MEDIUM_FS), mountPoint,
            {QStringLiteral("readable"), QStringLiteral("-o"),
                QStringLiteral("fsname=") + QLatin1String(row.fsName)});
        VINDARO_SKIP_UNLESS_MOUNTED(medium);
        EXPECT_TRUE(waitFor({row.mounted, mountPoint, {}}));
    }
    EXPECT_TRUE(waitFor({row.unmounted, mountPoint, {}}));
}

INSTANTIATE_TEST_SUITE_P(Volumes, MountTableMonitor,
    ::testing::Values(MountRow{"OpticalDisc", "/dev/sr7", oplog::kMediaInserted, oplog::kMediaRemoved},
        MountRow{"Drive", "vindaro-medium", oplog::kDriveAdded, oplog::kDriveRemoved}),
    [](const ::testing::TestParamInfo<MountRow>& row) { return std::string(row.param.name); });

} // namespace
