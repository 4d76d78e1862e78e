#pragma once

#include <QString>

class QWidget;

namespace vindaro::platform {

// How a copy, move or delete of the desktop ended. A failure names the system's error number, the path it
// concerns (the source, the target or a file inside a folder being copied) and what was being done to that
// path, so that the user can be told what failed and why.
struct FileOpResult
{
    enum class Status
    {
        Done,
        Cancelled, // the user cancelled, or declined to replace an existing file
        Failed
    };
    // What was being done to `path` when it failed.
    enum class Step
    {
        Check, // before anything was touched: the source, the folder or the pair is unfit
        ReadSource,
        WriteTarget,
        RemoveSource, // a move: the copy is complete, the original could not be removed
        Trash,
        Delete
    };

    Status status = Status::Done;
    Step step = Step::Check;
    int error = 0; // errno; 0 when `reason` alone explains the failure
    QString path;
    QString reason; // the system's (or the program's) words for the failure; empty: from `error`

    bool done() const { return status == Status::Done; }
    static FileOpResult cancelled() { return {Status::Cancelled, Step::Check, 0, {}, {}}; }
    static FileOpResult failed(Step step, int error, const QString& path, const QString& reason = {})
    {
        return {Status::Failed, step, error, path, reason};
    }
};

// The desktop's file services: recycle bin, opening, file-manager windows, the folder chooser.
// The Linux implementation uses the freedesktop trash, the desktop's opener and D-Bus file-manager calls.
class Shell
{
public:
    virtual ~Shell() = default;
    // Copy or move of one file or folder into `folder`, with a progress window that can cancel and a
    // question before an existing file is replaced.
    virtual FileOpResult copyInto(const QString& source, const QString& folder, QWidget* owner) = 0;
    virtual FileOpResult moveInto(const QString& source, const QString& folder, QWidget* owner) = 0;
    virtual FileOpResult moveToTrash(const QString& path) = 0;
    virtual FileOpResult deletePermanently(const QString& path) = 0;
    virtual int rename(const QString& oldPath, const QString& newPath) = 0; // 0 on success
    // Whether the desktop names a default application for the file's type.
    virtual bool hasDefaultApplication(const QString& path) = 0;
    // Opens the path with its default program; false when starting it failed.
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
