#pragma once

#include "FileListModel.h"
#include "FileSystem.h"
#include "ListPrompts.h"

#include <QObject>

#include <functional>
#include <optional>

class QWidget;

namespace vindaro::files {

// The commands of the file menu and of the list's choosers, acting on the current entry of the list or on
// the whole list.
//
// A guarded command does nothing, silently, unless the list holds an entry and the current path names an
// existing file. Delete, copy and move go through FileSystem (the desktop's trash, transfer window and
// overwrite question). A failure is told in a notice in the program's words (what failed, the path, the
// system's reason); move and delete take the entry out of the list only when they succeeded.
//
// Windows that do not belong to the list (rename dialog, property window, batch copy, about, preview) are
// reached through signals and the property-window handler, so this class stays free of widgets.
class FileCommands : public QObject
{
    Q_OBJECT

public:
    FileCommands(FileListModel& list, FileSystem& fileSystem, Prompter& prompts, ListDialogs& dialogs,
        QWidget* owner, QObject* parent = nullptr);

    // The system's name as the properties rule compares it; the running system's by default.
    void setOsName(const QString& name) { m_osName = name; }
    // The add-folder limit; none on Linux by default (see addFolderCapacity()).
    void setCapacityLimit(std::optional<qint64> limit) { m_capacityLimit = limit; }
    // The program's own property window for a path. Until one is set, every file gets the desktop's sheet.
    void setPropertyWindow(std::function<void(const QString&)> show) { m_propertyWindow = std::move(show); }

    // True when the list holds an entry and the current path names an existing file.
    bool guardPasses() const;

    void OpenFile();
    void ClearSelected(); // from the list only; the file stays on disk
    void ClearAll();
    void Delete();
    void Rename();
    void CopyTo();
    void MoveTo();
    void FindFile();
    void Properties();
    void CopyAllFilesTo();
    // Guarded: the media player opens the current file.
    void PlayFile();
    void AddFolderToList();
    void AddFromFileChooser();

signals:
    void previewStopRequested();
    void previewCloseRequested();
    void playerRequested(const QString& path);
    // Show the rename dialog modal for the current path; the dialog renames and updates the list.
    void renameRequested(const QString& path);
    // Run the batch copy of the whole list to its end (the window disables itself meanwhile).
    void batchCopyRequested();
    void busyChanged(bool busy);

private:
    FileListModel& m_list;
    FileSystem& m_fs;
    Prompter& m_prompts;
    ListDialogs& m_dialogs;
    QWidget* m_owner;
    QString m_osName;
    std::optional<qint64> m_capacityLimit;
    std::function<void(const QString&)> m_propertyWindow;
};

} // namespace vindaro::files
