#pragma once

#include "DiscFile.h"
#include "MountedDiscFiles.h"
#include "platform/FileIo.h"
#include "platform/Volumes.h"

#include <QElapsedTimer>
#include <QMutex>

namespace vindaro::disc {

// The file layer of a program that copies from optical discs: files in Mode 2 Form 2 sectors (a Video CD's
// MPEGAV/*.DAT) are read through the disc's sectors, whole and EDC-checked, whether named by their path
// on the mounted disc or as "DEVICE_OR_IMAGE:/PATH" (/dev/sr0:/MPEGAV/AVSEQ01.DAT, movie.cue:/MPEGAV/...);
// their length is sectors × 2,324. A file of the second form in Mode 1 sectors is read through the
// disc's sectors too (2,048 bytes each). Everything else, every destination included, goes to `plain`
// untouched.
//
// Where the disc cannot be opened (no permission on the drive, no disc), the source's operations fail with
// the program's words in the description and an entry in the log; nothing is created.
class DiscFileLayer final : public platform::FileLayer
{
public:
    DiscFileLayer(platform::FileLayer& plain, platform::Volumes& volumes);

    // Where unreadable sectors and discs that cannot be opened are told. Set before copying.
    void setLog(DiscLog log) { m_log = std::move(log); }

    // The program's words for why `path`, a file on a disc, cannot be read; empty when it can be, and for
    // a file that is no disc's concern.
    QString problemWith(const QString& path);

    std::unique_ptr<platform::RandomAccessFile> openForReading(
        const QString& path, platform::IoResult& result) override;
    std::unique_ptr<platform::RandomAccessFile> openForUpdate(
        const QString& path, platform::IoResult& result) override;
    qint64 length(const QString& path, platform::IoResult& result) override;
    platform::IoResult copyWhole(const QString& source, const QString& destination) override;
    platform::IoResult truncate(const QString& path) override;
    platform::IoResult remove(const QString& path) override;
    bool exists(const QString& path) override;
    platform::IoResult makeFolders(const QString& path) override;
    platform::IoResult syncFileSystem(const QString& path) override;

private:
    struct Target
    {
        enum class Kind
        {
            Plain,
            OnDisc,
            Failed,
        } kind
            = Kind::Plain;
        QString disc;
        DiscEntry entry;
        DiscFailure failure;
    };
    Target resolve(const QString& path);
    // The failure as an I/O result; told to the log once for as long as it stays the same.
    platform::IoResult failed(const DiscFailure& failure);

    platform::FileLayer& m_plain;
    platform::Volumes& m_volumes;
    DiscLog m_log;
    QMutex m_mutex;
    QString m_lastFailure; // the last disc failure logged
    // The last path found plain, and when: a copy asks of one file its length and then opens it, and a
    // batch does so for thousands; a second look within a moment is spared (guarded by m_mutex).
    QString m_lastPlain;
    QElapsedTimer m_lastPlainAge;
};

} // namespace vindaro::disc
