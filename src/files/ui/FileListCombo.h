#pragma once

#include <QComboBox>

namespace vindaro::files {

class FileIcons;
class FileListModel;
class FileSystem;

// The list box cmbFileCopy: an editable combo over FileListModel whose entries show the desktop's icon of
// their file before the path.
//
// - Its text and the model's current text follow each other; picking an entry runs ShowCurrentEntryInfo.
// - Tooltip: the full path right of the first quarter of the box, the usage hint over the first quarter.
// - A right click asks for the file menu (popupMenuRequested) instead of the line editor's own menu.
// - While the text names an existing file, Delete is swallowed and Enter opens the file.
// Typed text never becomes an entry, and there is no completion: the list only grows through its commands.
class FileListCombo : public QComboBox
{
    Q_OBJECT

public:
    FileListCombo(FileListModel& list, FileSystem& fileSystem, FileIcons& icons, QWidget* parent = nullptr);

    // The tooltip shown with the pointer at `pos` (box coordinates).
    QString toolTipAt(const QPoint& pos) const;

signals:
    void popupMenuRequested(const QPoint& globalPos);

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    bool handleKey(QKeyEvent* event); // true when the key was used up
    void followModel(const QString& text, int row);

    FileListModel& m_list;
    FileSystem& m_fs;
    bool m_following = false; // set while the box follows the model, so the change is not echoed back
};

} // namespace vindaro::files
