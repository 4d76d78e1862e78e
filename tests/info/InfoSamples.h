#pragma once

// Small files of each kind the information readers take (MPEG audio, ID3v1 tags, Flash movies, ZIP
// archives), written byte by byte for the tests.

#include <QByteArray>
#include <QFile>
#include <QString>

#include <vector>

namespace vindaro::testing {

inline void putLe(QByteArray& bytes, quint64 value, int width)
{
    for (int i = 0; i < width; ++i)
        bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
}

inline bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// `size` bytes of zeros with the frame header `header` at `offset`.
inline QByteArray mpegStream(const QByteArray& header, qint64 offset, qint64 size)
{
    QByteArray bytes(size, '\0');
    return bytes.replace(offset, header.size(), header);
}
// MPEG 1 Layer III, 128 kbit/s, 44100 Hz, joint stereo.
inline const QByteArray kMpegHeader("\xFF\xFB\x90\x64", 4);

// An ID3v1 tag: "TAG", then the fields at their widths (NUL-padded unless given whole).
struct Id3Fields
{
    static QByteArray field(QByteArray bytes, qsizetype width, char pad = '\0')
    {
        return bytes.append(width - bytes.size(), pad);
    }
    QByteArray title = field({}, 30);
    QByteArray artist = field({}, 30);
    QByteArray album = field({}, 30);
    QByteArray year = field({}, 4);
    QByteArray comment = field({}, 29);
    char track = 0;
    char genre = 0;
    QByteArray tag(const char* marker = "TAG") const
    {
        return QByteArray(marker, 3) + title + artist + album + year + comment + track + genre;
    }
};

// An uncompressed Flash header: stage rectangle of `bits`-bit fields, frame rate, frame count, and a
// SetBackgroundColor tag (0x11, 0x22, 0x33).
inline QByteArray flashMovie(const char* signature, int bits, quint32 xMax, quint32 yMax, uchar rateFraction,
    uchar rate, quint16 frames)
{
    QByteArray rect;
    int used = 8;
    const auto put = [&](quint32 value, int count) {
        for (int i = count - 1; i >= 0; --i) {
            if (used == 8)
                rect.append('\0'), used = 0;
            if ((value >> i) & 1u)
                rect.back() = static_cast<char>(rect.back() | (0x80 >> used));
            ++used;
        }
    };
    put(static_cast<quint32>(bits), 5);
    for (const quint32 value : {0u, xMax, 0u, yMax})
        put(value, bits);
    QByteArray bytes = QByteArray(signature, 3) + '\x06' + QByteArray("\x10\x27\x00\x00", 4) + rect;
    bytes += static_cast<char>(rateFraction);
    bytes += static_cast<char>(rate);
    putLe(bytes, frames, 2);
    return bytes + QByteArray("\x43\x02\x11\x22\x33", 5);
}

// One local header of a ZIP archive and its data.
struct ZipEntry
{
    ZipEntry(QByteArray entryName, quint32 uncompressedBytes = 0, quint32 compressedBytes = 0)
        : name(std::move(entryName))
        , uncompressed(uncompressedBytes)
        , compressed(compressedBytes)
    {
    }
    QByteArray name;
    quint32 uncompressed = 0;
    quint32 compressed = 0;
    QByteArray extra;
    qint64 dataBytes = -1; // bytes of data actually written; -1 means `compressed`
    quint16 flags = 0;

    QByteArray local() const
    {
        QByteArray bytes("PK\x03\x04", 4);
        for (const quint32 value : {20u, quint32(flags), 0u, 0x6000u, 0x2E21u}) // 2003-01-01 12:00:00
            putLe(bytes, value, 2);
        for (const quint32 value : {0x0A0B0C0Du, compressed, uncompressed})
            putLe(bytes, value, 4);
        putLe(bytes, static_cast<quint64>(name.size()), 2);
        putLe(bytes, static_cast<quint64>(extra.size()), 2);
        return bytes + name + extra + QByteArray(dataBytes < 0 ? compressed : dataBytes, 'd');
    }
};

// The entries, then the start of a central directory.
inline QByteArray zipArchive(const std::vector<ZipEntry>& entries)
{
    QByteArray bytes;
    for (const ZipEntry& e : entries)
        bytes += e.local();
    return bytes + QByteArray("PK\x01\x02 central directory follows");
}

} // namespace vindaro::testing
