#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace {

QByteArray randomBytes(qsizetype size)
{
    QByteArray data(size, Qt::Uninitialized);
    QRandomGenerator generator(42);
    for (qsizetype i = 0; i < size; ++i)
        data[i] = char(generator.bounded(1, 256)); // never zero: a skipped stretch shows as zeros
    return data;
}

void writeFile(const QString& path, const QByteArray& data)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    ASSERT_EQ(f.write(data), data.size());
}

QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

struct ToolRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

ToolRun run(const QString& program, const QStringList& args,
    const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment())
{
    QProcess p;
    p.setProcessEnvironment(env);
    p.start(program, args);
    EXPECT_TRUE(p.waitForFinished(120000));
    return ToolRun{p.exitCode(), QString::fromUtf8(p.readAllStandardOutput()),
        QString::fromUtf8(p.readAllStandardError())};
}

class CopyToolTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path(const char* name) const { return dir.filePath(QString::fromLatin1(name)); }
};

// Unreadable stretches are skipped: the run finishes with status 1, one "文件跳过：" line per stretch,
// the readable bytes in place and the skipped ones as zeros.
TEST_F(CopyToolTest, SkipsUnreadableRangesAndSaysSo)
{
    const QByteArray data = randomBytes(3'000'000);
    writeFile(path("src.dat"), data);
    auto env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("VINDARO_TEST_BAD_RANGES"), QStringLiteral("1000000:1,2000000:1"));

    const ToolRun r = run(QStringLiteral(VINDARO_FAULTY_COPY_TOOL),
        {QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("1"), QStringLiteral("-s"),
            QStringLiteral("1"), path("src.dat"), path("dst.dat")},
        env);

    EXPECT_EQ(r.exitCode, 1) << r.err.toStdString();
    EXPECT_EQ(r.out.count(QStringLiteral("文件跳过：")), 2) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(QStringLiteral("被成功地复制到：")));
    const QByteArray out = readFile(path("dst.dat"));
    ASSERT_EQ(out.size(), data.size());
    EXPECT_EQ(out[1000000], '\0');
    EXPECT_EQ(out[2000000], '\0');
    qint64 zeros = 0;
    for (qsizetype i = 0; i < data.size(); ++i) {
        if (out[i] != data[i]) {
            ASSERT_EQ(out[i], '\0') << "byte " << i;
            ++zeros;
        }
    }
    // each stretch is 8 blocks of at most 61440 bytes around its bad byte; the rest arrived intact
    EXPECT_GT(zeros, 0);
    EXPECT_LT(zeros, 2 * 9 * 61440);
    EXPECT_EQ(out.first(990000), data.first(990000));
    EXPECT_EQ(out.sliced(2600000), data.sliced(2600000));
}

// A read that never returns: the first Ctrl-C cannot end the copy, the second ends the process at once
// with a record of what was written, from which a later run completes the copy. The same in a batch.
TEST_F(CopyToolTest, SecondInterruptDuringAStuckReadSavesTheRecordAndEnds)
{
    const QByteArray data = randomBytes(2'000'000);
    writeFile(path("src.dat"), data);
    ASSERT_TRUE(QDir().mkpath(path("batch")));
    const struct
    {
        const char* name;
        QStringList args;
        QString destination;
        qint64 blockBytes; // a batch reads a disk in blocks of its own size
    } rows[] = {
        {"single copy", {path("src.dat"), path("dst.dat")}, path("dst.dat"), 6144},
        {"batch", {QStringLiteral("-t"), path("batch"), path("src.dat")}, path("batch/src.dat"), 61440},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        auto env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("VINDARO_TEST_HANG_AT_READ"), QStringLiteral("5"));
        env.insert(QStringLiteral("VINDARO_TEST_HANG_FOREVER"), QStringLiteral("1"));

        QProcess p;
        p.setProcessEnvironment(env);
        p.setReadChannel(QProcess::StandardError); // where HANG comes
        p.start(QStringLiteral(VINDARO_FAULTY_COPY_TOOL),
            QStringList{QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("1")} + row.args);
        ASSERT_TRUE(p.waitForStarted());
        QByteArray err;
        QDeadlineTimer deadline(60000);
        while (!err.contains("HANG") && !deadline.hasExpired()) {
            p.waitForReadyRead(1000);
            err += p.readAllStandardError();
        }
        ASSERT_TRUE(err.contains("HANG"));
        ::kill(pid_t(p.processId()), SIGINT);
        EXPECT_FALSE(p.waitForFinished(300)); // the read does not give up: no cancel can act
        QElapsedTimer sinceSecond;
        sinceSecond.start();
        ::kill(pid_t(p.processId()), SIGINT);
        ASSERT_TRUE(p.waitForFinished(10000));
        EXPECT_LT(sinceSecond.elapsed(), 1500);
        EXPECT_EQ(p.exitCode(), 128 + SIGINT);

        // four blocks were written before the fifth read stuck
        const QByteArray partial = readFile(row.destination);
        EXPECT_EQ(partial.size(), 4 * row.blockBytes + 1);
        EXPECT_EQ(partial, data.first(partial.size()));
        EXPECT_TRUE(readFile(qEnvironmentVariable("XDG_STATE_HOME") + QStringLiteral("/vindaro/resume.json"))
                        .contains(row.destination.toUtf8()))
            << "no record";
        const ToolRun resumed = run(QStringLiteral(VINDARO_COPY_TOOL),
            {QStringLiteral("-q"), QStringLiteral("-e"), QStringLiteral("continue"), path("src.dat"),
                row.destination});
        EXPECT_EQ(resumed.exitCode, 0) << resumed.err.toStdString();
        EXPECT_TRUE(resumed.out.startsWith(QStringLiteral("续拷文件：") + path("src.dat")))
            << resumed.out.toStdString(); // continued from a record, not appended
        EXPECT_EQ(readFile(row.destination), data);
    }
}

