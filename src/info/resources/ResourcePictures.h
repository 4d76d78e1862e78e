#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <functional>

namespace vindaro::info::resources {

// Icon and cursor files (.ico, .cur) built from a module's resources, so Qt's image readers can draw them
// and the export can write them. Empty when the bytes cannot be read as that kind.

// One icon (type 3) or cursor (type 1) image. A cursor resource begins with its 16-bit hot spot, which
// goes into the .cur directory entry.
QByteArray iconFileFromImage(const QByteArray& image, bool cursor);
// A group (type 14 icon group, type 12 cursor group) and a lookup of its member images by number (types 3
// or 1): every member the lookup finds goes into one file.
QByteArray iconFileFromGroup(
    const QByteArray& group, const std::function<QByteArray(quint16)>& memberImage, bool cursor);
// A bitmap resource (type 2) is a DIB without its file header: the .bmp bytes with the header put back.
QByteArray bitmapFileFromDib(const QByteArray& dib);

// "Icon/cursor (*.ico/*.cur)", "Bitmap (*.bmp)", ... as the picture lines name the kinds.
QString imageTypeText(int resourceType);
// The same for the current type as the browser holds it: a number ("3") or a named type ("PNG", "WMF").
QString imageTypeText(const QString& resourceType);

} // namespace vindaro::info::resources
