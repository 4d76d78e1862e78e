#pragma once

#include "files/ListPrompts.h"

class QFileDialog;

namespace vindaro::files {

// The list's choosers as Qt file dialogs.
// - The open dialog: "打开", VCD / DVD / all-files filters (VCD first), several files at once.
// - The add-folder chooser: a folder dialog "选择待添加的文件目录" with an extra row holding the pattern
// field
//   txtFilePattern ("加载的文件[例如：*.DAT]", "*.*") and the check box chkSubFolders ("也包括下级子文件夹",
//   off). Qt's own dialog is used, since a platform dialog could not carry the extra row.
class QtListDialogs final : public ListDialogs
{
public:
    QStringList chooseFilesToOpen(QWidget* owner) override;
    std::optional<FolderChoice> chooseFolderToAdd(QWidget* owner) override;

    // The add-folder chooser, not yet shown (tests drive it without a modal loop).
    static QFileDialog* createAddFolderDialog(QWidget* owner);
    // What an accepted chooser answers; nothing when it has no folder.
    static std::optional<FolderChoice> folderChoiceOf(const QFileDialog& dialog);
};

// Questions and notices as message boxes with the exclamation icon.
class MessageBoxPrompter final : public Prompter
{
public:
    explicit MessageBoxPrompter(QWidget* owner = nullptr)
        : m_owner(owner)
    {
    }
    int askYesNoCancel(const QString& text, const QString& title) override;
    void notify(const QString& text, const QString& title) override;

private:
    QWidget* m_owner;
};

} // namespace vindaro::files
