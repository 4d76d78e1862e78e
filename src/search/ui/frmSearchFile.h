#pragma once

#include "files/FileSystem.h"
#include "search/SearchRules.h"

#include <QWidget>

#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

namespace vindaro::platform {
class Shell;
class Volumes;
} // namespace vindaro::platform

namespace vindaro::search {

class FileSearch;
class SearchResults;

// The search window: a pattern and a scope, the sub-folder, size and attribute boxes, and the buttons
// that search, stop, browse and close. The files found go into the main window's list through
// SearchResults; FileSearch runs the search and keeps its state.
//
// Opening it fills the scope list with the mounted volumes and the pattern list from the pattern history;
// closing it (refused while a search runs) stores the history again.
//
// Boxes at start: sub-folders checked (a search of a volume's root is nearly always meant to go down);
// the size and attribute boxes unchecked, so a search takes every file its pattern names.
class frmSearchFile : public QWidget
{
    Q_OBJECT

public:
    // `historyPath`: the pattern history's file; PatternHistory::settingsFilePath() when empty.
    frmSearchFile(platform::Volumes& volumes, platform::Shell& shell, SearchResults& results,
        QWidget* parent = nullptr, const QString& historyPath = {});
    ~frmSearchFile() override;

    void cmdFileSearch_Click();
    void cmdFileStopSearch_Click();
    void cmdFileBrower_Click();
    void cmdExit_Click();

    // The profile service for other callers, as the window has always offered it.
    static QString ReadINIfile(
        const QString& path, const QString& section, const QString& key, const QString& defaultValue = {});
    static bool WriteINIfile(
        const QString& path, const QString& section, const QString& key, const QString& value);

    // The boxes as a search reads them.
    SearchOptions searchOptions() const;
    FileSearch& search() { return *m_search; }
    // The patterns of cmbFileSearchChoose's list, in order.
    QStringList patternList() const;

    QLabel* lblTitle = nullptr;
    QLabel* lblTitle1 = nullptr;
    QComboBox* cmbFileSearchChoose = nullptr;
    QLabel* lblTitle2 = nullptr;
    QComboBox* cmbFileSearchWide = nullptr;
    QPushButton* cmdFileBrower = nullptr;
    QPushButton* cmdFileSearch = nullptr;
    QPushButton* cmdFileStopSearch = nullptr;
    QPushButton* cmdExit = nullptr;
    QCheckBox* chkSubFolder = nullptr;
    QCheckBox* chkSearchFileSize_1 = nullptr;
    QCheckBox* chkSearchFileSize_2 = nullptr;
    QCheckBox* chkSearchFileSize_3 = nullptr;
    QCheckBox* chkReadOnlyFile = nullptr;
    QCheckBox* chkHideFile = nullptr;
    QCheckBox* chkArchiveFile = nullptr;
    QCheckBox* chkSystemFile = nullptr;
    QCheckBox* chkCompressFile = nullptr;
    QLabel* lblFilePath = nullptr;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildWindow();
    void fillDriveList();
    void LoadPatternHistory();
    void SavePatternHistory();
    void sizeBoxPressed(QCheckBox* pressed);

    std::unique_ptr<files::FileSystem> m_fs;
    platform::Volumes& m_volumes;
    FileSearch* m_search = nullptr; // a child
    QString m_historyPath;
    bool m_historySaved = false;
};

} // namespace vindaro::search
