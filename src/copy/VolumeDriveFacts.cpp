#include "VolumeDriveFacts.h"

#include "files/FileTexts.h"

#include <QFileInfo>

#include <algorithm>

namespace vindaro::copy {

namespace {

constexpr qsizetype kRememberedDrives = 8; // more optical drives than any machine has

// True when `lower` lies strictly below `upper`: what an unmount does to the paths of the lower volume.
bool liesBelow(const QString& lower, const QString& upper)
{
    if (lower == upper)
        return false;
    return upper == QLatin1String("/") || lower.startsWith(upper + QLatin1Char('/'));
}

} // namespace

std::optional<platform::Volume> VolumeDriveFacts::volumeOf(const QString& path)
{
    return m_volumes.volumeOf(path.trimmed());
}

std::optional<platform::Volume> VolumeDriveFacts::rememberedHolding(const QString& path)
{
    QMutexLocker lock(&m_mutex);
    return platform::volumeHolding(m_opticalSources, path.trimmed());
}

void VolumeDriveFacts::noteSourceVolume(const QString& path, const std::optional<platform::Volume>& volume)
{
    QMutexLocker lock(&m_mutex);
    if (volume && volume->kind == platform::kDriveCdRom) {
        m_opticalSources.removeIf(
            [&](const platform::Volume& v) { return v.mountPoint == volume->mountPoint; });
        m_opticalSources.append(*volume);
        if (m_opticalSources.size() > kRememberedDrives)
            m_opticalSources.removeFirst();
        return;
    }
    const auto remembered = platform::volumeHolding(m_opticalSources, path.trimmed());
    if (!remembered)
        return;
    // The drive stays remembered while its place is empty: the disc was ejected, the path is gone and now
    // falls to the volume above. Another volume mounted there, or a file that exists at the path, means
    // the path is no longer the disc's.
    const bool placeEmpty = (!volume || liesBelow(remembered->mountPoint, volume->mountPoint))
        && !QFileInfo::exists(path.trimmed());
    if (!placeEmpty)
        m_opticalSources.removeIf(
            [&](const platform::Volume& v) { return v.mountPoint == remembered->mountPoint; });
}

int VolumeDriveFacts::driveType(const QString& path)
{
    const auto volume = volumeOf(path);
    noteSourceVolume(path, volume);
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

bool VolumeDriveFacts::sourceDiscNotReady(const QString& path)
{
    const auto volume = volumeOf(path);
    if (volume && volume->kind == platform::kDriveCdRom)
        return !m_volumes.isReady(volume->mountPoint);
    const auto remembered = rememberedHolding(path);
    if (!remembered)
        return false; // the source was not on an optical drive
    // Another volume took the drive's mount point (or one below it holds the path): the source is not
    // the disc's.
    if (volume && !liesBelow(remembered->mountPoint, volume->mountPoint))
        return false;
    // The path fell to the volume above: the drive's medium was unmounted, at least from there.
    const QList<platform::Volume> mounted = m_volumes.list();
    const bool stillMounted = std::any_of(mounted.begin(), mounted.end(), [&](const platform::Volume& v) {
        return v.mountPoint == remembered->mountPoint && v.device == remembered->device;
    });
    return !stillMounted || !m_volumes.isReady(remembered->mountPoint);
}

} // namespace vindaro::copy
