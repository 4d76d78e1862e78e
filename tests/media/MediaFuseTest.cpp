// The windows playing straight from a scratched disc, as the preview does with the list's entries: real
// read errors and a read that hangs, from a FUSE file system of the test's own.
#include "FuseMount.h"
#include "TestMedia.h"
#include "files_list/ListFakes.h"
#include "media/MediaSession.h"
#include "media/ui/QtMediaBackend.h"
#include "media/ui/frmPrevVideo.h"

#include <QFile>
#include <QPointer>
#include <QProcess>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

using namespace vindaro::media;
using namespace vindaro::testing;

namespace {

constexpr int kWaitMs = 30000;

// A disc holding AVSEQ01.DAT, the bytes of a real clip with a fault over 8 KiB from half the file on.
class ScratchedDisc : public FuseMount
{
public:
    ScratchedDisc(const QString& mountPoint, const QString& clip, const char* fault)
        : FuseMount(QStringLiteral(FAULTY_FS), mountPoint,
            {QStringLiteral("AVSEQ01.DAT:@%1:%2@%3+8192")
                    .arg(clip, QLatin1String(fault))
                    .arg(QFile(clip).size() / 2)})
    {
    }
    ~ScratchedDisc() override { release(); }
    QString file() const { return path(QStringLiteral("AVSEQ01.DAT")); }
    // True once a read hangs in the disc.
    bool hangs()
    {
        return QTest::qWaitFor([&] { return heard().contains("hang"); }, kWaitMs);
    }
    // Everything the disc said so far.
    QByteArray heard() { return said += process().readAllStandardOutput(); }
    // Lets every hanging read go on.
    void release() { QFile::exists(path(QStringLiteral("release"))); }

private:
    QByteArray said;
};

class ScratchedMedia : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!QtMediaBackend::available())
            GTEST_SKIP() << "Qt Multimedia finds no media backend on this machine";
        QString error;
        ASSERT_TRUE(makeClip({1, QSize(352, 240), 50, 30000, 1001, 44100}, clip, &error))
            << error.toStdString();
        ASSERT_TRUE(QTest::qWaitFor([] { return QtMediaBackend::liveThreads() == 0; }, kWaitMs));
    }
    std::unique_ptr<ScratchedDisc> mount(const char* fault)
    {
        return std::make_unique<ScratchedDisc>(world.path(QStringLiteral("disc")), clip, fault);
    }

    ListWorld world;
    QString clip = world.path(QStringLiteral("clip.dat"));
};

TEST_F(ScratchedMedia, ReadErrorsEndThePlayAndNothingHangs)
{
    const auto disc = mount("eio");
    VINDARO_SKIP_UNLESS_MOUNTED(*disc);
    QtMediaBackend backend;
    MediaSession session(backend);
    session.open(disc->file());
    session.StartPlay();
    EXPECT_TRUE(QTest::qWaitFor([&] { return session.state() == MediaState::Empty; }, kWaitMs));
    session.StartPlay();
    EXPECT_EQ(session.state(), MediaState::Empty);
}

// The drive retries a sector for as long as it likes: the preview closes at once all the same, and the
// player it had is released on its own thread when the read finally returns.
TEST_F(ScratchedMedia, AReadThatHangsNeverHoldsTheWindow)
{
    const auto disc = mount("hang");
    VINDARO_SKIP_UNLESS_MOUNTED(*disc);
    QPointer<frmPrevVideo> preview = new frmPrevVideo(world.fs);
    preview->show();
    preview->OpenMediaFile(disc->file());
    preview->StartPlay();
    ASSERT_TRUE(disc->hangs());

    preview->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return preview.isNull(); }, kWaitMs));
    // The window is gone while the read still hangs: its player waits on its own thread.
    EXPECT_FALSE(disc->heard().contains("released"));
    EXPECT_EQ(QtMediaBackend::liveThreads(), 1);
    disc->release();
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
    const auto disc = mount("hang");
    VINDARO_SKIP_UNLESS_MOUNTED(*disc);
    QProcess probe;
    probe.start(QStringLiteral(MEDIA_QUIT_PROBE), {disc->file()});
    ASSERT_TRUE(disc->hangs());

    probe.write("quit\n");
    EXPECT_TRUE(QTest::qWaitFor([&] { return mainThreadState(probe.processId()) == 'Z'; }, kWaitMs));
    EXPECT_FALSE(disc->heard().contains("released"));
    disc->release();
    ASSERT_TRUE(probe.waitForFinished(kWaitMs));
    EXPECT_EQ(probe.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(probe.exitCode(), 0);
}

} // namespace
