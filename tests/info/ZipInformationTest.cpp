#include "ZipInformation.h"
#include "InfoSamples.h"

#include <QBuffer>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QStringEncoder>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vindaro::info::ZipInformation;
using vindaro::info::ZipRow;
using vindaro::testing::zipArchive;
using Entry = vindaro::testing::ZipEntry;

namespace {

std::vector<ZipRow> list(QByteArray bytes, ZipInformation& zip)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    std::vector<ZipRow> rows;
    zip.readZip(buffer, [&rows](const ZipRow& row) {
        rows.push_back(row);
        return true;
    });
    return rows;
}

// The texts of the rows are in the golden file of InfoTextsTest; here the figures.
TEST(ZipInformation, RatiosSizesAndTotals)
{
    Entry big{"big.bin", 3000000, 10};
    big.dataBytes = 10;
    ZipInformation zip;
    const auto rows = list(zipArchive({Entry{"docs/"}, Entry{"empty.txt"}, Entry{"grown.bin", 100, 110},
                               Entry{"k.bin", 1023, 1023}, big, Entry{"swollen.bin", 1, 2000}}),
        zip);
    ASSERT_EQ(rows.size(), 6u);
    EXPECT_TRUE(rows[0].isFolder);
    EXPECT_EQ(rows[0].size + rows[0].ratio + rows[0].crc, QString());
    EXPECT_FALSE(rows[1].isFolder);
    EXPECT_EQ(rows[1].ratio, QString());
    EXPECT_EQ(rows[2].ratio, QStringLiteral("-10.00%"));
    EXPECT_EQ(rows[3].ratio, QStringLiteral("0.00%"));
    EXPECT_EQ(rows[4].size, QStringLiteral("3,000,000"));
    EXPECT_EQ(rows[4].text, QStringLiteral("[04]big.bin"));
    EXPECT_EQ(rows[5].ratio, QStringLiteral("-199900.00%")); // a percentage has no digit groups
    EXPECT_EQ(zip.getFileQuantitySize().last(), QStringLiteral("总计大小：2,930 KB"));
    EXPECT_EQ(zip.folderCount(), 1);
    EXPECT_EQ(zip.fileCount(), 5);

    ZipInformation small;
    list(zipArchive({Entry{"k.bin", 1023, 1023}}), small);
    EXPECT_EQ(small.getFileQuantitySize().last(), QStringLiteral("总计大小：0 KB"));
}

TEST(ZipInformation, StopsWhereTheHeadersStop)
{
    Entry a{"a.txt", 5, 5};
    Entry described{"b.txt", 0, 0}; // sizes in a trailing data descriptor
    described.flags = 0x0008;
    described.dataBytes = 40;
    Entry c{"c.txt", 5, 5};
    ZipInformation zip;
    auto rows = list(zipArchive({a, described, c}), zip);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1].text, QStringLiteral("[02]b.txt"));

    // A compressed size pointing past the end lists that entry and stops.
    Entry huge{"h.bin", 0xFFFFFFF0u, 0xFFFFFFF0u};
    huge.dataBytes = 3;
    ZipInformation pastEnd;
    EXPECT_EQ(list(zipArchive({a, huge}), pastEnd).size(), 2u);

    // Cut inside the second header, inside a name, or nothing at all.
    const QByteArray whole = zipArchive({a, c});
    const qsizetype second = a.local().size();
    for (qsizetype cut : {qsizetype(0), qsizetype(3), second + 10, second + 31}) {
        ZipInformation damaged;
        EXPECT_EQ(list(whole.left(cut), damaged).size(), cut < second ? 0u : 1u) << cut;
    }

    ZipInformation notZip;
    EXPECT_TRUE(list(QByteArray("PK\x05\x06 just an end record", 24), notZip).empty());
    EXPECT_EQ(notZip.fileCount(), 0);
}

TEST(ZipInformation, Zip64SizesAndLocalNames)
{
    Entry big{"big.iso", 0xFFFFFFFFu, 0xFFFFFFFFu};
    // The zip64 field: 16 bytes, 5,000,000,000 uncompressed and 12 compressed.
    big.extra = QByteArray::fromHex("01001000"
                                    "00f2052a01000000"
                                    "0c00000000000000");
    big.dataBytes = 12;
    Entry gbkName{QByteArray(QStringEncoder("GB18030").encode(QStringLiteral("中文.txt"))), 1, 1};
    Entry utf8Name{QStringLiteral("日本.txt").toUtf8(), 1, 1};
    ZipInformation zip;
    const auto rows = list(zipArchive({big, gbkName, utf8Name}), zip);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].size, QStringLiteral("5,000,000,000"));
    EXPECT_EQ(rows[0].compressedSize, QStringLiteral("12"));
    EXPECT_EQ(rows[1].text, QStringLiteral("[02]中文.txt"));
    EXPECT_EQ(rows[2].text, QStringLiteral("[03]日本.txt"));
}

