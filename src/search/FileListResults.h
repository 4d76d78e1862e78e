#pragma once

#include "SearchResults.h"
#include "files/FileListModel.h"

namespace vindaro::search {

// The main window's file list as a search's results, through the list's own operations: it counts,
// sizes and limits as it always does (a search sets no limit of its own).
class FileListResults final : public SearchResults
{
public:
    explicit FileListResults(files::FileListModel& list)
        : m_list(list)
    {
    }
    void ResetFileList() override { m_list.ResetFileList(); }
    void addItems(const QStringList& paths) override { m_list.appendEntries(paths); }
    void setEditText(const QString& text) override { m_list.setCurrentText(text); }
    void RefreshFileList() override { m_list.RefreshFileList(); }

private:
    files::FileListModel& m_list;
};

} // namespace vindaro::search
