#include "media/MediaLayout.h"

#include <gtest/gtest.h>

using namespace vindaro::media;

namespace {

// A bar of 216 pixels with a knob of 16 leaves 200 pixels of travel.
TEST(MediaLayout, KnobFollowsThePositionAndBack)
{
    EXPECT_EQ(knobLeft(0, 100, 216, 16), 0);
    EXPECT_EQ(knobLeft(50, 100, 216, 16), 100);
    EXPECT_EQ(knobLeft(150, 100, 216, 16), 200); // a duration estimate shorter than the stream
    EXPECT_EQ(knobLeft(50, 0, 216, 16), 0); // unknown duration
    EXPECT_EQ(knobLeft(50, 100, 10, 16), 0); // a bar narrower than its knob

    EXPECT_EQ(clampKnobLeft(-5, 216, 16), 0);
    EXPECT_EQ(clampKnobLeft(300, 216, 16), 200);
    EXPECT_DOUBLE_EQ(positionAtKnob(100, 216, 16, 100), 50);
    EXPECT_DOUBLE_EQ(positionAtKnob(250, 216, 16, 100), 100);
    EXPECT_DOUBLE_EQ(positionAtKnob(100, 16, 16, 100), 0);
}

TEST(MediaLayout, PictureIsCentredAtItsSizeOrScaledDownToFit)
{
    EXPECT_EQ(videoPlacement(QSize(352, 288), QSize(360, 292)), QRect(4, 2, 352, 288));
    EXPECT_EQ(videoPlacement(QSize(720, 576), QSize(360, 292)), QRect(0, 2, 360, 288));
    EXPECT_EQ(videoPlacement(QSize(352, 240), QSize(200, 400)), QRect(0, 132, 200, 136));
    EXPECT_TRUE(videoPlacement(QSize(), QSize(360, 292)).isEmpty());
}

TEST(MediaLayout, ControlButtonHalvesAndStates)
{
    EXPECT_EQ(controlHalfAt(0, 44), ControlHalf::Play);
    EXPECT_EQ(controlHalfAt(21, 44), ControlHalf::Play);
    EXPECT_EQ(controlHalfAt(22, 44), ControlHalf::Stop);

    const struct
    {
        bool open;
        bool playing;
        ControlAction onPlay;
        ControlAction onStop;
    } rows[] = {
        {false, false, ControlAction::None, ControlAction::None}, // both grey
        {true, false, ControlAction::Start, ControlAction::None},
        {true, true, ControlAction::None, ControlAction::Pause},
    };
    for (const auto& row : rows) {
        const ControlLook look = controlLook(row.open, row.playing);
        EXPECT_EQ(controlPress(look, ControlHalf::Play), row.onPlay);
        EXPECT_EQ(controlPress(look, ControlHalf::Stop), row.onStop);
    }
}

TEST(MediaLayout, AnimationRunsThroughFourFrames)
{
    int frame = 0;
    for (int tick = 0; tick < 4; ++tick)
        frame = nextAnimationFrame(frame);
    EXPECT_EQ(frame, 0);
    EXPECT_EQ(nextAnimationFrame(2), 3);
}

} // namespace
