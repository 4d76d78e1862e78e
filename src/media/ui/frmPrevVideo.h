#pragma once

#include <QList>
#include <QPixmap>
#include <QWidget>

class QLabel;
class QTimer;

namespace vindaro::files {
class FileSystem;
}

namespace vindaro::media {

class MediaBackend;
class MediaSession;
class PreviewBar;
class TipStrip;
class VideoArea;

// The video preview that the file list drives: the facts text (with tag and MPEG header for an MP3 file)
// until a picture shows, the picture, a strip with the position and the clock, and a drawn progress bar
// whose knob can be dragged. The window's icon turns while it plays; the window can be resized. Deletes
// itself when closed; whatever plays is handed back to the backend first.
class frmPrevVideo : public QWidget
{
    Q_OBJECT

public:
    // Without a backend the window plays through Qt Multimedia; a given backend becomes the window's.
    explicit frmPrevVideo(
        files::FileSystem& fileSystem, QWidget* parent = nullptr, MediaBackend* backend = nullptr);
    ~frmPrevVideo() override;

    void OpenMediaFile(const QString& path);
    void StartPlay();
    void PausePlay();
    void StopPlay();

    MediaSession& session() { return *m_session; }
    // The frame of Image1 the next tick puts up as the window's icon.
    int animationFrame() const { return m_frame; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void onTick();
    void updateFactsVisibility();

    files::FileSystem& m_fs;
    MediaBackend* m_backend;
    MediaSession* m_session;
    VideoArea* m_picVideoWindow;
    QLabel* m_lblMP3info;
    TipStrip* m_picVideoTipInfo;
    PreviewBar* m_picProgressBar;
    QList<QPixmap> m_image1;
    int m_frame = 0;
    QTimer* m_tmrTime;
};

} // namespace vindaro::media