// Ctrl-C during a hanging read cancels after that block, keeps the partial file with a resume record,
// and a second run continues it to a byte-identical copy.
TEST_F(CopyToolTest, InterruptKeepsAResumablePartialFile)
{
    const QByteArray data = randomBytes(2'000'000);
    writeFile(path("src.dat"), data);
    auto env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("VINDARO_TEST_HANG_AT_READ"), QStringLiteral("5"));

    QProcess p;
    p.setProcessEnvironment(env);
    p.setReadChannel(QProcess::StandardError); // where HANG comes
    p.start(
        QStringLiteral(VINDARO_FAULTY_COPY_TOOL), {QStringLiteral("-q"), path("src.dat"), path("dst.dat")});
    ASSERT_TRUE(p.waitForStarted());
    QByteArray err;
    QDeadlineTimer deadline(60000);
    while (!err.contains("HANG") && !deadline.hasExpired()) {
        p.waitForReadyRead(1000);
        err += p.readAllStandardError();
    }
    ASSERT_TRUE(err.contains("HANG"));
    ::kill(pid_t(p.processId()), SIGINT);
    ASSERT_TRUE(p.waitForFinished(60000));
    const QString out = QString::fromUtf8(p.readAllStandardOutput());
    EXPECT_EQ(p.exitCode(), 2);
    EXPECT_TRUE(out.contains(QStringLiteral("取消复制：") + path("src.dat"))) << out.toStdString();
    const QByteArray partial = readFile(path("dst.dat"));
    EXPECT_GT(partial.size(), 0);
    EXPECT_LT(partial.size(), data.size());
    EXPECT_EQ(partial, data.first(partial.size()));

    // without an answer for the existing file nothing is touched
    const ToolRun refused
        = run(QStringLiteral(VINDARO_COPY_TOOL), {QStringLiteral("-q"), path("src.dat"), path("dst.dat")});
    EXPECT_EQ(refused.exitCode, 4);
    EXPECT_TRUE(refused.err.contains(QStringLiteral("续拷记录"))) << refused.err.toStdString();
    EXPECT_EQ(readFile(path("dst.dat")), partial);

    const ToolRun resumed = run(QStringLiteral(VINDARO_COPY_TOOL),
        {QStringLiteral("-q"), QStringLiteral("--existing"), QStringLiteral("continue"), path("src.dat"),
            path("dst.dat")});
    EXPECT_EQ(resumed.exitCode, 0) << resumed.err.toStdString();
    EXPECT_TRUE(resumed.out.startsWith(QStringLiteral("续拷文件：") + path("src.dat")));
    EXPECT_EQ(readFile(path("dst.dat")), data);
}

