#pragma once

#include <QString>

namespace vindaro::media {

// What the player and the preview do with a file, decided by the end of its name alone.
enum class MediaKind
{
    None, // only the facts are shown
    Video,
    Audio,
};

// Matched in upper case against the last as many characters as each ending has; no dot is required, so
// "xdat" is video and "menu" (ending in "NU") is nothing.
MediaKind mediaKindOf(const QString& path);

} // namespace vindaro::media
