// vindaro-copy end to end on real system calls: a source whose scratches fail with EIO from the kernel, and
// destinations that fail their writes, syncs or closes.
#include "FuseMount.h"
#include "Pattern.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

namespace {

QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// A destination whose file system fails one kind of operation; the files land in `backing`.
class FailingDisk : public vindaro::testing::FuseMount
{
public:
    FailingDisk(const QString& mountPoint, const QString& backing, const char* mode, int error, qint64 limit)
        : FuseMount(QStringLiteral(FAILING_DISK_FS), mountPoint,
            {backing, QString::fromLatin1(mode), QString::number(error), QString::number(limit)})
    {
    }
};

struct ToolRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

ToolRun copyTool(const QStringList& args)
{
    QProcess p;
    p.start(QStringLiteral(VINDARO_COPY), args);
    EXPECT_TRUE(p.waitForFinished(120000));
    return ToolRun{p.exitCode(), QString::fromUtf8(p.readAllStandardOutput()),
        QString::fromUtf8(p.readAllStandardError())};
}

// The record vindaro-copy keeps for `destination`; an empty object when there is none.
QJsonObject resumeRecord(const QString& destination)
{
    const QString store = qEnvironmentVariable("XDG_STATE_HOME") + QStringLiteral("/vindaro/resume.json");
    return QJsonDocument::fromJson(readFile(store))
        .object()
        .value(QStringLiteral("records"))
        .toObject()
        .value(destination)
        .toObject();
}

// The promise of the program: reads of a scratched stretch fail with EIO from the kernel, the copy jumps over
// them and goes on, and everything readable arrives in its place.
TEST(ScratchedDisc, ReadErrorsFromTheKernelAreSkippedAndTheRestArrives)
{
    QTemporaryDir dir;
    const qint64 size = 3'000'000;
    vindaro::testing::FuseMount disc(QStringLiteral(SCRATCHED_DISC_FS), dir.filePath(QStringLiteral("disc")),
        {QString::number(size), QStringLiteral("1000000:1,2000000:4096")});
    VINDARO_SKIP_UNLESS_MOUNTED(disc);

    const QString copy = dir.filePath(QStringLiteral("copy.dat"));
    const ToolRun r = copyTool({QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("1"),
        QStringLiteral("-s"), QStringLiteral("1"), disc.path(QStringLiteral("disc.dat")), copy});
    EXPECT_EQ(r.exitCode, 1) << r.err.toStdString();
    EXPECT_EQ(r.out.count(QStringLiteral("文件跳过：")), 2) << r.out.toStdString();

    const QByteArray bytes = readFile(copy);
    ASSERT_EQ(bytes.size(), size);
    qint64 zeros = 0;
    for (qint64 i = 0; i < size; ++i) {
        if (bytes[i] != fusefs::patternByte(i)) {
            ASSERT_EQ(bytes[i], '\0') << "byte " << i << " is neither the disc's nor a skipped one";
            ASSERT_GE(i, 990000) << "a byte before the first scratch was lost";
            ++zeros;
        }
    }
    EXPECT_EQ(bytes[1000000], '\0');
    EXPECT_EQ(bytes[2000000], '\0');
    EXPECT_LT(zeros, 2 * 9 * 61440); // each stretch is a handful of blocks, not the rest of the file
}

// Source and destination on one file system: the kernel copies the blocks itself (copy_file_range) until a
// bad sector fails that copy; the program then reads and writes on its own, meets the bad block and skips it,
// and everything readable arrives in its place.
TEST(ScratchedDisc, ABadSectorUnderTheSystemsOwnCopyIsSkipped)
{
    QTemporaryDir dir;
    const QString backing = dir.filePath(QStringLiteral("backing"));
    ASSERT_TRUE(QDir().mkpath(backing));
    const qint64 size = 9'000'000;
    const qint64 bad = 6'000'000;
    {
        QFile f(backing + QStringLiteral("/src.dat"));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        for (qint64 i = 0; i < size; ++i)
            f.putChar(fusefs::patternByte(i));
    }
    const QString mountPoint = dir.filePath(QStringLiteral("mnt"));
    {
        FailingDisk disk(mountPoint, backing, "read", EIO, bad);
        VINDARO_SKIP_UNLESS_MOUNTED(disk);
        const ToolRun r = copyTool({QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("1"),
            QStringLiteral("-s"), QStringLiteral("1"), mountPoint + QStringLiteral("/src.dat"),
            mountPoint + QStringLiteral("/copy.dat")});
        EXPECT_EQ(r.exitCode, 1) << r.err.toStdString();
        EXPECT_EQ(r.out.count(QStringLiteral("文件跳过：")), 1) << r.out.toStdString();
    }
    const QByteArray bytes = readFile(backing + QStringLiteral("/copy.dat"));
    ASSERT_EQ(bytes.size(), size);
    for (qint64 i = 0; i < size; ++i) {
        if (bytes[i] != fusefs::patternByte(i)) {
            ASSERT_EQ(bytes[i], '\0') << "byte " << i << " is neither the source's nor a skipped one";
            ASSERT_GT(i, bad - 2 * 6144) << "a byte before the bad sector was lost";
            ASSERT_LT(i, bad + 9 * 6144) << "a byte after the skipped stretch was lost";
        }
    }
    EXPECT_EQ(bytes[bad], '\0');
}

// A destination that fails while it is written (a pulled stick, a dropped share, a write-back error) is
// reported with the system's words and never taken for an unreadable stretch of the source: no skip, no
// finish, the failure status, the partial file intact, and a record from which a later run completes the
// copy byte for byte once the destination works again.
TEST(FailingDestination, IsReportedKeptAndContinuedNeverSkipped)
{
    const struct
    {
        const char* mode;
        int error;
        qint64 limit;
    } rows[] = {
        {"write", EIO, 1'000'000},
        {"write", ENODEV, 1'000'000},
        {"write", ETIMEDOUT, 2'000'000},
        {"fsync", EIO, 0},
        {"flush", EIO, 0},
    };
    QByteArray data(3'000'000, Qt::Uninitialized);
    QRandomGenerator generator(7);
    for (char& c : data)
        c = char(generator.bounded(1, 256)); // never zero: a hole would show

    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.mode) + " " + std::strerror(row.error));
        QTemporaryDir dir;
        const QString backing = dir.filePath(QStringLiteral("backing"));
        ASSERT_TRUE(QDir().mkpath(backing));
        const QString source = dir.filePath(QStringLiteral("src.dat"));
        {
            QFile f(source);
            ASSERT_TRUE(f.open(QIODevice::WriteOnly));
            ASSERT_EQ(f.write(data), data.size());
        }
        const QString mountPoint = dir.filePath(QStringLiteral("mnt"));
        const QString destination = mountPoint + QStringLiteral("/copy.dat");
        {
            FailingDisk disk(mountPoint, backing, row.mode, row.error, row.limit);
            VINDARO_SKIP_UNLESS_MOUNTED(disk);

            const ToolRun r = copyTool({QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("1"),
                QStringLiteral("-s"), QStringLiteral("1"), source, destination});
            EXPECT_EQ(r.exitCode, 3) << r.err.toStdString();
            EXPECT_FALSE(r.out.contains(QStringLiteral("文件跳过："))) << r.out.toStdString();
            EXPECT_FALSE(r.out.contains(QStringLiteral("被成功地复制到："))) << r.out.toStdString();
            EXPECT_FALSE(r.err.contains(QStringLiteral("文件复制完成！")));
            EXPECT_FALSE(r.err.contains(QStringLiteral("光驱")));
            EXPECT_TRUE(r.err.contains(QStringLiteral("复制文件时出错！\n[%1].%2")
                                           .arg(row.error)
                                           .arg(QString::fromLocal8Bit(std::strerror(row.error)))))
                << r.err.toStdString();
        }

        // What arrived is the source's, byte for byte (blocks read ahead are written in runs of a few MiB,
        // so it may end well before the failure); the record points no further than that.
        const QByteArray partial = readFile(backing + QStringLiteral("/copy.dat"));
        EXPECT_EQ(partial, data.first(partial.size()));
        if (QString::fromLatin1(row.mode) == QLatin1String("write")) {
            EXPECT_LE(partial.size(), row.limit);
        }
        const QJsonObject record = resumeRecord(destination);
        ASSERT_FALSE(record.isEmpty()) << "no resume record for " << destination.toStdString();
        const qint64 continueAt = record.value(QStringLiteral("continuePosition")).toInteger(-1);
        EXPECT_LE(continueAt, std::max<qint64>(1, partial.size()));

        // The destination works again: continuing from the record completes the copy exactly.
        FailingDisk healed(mountPoint, backing, "none", 0, 0);
        ASSERT_TRUE(healed.mounted()) << healed.why();
        const ToolRun r = copyTool({QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("1"),
            QStringLiteral("-e"), QStringLiteral("continue"), source, destination});
        EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
        healed.unmount();
        EXPECT_TRUE(readFile(backing + QStringLiteral("/copy.dat")) == data);
        EXPECT_TRUE(resumeRecord(destination).isEmpty());
    }
}

} // namespace
