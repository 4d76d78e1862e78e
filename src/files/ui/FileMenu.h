#pragma once

#include <QMenu>

namespace vindaro::files {

class FileCommands;
class FileListModel;

// The file menu mnuFile, shown as a pop-up from the list box and the title bar. Each entry is a QAction
// named as the menu entry (mnuOpenFile, mnuPreview, ...). The ten entries that need a listed file, and
// the player's entry mnuPlayFile, are enabled by UpdateMenuState(); allow preview, add files, exit and about
// stay usable.
class FileMenu : public QMenu
{
    Q_OBJECT

public:
    FileMenu(FileCommands& commands, FileListModel& list, QWidget* parent = nullptr);

    // Enables the list entries while the list holds an entry, then copies the preview mark into the
    // list's preview flag.
    void UpdateMenuState();
    QAction* entry(const QString& name) const; // by object name; null when there is none

signals:
    // The preview mark was turned over: the window runs the list box's change handler.
    void previewToggled(bool on);
    void exitRequested();
    void aboutRequested();

private:
    QAction* add(const char* name, const QString& caption);
    void separator(const char* name);

    FileListModel& m_list;
    QList<QAction*> m_listEntries; // the ten that need a listed file, and the player's
    QAction* m_preview = nullptr;
};

} // namespace vindaro::files
