#include "MediaKind.h"

namespace vindaro::media {

namespace {

struct KindRow
{
    const char* ending;
    MediaKind kind;
};

// VOB is video too: the file list hands DVD titles to the preview, and they are MPEG-2 program streams
// like the "DAT" tracks of a video CD.
constexpr KindRow kKindRows[] = {
    {"MOV", MediaKind::Video},
    {"ASF", MediaKind::Video},
    {"WMV", MediaKind::Video},
    {"M2V", MediaKind::Video},
    {"MPEG", MediaKind::Video},
    {"M1V", MediaKind::Video},
    {"MPV", MediaKind::Video},
    {"MPG", MediaKind::Video},
    {"AVI", MediaKind::Video},
    {"DAT", MediaKind::Video},
    {"VOB", MediaKind::Video},
    {"MIDI", MediaKind::Audio},
    {"SND", MediaKind::Audio},
    {"AIFC", MediaKind::Audio},
    {"RMI", MediaKind::Audio},
    {"MID", MediaKind::Audio},
    {"AU", MediaKind::Audio},
    {"AIFF", MediaKind::Audio},
    {"AIF", MediaKind::Audio},
    {"WAV", MediaKind::Audio},
    {"WMA", MediaKind::Audio},
    {"MP3", MediaKind::Audio},
    {"MP2", MediaKind::Audio},
    {"MP1", MediaKind::Audio},
    {"MPA", MediaKind::Audio},
};

} // namespace

MediaKind mediaKindOf(const QString& path)
{
    const QString upper = path.toUpper();
    for (const KindRow& row : kKindRows) {
        if (upper.endsWith(QLatin1String(row.ending)))
            return row.kind;
    }
    return MediaKind::None;
}

} // namespace vindaro::media
