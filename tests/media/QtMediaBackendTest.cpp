// The player and the preview on the real media backend, offscreen and without an audio device, with
// program streams made by a real encoder at test time and rescue copies of them with zeroed stretches.
#include "media/ui/QtMediaBackend.h"
#include "TestMedia.h"
#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "files/FileSystem.h"
#include "media/MediaSession.h"
#include "media/ui/VideoArea.h"
#include "media/ui/frmPrevVideo.h"

#include <QLabel>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using namespace vindaro::media;
using namespace vindaro::testing;

namespace {

constexpr int kOpenMs = 15000;
constexpr int kPlayMs = 30000;

const ClipRecipe kVcdClip{1, QSize(352, 240), 50, 30000, 1001, 44100};
const ClipRecipe kDvdClip{2, QSize(352, 288), 50, 25, 1, 48000};
// Two stretches a scratch would leave: 16 KiB at a third of the way, 8 KiB at three fifths.
const QList<ZeroStretch> kScratches{{0.3, 16384}, {0.6, 8192}};

class RealMedia : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_available = QtMediaBackend::available();
        if (!s_available)
            return;
        s_folder = new QTemporaryDir;
        QString error;
        const bool made = makeClip(kVcdClip, path("clip.dat"), &error)
            && makeClip(kDvdClip, path("clip.vob"), &error)
            && copyWithZeroedStretches(path("clip.dat"), path("scratched.dat"), kScratches)
            && copyWithZeroedStretches(path("clip.vob"), path("scratched.vob"), kScratches)
            && copyWithZeroedStretches(path("clip.dat"), path("headless.dat"), {{0.0, 4096}})
            && copyWithZeroedStretches(path("clip.dat"), path("tailless.dat"), {{0.95, 8192}});
        if (!made)
            s_error = QStringLiteral("the test media could not be made: ") + error;
    }
    static void TearDownTestSuite()
    {
        delete s_folder;
        s_folder = nullptr;
    }
    void SetUp() override
    {
        if (!s_available)
            GTEST_SKIP() << "Qt Multimedia finds no media backend on this machine";
        ASSERT_TRUE(s_error.isEmpty()) << s_error.toStdString();
        // Players of earlier tests are gone, so every count below is this test's.
        ASSERT_TRUE(QTest::qWaitFor([] { return QtMediaBackend::liveThreads() == 0; }, kOpenMs));
    }
    static QString path(const char* name) { return s_folder->filePath(QString::fromLatin1(name)); }

    static inline bool s_available = false;
    static inline QTemporaryDir* s_folder = nullptr;
    static inline QString s_error;
};

// A session on the real backend with the windows' 100 ms tick, remembering the furthest position read.
struct Playback
{
    QtMediaBackend backend;
    MediaSession session{backend};
    QTimer tick;
    double furthest = 0;
    int ends = 0;

    Playback()
    {
        tick.setInterval(100);
        QObject::connect(&tick, &QTimer::timeout, &session, &MediaSession::tick);
        QObject::connect(&session, &MediaSession::timerEnabledChanged, &tick, [this](bool on) {
            if (on)
                tick.start();
            else
                tick.stop();
        });
        QObject::connect(&session, &MediaSession::positionChanged, &tick,
            [this](double s) { furthest = qMax(furthest, s); });
        QObject::connect(&session, &MediaSession::endReached, &tick, [this] { ++ends; });
    }
    bool waitUntilReady()
    {
        return QTest::qWaitFor(
            [this] { return session.state() == MediaState::Ready && session.pictureSize().isValid(); },
            kOpenMs);
    }
};

