#pragma once

#include <QObject>
#include <QSize>
#include <QString>

namespace vindaro::media {

// The media service a window plays through: one source at a time, opened asynchronously. A window never
// waits on it: every answer comes as a signal, later, on the window's thread, and only for the source
// opened last (answers of a source that was closed or replaced are dropped).
class MediaBackend : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Drops whatever was open and starts opening `path`; answers loaded() or failed().
    virtual void open(const QString& path) = 0;
    // Stops and releases the source. Returns at once, even when the medium hangs the backend.
    virtual void close() = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    // The last position the backend reported, in seconds (0 before the first report).
    virtual double positionSeconds() const = 0;
    virtual void setPositionSeconds(double seconds) = 0;

signals:
    // The source is ready; the duration may be an estimate (a damaged stream's last time stamps).
    void loaded(double durationSeconds, bool hasVideo, bool hasAudio);
    // The size of the first picture; video only, after loaded().
    void pictureSizeKnown(QSize size);
    // The source cannot be opened or stopped playing with an error.
    void failed();
    // Played to its end.
    void ended();
};

} // namespace vindaro::media