TEST_F(CopyToolTest, UsageErrorsAndFailuresHaveTheirOwnStatus)
{
    EXPECT_EQ(run(QStringLiteral(VINDARO_COPY_TOOL), {QStringLiteral("--help")}).exitCode, 0);
    const ToolRun version = run(QStringLiteral(VINDARO_COPY_TOOL), {QStringLiteral("--version")});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^vindaro-copy \\d+\\.\\d+\\.\\d+\n$"))
                    .match(version.out)
                    .hasMatch())
        << version.out.toStdString();
    EXPECT_EQ(run(QStringLiteral(VINDARO_COPY_TOOL), {path("only-one")}).exitCode, 64);
    EXPECT_EQ(run(QStringLiteral(VINDARO_COPY_TOOL),
                  {QStringLiteral("-r"), QStringLiteral("101"), path("a"), path("b")})
                  .exitCode,
        64);

    const ToolRun missing
        = run(QStringLiteral(VINDARO_COPY_TOOL), {QStringLiteral("-q"), path("none.dat"), path("b.dat")});
    EXPECT_EQ(missing.exitCode, 3);
    EXPECT_TRUE(missing.err.contains(QStringLiteral("[53].文件未找到"))) << missing.err.toStdString();

    writeFile(path("small.dat"), QByteArray("0123456789"));
    writeFile(path("dst.dat"), QByteArray("mine"));
    const ToolRun merged = run(QStringLiteral(VINDARO_COPY_TOOL),
        {QStringLiteral("-q"), QStringLiteral("-e"), QStringLiteral("merge"), path("small.dat"),
            path("dst.dat")});
    EXPECT_EQ(merged.exitCode, 0) << merged.err.toStdString();
    EXPECT_EQ(readFile(path("dst.dat")), QByteArray("mine0123456789"));
    const ToolRun renamed = run(QStringLiteral(VINDARO_COPY_TOOL),
        {QStringLiteral("-q"), QStringLiteral("-e"), QStringLiteral("rename:copy2.dat"), path("small.dat"),
            path("dst.dat")});
    EXPECT_EQ(renamed.exitCode, 0);
    EXPECT_EQ(readFile(path("copy2.dat")), QByteArray("0123456789"));
}

