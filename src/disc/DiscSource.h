#pragma once

#include <QString>

#include <optional>

namespace vindaro::disc {

// What holds a disc's file system.
enum class DiscKind
{
    Drive, // an optical drive's device node
    CueImage, // a BIN/CUE image (the .cue or its .bin): 2,352 bytes a sector
    OtherImage, // an image libcdio reads for us: Nero (.nrg), cdrdao (.toc)
    IsoImage, // 2,048 bytes a sector: Mode 1 only
    None,
};

// The kind of `path`: a block device is a drive; images go by their name's ending.
DiscKind discKindOf(const QString& path);

// A file on a disc named by its disc: "DEVICE_OR_IMAGE:/PATH/IN/DISC".
struct DiscFileName
{
    QString disc; // the device or image, as written
    QString path; // absolute and cleaned inside the disc: "/MPEGAV/AVSEQ01.DAT"
};

// Splits "DEVICE_OR_IMAGE:/PATH" at the first ":/" whose left part is an existing device or image file.
// Nothing when `text` names a file of the local file system itself (a name may hold ":/" on Linux), or no
// left part is a disc.
std::optional<DiscFileName> parseDiscFileName(const QString& text);

// Whether `path` on a mounted disc looks like a Video CD's or Super Video CD's track or still pictures
// (MPEGAV/, MPEG2/, SEGMENT/ or a .DAT file), whose sectors are most likely Form 2.
bool looksLikeVideoCdTrack(const QString& pathInDisc);

} // namespace vindaro::disc
