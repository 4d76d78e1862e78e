#pragma once

#include <QString>
#include <QStringList>

namespace vindaro::search {

// What a search needs of the main window's file list.
class SearchResults
{
public:
    virtual ~SearchResults() = default;
    // Empties the list and resets its displays.
    virtual void ResetFileList() = 0;
    // Adds full paths at the end, in order, without refreshing.
    virtual void addItems(const QStringList& paths) = 0;
    // Sets the text shown in the list's edit field.
    virtual void setEditText(const QString& text) = 0;
    // Makes the first entry current and shows its facts and the list's totals.
    virtual void RefreshFileList() = 0;
};

} // namespace vindaro::search
