#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// A real process quits while its copy hangs in a read: it ends within about a second, leaves a record of
// what was written, and the destination holds exactly that.
TEST(QuitWhileReadHangs, TheProcessEndsAtOnceWithItsRecord)
{
    QTemporaryDir dir;
    const qint64 block = 40960;
    const qint64 hangAt = 3 * block;
    QByteArray data(20 * block + 1, Qt::Uninitialized);
    for (qsizetype i = 0; i < data.size(); ++i)
        data[i] = char(1 + i % 251);
    const QString source = dir.filePath(QStringLiteral("src.dat"));
    const QString destination = dir.filePath(QStringLiteral("dst.dat"));
    {
        QFile f(source);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        ASSERT_EQ(f.write(data), data.size());
    }

    QProcess probe;
    probe.start(QStringLiteral(QUIT_PROBE), {source, destination, QString::number(hangAt)});
    ASSERT_TRUE(probe.waitForStarted(10000));
    QElapsedTimer sinceQuit;
    const QDeadlineTimer deadline(30000);
    while (!probe.canReadLine() && !deadline.hasExpired() && probe.state() == QProcess::Running)
        probe.waitForReadyRead(1000);
    ASSERT_EQ(probe.readLine().trimmed(), QByteArray("QUIT")) << probe.readAllStandardError().toStdString();
    sinceQuit.start();
    const bool ended = probe.waitForFinished(10000);
    const qint64 took = sinceQuit.elapsed();
    if (!ended) {
        probe.kill();
        probe.waitForFinished(10000);
    }
    ASSERT_TRUE(ended) << "the process did not end after the quit";
    EXPECT_LT(took, 1500);
    EXPECT_EQ(probe.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(probe.exitCode(), 0);

    const QString store = qEnvironmentVariable("XDG_STATE_HOME") + QStringLiteral("/vindaro/resume.json");
    const QJsonObject record = QJsonDocument::fromJson(readFile(store))
                                   .object()
                                   .value(QStringLiteral("records"))
                                   .toObject()
                                   .value(destination)
                                   .toObject();
    ASSERT_FALSE(record.isEmpty()) << readFile(store).toStdString();
    EXPECT_EQ(record.value(QStringLiteral("continuePosition")).toInteger(), hangAt + 1);
    EXPECT_TRUE(readFile(destination) == data.first(hangAt + 1));
}

} // namespace
