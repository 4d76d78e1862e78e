#include "MpegClock.h"

namespace vindaro::copy {

namespace {

constexpr qint64 kClockWrap = (qint64(1) << 33) * 300; // the 33-bit 90 kHz base, in 27 MHz ticks

bool isStartCode(const uchar* p)
{
    return p[0] == 0x00 && p[1] == 0x00 && p[2] == 0x01 && p[3] == 0xBA;
}

} // namespace

// After the start code 00 00 01 BA, most significant bit first (s: SCR bits, e: SCR extension, m: mux
// rate, 1: marker bits):
//   MPEG-1 (12 bytes): 0010sss1 ssssssss sssssss1 ssssssss sssssss1 1mmmmmmm mmmmmmmm mmmmmmm1
//   MPEG-2 (14 bytes): 01sss1ss ssssssss sssss1ss ssssssss sssss1ee eeeeeee1 mmmmmmmm mmmmmmmm mmmmmm11
//                      rrrrrlll (then l stuffing bytes)
// A mux rate of 0 is forbidden in both.
std::optional<PackHeader> decodePackHeader(const uchar* data, qint64 available, qint64 offset)
{
    if (available < 12 || !isStartCode(data))
        return std::nullopt;
    const uchar* b = data;
    PackHeader pack;
    pack.offset = offset;
    if ((b[4] & 0xF1) == 0x21) {
        const bool markers = (b[6] & 0x01) && (b[8] & 0x01) && (b[9] & 0x80) && (b[11] & 0x01);
        const quint32 muxRate = (quint32(b[9] & 0x7F) << 15) | (quint32(b[10]) << 7) | (b[11] >> 1);
        if (!markers || muxRate == 0)
            return std::nullopt;
        const qint64 base = (qint64((b[4] >> 1) & 0x07) << 30) | (qint64(b[5]) << 22)
            | (qint64(b[6] >> 1) << 15) | (qint64(b[7]) << 7) | qint64(b[8] >> 1);
        pack.clock27MHz = base * 300;
        pack.bytesPerSecond = qint64(muxRate) * 50;
        return pack;
    }
    if ((b[4] & 0xC4) == 0x44) {
        if (available < 14)
            return std::nullopt;
        const bool markers = (b[6] & 0x04) && (b[8] & 0x04) && (b[9] & 0x01) && (b[12] & 0x03) == 0x03;
        const quint32 muxRate = (quint32(b[10]) << 14) | (quint32(b[11]) << 6) | (b[12] >> 2);
        const qint64 extension = (qint64(b[8] & 0x03) << 7) | qint64(b[9] >> 1);
        if (!markers || muxRate == 0 || extension >= 300)
            return std::nullopt;
        const qint64 base = (qint64((b[4] >> 3) & 0x07) << 30) | (qint64(b[4] & 0x03) << 28)
            | (qint64(b[5]) << 20) | (qint64(b[6] >> 3) << 15) | (qint64(b[6] & 0x03) << 13)
            | (qint64(b[7]) << 5) | qint64(b[8] >> 3);
        pack.clock27MHz = base * 300 + extension;
        pack.bytesPerSecond = qint64(muxRate) * 50;
        pack.mpeg2 = true;
        return pack;
    }
    return std::nullopt;
}

MpegClock::MpegClock(platform::RandomAccessFile& file, qint64 fileSize)
    : m_file(file)
    , m_fileSize(fileSize > 0 ? fileSize : 0)
{
}

bool MpegClock::isProgramStreamName(const QString& path)
{
    return path.endsWith(QLatin1String(".dat"), Qt::CaseInsensitive)
        || path.endsWith(QLatin1String(".vob"), Qt::CaseInsensitive)
        || path.endsWith(QLatin1String(".mpg"), Qt::CaseInsensitive);
}

bool MpegClock::fill(qint64 offset, qint64 bytes)
{
    m_buffer.clear();
    if (offset < 0 || offset >= m_fileSize)
        return true;
    bytes = qMin(bytes, m_fileSize - offset);
    m_buffer.resize(bytes);
    qint64 got = 0;
    while (got < bytes) {
        ++m_reads;
        const platform::IoResult result = m_file.readAt(offset + got, m_buffer.data() + got, bytes - got);
        if (!result.ok()) {
            m_buffer.clear();
            return false;
        }
        if (result.bytes <= 0)
            break; // the file is shorter than we were told
        got += result.bytes;
    }
    m_buffer.resize(got);
    return true;
}

std::optional<PackHeader> MpegClock::packAtOrBefore(qint64 offset, qint64 limit)
{
    if (m_fileSize == 0 || offset < 0)
        return std::nullopt;
    offset = qMin(offset, m_fileSize - 1);
    const qint64 lowest = qMax<qint64>(0, offset - limit);
    // Each piece covers the starts [from, last] and reads a header's length past `last`.
    for (qint64 last = offset; last >= lowest;) {
        const qint64 from = qMax(lowest, last - kChunkBytes + 1);
        if (!fill(from, last - from + 1 + kHeaderBytes))
            return std::nullopt;
        const auto* data = reinterpret_cast<const uchar*>(m_buffer.constData());
        const qint64 have = m_buffer.size();
        for (qint64 at = qMin(last - from, have - 4); at >= 0; --at) {
            if (isStartCode(data + at)) {
                if (const auto pack = decodePackHeader(data + at, have - at, from + at))
                    return pack;
            }
        }
        last = from - 1;
    }
    return std::nullopt;
}

std::optional<PackHeader> MpegClock::packAtOrAfter(qint64 offset, qint64 limit)
{
    offset = qMax<qint64>(0, offset);
    const qint64 highest = qMin(m_fileSize, offset + limit); // starts below this are looked at
    for (qint64 from = offset; from < highest; from += kChunkBytes) {
        const qint64 starts = qMin(kChunkBytes, highest - from);
        if (!fill(from, starts + kHeaderBytes))
            return std::nullopt;
        const auto* data = reinterpret_cast<const uchar*>(m_buffer.constData());
        const qint64 have = m_buffer.size();
        for (qint64 at = 0; at < starts && at + 4 <= have; ++at) {
            if (isStartCode(data + at)) {
                if (const auto pack = decodePackHeader(data + at, have - at, from + at))
                    return pack;
            }
        }
    }
    return std::nullopt;
}

std::optional<PackHeader> MpegClock::firstPack()
{
    if (!m_firstLooked) {
        m_firstLooked = true;
        m_first = packAtOrAfter(0, kFirstPackBytes);
    }
    return m_first;
}

std::optional<double> MpegClock::secondsAt(const PackHeader& pack)
{
    const std::optional<PackHeader> first = firstPack();
    if (!first || pack.offset < first->offset)
        return std::nullopt;
    // Bytes before the first pack at the stream's rate (a mux rate is never 0 here).
    const qint64 lead = qint64(double(first->offset) * 27'000'000.0 / double(first->bytesPerSecond));
    qint64 ticks = pack.clock27MHz - first->clock27MHz;
    if (ticks < 0) {
        // Far back: the clock went past 2^33 (26.5 hours). A little back: the stream's clock started
        // again (joined recordings), and no time can be told.
        if (-ticks < kClockWrap / 2)
            return std::nullopt;
        ticks += kClockWrap;
    }
    return double(ticks + lead) / 27'000'000.0;
}

} // namespace vindaro::copy
