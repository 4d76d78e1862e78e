#include "copy/VolumeDriveFacts.h"
#include "fakes/FakeCopyHost.h"
#include "fakes/FakeVolumes.h"
#include "fakes/MemoryFileLayer.h"
#include "platform/linux/LinuxVolumes.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace platform = vindaro::platform;
namespace copy = vindaro::copy;
namespace fake = vindaro::testing;
using copy::VolumeDriveFacts;

namespace {

// What happens to the source's drive between the copy's preparation and its failure.
enum class Change
{
    None,
    MediumUnreadable,
    Ejected, // the medium is unmounted: the path falls to the volume above
    EjectedThenAskedAgain, // ... and the read slider moves while paused, which asks the kind again
    OtherMediumMounted, // ... and a stick is mounted on the same mount point
    RemountedElsewhere, // ... and the drive's disc comes back on another mount point
    FileWhereTheDiscWas, // ... and a new copy starts from a file that exists at that path now
};

struct ProbeRow
{
    const char* name;
    const char* source; // below the test's folder: cd/ is an optical drive, usb/ a stick, the rest fixed
    Change change;
    bool discNotReady;
};

void PrintTo(const ProbeRow& row, std::ostream* out)
{
    *out << row.name;
}

class SourceDiscProbe : public ::testing::TestWithParam<ProbeRow>
{
};

TEST_P(SourceDiscProbe, AnswersForTheDriveTheCopyWasPreparedOn)
{
    const ProbeRow row = GetParam();
    QTemporaryDir dir;
    const QString cd = dir.filePath(QStringLiteral("cd"));
    const QString usb = dir.filePath(QStringLiteral("usb"));
    fake::FakeVolumes volumes;
    volumes.add(QStringLiteral("/"), platform::kDriveFixed, QStringLiteral("/dev/sda1"));
    volumes.add(cd, platform::kDriveCdRom, QStringLiteral("/dev/sr0"));
    volumes.add(usb, platform::kDriveRemovable, QStringLiteral("/dev/sdb1"));
    VolumeDriveFacts drives(volumes);
    const auto probe = copy::cdRomNotReadyProbe(drives);

    const QString source = dir.filePath(QString::fromLatin1(row.source));
    const QString mount = volumes.volumeOf(source)->mountPoint;
    drives.driveType(source); // the preparation asks for the block size
    const auto eject
        = [&] { volumes.volumes.removeIf([&](const platform::Volume& v) { return v.mountPoint == mount; }); };
    switch (row.change) {
    case Change::None:
        break;
    case Change::MediumUnreadable:
        volumes.notReady.insert(mount);
        break;
    case Change::Ejected:
        eject();
        break;
    case Change::EjectedThenAskedAgain:
        eject();
        drives.driveType(source);
        break;
    case Change::OtherMediumMounted:
        eject();
        volumes.add(mount, platform::kDriveRemovable, QStringLiteral("/dev/sdc1"));
        break;
    case Change::RemountedElsewhere:
        eject();
        volumes.add(dir.filePath(QStringLiteral("cd2")), platform::kDriveCdRom, QStringLiteral("/dev/sr0"));
        break;
    case Change::FileWhereTheDiscWas: {
        eject();
        QDir().mkpath(QFileInfo(source).path());
        QFile file(source);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        drives.driveType(source);
        break;
    }
    }
    EXPECT_EQ(probe(source), row.discNotReady);
}

INSTANTIATE_TEST_SUITE_P(Changes, SourceDiscProbe,
    ::testing::Values(ProbeRow{"DiscReadable", "cd/MPEGAV/AVSEQ01.DAT", Change::None, false},
        ProbeRow{"DiscUnreadable", "cd/MPEGAV/AVSEQ01.DAT", Change::MediumUnreadable, true},
        ProbeRow{"DiscEjected", "cd/MPEGAV/AVSEQ01.DAT", Change::Ejected, true},
        ProbeRow{"DiscEjectedSliderMoved", "cd/MPEGAV/AVSEQ01.DAT", Change::EjectedThenAskedAgain, true},
        ProbeRow{"StickOnTheDiscsMountPoint", "cd/MPEGAV/AVSEQ01.DAT", Change::OtherMediumMounted, false},
        ProbeRow{"DiscBackElsewhere", "cd/MPEGAV/AVSEQ01.DAT", Change::RemountedElsewhere, true},
        ProbeRow{"NewFileWhereTheDiscWas", "cd/MPEGAV/AVSEQ01.DAT", Change::FileWhereTheDiscWas, false},
        ProbeRow{"StickUnplugged", "usb/a.dat", Change::Ejected, false},
        ProbeRow{"StickUnreadable", "usb/a.dat", Change::MediumUnreadable, false},
        ProbeRow{"FixedDiskUnreadable", "a.dat", Change::MediumUnreadable, false}),
    [](const ::testing::TestParamInfo<ProbeRow>& param) { return std::string(param.param.name); });

// A chroot or rescue system: the mount table has no entry for "/" nor for the destination (here no table
// at all). The destination's volume comes from the path, so the copy is not refused as an invalid path.
TEST(UncoveredDestination, CopyStartsInsteadOfRefusingThePath)
{
    QTemporaryDir dir;
    platform::LinuxVolumes volumes(dir.filePath(QStringLiteral("no-mountinfo")));
    VolumeDriveFacts drives(volumes);
    const QString destination = dir.filePath(QStringLiteral("video/a.dat"));
    EXPECT_GE(drives.freeBytes(destination), 0);
    EXPECT_FALSE(drives.driveName(destination).isEmpty());

    fake::MemoryFileLayer files;
    files.put(QStringLiteral("/disc/a.dat"), fake::positionBytes(10));
    copy::CopyState state;
    fake::FakeCopyHost host;
    fake::MemoryResumeStore store;
    copy::CopySession session(state, host, files, store, drives);
    EXPECT_EQ(session.startCopy(QStringLiteral("/disc/a.dat"), destination), copy::CopyOutcome::Finished);
    EXPECT_EQ(files.bytes(destination), fake::positionBytes(10));
}

} // namespace
