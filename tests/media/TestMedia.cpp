#include "TestMedia.h"

#include <QFile>
#include <QProcess>

namespace vindaro::testing {

bool makeClip(const ClipRecipe& recipe, const QString& path, QString* error)
{
    // Audio in buffers of a hundredth of a second, as long as the picture.
    const int audioBuffers = static_cast<int>(recipe.seconds() * 100);
    const QString pipeline
        = QStringLiteral(
            "videotestsrc num-buffers=%1 pattern=ball ! video/x-raw,width=%2,height=%3,framerate=%4 "
            "! videoconvert ! mpeg2enc format=%5 disable-encode-retries=true b-per-refframe=0 "
            "! mpegvideoparse ! mpegpsmux name=mux ! filesink location=%6 "
            "audiotestsrc num-buffers=%7 samplesperbuffer=%8 ! audioconvert "
            "! audio/x-raw,rate=%9,channels=2 ! twolamemp2enc ! mpegaudioparse ! mux.")
              .arg(recipe.frames)
              .arg(recipe.picture.width())
              .arg(recipe.picture.height())
              .arg(QStringLiteral("%1/%2").arg(recipe.rateNumerator).arg(recipe.rateDenominator))
              .arg(recipe.mpegVersion == 1 ? 0 : 3) // generic MPEG-1, generic MPEG-2
              .arg(path)
              .arg(audioBuffers)
              .arg(recipe.audioRate / 100)
              .arg(recipe.audioRate);
    QProcess encoder;
    encoder.setProcessChannelMode(QProcess::MergedChannels);
    encoder.start(QStringLiteral("gst-launch-1.0"),
        QStringList{QStringLiteral("-q")} + QProcess::splitCommand(pipeline));
    const bool done = encoder.waitForFinished(60000) && encoder.exitStatus() == QProcess::NormalExit
        && encoder.exitCode() == 0 && QFile(path).size() > 0;
    if (!done && error)
        *error = encoder.errorString() + QLatin1Char(' ') + QString::fromLocal8Bit(encoder.readAll());
    return done;
}

bool copyWithZeroedStretches(const QString& source, const QString& copy, const QList<ZeroStretch>& stretches)
{
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly))
        return false;
    QByteArray bytes = in.readAll();
    for (const ZeroStretch& stretch : stretches) {
        const qint64 start
            = static_cast<qint64>(stretch.startShare * static_cast<double>(bytes.size())) / 2048 * 2048;
        const qint64 length = qMin(stretch.bytes, bytes.size() - start);
        bytes.replace(start, length, QByteArray(length, '\0'));
    }
    QFile out(copy);
    return out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size();
}

} // namespace vindaro::testing
