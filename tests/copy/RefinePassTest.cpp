#include "copy/RefinePass.h"
#include "fakes/FakeCopyHost.h"
#include "fakes/MemoryFileLayer.h"
#include "fakes/MemoryRescueMapStore.h"

#include <gtest/gtest.h>

#include <random>

using namespace vindaro::copy;
namespace fake = vindaro::testing;
using fake::ByteRange;
using fake::positionBytes;

namespace {

const QString kSource = QStringLiteral("/media/cdrom/VIDEO_TS/VTS_01_1.VOB");
const QString kDest = QStringLiteral("/home/u/video/a.vob");
constexpr qint64 kSector = 2048;

struct Disc
{
    qint64 sectors = 0;
    std::vector<bool> bad;
    QList<ByteRange> ranges() const
    {
        QList<ByteRange> out;
        for (qint64 s = 0; s < sectors; ++s) {
            if (!bad[size_t(s)])
                continue;
            if (!out.isEmpty() && out.last().offset + out.last().length == s * kSector)
                out.last().length += kSector;
            else
                out << ByteRange{s * kSector, kSector};
        }
        return out;
    }
};

// Scratches whose 1-3 sector runs repeat every 8 to 44 sectors, random spots and one long bad run: the
// damage of a scratched disc.
Disc scratchedDisc(qint64 sectors, unsigned seed)
{
    Disc d;
    d.sectors = sectors;
    d.bad.assign(size_t(sectors), false);
    std::mt19937 random(seed);
    const auto below = [&](qint64 n) { return qint64(random() % quint64(n)); };
    const auto run = [&](qint64 from, qint64 count) {
        for (qint64 s = std::max<qint64>(0, from); s < std::min(sectors, from + count); ++s)
            d.bad[size_t(s)] = true;
    };
    for (int scratch = 0; scratch < 3; ++scratch) {
        qint64 at = below(sectors * 8 / 10);
        for (int c = 0; c < 12; ++c) {
            run(at, 1 + below(3));
            at += 8 + 36 * at / sectors;
        }
    }
    for (int spot = 0; spot < 6; ++spot)
        run(below(sectors), 1 + below(4));
    run(sectors / 3, sectors / 64);
    return d;
}

struct Rig
{
    fake::MemoryFileLayer files;
    fake::MemoryRescueMapStore maps;
    fake::FakeCopyHost host;
    CopyState state;
    RefinePass pass{state, host, files, maps};
};

// After a copy that skipped everything around its first failed read, the refine pass reads every readable
// sector (and no bad one twice), writes only what it read where nothing was copied, and keeps failed reads
// to about two a bad run.
TEST(RefinePass, ReadsEveryReadableSectorWithFewFailedReads)
{
    for (const unsigned seed : {1u, 2u, 3u}) {
        SCOPED_TRACE(seed);
        const qint64 sectors = 4096;
        const Disc disc = scratchedDisc(sectors, seed);
        Rig rig;
        const QByteArray source = positionBytes(sectors * kSector);
        rig.files.put(kSource, source);
        rig.files.faults(kSource).badReads = disc.ranges();
        // The copy: the first quarter copied (with bytes the source does not have, so a rewrite shows), the
        // rest untried and the destination short.
        const qint64 copied = sectors / 4 * kSector + 777;
        QByteArray destination(copied, 'C');
        rig.files.put(kDest, destination);
        RescueMap map(sectors * kSector);
        map.mark(0, copied, RescueState::Copied);
        rig.maps.save(kDest, map);

        RefineSettings settings;
        settings.sectorBytes = kSector;
        const CopyOutcome outcome = rig.pass.refine(kSource, kDest, settings);
        EXPECT_EQ(outcome, CopyOutcome::FinishedWithSkips);

        const QByteArray after = rig.files.bytes(kDest);
        EXPECT_TRUE(after.first(copied) == destination) << "a copied byte was written again";
        qint64 readable = 0;
        qint64 recovered = 0;
        for (qint64 s = sectors / 4 + 1; s < sectors; ++s) { // the sectors wholly past the copied part
            const qint64 at = s * kSector;
            const bool isBad = disc.bad[size_t(s)];
            const bool written
                = at + kSector <= after.size() && after.mid(at, kSector) == source.mid(at, kSector);
            if (isBad) {
                EXPECT_FALSE(written && after.mid(at, kSector) != QByteArray(kSector, '\0'))
                    << "sector " << s;
                continue;
            }
            ++readable;
            recovered += written ? 1 : 0;
        }
        EXPECT_GE(recovered * 1000, readable * 999) << recovered << " of " << readable;
        const int runs = int(disc.ranges().size());
        EXPECT_LE(rig.pass.failedReads(), 3 * runs) << runs << " bad runs";
        RescueMap kept;
        ASSERT_TRUE(rig.maps.load(kDest, kept));
        EXPECT_EQ(kept.bytes(RescueState::Copied) + kept.bytes(RescueState::Bad)
                + kept.bytes(RescueState::Untried) + kept.bytes(RescueState::NonTrimmed),
            kept.size());
    }
}

} // namespace
