#include "OperationLog.h"

#include "LogFile.h"
#include "LogTexts.h"

#include <QElapsedTimer>
#include <QTimer>

namespace vindaro::oplog {

namespace {

const QString kCrLf = QStringLiteral("\r\n");

// Changes taken from the queue at once, between looks at the clock.
constexpr qsizetype kBatch = 256;

} // namespace

QString entryStamp(const QDateTime& at, const QLocale& locale)
{
    // The time in the C locale's letters: AM and PM, whatever the user's language.
    return QLatin1Char('[') + locale.toString(at.date(), QLocale::ShortFormat) + QLatin1Char(' ')
        + at.time().toString(QStringLiteral("hh:mm:ss AP")) + QStringLiteral("] ");
}

OperationLog::OperationLog(OperationLogOptions options, QObject* parent)
    : QObject(parent)
    , m_path(options.logFilePath.isEmpty() ? defaultLogFilePath() : options.logFilePath)
    , m_now(options.now ? std::move(options.now) : [] { return QDateTime::currentDateTime(); })
    , m_runningTextLimit(qMax<qsizetype>(1024, options.runningTextLimit))
    , m_sliceMs(qMax(1, options.sliceMs))
    , m_queue(options.queueCapacity)
{
    connect(&m_queue, &ChangeQueue::changesWaiting, this, &OperationLog::scheduleDrain, Qt::QueuedConnection);
}

OperationLog::~OperationLog() = default;

void OperationLog::appendEntryLocked(const QString& description, QString& chunk)
{
    const QDateTime at = m_now();
    const qint64 second = at.toSecsSinceEpoch();
    if (second != m_stampSecond || m_stamp.isEmpty()) {
        m_stamp = entryStamp(at);
        m_stampSecond = second;
    }
    const qsizetype start = chunk.size();
    chunk += m_stamp;
    chunk += description;
    chunk += kCrLf;
    m_running += QStringView(chunk).mid(start);
}

// Past the limit the running text goes to the file ahead of time (without the run's separator, which
// comes at the end). Should the file not take it, the older half is let go so that memory stays bounded.
void OperationLog::keepBoundedLocked()
{
    if (m_running.size() <= m_runningTextLimit)
        return;
    if (appendToLogFile(m_path, m_running)) {
        m_wroteAhead = true;
        m_running.clear();
        return;
    }
    // Cut where an entry starts: continuation lines begin with blanks, entries with their stamp.
    const qsizetype entryStart = m_running.indexOf(QStringLiteral("\r\n["), m_running.size() / 2);
    m_running.remove(0, entryStart < 0 ? m_running.size() : entryStart + 2);
}

void OperationLog::GetFileCopyLog(const QString& description)
{
    QString chunk;
    {
        QMutexLocker lock(&m_mutex);
        appendEntryLocked(description, chunk);
        keepBoundedLocked();
    }
    emit entriesAppended(chunk);
}

bool OperationLog::addChangeLocked(const QueuedChange& item, QString& chunk)
{
    if (!item.note.isEmpty()) {
        appendEntryLocked(item.note, chunk);
        return true;
    }
    const ChangeEvent& change = item.change;
    QString text = describeChange(change.code, change.path1, change.path2);
    text += kCrLf;
    if (text == m_lastChangeEntry)
        return false; // an immediate repeat is logged once
    m_lastChangeEntry = text;
    text.chop(2);
    appendEntryLocked(text, chunk);
    return true;
}

bool OperationLog::addChange(const ChangeEvent& change)
{
    QString chunk;
    bool logged = false;
    {
        QMutexLocker lock(&m_mutex);
        logged = addChangeLocked(QueuedChange{change, QString()}, chunk);
        keepBoundedLocked();
    }
    if (logged) {
        emit entriesAppended(chunk);
        setShown(Shown::RunningText);
    }
    return logged;
}

void OperationLog::putLine(const QString& text)
{
    const QString line = text + kCrLf;
    {
        QMutexLocker lock(&m_mutex);
        m_running += line;
    }
    emit entriesAppended(line);
}

bool OperationLog::takeQueuedChanges(int budgetMs)
{
    QElapsedTimer clock;
    clock.start();
    QString chunk;
    bool empty = false;
    for (;;) {
        {
            QMutexLocker lock(&m_mutex);
            const QList<QueuedChange> batch = m_queue.take(kBatch);
            for (const QueuedChange& item : batch)
                addChangeLocked(item, chunk);
            keepBoundedLocked();
            empty = batch.size() < kBatch && m_queue.isEmpty();
        }
        if (empty || (budgetMs >= 0 && clock.elapsed() >= budgetMs))
            break;
    }
    if (!chunk.isEmpty()) {
        emit entriesAppended(chunk);
        setShown(Shown::RunningText);
    }
    return empty;
}

void OperationLog::scheduleDrain()
{
    if (m_drainScheduled)
        return;
    m_drainScheduled = true;
    // A zero timer: the window's input and painting run between two slices.
    QTimer::singleShot(0, this, &OperationLog::drainSlice);
}

void OperationLog::drainSlice()
{
    m_drainScheduled = false;
    if (!takeQueuedChanges(m_sliceMs))
        scheduleDrain();
}

void OperationLog::viewFile()
{
    const QString text = readLogFile(m_path);
    // An emptied file holds one empty line: two characters.
    m_fileView = text.size() <= 2 ? kNoLogRecords + kCrLf : text;
    emit fileViewChanged(m_fileView);
    setShown(Shown::FileView);
}

void OperationLog::emptyFile()
{
    emptyLogFile(m_path); // a failure leaves the file as it was; nothing is said, as with every write
    setShown(Shown::RunningText);
}

void OperationLog::emptyRunningText()
{
    {
        QMutexLocker lock(&m_mutex);
        m_running.clear();
    }
    emit runningTextCleared();
    setShown(Shown::RunningText);
}

void OperationLog::showRunningText()
{
    setShown(Shown::RunningText);
}

void OperationLog::setShown(Shown shown)
{
    if (shown == m_shown)
        return;
    m_shown = shown;
    emit shownChanged(shown);
}

QString OperationLog::runningText() const
{
    QMutexLocker lock(&m_mutex);
    return m_running;
}

bool OperationLog::writeRunningText()
{
    QMutexLocker lock(&m_mutex);
    QString ignored; // nobody shows the entries taken now: the run is ending
    for (;;) {
        const QList<QueuedChange> batch = m_queue.take(kBatch);
        if (batch.isEmpty())
            break;
        for (const QueuedChange& item : batch)
            addChangeLocked(item, ignored);
        ignored.clear();
    }
    if (m_running.isEmpty() && !m_wroteAhead)
        return true;
    const bool written = appendToLogFile(m_path, m_running + kCrLf);
    // Written or not, this text is done with: a failed write loses it, as it always has.
    m_running.clear();
    m_wroteAhead = false;
    return written;
}

} // namespace vindaro::oplog
