#pragma once

#include "ChangeQueue.h"

#include <QDateTime>
#include <QLocale>
#include <QMutex>
#include <QObject>

#include <functional>

namespace vindaro::oplog {

struct OperationLogOptions
{
    QString logFilePath; // empty: defaultLogFilePath()
    std::function<QDateTime()> now; // empty: the wall clock
    qsizetype queueCapacity = ChangeQueue::kDefaultCapacity;
    // The running text is kept in memory up to this many characters (about 15,000 entries); past it, it is
    // written ahead to the file, so a long run or a flood of changes does not grow without bound.
    qsizetype runningTextLimit = qsizetype(1) << 20;
    // How long one slice of taking queued changes may hold the log's thread, in milliseconds.
    int sliceMs = 5;
};

// "[" + the locale's short date + " " + the time as hh:mm:ss AM/PM + "] ", the start of every entry:
// "[5/14/03 09:07:31 PM] ".
QString entryStamp(const QDateTime& at, const QLocale& locale = QLocale());

// The operation log of one run: the running text (the entries not yet written to OperationNotes.log), the
// file as last viewed, which of the two the window shows, and the last change logged, against which
// immediate repeats are dropped. Changes come from a monitor through changeQueue() and are taken in slices
// of a few milliseconds on this object's thread, so a burst never holds up the window; the copy engine's
// messages come through GetFileCopyLog.
//
// The running text is guarded by a mutex: writeRunningText may be called from any thread (the writer that
// runs when the program is ended by a signal).
class OperationLog : public QObject
{
    Q_OBJECT

public:
    enum class Shown
    {
        RunningText,
        FileView
    };

    explicit OperationLog(OperationLogOptions options = {}, QObject* parent = nullptr);
    ~OperationLog() override;

    // One message of the copy engine: an entry, never dropped as a repeat; which text is shown stays.
    void GetFileCopyLog(const QString& description);
    // One change: an entry described by the change table, unless its description repeats the last change
    // logged. Shows the running text. Answers whether it was logged.
    bool addChange(const ChangeEvent& change);
    // A line of the window's own, without time stamp (the note that the system cannot be watched).
    void putLine(const QString& text);

    // Where a monitor delivers; its changes are logged as they come.
    ChangeQueue& changeQueue() { return m_queue; }
    // Logs what waits in the queue for about `budgetMs` (all of it when negative). True when the queue is
    // empty afterwards.
    bool takeQueuedChanges(int budgetMs);

    // The buttons: View reads the file into the file view and shows it ("无日志记录！" for an empty file);
    // the two clears empty the file (to one empty line) or the running text and show the running text.
    void viewFile();
    void emptyFile();
    void emptyRunningText();
    void showRunningText();

    QString runningText() const;
    QString fileView() const { return m_fileView; }
    Shown shown() const { return m_shown; }
    QString logFilePath() const { return m_path; }

    // Logs what still waits in the queue, then appends the running text to the file followed by one empty
    // line, and empties it. Nothing is written when the run logged nothing. Safe from any thread.
    bool writeRunningText();

signals:
    // `text` (whole entries, CR LF line ends) was added to the end of the running text.
    void entriesAppended(const QString& text);
    void runningTextCleared();
    void fileViewChanged(const QString& text);
    void shownChanged(vindaro::oplog::OperationLog::Shown shown);

private:
    void drainSlice();
    void scheduleDrain();
    // With the mutex held: the entry for `description` at the end of the running text and of `chunk`.
    void appendEntryLocked(const QString& description, QString& chunk);
    bool addChangeLocked(const QueuedChange& item, QString& chunk);
    void keepBoundedLocked();
    void setShown(Shown shown);

    const QString m_path;
    const std::function<QDateTime()> m_now;
    const qsizetype m_runningTextLimit;
    const int m_sliceMs;
    ChangeQueue m_queue;

    mutable QMutex m_mutex; // guards the four fields below
    QString m_running;
    QString m_lastChangeEntry; // description + CR LF of the last change logged
    bool m_wroteAhead = false; // part of this run's text is in the file already
    qint64 m_stampSecond = -1; // the stamp below is for this second (entries of one second share it)
    QString m_stamp;

    QString m_fileView;
    Shown m_shown = Shown::RunningText;
    bool m_drainScheduled = false;
};

} // namespace vindaro::oplog
