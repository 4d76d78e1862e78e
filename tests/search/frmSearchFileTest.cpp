// The search window's wiring: captions, the drive list, Enter, the size boxes, the buttons during a
// search, the browser and the pattern history. What a search finds is FileSearchTest's business.
#include "search/ui/frmSearchFile.h"
#include "SearchFakes.h"
#include "chrome/ToolTips.h"
#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
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

TEST_F(SearchWindowTest, CaptionsTipsAndStartingStates)
{
    open();
    struct Caption
    {
        const char* control;
        const char* text;
    };
    const Caption captions[] = {{"lblTitle1", "输入要搜索的文件：[例如 *.DAT]"},
        {"lblTitle2", "选择文件搜索范围："}, {"cmdFileBrower", "浏 览[&B]..."},
        {"cmdFileSearch", "立即搜索[&I]"}, {"cmdFileStopSearch", "停止搜索[&P]"}, {"cmdExit", "确 定[&O]   "},
        {"chkSubFolder", "包含子文件夹[&S]"}, {"chkSearchFileSize_1", "1KB到10M之间[&K]"},
        {"chkSearchFileSize_2", "10M-100M之间[&M]"}, {"chkSearchFileSize_3", "1OOM到1G之间[&G]"},
        {"chkReadOnlyFile", "搜索只读文件[&R]"}, {"chkHideFile", "搜索隐藏文件[&H]"},
        {"chkArchiveFile", "搜索存档文件[&A]"}, {"chkSystemFile", "搜索系统文件[&T]"},
        {"chkCompressFile", "搜索压缩文件[&C]"},
        {"lblTitle",
            "该文件搜索对话框允许你在硬盘、网上邻居上搜索所有你需要的文件，并在Vindaro程序的组合列表框中显示"
            "出来，"
            "此时你可以根据需要进行添加、清除、复制、移动、删除、重命名文件等操作。"}};
    for (const Caption& c : captions) {
        QWidget* control = window->findChild<QWidget*>(QLatin1String(c.control));
        ASSERT_TRUE(control) << c.control;
        const QString text = control->property("text").toString();
        EXPECT_EQ(text, QString::fromUtf8(c.text)) << c.control;
    }
    const Caption tips[] = {{"cmdFileBrower", "浏览目录以选择文件搜索范围"}, {"cmdFileSearch", "立即搜索"},
        {"cmdFileStopSearch", "停止搜索"}, {"cmdExit", "确定退出"}};
    for (const Caption& c : tips) {
        const chrome::ToolTips* tip
            = chrome::ToolTips::of(window->findChild<QWidget*>(QLatin1String(c.control)));
        ASSERT_TRUE(tip) << c.control;
        EXPECT_EQ(tip->text(), QString::fromUtf8(c.text));
    }
    EXPECT_EQ(search::foundCountText(4), QStringLiteral("找到 4 个文件"));
    // Sub-folders on; every size and attribute box off.
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
    EXPECT_EQ(shell.lastChooserTitle, QStringLiteral("选择文件搜索范围"));
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
