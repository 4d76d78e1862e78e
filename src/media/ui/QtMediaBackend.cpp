#include "QtMediaBackend.h"

#include "PlayerHost.h"

#include <QAudioDevice> // before QAudioOutput, which Qt 6.4 leaves incomplete
#include <QAudioOutput>
#include <QCoreApplication>
#include <QMediaDevices>
#include <QMediaPlayer>
#include <QMutexLocker>
#include <QThread>
#include <QUrl>
#include <QVideoSink>

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace vindaro::media {

namespace {

// Player threads not yet ended, counted under g_threadsMutex; g_threadEnded tells of each end.
std::mutex g_threadsMutex;
std::condition_variable g_threadEnded;
int g_liveThreads = 0;

// Player threads still ending when the application goes use its media services, so the application waits
// for them, a few seconds at most. One stuck in a read of a damaged disc cannot be waited for: the process
// then ends at once. This runs as the application object goes, when everything of the program's own (the
// window, its records and log) has gone and saved itself, so only the static teardown is skipped.
void waitForPlayerThreads()
{
    std::unique_lock lock(g_threadsMutex);
    if (g_threadEnded.wait_for(lock, std::chrono::seconds(5), [] { return g_liveThreads == 0; }))
        return;
    std::fflush(nullptr);
    std::_Exit(EXIT_SUCCESS);
}

void threadStarted()
{
    static const bool waitRegistered = [] {
        qAddPostRoutine(waitForPlayerThreads);
        return true;
    }();
    Q_UNUSED(waitRegistered);
    std::lock_guard lock(g_threadsMutex);
    ++g_liveThreads;
}

void threadEnded()
{
    {
        std::lock_guard lock(g_threadsMutex);
        --g_liveThreads;
    }
    g_threadEnded.notify_all();
}

} // namespace

PlayerHost::PlayerHost(std::shared_ptr<FrameMailbox> mailbox, bool withAudio)
    : m_mailbox(std::move(mailbox))
    , m_withAudio(withAudio)
{
}

PlayerHost::~PlayerHost() = default;

void PlayerHost::start(const QString& path)
{
    m_player = new QMediaPlayer(this);
    m_sink = new QVideoSink(this);
    m_player->setVideoSink(m_sink);
    if (m_withAudio) {
        m_audio = new QAudioOutput(this);
        m_player->setAudioOutput(m_audio);
    }
    // Direct: the newest frame goes to the mailbox on whatever thread delivers it.
    connect(m_sink, &QVideoSink::videoFrameChanged, this, &PlayerHost::onFrame, Qt::DirectConnection);
    connect(m_player, &QMediaPlayer::mediaStatusChanged, this, [this](QMediaPlayer::MediaStatus status) {
        switch (status) {
        case QMediaPlayer::LoadedMedia:
            if (m_loadedSent)
                break;
            m_loadedSent = true;
            emit loaded(m_player->duration(), m_player->hasVideo(), m_player->hasAudio());
            // The first picture tells the picture's size before the user plays. It is rolled in by
            // playing, silently, up to that picture: pausing a program stream that never played makes the
            // next play seek, and after a seek the demuxer ends the stream at its estimated duration, which
            // a damaged stream's time stamps make far too short.
            if (m_player->hasVideo() && m_player->playbackState() == QMediaPlayer::StoppedState) {
                m_rollingIn = true;
                if (m_audio)
                    m_audio->setMuted(true);
                m_player->play();
            }
            break;
        case QMediaPlayer::EndOfMedia:
            emit ended();
            break;
        case QMediaPlayer::InvalidMedia:
            emit failed();
            break;
        default:
            break;
        }
    });
    connect(m_player, &QMediaPlayer::errorOccurred, this, [this](QMediaPlayer::Error error) {
        if (error != QMediaPlayer::NoError)
            emit failed();
    });
    connect(m_player, &QMediaPlayer::positionChanged, this, &PlayerHost::positionChanged);
    m_player->setSource(QUrl::fromLocalFile(path));
}

void PlayerHost::play()
{
    m_wantPlaying = true;
    m_rollingIn = false;
    if (m_audio)
        m_audio->setMuted(false);
    if (m_player)
        m_player->play();
}

void PlayerHost::pause()
{
    m_wantPlaying = false;
    m_rollingIn = false;
    if (m_audio)
        m_audio->setMuted(false);
    if (m_player)
        m_player->pause();
}

void PlayerHost::firstPictureShown()
{
    // Unless the window asked to play meanwhile, the roll-in stops at the first picture.
    if (!m_rollingIn || m_wantPlaying || !m_player)
        return;
    m_rollingIn = false;
    m_player->pause();
    if (m_audio)
        m_audio->setMuted(false);
}

void PlayerHost::seek(qint64 positionMs)
{
    if (m_player)
        m_player->setPosition(positionMs);
}

void PlayerHost::shutDown()
{
    if (m_player) {
        disconnect(m_sink, nullptr, this, nullptr);
        m_player->stop();
        delete m_player; // may wait for a reader stuck in the medium: this thread's business only
        m_player = nullptr;
        delete m_sink;
        m_sink = nullptr;
        delete m_audio;
        m_audio = nullptr;
    }
    thread()->quit();
}

void PlayerHost::onFrame(const QVideoFrame& frame)
{
    if (!frame.isValid())
        return;
    if (!m_sizeSent.exchange(true)) {
        emit pictureSizeKnown(frame.size());
        QMetaObject::invokeMethod(this, &PlayerHost::firstPictureShown, Qt::QueuedConnection);
    }
    bool notify = false;
    {
        QMutexLocker lock(&m_mailbox->mutex);
        m_mailbox->frame = frame;
        notify = !m_mailbox->waiting;
        m_mailbox->waiting = true;
    }
    if (notify)
        emit frameWaiting();
}

QtMediaBackend::QtMediaBackend(QObject* parent)
    : MediaBackend(parent)
{
}

QtMediaBackend::~QtMediaBackend()
{
    retire();
}

int QtMediaBackend::liveThreads()
{
    std::lock_guard lock(g_threadsMutex);
    return g_liveThreads;
}

bool QtMediaBackend::available()
{
    QMediaPlayer probe;
    return probe.isAvailable();
}

template<typename Call> void QtMediaBackend::post(Call call)
{
    if (m_host)
        QMetaObject::invokeMethod(m_host, std::move(call), Qt::QueuedConnection);
}

void QtMediaBackend::open(const QString& path)
{
    retire();
    m_positionMs = 0;
    m_mailbox = std::make_shared<FrameMailbox>();
    auto* host = new PlayerHost(m_mailbox, !QMediaDevices::audioOutputs().isEmpty());
    auto* thread = new QThread;
    thread->setObjectName(QStringLiteral("media player"));
    host->moveToThread(thread);
    threadStarted();
    connect(thread, &QThread::finished, host, &QObject::deleteLater);
    connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    connect(thread, &QThread::finished, thread, threadEnded, Qt::DirectConnection);
    m_host = host;

    // Queued from the host's thread. Calls already queued when a host is closed or replaced still arrive:
    // the serial drops them. A deleted backend takes its pending calls with it.
    const quint64 serial = ++m_serial;
    connect(host, &PlayerHost::loaded, this, [this, serial](qint64 durationMs, bool hasVideo, bool hasAudio) {
        if (serial == m_serial)
            emit loaded(static_cast<double>(durationMs) / 1000.0, hasVideo, hasAudio);
    });
    connect(host, &PlayerHost::pictureSizeKnown, this, [this, serial](QSize size) {
        if (serial == m_serial)
            emit pictureSizeKnown(size);
    });
    connect(host, &PlayerHost::positionChanged, this, [this, serial](qint64 ms) {
        if (serial == m_serial)
            m_positionMs = ms;
    });
    connect(host, &PlayerHost::failed, this, [this, serial] {
        if (serial == m_serial)
            emit failed();
    });
    connect(host, &PlayerHost::ended, this, [this, serial] {
        if (serial == m_serial)
            emit ended();
    });
    connect(host, &PlayerHost::frameWaiting, this, [this, serial] {
        if (serial != m_serial)
            return;
        QVideoFrame frame;
        {
            QMutexLocker lock(&m_mailbox->mutex);
            frame = m_mailbox->frame;
            m_mailbox->frame = QVideoFrame();
            m_mailbox->waiting = false;
        }
        if (frame.isValid())
            emit frameReady(frame);
    });

    thread->start();
    post([host, path] { host->start(path); });
}

void QtMediaBackend::close()
{
    retire();
    m_positionMs = 0;
}

void QtMediaBackend::play()
{
    post([host = m_host] { host->play(); });
}

void QtMediaBackend::pause()
{
    post([host = m_host] { host->pause(); });
}

void QtMediaBackend::setPositionSeconds(double seconds)
{
    m_positionMs = static_cast<qint64>(std::llround(qMax(0.0, seconds) * 1000.0));
    post([host = m_host, ms = m_positionMs] { host->seek(ms); });
}

void QtMediaBackend::retire()
{
    if (!m_host)
        return;
    ++m_serial;
    disconnect(m_host, nullptr, this, nullptr);
    post([host = m_host] { host->shutDown(); });
    m_host = nullptr;
    m_mailbox.reset();
}

} // namespace vindaro::media
