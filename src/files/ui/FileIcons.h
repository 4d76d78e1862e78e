#pragma once

#include <QFileIconProvider>
#include <QHash>
#include <QIcon>
#include <QMimeDatabase>
#include <QPixmap>

namespace vindaro::files {

// The desktop's icons for files (the icon theme through Qt), remembered by file-name ending so that a list
// of 100,000 entries asks the MIME database once per kind of file rather than once per file.
class FileIcons
{
public:
    QIcon iconFor(const QString& path);
    QPixmap smallPixmap(const QString& path) { return iconFor(path).pixmap(16, 16); }
    QPixmap largePixmap(const QString& path) { return iconFor(path).pixmap(32, 32); }

private:
    QFileIconProvider m_provider; // the plain file icon when the theme has none
    QMimeDatabase m_mime;
    QHash<QString, QIcon> m_byEnding; // lower-case suffix, "" for names without one
};

} // namespace vindaro::files
