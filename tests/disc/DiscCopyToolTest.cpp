// vindaro-copy on Video CD images: the track copied whole decodes without an error, sectors whose EDC
// fails are skipped and logged while the rest stays byte for byte, a Form 1 file copies as its bytes, and
// a disc that cannot be opened is refused before anything is written.
#include "disc/Disc.h"
#include "fakes/VcdImage.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace Qt::StringLiterals;

using vindaro::testing::runProgram;
using vindaro::testing::VcdImage;

constexpr qint64 kPayload = 2324;

struct ToolRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

ToolRun copyTool(const QStringList& args)
{
    QByteArray out;
    QByteArray err;
    const int code = runProgram(QStringLiteral(VINDARO_COPY), args, &out, &err);
    return ToolRun{code, QString::fromUtf8(out), QString::fromUtf8(err)};
}

QByteArray readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

class CopyFromImage : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        image = VcdImage::make(dir.path());
        ASSERT_TRUE(image.made()) << image.error.toStdString();
        vindaro::disc::DiscFailure failure;
        auto disc = vindaro::disc::Disc::open(image.cue, failure);
        ASSERT_TRUE(disc) << failure.message.toStdString();
        const auto found = disc->find(u"/MPEGAV/AVSEQ01.DAT"_s, failure);
        ASSERT_TRUE(found.has_value());
        track = *found;
    }

    QString track01() const { return image.cue + u":/MPEGAV/AVSEQ01.DAT"_s; }

    QTemporaryDir dir;
    VcdImage image;
    vindaro::disc::DiscEntry track;
};

TEST_F(CopyFromImage, TheTrackCopiesWholeAndDecodes)
{
    const QString copy = dir.filePath(u"AVSEQ01.DAT"_s);
    const ToolRun run = copyTool({u"-q"_s, track01(), copy});
    ASSERT_EQ(run.exitCode, 0) << run.out.toStdString() << run.err.toStdString();
    const QByteArray copied = readAll(copy);
    EXPECT_EQ(copied.size(), track.sectors * kPayload);
    const qsizetype clipAt = copied.indexOf(image.clipBytes); // the clip's packs, in order, whole
    EXPECT_GE(clipAt, 0);
    EXPECT_EQ(clipAt % kPayload, 0);

    QByteArray errors;
    EXPECT_EQ(runProgram(u"ffmpeg"_s,
                  {u"-v"_s, u"error"_s, u"-nostdin"_s, u"-i"_s, copy, u"-f"_s, u"null"_s, u"-"_s}, nullptr,
                  &errors),
        0);
    EXPECT_TRUE(errors.isEmpty()) << errors.toStdString();
}

TEST_F(CopyFromImage, SectorsWithAFailingEdcAreSkippedAndLogged)
{
    const QList<qint64> damaged = {40, 41, 260};
    for (qint64 sector : damaged)
        ASSERT_TRUE(image.damagePayload(track.lsn + sector));
    const QByteArray reference = image.payloadOf(track.lsn, track.sectors);

    const QString copy = dir.filePath(u"AVSEQ01.DAT"_s);
    // Small blocks and skips: 6,144 bytes a block, 49,152 skipped for an unreadable one.
    const ToolRun run = copyTool({u"-q"_s, u"-r"_s, u"1"_s, u"-s"_s, u"1"_s, track01(), copy});
    EXPECT_EQ(run.exitCode, 1) << run.out.toStdString() << run.err.toStdString();
    for (qint64 sector : {qint64(40), qint64(260)}) {
        EXPECT_TRUE(run.out.contains(u"扇区读不出：光盘第%1扇区"_s.arg(track.lsn + sector) + u"（文件位置"_s))
            << run.out.toStdString();
    }
    EXPECT_TRUE(run.out.contains(u"EDC 校验错误"_s));
    EXPECT_TRUE(run.out.contains(u"文件跳过："_s));

    // Every byte of the copy is the disc's own or was left out (zero); no damaged sector got in, and only
    // the stretches around the damage are missing (a stretch may begin or end inside a sector).
    const QByteArray copied = readAll(copy);
    ASSERT_EQ(copied.size(), reference.size());
    qint64 missing = 0;
    for (qint64 s = 0; s < track.sectors; ++s) {
        bool whole = true;
        bool zeroWhereDifferent = true;
        bool allZero = true;
        for (qint64 i = s * kPayload; i < (s + 1) * kPayload; ++i) {
            whole = whole && copied[i] == reference[i];
            zeroWhereDifferent = zeroWhereDifferent && (copied[i] == reference[i] || copied[i] == '\0');
            allZero = allZero && copied[i] == '\0';
        }
        EXPECT_TRUE(zeroWhereDifferent) << "sector " << s;
        if (damaged.contains(s)) {
            EXPECT_TRUE(allZero) << "damaged sector " << s;
        }
        missing += whole ? 0 : 1;
    }
    // Two stretches of at most one block and one skip (6,144 + 49,152 bytes) each.
    EXPECT_LE(missing, 2 * ((6144 + 49152) / kPayload + 2));
    EXPECT_GE(missing, 3);
}

TEST_F(CopyFromImage, AForm1FileCopiesAsItsBytes)
{
    const QString copy = dir.filePath(u"README.TXT"_s);
    const ToolRun run = copyTool({u"-q"_s, image.cue + u":/README.TXT"_s, copy});
    ASSERT_EQ(run.exitCode, 0) << run.out.toStdString() << run.err.toStdString();
    EXPECT_TRUE(readAll(copy) == image.notes);
}

TEST_F(CopyFromImage, ADiscThatCannotBeOpenedIsRefusedBeforeAnythingIsWritten)
{
    const QString broken = dir.filePath(u"broken.cue"_s);
    {
        QFile f(broken);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("no cue sheet\n");
    }
    const QString copy = dir.filePath(u"copy.dat"_s);
    for (const QStringList& args : {QStringList{broken + u":/MPEGAV/AVSEQ01.DAT"_s, copy},
             QStringList{u"-t"_s, dir.filePath(u"out"_s), broken + u":/MPEGAV/AVSEQ01.DAT"_s}}) {
        const ToolRun run = copyTool(args);
        EXPECT_EQ(run.exitCode, 4) << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(u"不是可识别的光盘映像"_s)) << run.err.toStdString();
        EXPECT_FALSE(QFileInfo::exists(copy));
        EXPECT_FALSE(QFileInfo::exists(dir.filePath(u"out/AVSEQ01.DAT"_s)));
    }
}

} // namespace