TEST(ZipInformation, SinkCanStopTheWalk)
{
    QByteArray bytes = zipArchive({Entry{"a"}, Entry{"b"}, Entry{"c"}});
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    ZipInformation zip;
    int seen = 0;
    zip.readZip(buffer, [&seen](const ZipRow&) { return ++seen < 2; });
    EXPECT_EQ(seen, 2);
    EXPECT_FALSE(zip.readZip(QStringLiteral("/nonexistent.zip"), [](const ZipRow&) { return true; }));
}

// Archives made by the zip tool: stored and deflated entries with extra fields, a folder, and a streamed
// archive whose sizes follow the data.
TEST(ZipInformation, ReadsArchivesOfTheZipTool)
{
    const QString zipTool = QStandardPaths::findExecutable(QStringLiteral("zip"));
    if (zipTool.isEmpty())
        GTEST_SKIP() << "zip is not installed";
    QTemporaryDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkpath(QStringLiteral("docs/sub")));
    ASSERT_TRUE(
        vindaro::testing::writeFile(dir.filePath(QStringLiteral("docs/a.txt")), QByteArray(4000, 'z')));
    ASSERT_TRUE(vindaro::testing::writeFile(dir.filePath(QStringLiteral("docs/sub/b.bin")), "0123456789"));
    const auto zipped = [&](const QString& out) {
        QProcess zip;
        zip.setWorkingDirectory(dir.path());
        zip.start(zipTool, {QStringLiteral("-q"), QStringLiteral("-r"), out, QStringLiteral("docs")});
        EXPECT_TRUE(zip.waitForFinished(30000));
        EXPECT_EQ(zip.exitCode(), 0);
        return zip.readAllStandardOutput();
    };
    zipped(QStringLiteral("out.zip"));

    ZipInformation info;
    std::vector<ZipRow> rows;
    ASSERT_TRUE(info.readZip(dir.filePath(QStringLiteral("out.zip")), [&rows](const ZipRow& row) {
        rows.push_back(row);
        return true;
    }));
    EXPECT_EQ(info.folderCount(), 2);
    EXPECT_EQ(info.fileCount(), 2);
    EXPECT_EQ(info.totalBytes(), 4010);
    for (const ZipRow& row : rows) {
        if (row.text.endsWith(QLatin1String("a.txt"))) {
            EXPECT_NE(row.ratio, QStringLiteral("0.00%")); // deflated
        } else if (row.text.endsWith(QLatin1String("b.bin"))) {
            EXPECT_EQ(row.crc, QStringLiteral("A684C7C6")); // CRC-32 of "0123456789"
        }
    }

    // Written to a pipe, zip cannot seek back: file sizes go to data descriptors.
    const QString streamed = dir.filePath(QStringLiteral("streamed.zip"));
    ASSERT_TRUE(vindaro::testing::writeFile(streamed, zipped(QStringLiteral("-"))));
    ZipInformation streamedInfo;
    ASSERT_TRUE(streamedInfo.readZip(streamed, [](const ZipRow&) { return true; }));
    // Folders carry no data and no descriptor, so the walk gets past them and ends after the first file.
    EXPECT_EQ(streamedInfo.folderCount(), 2);
    EXPECT_EQ(streamedInfo.fileCount(), 1);
}

// The archive is cut short while it is walked: the walk ends without reading past the new end.
TEST(ZipInformation, FileThatShrinksWhileRead)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("shrinking.zip"));
    std::vector<Entry> entries;
    for (int i = 0; i < 6; ++i)
        entries.emplace_back(QByteArray("part") + QByteArray::number(i), 40000, 40000);
    ASSERT_TRUE(vindaro::testing::writeFile(path, zipArchive(entries)));
    ZipInformation zip;
    int rows = 0;
    ASSERT_TRUE(zip.readZip(path, [&rows, &path](const ZipRow&) {
        if (++rows == 1)
            QFile::resize(path, 100);
        return true;
    }));
    EXPECT_GE(rows, 1);
    EXPECT_LT(rows, 6);
}

} // namespace
