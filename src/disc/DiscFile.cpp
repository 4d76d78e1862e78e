#include "DiscFile.h"

#include "Sectors.h"

#include <cerrno>
#include <cstring>

namespace vindaro::disc {

using platform::IoResult;

namespace {

constexpr qint64 kSectorsPerRead = 32;

// "1234567" -> "1,234,567", as the copy's own log entries write positions.
QString grouped(qint64 value)
{
    QString digits = QString::number(value);
    for (qsizetype at = digits.size() - 3; at > (value < 0 ? 1 : 0); at -= 3)
        digits.insert(at, QLatin1Char(','));
    return digits;
}

} // namespace

QString unreadableSectorEntry(qint64 lsn, qint64 position, const QString& reason)
{
    return QStringLiteral("扇区读不出：光盘第%1扇区（文件位置%2字节），%3")
        .arg(grouped(lsn), grouped(position), reason);
}

DiscFile::DiscFile(std::unique_ptr<Disc> disc, DiscEntry entry, DiscLog log)
    : m_disc(std::move(disc))
    , m_entry(std::move(entry))
    , m_log(std::move(log))
{
}

qint64 DiscFile::sectorBytes() const
{
    return m_entry.isForm2() ? kForm2PayloadBytes : kDataSectorBytes;
}

IoResult DiscFile::close()
{
    m_disc.reset(); // lets the drive's door open again
    return {};
}

IoResult DiscFile::writeAt(qint64, const char*, qint64)
{
    return IoResult::failure(EBADF);
}

IoResult DiscFile::unreadable(qint64 sectorInFile, int error, const QString& reason, qint64 delivered)
{
    const qint64 lsn = m_entry.lsn + sectorInFile;
    if (m_log)
        m_log(unreadableSectorEntry(lsn, sectorInFile * sectorBytes() + 1, reason));
    IoResult result = IoResult::failure(error, reason);
    result.bytes = delivered;
    return result;
}

IoResult DiscFile::readAt(qint64 offset, char* data, qint64 maxBytes)
{
    if (!m_disc)
        return IoResult::failure(EBADF);
    if (offset < 0)
        return IoResult::failure(EINVAL);
    IoResult result;
    const qint64 end = std::min(length(), offset + std::max<qint64>(0, maxBytes));
    if (offset >= end)
        return result; // at or past the end
    const bool form2 = m_entry.isForm2();
    const qint64 unit = sectorBytes();
    const qint64 block = form2 ? kMode2SectorBytes : kDataSectorBytes;
    const qint64 lastSector = (end - 1) / unit;
    for (qint64 sector = offset / unit; sector <= lastSector;) {
        const qint64 count = std::min(kSectorsPerRead, lastSector - sector + 1);
        if (m_buffer.size() < count * block)
            m_buffer.resize(count * block);
        const SectorRead read = form2 ? m_disc->readMode2(m_entry.lsn + sector, count, m_buffer.data())
                                      : m_disc->readData(m_entry.lsn + sector, count, m_buffer.data());
        for (qint64 i = 0; i < read.sectors; ++i) {
            const char* payload = m_buffer.constData() + i * block;
            if (form2) {
                if (!inspectMode2Sector(payload).good)
                    return unreadable(sector + i, EIO, QStringLiteral("EDC 校验错误"), result.bytes);
                payload += kSubheaderBytes;
            }
            const qint64 sectorStart = (sector + i) * unit;
            const qint64 from = std::max(offset, sectorStart);
            const qint64 to = std::min(end, sectorStart + unit);
            std::memcpy(data + (from - offset), payload + (from - sectorStart), size_t(to - from));
            result.bytes += to - from;
        }
        if (read.sectors < count)
            return unreadable(
                sector + read.sectors, read.error ? read.error : EIO, read.reason, result.bytes);
        sector += count;
    }
    return result;
}

} // namespace vindaro::disc
