#include "FileDropTarget.h"

#include "files/FileListModel.h"

#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

namespace vindaro::files {

FileDropTarget::FileDropTarget(FileListModel& list, QObject* parent)
    : QObject(parent)
    , m_list(list)
{
}

void FileDropTarget::attach(QWidget* window)
{
    if (!window)
        return;
    window->setAcceptDrops(true);
    window->installEventFilter(this);
    const QList<QWidget*> children = window->findChildren<QWidget*>();
    for (QWidget* child : children)
        child->installEventFilter(this);
}

QStringList FileDropTarget::droppedPaths(const QMimeData* mime)
{
    QStringList paths;
    if (!mime || !mime->hasFormat(QStringLiteral("text/uri-list")))
        return paths;
    const QList<QUrl> urls = mime->urls();
    for (const QUrl& url : urls) {
        if (url.isLocalFile() && !url.toLocalFile().isEmpty())
            paths.append(url.toLocalFile());
    }
    return paths;
}

bool FileDropTarget::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto* drag = static_cast<QDragMoveEvent*>(event);
        if (droppedPaths(drag->mimeData()).isEmpty())
            drag->ignore();
        else
            drag->acceptProposedAction();
        return true;
    }
    case QEvent::Drop: {
        auto* drop = static_cast<QDropEvent*>(event);
        const QStringList paths = droppedPaths(drop->mimeData());
        if (paths.isEmpty()) {
            drop->ignore();
            return true;
        }
        drop->acceptProposedAction();
        m_list.AddDroppedFiles(paths);
        return true;
    }
    default:
        return QObject::eventFilter(watched, event);
    }
}

} // namespace vindaro::files
