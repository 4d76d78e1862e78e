#include "VcdImage.h"

#include <QFile>
#include <QProcess>
#include <QStringList>

namespace vindaro::testing {

namespace {

constexpr qint64 kRaw = 2352;
constexpr qint64 kPayload = 2324;
constexpr qint64 kPayloadOffset = 24; // sync 12, header 4, sub-header 8

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

int runProgram(const QString& program, const QStringList& arguments, QByteArray* output, QByteArray* errors,
    const QString& folder)
{
    QProcess p;
    p.setWorkingDirectory(folder);
    p.start(program, arguments);
    if (!p.waitForStarted(10000) || !p.waitForFinished(120000))
        return -1;
    if (output)
        *output = p.readAllStandardOutput();
    if (errors)
        *errors = p.readAllStandardError();
    return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
}

VcdImage VcdImage::make(const QString& folder)
{
    VcdImage image;
    image.folder = folder;
    image.clip = folder + QStringLiteral("/clip.mpg");
    image.cue = folder + QStringLiteral("/vcd.cue");
    image.bin = folder + QStringLiteral("/vcd.bin");
    const QString notesPath = folder + QStringLiteral("/notes.txt");
    for (int i = 0; i < 10000; ++i)
        image.notes.append(char('a' + (i * 7 + i / 26) % 26));
    QFile notes(notesPath);
    if (!notes.open(QIODevice::WriteOnly) || notes.write(image.notes) != image.notes.size()) {
        image.error = QStringLiteral("cannot write ") + notesPath;
        return image;
    }
    notes.close();
    QByteArray errors;
    const int encoded = runProgram(QStringLiteral("ffmpeg"),
        {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-nostdin"), QStringLiteral("-f"),
            QStringLiteral("lavfi"), QStringLiteral("-i"),
            QStringLiteral("testsrc=duration=4:size=352x240:rate=29.97"), QStringLiteral("-f"),
            QStringLiteral("lavfi"), QStringLiteral("-i"), QStringLiteral("sine=duration=4"),
            QStringLiteral("-target"), QStringLiteral("ntsc-vcd"), QStringLiteral("-y"), image.clip},
        nullptr, &errors);
    if (encoded != 0) {
        image.error = QStringLiteral("ffmpeg failed (is it installed? tools/setup.sh installs it): ")
            + QString::fromUtf8(errors);
        return image;
    }
    const int written = runProgram(QStringLiteral("vcdimager"),
        {QStringLiteral("-q"), QStringLiteral("-t"), QStringLiteral("vcd2"),
            QStringLiteral("--cue-file=vcd.cue"), QStringLiteral("--bin-file=vcd.bin"),
            QStringLiteral("--add-file=") + notesPath + QStringLiteral(",README.TXT"), image.clip},
        nullptr, &errors, folder); // the cue names its .bin without a folder: the two may be moved together
    if (written != 0) {
        image.error = QStringLiteral("vcdimager failed (is it installed? tools/setup.sh installs it): ")
            + QString::fromUtf8(errors);
        return image;
    }
    image.clipBytes = readAll(image.clip);
    if (image.clipBytes.isEmpty() || image.clipBytes.size() % kPayload != 0)
        image.error = QStringLiteral("the clip is not made of 2,324-byte packs");
    return image;
}

QByteArray VcdImage::rawSector(qint64 lsn) const
{
    QFile f(bin);
    if (!f.open(QIODevice::ReadOnly) || !f.seek(lsn * kRaw))
        return {};
    return f.read(kRaw);
}

QByteArray VcdImage::payloadOf(qint64 lsn, qint64 sectors) const
{
    QByteArray payload;
    for (qint64 i = 0; i < sectors; ++i)
        payload += rawSector(lsn + i).mid(kPayloadOffset, kPayload);
    return payload;
}

bool VcdImage::damagePayload(qint64 lsn, qint64 offsetInPayload, int count) const
{
    QFile f(bin);
    if (!f.open(QIODevice::ReadWrite) || !f.seek(lsn * kRaw + kPayloadOffset + offsetInPayload))
        return false;
    QByteArray bytes = f.read(count);
    for (char& c : bytes)
        c = char(~c);
    return f.seek(lsn * kRaw + kPayloadOffset + offsetInPayload) && f.write(bytes) == count;
}

} // namespace vindaro::testing
