#include "FileListCombo.h"

#include "FileIcons.h"
#include "files/FileListModel.h"
#include "files/FileListTexts.h"
#include "files/FileSystem.h"

#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QIdentityProxyModel>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QToolTip>

namespace vindaro::files {

namespace {

// Adds each entry's file icon to the list's paths.
class IconProxy final : public QIdentityProxyModel
{
public:
    IconProxy(FileIcons& icons, QObject* parent)
        : QIdentityProxyModel(parent)
        , m_icons(icons)
    {
    }
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (role == Qt::DecorationRole)
            return m_icons.iconFor(QIdentityProxyModel::data(index, Qt::DisplayRole).toString());
        return QIdentityProxyModel::data(index, role);
    }

private:
    FileIcons& m_icons;
};

} // namespace

FileListCombo::FileListCombo(FileListModel& list, FileSystem& fileSystem, FileIcons& icons, QWidget* parent)
    : QComboBox(parent)
    , m_list(list)
    , m_fs(fileSystem)
{
    setObjectName(QStringLiteral("cmbFileCopy"));
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    setCompleter(nullptr);
    // Measuring every entry would stall on a long list: size by a typical path instead.
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(24);
    setMaxVisibleItems(20);
    auto* view = new QListView(this);
    view->setUniformItemSizes(true);
    view->setTextElideMode(Qt::ElideMiddle);
    setView(view);
    auto* proxy = new IconProxy(icons, this);
    proxy->setSourceModel(&list);
    setModel(proxy);
    setCurrentIndex(-1);
    lineEdit()->installEventFilter(this);
    lineEdit()->setText(list.currentText());

    connect(&list, &FileListModel::currentTextChanged, this, &FileListCombo::followModel);
    connect(this, &QComboBox::editTextChanged, this, [this](const QString& text) {
        if (!m_following)
            m_list.setCurrentText(text);
    });
    connect(this, &QComboBox::activated, this, [this](int row) { m_list.ShowCurrentEntryInfo(row); });
}

void FileListCombo::followModel(const QString& text, int row)
{
    if (m_following)
        return;
    m_following = true;
    if (row >= 0 && row < count() && row != currentIndex())
        setCurrentIndex(row);
    if (currentText() != text)
        setEditText(text);
    m_following = false;
}

QString FileListCombo::toolTipAt(const QPoint& pos) const
{
    return pos.x() > width() / 4 ? currentText() : kListBoxHint;
}

bool FileListCombo::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        QToolTip::showText(help->globalPos(), toolTipAt(help->pos()), this);
        return true;
    }
    return QComboBox::event(event);
}

bool FileListCombo::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == lineEdit()) {
        switch (event->type()) {
        case QEvent::ToolTip: {
            auto* help = static_cast<QHelpEvent*>(event);
            QToolTip::showText(help->globalPos(), toolTipAt(lineEdit()->mapTo(this, help->pos())), this);
            return true;
        }
        case QEvent::ContextMenu:
            emit popupMenuRequested(static_cast<QContextMenuEvent*>(event)->globalPos());
            return true;
        case QEvent::KeyPress:
            return handleKey(static_cast<QKeyEvent*>(event));
        default:
            break;
        }
    }
    return QComboBox::eventFilter(watched, event);
}

void FileListCombo::keyPressEvent(QKeyEvent* event)
{
    if (!handleKey(event))
        QComboBox::keyPressEvent(event);
}

void FileListCombo::contextMenuEvent(QContextMenuEvent* event)
{
    emit popupMenuRequested(event->globalPos());
    event->accept();
}

bool FileListCombo::handleKey(QKeyEvent* event)
{
    const int key = event->key();
    if (key != Qt::Key_Delete && key != Qt::Key_Return && key != Qt::Key_Enter)
        return false;
    if (!m_fs.FileExists(currentText()))
        return false;
    if (key != Qt::Key_Delete)
        m_fs.OpenFile(currentText(), window());
    event->accept();
    return true;
}

} // namespace vindaro::files