// A batch into one folder: files keep their folders below the volume with -k, a second run keeps both
// files where the lengths differ and leaves equal ones alone.
TEST_F(CopyToolTest, BatchCopiesAListIntoOneFolder)
{
    QDir().mkpath(path("disc/MPEGAV"));
    const QByteArray a = randomBytes(300'000);
    const QByteArray b = randomBytes(1000);
    writeFile(path("disc/MPEGAV/AVSEQ01.DAT"), a);
    writeFile(path("disc/MPEGAV/AVSEQ02.DAT"), b);
    const QStringList sources{path("disc/MPEGAV/AVSEQ01.DAT"), path("disc/MPEGAV/AVSEQ02.DAT")};

    const ToolRun flat = run(QStringLiteral(VINDARO_COPY_TOOL),
        QStringList{QStringLiteral("-q"), QStringLiteral("-t"), path("out")} + sources);
    EXPECT_EQ(flat.exitCode, 0) << flat.err.toStdString();
    EXPECT_EQ(readFile(path("out/AVSEQ01.DAT")), a);
    EXPECT_EQ(readFile(path("out/AVSEQ02.DAT")), b);

    const ToolRun kept = run(QStringLiteral(VINDARO_COPY_TOOL),
        QStringList{QStringLiteral("-q"), QStringLiteral("-k"), QStringLiteral("-t"), path("tree")}
            + sources);
    EXPECT_EQ(kept.exitCode, 0) << kept.err.toStdString();
    // the temporary folder lies on the root volume (or its own): its whole path is kept below "tree"
    const QString relative = QFileInfo(path("disc/MPEGAV/AVSEQ01.DAT")).absoluteFilePath();
    bool found = false;
    for (qsizetype at = 0; at >= 0 && !found; at = relative.indexOf(QLatin1Char('/'), at + 1))
        found = QFile::exists(path("tree") + relative.mid(at));
    EXPECT_TRUE(found);

    writeFile(path("disc/MPEGAV/AVSEQ02.DAT"), b + "more");
    const ToolRun again = run(QStringLiteral(VINDARO_COPY_TOOL),
        QStringList{QStringLiteral("-q"), QStringLiteral("-e"), QStringLiteral("keep"), QStringLiteral("-t"),
            path("out")}
            + sources);
    EXPECT_EQ(again.exitCode, 0) << again.err.toStdString();
    EXPECT_EQ(readFile(path("out/AVSEQ01.DAT")), a);
    EXPECT_EQ(readFile(path("out/AVSEQ02.DAT")), b);
    EXPECT_EQ(readFile(path("out/N[01]AVSEQ02.DAT")), b + "more");

    const ToolRun refused = run(QStringLiteral(VINDARO_COPY_TOOL),
        QStringList{QStringLiteral("-q"), QStringLiteral("-t"), path("out")} + sources);
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_TRUE(refused.err.contains(QStringLiteral("目标文件已经存在")));
}

// Starts the faulty tool, waits until its read hangs, then sends `signal`.
int runUntilHangThen(const QStringList& args, QProcessEnvironment env, int signal)
{
    QProcess p;
    p.setProcessEnvironment(env);
    p.setReadChannel(QProcess::StandardError); // where HANG comes
    p.start(QStringLiteral(VINDARO_FAULTY_COPY_TOOL), args);
    if (!p.waitForStarted())
        return -1;
    QByteArray err;
    QDeadlineTimer deadline(60000);
    while (!err.contains("HANG") && !deadline.hasExpired() && p.state() == QProcess::Running) {
        p.waitForReadyRead(1000);
        err += p.readAllStandardError();
    }
    EXPECT_TRUE(err.contains("HANG")) << err.toStdString();
    ::kill(pid_t(p.processId()), signal);
    EXPECT_TRUE(p.waitForFinished(30000));
    return p.exitStatus() == QProcess::CrashExit ? -signal : p.exitCode();
}

// A copy killed at a random block (no chance to save anything then) and continued later ends with the very
// bytes of a copy that was never interrupted: its record and map, saved as it went, say where to go on.
TEST_F(CopyToolTest, ACopyKilledMidwayAndContinuedEndsByteIdentical)
{
    const QByteArray data = randomBytes(100'000);
    writeFile(path("src.dat"), data);
    auto env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("VINDARO_TEST_BAD_RANGES"), QStringLiteral("20000:1,60000:3000"));
    const QStringList copy{QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("1"),
        QStringLiteral("-s"), QStringLiteral("1"), path("src.dat")};
    EXPECT_EQ(
        run(QStringLiteral(VINDARO_FAULTY_COPY_TOOL), copy + QStringList{path("whole.dat")}, env).exitCode,
        1);
    const QByteArray whole = readFile(path("whole.dat"));

    QRandomGenerator random(20);
    for (int seed = 0; seed < 20; ++seed) {
        const QString destination = path("killed") + QString::number(seed) + QStringLiteral(".dat");
        auto killing = env;
        killing.insert(QStringLiteral("VINDARO_TEST_HANG_AT_READ"), QString::number(random.bounded(2, 11)));
        killing.insert(QStringLiteral("VINDARO_TEST_HANG_FOREVER"), QStringLiteral("1"));
        killing.insert(QStringLiteral("VINDARO_TEST_CHECKPOINT_MS"), QStringLiteral("0"));
        EXPECT_EQ(runUntilHangThen(copy + QStringList{destination}, killing, SIGKILL), -SIGKILL);
        const ToolRun resumed = run(QStringLiteral(VINDARO_FAULTY_COPY_TOOL),
            QStringList{QStringLiteral("-e"), QStringLiteral("continue")} + copy + QStringList{destination},
            env);
        EXPECT_EQ(resumed.exitCode, 1) << seed << resumed.err.toStdString();
        EXPECT_TRUE(readFile(destination) == whole) << "seed " << seed;
    }
}

// The refine pass stopped by Ctrl-C keeps its map; --refine-only goes on from it and ends with the bytes an
// uninterrupted refine gets: everything readable, and only that.
TEST_F(CopyToolTest, ARefineInterruptedBySignalAndContinuedEndsByteIdentical)
{
    const QByteArray data = randomBytes(300'000);
    writeFile(path("src.dat"), data);
    auto env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("VINDARO_TEST_BAD_RANGES"), QStringLiteral("70000:1,120000:5000,200000:3000"));
    const QStringList refine{QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("1"),
        QStringLiteral("-s"), QStringLiteral("1"), QStringLiteral("--refine"), QStringLiteral("--sector"),
        QStringLiteral("2048"), path("src.dat")};
    const ToolRun whole
        = run(QStringLiteral(VINDARO_FAULTY_COPY_TOOL), refine + QStringList{path("whole.dat")}, env);
    EXPECT_EQ(whole.exitCode, 1) << whole.err.toStdString();
    const QByteArray refined = readFile(path("whole.dat"));
    ASSERT_EQ(refined.size(), data.size());
    for (qsizetype i = 0; i < data.size(); ++i) {
        const bool bad
            = (i >= 69632 && i < 71680) || (i >= 118784 && i < 126976) || (i >= 198656 && i < 204800);
        ASSERT_EQ(refined[i], bad ? '\0' : data[i]) << "byte " << i; // the bad 2,048-byte sectors only
    }

    auto interrupting = env;
    interrupting.insert(QStringLiteral("VINDARO_TEST_HANG_AT_READ"), QStringLiteral("90")); // in the refine
    EXPECT_EQ(runUntilHangThen(refine + QStringList{path("stopped.dat")}, interrupting, SIGINT), 2);
    EXPECT_FALSE(readFile(path("stopped.dat")) == refined); // it did stop midway
    const ToolRun goOn = run(QStringLiteral(VINDARO_FAULTY_COPY_TOOL),
        QStringList{QStringLiteral("-q"), QStringLiteral("--refine-only"), QStringLiteral("--sector"),
            QStringLiteral("2048"), path("src.dat"), path("stopped.dat")},
        env);
    EXPECT_EQ(goOn.exitCode, 1) << goOn.err.toStdString();
    EXPECT_TRUE(readFile(path("stopped.dat")) == refined);
}

} // namespace
