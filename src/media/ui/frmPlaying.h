#pragma once

#include <QWidget>

class QLabel;
class QSlider;
class QTimer;

namespace vindaro::files {
class FileSystem;
}

namespace vindaro::media {

class ControlButton;
class MediaBackend;
class MediaSession;
class VideoArea;

// The media player: one file's facts printed into the video area, its picture drawn there once it plays,
// a drawn play/stop button, a progress slider in whole seconds and the time labels. Deletes itself when
// closed; whatever plays is handed back to the backend first.
class frmPlaying : public QWidget
{
    Q_OBJECT

public:
    // Without a backend the window plays through Qt Multimedia; a given backend becomes the window's.
    explicit frmPlaying(
        files::FileSystem& fileSystem, QWidget* parent = nullptr, MediaBackend* backend = nullptr);
    ~frmPlaying() override;

    void OpenMediaFile(const QString& path);
    void StartPlay();
    void PausePlay();
    void StopPlay();

    MediaSession& session() { return *m_session; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void showTotals();
    void showPosition(double seconds);
    void updateButton();
    void sliderChosen();

    files::FileSystem& m_fs;
    MediaBackend* m_backend;
    MediaSession* m_session;
    VideoArea* m_picVideo;
    ControlButton* m_picMediaControlButton;
    QSlider* m_sldProgress;
    QLabel* m_lblTotalTime;
    QLabel* m_lblTotalLength;
    QLabel* m_lblCurrentTime;
    QLabel* m_lblCurrentPosition;
    QTimer* m_tmrTime;
};

} // namespace vindaro::media
