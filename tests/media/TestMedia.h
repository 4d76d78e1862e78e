#pragma once

#include <QList>
#include <QSize>
#include <QString>

namespace vindaro::testing {

// A short MPEG program stream made by a real encoder (gst-launch-1.0 with mpeg2enc, twolame and
// mpegpsmux): MPEG-1 video as on a video CD, or MPEG-2 as on a DVD, with MPEG audio.
struct ClipRecipe
{
    int mpegVersion; // 1 or 2
    QSize picture;
    int frames;
    int rateNumerator; // frames per second as a fraction: 30000/1001 or 25/1
    int rateDenominator;
    int audioRate; // 44100 or 48000

    double seconds() const { return frames * static_cast<double>(rateDenominator) / rateNumerator; }
};

// Writes the clip to `path`; false with the encoder's complaint in `error`.
bool makeClip(const ClipRecipe& recipe, const QString& path, QString* error);

// What a rescue copy holds where the disc could not be read: zero bytes. Each stretch starts at a share of
// the file's length (rounded down to a 2,048-byte sector) and runs `bytes` long.
struct ZeroStretch
{
    double startShare;
    qint64 bytes;
};
bool copyWithZeroedStretches(const QString& source, const QString& copy, const QList<ZeroStretch>& stretches);

} // namespace vindaro::testing
