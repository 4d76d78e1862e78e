#pragma once

#include "media/MediaBackend.h"

#include <QStringList>

namespace vindaro::testing {

// A media backend that only records what it is told; the test plays the backend's part by emitting its
// signals (loaded, pictureSizeKnown, failed, ended) and setting the position.
class FakeMediaBackend final : public media::MediaBackend
{
public:
    QStringList calls; // "open:PATH", "close", "play", "pause", "seek:SECONDS"
    double position = 0;

    void open(const QString& path) override { calls << QStringLiteral("open:") + path; }
    void close() override { calls << QStringLiteral("close"); }
    void play() override { calls << QStringLiteral("play"); }
    void pause() override { calls << QStringLiteral("pause"); }
    double positionSeconds() const override { return position; }
    void setPositionSeconds(double seconds) override
    {
        calls << QStringLiteral("seek:") + QString::number(seconds);
        position = seconds;
    }
};

} // namespace vindaro::testing
