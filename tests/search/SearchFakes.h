#pragma once

#include "search/SearchResults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace vindaro::testing {

// The main list as a search sees it: what it holds, its edit text, and the calls in order ("reset",
// "add 3", "text ...", "refresh").
class FakeResults final : public search::SearchResults
{
public:
    QStringList items;
    QString editText;
    QStringList calls;

    void ResetFileList() override
    {
        items.clear();
        editText.clear();
        calls << QStringLiteral("reset");
    }
    void addItems(const QStringList& paths) override
    {
        items += paths;
        calls << QStringLiteral("add %1").arg(paths.size());
    }
    void setEditText(const QString& text) override
    {
        editText = text;
        calls << QStringLiteral("text ") + text;
    }
    void RefreshFileList() override
    {
        if (!items.isEmpty())
            editText = items.first();
        calls << QStringLiteral("refresh");
    }
};

// A temporary folder tree for searches.
class SearchTree
{
public:
    QTemporaryDir dir;
    QString root() const { return dir.path() + u'/'; }
    // Creates the file (and its folders) with `size` bytes (sparse); answers its full path.
    QString file(const QString& relative, qint64 size = 0)
    {
        const QString path = root() + relative;
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile f(path);
        if (f.open(QIODevice::WriteOnly))
            f.resize(size);
        return path;
    }
};

} // namespace vindaro::testing
