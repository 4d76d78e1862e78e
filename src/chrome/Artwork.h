#pragma once

#include "chrome/MenuIcons.h"

#include <QIcon>
#include <QPixmap>

class QPainter;
class QRectF;

namespace vindaro::chrome {

// How a picture is shown: the picture buttons swap these in as the mouse moves and presses.
enum class ArtworkLook
{
    Normal,
    Hover, // brighter
    Pressed, // darker
    Disabled // grey and faded
};

// The chrome's own pictures, drawn as vector shapes in a 16 by 16 unit box scaled to box, so they stay
// sharp at every device pixel ratio. The title bar glyphs (minimise, tray, close) are white, for a dark
// bar; the rest are coloured and sit on any light background.
void paintArtwork(QPainter& painter, ArtworkId id, const QRectF& box);

// A transparent pixmap of logicalSize device-independent pixels at devicePixelRatio.
QPixmap artworkPixmap(ArtworkId id, QSize logicalSize, qreal devicePixelRatio, ArtworkLook look);

// An icon that paints the artwork afresh for every size asked of it (menus, the tray, the window).
// Its Disabled mode is the Disabled look, its Active mode the Hover look.
QIcon artworkIcon(ArtworkId id);

} // namespace vindaro::chrome
