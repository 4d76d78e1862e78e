#pragma once

#include <QStringList>

namespace vindaro::drives {

enum class TrayMove
{
    Open,
    Close
};

// Move the trays of these drives (device paths), one after the other in this order.
struct TrayCommand
{
    TrayMove move = TrayMove::Open;
    QStringList devices;
};

inline bool operator==(const TrayCommand& a, const TrayCommand& b)
{
    return a.move == b.move && a.devices == b.devices;
}

} // namespace vindaro::drives
