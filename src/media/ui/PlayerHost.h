#pragma once

#include <QMutex>
#include <QObject>
#include <QSize>
#include <QVideoFrame>

#include <atomic>
#include <memory>

class QAudioOutput;
class QMediaPlayer;
class QVideoSink;

namespace vindaro::media {

// The newest picture of a player, handed from the thread that decodes it to the window's thread. Only the
// newest is kept, so a busy window never makes the decoder queue pictures (and hold its buffers).
struct FrameMailbox
{
    QMutex mutex;
    QVideoFrame frame; // guarded by mutex
    bool waiting = false; // guarded by mutex; a frameWaiting() is on its way
};

// One QMediaPlayer on a thread of its own, for one source. Everything that can block on the medium (opening,
// reading, stopping a pipeline whose reader hangs in a scratched sector) happens on that thread, so the
// window never waits for it. The window talks to it by queued calls and hears back through its signals.
// Internal to QtMediaBackend.
class PlayerHost : public QObject
{
    Q_OBJECT

public:
    PlayerHost(std::shared_ptr<FrameMailbox> mailbox, bool withAudio);
    ~PlayerHost() override;

    // On the host's thread.
    void start(const QString& path);
    void play();
    void pause();
    void seek(qint64 positionMs);
    // Releases the player and ends the thread; the thread's end deletes the host.
    void shutDown();

signals:
    void loaded(qint64 durationMs, bool hasVideo, bool hasAudio);
    void pictureSizeKnown(QSize size);
    void positionChanged(qint64 positionMs);
    void failed();
    void ended();
    void frameWaiting();

private:
    void onFrame(const QVideoFrame& frame);
    void firstPictureShown();

    std::shared_ptr<FrameMailbox> m_mailbox;
    bool m_withAudio;
    QMediaPlayer* m_player = nullptr;
    QVideoSink* m_sink = nullptr;
    QAudioOutput* m_audio = nullptr;
    bool m_loadedSent = false;
    bool m_rollingIn = false; // playing silently up to the first picture
    bool m_wantPlaying = false; // the window asked to play
    std::atomic<bool> m_sizeSent{false}; // frames may come from the decoder's thread
};

} // namespace vindaro::media
