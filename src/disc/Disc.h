#pragma once

#include "DiscSource.h"
#include "SenseDecision.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace vindaro::disc {

// Why a disc or a file on it cannot be used: an errno value for the copy engine and the program's words.
struct DiscFailure
{
    int error = 0;
    QString message;
};

enum class SectorMode
{
    Mode1, // 2,048 bytes of user data, error-corrected by the drive
    Form1, // Mode 2 Form 1: the same 2,048 bytes on an XA track
    Form2, // Mode 2 Form 2: 2,324 bytes, no error correction, an EDC at most
};

// A file or folder as the disc's own ISO 9660 directory records it.
struct DiscEntry
{
    QString path; // absolute, with the directory's spelling and without ";1": "/MPEGAV/AVSEQ01.DAT"
    qint64 lsn = 0; // its first sector
    qint64 sectors = 0; // sectors of its extent
    qint64 recordedBytes = 0; // the size the directory records: sectors × 2,048 for a Form 2 file
    SectorMode mode = SectorMode::Mode1;
    bool folder = false;

    bool isForm2() const { return mode == SectorMode::Form2; }
    // What a copy of the file holds: every sector's payload for Form 2, the recorded size otherwise.
    qint64 length() const;
};

struct DiscTrack
{
    int number = 0;
    qint64 firstLsn = 0;
    qint64 lastLsn = 0;
    QString format; // "音频", "数据（Mode 1）", "数据（Mode 2 XA）"...
};

// The outcome of reading sectors: how many came whole, and why the next did not.
struct SectorRead
{
    qint64 sectors = 0;
    int error = 0; // 0: all that were asked for
    QString reason; // the program's words for the failure, for the log
};

// One READ CD of `count` sectors from `lsn` into `out`; true when the drive answered success.
using DriveCommand = std::function<bool(qint64 lsn, qint64 count, char* out)>;
constexpr qint64 kMaxSectorsPerCommand = 32;

// How a drive's sectors are read: READ CD for up to 32 sectors at a time; once one fails, sector by sector
// from there, each failure judged by the drive's sense data (`lastSense`) and asked again only where the
// cause passes, up to the first sector that stays unreadable. An out-of-range answer lowers `endLsn`: no
// later read goes there. Nothing else is ever tried: no other read method, no slower speed.
SectorRead readThroughDrive(qint64 lsn, qint64 count, qint64 blockBytes, char* out,
    const DriveCommand& readCd, const std::function<SenseData()>& lastSense, qint64& endLsn);

// One opened disc: a drive, a BIN/CUE, NRG, cdrdao or ISO image. Not for two threads at once.
//
// Reads never reach the disc's end (the lead-out's first sector): a read there fails at once, without
// asking the drive. A drive's sectors are read with READ CD only, one command for many sectors and, once
// that fails, sector by sector, each failure judged by its sense data; nothing switches to another read
// method after an error. A BIN/CUE image's sectors are read from its .bin at the offsets libcdio's own
// driver uses, so a failed or short read of the image keeps its errno (libcdio's driver would hand back a
// zero-filled sector as if read).
class Disc
{
public:
    static std::unique_ptr<Disc> open(const QString& source, DiscFailure& failure);
    ~Disc();
    Disc(const Disc&) = delete;
    Disc& operator=(const Disc&) = delete;

    const QString& source() const { return m_source; }
    DiscKind kind() const { return m_kind; }
    // The first sector past the last one recorded.
    qint64 endLsn() const { return m_endLsn; }

    // The entry at `path` (absolute; names compared without case, ";1" and a closing "." ignored, as a
    // mounted disc shows them). Nothing, with ENOENT, EMEDIUMTYPE (no ISO 9660 file system) or EIO (its
    // directory cannot be read) in `failure`.
    std::optional<DiscEntry> find(const QString& path, DiscFailure& failure);
    // Every file and folder, depth first, folders before what they hold.
    QList<DiscEntry> entries();
    QList<DiscTrack> tracks();
    QString volumeLabel();

    // `count` Mode 2 sectors from `lsn`, 2,336 bytes each (sub-header, payload, EDC).
    SectorRead readMode2(qint64 lsn, qint64 count, char* out);
    // The 2,048 bytes of user data of `count` Mode 1 or Mode 2 Form 1 sectors from `lsn`.
    SectorRead readData(qint64 lsn, qint64 count, char* out);

    struct Handles; // the library's handles: opaque outside Disc.cpp

private:
    Disc(QString source, DiscKind kind, std::unique_ptr<Handles> handles);
    // Shortens `count` to the sectors before the disc's end; a failure when `lsn` is not before it.
    SectorRead bounded(qint64 lsn, qint64& count) const;
    SectorRead readSectors(qint64 lsn, qint64 count, char* out, bool mode2);
    SectorRead readDriveSectors(qint64 lsn, qint64 count, char* out, bool mode2);
    SectorRead readImageSectors(qint64 lsn, qint64 count, char* out, bool mode2);
    SectorRead readLibraryImageSectors(qint64 lsn, qint64 count, char* out, bool mode2);

    QString m_source;
    DiscKind m_kind;
    std::unique_ptr<Handles> m;
    qint64 m_endLsn = 0;
};

} // namespace vindaro::disc
