// The disc layer's decisions without a disc: the EDC check of Mode 2 and raw sectors, the sense-data table
// that judges a failed READ CD, and how "DEVICE_OR_IMAGE:/PATH" names are split.
#include "disc/Disc.h"
#include "disc/DiscSource.h"
#include "disc/Sectors.h"
#include "disc/SenseDecision.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <QHash>

#include <algorithm>
#include <cerrno>

namespace {

using namespace vindaro::disc;

// An empty Form 2 sector as vcdimager writes it after a track (sub-header 00 00 20 00 twice, payload all
// zero), with the EDC it records: 0xBEB0133F, stored little-endian.
QByteArray emptyForm2Sector()
{
    QByteArray s(kMode2SectorBytes, '\0');
    s[2] = s[6] = '\x20';
    s[2332] = '\x3F';
    s[2333] = '\x13';
    s[2334] = '\xB0';
    s[2335] = '\xBE';
    return s;
}

TEST(SectorCheck, KnownEdcPassesAndAnyChangedByteFails)
{
    const QByteArray good = emptyForm2Sector();
    const Mode2Sector s = inspectMode2Sector(good.constData());
    EXPECT_TRUE(s.form2);
    EXPECT_TRUE(s.edcRecorded);
    EXPECT_TRUE(s.good);
    for (const int at : {0, 7, 8, 1200, 2331, 2335}) {
        QByteArray damaged = good;
        damaged[at] = char(damaged[at] ^ 0x01);
        EXPECT_FALSE(inspectMode2Sector(damaged.constData()).good) << "byte " << at;
    }

    // Form 2 without an EDC is accepted; the same bytes read as Form 1 (submode bit 5 clear) have their EDC
    // at 2056, which is not zero-exempt.
    QByteArray noEdc(kMode2SectorBytes, '\x55');
    noEdc[2] = noEdc[6] = '\x20';
    noEdc.replace(2332, 4, QByteArray(4, '\0'));
    EXPECT_FALSE(inspectMode2Sector(noEdc.constData()).edcRecorded);
    EXPECT_TRUE(inspectMode2Sector(noEdc.constData()).good);
    noEdc[2] = noEdc[6] = '\x08';
    EXPECT_FALSE(inspectMode2Sector(noEdc.constData()).form2);
    EXPECT_FALSE(inspectMode2Sector(noEdc.constData()).good);
}

TEST(SectorCheck, RawSectorsGiveUserDataOnlyForMode1AndForm1)
{
    QByteArray raw(kRawSectorBytes, '\0');
    raw[15] = 2; // Mode 2
    raw.replace(16, int(kMode2SectorBytes), emptyForm2Sector());
    qint64 offset = -1;
    EXPECT_EQ(inspectRawDataSector(raw.constData(), offset), DataSector::NotData); // Form 2
    raw[15] = 0; // an empty sector
    EXPECT_EQ(inspectRawDataSector(raw.constData(), offset), DataSector::NotData);
    raw[15] = 1; // Mode 1 with an EDC that cannot match
    raw[2064] = 1;
    EXPECT_EQ(inspectRawDataSector(raw.constData(), offset), DataSector::EdcMismatch);
}

QByteArray fixedSense(int key, int asc, int ascq)
{
    QByteArray b(18, '\0');
    b[0] = '\x70';
    b[2] = char(key);
    b[7] = 10;
    b[12] = char(asc);
    b[13] = char(ascq);
    return b;
}

struct SenseRow
{
    int key, asc, ascq;
    ReadFailure failure;
    int error;
    int retries;
};

TEST(SenseData, JudgesTheFailure)
{
    const SenseRow rows[] = {{0x3, 0x11, 0x05, ReadFailure::MediumError, EIO, 0}, // L-EC uncorrectable
        {0x3, 0x02, 0x00, ReadFailure::MediumError, EIO, 0}, // no seek complete
        {0x4, 0x09, 0x01, ReadFailure::MediumError, EIO, 0}, // tracking servo failure
        {0x5, 0x64, 0x00, ReadFailure::IllegalMode, EIO, 0}, // illegal mode for this track
        {0x5, 0x21, 0x00, ReadFailure::OutOfRange, EIO, 0}, // LBA out of range
        {0x5, 0x63, 0x00, ReadFailure::OutOfRange, EIO, 0}, // end of user area
        {0x8, 0x00, 0x00, ReadFailure::OutOfRange, EIO, 0}, // blank check
        {0x5, 0x24, 0x00, ReadFailure::Unsupported, EOPNOTSUPP, 0}, // invalid field in CDB
        {0x5, 0x20, 0x00, ReadFailure::Unsupported, EOPNOTSUPP, 0}, // invalid opcode
        {0x5, 0x1A, 0x00, ReadFailure::Unknown, EIO, 0}, // parameter list length error
        {0x2, 0x3A, 0x01, ReadFailure::NoDisc, ENOMEDIUM, 0}, // tray closed, no disc
        {0x2, 0x04, 0x01, ReadFailure::Transient, EIO, 2}, // becoming ready
        {0x2, 0x04, 0x00, ReadFailure::NoDisc, ENOMEDIUM, 0}, // not ready, cause not reportable
        {0x6, 0x28, 0x00, ReadFailure::DiscChanged, ENOMEDIUM, 0}, // a disc was changed
        {0x6, 0x29, 0x00, ReadFailure::Transient, EIO, 2}, // power on or reset
        {0xB, 0x00, 0x00, ReadFailure::Transient, EIO, 2}, // aborted command
        {0x1, 0x18, 0x00, ReadFailure::Recovered, 0, 0}}; // corrected with retries
    for (const SenseRow& row : rows) {
        SCOPED_TRACE(::testing::Message() << std::hex << row.key << "/" << row.asc << "/" << row.ascq);
        const QByteArray bytes = fixedSense(row.key, row.asc, row.ascq);
        const SenseData sense
            = parseSense(reinterpret_cast<const quint8*>(bytes.constData()), int(bytes.size()));
        ASSERT_TRUE(sense.valid);
        const ReadVerdict v = readVerdict(sense);
        EXPECT_EQ(v.failure, row.failure);
        EXPECT_EQ(v.error, row.error);
        EXPECT_EQ(v.retries, row.retries);
    }
}

TEST(SenseData, DescriptorFormatAndMissingSense)
{
    const quint8 descriptor[8] = {0x72, 0x03, 0x11, 0x00, 0, 0, 0, 0};
    const SenseData d = parseSense(descriptor, 8);
    EXPECT_TRUE(d.valid);
    EXPECT_EQ(classifySense(d), ReadFailure::MediumError);
    EXPECT_EQ(senseText(d), QStringLiteral("介质错误（3/11/00）"));

    const quint8 shortFixed[8] = {0x70, 0, 0x03, 0, 0, 0, 0, 0}; // fixed format without its codes
    EXPECT_FALSE(parseSense(shortFixed, 8).valid);
    // Nothing from the drive (a timeout): an unreadable sector, not a retry that could take as long again.
    EXPECT_EQ(readVerdict(SenseData{}).failure, ReadFailure::Unknown);
    EXPECT_EQ(readVerdict(SenseData{}).error, EIO);
    EXPECT_EQ(readVerdict(SenseData{}).retries, 0);
}

// A drive that fails chosen sectors with chosen sense data, a number of times or for good, and counts the
// commands it is given. A good sector's block holds its LSN's low byte.
struct ScriptedDrive
{
    struct Bad
    {
        SenseRow sense;
        int failures; // -1: for good
    };
    QHash<qint64, Bad> bad;
    int commands = 0;
    SenseData last;

