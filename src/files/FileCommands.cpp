#include "FileCommands.h"

#include "FileCommandTexts.h"
#include "FileListTexts.h"
#include "sysinfo/OsVersionName.h"

namespace vindaro::files {

FileCommands::FileCommands(FileListModel& list, FileSystem& fileSystem, Prompter& prompts,
    ListDialogs& dialogs, QWidget* owner, QObject* parent)
    : QObject(parent)
    , m_list(list)
    , m_fs(fileSystem)
    , m_prompts(prompts)
    , m_dialogs(dialogs)
    , m_owner(owner)
    , m_osName(sysinfo::GetOSVersionName())
{
}

bool FileCommands::guardPasses() const
{
    return !m_list.isEmpty() && m_fs.FileExists(m_list.currentText());
}

void FileCommands::OpenFile()
{
    if (!m_list.isEmpty())
        m_fs.OpenFile(m_list.currentText(), m_owner);
}

void FileCommands::ClearSelected()
{
    m_list.RemoveCurrentEntry();
}

void FileCommands::ClearAll()
{
    if (m_list.isEmpty())
        return;
    emit busyChanged(true);
    m_list.ResetFileList();
    emit busyChanged(false);
}

void FileCommands::Delete()
{
    if (m_list.isEmpty())
        return;
    emit previewStopRequested(); // a playing preview holds the file open
    if (!guardPasses())
        return;
    const QString path = m_list.currentText();
    const int answer = m_prompts.askYesNoCancel(deleteQuestionText(path), kReminderTitle);
    platform::FileOpResult result;
    if (answer == platform::kAnswerYes)
        result = m_fs.FileDeleted(path);
    else if (answer == platform::kAnswerNo)
        result = m_fs.FileDelToRecycle(path);
    else
        return;
    if (result.done())
        m_list.RemoveCurrentEntry();
    else
        m_prompts.notify(deleteFailedText(path, result), kReminderTitle);
}

void FileCommands::Rename()
{
    if (!guardPasses())
        return;
    emit previewCloseRequested();
    emit renameRequested(m_list.currentText());
}

void FileCommands::CopyTo()
{
    if (!guardPasses())
        return;
    const QString path = m_list.currentText();
    platform::FileOpResult result;
    if (m_fs.FileCopyTo(m_owner, path, &result) && result.status == platform::FileOpResult::Status::Failed)
        m_prompts.notify(copyFailedText(path, result), kReminderTitle);
}

void FileCommands::MoveTo()
{
    if (!guardPasses())
        return;
    const QString path = m_list.currentText();
    platform::FileOpResult result;
    if (!m_fs.FileMoveTo(m_owner, path, &result))
        return;
    if (result.done())
        m_list.RemoveCurrentEntry();
    else if (result.status == platform::FileOpResult::Status::Failed)
        m_prompts.notify(moveFailedText(path, result), kReminderTitle);
}

void FileCommands::FindFile()
{
    if (!m_list.isEmpty())
        m_fs.OpenFolder(m_list.currentText(), m_owner);
}

void FileCommands::Properties()
{
    if (!guardPasses())
        return;
    const QString path = m_list.currentText();
    if (m_propertyWindow && propertiesUseOwnWindow(path, m_osName))
        m_propertyWindow(path);
    else
        m_fs.ShowFile_FolderProperty(path, m_owner);
}

void FileCommands::CopyAllFilesTo()
{
    if (guardPasses())
        emit batchCopyRequested();
}

void FileCommands::PlayFile()
{
    if (guardPasses())
        emit playerRequested(m_list.currentText());
}

void FileCommands::AddFolderToList()
{
    if (!addFolderAllowed(m_list.count(), m_capacityLimit)) {
        m_prompts.notify(kOverCapacityText, kReminderTitle);
        return;
    }
    const std::optional<FolderChoice> choice = m_dialogs.chooseFolderToAdd(m_owner);
    if (!choice || choice->folder.isEmpty() || !m_fs.FolderExists(choice->folder))
        return;
    m_list.scanFolder(*choice);
}

void FileCommands::AddFromFileChooser()
{
    m_list.ResetFileList();
    m_list.appendEntries(m_dialogs.chooseFilesToOpen(m_owner));
    m_list.RefreshFileList();
}

} // namespace vindaro::files
