#pragma once

#include <QString>

namespace vindaro::platform {

// What the desktop's disk service did with an eject request.
enum class UDisksEjectResult
{
    Ejected, // unmounted where it was mounted, then the tray moved
    StillMounted, // the service refused or did not finish the unmount: the medium stays mounted, the
                  // tray stays shut, and forcing it would fail anyway (the kernel refuses a mounted disc)
    NotHandled, // no bus, no service, a device it does not know, or it refused the eject itself: the
                // caller may try the tray ioctl, which works on an unmounted disc
};

// Ejects the medium of `device` (a device node such as /dev/sr0) the way file managers do: UDisks2 on
// the system bus (DBUS_SYSTEM_BUS_ADDRESS, else the standard socket) resolves the node to its block
// object, unmounts its file system when it has mount points, then ejects its drive.
//
// Blocks the calling thread; never call it on a window's thread. All calls together wait at most
// `timeoutMs` for the service, so a stuck service costs that once. Opening the bus connection is
// bounded by the D-Bus library's own authentication timeout.
UDisksEjectResult ejectThroughUDisks(const QString& device, int timeoutMs);

} // namespace vindaro::platform
