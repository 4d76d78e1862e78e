#pragma once

#include "Disc.h"
#include "platform/FileIo.h"

#include <QByteArray>

#include <functional>
#include <memory>

namespace vindaro::disc {

// Where a file layer tells of sectors it could not read and of discs it could not open. May be called from
// the copy's worker thread.
using DiscLog = std::function<void(const QString& entry)>;

// A file on a disc read through the disc's sectors, at 0-based offsets into what its copy holds: for a
// Form 2 file the payloads of its sectors one after another (2,324 bytes each, every sector's EDC
// checked), for any other file its recorded bytes (2,048 a sector).
//
// A sector that cannot be read, or whose EDC fails, fails the read: the bytes before it are delivered and
// counted, the errno says why (EIO for an unreadable sector, ENOMEDIUM when the disc is gone), and `log`
// hears which sector and why. Reads never go past the file's last sector or the disc's end. Read-only.
class DiscFile final : public platform::RandomAccessFile
{
public:
    DiscFile(std::unique_ptr<Disc> disc, DiscEntry entry, DiscLog log);

    qint64 length() const { return m_entry.length(); }

    platform::IoResult readAt(qint64 offset, char* data, qint64 maxBytes) override;
    platform::IoResult writeAt(qint64 offset, const char* data, qint64 bytes) override;
    platform::IoResult sync() override { return {}; }
    platform::IoResult close() override;
    qint64 sectorBytes() const override;

private:
    platform::IoResult unreadable(qint64 sectorInFile, int error, const QString& reason, qint64 delivered);

    std::unique_ptr<Disc> m_disc;
    DiscEntry m_entry;
    DiscLog m_log;
    QByteArray m_buffer;
};

// The log entry for an unreadable sector: its sector on the disc, and the 1-based position in the copy of
// its first byte.
QString unreadableSectorEntry(qint64 lsn, qint64 position, const QString& reason);

} // namespace vindaro::disc