    bool read(qint64 lsn, qint64 count, char* out)
    {
        ++commands;
        for (qint64 at = lsn; at < lsn + count; ++at) {
            const auto it = bad.find(at);
            if (it != bad.end() && it->failures != 0) {
                if (count == 1 && it->failures > 0)
                    --it->failures;
                last = SenseData{true, it->sense.key, it->sense.asc, it->sense.ascq};
                if (last.key == 0x1)
                    fill(lsn, count, out); // a recovered error comes with its data
                return false;
            }
        }
        fill(lsn, count, out);
        return true;
    }
    static void fill(qint64 lsn, qint64 count, char* out)
    {
        for (qint64 at = lsn; at < lsn + count; ++at)
            std::fill(out + (at - lsn) * 4, out + (at - lsn + 1) * 4, char(at & 0xFF));
    }
};

TEST(DriveReads, FollowTheVerdicts)
{
    const struct
    {
        const char* what;
        qint64 badSector; // -1: none
        SenseRow sense;
        int failures;
        qint64 count;
        qint64 sectors; // read whole
        int error;
        int commands;
        qint64 endLsn; // after the read
    } rows[] = {// 40 sectors in two commands of 32 and 8.
        {"clean", -1, {}, 0, 40, 40, 0, 2, -1},
        // The command of 10 fails, then one by one: 5 good, the bad one once (the drive has retried).
        {"medium error", 5, {0x3, 0x11, 0x05, {}, 0, 0}, -1, 10, 5, EIO, 7, -1},
        {"illegal mode", 0, {0x5, 0x64, 0x00, {}, 0, 0}, -1, 10, 0, EIO, 2, -1},
        // Becoming ready: asked again twice, then read; the rest one by one.
        {"passing", 5, {0x2, 0x04, 0x01, {}, 0, 0}, 2, 10, 10, 0, 13, -1},
        {"not passing", 5, {0x2, 0x04, 0x01, {}, 0, 0}, -1, 10, 5, EIO, 9, -1},
        {"past the end", 7, {0x5, 0x21, 0x00, {}, 0, 0}, -1, 10, 7, EIO, 9, 7},
        {"corrected", 3, {0x1, 0x18, 0x00, {}, 0, 0}, -1, 10, 10, 0, 11, -1},
        {"no disc", 0, {0x2, 0x3A, 0x00, {}, 0, 0}, -1, 10, 0, ENOMEDIUM, 2, -1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        constexpr qint64 kFirst = 1000;
        ScriptedDrive drive;
        if (row.badSector >= 0)
            drive.bad.insert(kFirst + row.badSector, ScriptedDrive::Bad{row.sense, row.failures});
        QByteArray out(row.count * 4, '\0');
        qint64 endLsn = kFirst + 5000;
        const SectorRead read = readThroughDrive(
            kFirst, row.count, 4, out.data(),
            [&](qint64 lsn, qint64 count, char* to) { return drive.read(lsn, count, to); },
            [&] { return drive.last; }, endLsn);
        EXPECT_EQ(read.sectors, row.sectors);
        EXPECT_EQ(read.error, row.error);
        EXPECT_EQ(drive.commands, row.commands);
        EXPECT_EQ(endLsn, row.endLsn < 0 ? kFirst + 5000 : kFirst + row.endLsn);
        for (qint64 s = 0; s < read.sectors; ++s)
            EXPECT_EQ(out[s * 4 + 3], char((kFirst + s) & 0xFF)) << "sector " << s;
    }
}

TEST(DiscFileNames, SplitAtTheFirstDiscThatExists)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString root = dir.path();
    for (const char* name : {"/movie.cue", "/odd:", "/plain.txt"}) {
        QFile f(root + QLatin1String(name));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    }
    ASSERT_TRUE(QDir(root).mkdir(QStringLiteral("a:")));
    {
        QFile local(root + QStringLiteral("/a:/x.dat")); // a local file whose path holds ":/"
        ASSERT_TRUE(local.open(QIODevice::WriteOnly));
    }

    const auto split = parseDiscFileName(root + QStringLiteral("/movie.cue:/mpegav/../MPEGAV/AVSEQ01.DAT"));
    ASSERT_TRUE(split.has_value());
    EXPECT_EQ(split->disc, root + QStringLiteral("/movie.cue"));
    EXPECT_EQ(split->path, QStringLiteral("/MPEGAV/AVSEQ01.DAT"));

    EXPECT_FALSE(parseDiscFileName(root + QStringLiteral("/a:/x.dat"))); // the local file itself
    EXPECT_FALSE(parseDiscFileName(root + QStringLiteral("/odd:/x.dat"))); // "odd:" is no disc
    EXPECT_FALSE(parseDiscFileName(root + QStringLiteral("/plain.txt:/x")));
    EXPECT_FALSE(parseDiscFileName(root + QStringLiteral("/missing.cue:/x")));
}

} // namespace
