#pragma once

#include "ResourceBrowserModel.h"

#include <QImage>
#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <functional>

class QLabel;
class QLineEdit;
class QMediaPlayer;
class QPlainTextEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace vindaro::info::ui {

// The picture area of the browser: a picture at the top left with lines printed below it, and room for
// a dialog mock-up or a video as child widgets.
class PictureArea : public QWidget
{
    Q_OBJECT

public:
    explicit PictureArea(QWidget* parent = nullptr);

    void setPicture(const QImage& image);
    void printLine(const QString& line);
    void clear();

    QImage picture() const { return m_picture; }
    QStringList lines() const { return m_lines; }
    // The picture as drawn on the area's background (what a bitmap export saves).
    QImage drawnPicture() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage m_picture;
    QStringList m_lines;
};

// The resource browser panel `Pic_EXE_Dll`: the tree of a module's resources (types expanded on demand),
// the preview of the chosen resource in `Text1` or `PicInfor`, its export (`cmdSave`), and opening another
// module into the tree (`cmdOpen`). The logic lives in ResourceBrowserModel; this panel lays out and wires.
class ResourceBrowser : public QWidget
{
    Q_OBJECT

public:
    explicit ResourceBrowser(QWidget* parent = nullptr);
    ~ResourceBrowser() override;

    // Reads the module and fills the tree; the root's key is always the full path, its text `rootText`.
    void openModule(const QString& path, const QString& rootText);
    // Closes the preview (video stopped, its file deleted, dialog destroyed) and lets the module go.
    void closeBrowser();
    // Stops a video, deletes its temporary file and removes a dialog; clears the picture area unless asked
    // to keep it (before an export).
    void closePreview(bool clearPicture = true);

    // Chooses a node as a click would.
    void chooseNode(QTreeWidgetItem* item);
    // Expands a type node, making its resource nodes in place of "Dummy".
    void expandType(QTreeWidgetItem* typeNode);
    QTreeWidgetItem* rootNode() const;

    QString currentType() const { return m_type; }
    QString currentName() const { return m_name; }
    QString text() const { return m_text; } // what Text1 holds, with CR LF line ends
    bool videoPlaying() const;
    const ResourceBrowserModel& model() const { return m_model; }

    // The choosers and boxes of the panel; tests replace them. The save asker gets the dialog title and the
    // Qt filter string and answers a path ("" when cancelled).
    std::function<QString(const QString& title, const QString& filter)> askSaveName;
    std::function<QString(const QString& title, const QString& filter)> askOpenName;
    std::function<void(const QString& title, const QString& text)> showError;

    QLabel* picIcon_16B = nullptr;
    QLineEdit* txtShortFileNameB = nullptr;
    QTreeWidget* TreeView1 = nullptr;
    PictureArea* PicInfor = nullptr;
    QPlainTextEdit* Text1 = nullptr;
    QPushButton* cmdOpen = nullptr;
    QPushButton* cmdSave = nullptr;
    QPushButton* cmdExit = nullptr;

    void cmdOpen_Click();
    void cmdSave_Click();

signals:
    void exitRequested();

private:
    void fillTree(const QString& rootKey, const QString& rootText);
    void setText(const QString& text);
    void appendText(const QString& text);
    void showTextKind(bool text);
    bool showPicture(const ResourcePreview& preview);
    bool showDialog(const ResourcePreview& preview);
    bool playVideo(const ResourcePreview& preview);
    QTreeWidgetItem* typeNodeOf(const QString& typeText) const;
    bool writeExport(const QString& fileName, const QByteArray& bytes);

    ResourceBrowserModel m_model;
    QString m_path;
    QString m_type;
    QString m_name;
    QString m_text;
    QString m_tempPath;
    QPointer<QWidget> m_dialog;
    QPointer<QMediaPlayer> m_player;
    QPointer<QWidget> m_video;
};

} // namespace vindaro::info::ui
