#include "ZipInformation.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QStringEncoder>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

using vindaro::info::ZipInformation;
using vindaro::info::ZipRow;

namespace {

void putLe(QByteArray& bytes, quint64 value, int width)
{
    for (int i = 0; i < width; ++i)
        bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
}

struct Entry
{
    Entry(QByteArray entryName, quint32 uncompressedBytes = 0, quint32 compressedBytes = 0)
        : name(std::move(entryName))
        , uncompressed(uncompressedBytes)
        , compressed(compressedBytes)
    {
    }
    QByteArray name;
    quint32 uncompressed = 0;
    quint32 compressed = 0;
    quint32 crc = 0x0A0B0C0D;
    quint16 date = 0x2E21;
    quint16 time = 0x6000;
    QByteArray extra;
    qint64 dataBytes = -1; // bytes of data actually written; -1 means `compressed`
    quint16 flags = 0;
};

QByteArray localHeader(const Entry& e)
{
    QByteArray bytes("PK\x03\x04", 4);
    putLe(bytes, 20, 2);
    putLe(bytes, e.flags, 2);
    putLe(bytes, 0, 2);
    putLe(bytes, e.time, 2);
    putLe(bytes, e.date, 2);
    putLe(bytes, e.crc, 4);
    putLe(bytes, e.compressed, 4);
    putLe(bytes, e.uncompressed, 4);
    putLe(bytes, static_cast<quint64>(e.name.size()), 2);
    putLe(bytes, static_cast<quint64>(e.extra.size()), 2);
    bytes += e.name + e.extra;
    bytes += QByteArray(e.dataBytes < 0 ? e.compressed : e.dataBytes, 'd');
    return bytes;
}

QByteArray archive(const std::vector<Entry>& entries)
{
    QByteArray bytes;
    for (const Entry& e : entries)
        bytes += localHeader(e);
    bytes += QByteArray("PK\x01\x02 central directory follows"); // no NUL inside: the length is strlen
    return bytes;
}

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

TEST(ZipInformation, FolderAndFileRows)
{
    Entry folder{"docs/"};
    Entry file{"docs/a.txt", 1000, 250};
    ZipInformation zip;
    const auto rows = list(archive({folder, file}), zip);
    ASSERT_EQ(rows.size(), 2u);

    EXPECT_EQ(rows[0].text, QStringLiteral("[01][文件夹]docs/"));
    EXPECT_TRUE(rows[0].isFolder);
    EXPECT_EQ(rows[0].modified, QStringLiteral("2003-01-01 12:00:00"));
    EXPECT_EQ(rows[0].size, QString());
    EXPECT_EQ(rows[0].crc, QString());

    EXPECT_EQ(rows[1].text, QStringLiteral("[01]docs/a.txt"));
    EXPECT_FALSE(rows[1].isFolder);
    EXPECT_EQ(rows[1].size, QStringLiteral("1,000"));
    EXPECT_EQ(rows[1].ratio, QStringLiteral("75.00%"));
    EXPECT_EQ(rows[1].compressedSize, QStringLiteral("250"));
    EXPECT_EQ(rows[1].crc, QStringLiteral("0A0B0C0D"));
    EXPECT_EQ(rows[1].toolTip, rows[1].text);

    EXPECT_EQ(zip.getFileQuantitySize(),
        (QStringList{QString(), QStringLiteral("文件夹数：1 个"), QStringLiteral("文 件 数：1 个"),
            QStringLiteral("总计大小：0 KB")}));
}

TEST(ZipInformation, DatesRatiosAndTotals)
{
    EXPECT_EQ(ZipInformation::dosDateTime(0x2E21, 0x6000), QStringLiteral("2003-01-01 12:00:00"));
    EXPECT_EQ(ZipInformation::dosDateTime(0, 0), QStringLiteral("1980-00-00 00:00:00"));
    EXPECT_EQ(ZipInformation::dosDateTime(0xFFFF, 0xFFFF), QStringLiteral("2107-15-31 31:63:62"));

    Entry empty{"empty.txt"};
    Entry grown{"grown.bin", 100, 110};
    Entry kb{"k.bin", 1023, 1023};
    Entry big{"big.bin", 3000000, 10};
    big.dataBytes = 10;
    Entry swollen{"swollen.bin", 1, 2000};
    ZipInformation zip;
    const auto rows = list(archive({empty, grown, kb, big, swollen}), zip);
    ASSERT_EQ(rows.size(), 5u);
    EXPECT_EQ(rows[0].ratio, QString());
    EXPECT_EQ(rows[1].ratio, QStringLiteral("-10.00%"));
    EXPECT_EQ(rows[2].ratio, QStringLiteral("0.00%"));
    EXPECT_EQ(rows[3].size, QStringLiteral("3,000,000"));
    EXPECT_EQ(rows[3].text, QStringLiteral("[04]big.bin"));
    EXPECT_EQ(rows[4].ratio, QStringLiteral("-199900.00%")); // a percentage has no digit groups
    EXPECT_EQ(zip.getFileQuantitySize().last(), QStringLiteral("总计大小：2,930 KB"));

    ZipInformation small;
    list(archive({kb}), small);
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
    auto rows = list(archive({a, described, c}), zip);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1].text, QStringLiteral("[02]b.txt"));

    // A compressed size pointing past the end lists that entry and stops.
    Entry huge{"h.bin", 0xFFFFFFF0u, 0xFFFFFFF0u};
    huge.dataBytes = 3;
    ZipInformation pastEnd;
    rows = list(archive({a, huge}), pastEnd);
    EXPECT_EQ(rows.size(), 2u);

    // Cut inside the second header, inside a name, or nothing at all.
    const QByteArray whole = archive({a, c});
    const qsizetype second = localHeader(a).size();
    for (qsizetype cut : {qsizetype(0), qsizetype(3), second + 10, second + 31}) {
        ZipInformation damaged;
        rows = list(whole.left(cut), damaged);
        EXPECT_EQ(rows.size(), cut < second ? 0u : 1u) << cut;
    }

    ZipInformation notZip;
    EXPECT_TRUE(list(QByteArray("PK\x05\x06 just an end record", 24), notZip).empty());
    EXPECT_EQ(notZip.getFileQuantitySize().at(2), QStringLiteral("文 件 数：0 个"));
}

