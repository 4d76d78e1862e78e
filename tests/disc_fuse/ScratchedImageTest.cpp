// vindaro-copy from a Video CD image whose file system fails the reads of chosen sectors with EIO, as a
// damaged disk under an image does: the sectors are skipped and logged, everything read is the disc's own.
#include "FuseMount.h"
#include "disc/Disc.h"
#include "fakes/VcdImage.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using vindaro::testing::VcdImage;

constexpr qint64 kPayload = 2324;
constexpr qint64 kRaw = 2352;

TEST(ScratchedImage, UnreadableSectorsAreSkippedAndLogged)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString backing = dir.filePath(QStringLiteral("backing"));
    const QString mountPoint = dir.filePath(QStringLiteral("mnt"));
    ASSERT_TRUE(QDir().mkpath(backing) && QDir().mkpath(mountPoint));
    const VcdImage image = VcdImage::make(backing);
    ASSERT_TRUE(image.made()) << image.error.toStdString();
    vindaro::disc::DiscFailure failure;
    const auto disc = vindaro::disc::Disc::open(image.cue, failure);
    ASSERT_TRUE(disc) << failure.message.toStdString();
    const auto track = disc->find(QStringLiteral("/MPEGAV/AVSEQ01.DAT"), failure);
    ASSERT_TRUE(track.has_value());

    // Ten bytes in the middle of each chosen sector cannot be read.
    const QList<qint64> scratched = {50, 51, 300};
    QStringList ranges;
    for (qint64 sector : scratched)
        ranges << QStringLiteral("%1:10").arg((track->lsn + sector) * kRaw + 1000);
    vindaro::testing::FuseMount fs(
        QStringLiteral(SCRATCHED_IMAGE_FS), mountPoint, {backing, ranges.join(',')});
    VINDARO_SKIP_UNLESS_MOUNTED(fs);

    const QString copy = dir.filePath(QStringLiteral("AVSEQ01.DAT"));
    QByteArray out;
    QByteArray err;
    const int exitCode = vindaro::testing::runProgram(QStringLiteral(VINDARO_COPY),
        {QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("1"), QStringLiteral("-s"),
            QStringLiteral("1"), fs.path(QStringLiteral("vcd.cue:/MPEGAV/AVSEQ01.DAT")), copy},
        &out, &err);
    const QString log = QString::fromUtf8(out);
    EXPECT_EQ(exitCode, 1) << log.toStdString() << err.toStdString();
    for (qint64 sector : {qint64(50), qint64(300)}) {
        EXPECT_TRUE(log.contains(QStringLiteral("扇区读不出：光盘第%1扇区").arg(track->lsn + sector)))
            << log.toStdString();
    }
    EXPECT_TRUE(log.contains(QStringLiteral("映像文件读取失败"))) << log.toStdString();

    QFile copied(copy);
    ASSERT_TRUE(copied.open(QIODevice::ReadOnly));
    const QByteArray bytes = copied.readAll();
    const QByteArray reference = image.payloadOf(track->lsn, track->sectors);
    ASSERT_EQ(bytes.size(), reference.size());
    qint64 differing = 0;
    for (qint64 i = 0; i < bytes.size(); ++i) {
        if (bytes[i] != reference[i]) {
            ++differing;
            ASSERT_EQ(bytes[i], '\0') << "byte " << i; // left out, never made up
        }
    }
    for (qint64 sector : scratched) {
        EXPECT_TRUE(bytes.mid(sector * kPayload, kPayload) == QByteArray(kPayload, '\0'))
            << "sector " << sector;
    }
    EXPECT_GT(differing, 0);
}

} // namespace
