#include "MediaLayout.h"

#include <QtGlobal>

#include <cmath>

namespace vindaro::media {

int knobLeft(double positionSeconds, double durationSeconds, int barWidth, int knobWidth)
{
    const int travel = qMax(0, barWidth - knobWidth);
    if (!(durationSeconds > 0) || !(positionSeconds > 0))
        return 0;
    const double share = qMin(1.0, positionSeconds / durationSeconds);
    return static_cast<int>(std::floor(share * travel));
}

int clampKnobLeft(int left, int barWidth, int knobWidth)
{
    return qBound(0, left, qMax(0, barWidth - knobWidth));
}

double positionAtKnob(int left, int barWidth, int knobWidth, double durationSeconds)
{
    const int travel = barWidth - knobWidth;
    if (travel <= 0 || !(durationSeconds > 0))
        return 0.0;
    return static_cast<double>(clampKnobLeft(left, barWidth, knobWidth)) / travel * durationSeconds;
}

QRect videoPlacement(QSize picture, QSize area)
{
    if (picture.isEmpty() || area.isEmpty())
        return {};
    QSize shown = picture;
    if (shown.width() > area.width() || shown.height() > area.height())
        shown = picture.scaled(area, Qt::KeepAspectRatio);
    return {QPoint((area.width() - shown.width()) / 2, (area.height() - shown.height()) / 2), shown};
}

ControlHalf controlHalfAt(int x, int buttonWidth)
{
    return x < buttonWidth / 2 ? ControlHalf::Play : ControlHalf::Stop;
}

ControlLook controlLook(bool mediaOpen, bool playing)
{
    if (!mediaOpen)
        return {};
    return {!playing, playing};
}

ControlAction controlPress(ControlLook look, ControlHalf half)
{
    if (half == ControlHalf::Play)
        return look.playActive ? ControlAction::Start : ControlAction::None;
    return look.stopActive ? ControlAction::Pause : ControlAction::None;
}

} // namespace vindaro::media
