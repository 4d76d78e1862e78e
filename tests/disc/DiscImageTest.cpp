// The disc layer on real BIN/CUE Video CDs made by ffmpeg and vcdimager: the track's Form 2 payload read
// whole, damaged sectors caught by their EDC, reads bounded by the image's end, Form 1 files read as their
// bytes, and the file layer's choice between the disc and the mounted file system.
#include "disc/Disc.h"
#include "disc/DiscFile.h"
#include "disc/DiscFileLayer.h"
#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "fakes/VcdImage.h"
#include "files/FileSystem.h"
#include "platform/linux/LocalFileLayer.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <sys/stat.h>

namespace {

using namespace Qt::StringLiterals;

using namespace vindaro;
using disc::DiscFileLayer;
using vindaro::testing::VcdImage;

constexpr qint64 kPayload = 2324;

class DiscImage : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_dir = new QTemporaryDir;
        s_image = new VcdImage(VcdImage::make(s_dir->path()));
    }
    static void TearDownTestSuite()
    {
        delete s_image;
        delete s_dir;
    }
    void SetUp() override
    {
        ASSERT_TRUE(s_dir->isValid());
        ASSERT_TRUE(s_image->made()) << s_image->error.toStdString();
        volumes.add(u"/"_s, platform::kDriveFixed, u"/dev/sda1"_s, u"ext4"_s);
        layer.setLog([this](const QString& entry) { log << entry; });
    }

    // A copy of the image of the test's own, to damage or cut.
    VcdImage copyOfImage()
    {
        VcdImage copy = *s_image;
        copy.folder = scratch.path();
        copy.cue = copy.folder + u"/vcd.cue"_s;
        copy.bin = copy.folder + u"/vcd.bin"_s;
        EXPECT_TRUE(QFile::copy(s_image->cue, copy.cue));
        EXPECT_TRUE(QFile::copy(s_image->bin, copy.bin));
        QFile::setPermissions(copy.bin, QFile::ReadOwner | QFile::WriteOwner);
        return copy;
    }

    disc::DiscEntry track(const QString& cue)
    {
        disc::DiscFailure failure;
        auto opened = disc::Disc::open(cue, failure);
        EXPECT_TRUE(opened) << failure.message.toStdString();
        if (!opened)
            return {};
        const auto entry = opened->find(u"/mpegav/avseq01.dat"_s, failure);
        EXPECT_TRUE(entry.has_value()) << failure.message.toStdString();
        return entry.value_or(disc::DiscEntry{});
    }

    QByteArray readWhole(platform::RandomAccessFile& file, qint64 length, qint64 chunk)
    {
        QByteArray all(length, '\0');
        for (qint64 at = 0; at < length; at += chunk) {
            const platform::IoResult r = file.readAt(at, all.data() + at, std::min(chunk, length - at));
            EXPECT_TRUE(r.ok()) << "at " << at << ": " << r.description.toStdString();
        }
        return all;
    }

    static QTemporaryDir* s_dir;
    static VcdImage* s_image;
    QTemporaryDir scratch;
    vindaro::testing::FakeVolumes volumes;
    platform::LocalFileLayer local;
    DiscFileLayer layer{local, volumes};
    QStringList log;
};

QTemporaryDir* DiscImage::s_dir = nullptr;
VcdImage* DiscImage::s_image = nullptr;

