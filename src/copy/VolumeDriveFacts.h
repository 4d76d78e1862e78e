#pragma once

#include "CopySession.h"
#include "platform/Volumes.h"

#include <QMutex>

namespace vindaro::copy {

// Drive facts for copy preparation from the machine's volumes: the drive of a path is the volume that
// holds it (the longest mount-point prefix), and it is named by its mount point.
//
// The source's optical drive is remembered: copy preparation asks driveType() of every source (the block
// size follows it), and when that is an optical drive, a later failure of the copy is checked against
// that drive even after its disc was ejected and the path fell under another volume. One instance may be
// asked from the window's thread and the copy's worker at once.
class VolumeDriveFacts final : public DriveFacts
{
public:
    explicit VolumeDriveFacts(platform::Volumes& volumes)
        : m_volumes(volumes)
    {
    }
    int driveType(const QString& path) override;
    double freeBytes(const QString& path) override;
    bool driveIsReady(const QString& path) override;
    QString driveName(const QString& path) override;
    bool isFloppy(const QString& path) override;
    bool sourceDiscNotReady(const QString& path) override;

private:
    std::optional<platform::Volume> volumeOf(const QString& path);
    // Keeps `volume` when it is an optical drive; forgets a remembered drive whose place another volume
    // has taken.
    void noteSourceVolume(const QString& path, const std::optional<platform::Volume>& volume);
    // The remembered optical volume whose mount point holds `path`.
    std::optional<platform::Volume> rememberedHolding(const QString& path);

    platform::Volumes& m_volumes;
    QMutex m_mutex; // guards m_opticalSources
    QList<platform::Volume>
        m_opticalSources; // optical volumes that held a source, newest last; a few at most
};

} // namespace vindaro::copy
