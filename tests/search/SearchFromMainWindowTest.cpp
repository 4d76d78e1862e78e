// picSearch opens the search window, and what it finds fills the main window's list.
#include "SearchFakes.h"
#include "app/FrmCopyRig.h"
#include "files/FileListModel.h"
#include "files/ui/FileListController.h"
#include "search/FileSearch.h"
#include "search/ui/frmSearchFile.h"

#include <gtest/gtest.h>

using namespace vindaro;

namespace {

TEST(SearchFromMainWindow, PicSearchOpensOneWindowWhoseResultsFillTheList)
{
    vindaro::testing::Rig rig;
    vindaro::testing::SearchTree tree;
    const QString a = tree.file(QStringLiteral("MPEGAV/AVSEQ01.DAT"), 2048);
    const QString b = tree.file(QStringLiteral("MPEGAV/AVSEQ02.DAT"), 1024);
    rig.click("picSearch");
    auto* window = rig.frm.findChild<search::frmSearchFile*>();
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->isVisible());
    rig.click("picSearch");
    EXPECT_EQ(rig.frm.findChildren<search::frmSearchFile*>().size(), 1);

    window->cmbFileSearchWide->setEditText(tree.root());
    window->cmbFileSearchChoose->setEditText(QStringLiteral("*.dat"));
    QSignalSpy finished(&window->search(), &search::FileSearch::finished);
    window->cmdFileSearch->click();
    ASSERT_TRUE(finished.wait(vindaro::testing::kWaitMs));
    EXPECT_EQ(rig.frm.fileList().model().entries(), (QStringList{a, b}));
    EXPECT_EQ(rig.combo()->currentText(), a);
    EXPECT_EQ(rig.label("lblFilesInfo")->text(), QStringLiteral("文件总数:2个  总计大小:0MB [3,072字节]"));

    window->cmbFileSearchChoose->setEditText(QStringLiteral("*.vob"));
    window->cmdFileSearch->click();
    ASSERT_TRUE(finished.wait(vindaro::testing::kWaitMs));
    EXPECT_TRUE(rig.frm.fileList().model().entries().isEmpty());
    EXPECT_EQ(rig.combo()->currentText(), search::kNothingFoundText);

    window->close(); // deleted on close; a click opens a new one
    QTRY_VERIFY_WITH_TIMEOUT(
        rig.frm.findChild<search::frmSearchFile*>() == nullptr, vindaro::testing::kWaitMs);
    rig.click("picSearch");
    EXPECT_TRUE(rig.frm.findChild<search::frmSearchFile*>());
}

} // namespace
