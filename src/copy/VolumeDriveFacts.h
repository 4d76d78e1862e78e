#pragma once

#include "CopySession.h"
#include "platform/Volumes.h"

namespace vindaro::copy {

// Drive facts for copy preparation from the machine's volumes: the drive of a path is the volume whose
// mount point is its longest prefix, and it is named by that mount point.
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

private:
    std::optional<platform::Volume> volumeOf(const QString& path);
    platform::Volumes& m_volumes;
};

} // namespace vindaro::copy
