#pragma once

#include "FileIcons.h"
#include "files/FileCommands.h"
#include "files/FileListModel.h"

#include <QObject>

#include <memory>

class QLabel;
class QLineEdit;
class QWidget;

namespace vindaro::files {

class FileDropTarget;
class FileListCombo;
class FileMenu;

// The displays beside the list that the main window owns; any may be null. A status bar may be a
// QStatusBar (its message is set) or a QLabel.
struct FileListDisplays
{
    QWidget* statusA = nullptr; // stbFileInfoShowsArea_A: dates
    QWidget* statusB = nullptr; // stbFileInfoShowsArea_B: size, type, attributes
    QLabel* filesInfo = nullptr; // lblFilesInfo
    QLabel* smallIconA = nullptr; // PicSmallIcon_16A: the picture itself or the file's icon
    QLabel* smallIconB = nullptr; // PicSmallIcon_16B: the file's icon
    QLabel* image = nullptr; // Image1: the picture of an ICO, BMP, JPG ... entry
    QLineEdit* destination = nullptr; // txtFileCopy
};

// Everything of the file list that a main window adopts: the model, the commands, the list box, the file
// menu, drag and drop and the rename dialog, wired together.
//
// The list box's change handler (UpdateMenuState, then the preview follow-up) runs whenever the box's text
// changes and when the preview mark is turned over. Long steps show the hourglass, folder scans the
// busy-with-arrow pointer.
class FileListController : public QObject
{
    Q_OBJECT

public:
    FileListController(FileSystem& fileSystem, Prompter& prompts, ListDialogs& dialogs, QWidget* mainWindow);
    ~FileListController() override;

    FileListModel& model() { return m_model; }
    FileCommands& commands() { return m_commands; }
    FileIcons& icons() { return m_icons; }
    // The list box, parented to the main window; put it where the placeholder was.
    FileListCombo* combo() const { return m_combo; }
    FileMenu* menu() const { return m_menu; }

    void bindDisplays(const FileListDisplays& displays);
    // Accept dropped files on the window and every control in it now.
    void acceptDrops(QWidget* window);
    // The rename dialog for the current entry, modal; true when the file was renamed.
    bool showRenameDialog();
    // The list box's change handler.
    void onListTextChanged();

signals:
    void exitRequested();
    void aboutRequested();
    void batchCopyRequested();
    void previewStopRequested();
    void previewCloseRequested();
    void previewRequested(const QString& path);
    // The file menu's play entry: open the current file in the media player.
    void playerRequested(const QString& path);
    // Clear the progress bar and the copy counters ("0字节", "00:00:00", "0KB/秒").
    void copyDisplaysReset();

private:
    void setBusy(bool busy, Qt::CursorShape shape);
    void showFacts(const FileListModel::EntryFacts& facts);
    void clearDisplays();

    QWidget* m_window;
    FileSystem& m_fs;
    Prompter& m_prompts;
    FileIcons m_icons;
    FileListModel m_model;
    FileCommands m_commands;
    FileListCombo* m_combo = nullptr;
    FileMenu* m_menu = nullptr;
    FileDropTarget* m_drops = nullptr;
    FileListDisplays m_displays;
};

} // namespace vindaro::files
