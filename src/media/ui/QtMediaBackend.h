#pragma once

#include "media/MediaBackend.h"

#include <QVideoFrame>

#include <memory>

namespace vindaro::media {

class PlayerHost;
struct FrameMailbox;

// The media backend of the windows, on Qt Multimedia. Each opened source gets a player on a thread of its
// own; closing or replacing it hands that player back to its thread to stop and release, and never waits
// for it. Sound goes out only where the machine has an audio device (some backends crash without one).
class QtMediaBackend final : public MediaBackend
{
    Q_OBJECT

public:
    explicit QtMediaBackend(QObject* parent = nullptr);
    ~QtMediaBackend() override;

    void open(const QString& path) override;
    void close() override;
    void play() override;
    void pause() override;
    double positionSeconds() const override { return static_cast<double>(m_positionMs) / 1000.0; }
    void setPositionSeconds(double seconds) override;

    // Player threads of the whole program not yet ended (closed ones included, until their player is
    // released).
    static int liveThreads();
    // Qt Multimedia found a media backend plugin on this machine.
    static bool available();

signals:
    // The newest picture of the open source (pictures come no faster than the window takes them).
    void frameReady(const QVideoFrame& frame);

private:
    void retire();
    template<typename Call> void post(Call call);

    PlayerHost* m_host = nullptr; // lives on its own thread
    std::shared_ptr<FrameMailbox> m_mailbox;
    qint64 m_positionMs = 0;
    quint64 m_serial = 0; // of the host opened last; answers of older hosts are dropped
};

} // namespace vindaro::media
