#include "MediaSession.h"

#include "MediaBackend.h"

namespace vindaro::media {

MediaSession::MediaSession(MediaBackend& backend, QObject* parent)
    : QObject(parent)
    , m_backend(backend)
{
    connect(&m_backend, &MediaBackend::loaded, this, &MediaSession::onLoaded);
    connect(&m_backend, &MediaBackend::pictureSizeKnown, this, &MediaSession::onPictureSize);
    connect(&m_backend, &MediaBackend::failed, this, &MediaSession::onFailed);
    connect(&m_backend, &MediaBackend::ended, this, &MediaSession::onEnded);
}

void MediaSession::open(const QString& path)
{
    release();
    m_path = path;
    m_kind = mediaKindOf(path);
    m_durationSeconds = 0;
    m_pictureSize = QSize();
    m_positionSeconds = 0;
    m_playWhenReady = false;
    m_positionChosen = false;
    emit totalsChanged();
    if (m_kind == MediaKind::None)
        return;
    setState(MediaState::Opening);
    m_backend.open(path);
}

void MediaSession::StartPlay()
{
    switch (m_state) {
    case MediaState::Empty:
    case MediaState::Playing:
        return;
    case MediaState::Opening:
        m_playWhenReady = true;
        return;
    case MediaState::Ready:
    case MediaState::Paused:
        break;
    }
    // The backend already stands where the last tick read it; a seek is needed only when the user chose
    // another place. Needless seeks cost time on a damaged stream and may land past a hole.
    if (m_positionChosen)
        m_backend.setPositionSeconds(m_positionSeconds);
    m_positionChosen = false;
    m_backend.play();
    setState(MediaState::Playing);
    setTimerEnabled(true);
}

void MediaSession::PausePlay()
{
    if (m_state == MediaState::Opening) {
        m_playWhenReady = false;
        return;
    }
    if (m_state != MediaState::Playing)
        return;
    m_backend.pause();
    setState(MediaState::Paused);
    setTimerEnabled(false);
}

void MediaSession::StopPlay()
{
    m_playWhenReady = false;
    release();
}

void MediaSession::choosePosition(double seconds)
{
    if (m_state == MediaState::Empty)
        return;
    m_positionSeconds = qBound(0.0, seconds, qMax(0.0, m_durationSeconds));
    if (m_state == MediaState::Playing) {
        m_backend.setPositionSeconds(m_positionSeconds);
        m_backend.play();
    } else {
        m_positionChosen = true;
    }
}

void MediaSession::tick()
{
    if (m_state != MediaState::Playing)
        return;
    const double position = m_backend.positionSeconds();
    m_positionSeconds = position > 0 ? position : 0.0;
    m_shownTime = timeParts(m_positionSeconds);
    emit positionChanged(m_positionSeconds);
}

void MediaSession::onLoaded(double durationSeconds, bool hasVideo, bool hasAudio)
{
    if (m_state != MediaState::Opening)
        return;
    if (m_kind == MediaKind::Video && !hasVideo) {
        release();
        emit pictureMissing();
        return;
    }
    if (!hasVideo && !hasAudio) {
        release();
        return;
    }
    m_durationSeconds = durationSeconds > 0 ? durationSeconds : 0.0;
    setState(MediaState::Ready);
    emit totalsChanged();
    if (m_playWhenReady) {
        m_playWhenReady = false;
        StartPlay();
    }
}

void MediaSession::onPictureSize(QSize size)
{
    if (m_state == MediaState::Empty)
        return;
    if (size.isEmpty()) {
        if (m_kind == MediaKind::Video) {
            release();
            emit pictureMissing();
        }
        return;
    }
    m_pictureSize = size;
    if (m_state != MediaState::Opening)
        emit totalsChanged();
}

void MediaSession::onFailed()
{
    if (m_state == MediaState::Opening)
        release(); // the facts stay; nothing to play
    else
        onEnded(); // broke off while playing: as at the end, so the window does not pretend to play
}

void MediaSession::onEnded()
{
    if (m_state == MediaState::Empty)
        return;
    StopPlay();
    m_positionSeconds = 0;
    m_positionChosen = false;
    emit endReached();
}

void MediaSession::release()
{
    setTimerEnabled(false);
    m_shownTime = TimeParts();
    if (m_state == MediaState::Empty)
        return;
    m_backend.close();
    setState(MediaState::Empty);
}

void MediaSession::setState(MediaState state)
{
    if (m_state == state)
        return;
    m_state = state;
    emit stateChanged(state);
}

void MediaSession::setTimerEnabled(bool enabled)
{
    if (m_timerEnabled == enabled)
        return;
    m_timerEnabled = enabled;
    emit timerEnabledChanged(enabled);
}

} // namespace vindaro::media
