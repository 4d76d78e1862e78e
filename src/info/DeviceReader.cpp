#include "DeviceReader.h"

#include <QIODevice>

#include <cstring>
#include <limits>

namespace vindaro::info {

DeviceReader::DeviceReader(QIODevice& device)
    : m_device(device)
    , m_size(device.size())
{
}

bool DeviceReader::loadWindow(qint64 offset)
{
    if (m_windowOffset >= 0 && offset >= m_windowOffset && offset < m_windowOffset + m_window.size())
        return true;
    m_windowOffset = -1;
    m_window.clear();
    // Ask the device each time: a file that shrinks while we read ends the data where it now ends.
    if (offset >= m_device.size() || !m_device.seek(offset))
        return false;
    m_window.resize(kWindowBytes);
    const qint64 got = m_device.read(m_window.data(), kWindowBytes);
    if (got <= 0) {
        m_window.clear();
        return false;
    }
    m_window.resize(got);
    m_windowOffset = offset;
    return true;
}

QByteArray DeviceReader::readAt(qint64 offset, qint64 length)
{
    QByteArray result;
    if (offset < 0 || length <= 0)
        return result;
    length = qMin(length, kMaxReadBytes);
    if (offset > std::numeric_limits<qint64>::max() - length)
        return result;
    result.reserve(length);
    qint64 at = offset;
    while (result.size() < length) {
        if (!loadWindow(at))
            break;
        const qint64 inWindow = at - m_windowOffset;
        const qint64 take = qMin<qint64>(length - result.size(), m_window.size() - inWindow);
        result.append(m_window.constData() + inWindow, take);
        at += take;
    }
    return result;
}

qint64 DeviceReader::indexOf(char value, qint64 from, qint64 to)
{
    if (from < 0)
        from = 0;
    if (from >= to || !m_device.seek(from))
        return -1;
    // Long sequential reads: scanning a 4 GB file in 64 KiB steps costs many times the system time.
    QByteArray chunk(kScanBytes, Qt::Uninitialized);
    for (qint64 at = from; at < to;) {
        const qint64 got = m_device.read(chunk.data(), qMin<qint64>(kScanBytes, to - at));
        if (got <= 0)
            return -1;
        const void* hit = std::memchr(chunk.constData(), static_cast<uchar>(value), static_cast<size_t>(got));
        if (hit)
            return at + (static_cast<const char*>(hit) - chunk.constData());
        at += got;
    }
    return -1;
}

} // namespace vindaro::info
