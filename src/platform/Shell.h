#pragma once

#include <QString>

class QWidget;

namespace vindaro::platform {

// The desktop's file services: recycle bin, opening, file-manager windows, the folder chooser.
// The Linux implementation uses the freedesktop trash, the desktop's opener and D-Bus file-manager calls.
class Shell
{
public:
    virtual ~Shell() = default;
    // Shell copy or move of one file or folder into `folder`, with the shell's own progress and overwrite
    // question. Answers 0 on success.
    virtual int copyInto(const QString& source, const QString& folder, QWidget* owner) = 0;
    virtual int moveInto(const QString& source, const QString& folder, QWidget* owner) = 0;
    virtual bool moveToTrash(const QString& path) = 0;
    virtual bool deletePermanently(const QString& path) = 0;
    virtual int rename(const QString& oldPath, const QString& newPath) = 0; // 0 on success
    // Opens the path with its default program; false when none is associated or starting it failed.
    virtual bool open(const QString& path) = 0;
    // Lets the user pick the program that opens the path.
    virtual bool openWith(const QString& path) = 0;
    virtual bool showProperties(const QString& path, QWidget* owner) = 0;
    // The folder chooser: an absolute folder path, or empty when the user cancelled.
    virtual QString chooseFolder(const QString& title, QWidget* owner) = 0;
    // The desktop's type name of the file ("MPEG video"); empty when it has none.
    virtual QString typeName(const QString& path) = 0;
};

} // namespace vindaro::platform
