#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QWidget;

namespace vindaro::files {

// Answer of a yes/no/cancel question, besides platform::kAnswerYes (6) and kAnswerNo (7).
constexpr int kAnswerCancel = 2;

// The questions and notices of the file list and its commands. The window shows message boxes; tests
// answer from a script.
class Prompter
{
public:
    virtual ~Prompter() = default;
    // Exclamation icon, buttons yes / no / cancel; answers 6, 7 or kAnswerCancel.
    virtual int askYesNoCancel(const QString& text, const QString& title) = 0;
    // Exclamation icon, OK.
    virtual void notify(const QString& text, const QString& title) = 0;
};

// What the add-folder chooser answers: the folder, the pattern typed in its extra field and the state of
// its sub-folder check box.
struct FolderChoice
{
    QString folder;
    QString pattern = QStringLiteral("*.*");
    bool includeSubfolders = false;
};

// The choosers that fill the list.
class ListDialogs
{
public:
    virtual ~ListDialogs() = default;
    // The open dialog for source files: the chosen paths in the dialog's order; empty when cancelled.
    virtual QStringList chooseFilesToOpen(QWidget* owner) = 0;
    // The add-folder chooser; nothing when cancelled.
    virtual std::optional<FolderChoice> chooseFolderToAdd(QWidget* owner) = 0;
};

} // namespace vindaro::files
