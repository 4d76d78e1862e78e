// GNU ddrescue mapfiles: reading, writing, refusing, the store of maps, and ddrescue itself on our maps.
#include "copy/RescueMap.h"
#include "copy/RescueMapStore.h"
#include "copy/RescueMessages.h"
#include "copy_store/WholeFile.h"
#include "fakes/MemoryRescueMapStore.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vindaro::copy;
using vindaro::testing::readWholeFile;
using vindaro::testing::writeWholeFile;

namespace {

constexpr qint64 kGiB = qint64(1) << 30;

RescueMap everyState()
{
    RescueMap map(6 * kGiB, RescueState::Copied);
    map.mark(4096, 2048, RescueState::Bad);
    map.mark(kGiB, 65536, RescueState::NonTrimmed);
    map.mark(2 * kGiB, 4096, RescueState::NonScraped);
    map.mark(5 * kGiB, kGiB, RescueState::Untried); // the tail: a skip past the end
    return map;
}

MapfileHeader ourHeader()
{
    MapfileHeader header;
    header.creator = QStringLiteral("Vindaro 2.0.0");
    return header;
}

TEST(Mapfile, WrittenMapsReadBackAsTheSameMap)
{
    MapfileHeader header = ourHeader();
    header.commandLine = QStringLiteral("vindaro-copy --map a.map\nb"); // a line break stays in its comment
    header.savedAt = QDateTime(QDate(2024, 5, 1), QTime(10, 0), Qt::UTC);
    for (const RescueMap& map : {everyState(), RescueMap(1, RescueState::Copied), RescueMap(0)}) {
        const QByteArray text = formatMapfile(map, header);
        const MapfileResult read = parseMapfile(text, map.size());
        ASSERT_TRUE(read.ok()) << text.constData();
        EXPECT_EQ(read.map, map);
        EXPECT_EQ(read.status.phase, mapfilePhase(map));
    }
    const QByteArray text = formatMapfile(everyState(), header);
    EXPECT_TRUE(
        text.startsWith("# Mapfile. Created by Vindaro 2.0.0\n# Command line: vindaro-copy --map a.map b\n"
                        "# Current time: 2024-05-01 10:00:00\n"));
    // ddrescue's own layout: hex with eight digits at least, status line before the blocks
    EXPECT_TRUE(text.contains("\n0x140000000     ?               1\n#      pos        size  status\n"
                              "0x00000000  0x00001000  +\n0x00001000  0x00000800  -\n"));
    EXPECT_TRUE(text.endsWith("0x140000000  0x40000000  ?\n"));

    MapfileStatus status;
    status.currentOffset = 4096;
    status.phase = '-';
    status.pass = 3;
    const MapfileResult given = parseMapfile(formatMapfile(everyState(), header, status), -1);
    EXPECT_EQ(given.status.currentOffset, 4096);
    EXPECT_EQ(given.status.phase, '-');
    EXPECT_EQ(given.status.pass, 3);
}

TEST(Mapfile, ReadsDecimalHexOctalCommentsAndOlderStatusLines)
{
    const QByteArray text = "# Mapfile. Created by GNU ddrescue version 1.27\r\n"
                            "# current_pos  current_status\r\n"
                            "  0x1000 *   # an older map: no pass\r\n"
                            "\r\n"
                            "#      pos        size  status\r\n"
                            "0  4096 +\r\n"
                            "0X1000\t0x800\t*  # trimming here\r\n"
                            "6144 010 -\r\n" // 010 is octal, as ddrescue reads it
                            "6152 1016 ?"; // no line end at the end
    const MapfileResult read = parseMapfile(text, 7168);
    ASSERT_TRUE(read.ok()) << qPrintable(msg::mapfileRefused(QStringLiteral("m"), read));
    EXPECT_EQ(read.status.currentOffset, 0x1000);
    EXPECT_EQ(read.status.phase, '*');
    EXPECT_EQ(read.status.pass, 1);
    EXPECT_EQ(read.map.ranges(),
        (std::vector<RescueRange>{{0, 4096, RescueState::Copied}, {4096, 2048, RescueState::NonTrimmed},
            {6144, 8, RescueState::Bad}, {6152, 1016, RescueState::Untried}}));

    // Neighbours in one state are joined; a map without blocks is all untried.
    EXPECT_EQ(parseMapfile("0 ?\n0 10 +\n10 10 +\n", 20).map.rangeCount(), 1);
    EXPECT_EQ(parseMapfile("0 + 1\n", 300).map, RescueMap(300));
    EXPECT_TRUE(parseMapfile("0 ?\n0 0x7FFFFFFFFFFFFFFF +\n", -1).ok()) << "the largest size there is fits";
}

TEST(Mapfile, AFileIsReadWithinItsLimitAndWrittenWhole)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.map"));
    QString error;
    ASSERT_TRUE(writeMapfile(path, everyState(), ourHeader(), error));
    EXPECT_TRUE(error.isEmpty());
    EXPECT_EQ(readMapfile(path, 6 * kGiB).map, everyState());

