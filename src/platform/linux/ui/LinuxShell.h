#pragma once

#include "platform/Shell.h"

#include <QString>

#include <functional>

namespace vindaro::platform {

// The desktop's file services on Linux:
// - recycle bin: the freedesktop trash (QFile::moveToTrash), with the data folder created first;
// - copy and move into a folder: a FileTransfer on a worker thread behind a QProgressDialog whose Cancel
//   returns at once, asking before anything is replaced; partial files never stay behind;
// - rename: never replaces an existing name (renameat2 RENAME_NOREPLACE, or a check where the file
//   system lacks it);
// - the default application of a file's type: MimeAssociations (mimeapps.list and desktop entries);
// - open: QDesktopServices; open-with: the desktop portal's chooser (OpenURI with "ask"), falling back to
//   the program's own OpenWithDialog when no portal answers (no session bus, no portal, an error reply);
// - properties and show-in-folder: org.freedesktop.FileManager1 over D-Bus, falling back to opening the
//   containing folder when no file manager answers;
// - folder chooser: QFileDialog::getExistingDirectory; type name: the MIME database's comment for the
//   file's name (the content is never read).
//
// rename answers 0 on success, otherwise an errno value.
class LinuxShell final : public Shell
{
public:
    FileOpResult copyInto(const QString& source, const QString& folder, QWidget* owner) override;
    FileOpResult moveInto(const QString& source, const QString& folder, QWidget* owner) override;
    FileOpResult moveToTrash(const QString& path) override;
    FileOpResult deletePermanently(const QString& path) override;
    int rename(const QString& oldPath, const QString& newPath) override;
    bool hasDefaultApplication(const QString& path) override;
    bool open(const QString& path) override;
    bool openWith(const QString& path) override;
    bool showProperties(const QString& path, QWidget* owner) override;
    QString chooseFolder(const QString& title, QWidget* owner) override;
    QString typeName(const QString& path) override;

    // Opens the containing folder with the item selected (FileManager1.ShowItems), else the folder.
    bool showInFolder(const QString& path);

    // The question asked before `target` is replaced; true to replace. Defaults to a message box; tests
    // script it.
    void setReplaceQuestion(std::function<bool(const QString& target, QWidget* owner)> ask)
    {
        m_askReplace = std::move(ask);
    }

    // How the user picks a program when no portal answers; true when one was started. Defaults to
    // OpenWithDialog over the installed applications; tests script it.
    void setOpenWithChooser(std::function<bool(const QString& path)> choose)
    {
        m_chooseProgram = std::move(choose);
    }

private:
    FileOpResult transfer(const QString& source, const QString& folder, QWidget* owner, bool move);
    bool askReplace(const QString& target, QWidget* owner);
    bool callFileManager(const QString& method, const QString& path);
    bool askPortal(const QString& path);

    std::function<bool(const QString&, QWidget*)> m_askReplace;
    std::function<bool(const QString&)> m_chooseProgram;
};

} // namespace vindaro::platform
