#pragma once

#include <QString>

namespace vindaro::platform {

enum class DiscStatus
{
    Present,
    Absent, // no disc, the tray open, or the drive not ready
    Unknown, // no permission, no such device, or the drive does not say
};

// Asks an optical drive, opened without waiting for a medium, whether it holds a disc.
DiscStatus discStatus(const QString& devicePath);

} // namespace vindaro::platform
