// vindaro-copy end to end on real system calls: a source whose bad sectors fail with EIO from the kernel, and
// destinations that fail their writes, syncs or closes.
#include "FuseMount.h"
#include "Pattern.h"
#include "copy_store/WholeFile.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

using vindaro::testing::readWholeFile;
using vindaro::testing::writeWholeFile;

constexpr qint64 kBlock = 6144; // a fixed drive's block

// A disk whose file system fails one kind of operation; the files land in `backing`.
class FailingDisk : public vindaro::testing::FuseMount
{
public:
    FailingDisk(const QString& mountPoint, const QString& backing, const char* mode, int error, QString limit)
        : FuseMount(QStringLiteral(FAILING_DISK_FS), mountPoint,
            {backing, QString::fromLatin1(mode), QString::number(error), limit})
    {
    }
};

struct ToolRun
{
    int exitCode = -1;
    QString err;
};

// One block read at a time, 8 skipped after a read fails.
ToolRun copyTool(const QStringList& args)
{
    QProcess p;
    p.start(QStringLiteral(VINDARO_COPY),
        QStringList{QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("1"), QStringLiteral("-s"),
            QStringLiteral("1")}
            + args);
    EXPECT_TRUE(p.waitForFinished(120000));
    return ToolRun{p.exitCode(), QString::fromUtf8(p.readAllStandardError())};
}

// The record vindaro-copy keeps for `destination`; an empty object when there is none.
QJsonObject resumeRecord(const QString& destination)
{
    const QString store = qEnvironmentVariable("XDG_STATE_HOME") + QStringLiteral("/vindaro/resume.json");
    return QJsonDocument::fromJson(readWholeFile(store))
        .object()
        .value(QStringLiteral("records"))
        .toObject()
        .value(destination)
        .toObject();
}

// The promise of the program: reads of a bad sector fail with EIO from the kernel, the copy jumps over them
// and goes on, and everything readable arrives in its place. With the destination on the same file system,
// the kernel copies the blocks itself (copy_file_range) until a bad sector fails that copy; the program then
// reads and writes on its own and meets the bad block.
TEST(ScratchedSource, BadSectorsAreSkippedAndTheRestArrives)
{
    const qint64 size = 9'000'000;
    QByteArray data(size, Qt::Uninitialized);
    for (qint64 i = 0; i < size; ++i)
        data[i] = fusefs::patternByte(i);
    const struct
    {
        bool sameDisk;
        QList<qint64> bad;
    } rows[] = {{false, {1'000'000, 2'000'000, 2'004'095}}, {true, {6'000'000}}};

    for (const auto& row : rows) {
        SCOPED_TRACE(row.sameDisk ? "on the same disk" : "to another disk");
        QTemporaryDir dir;
        const QString backing = dir.filePath(QStringLiteral("backing"));
        ASSERT_TRUE(QDir().mkpath(backing));
        ASSERT_TRUE(writeWholeFile(backing + QStringLiteral("/src.dat"), data));
        QStringList bad;
        for (const qint64 byte : row.bad)
            bad << QString::number(byte);
        const QString mountPoint = dir.filePath(QStringLiteral("mnt"));
        {
            FailingDisk disk(mountPoint, backing, "read", EIO, bad.join(QLatin1Char(',')));
            VINDARO_SKIP_UNLESS_MOUNTED(disk);
            const ToolRun r = copyTool({mountPoint + QStringLiteral("/src.dat"),
                (row.sameDisk ? mountPoint : dir.path()) + QStringLiteral("/copy.dat")});
            EXPECT_EQ(r.exitCode, 1) << r.err.toStdString(); // finished with skips
        }
        const QByteArray copy
            = readWholeFile((row.sameDisk ? backing : dir.path()) + QStringLiteral("/copy.dat"));
        ASSERT_EQ(copy.size(), size);
        for (qint64 i = 0; i < size; ++i) {
            if (copy[i] == data[i])
                continue;
            ASSERT_EQ(copy[i], '\0') << "byte " << i << " is neither the source's nor a skipped one";
            ASSERT_TRUE(std::any_of(row.bad.begin(), row.bad.end(),
                [i](qint64 b) { return b - 2 * kBlock < i && i < b + 9 * kBlock; }))
                << "byte " << i << " was lost away from any bad sector";
        }
        for (const qint64 byte : row.bad)
            EXPECT_EQ(copy[byte], '\0');
    }
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
        ASSERT_TRUE(writeWholeFile(source, data));
        const QString mountPoint = dir.filePath(QStringLiteral("mnt"));
        const QString destination = mountPoint + QStringLiteral("/copy.dat");
        {
            FailingDisk disk(mountPoint, backing, row.mode, row.error, QString::number(row.limit));
            VINDARO_SKIP_UNLESS_MOUNTED(disk);
            const ToolRun r = copyTool({source, destination});
            EXPECT_EQ(r.exitCode, 3) << r.err.toStdString(); // failed: neither skipped nor finished
            EXPECT_TRUE(r.err.contains(QStringLiteral("[%1].%2").arg(row.error).arg(
                QString::fromLocal8Bit(std::strerror(row.error)))))
                << r.err.toStdString();
        }

        // What arrived is the source's, byte for byte (blocks read ahead are written in runs of a few MiB,
        // so it may end well before the failure); the record points no further than that.
        const QByteArray partial = readWholeFile(backing + QStringLiteral("/copy.dat"));
        EXPECT_EQ(partial, data.first(partial.size()));
        if (qstrcmp(row.mode, "write") == 0) {
            EXPECT_LE(partial.size(), row.limit);
        }
        const QJsonObject record = resumeRecord(destination);
        ASSERT_FALSE(record.isEmpty()) << "no resume record for " << destination.toStdString();
        EXPECT_LE(record.value(QStringLiteral("continuePosition")).toInteger(-1),
            std::max<qint64>(1, partial.size()));

        // The destination works again: continuing from the record completes the copy exactly.
        FailingDisk healed(mountPoint, backing, "none", 0, QString());
        ASSERT_TRUE(healed.mounted()) << healed.why();
        const ToolRun r = copyTool({QStringLiteral("-e"), QStringLiteral("continue"), source, destination});
        EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
        healed.unmount();
        EXPECT_TRUE(readWholeFile(backing + QStringLiteral("/copy.dat")) == data);
        EXPECT_TRUE(resumeRecord(destination).isEmpty());
    }
}

} // namespace