TEST_F(RealMedia, VideoCdAndDvdStreamsOpenWithTheirPictureSizeAndDuration)
{
    const struct
    {
        const char* name;
        ClipRecipe recipe;
    } rows[] = {{"clip.dat", kVcdClip}, {"clip.vob", kDvdClip}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Playback playback;
        playback.session.open(path(row.name));
        ASSERT_TRUE(playback.waitUntilReady());
        EXPECT_EQ(playback.session.pictureSize(), row.recipe.picture);
        // The demuxer estimates the duration from time stamps: never more than the stream, not far below.
        EXPECT_GT(playback.session.durationSeconds(), row.recipe.seconds() / 2);
        EXPECT_LE(playback.session.durationSeconds(), row.recipe.seconds() + 0.1);
    }
}

// Whole streams and rescue copies play to their end, past the holes, whether play is asked at once (as the
// preview does) or once the picture is known (as the player's button does). A zeroed tail makes the
// duration estimate far too short, and the play still goes on to the end. A copy whose head is zeroed may
// not be recognised as video at all, but it never hangs: it ends closed, one way or another.
TEST_F(RealMedia, StreamsAndRescueCopiesPlayToTheirEnd)
{
    const struct
    {
        const char* name;
        double seconds; // the position the play must pass; 0: only that it ends
        bool playOnceReady;
    } rows[] = {
        {"clip.dat", kVcdClip.seconds(), false},
        {"scratched.dat", kVcdClip.seconds(), true},
        {"scratched.vob", kDvdClip.seconds(), false},
        {"tailless.dat", kVcdClip.seconds(), true},
        {"headless.dat", 0, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Playback playback;
        playback.session.open(path(row.name));
        if (row.playOnceReady) {
            ASSERT_TRUE(playback.waitUntilReady());
        }
        playback.session.StartPlay();
        ASSERT_TRUE(QTest::qWaitFor([&] { return playback.session.state() == MediaState::Empty; }, kPlayMs));
        if (row.seconds > 0) {
            EXPECT_EQ(playback.ends, 1);
            EXPECT_GE(playback.furthest, row.seconds * 0.8);
        }
        // Played out, the file needs a new open.
        playback.session.StartPlay();
        EXPECT_EQ(playback.session.state(), MediaState::Empty);
    }
}

TEST_F(RealMedia, OnlyTheFileOpenedLastAnswers)
{
    Playback playback;
    playback.session.open(path("clip.dat"));
    playback.session.open(path("scratched.dat"));
    playback.session.open(path("clip.vob"));
    ASSERT_TRUE(playback.waitUntilReady());
    // The replaced players end on their own threads; whatever they still had to say is dropped.
    ASSERT_TRUE(QTest::qWaitFor([] { return QtMediaBackend::liveThreads() == 1; }, kOpenMs));
    QCoreApplication::processEvents();
    EXPECT_EQ(playback.session.pictureSize(), kDvdClip.picture);
    EXPECT_EQ(playback.session.state(), MediaState::Ready);
}

TEST_F(RealMedia, PreviewShowsThePictureAndClosesAtAnyMoment)
{
    FakeVolumes volumes;
    FakeShell shell;
    vindaro::files::FileSystem fs(volumes, shell);

    // Closed while playing: the picture was on screen, the facts hidden behind it.
    QPointer<frmPrevVideo> preview = new frmPrevVideo(fs);
    preview->show();
    preview->OpenMediaFile(path("scratched.vob"));
    preview->StartPlay();
    auto* area = preview->findChild<VideoArea*>(QStringLiteral("picVideoWindow"));
    ASSERT_TRUE(area);
    ASSERT_TRUE(QTest::qWaitFor([&] { return area->showsPicture(); }, kOpenMs));
    EXPECT_FALSE(preview->findChild<QLabel*>(QStringLiteral("lblMP3info"))->isVisible());
    preview->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return preview.isNull(); }, kOpenMs));

    // Closed while the file is still opening.
    preview = new frmPrevVideo(fs);
    preview->show();
    preview->OpenMediaFile(path("clip.dat"));
    preview->StartPlay();
    preview->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return preview.isNull(); }, kOpenMs));
    EXPECT_TRUE(QTest::qWaitFor([] { return QtMediaBackend::liveThreads() == 0; }, kOpenMs));
}

} // namespace
