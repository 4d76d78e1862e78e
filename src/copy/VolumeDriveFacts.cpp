#include "VolumeDriveFacts.h"

#include "files/FileTexts.h"

namespace vindaro::copy {

std::optional<platform::Volume> VolumeDriveFacts::volumeOf(const QString& path)
{
    return files::volumeOfPath(m_volumes.list(), path.trimmed());
}

int VolumeDriveFacts::driveType(const QString& path)
{
    const auto volume = volumeOf(path);
    return volume ? volume->kind : platform::kDriveUnknown;
}

double VolumeDriveFacts::freeBytes(const QString& path)
{
    const auto volume = volumeOf(path);
    if (!volume)
        return -1;
    const auto space = m_volumes.space(volume->mountPoint);
    return space ? double(space->freeBytes) : -1;
}

bool VolumeDriveFacts::driveIsReady(const QString& path)
{
    const auto volume = volumeOf(path);
    return volume && m_volumes.isReady(volume->mountPoint);
}

QString VolumeDriveFacts::driveName(const QString& path)
{
    const auto volume = volumeOf(path);
    return volume ? volume->mountPoint : QString();
}

bool VolumeDriveFacts::isFloppy(const QString& path)
{
    const auto volume = volumeOf(path);
    return volume && volume->kind == platform::kDriveRemovable && files::isFloppyDevice(volume->device);
}

} // namespace vindaro::copy
