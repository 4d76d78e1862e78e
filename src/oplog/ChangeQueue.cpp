#include "ChangeQueue.h"

#include "LogTexts.h"

namespace vindaro::oplog {

namespace {

// The folder a change happened in: the parent of its first path, or the path itself for a drive.
QString folderOf(const ChangeEvent& change)
{
    switch (change.code) {
    case kMediaInserted:
    case kMediaRemoved:
    case kDriveAdded:
    case kDriveRemoved:
    case kUpdateDirectory:
        return change.path1;
    default:
        break;
    }
    const qsizetype slash = change.path1.lastIndexOf(QLatin1Char('/'));
    if (slash <= 0)
        return QStringLiteral("/");
    return change.path1.left(slash);
}

} // namespace

QString commonFolder(const QString& a, const QString& b)
{
    if (a == b)
        return a;
    const qsizetype shorter = qMin(a.size(), b.size());
    qsizetype same = 0;
    while (same < shorter && a.at(same) == b.at(same))
        ++same;
    // A whole path component in common: one path ends there or both go on with a slash.
    const bool aEnds = same == a.size() || a.at(same) == QLatin1Char('/');
    const bool bEnds = same == b.size() || b.at(same) == QLatin1Char('/');
    if (aEnds && bEnds)
        return a.left(same).isEmpty() ? QStringLiteral("/") : a.left(same);
    const qsizetype slash = same == 0 ? -1 : a.lastIndexOf(QLatin1Char('/'), same - 1);
    return slash <= 0 ? QStringLiteral("/") : a.left(slash);
}

ChangeQueue::ChangeQueue(qsizetype capacity, QObject* parent)
    : QObject(parent)
    , m_capacity(qMax<qsizetype>(1, capacity))
{
}

void ChangeQueue::addChanges(QList<ChangeEvent> changes)
{
    bool wake = false;
    {
        QMutexLocker lock(&m_mutex);
        for (ChangeEvent& change : changes) {
            if (m_overflowCount > 0 && qsizetype(m_items.size()) < m_capacity)
                queueSummaryLocked();
            if (qsizetype(m_items.size()) >= m_capacity || m_overflowCount > 0) {
                const QString folder = folderOf(change);
                m_overflowFolder = m_overflowCount == 0 ? folder : commonFolder(m_overflowFolder, folder);
                ++m_overflowCount;
                ++m_summedUp;
                continue;
            }
            m_items.push_back(QueuedChange{std::move(change), QString()});
        }
        if (!m_items.empty() && !m_wakeSent) {
            m_wakeSent = true;
            wake = true;
        }
    }
    if (wake)
        emit changesWaiting();
}

void ChangeQueue::watchLimitReached(const QString& folder)
{
    bool wake = false;
    {
        QMutexLocker lock(&m_mutex);
        m_items.push_back(QueuedChange{ChangeEvent{}, watchLimitNote(folder)});
        wake = !m_wakeSent;
        m_wakeSent = true;
    }
    if (wake)
        emit changesWaiting();
}

void ChangeQueue::queueSummaryLocked()
{
    m_items.push_back(QueuedChange{ChangeEvent{kUpdateDirectory, m_overflowFolder, QString()}, QString()});
    m_overflowCount = 0;
    m_overflowFolder.clear();
}

QList<QueuedChange> ChangeQueue::take(qsizetype max)
{
    QMutexLocker lock(&m_mutex);
    QList<QueuedChange> taken;
    taken.reserve(qMin<qsizetype>(max, qsizetype(m_items.size()) + 1));
    for (;;) {
        // Room again after an overflow: the summary goes behind what came before it.
        if (m_overflowCount > 0 && qsizetype(m_items.size()) < m_capacity)
            queueSummaryLocked();
        if (taken.size() >= max || m_items.empty())
            break;
        taken.append(std::move(m_items.front()));
        m_items.pop_front();
    }
    if (m_items.empty())
        m_wakeSent = false;
    return taken;
}

bool ChangeQueue::isEmpty() const
{
    QMutexLocker lock(&m_mutex);
    return m_items.empty();
}

qint64 ChangeQueue::summedUp() const
{
    QMutexLocker lock(&m_mutex);
    return m_summedUp;
}

} // namespace vindaro::oplog