TEST_F(DiscImage, TheTrackIsReadWholeAsItsPayload)
{
    const disc::DiscEntry entry = track(s_image->cue);
    ASSERT_TRUE(entry.isForm2());
    // What libcdio's own lister says of the file: its sector and the two sizes.
    QByteArray listing;
    ASSERT_EQ(vindaro::testing::runProgram(u"cd-info"_s,
                  {u"--no-device-info"_s, u"--cue-file"_s, s_image->cue, u"--iso9660"_s}, &listing),
        0);
    const QRegularExpressionMatch listed
        = QRegularExpression(QStringLiteral(R"(\[LSN\s+(\d+)\]\s+(\d+) \(\s*(\d+)\).*avseq01\.dat)"))
              .match(QString::fromUtf8(listing));
    ASSERT_TRUE(listed.hasMatch()) << listing.toStdString();
    EXPECT_EQ(entry.lsn, listed.captured(1).toLongLong());
    EXPECT_EQ(entry.length(), listed.captured(2).toLongLong());
    EXPECT_EQ(entry.recordedBytes, listed.captured(3).toLongLong());
    EXPECT_EQ(entry.length(), entry.sectors * kPayload);

    const QString name = s_image->cue + u":/MPEGAV/AVSEQ01.DAT"_s;
    platform::IoResult io;
    EXPECT_EQ(layer.length(name, io), entry.length());
    auto file = layer.openForReading(name, io);
    ASSERT_TRUE(file) << io.description.toStdString();
    EXPECT_EQ(file->sectorBytes(), kPayload);
    EXPECT_FALSE(file->readsAheadWell());
    const QByteArray copy = readWhole(*file, entry.length(), 10007); // chunks across sector boundaries
    EXPECT_TRUE(copy == s_image->payloadOf(entry.lsn, entry.sectors));
    const qsizetype clipAt = copy.indexOf(s_image->clipBytes);
    EXPECT_GE(clipAt, 0);
    EXPECT_EQ(clipAt % kPayload, 0);
    // At and past the end: nothing, and no error.
    char byte = 0;
    EXPECT_EQ(file->readAt(entry.length(), &byte, 1).bytes, 0);
    EXPECT_TRUE(file->readAt(entry.length() + 5000, &byte, 1).ok());
    EXPECT_TRUE(log.isEmpty());
}

TEST_F(DiscImage, AForm1FileGivesItsRecordedBytes)
{
    const QString name = s_image->cue + u":/readme.txt"_s;
    platform::IoResult io;
    ASSERT_EQ(layer.length(name, io), s_image->notes.size());
    auto file = layer.openForReading(name, io);
    ASSERT_TRUE(file) << io.description.toStdString();
    EXPECT_EQ(file->sectorBytes(), 2048);
    EXPECT_TRUE(readWhole(*file, s_image->notes.size(), 3000) == s_image->notes);
    EXPECT_EQ(file->writeAt(0, "x", 1).error, EBADF);
}

TEST_F(DiscImage, AnIsoImageHoldsOnly2048ByteSectors)
{
    // The first track's user data as an ISO image: its directory still names the Form 2 track, which lies
    // past the image's end.
    const disc::DiscEntry entry = track(s_image->cue);
    QByteArray iso;
    for (qint64 lsn = 0; lsn < entry.lsn; ++lsn)
        iso += s_image->rawSector(lsn).mid(24, 2048);
    const QString path = scratch.filePath(u"track1.iso"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(iso) == iso.size());
    file.close();

    platform::IoResult io;
    auto notes = layer.openForReading(path + u":/README.TXT"_s, io);
    ASSERT_TRUE(notes) << io.description.toStdString();
    EXPECT_TRUE(readWhole(*notes, s_image->notes.size(), 4096) == s_image->notes);

    const QString trackName = path + u":/MPEGAV/AVSEQ01.DAT"_s;
    EXPECT_EQ(layer.length(trackName, io), entry.recordedBytes);
    auto past = layer.openForReading(trackName, io);
    ASSERT_TRUE(past);
    QByteArray block(4096, '\0');
    EXPECT_EQ(past->readAt(0, block.data(), block.size()).error, EIO);
    ASSERT_EQ(log.size(), 1);
    EXPECT_TRUE(log[0].contains(u"超出光盘末尾"_s)) << log[0].toStdString();
}

