#pragma once

#include <QByteArray>
#include <QString>

namespace vindaro::testing {

// A Video CD made at test time in `folder`: ffmpeg encodes a 4-second test picture with a tone as an
// MPEG-1 clip for Video CDs, vcdimager writes it as track 2 of a BIN/CUE image (MPEGAV/AVSEQ01.DAT, Form 2
// sectors), with a 10,000-byte data file as README.TXT (Form 1 sectors on track 1). Nothing is committed:
// every test makes its own.
struct VcdImage
{
    QString folder;
    QString cue;
    QString bin;
    QString clip;
    QByteArray clipBytes; // the clip's packs, 2,324 bytes each
    QByteArray notes; // README.TXT
    QString error; // why the image could not be made; empty once it was

    static VcdImage make(const QString& folder);
    bool made() const { return error.isEmpty(); }

    // Sector `lsn` of the .bin as stored (2,352 bytes), and its 2,324 payload bytes, read straight from the
    // file without libcdio.
    QByteArray rawSector(qint64 lsn) const;
    QByteArray payloadOf(qint64 lsn, qint64 sectors) const;
    // Changes `count` payload bytes of sector `lsn` in the .bin, leaving its EDC as it was.
    bool damagePayload(qint64 lsn, qint64 offsetInPayload = 100, int count = 4) const;
};

// Runs a program (in `folder` when given); its exit code, or -1 when it did not start or finish within two
// minutes.
int runProgram(const QString& program, const QStringList& arguments, QByteArray* output = nullptr,
    QByteArray* errors = nullptr, const QString& folder = {});

} // namespace vindaro::testing
