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
    // By name only: guessing the type from the content would read the file, which on a scratched disc can
    // hold the window for seconds.
    const QMimeType type = m_mime.mimeTypeForFile(info.fileName(), QMimeDatabase::MatchExtension);
    QIcon icon = QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName()));
    if (icon.isNull())
        icon = m_provider.icon(QFileIconProvider::File);
    m_byEnding.insert(ending, icon);
    return icon;
}

} // namespace vindaro::files
