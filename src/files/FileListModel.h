#pragma once

#include "FileSystem.h"
#include "ListPrompts.h"

#include <QAbstractListModel>
#include <QQueue>
#include <QStringList>

namespace vindaro::files {

class FolderScanner;

// The list of files to work on: the full paths behind the main window's list box, the box's text (the
// current entry: the source of a single copy and the file the file commands act on), the destination that
// follows it, and the fact texts shown beside the list.
//
// Entries keep the order in which they were added and may repeat; positions shown to the user count from
// 1, rows from 0. Routines named as the window knows them (ResetFileList ...) keep their behaviour: after
// every change of the list the first entry becomes current; a vanished file leaves the fact texts as they
// were. The model never shows a window itself: the list box, the status bars and the preview listen to its
// signals.
class FileListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    // The facts of one entry, as the status bars and icon boxes show them.
    struct EntryFacts
    {
        QString path;
        bool pictureFile = false; // the file itself is the picture to show (ICO, BMP, JPG ...)
        QString panelA; // dates
        QString panelB; // size, type, attributes
    };

    explicit FileListModel(FileSystem& fileSystem, QObject* parent = nullptr);
    ~FileListModel() override;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    const QStringList& entries() const { return m_entries; }
    qsizetype count() const { return m_entries.size(); }
    bool isEmpty() const { return m_entries.isEmpty(); }

    // The box's text. Setting it (the user typed or picked) announces currentTextChanged when it changed.
    QString currentText() const { return m_currentText; }
    void setCurrentText(const QString& text);
    // The destination path; the window hands over what the user types, the model answers with
    // destinationChanged when it moves the destination itself.
    QString destination() const { return m_destination; }
    void setDestination(const QString& destination) { m_destination = destination; }
    QString filesInfo() const { return m_filesInfo; }
    const EntryFacts& facts() const { return m_facts; }
    // Mirrors the allow-preview menu entry.
    bool previewFlag() const { return m_previewFlag; }
    void setPreviewFlag(bool on) { m_previewFlag = on; }

    // Adds entries at the end without refreshing (a chooser's answer, a scan's batch).
    void appendEntries(const QStringList& paths);

    // Empties the list and resets every display; a running folder scan is cancelled.
    void ResetFileList();
    // Makes the first entry current and shows its facts and the list's totals.
    void RefreshFileList();
    // The user picked the entry at `row`: destination follow-up, then its facts, position and totals.
    void ShowCurrentEntryInfo(int row);
    // Removes the first entry equal to the box's text (none may be), then refreshes or resets, then moves
    // the destination along.
    void RemoveCurrentEntry();
    // Dropped paths: earlier equal entries go, existing files are appended in the drop's order, folders and
    // missing paths are ignored.
    void AddDroppedFiles(const QStringList& paths);
    // Scans a chosen folder (off the UI thread); the list grows under the scan and is refreshed when it
    // ends. A second folder waits for the running scan.
    void scanFolder(const FolderChoice& choice);
    bool isScanning() const;
    void cancelScans();
    // Destination follow-up: the destination keeps its folder and takes the current entry's file name.
    void followDestination();
    // After a change of the box's text: stop the preview, then hand a previewable video to it when the
    // preview flag is set. The video's head is read first on a thread of its own, so previewRequested
    // arrives later, from the event loop.
    void previewFollowUp();
    // A follow-up's head read has not come back yet.
    bool isReadingPreviewHead() const { return m_previewReads > 0; }

    // Renames the file `path` to `newNameText` (blanks trimmed) in its own folder. On success the first
    // entry whose file no longer exists is replaced by the new path at its position and made current.
    struct RenameResult
    {
        bool renamed = false;
        QString newPath;
        QString refusal; // why not, in the user's words, when !renamed
    };
    RenameResult renameFile(const QString& path, const QString& newNameText);

    // The total length of all entries' files (one that cannot be measured adds nothing).
    qint64 totalBytes() const;

signals:
    // row: the entry's row when the text came from the list, else -1.
    void currentTextChanged(const QString& text, int row);
    void destinationChanged(const QString& destination);
    void filesInfoChanged(const QString& text);
    void factsChanged(const vindaro::files::FileListModel::EntryFacts& facts);
    // Clear the progress bar, the copy counters, the icon boxes, the picture and both status bars.
    void displaysReset();
    void previewStopRequested();
    void previewRequested(const QString& path);
    // A long step started (true) or ended: the window shows the hourglass.
    void busyChanged(bool busy);
    // A folder scan runs (true) or all have ended: the window shows the busy-with-arrow pointer.
    void scanningChanged(bool scanning);
    void scanFinished(bool cancelled);

private:
    void setCurrent(const QString& text, int row);
    void setFilesInfo(const QString& text);
    void showFacts(const QString& path);
    void startNextScan();

    FileSystem& m_fs;
    QStringList m_entries;
    QString m_currentText;
    QString m_destination;
    QString m_filesInfo;
    EntryFacts m_facts;
    bool m_previewFlag = false;
    quint64 m_previewTicket = 0; // the latest preview follow-up; older head reads are ignored
    int m_previewReads = 0; // head reads not yet back
    FolderScanner* m_scanner = nullptr; // the running scan, or null
    QQueue<FolderChoice> m_waitingScans;
};

} // namespace vindaro::files