TEST_F(DiscImage, DamagedSectorsFailByTheirEdcAndAreLogged)
{
    const VcdImage image = copyOfImage();
    const disc::DiscEntry entry = track(image.cue);
    ASSERT_GT(entry.sectors, 210);
    const QList<qint64> damaged = {5, 6, 200};
    for (qint64 sector : damaged)
        ASSERT_TRUE(image.damagePayload(entry.lsn + sector));

    platform::IoResult io;
    auto file = layer.openForReading(image.cue + u":/MPEGAV/AVSEQ01.DAT"_s, io);
    ASSERT_TRUE(file);
    const QByteArray reference = image.payloadOf(entry.lsn, entry.sectors);
    QByteArray sector(kPayload, '\0');
    for (qint64 s = 0; s < entry.sectors; ++s) {
        const platform::IoResult r = file->readAt(s * kPayload, sector.data(), kPayload);
        if (damaged.contains(s)) {
            EXPECT_EQ(r.error, EIO) << "sector " << s;
            EXPECT_EQ(r.bytes, 0);
        } else {
            ASSERT_TRUE(r.ok()) << "sector " << s;
            EXPECT_TRUE(sector == reference.mid(s * kPayload, kPayload)) << "sector " << s;
        }
    }
    ASSERT_EQ(log.size(), damaged.size());
    EXPECT_TRUE(
        log[0].startsWith(u"扇区读不出：光盘第%1扇区（文件位置%2字节），EDC 校验错误"_s.arg(entry.lsn + 5)
                              .arg(QLocale(QLocale::English).toString(5 * kPayload + 1))))
        << log[0].toStdString();

    // A read across the damage delivers the sectors before it.
    QByteArray block(10 * kPayload, '\0');
    const platform::IoResult r = file->readAt(100, block.data(), block.size());
    EXPECT_EQ(r.error, EIO);
    EXPECT_EQ(r.bytes, 5 * kPayload - 100);
    EXPECT_TRUE(block.left(r.bytes) == reference.mid(100, r.bytes));
}

TEST_F(DiscImage, ReadsStopAtTheEndOfACutImage)
{
    const VcdImage image = copyOfImage();
    const disc::DiscEntry entry = track(image.cue);
    const qint64 kept = 100;
    ASSERT_TRUE(QFile::resize(image.bin, (entry.lsn + kept) * 2352 + 1000)); // half a sector more

    platform::IoResult io;
    const QString name = image.cue + u":/MPEGAV/AVSEQ01.DAT"_s;
    EXPECT_EQ(layer.length(name, io), entry.length()); // as the directory says
    auto file = layer.openForReading(name, io);
    ASSERT_TRUE(file);
    QByteArray block(3 * kPayload, '\0');
    const platform::IoResult r = file->readAt((kept - 1) * kPayload, block.data(), block.size());
    EXPECT_EQ(r.error, EIO);
    EXPECT_EQ(r.bytes, kPayload);
    ASSERT_EQ(log.size(), 1);
    EXPECT_TRUE(log[0].contains(u"超出光盘末尾"_s)) << log[0].toStdString();
}

