#include "FileMenu.h"

#include "files/FileCommands.h"
#include "files/FileListModel.h"

namespace vindaro::files {

FileMenu::FileMenu(FileCommands& commands, FileListModel& list, QWidget* parent)
    : QMenu(QStringLiteral("&File"), parent)
    , m_list(list)
{
    setObjectName(QStringLiteral("mnuFile"));
    FileCommands* c = &commands;
    QAction* open = add("mnuOpenFile", QStringLiteral("打开当前文件(&O)"));
    connect(open, &QAction::triggered, c, &FileCommands::OpenFile);
    QAction* play = add("mnuPlayFile", QStringLiteral("播放当前文件(&B)"));
    connect(play, &QAction::triggered, c, &FileCommands::PlayFile);
    m_preview = add("mnuPreview", QStringLiteral("允许预览文件(&V)"));
    m_preview->setCheckable(true);
    connect(m_preview, &QAction::toggled, this, &FileMenu::previewToggled);
    separator("mnuSeparator_1");
    connect(add("mnuAddFileToListItem", QStringLiteral("加文件到列表(&D)")), &QAction::triggered, c,
        &FileCommands::AddFolderToList);
    QAction* clearSelected = add("mnuClearSelectedItem", QStringLiteral("从列表中清除(&N)"));
    connect(clearSelected, &QAction::triggered, c, &FileCommands::ClearSelected);
    QAction* clearAll = add("mnuClearAllListItem", QStringLiteral("清除所有文件(&L)"));
    connect(clearAll, &QAction::triggered, c, &FileCommands::ClearAll);
    separator("mnuSeparator_2");
    QAction* del = add("mnuDelSeletedItem", QStringLiteral("删除当前文件(&K)"));
    connect(del, &QAction::triggered, c, &FileCommands::Delete);
    QAction* rename = add("mnuReName", QStringLiteral("重命名该文件(&R)"));
    connect(rename, &QAction::triggered, c, &FileCommands::Rename);
    separator("mnuSeparator_3");
    QAction* copyTo = add("mnuCopyTo", QStringLiteral("复制该文件到(&C)..."));
    connect(copyTo, &QAction::triggered, c, &FileCommands::CopyTo);
    QAction* moveTo = add("mnuMoveTo", QStringLiteral("移动该文件到(&M)..."));
    connect(moveTo, &QAction::triggered, c, &FileCommands::MoveTo);
    separator("mnuSeparator_4");
    QAction* find = add("mnuFindFile", QStringLiteral("查找目标文件(&F)"));
    connect(find, &QAction::triggered, c, &FileCommands::FindFile);
    QAction* properties = add("mnuFileroperty", QStringLiteral("查看文件属性(&P)"));
    connect(properties, &QAction::triggered, c, &FileCommands::Properties);
    separator("mnuSeparator_5");
    QAction* copyAll = add("mnuCopyAllFilesTo", QStringLiteral("复制所有文件到(&A)..."));
    connect(copyAll, &QAction::triggered, c, &FileCommands::CopyAllFilesTo);
    separator("mnuSeparator_6");
    connect(add("mnuExit", QStringLiteral("&Exit  Vindaro")), &QAction::triggered, this,
        &FileMenu::exitRequested);
    connect(add("mnuAboutMe", QStringLiteral("&About Vindaro")), &QAction::triggered, this,
        &FileMenu::aboutRequested);

    m_listEntries
        = {open, play, clearSelected, clearAll, del, rename, copyTo, moveTo, find, properties, copyAll};
    UpdateMenuState();
}

QAction* FileMenu::add(const char* name, const QString& caption)
{
    QAction* action = addAction(caption);
    action->setObjectName(QString::fromLatin1(name));
    return action;
}

void FileMenu::separator(const char* name)
{
    addSeparator()->setObjectName(QString::fromLatin1(name));
}

QAction* FileMenu::entry(const QString& name) const
{
    const QList<QAction*> all = actions();
    for (QAction* action : all) {
        if (action->objectName() == name)
            return action;
    }
    return nullptr;
}

void FileMenu::UpdateMenuState()
{
    const bool listed = !m_list.isEmpty();
    for (QAction* action : std::as_const(m_listEntries))
        action->setEnabled(listed);
    m_list.setPreviewFlag(m_preview->isChecked());
}

} // namespace vindaro::files
