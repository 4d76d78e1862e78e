#pragma once

#include <QObject>
#include <QPointer>

#include <functional>

class QWidget;

namespace vindaro::files {
class FileListController;
class FileSystem;
} // namespace vindaro::files

namespace vindaro::media {

class MediaBackend;
class frmPlaying;
class frmPrevVideo;

// The media windows of the main window: the one video preview that the file list drives and the player
// that the file menu opens. Each window is made when first needed and deletes itself when closed.
class MediaWindows : public QObject
{
    Q_OBJECT

public:
    // Makes each window's backend; without one the windows play through Qt Multimedia.
    using BackendFactory = std::function<MediaBackend*()>;

    MediaWindows(files::FileSystem& fileSystem, QWidget* mainWindow, BackendFactory backends = {});

    // The list's preview follow-up, its stop and close requests, and the file menu's play entry.
    void attach(files::FileListController& fileList);

    // Stops what the preview plays, then opens `path` in it and plays it.
    void previewFile(const QString& path);
    void stopPreview();
    void closePreview();
    // Opens `path` in the player, ready to play.
    void playFile(const QString& path);

    frmPrevVideo* preview() const;
    frmPlaying* player() const;

private:
    MediaBackend* newBackend() const;

    files::FileSystem& m_fs;
    QWidget* m_mainWindow;
    BackendFactory m_backends;
    QPointer<frmPrevVideo> m_preview;
    QPointer<frmPlaying> m_player;
};

} // namespace vindaro::media
