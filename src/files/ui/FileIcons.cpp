#include "FileIcons.h"

#include <QFileInfo>

namespace vindaro::files {

QIcon FileIcons::iconFor(const QString& path)
{
    const QFileInfo info(path);
    const QString ending = info.suffix().toLower();
    auto it = m_byEnding.constFind(ending);
    if (it != m_byEnding.constEnd())
        return *it;
    QIcon icon = m_provider.icon(info);
    if (icon.isNull())
        icon = m_provider.icon(QFileIconProvider::File);
    m_byEnding.insert(ending, icon);
    return icon;
}

} // namespace vindaro::files
