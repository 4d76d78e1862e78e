#include "DiscStatus.h"

#include <QFile>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <linux/cdrom.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vindaro::platform {

DiscStatus discStatus(const QString& devicePath)
{
    int fd = -1;
    do {
        fd = ::open(QFile::encodeName(devicePath).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0)
        return DiscStatus::Unknown;
    // CDSL_CURRENT (INT_MAX): the drive itself, not a changer slot.
    const int status = ::ioctl(fd, CDROM_DRIVE_STATUS, INT_MAX);
    ::close(fd);
    switch (status) {
    case CDS_DISC_OK:
        return DiscStatus::Present;
    case CDS_NO_DISC:
    case CDS_TRAY_OPEN:
    case CDS_DRIVE_NOT_READY:
        return DiscStatus::Absent;
    default:
        return DiscStatus::Unknown; // no permission, no such device, CDS_NO_INFO
    }
}

} // namespace vindaro::platform
