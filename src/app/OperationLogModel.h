#pragma once

#include <QObject>
#include <QStringList>

namespace vindaro::app {

// The entries of this run's operation log, in order, until the log window takes them over: the copy
// engine's reports (finished, skipped, cancelled, failed) arrive here as they happen.
class OperationLogModel : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    void add(const QString& entry);
    const QStringList& entries() const { return m_entries; }

signals:
    void entryAdded(const QString& entry);

private:
    QStringList m_entries;
};

} // namespace vindaro::app
