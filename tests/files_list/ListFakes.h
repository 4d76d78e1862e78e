#pragma once

#include "fakes/FakeVolumes.h"
#include "files/FileSystem.h"
#include "files/ListPrompts.h"
#include "platform/Shell.h"

#include <QDir>
#include <QFile>
#include <QQueue>
#include <QTemporaryDir>

#include <cerrno>

#include <memory>
#include <optional>

namespace vindaro::testing {

// A desktop that acts on the temporary folder for real (rename, delete, trash, move) and records each
// call, so the list can be checked against what happened on disk.
class ActingShell final : public platform::Shell
{
public:
    QStringList calls;
    QString chosenFolder; // the folder chooser's answer; empty = cancelled
    bool refuseRename = false;
    // When set, copy, move, trash and delete answer this and leave the disk alone.
    std::optional<platform::FileOpResult> forced;

    platform::FileOpResult copyInto(const QString& source, const QString& folder, QWidget*) override
    {
        calls << QStringLiteral("copyInto ") + source;
        if (forced)
            return *forced;
        return outcome(QFile::copy(source, folder + QFileInfo(source).fileName()), source);
    }
    platform::FileOpResult moveInto(const QString& source, const QString& folder, QWidget*) override
    {
        calls << QStringLiteral("moveInto ") + source;
        if (forced)
            return *forced;
        return outcome(QFile::rename(source, folder + QFileInfo(source).fileName()), source);
    }
    platform::FileOpResult moveToTrash(const QString& path) override
    {
        calls << QStringLiteral("moveToTrash ") + path;
        if (forced)
            return *forced;
        return outcome(QFile::remove(path), path);
    }
    platform::FileOpResult deletePermanently(const QString& path) override
    {
        calls << QStringLiteral("deletePermanently ") + path;
        if (forced)
            return *forced;
        return outcome(QFile::remove(path), path);
    }
    bool hasDefaultApplication(const QString&) override { return true; }
    int rename(const QString& oldPath, const QString& newPath) override
    {
        calls << QStringLiteral("rename %1 -> %2").arg(oldPath, newPath);
        if (refuseRename || QFileInfo::exists(newPath))
            return 17;
        return QFile::rename(oldPath, newPath) ? 0 : 2;
    }
    bool open(const QString& path) override
    {
        calls << QStringLiteral("open ") + path;
        return true;
    }
    bool openWith(const QString& path) override
    {
        calls << QStringLiteral("openWith ") + path;
        return true;
    }
    bool showProperties(const QString& path, QWidget*) override
    {
        calls << QStringLiteral("showProperties ") + path;
        return true;
    }
    QString chooseFolder(const QString&, QWidget*) override
    {
        calls << QStringLiteral("chooseFolder");
        return chosenFolder;
    }
    QString typeName(const QString&) override { return QStringLiteral("Video"); }

private:
    static platform::FileOpResult outcome(bool done, const QString& path)
    {
        return done ? platform::FileOpResult{}
                    : platform::FileOpResult::failed(platform::FileOpResult::Step::WriteTarget, EIO, path);
    }
};

class ScriptedPrompter final : public files::Prompter
{
public:
    QQueue<int> answers; // for askYesNoCancel; cancel when empty
    QStringList asked;
    QStringList notices;
    int askYesNoCancel(const QString& text, const QString&) override
    {
        asked << text;
        return answers.isEmpty() ? files::kAnswerCancel : answers.dequeue();
    }
    void notify(const QString& text, const QString&) override { notices << text; }
};

class ScriptedDialogs final : public files::ListDialogs
{
public:
    QStringList openAnswer;
    std::optional<files::FolderChoice> folderAnswer;
    int folderAsked = 0;
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

} // namespace vindaro::testing
