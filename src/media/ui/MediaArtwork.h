#pragma once

#include <QList>
#include <QPixmap>

// The drawn pictures of the media windows.
namespace vindaro::media {

// picPlayIcon, picPlayGray, picStopIcon, picStopGray: one half of the player's control button each.
QPixmap playIcon(bool active, QSize size);
QPixmap stopIcon(bool active, QSize size);
// Image1 of the preview: a turning disc in four frames, for the window icon.
QList<QPixmap> animationFrames();

} // namespace vindaro::media
