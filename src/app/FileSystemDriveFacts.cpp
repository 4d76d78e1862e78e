#include "FileSystemDriveFacts.h"

#include "files/FileTexts.h"

namespace vindaro::app {

FileSystemDriveFacts::FileSystemDriveFacts(platform::Volumes& volumes, platform::Shell& shell)
    : m_volumes(volumes)
    , m_files(volumes, shell)
{
}

int FileSystemDriveFacts::driveType(const QString& path)
{
    return m_files.GetDriveType(path);
}

double FileSystemDriveFacts::freeBytes(const QString& path)
{
    return m_files.GetDiskSpaceSize(path, 1);
}

bool FileSystemDriveFacts::driveIsReady(const QString& path)
{
    return m_files.DriveIsReady(path);
}

QString FileSystemDriveFacts::driveName(const QString& path)
{
    const auto volume = files::volumeOfPath(m_volumes.list(), path);
    return volume ? volume->mountPoint : QString();
}

bool FileSystemDriveFacts::isFloppy(const QString& path)
{
    const auto volume = files::volumeOfPath(m_volumes.list(), path);
    return volume && volume->kind == platform::kDriveRemovable && files::isFloppyDevice(volume->device);
}

} // namespace vindaro::app
