#pragma once

#include <QByteArray>
#include <QtGlobal>

class QIODevice;

namespace vindaro::info {

// Bounded reads at 0-based offsets of a random-access device, through one 64 KiB window, so that walking
// thousands of small headers costs few system calls and a 4 GB file never sits in memory. Bytes come
// from one window snapshot at a time; a device that shrinks or fails while it is read ends the data at the
// next window load, as a short read, and never yields invented bytes.
class DeviceReader
{
public:
    static constexpr qint64 kWindowBytes = 64 * 1024;
    static constexpr qint64 kMaxReadBytes = 1024 * 1024; // no single record we read is larger
    static constexpr qint64 kScanBytes = 1024 * 1024; // read size of indexOf()

    explicit DeviceReader(QIODevice& device); // the device is open for reading
    // The device's size when the reader was made.
    qint64 size() const { return m_size; }
    // Up to `length` (at most kMaxReadBytes) bytes at `offset`; fewer at the end of the data or on a
    // read error; empty for a negative offset or length.
    QByteArray readAt(qint64 offset, qint64 length);
    // Offset of the first byte equal to `value` in [from, to), or -1 when there is none or a read fails.
    // Reads the device directly in kScanBytes steps, bypassing the window.
    qint64 indexOf(char value, qint64 from, qint64 to);

private:
    bool loadWindow(qint64 offset);

    QIODevice& m_device;
    qint64 m_size = 0;
    QByteArray m_window;
    qint64 m_windowOffset = -1; // offset of m_window[0]; -1 when nothing is loaded
};

} // namespace vindaro::info
