#pragma once

#include <QString>
#include <QtGlobal>

class QIODevice;

namespace vindaro::info {

// Reads the first MPEG audio frame header of a file and estimates frame size, frame count and playing
// time from it and the file's length. One header only: no VBR, Xing/VBRI or ID3v2 awareness.
//
// The header is the four bytes at the first 0xFF byte of the file, whatever follows it. A run that cannot
// work a field out (no table entry, a zero divisor, an unreadable file) leaves that field as it was, so a
// fresh reader shows zeros and empty texts for it.
class MP3Information
{
public:
    // Stores `path` and runs getMpegInfo() when the file can be opened; otherwise stores the empty text.
    void setFileName(const QString& path);
    // The path getMpegInfo() last opened.
    QString fileName() const { return m_openedPath; }

    // Re-reads the stored path from the start. Never fails loudly; see the class comment.
    void getMpegInfo();
    // The same on an open device (tests and fuzzing); `name` is what fileName() reports afterwards.
    void getMpegInfo(QIODevice& device, const QString& name = {});

    qint64 bitRate() const { return m_bitRateKbps; }
    QString bitStr() const { return m_bitStr; }
    QString fileSize() const { return QString::number(m_fileSizeBytes); }
    qint64 fileSizeBytes() const { return m_fileSizeBytes; }
    qint64 frames() const { return m_frames; }
    qint64 frameSize() const { return m_frameSizeBytes; }
    qint64 frequency() const { return m_frequencyHz; }
    // Decimal offset of the header. Offsets are 64-bit here, so a header past 32767 shows its true offset.
    QString header() const { return QString::number(m_headerOffset); }
    // -1 once a run found no 0xFF byte before the file's last byte (no header at all).
    qint64 headerOffset() const { return m_headerOffset; }
    QString mode() const { return m_mode; }
    QString version() const { return QString::number(m_version); }
    QString original() const { return m_original; }
    QString copyrighted() const { return m_copyrighted; }
    QString crcs() const { return m_crcs; }
    QString emphasis() const { return m_emphasis; }
    QString privateMusic() const { return m_private; }
    QString padding() const { return m_padding; }
    // "MPEG 1.0 Layer 3"
    QString versionLayer() const;
    QString layer() const { return QString::number(m_layer); }
    // Whole seconds; 64-bit, so low bit rates on large files do not wrap.
    qint64 seconds() const { return m_seconds; }

private:
    void decodeHeader(quint32 word);
    void deriveFigures();

    QString m_path; // as set; empty when the file could not be opened
    QString m_openedPath; // as last opened by getMpegInfo()
    qint64 m_fileSizeBytes = 0;
    qint64 m_bitRateKbps = 0;
    qint64 m_frequencyHz = 0;
    int m_version = 0; // 1 or 2; MPEG 2.5 (both version bits clear) counts as 2, as the tables of 2 apply
    int m_layer = 0; // 0 for the reserved layer code
    qint64 m_headerOffset = 0;
    QString m_mode;
    QString m_emphasis;
    QString m_original;
    QString m_copyrighted;
    QString m_private;
    QString m_crcs;
    qint64 m_seconds = 0;
    qint64 m_frameSizeBytes = 0;
    qint64 m_frames = 0;
    QString m_padding;
    QString m_bitStr;
};

} // namespace vindaro::info
