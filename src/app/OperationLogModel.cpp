#include "OperationLogModel.h"

namespace vindaro::app {

void OperationLogModel::add(const QString& entry)
{
    m_entries.append(entry);
    emit entryAdded(entry);
}

} // namespace vindaro::app
