// The windows playing straight from a scratched disc, as the preview does with the list's entries: real
// read errors and a read that hangs, from a FUSE file system of the test's own.
#include "FuseMount.h"
#include "TestMedia.h"
#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "files/FileSystem.h"
#include "media/MediaSession.h"
#include "media/ui/QtMediaBackend.h"
#include "media/ui/frmPrevVideo.h"

#include <QFile>
#include <QPointer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <csignal>

using namespace vindaro::media;
using namespace vindaro::testing;

namespace {

constexpr int kWaitMs = 30000;

class ScratchedMedia : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!QtMediaBackend::available())
            GTEST_SKIP() << "Qt Multimedia finds no media backend on this machine";
        QString error;
        ASSERT_TRUE(makeClip({1, QSize(352, 240), 50, 30000, 1001, 44100}, m_source, &error))
            << error.toStdString();
        ASSERT_TRUE(QTest::qWaitFor([] { return QtMediaBackend::liveThreads() == 0; }, kWaitMs));
    }
    // `kind` over the stretch from half the file on.
    QStringList ranges(const char* kind) const
    {
        const qint64 half = QFile(m_source).size() / 2;
        return {m_source, QStringLiteral("%1:%2:8192").arg(QLatin1String(kind)).arg(half)};
    }

    QTemporaryDir m_folder;
    QString m_source = m_folder.filePath(QStringLiteral("clip.dat"));
    QString m_disc = m_folder.filePath(QStringLiteral("disc"));
};

TEST_F(ScratchedMedia, ReadErrorsEndThePlayAndNothingHangs)
{
    FuseMount disc(QStringLiteral(SCRATCHED_MEDIA_FS), m_disc, ranges("eio"));
    VINDARO_SKIP_UNLESS_MOUNTED(disc);
    QtMediaBackend backend;
    MediaSession session(backend);
    session.open(disc.path(QStringLiteral("AVSEQ01.DAT")));
    session.StartPlay();
    EXPECT_TRUE(QTest::qWaitFor([&] { return session.state() == MediaState::Empty; }, kWaitMs));
    session.StartPlay();
    EXPECT_EQ(session.state(), MediaState::Empty);
}

// The drive retries a sector for as long as it likes: the preview closes at once all the same, and the
// player it had is released on its own thread when the read finally returns.
TEST_F(ScratchedMedia, AReadThatHangsNeverHoldsTheWindow)
{
    FuseMount disc(QStringLiteral(SCRATCHED_MEDIA_FS), m_disc, ranges("hang"));
    VINDARO_SKIP_UNLESS_MOUNTED(disc);
    FakeVolumes volumes;
    FakeShell shell;
    vindaro::files::FileSystem fs(volumes, shell);

    QPointer<frmPrevVideo> preview = new frmPrevVideo(fs);
    preview->show();
    preview->OpenMediaFile(disc.path(QStringLiteral("AVSEQ01.DAT")));
    preview->StartPlay();
    QByteArray said;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            said += disc.process().readAllStandardOutput();
            return said.contains("hang");
        },
        kWaitMs));

    preview->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return preview.isNull(); }, kWaitMs));
    // The window is gone while the read still hangs: its player waits on its own thread.
    said += disc.process().readAllStandardOutput();
    EXPECT_FALSE(said.contains("released"));
    EXPECT_EQ(QtMediaBackend::liveThreads(), 1);

    ::kill(static_cast<pid_t>(disc.process().processId()), SIGUSR1);
    EXPECT_TRUE(QTest::qWaitFor([] { return QtMediaBackend::liveThreads() == 0; }, kWaitMs));
}

// The state letter of a process's main thread: "S" asleep, "Z" gone while other threads hold the process.
char mainThreadState(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return '?';
    const QByteArray text = stat.readAll(); // pid (name) state ...
    const qsizetype close = text.lastIndexOf(')');
    return close >= 0 && close + 2 < text.size() ? text.at(close + 2) : '?';
}

// The program quits while the preview's read hangs: its main thread ends within seconds, without a crash
// and without waiting for the drive. (The process itself goes only once the kernel gives the read up, as
// with a real drive.)
TEST_F(ScratchedMedia, QuitWhileAReadHangsEndsTheProgram)
{
    FuseMount disc(QStringLiteral(SCRATCHED_MEDIA_FS), m_disc, ranges("hang"));
    VINDARO_SKIP_UNLESS_MOUNTED(disc);
    QProcess probe;
    probe.start(QStringLiteral(MEDIA_QUIT_PROBE), {disc.path(QStringLiteral("AVSEQ01.DAT"))});
    QByteArray said;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            said += disc.process().readAllStandardOutput();
            return said.contains("hang");
        },
        kWaitMs));

    probe.write("quit\n");
    EXPECT_TRUE(QTest::qWaitFor([&] { return mainThreadState(probe.processId()) == 'Z'; }, kWaitMs));
    said += disc.process().readAllStandardOutput();
    EXPECT_FALSE(said.contains("released"));

    ::kill(static_cast<pid_t>(disc.process().processId()), SIGUSR1);
    ASSERT_TRUE(probe.waitForFinished(kWaitMs));
    EXPECT_EQ(probe.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(probe.exitCode(), 0);
}

} // namespace
