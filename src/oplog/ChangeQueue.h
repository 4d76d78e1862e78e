#pragma once

#include "ChangeMonitor.h"

#include <QMutex>
#include <QObject>

#include <deque>

namespace vindaro::oplog {

// What the log takes from the queue: a change, or a note of the log's own (then `note` is set).
struct QueuedChange
{
    ChangeEvent change;
    QString note;
};

// The changes a monitor saw and the log has not taken yet: filled on the monitor's thread, emptied on the
// log's. It holds at most `capacity` changes, so a burst (an `rm -rf` of a big tree) costs bounded memory:
// changes that arrive while it is full are not kept one by one but summed up, as the desktop's shell sums
// up a flood, as one "folder updated" change of the deepest folder that holds them all. The summary is
// queued as soon as there is room, behind what was queued before the overflow.
class ChangeQueue : public QObject, public ChangeSink
{
    Q_OBJECT

public:
    static constexpr qsizetype kDefaultCapacity = 65536;

    explicit ChangeQueue(qsizetype capacity = kDefaultCapacity, QObject* parent = nullptr);

    void addChanges(QList<ChangeEvent> changes) override;
    void watchLimitReached(const QString& folder) override;

    // Up to `max` of the oldest waiting changes, in order.
    QList<QueuedChange> take(qsizetype max);
    bool isEmpty() const;
    // How many changes were summed up instead of queued, over the queue's life.
    qint64 summedUp() const;

signals:
    // The queue was empty and has changes now. Emitted on the monitor's thread: connect it queued.
    void changesWaiting();

private:
    void queueSummaryLocked();

    const qsizetype m_capacity;
    mutable QMutex m_mutex; // guards everything below
    std::deque<QueuedChange> m_items;
    bool m_wakeSent = false; // changesWaiting was emitted and the queue has not been emptied since
    qint64 m_overflowCount = 0; // changes left out since the last summary
    QString m_overflowFolder; // the deepest folder holding all of them
    qint64 m_summedUp = 0;
};

// The deepest folder that holds both absolute paths ("/a/b/c" and "/a/bc" give "/a").
QString commonFolder(const QString& a, const QString& b);

} // namespace vindaro::oplog
