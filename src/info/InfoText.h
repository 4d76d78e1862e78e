#pragma once

#include <QString>

namespace vindaro::info {

class FlashInformation;
class MP3Information;
class Mp3ID3v1TAG;

// The summary texts of the property window, built here so that the window, the command-line tool and the
// tests show the same words. Every line begins with CR LF, as the summary box appends them.

// "[ID3v1信息]" block: title, artist, album, year, genre, track, comment. Call after getId3() returned true.
QString id3v1TextBlock(Mp3ID3v1TAG& tag);
// "[MPEG信息]" block, introduced by an empty line and closed by a line of 43 hyphens.
QString mpegTextBlock(const MP3Information& mpeg);
// The five Flash lines; call after getFlashInformation() returned true.
QString flashTextBlock(const FlashInformation& flash);

// The whole summary of an MP3 file: the ID3v1 block when the file ends in a tag, then the MPEG block of a
// reader that has read the header twice (set the name, then getMpegInfo()), as the property window does.
QString mp3Summary(const QString& path);
// The Flash block, or the empty text when the file is not an uncompressed movie.
QString flashSummary(const QString& path);

} // namespace vindaro::info
