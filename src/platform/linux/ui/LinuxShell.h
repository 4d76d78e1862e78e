#pragma once

#include "platform/Shell.h"

#include <QString>

#include <functional>

namespace vindaro::platform {

// The desktop's file services on Linux:
// - recycle bin: the freedesktop trash (QFile::moveToTrash), with the data folder created first;
// - copy and move into a folder: our own transfer with a QProgressDialog, asking before anything is
//   replaced; a replaced file is written beside the old one and renamed over it only when complete, so a
//   cancelled or failed copy leaves the old file as it was;
// - rename: never replaces an existing name (renameat2 RENAME_NOREPLACE, or a check where the file
//   system lacks it);
// - open: QDesktopServices; open-with: the desktop portal's chooser (OpenURI with "ask"), falling back to
//   `xdg-open` when no portal answers;
// - properties and show-in-folder: org.freedesktop.FileManager1 over D-Bus, falling back to opening the
//   containing folder when no file manager answers;
// - folder chooser: QFileDialog::getExistingDirectory; type name: the MIME database's comment for the
//   file's name (the content is never read).
//
// Result codes of copyInto, moveInto and rename: 0 success, kCancelled when the user cancelled or declined
// to replace, otherwise an errno value.
class LinuxShell final : public Shell
{
public:
    static constexpr int kCancelled = 1223;

    int copyInto(const QString& source, const QString& folder, QWidget* owner) override;
    int moveInto(const QString& source, const QString& folder, QWidget* owner) override;
    bool moveToTrash(const QString& path) override;
    bool deletePermanently(const QString& path) override;
    int rename(const QString& oldPath, const QString& newPath) override;
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

private:
    int transfer(const QString& source, const QString& folder, QWidget* owner, bool move);
    bool askReplace(const QString& target, QWidget* owner);
    bool callFileManager(const QString& method, const QString& path);

    std::function<bool(const QString&, QWidget*)> m_askReplace;
};

} // namespace vindaro::platform