    const MapfileResult missing = readMapfile(dir.filePath(QStringLiteral("none.map")), 10);
    EXPECT_EQ(missing.error, MapfileError::Unreadable);
    EXPECT_FALSE(missing.detail.isEmpty());

    // A folder where the file should go: the write fails and says so, the folder stays.
    const QString blocked = dir.filePath(QStringLiteral("blocked"));
    ASSERT_TRUE(QDir().mkpath(blocked));
    EXPECT_FALSE(writeMapfile(blocked, everyState(), MapfileHeader{}, error));
    EXPECT_TRUE(error.contains(blocked));
    EXPECT_TRUE(QFileInfo(blocked).isDir());

    QFile huge(dir.filePath(QStringLiteral("huge.map")));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly) && huge.resize(kMaxMapfileBytes + 1));
    huge.close();
    EXPECT_EQ(readMapfile(huge.fileName(), -1).error, MapfileError::TooLarge);
}

// One map per destination until removed, in the file store and in the fake the engine's tests use alike.
TEST(RescueMapStore, KeepsOneMapPerDestinationAsTheMemoryFakeDoes)
{
    QTemporaryDir dir;
    FileRescueMapStore file(QStringLiteral("Vindaro 2.0.0"), dir.filePath(QStringLiteral("state/maps")));
    vindaro::testing::MemoryRescueMapStore memory;
    const QString a = QStringLiteral("/out/a.dat");
    const QString b = QStringLiteral("/out/b.dat");
    MapfileStatus given;
    given.currentOffset = 7;
    given.phase = '*';
    for (RescueMapStore* store :
        {static_cast<RescueMapStore*>(&file), static_cast<RescueMapStore*>(&memory)}) {
        RescueMap map;
        MapfileStatus status;
        EXPECT_FALSE(store->load(a, map));
        ASSERT_TRUE(store->save(a, everyState()));
        ASSERT_TRUE(store->save(b, RescueMap(100)));
        ASSERT_TRUE(store->load(a, map, &status));
        EXPECT_EQ(map, everyState());
        EXPECT_EQ(status.currentOffset, 5 * kGiB); // the first untried byte
        EXPECT_EQ(status.phase, '?');
        ASSERT_TRUE(store->save(a, RescueMap(10), given));
        ASSERT_TRUE(store->load(a, map, &status));
        EXPECT_EQ(status.currentOffset, 7);
        EXPECT_EQ(status.phase, '*');
        store->remove(a);
        EXPECT_FALSE(store->load(a, map));
        ASSERT_TRUE(store->load(b, map));
        EXPECT_EQ(map, RescueMap(100));
    }
    // The file store's own: a cleaned key, a file that names its destination, and a damaged file read as no
    // map and left as it is until the next save replaces it.
    RescueMap loaded;
    EXPECT_TRUE(FileRescueMapStore(QString(), file.folder()).load(QStringLiteral("/out/./b.dat"), loaded));
    EXPECT_TRUE(readWholeFile(file.pathFor(b)).contains("# Destination: /out/b.dat\n"));
    EXPECT_FALSE(QFile::exists(file.pathFor(a)));
    ASSERT_TRUE(writeWholeFile(file.pathFor(b), "0 ?\n0 10 +\n5 5 -\n"));
    EXPECT_FALSE(file.load(b, loaded));
    EXPECT_EQ(readWholeFile(file.pathFor(b)), QByteArray("0 ?\n0 10 +\n5 5 -\n"));
    ASSERT_TRUE(file.save(b, RescueMap(100)));
    EXPECT_TRUE(file.load(b, loaded));
}

