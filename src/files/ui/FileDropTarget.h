#pragma once

#include <QObject>
#include <QStringList>

class QMimeData;
class QWidget;

namespace vindaro::files {

class FileListModel;

// Drag and drop of files from the desktop's file manager onto a window, its title bar or any of its
// controls. Only a file list (text/uri-list with local files) is accepted; anything else shows the
// no-drop cursor, even over text fields that would otherwise take dropped text. A drop goes to
// FileListModel::AddDroppedFiles.
class FileDropTarget : public QObject
{
    Q_OBJECT

public:
    FileDropTarget(FileListModel& list, QObject* parent = nullptr);

    // Watches `window` and every widget inside it now. Call it again after adding controls.
    void attach(QWidget* window);

    // The local paths of a drag's file list, in the drag's order; empty when it carries none.
    static QStringList droppedPaths(const QMimeData* mime);
    // The action a drop is taken with: copy where the source offers it, else link; never move (the
    // source would delete its files). IgnoreAction when the source offers neither.
    static Qt::DropAction safeDropAction(Qt::DropActions offered);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    FileListModel& m_list;
};

} // namespace vindaro::files
