#include "copy/DamageReport.h"
#include "ProgramStream.h"
#include "copy/RescueMessages.h"
#include "fakes/MemoryFileLayer.h"
#include "info/GoldenText.h"

#include <gtest/gtest.h>

using namespace vindaro::copy;
using vindaro::testing::MemoryFileLayer;

namespace {

constexpr qint64 kSecond = 27'000'000;
constexpr int kPack = 2324; // a Video CD's packs, 75 a second
const QString kSource = QStringLiteral("/media/cdrom/MPEGAV/AVSEQ01.DAT");
const QString kDest = QStringLiteral("/home/u/video/AVSEQ01.DAT");

// A batch of four files as a copy with read faults leaves it: the track lost three stretches (the first
// bytes, one in the middle, the end), the text file one, the second track nothing, the fourth file was
// never reached.
struct Batch
{
    MemoryFileLayer files;
    std::vector<DamageInput> copies;
    QStringList notReached{QStringLiteral("/media/cdrom/MPEGAV/AVSEQ03.DAT")};

    Batch()
    {
        const qint64 size = 3000 * kPack; // 40 s
        QByteArray track = vindaro::testing::programStream(false, 3000, kPack, 5 * kSecond, kSecond / 75);
        RescueMap map(size, RescueState::Copied);
        const struct
        {
            qint64 offset;
            qint64 length;
            RescueState state;
        } holes[] = {
            {0, 4096, RescueState::Bad},
            {1'000'000, 300'000, RescueState::Untried}, // skipped, with bad sectors at its start
            {1'000'000, 6144, RescueState::Bad},
            {size - 50'000, 50'000, RescueState::Untried}, // a skip past the end: the copy is short
        };
        for (const auto& h : holes) {
            map.mark(h.offset, h.length, h.state);
            track.replace(int(h.offset), int(h.length), QByteArray(int(h.length), '\0'));
        }
        track.chop(50'000);
        files.put(kDest, track);
        copies.push_back({kSource, kDest, size, map});

        RescueMap text(10'000, RescueState::Copied);
        text.mark(2048, 2048, RescueState::NonTrimmed);
        files.put(QStringLiteral("/home/u/video/notes.txt"), QByteArray(10'000, 'x'));
        copies.push_back({QStringLiteral("/media/cdrom/notes.txt"), QStringLiteral("/home/u/video/notes.txt"),
            10'000, text});
        copies.push_back({QStringLiteral("/media/cdrom/MPEGAV/AVSEQ02.DAT"),
            QStringLiteral("/home/u/video/AVSEQ02.DAT"), 100, RescueMap(100, RescueState::Copied)});
    }
};

TEST(DamageReport, NamesTheDamagedFilesTheirHolesAndThePlayingTimeAroundThem)
{
    Batch batch;
    const DamageReport report = makeDamageReport(batch.copies, batch.notReached, &batch.files);

    ASSERT_EQ(report.files.size(), 2u); // the whole copy is left out
    const DamagedFile& track = report.files[0];
    EXPECT_EQ(track.source, kSource);
    EXPECT_TRUE(track.timed);
    EXPECT_EQ(track.badBytes, 4096 + 6144);
    EXPECT_EQ(track.skippedBytes, 300'000 - 6144 + 50'000);
    const auto facts = [](const DamageHole& h) {
        return std::make_tuple(
            h.offset, h.length, h.badBytes, h.skippedBytes, h.fromSecond, h.toSecond, h.atEnd);
    };
    std::vector<decltype(facts(DamageHole{}))> holes;
    for (const DamageHole& h : track.holes)
        holes.push_back(facts(h));
    // Packs around each hole: 1,000,000 / 2,324 -> pack 430 (5.73 s); 1,300,000 -> pack 560 (7.47 s);
    // the end - 50,000 -> pack 2978 (39.7 s).
    const qint64 end = 3000 * kPack;
    EXPECT_EQ(holes,
        (decltype(holes){{0, 4096, 4096, 0, 0, 1, false},
            {1'000'000, 300'000, 6144, 300'000 - 6144, 5, 8, false},
            {end - 50'000, 50'000, 0, 50'000, 39, std::nullopt, true}}));

    const DamagedFile& text = report.files[1];
    EXPECT_FALSE(text.timed);
    EXPECT_EQ(text.badBytes, 2048);
    ASSERT_EQ(text.holes.size(), 1u);
    EXPECT_FALSE(text.holes[0].fromSecond);
    EXPECT_EQ(report.notReached, batch.notReached);
    EXPECT_EQ(report.missingBytes(), track.missingBytes() + 2048);

    // Without a file layer, or when the destination is gone, the report has no times but the same holes.
    const DamageReport untimed = makeDamageReport(batch.copies, {}, nullptr);
    EXPECT_FALSE(untimed.files[0].timed);
    EXPECT_EQ(untimed.files[0].holes.size(), 3u);
    batch.files.remove(kDest);
    EXPECT_FALSE(makeDamageReport(batch.copies, {}, &batch.files).files[0].timed);
}

// Every text of the rescue, checked once against a golden file (VINDARO_UPDATE_GOLDEN=1 writes it anew:
// review the diff). Each broken map is refused with its own kind of fault, and the text names its line and
// figures.
TEST(RescueMessages, EveryTextIsTheGoldenOne)
{
    vindaro::testing::GoldenText golden;
    const struct
    {
        const char* name;
        const char* text;
        qint64 sourceSize;
        MapfileError error;
    } maps[] = {
        {"no status line", "", 10, MapfileError::NoStatusLine},
        {"only comments", "# only\n\n", 10, MapfileError::NoStatusLine},
        {"bad status line", "0 x\n", 10, MapfileError::BadStatusLine},
        {"pass 0", "0 ? 0\n", 10, MapfileError::BadStatusLine},
        {"block for status", "0x0 0xA +\n", 10, MapfileError::BadStatusLine},
        {"bad block line", "0 ?\n0 10\n", 10, MapfileError::BadBlockLine},
        {"bad hex", "0 ?\n0 0xG +\n", 10, MapfileError::BadBlockLine},
        {"negative", "0 ?\n0 -10 +\n", 10, MapfileError::BadBlockLine},
        {"not octal", "0 ?\n0 09 +\n", 10, MapfileError::BadBlockLine},
        {"past 64 bits", "0 ?\n0 99999999999999999999 +\n", 10, MapfileError::BadBlockLine},
        {"extra field", "0 ?\n0 10 + extra\n", 10, MapfileError::BadBlockLine},
        {"double status", "0 ?\n0 10 ++\n", 10, MapfileError::BadBlockLine},
        {"bad block status", "0 ?\n0 10 x\n", 10, MapfileError::BadBlockStatus},
        {"empty block", "0 ?\n0 0 +\n", 10, MapfileError::EmptyBlock},
        {"not from zero", "0 ?\n5 5 +\n", 10, MapfileError::NotFromZero},
        {"gap", "0 ?\n0 4096 +\n6144 4 -\n", 10, MapfileError::Gap},
        {"overlap", "0 ?\n0 6 +\n4 6 -\n", 10, MapfileError::Overlap},
        {"unsorted", "0 ?\n0 4 +\n4 4 -\n2 2 ?\n", 10, MapfileError::Unsorted},
        {"too big", "0 ?\n0 4 +\n4 0x7FFFFFFFFFFFFFFF -\n", -1, MapfileError::TooBig},
        {"shorter", "0 ?\n0 1000 +\n", 1234567, MapfileError::Shorter},
        {"longer", "0 ?\n0 1234567 +\n", 1000, MapfileError::Longer},
    };
    const QString path = QStringLiteral("/home/u/a.map");
    for (const auto& m : maps) {
        const MapfileResult read = parseMapfile(m.text, m.sourceSize);
        EXPECT_EQ(read.error, m.error) << m.name;
        EXPECT_EQ(read.map, RescueMap()) << m.name;
        golden.add(QStringLiteral("mapfile ") + QLatin1String(m.name), msg::mapfileRefused(path, read));
    }
    MapfileResult unreadable;
    unreadable.error = MapfileError::Unreadable;
    unreadable.detail = QStringLiteral("No such file or directory");
    golden.add(QStringLiteral("mapfile unreadable"), msg::mapfileRefused(path, unreadable));
    MapfileResult large;
    large.error = MapfileError::TooLarge;
    large.offset = qint64(300) << 20;
    golden.add(QStringLiteral("mapfile too large"), msg::mapfileRefused(path, large));
    const vindaro::platform::MessageBox box
        = msg::mapfileRefusedNotice(path, parseMapfile("0 ?\n5 5 +\n", 10));
    golden.add(QStringLiteral("mapfile notice [") + box.title + QStringLiteral("]"), box.text);
    golden.add(QStringLiteral("mapfile write"),
        msg::mapfileWriteFailed(path, QStringLiteral("No space left on device")));
    golden.add(QStringLiteral("store no destination"), msg::mapStoreNoDestination());
    golden.add(QStringLiteral("store folder"),
        msg::mapStoreFolderFailed(QStringLiteral("/home/u/.local/state/vindaro/maps")));

    Batch batch;
    DamageReport report = makeDamageReport(batch.copies, batch.notReached, &batch.files);
    golden.add(QStringLiteral("report entry"), msg::damageReportEntry(report));
    golden.add(QStringLiteral("report text"), msg::damageReportText(report));
    golden.add(QStringLiteral("report empty"), msg::damageReportText(DamageReport{}));
    DamageReport many;
    many.files.push_back(report.files[1]);
    many.files[0].holes.resize(msg::kListedHoles + 3, many.files[0].holes[0]);
    golden.add(QStringLiteral("report many"), msg::damageReportText(many).section(QLatin1Char('\n'), -3));
    golden.check(QStringLiteral(VINDARO_GOLDEN_DIR "/rescue_messages.txt"));
}

} // namespace
