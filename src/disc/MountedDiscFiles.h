#pragma once

#include "Disc.h"
#include "platform/Volumes.h"

#include <QHash>
#include <QMutex>
#include <QString>

#include <optional>

namespace vindaro::disc {

// Which files of mounted ISO 9660 discs are Form 2, from each disc's own directory. The kernel's view of
// such a file is wrong (2,048 bytes a sector), so its extent and mode are looked up through libcdio.
//
// An answer is remembered per disc and path: a drive's disc by its primary volume descriptor (read through
// the device, from the kernel's cache while the disc is mounted), an image by its file's identity. A disc
// changed for another is looked up afresh; the drive is not kept open between calls, so its tray opens.
// Any thread.
class MountedDiscFiles
{
public:
    enum class Kind
    {
        Plain, // not on a mounted disc, or not Form 2: the local file system reads it right
        Form2,
        Unreadable, // a Video CD track on a disc that cannot be opened: reading it plainly would be wrong
    };
    struct Lookup
    {
        Kind kind = Kind::Plain;
        QString device; // the drive (or image) that holds the disc
        DiscEntry entry; // for Form2
        DiscFailure failure; // for Unreadable
    };

    static MountedDiscFiles& shared();

    Lookup lookup(platform::Volumes& volumes, const QString& path);

private:
    QMutex m_mutex;
    QHash<QString, Lookup> m_known; // by device, disc identity and path on the disc
};

// What a copy of `path` holds when it is a Form 2 file on a mounted disc (sectors × 2,324 bytes, where the
// kernel counts 2,048 a sector); nothing for any other file.
std::optional<qint64> form2Length(platform::Volumes& volumes, const QString& path);

} // namespace vindaro::disc
