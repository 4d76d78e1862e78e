#include "FuseMount.h"
#include "copy/VolumeDriveFacts.h"
#include "platform/linux/LinuxVolumes.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace vindaro;
using platform::LinuxVolumes;

namespace {

enum class Medium
{
    Readable,
    Unreadable, // listing the root fails with EIO
    Stuck, // the daemon never answers about the root
};

// A medium mounted from the tests' own FUSE file system. `fsName` is the mount source the mount table shows:
// "/dev/sr7" makes it an optical drive.
class MountedMedium : public vindaro::testing::FuseMount
{
public:
    MountedMedium(const QString& mountPoint, Medium medium, const QString& fsName)
        : FuseMount(QStringLiteral(MEDIUM_FS), mountPoint,
            {QString::fromLatin1(kModes[int(medium)]), QStringLiteral("-o"),
                QStringLiteral("fsname=") + fsName})
    {
    }
    QString file() const { return path(QStringLiteral("disc.dat")); }

private:
    static constexpr const char* kModes[] = {"readable", "unreadable", "stuck"};
};

bool listed(LinuxVolumes& volumes, const QString& mountPoint)
{
    const QList<platform::Volume> list = volumes.list();
    return std::any_of(
        list.begin(), list.end(), [&](const platform::Volume& v) { return v.mountPoint == mountPoint; });
}

// Opening the root of a scratched medium succeeds; only reading an entry shows the damage.
TEST(MediumReadiness, FollowsTheFirstEntryOfTheRoot)
{
    for (const Medium kind : {Medium::Readable, Medium::Unreadable}) {
        const bool ready = kind == Medium::Readable;
        SCOPED_TRACE(ready ? "readable" : "unreadable");
        QTemporaryDir dir;
        MountedMedium medium(dir.filePath(QStringLiteral("medium")), kind, QStringLiteral("vindaro-medium"));
        VINDARO_SKIP_UNLESS_MOUNTED(medium);

        LinuxVolumes volumes;
        EXPECT_EQ(volumes.isReady(medium.mountPoint()), ready);
        copy::VolumeDriveFacts drives(volumes);
        EXPECT_EQ(drives.driveName(medium.file()).toStdString(), medium.mountPoint().toStdString());
        EXPECT_EQ(drives.driveIsReady(medium.file()), ready);
    }
}

// What the copy's failure table hears about a source that was prepared on a mounted medium.
struct SourceRow
{
    const char* name;
    const char* fsName;
    Medium medium;
    bool unmountBeforeFailure; // the disc is ejected while the copy is paused
    int kindAtStart;
    bool discNotReady;
};

void PrintTo(const SourceRow& row, std::ostream* out)
{
    *out << row.name;
}

class SourceDrive : public ::testing::TestWithParam<SourceRow>
{
};

TEST_P(SourceDrive, FailureIsCheckedOnTheDriveTheCopyStartedOn)
{
    const SourceRow row = GetParam();
    QTemporaryDir dir;
    // No real optical drive may be asked: the device folder is the test's own, empty one.
    const QString dev = dir.filePath(QStringLiteral("dev"));
    QDir().mkpath(dev);
    MountedMedium medium(dir.filePath(QStringLiteral("medium")), row.medium, QString::fromLatin1(row.fsName));
    VINDARO_SKIP_UNLESS_MOUNTED(medium);

    LinuxVolumes volumes(QStringLiteral("/proc/self/mountinfo"), QStringLiteral("/sys"), dev);
    copy::VolumeDriveFacts drives(volumes);
    ASSERT_EQ(drives.driveType(medium.file()), row.kindAtStart); // preparation asks the source's kind
    const auto probe = copy::cdRomNotReadyProbe(drives);
    if (row.unmountBeforeFailure) {
        ASSERT_TRUE(medium.unmount());
        // the path fell to another volume
        ASSERT_NE(drives.driveName(medium.file()).toStdString(), medium.mountPoint().toStdString());
        drives.driveType(medium.file()); // the read slider moved while paused: asked again
    }
    EXPECT_EQ(probe(medium.file()), row.discNotReady);
}

INSTANTIATE_TEST_SUITE_P(Mounted, SourceDrive,
    ::testing::Values(
        SourceRow{"OpticalEjected", "/dev/sr7", Medium::Readable, true, platform::kDriveCdRom, true},
        SourceRow{"OpticalUnreadable", "/dev/sr7", Medium::Unreadable, false, platform::kDriveCdRom, true},
        SourceRow{"OpticalReadable", "/dev/sr7", Medium::Readable, false, platform::kDriveCdRom, false},
        SourceRow{"FixedUnmounted", "vindaro-medium", Medium::Readable, true, platform::kDriveFixed, false}),
    [](const ::testing::TestParamInfo<SourceRow>& row) { return std::string(row.param.name); });

// The kept mount table is never stale: the kernel's change notice brings every mount and unmount.
TEST(KeptMountTable, FollowsMountsAndUnmounts)
{
    QTemporaryDir dir;
    const QString mountPoint = dir.filePath(QStringLiteral("medium"));
    LinuxVolumes volumes;
    ASSERT_FALSE(listed(volumes, mountPoint));
    MountedMedium medium(mountPoint, Medium::Readable, QStringLiteral("vindaro-medium"));
    VINDARO_SKIP_UNLESS_MOUNTED(medium);
    EXPECT_TRUE(listed(volumes, mountPoint));
    ASSERT_TRUE(medium.unmount());
    EXPECT_FALSE(listed(volumes, mountPoint));
}

// Whatever the daemon of a FUSE mount does, listing the volumes never waits on it: a stuck daemon must not
// hang the window or the copy.
TEST(KeptMountTable, AStuckFileSystemDoesNotHoldUpTheListing)
{
    QTemporaryDir dir;
    const QString mountPoint = dir.filePath(QStringLiteral("stuck"));
    MountedMedium medium(mountPoint, Medium::Stuck, QStringLiteral("vindaro-stuck"));
    VINDARO_SKIP_UNLESS_MOUNTED(medium);

    LinuxVolumes volumes;
    std::atomic<bool> done{false};
    bool holdsStuck = false;
    std::thread lister([&] {
        holdsStuck = listed(volumes, mountPoint);
        done = true;
    });
    const bool inTime = QTest::qWaitFor([&] { return done.load(); }, 5000);
    medium.kill(); // releases a lister that waits on the daemon
    lister.join();
    EXPECT_TRUE(inTime);
    EXPECT_TRUE(holdsStuck); // listed, only not examined
    EXPECT_TRUE(medium.unmount());
}

} // namespace
