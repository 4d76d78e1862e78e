#pragma once

#include <QDialog>
#include <QPainterPath>

class QLabel;
class QLineEdit;
class QTimer;

namespace vindaro::files {

class FileIcons;
class FileListModel;
class FileSystem;
class Prompter;

// Where a balloon of `size` goes next to `anchor` on `screen`: below the anchor when the screen has room
// there, else above; starting at the anchor's left edge, shifted left to stay on the screen. pointerX is
// the pointer's tip in balloon coordinates, under or over the anchor's middle, kept off the corners.
struct BalloonPlacement
{
    QPoint topLeft;
    bool below = true; // the pointer is at the balloon's top edge
    int pointerX = 0;
};
BalloonPlacement placeBalloon(const QRect& anchor, const QRect& screen, const QSize& size);
// The balloon's outline: a rounded rectangle with the pointer on its top (below) or bottom edge.
QPainterPath balloonPath(const QSize& size, bool below, int pointerX);

// The rename dialog frmDialog: a frameless light-yellow balloon pointing at the list box, with the file's
// facts (and its ID3v1 tag for an MP3 file), the name field proposing "N[01]" + the file name, and two drawn
// buttons. OK (or Enter in the field) renames through FileListModel::renameFile, which puts the new path
// where the old entry was; a refused name is explained in a notice and changes nothing. Cancel shows its
// pressed look for half a second before the balloon goes. The balloon closes by itself when it is moved.
class FrmDialog : public QDialog
{
    Q_OBJECT

public:
    static constexpr int kPointerHeight = 14;
    static constexpr int kCancelDelayMs = 500;
    static constexpr int kTitleWidth = 36;

    // Takes the current path from `list`; `anchor` is the list box it points at (may be null: centred on
    // the parent).
    FrmDialog(FileListModel& list, FileSystem& fileSystem, Prompter& prompts, FileIcons& icons,
        QWidget* anchor, QWidget* parent = nullptr);

    QString path() const { return m_path; }
    bool isBelowAnchor() const { return m_below; }
    int pointerX() const { return m_pointerX; }
    void pressOk();
    void pressCancel();

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void place();
    void watchTick();

    FileListModel& m_list;
    FileSystem& m_fs;
    Prompter& m_prompts;
    QWidget* m_anchor;
    QString m_path;
    bool m_below = true;
    int m_pointerX = 24;
    bool m_closing = false; // a button was pressed; further presses do nothing
    std::optional<QPoint> m_placedAt; // recorded on the watch timer's first tick
    QLineEdit* m_txtNewFileName = nullptr;
    class BalloonButton* m_picOk = nullptr;
    class BalloonButton* m_picCancel = nullptr;
    QTimer* m_tmrTime = nullptr;
};

} // namespace vindaro::files
