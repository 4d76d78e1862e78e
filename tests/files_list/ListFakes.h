#pragma once
// The file list's world in the tests: a temporary folder, a desktop that acts on it, and scripted answers for
// the questions and choosers. The media and FUSE tests use them too.

#include "fakes/FakeVolumes.h"
#include "files/FileListModel.h"
#include "files/FileSystem.h"
#include "files/ListPrompts.h"
#include "platform/Shell.h"

#include <QDir>
#include <QFile>
#include <QQueue>
#include <QTemporaryDir>

#include <cerrno>
#include <optional>

namespace vindaro::testing {

// A desktop that records each call ("copyInto PATH", "rename OLD -> NEW", ...) and acts on the disk for real:
// with plain file operations, or through `real` (the Linux desktop layer) when a test sets it.
class ActingShell final : public platform::Shell
{
public:
    using Result = platform::FileOpResult;
    QStringList calls;
    QString chosenFolder; // the folder chooser's answer; empty = cancelled
    std::optional<Result>
        forced; // when set, copy, move, trash and delete answer this and leave the disk alone
    platform::Shell* real = nullptr;

    Result copyInto(const QString& source, const QString& folder, QWidget* owner) override
    {
        return act(QStringLiteral("copyInto ") + source, [&] {
            return real ? real->copyInto(source, folder, owner)
                        : done(QFile::copy(source, folder + QFileInfo(source).fileName()), source);
        });
    }
    Result moveInto(const QString& source, const QString& folder, QWidget* owner) override
    {
        return act(QStringLiteral("moveInto ") + source, [&] {
            return real ? real->moveInto(source, folder, owner)
                        : done(QFile::rename(source, folder + QFileInfo(source).fileName()), source);
        });
    }
    Result moveToTrash(const QString& path) override
    {
        return act(QStringLiteral("moveToTrash ") + path,
            [&] { return real ? real->moveToTrash(path) : done(QFile::remove(path), path); });
    }
    Result deletePermanently(const QString& path) override
    {
        return act(QStringLiteral("deletePermanently ") + path,
            [&] { return real ? real->deletePermanently(path) : done(QFile::remove(path), path); });
    }
    int rename(const QString& oldPath, const QString& newPath) override
    {
        calls << QStringLiteral("rename %1 -> %2").arg(oldPath, newPath);
        if (real)
            return real->rename(oldPath, newPath);
        return QFileInfo::exists(newPath) ? EEXIST : QFile::rename(oldPath, newPath) ? 0 : ENOENT;
    }
    bool hasDefaultApplication(const QString&) override { return true; }
    bool open(const QString& path) override { return record(QStringLiteral("open ") + path); }
    bool openWith(const QString& path) override { return record(QStringLiteral("openWith ") + path); }
    bool showProperties(const QString& path, QWidget*) override
    {
        return record(QStringLiteral("showProperties ") + path);
    }
    QString chooseFolder(const QString&, QWidget*) override
    {
        record(QStringLiteral("chooseFolder"));
        return chosenFolder;
    }
    QString typeName(const QString&) override { return QStringLiteral("Video"); }

private:
    template<typename Act> Result act(const QString& call, Act doIt)
    {
        calls << call;
        return forced ? *forced : doIt();
    }
    bool record(const QString& call)
    {
        calls << call;
        return true;
    }
    static Result done(bool ok, const QString& path)
    {
        return ok ? Result{} : Result::failed(Result::Step::WriteTarget, EIO, path);
    }
};

// Questions answered from a queue (cancel when it is empty), notices and choosers recorded.
class ScriptedPrompter final : public files::Prompter, public files::ListDialogs
{
public:
    QQueue<int> answers;
    QStringList asked;
    QStringList notices;
    QStringList openAnswer; // the file chooser's answer
    std::optional<files::FolderChoice> folderAnswer; // the add-folder chooser's answer
    int folderAsked = 0;

    int askYesNoCancel(const QString& text, const QString&) override
    {
        asked << text;
        return answers.isEmpty() ? files::kAnswerCancel : answers.dequeue();
    }
    void notify(const QString& text, const QString&) override { notices << text; }
    QStringList chooseFilesToOpen(QWidget*) override { return openAnswer; }
    std::optional<files::FolderChoice> chooseFolderToAdd(QWidget*) override
    {
        ++folderAsked;
        return folderAnswer;
    }
};

// A temporary folder with the services around it.
struct ListWorld
{
    QTemporaryDir dir;
    FakeVolumes volumes;
    ActingShell shell;
    files::FileSystem fs{volumes, shell};
    ScriptedPrompter prompts;

    ListWorld() { volumes.add(QStringLiteral("/"), platform::kDriveFixed, QStringLiteral("/dev/sda1")); }

    QString path(const QString& relative) const { return dir.path() + u'/' + relative; }
    // Creates the file (and its folders) with `bytes` bytes; answers its path.
    QString file(const QString& relative, qint64 bytes = 10) const
    {
        const QString full = path(relative);
        QDir().mkpath(QFileInfo(full).path());
        QFile f(full);
        if (f.open(QIODevice::WriteOnly) && bytes > 0)
            f.resize(bytes);
        return full;
    }
    QString folder(const QString& relative) const
    {
        QDir().mkpath(path(relative));
        return path(relative);
    }
};

// Makes `path` the list's one entry, current and refreshed.
inline void listOnly(files::FileListModel& list, const QString& path)
{
    list.ResetFileList();
    list.appendEntries({path});
    list.RefreshFileList();
}

} // namespace vindaro::testing
