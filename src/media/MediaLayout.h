#pragma once

#include <QRect>
#include <QSize>

// Geometry and small decisions of the two media windows, kept apart from their widgets.
namespace vindaro::media {

// The preview's drawn progress bar: the knob's left edge runs from 0 to barWidth - knobWidth.
// position / duration of the way along; 0 for an unknown or empty duration, the end for positions past it.
int knobLeft(double positionSeconds, double durationSeconds, int barWidth, int knobWidth);
// A dragged knob stays on the bar.
int clampKnobLeft(int left, int barWidth, int knobWidth);
// The position a knob at `left` stands for, in the same proportion.
double positionAtKnob(int left, int barWidth, int knobWidth, double durationSeconds);

// Where the picture goes in the video area: at its own size, centred, when it fits; scaled down to fit
// with its shape kept, centred, when it does not. An empty rectangle without a picture size.
QRect videoPlacement(QSize picture, QSize area);

// The preview's window icon runs through four frames, one per tick.
constexpr int kAnimationFrames = 4;
constexpr int nextAnimationFrame(int frame)
{
    return (frame + 1) % kAnimationFrames;
}

// The player's drawn control button: the play icon on the left half, the stop icon on the right half.
enum class ControlHalf
{
    Play,
    Stop,
};
ControlHalf controlHalfAt(int x, int buttonWidth);

struct ControlLook
{
    bool playActive = false;
    bool stopActive = false;
};
// Both grey without media; while playing only the stop icon is active, otherwise only the play icon.
ControlLook controlLook(bool mediaOpen, bool playing);

enum class ControlAction
{
    None,
    Start,
    Pause,
};
// A left press on an active icon starts or pauses; one on a grey icon does nothing.
ControlAction controlPress(ControlLook look, ControlHalf half);

} // namespace vindaro::media
