#include "copy/VolumeDriveFacts.h"
#include "platform/linux/LinuxVolumes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <sys/mount.h>

#include <atomic>
#include <thread>

using namespace vindaro;
using platform::LinuxVolumes;

namespace {

bool inMountTable(const QString& mountPoint)
{
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    return table.open(QIODevice::ReadOnly)
        && table.readAll().contains(' ' + QFile::encodeName(mountPoint) + ' '); // no blanks to escape
}

enum class Medium
{
    Readable,
    Unreadable, // listing the root fails with EIO
    Stuck, // the daemon never answers about the root
};

// A medium mounted from the tests' own FUSE file system until unmount() or the end of the object.
// `fsName` is the mount source the mount table shows: "/dev/sr7" makes it an optical drive.
class MountedMedium
{
public:
    MountedMedium(const QString& mountPoint, bool readable, const QString& fsName)
        : MountedMedium(mountPoint, readable ? Medium::Readable : Medium::Unreadable, fsName)
    {
    }
    MountedMedium(const QString& mountPoint, Medium medium, const QString& fsName)
        : m_mountPoint(mountPoint)
    {
        QDir().mkpath(mountPoint);
        const char* const modes[] = {"readable", "unreadable", "stuck"};
        m_fs.start(QStringLiteral(MEDIUM_FS),
            {mountPoint, QString::fromLatin1(modes[int(medium)]), QStringLiteral("-o"),
                QStringLiteral("fsname=") + fsName});
        // A stuck medium cannot be looked at: the mount table tells when it is there.
        const auto ready
            = [&] { return medium == Medium::Stuck ? inMountTable(mountPoint) : QFileInfo::exists(file()); };
        m_mounted = m_fs.waitForStarted(10000)
            && QTest::qWaitFor([&] { return m_fs.state() != QProcess::Running || ready(); }, 10000)
            && m_fs.state() == QProcess::Running;
    }
    ~MountedMedium() { unmount(); }

    // Kills the daemon: whatever waits on it gets an error (ENOTCONN) at once. The mount stays, dead,
    // until unmount().
    void kill()
    {
        m_fs.kill();
        m_fs.waitForFinished(10000);
    }

    // True when the medium left the mount table, as an eject makes it leave. Something else holding the
    // mount open for a moment (a folder scan of the temporary folder) gets a lazy unmount.
    bool unmount()
    {
        if (m_fs.state() != QProcess::Running) {
            // A dead mount (its daemon killed) only needs detaching.
            return inMountTable(m_mountPoint)
                && ::umount2(QFile::encodeName(m_mountPoint).constData(), MNT_DETACH) == 0;
        }
        const bool done
            = QProcess::execute(QStringLiteral("fusermount3"), {QStringLiteral("-u"), m_mountPoint}) == 0
            || QProcess::execute(
                   QStringLiteral("fusermount3"), {QStringLiteral("-u"), QStringLiteral("-z"), m_mountPoint})
                == 0;
        if (!m_fs.waitForFinished(10000)) {
            m_fs.kill();
            m_fs.waitForFinished(10000);
        }
        return done;
    }
    bool mounted() const { return m_mounted; }
    std::string why() { return QString::fromLocal8Bit(m_fs.readAllStandardError()).toStdString(); }
    QString mountPoint() const { return m_mountPoint; }
    QString file() const { return m_mountPoint + QStringLiteral("/disc.dat"); }

private:
    QString m_mountPoint;
    QProcess m_fs;
    bool m_mounted = false;
};

bool listed(LinuxVolumes& volumes, const QString& mountPoint)
{
    const QList<platform::Volume> list = volumes.list();
    return std::any_of(
        list.begin(), list.end(), [&](const platform::Volume& v) { return v.mountPoint == mountPoint; });
}

struct ReadinessRow
{
    bool readable;
    bool ready;
};

void PrintTo(const ReadinessRow& row, std::ostream* out)
{
    *out << (row.readable ? "readable" : "unreadable");
}

class MediumReadiness : public ::testing::TestWithParam<ReadinessRow>
{
};

// Opening the root of a scratched medium succeeds; only reading an entry shows the damage.
TEST_P(MediumReadiness, FollowsTheFirstEntryOfTheRoot)
{
    const ReadinessRow row = GetParam();
    QTemporaryDir dir;
    MountedMedium medium(
        dir.filePath(QStringLiteral("medium")), row.readable, QStringLiteral("vindaro-medium"));
    if (!medium.mounted())
        GTEST_SKIP() << "FUSE cannot be mounted here: " << medium.why();

    LinuxVolumes volumes;
    EXPECT_EQ(volumes.isReady(medium.mountPoint()), row.ready);
    copy::VolumeDriveFacts drives(volumes);
    EXPECT_EQ(drives.driveName(medium.file()).toStdString(), medium.mountPoint().toStdString());
    EXPECT_EQ(drives.driveIsReady(medium.file()), row.ready);
}

INSTANTIATE_TEST_SUITE_P(
    Mounted, MediumReadiness, ::testing::Values(ReadinessRow{true, true}, ReadinessRow{false, false}));

// What the copy's failure table hears about a source that was prepared on a mounted medium.
struct SourceRow
{
    const char* name;
    const char* fsName;
    bool readable;
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
    MountedMedium medium(
        dir.filePath(QStringLiteral("medium")), row.readable, QString::fromLatin1(row.fsName));
    if (!medium.mounted())
        GTEST_SKIP() << "FUSE cannot be mounted here: " << medium.why();

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
    ::testing::Values(SourceRow{"OpticalEjected", "/dev/sr7", true, true, platform::kDriveCdRom, true},
        SourceRow{"OpticalUnreadable", "/dev/sr7", false, false, platform::kDriveCdRom, true},
        SourceRow{"OpticalReadable", "/dev/sr7", true, false, platform::kDriveCdRom, false},
        SourceRow{"FixedUnmounted", "vindaro-medium", true, true, platform::kDriveFixed, false}),
    [](const ::testing::TestParamInfo<SourceRow>& row) { return std::string(row.param.name); });

// The kept mount table is never stale: the kernel's change notice brings every mount and unmount.
TEST(KeptMountTable, FollowsMountsAndUnmounts)
{
    QTemporaryDir dir;
    const QString mountPoint = dir.filePath(QStringLiteral("medium"));
    LinuxVolumes volumes;
    ASSERT_FALSE(listed(volumes, mountPoint));
    MountedMedium medium(mountPoint, true, QStringLiteral("vindaro-medium"));
    if (!medium.mounted())
        GTEST_SKIP() << "FUSE cannot be mounted here: " << medium.why();
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
    if (!medium.mounted())
        GTEST_SKIP() << "FUSE cannot be mounted here: " << medium.why();

    LinuxVolumes volumes;
    std::atomic<bool> listed{false};
    bool holdsStuck = false;
    std::thread lister([&] {
        const QList<platform::Volume> list = volumes.list();
        holdsStuck = std::any_of(
            list.begin(), list.end(), [&](const platform::Volume& v) { return v.mountPoint == mountPoint; });
        listed = true;
    });
    const bool inTime = QTest::qWaitFor([&] { return listed.load(); }, 5000);
    medium.kill(); // releases a lister that waits on the daemon
    lister.join();
    EXPECT_TRUE(inTime);
    EXPECT_TRUE(holdsStuck); // listed, only not examined
    EXPECT_TRUE(medium.unmount());
}

} // namespace
