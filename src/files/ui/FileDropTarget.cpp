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

Qt::DropAction FileDropTarget::safeDropAction(Qt::DropActions offered)
{
    // A drop only lists the files. Taking it as a move would let the file manager delete the originals
    // once the drop is done, so the files are always taken as a copy (or a link), never as a move.
    if (offered & Qt::CopyAction)
        return Qt::CopyAction;
    if (offered & Qt::LinkAction)
        return Qt::LinkAction;
    return Qt::IgnoreAction;
}

bool FileDropTarget::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto* drag = static_cast<QDragMoveEvent*>(event);
        const Qt::DropAction action = safeDropAction(drag->possibleActions());
        if (action == Qt::IgnoreAction || droppedPaths(drag->mimeData()).isEmpty()) {
            drag->ignore();
        } else {
            drag->setDropAction(action);
            drag->accept();
        }
        return true;
    }
    case QEvent::Drop: {
        auto* drop = static_cast<QDropEvent*>(event);
        const Qt::DropAction action = safeDropAction(drop->possibleActions());
        const QStringList paths = droppedPaths(drop->mimeData());
        if (action == Qt::IgnoreAction || paths.isEmpty()) {
            drop->ignore();
            return true;
        }
        drop->setDropAction(action);
        drop->accept();
        m_list.AddDroppedFiles(paths);
        return true;
    }
    default:
        return QObject::eventFilter(watched, event);
    }
}

} // namespace vindaro::files