TEST(RescueMapStore, AFolderThatCannotBeMadeFailsTheSaveAndSaysWhy)
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("maps"));
    ASSERT_TRUE(writeWholeFile(folder, "a file where the folder should be"));
    FileRescueMapStore store(QStringLiteral("Vindaro 2.0.0"), folder);
    EXPECT_FALSE(store.save(dir.filePath(QStringLiteral("a.dat")), RescueMap(10)));
    EXPECT_TRUE(store.errorString().contains(folder));

    // The default folder sits beside the resume records, under XDG_STATE_HOME.
    EXPECT_EQ(FileRescueMapStore::defaultFolder(),
        QDir::cleanPath(qEnvironmentVariable("XDG_STATE_HOME") + QStringLiteral("/vindaro/maps")));
}

// ddrescue itself: it goes on from a map of ours, and its map reads back as ours. Skipped without ddrescue.
TEST(Mapfile, DdrescueGoesOnFromOurMapAndWeReadItsMap)
{
    const QString ddrescue = QStandardPaths::findExecutable(QStringLiteral("ddrescue"));
    if (ddrescue.isEmpty())
        GTEST_SKIP() << "ddrescue is not installed (apt-get install gddrescue)";
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("source.vob"));
    const QString copy = dir.filePath(QStringLiteral("copy.vob"));
    const QString mapPath = dir.filePath(QStringLiteral("copy.map"));
    QByteArray bytes(256 * 1024, '\0');
    for (int i = 0; i < bytes.size(); ++i)
        bytes[i] = char((i * 7 + i / 251) | 1); // never 0, so a byte left unwritten shows
    ASSERT_TRUE(writeWholeFile(source, bytes));

    // We copied [0, 64 KiB) and [192 KiB, 256 KiB): ddrescue must read only the middle.
    RescueMap ours(bytes.size(), RescueState::Copied);
    ours.mark(64 * 1024, 128 * 1024, RescueState::Untried);
    QString error;
    ASSERT_TRUE(writeMapfile(mapPath, ours, ourHeader(), error));
    QProcess run;
    run.start(ddrescue, {QStringLiteral("-q"), QStringLiteral("-b2048"), source, copy, mapPath});
    ASSERT_TRUE(run.waitForFinished(60000));
    ASSERT_EQ(run.exitCode(), 0) << run.readAllStandardError().constData();

    // It wrote the middle only: nothing before it, and the file ends where the middle does.
    const QByteArray copied = readWholeFile(copy);
    ASSERT_EQ(copied.size(), 192 * 1024);
    EXPECT_EQ(copied.mid(64 * 1024), bytes.mid(64 * 1024, 128 * 1024));
    EXPECT_EQ(copied.left(64 * 1024), QByteArray(64 * 1024, '\0')) << "ddrescue read what we had copied";

    const MapfileResult theirs = readMapfile(mapPath, bytes.size());
    ASSERT_TRUE(theirs.ok()) << qPrintable(msg::mapfileRefused(mapPath, theirs));
    EXPECT_TRUE(theirs.map.isComplete());
    EXPECT_EQ(theirs.status.phase, '+');
}

} // namespace