TEST_F(DiscImage, MountedDiscsAreReadThroughTheDiscForForm2Files)
{
    // The kernel's view of the mounted disc: its 2,048-byte reading of the track, and README.TXT.
    const disc::DiscEntry entry = track(s_image->cue);
    const QString mount = scratch.path() + u"/cdrom"_s;
    ASSERT_TRUE(QDir().mkpath(mount + u"/mpegav"_s));
    const auto write = [](const QString& path, const QByteArray& bytes) {
        QFile f(path);
        return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
    };
    const QByteArray kernelView(entry.recordedBytes, 'K');
    const QByteArray localNotes(s_image->notes.size(), 'L');
    ASSERT_TRUE(write(mount + u"/mpegav/avseq01.dat"_s, kernelView));
    ASSERT_TRUE(write(mount + u"/readme.txt"_s, localNotes));
    ASSERT_TRUE(write(mount + u"/extra.txt"_s, "not on the disc"));
    volumes.add(mount, platform::kDriveCdRom, s_image->cue, u"iso9660"_s);

    platform::IoResult io;
    const QString track = mount + u"/mpegav/avseq01.dat"_s;
    EXPECT_EQ(layer.length(track, io), entry.length());
    auto file = layer.openForReading(track, io);
    ASSERT_TRUE(file);
    EXPECT_TRUE(readWhole(*file, entry.length(), 65536) == s_image->payloadOf(entry.lsn, entry.sectors));

    // The file list and the property window show what the copy will hold.
    vindaro::testing::FakeShell shell;
    const files::FileSystem fs(volumes, shell);
    EXPECT_EQ(fs.GetFileSize(track), entry.length());
    EXPECT_EQ(fs.GetFileSize(mount + u"/readme.txt"_s), localNotes.size());

    // Form 1 and files the disc does not know keep the mounted file system's bytes.
    for (const auto& [name, bytes] : {std::pair{u"/readme.txt"_s, localNotes},
             std::pair{u"/extra.txt"_s, QByteArray("not on the disc")}}) {
        EXPECT_EQ(layer.length(mount + name, io), bytes.size()) << name.toStdString();
        auto plain = layer.openForReading(mount + name, io);
        ASSERT_TRUE(plain);
        EXPECT_EQ(dynamic_cast<disc::DiscFile*>(plain.get()), nullptr); // the plain file, not the disc's
        EXPECT_TRUE(readWhole(*plain, bytes.size(), 4096) == bytes) << name.toStdString();
    }
    EXPECT_TRUE(log.isEmpty());
}

TEST_F(DiscImage, DiscsThatCannotBeOpenedAreSaidSoAndNothingIsRead)
{
    const QString broken = scratch.path() + u"/broken.cue"_s;
    {
        QFile f(broken);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("this is no cue sheet\n");
    }
    const QString mount = scratch.path() + u"/cdrom"_s;
    ASSERT_TRUE(QDir().mkpath(mount + u"/MPEGAV"_s));
    {
        QFile f(mount + u"/MPEGAV/AVSEQ01.DAT"_s);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(QByteArray(4096, 'K'));
    }
    volumes.add(mount, platform::kDriveCdRom, broken, u"iso9660"_s);

    // Every text of the disc layer's failures to open, once; the sector entries are checked where they occur.
    const struct
    {
        QString source;
        int error;
        QString text;
    } rows[] = {
        {broken + u":/MPEGAV/AVSEQ01.DAT"_s, EMEDIUMTYPE,
            u"无法打开光盘映像“%1”：不是可识别的光盘映像。"_s.arg(broken)},
        // A Video CD track on a mounted disc that cannot be opened is not read plainly.
        {mount + u"/MPEGAV/AVSEQ01.DAT"_s, EMEDIUMTYPE,
            u"无法打开光盘映像“%1”：不是可识别的光盘映像。"_s.arg(broken)},
        {s_image->cue + u":/MPEGAV/AVSEQ99.DAT"_s, ENOENT,
            u"光盘“%1”上没有文件“/MPEGAV/AVSEQ99.DAT”。"_s.arg(s_image->cue)},
        {s_image->cue + u":/MPEGAV"_s, EISDIR,
            u"光盘“%1”上的“/MPEGAV”是文件夹，不是文件。"_s.arg(s_image->cue)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.source.toStdString());
        platform::IoResult io;
        EXPECT_EQ(layer.length(row.source, io), -1);
        EXPECT_EQ(io.error, row.error);
        EXPECT_EQ(io.description.toStdString(), row.text.toStdString());
        EXPECT_FALSE(layer.openForReading(row.source, io));
        EXPECT_EQ(layer.problemWith(row.source), io.description);
        EXPECT_EQ(layer.exists(row.source), row.source.startsWith(mount));
    }
    // Each failure is logged once while it stays the same.
    EXPECT_EQ(log.size(), 3) << log.join(QLatin1Char('\n')).toStdString();
}

} // namespace