TEST(ZipInformation, Zip64SizesAndLocalNames)
{
    Entry big{"big.iso", 0xFFFFFFFFu, 0xFFFFFFFFu};
    putLe(big.extra, 0x0001, 2);
    putLe(big.extra, 16, 2);
    putLe(big.extra, 5000000000ull, 8); // uncompressed
    putLe(big.extra, 12, 8); // compressed
    big.dataBytes = 12;
    Entry gbkName{QByteArray(QStringEncoder("GB18030").encode(QStringLiteral("中文.txt"))), 1, 1};
    Entry utf8Name{QStringLiteral("日本.txt").toUtf8(), 1, 1};
    ZipInformation zip;
    const auto rows = list(archive({big, gbkName, utf8Name}), zip);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].size, QStringLiteral("5,000,000,000"));
    EXPECT_EQ(rows[0].compressedSize, QStringLiteral("12"));
    EXPECT_EQ(rows[1].text, QStringLiteral("[02]中文.txt"));
    EXPECT_EQ(rows[2].text, QStringLiteral("[03]日本.txt"));
}

TEST(ZipInformation, SinkCanStopTheWalk)
{
    QByteArray bytes = archive({Entry{"a"}, Entry{"b"}, Entry{"c"}});
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
    QFile text(dir.filePath(QStringLiteral("docs/a.txt")));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write(QByteArray(4000, 'z'));
    text.close();
    QFile stored(dir.filePath(QStringLiteral("docs/sub/b.bin")));
    ASSERT_TRUE(stored.open(QIODevice::WriteOnly));
    stored.write(QByteArray("0123456789"));
    stored.close();

    QProcess zip;
    zip.setWorkingDirectory(dir.path());
    zip.start(zipTool,
        {QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("out.zip"), QStringLiteral("docs")});
    ASSERT_TRUE(zip.waitForFinished(30000));
    ASSERT_EQ(zip.exitCode(), 0);

    ZipInformation info;
    std::vector<ZipRow> rows;
    ASSERT_TRUE(info.readZip(dir.filePath(QStringLiteral("out.zip")), [&rows](const ZipRow& row) {
        rows.push_back(row);
        return true;
    }));
    EXPECT_EQ(info.folderCount(), 2);
    EXPECT_EQ(info.fileCount(), 2);
    EXPECT_EQ(info.totalBytes(), 4010);
    QStringList texts;
    for (const ZipRow& row : rows)
        texts << row.text;
    EXPECT_TRUE(texts.contains(QStringLiteral("[01][文件夹]docs/"))) << texts.join(' ').toStdString();
    EXPECT_TRUE(texts.contains(QStringLiteral("[02][文件夹]docs/sub/"))) << texts.join(' ').toStdString();
    for (const ZipRow& row : rows) {
        if (row.text.endsWith(QLatin1String("a.txt"))) {
            EXPECT_EQ(row.size, QStringLiteral("4,000"));
            EXPECT_NE(row.ratio, QStringLiteral("0.00%")); // deflated
        }
        if (row.text.endsWith(QLatin1String("b.bin"))) {
            EXPECT_EQ(row.crc, QStringLiteral("A684C7C6")); // CRC-32 of "0123456789"
        }
    }

    // Written to a pipe, zip cannot seek back: file sizes go to data descriptors.
    QProcess streamed;
    streamed.setWorkingDirectory(dir.path());
    streamed.start(
        zipTool, {QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("-"), QStringLiteral("docs")});
    ASSERT_TRUE(streamed.waitForFinished(30000));
    ASSERT_EQ(streamed.exitCode(), 0);
    QFile streamedFile(dir.filePath(QStringLiteral("streamed.zip")));
    ASSERT_TRUE(streamedFile.open(QIODevice::WriteOnly));
    streamedFile.write(streamed.readAllStandardOutput());
    streamedFile.close();
    ZipInformation streamedInfo;
    ASSERT_TRUE(streamedInfo.readZip(
        dir.filePath(QStringLiteral("streamed.zip")), [](const ZipRow&) { return true; }));
    // Folders carry no data and no descriptor, so the walk gets past them and ends after the first file.
    EXPECT_EQ(streamedInfo.folderCount(), 2);
    EXPECT_EQ(streamedInfo.fileCount(), 1);
}

} // namespace

namespace {

// The archive is cut short while it is walked: the walk ends without reading past the new end.
TEST(ZipInformation, FileThatShrinksWhileRead)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("shrinking.zip"));
    std::vector<Entry> entries;
    for (int i = 0; i < 6; ++i)
        entries.emplace_back(QByteArray("part") + QByteArray::number(i), 40000, 40000);
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(archive(entries));
    }
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
