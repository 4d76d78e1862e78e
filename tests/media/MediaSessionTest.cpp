#include "media/MediaSession.h"
#include "fakes/FakeMediaBackend.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <tuple>

using namespace vindaro::media;
using vindaro::testing::FakeMediaBackend;

namespace {

const QString kVideo = QStringLiteral("/media/cdrom/MPEGAV/AVSEQ01.DAT");

struct SessionRig
{
    FakeMediaBackend backend;
    MediaSession session{backend};
    QSignalSpy ended{&session, &MediaSession::endReached};
    QSignalSpy missing{&session, &MediaSession::pictureMissing};

    // Opened and loaded: 83.5 s of video with sound.
    void openVideo(const QString& path = kVideo)
    {
        session.open(path);
        emit backend.loaded(83.5, true, true);
        backend.calls.clear();
    }
};

TEST(MediaSession, OpensAVideoWithItsDurationAndPictureSizeAndNeverAFileOfNoMediaKind)
{
    SessionRig rig;
    rig.session.open(QStringLiteral("/home/user/notes.txt"));
    rig.session.StartPlay();
    EXPECT_TRUE(rig.backend.calls.isEmpty());
    EXPECT_EQ(rig.session.state(), MediaState::Empty);

    QSignalSpy totals(&rig.session, &MediaSession::totalsChanged);
    rig.session.open(kVideo);
    EXPECT_EQ(rig.backend.calls, QStringList{QStringLiteral("open:") + kVideo});
    EXPECT_EQ(rig.session.state(), MediaState::Opening);

    emit rig.backend.loaded(83.5, true, true);
    EXPECT_EQ(rig.session.state(), MediaState::Ready);
    EXPECT_DOUBLE_EQ(rig.session.durationSeconds(), 83.5);
    emit rig.backend.pictureSizeKnown(QSize(352, 288));
    EXPECT_EQ(rig.session.pictureSize(), QSize(352, 288));
    EXPECT_EQ(totals.count(), 3); // cleared on open, then duration, then picture
}

// A video file whose picture size reads 0 is closed; so is one the backend cannot render. Neither is an end
// of media, so the window keeps the facts and does not reset anything.
TEST(MediaSession, VideoWithoutPictureOrUnrenderableFileIsClosedQuietly)
{
    struct Row
    {
        const char* name;
        std::function<void(FakeMediaBackend&)> answer;
        bool pictureMissing;
    };
    const Row rows[] = {
        {"no video stream", [](FakeMediaBackend& b) { emit b.loaded(10, false, true); }, true},
        {"picture of size 0",
            [](FakeMediaBackend& b) {
                emit b.loaded(10, true, true);
                emit b.pictureSizeKnown(QSize(0, 0));
            },
            true},
        {"cannot render", [](FakeMediaBackend& b) { emit b.failed(); }, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        SessionRig rig;
        rig.session.open(kVideo);
        row.answer(rig.backend);
        EXPECT_EQ(rig.session.state(), MediaState::Empty);
        EXPECT_EQ(rig.backend.calls.last(), QStringLiteral("close"));
        EXPECT_EQ(rig.missing.count(), row.pictureMissing ? 1 : 0);
        EXPECT_EQ(rig.ended.count(), 0);
    }
}

TEST(MediaSession, PlayAskedWhileOpeningStartsOnceReady)
{
    SessionRig rig;
    rig.session.open(QStringLiteral("/music/song.mp3"));
    rig.session.StartPlay();
    EXPECT_EQ(rig.session.state(), MediaState::Opening);
    emit rig.backend.loaded(200, false, true); // audio needs no picture
    EXPECT_EQ(rig.backend.calls.last(), QStringLiteral("play"));
    EXPECT_EQ(rig.session.state(), MediaState::Playing);
    EXPECT_TRUE(rig.session.timerEnabled());

    // A pause while opening takes the wish back.
    rig.session.open(kVideo);
    rig.session.StartPlay();
    rig.session.PausePlay();
    emit rig.backend.loaded(10, true, true);
    EXPECT_EQ(rig.session.state(), MediaState::Ready);
}

TEST(MediaSession, PauseResumesWhereItStoodAndAChosenPositionIsSoughtFirst)
{
    SessionRig rig;
    rig.openVideo();
    rig.session.StartPlay();
    rig.backend.position = 12.4;
    rig.session.tick();
    rig.session.PausePlay();
    EXPECT_EQ(rig.session.state(), MediaState::Paused);
    EXPECT_FALSE(rig.session.timerEnabled());
    rig.session.StartPlay();
    EXPECT_EQ(rig.backend.calls, (QStringList{"play", "pause", "play"}));

    rig.session.PausePlay();
    rig.session.choosePosition(500); // past the end: the end it is
    rig.session.StartPlay();
    EXPECT_EQ(rig.backend.calls.mid(4), (QStringList{"seek:83.5", "play"}));

    // While playing, a chosen position applies at once.
    rig.session.choosePosition(30);
    EXPECT_EQ(rig.backend.calls.mid(6), (QStringList{"seek:30", "play"}));
}

TEST(MediaSession, TickShowsThePositionOnlyWhilePlaying)
{
    SessionRig rig;
    rig.openVideo();
    QSignalSpy moved(&rig.session, &MediaSession::positionChanged);
    rig.backend.position = 3725.6;
    rig.session.tick();
    EXPECT_EQ(moved.count(), 0);

    rig.session.StartPlay();
    rig.session.tick();
    ASSERT_EQ(moved.count(), 1);
    EXPECT_DOUBLE_EQ(moved.first().first().toDouble(), 3725.6);
    const auto shown = [&] {
        const TimeParts t = rig.session.shownTime();
        return std::tuple(t.hours, t.minutes, t.seconds);
    };
    EXPECT_EQ(shown(), std::tuple(1, 2, 5));
    rig.session.StopPlay();
    EXPECT_EQ(shown(), std::tuple(0, 0, 0));
}

// The end and an error while playing both close the media and send the progress control home; playing
// again then needs a new open.
TEST(MediaSession, PlayAfterTheEndNeedsANewOpen)
{
    for (const bool byError : {false, true}) {
        SCOPED_TRACE(byError ? "error while playing" : "end of media");
        SessionRig rig;
        rig.openVideo();
        rig.session.StartPlay();
        rig.backend.position = 80;
        rig.session.tick();
        if (byError)
            emit rig.backend.failed();
        else
            emit rig.backend.ended();
        EXPECT_EQ(rig.session.state(), MediaState::Empty);
        EXPECT_EQ(rig.ended.count(), 1);
        EXPECT_EQ(rig.session.positionSeconds(), 0.0);
        EXPECT_FALSE(rig.session.timerEnabled());
        EXPECT_EQ(rig.backend.calls.last(), QStringLiteral("close"));

        rig.backend.calls.clear();
        rig.session.StartPlay();
        EXPECT_TRUE(rig.backend.calls.isEmpty());
        rig.openVideo();
        rig.session.StartPlay();
        EXPECT_EQ(rig.backend.calls, QStringList{"play"});
    }
}

TEST(MediaSession, StopReleasesOnceAndIgnoresLateAnswers)
{
    SessionRig rig;
    rig.openVideo();
    rig.session.StopPlay();
    rig.session.StopPlay();
    EXPECT_EQ(rig.backend.calls, QStringList{"close"});
    emit rig.backend.pictureSizeKnown(QSize(352, 288));
    emit rig.backend.ended();
    EXPECT_EQ(rig.session.state(), MediaState::Empty);
    EXPECT_EQ(rig.ended.count(), 0);
    EXPECT_FALSE(rig.session.pictureSize().isValid());
}

} // namespace
