#pragma once

#include "platform/FileIo.h"

#include <QString>
#include <QtGlobal>

#include <optional>

namespace vindaro::copy {

// One pack header of an MPEG program stream and its system clock reference.
struct PackHeader
{
    qint64 offset = 0; // of its start code in the file
    qint64 clock27MHz = 0; // the SCR in 27 MHz ticks (MPEG-1's 90 kHz SCR times 300)
    bool mpeg2 = false;
    qint64 bytesPerSecond = 0; // the stream's rate as the header gives it (its mux rate times 50)
};

// Decodes the pack header that starts at `data` (with 00 00 01 BA), `available` bytes being readable
// there; `offset` is where it lies in its file. Nothing when the header is cut short or any of its
// fixed bits is wrong, which is how a chance 00 00 01 BA in other bytes is told apart.
std::optional<PackHeader> decodePackHeader(const uchar* data, qint64 available, qint64 offset);

// The playing time of an MPEG program stream (.dat, .vob, .mpg) at a byte offset, from the clock of the
// pack headers around it.
//
// Promises: every search looks at most `limit` bytes away from its offset (kSearchBytes unless told),
// reads in pieces of kChunkBytes, never past `fileSize`, and stops at the first failed read: zeroed
// stretches, garbage and a damaged file cost a bounded time and answer "nothing".
class MpegClock
{
public:
    static constexpr qint64 kChunkBytes = 16 * 1024;
    static constexpr qint64 kSearchBytes = 1024 * 1024;
    static constexpr qint64 kFirstPackBytes = 16 * 1024 * 1024;
    // A pack header is at most this long before its stuffing (MPEG-2: 14 bytes).
    static constexpr qint64 kHeaderBytes = 14;

    MpegClock(platform::RandomAccessFile& file, qint64 fileSize);

    // Whether the name is one of a program stream: .dat, .vob, .mpg (any case).
    static bool isProgramStreamName(const QString& path);

    // The last pack header that starts at or before `offset`, or the first that starts at or after it.
    std::optional<PackHeader> packAtOrBefore(qint64 offset, qint64 limit = kSearchBytes);
    std::optional<PackHeader> packAtOrAfter(qint64 offset, qint64 limit = kSearchBytes);

    // The first pack header of the file, looked for once in its first kFirstPackBytes: a copy may have
    // lost its first megabytes.
    std::optional<PackHeader> firstPack();
    // Seconds of play from the file's start to `pack`, across one wrap of the 33-bit clock; nothing
    // without a first pack, when `pack` lies before it or when the clock went back (a joined stream).
    // The start's clock is the first pack's, less the time its bytes before it take at the stream's rate:
    // exact for a stream that starts with a pack, a good guess for a copy whose first bytes are lost.
    std::optional<double> secondsAt(const PackHeader& pack);

    int reads() const { return m_reads; } // how many reads the searches made

private:
    // Reads [offset, offset + bytes) cut to the file into m_buffer; false when a read fails.
    bool fill(qint64 offset, qint64 bytes);

    platform::RandomAccessFile& m_file;
    qint64 m_fileSize;
    QByteArray m_buffer;
    bool m_firstLooked = false;
    std::optional<PackHeader> m_first;
    int m_reads = 0;
};

} // namespace vindaro::copy
