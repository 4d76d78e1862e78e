#include "MediaWindows.h"

#include "files/ui/FileListController.h"
#include "frmPlaying.h"
#include "frmPrevVideo.h"

namespace vindaro::media {

MediaWindows::MediaWindows(files::FileSystem& fileSystem, QWidget* mainWindow, BackendFactory backends)
    : QObject(mainWindow)
    , m_fs(fileSystem)
    , m_mainWindow(mainWindow)
    , m_backends(std::move(backends))
{
}

void MediaWindows::attach(files::FileListController& fileList)
{
    connect(&fileList, &files::FileListController::previewRequested, this, &MediaWindows::previewFile);
    connect(&fileList, &files::FileListController::previewStopRequested, this, &MediaWindows::stopPreview);
    connect(&fileList, &files::FileListController::previewCloseRequested, this, &MediaWindows::closePreview);
    connect(&fileList, &files::FileListController::playerRequested, this, &MediaWindows::playFile);
}

void MediaWindows::previewFile(const QString& path)
{
    if (!m_preview)
        m_preview = new frmPrevVideo(m_fs, m_mainWindow, newBackend());
    // The list that drives the preview keeps the focus.
    m_preview->setAttribute(Qt::WA_ShowWithoutActivating);
    m_preview->show();
    m_preview->StopPlay();
    m_preview->OpenMediaFile(path);
    m_preview->StartPlay();
}

void MediaWindows::stopPreview()
{
    if (m_preview)
        m_preview->StopPlay();
}

void MediaWindows::closePreview()
{
    if (m_preview)
        m_preview->close();
}

void MediaWindows::playFile(const QString& path)
{
    if (!m_player)
        m_player = new frmPlaying(m_fs, m_mainWindow, newBackend());
    m_player->show();
    m_player->raise();
    m_player->activateWindow();
    m_player->StopPlay();
    m_player->OpenMediaFile(path);
}

frmPrevVideo* MediaWindows::preview() const
{
    return m_preview;
}

frmPlaying* MediaWindows::player() const
{
    return m_player;
}

MediaBackend* MediaWindows::newBackend() const
{
    return m_backends ? m_backends() : nullptr;
}

} // namespace vindaro::media
