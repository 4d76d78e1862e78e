#pragma once

#include "MediaKind.h"
#include "MediaTexts.h"

#include <QObject>
#include <QSize>
#include <QString>

namespace vindaro::media {

class MediaBackend;

enum class MediaState
{
    Empty, // nothing open
    Opening, // the backend is still reading the file
    Ready,
    Playing,
    Paused,
};

// The media state of one window: which file is open, its duration and picture, whether it plays, and the
// position it last showed. The window shows the facts and draws; this decides.
//
// Opening is asynchronous: StartPlay while the file is still opening plays it once it is ready. A video
// without a picture (no video stream, or a picture of size 0) is closed as soon as that is known. The end
// is the backend's end of media (or an error while playing): with program streams the duration is an
// estimate from the time stamps, which a zeroed tail makes far too short, so reaching it ends nothing.
class MediaSession : public QObject
{
    Q_OBJECT

public:
    explicit MediaSession(MediaBackend& backend, QObject* parent = nullptr);

    // Releases what was open and, for a video or audio file, starts opening `path`.
    void open(const QString& path);
    // Plays from the position chosen on the progress control.
    void StartPlay();
    void PausePlay();
    // Stops and releases the media; playing again needs open().
    void StopPlay();
    // The user moved the progress control to `seconds`: kept for StartPlay, applied at once while playing.
    void choosePosition(double seconds);
    // The 100 ms timer of the window: reads the position while playing.
    void tick();

    MediaState state() const { return m_state; }
    bool isOpen() const { return m_state != MediaState::Empty; }
    bool isPlaying() const { return m_state == MediaState::Playing; }
    MediaKind kind() const { return m_kind; }
    QString path() const { return m_path; }
    double durationSeconds() const { return m_durationSeconds; }
    QSize pictureSize() const { return m_pictureSize; }
    // The position last read by tick() or chosen, within 0 .. duration.
    double positionSeconds() const { return m_positionSeconds; }
    TimeParts shownTime() const { return m_shownTime; }
    bool timerEnabled() const { return m_timerEnabled; }

signals:
    void stateChanged(MediaState state);
    // Duration and picture size known or changed: the totals and the progress range follow.
    void totalsChanged();
    // A tick read a new position.
    void positionChanged(double seconds);
    // Played to the end (or broke off): the media is closed and the progress control goes back to 0.
    void endReached();
    // A video turned out to have no picture and was closed; only its facts remain.
    void pictureMissing();
    void timerEnabledChanged(bool enabled);

private:
    void onLoaded(double durationSeconds, bool hasVideo, bool hasAudio);
    void onPictureSize(QSize size);
    void onFailed();
    void onEnded();
    void release();
    void setState(MediaState state);
    void setTimerEnabled(bool enabled);

    MediaBackend& m_backend;
    MediaState m_state = MediaState::Empty;
    MediaKind m_kind = MediaKind::None;
    QString m_path;
    double m_durationSeconds = 0;
    QSize m_pictureSize;
    double m_positionSeconds = 0;
    TimeParts m_shownTime;
    bool m_playWhenReady = false; // StartPlay came while opening
    bool m_positionChosen = false; // the progress control moved since the backend last stood there
    bool m_timerEnabled = false;
};

} // namespace vindaro::media
