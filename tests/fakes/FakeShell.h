#pragma once

#include "platform/Shell.h"

#include <QStringList>

namespace vindaro::testing {

// A desktop that records what it was asked to do and answers as the test scripts it.
class FakeShell final : public platform::Shell
{
public:
    QStringList calls; // "copyInto <source> -> <folder>", "open <path>", ...
    QString chosenFolder; // what the folder chooser answers; empty = cancelled
    QString lastChooserTitle; // the title the chooser was shown with
    QString typeNameAnswer; // what typeName() answers
    platform::FileOpResult transferAnswer; // copyInto / moveInto result
    platform::FileOpResult deleteAnswer; // moveToTrash / deletePermanently result
    int renameAnswer = 0; // rename result
    bool openAnswer = true; // open() result
    bool associated = true; // hasDefaultApplication() result

    platform::FileOpResult copyInto(const QString& source, const QString& folder, QWidget*) override
    {
        calls << QStringLiteral("copyInto %1 -> %2").arg(source, folder);
        return transferAnswer;
    }
    platform::FileOpResult moveInto(const QString& source, const QString& folder, QWidget*) override
    {
        calls << QStringLiteral("moveInto %1 -> %2").arg(source, folder);
        return transferAnswer;
    }
    platform::FileOpResult moveToTrash(const QString& path) override
    {
        calls << QStringLiteral("moveToTrash ") + path;
        return deleteAnswer;
    }
    platform::FileOpResult deletePermanently(const QString& path) override
    {
        calls << QStringLiteral("deletePermanently ") + path;
        return deleteAnswer;
    }
    bool hasDefaultApplication(const QString&) override { return associated; }
    int rename(const QString& oldPath, const QString& newPath) override
    {
        calls << QStringLiteral("rename %1 -> %2").arg(oldPath, newPath);
        return renameAnswer;
    }
    bool open(const QString& path) override
    {
        calls << QStringLiteral("open ") + path;
        return openAnswer;
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
    QString chooseFolder(const QString& title, QWidget*) override
    {
        lastChooserTitle = title;
        calls << QStringLiteral("chooseFolder");
        return chosenFolder;
    }
    QString typeName(const QString&) override { return typeNameAnswer; }
};

} // namespace vindaro::testing
