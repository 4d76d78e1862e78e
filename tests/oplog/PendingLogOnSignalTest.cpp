#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace {

constexpr int kWaitMs = 10000;

class PendingLogOnSignal : public ::testing::TestWithParam<int>
{
};

// Killed by SIGTERM, SIGINT or SIGHUP, the program writes its running text (what was queued included)
// with the run's empty line, and still ends by that signal.
TEST_P(PendingLogOnSignal, WritesThePendingEntriesThenEndsBySignal)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("OperationNotes.log"));
    QProcess probe;
    probe.start(QStringLiteral(PENDING_LOG_PROBE), {path});
    ASSERT_TRUE(probe.waitForStarted(kWaitMs));
    ASSERT_TRUE(probe.waitForReadyRead(kWaitMs));
    ASSERT_EQ(probe.readLine().trimmed(), "READY");

    ASSERT_EQ(::kill(pid_t(probe.processId()), GetParam()), 0);
    ASSERT_TRUE(probe.waitForFinished(kWaitMs));
    EXPECT_EQ(probe.exitStatus(), QProcess::CrashExit);
    EXPECT_EQ(probe.exitCode(), GetParam());

    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    EXPECT_TRUE(text.contains(QStringLiteral("] 文件跳过：2,048字节\r\n"))) << text.toStdString();
    EXPECT_TRUE(text.endsWith(QStringLiteral("] 创建文件：“/probe/new.dat”\r\n\r\n"))) << text.toStdString();
}

INSTANTIATE_TEST_SUITE_P(CatchableSignals, PendingLogOnSignal, ::testing::Values(SIGTERM, SIGINT, SIGHUP));

} // namespace
