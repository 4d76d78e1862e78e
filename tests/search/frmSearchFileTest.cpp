// The search window's wiring: captions, the drive list, Enter, the size boxes, the buttons during a
// search, the browser and the pattern history. What a search finds is FileSearchTest's business.
#include "search/ui/frmSearchFile.h"
#include "SearchFakes.h"
#include "chrome/ToolTips.h"
#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "info/GoldenText.h"
#include "search/FileSearch.h"
#include "search/PatternHistory.h"
#include "search/ProfileFile.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace vindaro;
using search::frmSearchFile;

namespace {

class SearchWindowTest : public ::testing::Test
{
protected:
    vindaro::testing::FakeVolumes volumes;
    vindaro::testing::FakeShell shell;
    vindaro::testing::FakeResults results;
    vindaro::testing::SearchTree tree;
    const QString history = tree.dir.filePath(QStringLiteral("config/Vindarosearch.ini"));
    std::unique_ptr<frmSearchFile> window;

    void open()
    {
        window = std::make_unique<frmSearchFile>(volumes, shell, results, nullptr, history);
        window->show();
    }
    QString stored(int index) const
    {
        return search::ProfileFile::readString(
            history, QStringLiteral("SECTION"), search::PatternHistory::keyFor(index));
    }
};

// Every text of the search, checked once against a golden file: the captions and balloon tips of the
// window's named controls, the chooser's title and the status texts. After a deliberate change of a text,
// run with VINDARO_UPDATE_GOLDEN=1 to write the file anew and review its diff.
TEST_F(SearchWindowTest, EveryTextIsTheGoldenOne)
{
    open();
    vindaro::testing::GoldenText golden;
    golden.add(QStringLiteral("window"), window->windowTitle());
    for (const QWidget* control : window->findChildren<QWidget*>()) {
        const QString text = control->property("text").toString();
        if (!text.isEmpty() && !control->objectName().isEmpty())
            golden.add(control->objectName(), text);
        if (const chrome::ToolTips* tip = chrome::ToolTips::of(control))
            golden.add(control->objectName() + QStringLiteral(" tip"), tip->text());
    }
    window->cmdFileBrower->click();
    golden.add(QStringLiteral("chooser"), shell.lastChooserTitle);
    golden.add(QStringLiteral("empty input"), search::kEmptyInputText);
    golden.add(QStringLiteral("nothing found"), search::kNothingFoundText);
    golden.add(QStringLiteral("found"), search::foundCountText(4));
    golden.check(QStringLiteral(VINDARO_GOLDEN_DIR "/search_texts.txt"));
}

// Sub-folders on; every size and attribute box off.
TEST_F(SearchWindowTest, StartingStates)
{
    open();
    const search::SearchOptions options = window->searchOptions();
    EXPECT_TRUE(options.includeSubfolders);
    EXPECT_FALSE(search::sizeClassOf(options));
    EXPECT_EQ(search::attributeMask(options), 0);
    EXPECT_TRUE(window->lblFilePath->text().isEmpty());
}

TEST_F(SearchWindowTest, ScopeListHoldsTheMountedVolumes)
{
    volumes.add(QStringLiteral("/"), platform::kDriveFixed);
    volumes.add(QStringLiteral("/media/CDROM"), platform::kDriveCdRom);
    volumes.add(QStringLiteral("/mnt/share"), platform::kDriveRemote);
    open();
    QStringList items;
    for (int i = 0; i < window->cmbFileSearchWide->count(); ++i)
        items.append(window->cmbFileSearchWide->itemText(i));
    EXPECT_EQ(items,
        (QStringList{QStringLiteral("/"), QStringLiteral("/media/CDROM/"), QStringLiteral("/mnt/share/")}));
    EXPECT_EQ(window->cmbFileSearchWide->currentText(), QStringLiteral("/"));
}

TEST_F(SearchWindowTest, EnterInThePatternBoxSearchesAndAddsThePattern)
{
    const QString found = tree.file(QStringLiteral("a/AVSEQ01.DAT"));
    open();
    window->cmbFileSearchWide->setEditText(tree.root() + QStringLiteral("a"));
    window->cmbFileSearchChoose->setEditText(QStringLiteral("*.dat"));
    QSignalSpy finished(&window->search(), &search::FileSearch::finished);
    QTest::keyClick(window->cmbFileSearchChoose->lineEdit(), Qt::Key_Return);
    ASSERT_TRUE(finished.wait(10'000));
    EXPECT_EQ(results.items, QStringList{found});
    EXPECT_EQ(window->patternList(), QStringList{QStringLiteral("*.dat")});
    EXPECT_EQ(window->lblFilePath->text(), search::foundCountText(1));
}

TEST_F(SearchWindowTest, PressingOneSizeBoxClearsTheOthers)
{
    open();
    QTest::mouseClick(window->chkSearchFileSize_1, Qt::LeftButton);
    QTest::mouseClick(window->chkSearchFileSize_3, Qt::LeftButton);
    EXPECT_FALSE(window->chkSearchFileSize_1->isChecked());
    EXPECT_TRUE(window->chkSearchFileSize_3->isChecked());
    QTest::mouseClick(window->chkSearchFileSize_2, Qt::LeftButton);
    EXPECT_EQ(window->searchOptions().size3, false);
    EXPECT_EQ(window->searchOptions().size2, true);
}

TEST_F(SearchWindowTest, ASearchDisablesSearchAndBrowseUntilItStopsAndCannotBeClosed)
{
    tree.file(QStringLiteral("x.dat"));
    open();
    window->cmbFileSearchWide->setEditText(tree.root());
    window->cmbFileSearchChoose->setEditText(QStringLiteral("*.dat"));
    window->cmdFileSearch->click();
    EXPECT_FALSE(window->cmdFileSearch->isEnabled());
    EXPECT_FALSE(window->cmdFileBrower->isEnabled());
    window->cmdExit->click();
    EXPECT_TRUE(window->isVisible()); // refused while searching
    EXPECT_FALSE(window->close());
    window->cmdFileStopSearch->click();
    EXPECT_TRUE(window->cmdFileSearch->isEnabled());
    EXPECT_TRUE(window->cmdFileBrower->isEnabled());
    EXPECT_EQ(window->lblFilePath->text(), window->search().statusText());
    window->cmdExit->click();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(stored(0), QStringLiteral("*.dat")); // closing stored the history
}

TEST_F(SearchWindowTest, BrowsingSetsTheScopeUnlessCancelled)
{
    open();
    window->cmbFileSearchWide->setEditText(QStringLiteral("/before/"));
    window->cmdFileBrower->click();
    EXPECT_EQ(window->cmbFileSearchWide->currentText(), QStringLiteral("/before/"));
    shell.chosenFolder = QStringLiteral("/media/cdrom");
    window->cmdFileBrower->click();
    EXPECT_EQ(window->cmbFileSearchWide->currentText(), QStringLiteral("/media/cdrom/"));
}

TEST_F(SearchWindowTest, HistoryIsLoadedOnOpeningAndStoredOnClosing)
{
    ASSERT_TRUE(search::PatternHistory::save(history,
        {QStringLiteral("*.VOB"), QStringLiteral("*.DAT"), QStringLiteral("old 3"),
            QStringLiteral("old 4")}));
    open();
    EXPECT_EQ(window->patternList(),
        (QStringList{QStringLiteral("*.VOB"), QStringLiteral("*.DAT"), QStringLiteral("old 3"),
            QStringLiteral("old 4")}));
    EXPECT_EQ(window->cmbFileSearchChoose->currentText(), QStringLiteral("*.VOB"));
    window->cmbFileSearchWide->setEditText(tree.root());
    QSignalSpy finished(&window->search(), &search::FileSearch::finished);
    for (const char* pattern : {"*.DAT", "*.MPG"}) {
        window->cmbFileSearchChoose->setEditText(QLatin1String(pattern));
        window->cmdFileSearch->click();
        ASSERT_TRUE(finished.wait(10'000));
    }
    window->close();
    const QStringList keys{stored(0), stored(1), stored(2), stored(3), stored(4), stored(5)};
    EXPECT_EQ(keys,
        (QStringList{QStringLiteral("*.VOB"), QStringLiteral("*.DAT"), QStringLiteral("old 3"),
            QStringLiteral("old 4"), QStringLiteral("*.MPG"), QString()}));
}

} // namespace
