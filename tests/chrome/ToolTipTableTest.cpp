// Every text of the window chrome, once: the tooltips of the main window, the tray's and the styled menu
// captions.
#include "chrome/ToolTipTable.h"
#include "chrome/MenuBand.h"
#include "chrome/MenuIcons.h"
#include "chrome/TrayController.h"

#include <QSet>

#include <gtest/gtest.h>

using vindaro::chrome::mainWindowToolTips;
using vindaro::chrome::ToolTipEntry;
using namespace Qt::StringLiterals;

namespace {

TEST(ChromeTexts, EveryTipHasItsTitleAndText)
{
    const struct
    {
        const char* control;
        const char* title;
        const char* text; // lines joined by CR LF
    } rows[] = {{"picRefresh", "", "刷新窗口界面及其文件列表"},
        {"picSearch", "单击打开搜索文件对话框",
            "该文件搜索对话框允许你在硬盘、网上邻居\r\n上搜索所有你需要的文件，并在Vindaro\r\n"
            "程序的组合列表框中显示出来，你可以根据\r\n需要添加、清除复制、移动、删除、重命名文件"},
        {"picSetUp", "单击设置每次读取或跳过的块数",
            "当盘片存在严重的质量问题时\r\n你可以减少读取的块数，这样容易成功\r\n"
            "当遇到大块的坏区不能读取时\r\n建议你手动跳过去否则会消耗很长时间"},
        {"picWatch", "单击打开文件/文件夹操作日志窗口",
            "文件/文件夹操作日志窗口。其主要记录你在复\r\n制文件过程中遇到的错误和其他一些异常情况\r\n"
            "同时也记录你在资源管理器中对文件或文件夹\r\n进行的一系列操作，如：新建、删除、重命名\r\n"
            "文件或文件夹；改变文件的关联；插入或取出\r\n光驱中的光盘；添加或删除网络共享等"},
        {"cmdStartCopy", "", "开始复制文件"}, {"cmdPauseCopy", "", "暂停/继续复制文件"},
        {"cmdCancelCopy", "", "取消复制文件"}, {"cmdBackCopy", "", "返回并继续复制"},
        {"cmdSourceFile", "", "选择要复制的文件"}, {"cmdDestinationPath", "", "选择文件保存路径"},
        {"optOpenCD", "", "弹出光驱,右击弹出光驱控制菜单"},
        {"optCloseCD", "", "关闭光驱,右击弹出光驱控制菜单"},
        {"sldReadBlocks", "", "如果盘片质量不太好，建议块数设小一点"},
        {"sldSkipBlocks", "", "设置每次跳过的块数，建议使用缺省设置"}};
    const QList<ToolTipEntry> table = mainWindowToolTips();
    ASSERT_EQ(table.size(), 15); // and the about tip
    QSet<QString> seen;
    for (const ToolTipEntry& entry : table) {
        EXPECT_FALSE(seen.contains(entry.control)) << qPrintable(entry.control);
        seen.insert(entry.control);
        for (const QString& line : entry.lines)
            EXPECT_FALSE(line.isEmpty() || line.contains(u'\n')) << qPrintable(entry.control);
        EXPECT_EQ(vindaro::chrome::toolTipLines(entry.text()), entry.lines);
        const auto row = std::find_if(std::begin(rows), std::end(rows),
            [&](const auto& r) { return entry.control == QLatin1String(r.control); });
        if (row == std::end(rows)) {
            EXPECT_EQ(entry.control, u"picVTitleBar"_s);
            EXPECT_TRUE(entry.title.contains(u"Vindaro"_s));
            EXPECT_EQ(entry.lines.size(), 5);
            continue;
        }
        EXPECT_EQ(entry.title, QString::fromUtf8(row->title)) << row->control;
        EXPECT_EQ(entry.text(), QString::fromUtf8(row->text)) << row->control;
    }
    EXPECT_EQ(vindaro::chrome::toolTipLines(u"a\r\nb\nc\rd"_s), QStringList({"a", "b", "c", "d"}));
}

TEST(ChromeTexts, TrayMenuBandsAndMenuIconCaptions)
{
    using vindaro::chrome::TrayController;
    EXPECT_EQ(TrayController::kTipText, u"Vindaro2.0"_s);
    EXPECT_EQ(TrayController::kBalloonText, u"Vindaro is Running..."_s);
    EXPECT_EQ(TrayController::kRestoreCaption, u"恢复窗口(&R)"_s);
    EXPECT_EQ(TrayController::kExitCaption, u"退出(&X)"_s);
    EXPECT_EQ(vindaro::chrome::fileMenuBandLook().title, u"Vindaro"_s);
    EXPECT_EQ(vindaro::chrome::cdMenuBandLook().title, u"CD-ROM"_s);

    using vindaro::chrome::ArtworkId;
    using vindaro::chrome::menuIconFor;
    const auto icons = vindaro::chrome::styledMenuIcons();
    ASSERT_EQ(icons.size(), 9);
    EXPECT_EQ(icons.first().caption, u"打开当前文件(&O)"_s);
    EXPECT_EQ(icons.last().caption, u"弹出    CD-ROM"_s);
    EXPECT_EQ(menuIconFor(u"&About Vindaro"_s), ArtworkId::About);
    EXPECT_EQ(menuIconFor(u"关闭[&C] 所有CD-ROM"_s), ArtworkId::CloseAllCd);
    EXPECT_FALSE(menuIconFor(u"弹出[&E] 所有CD-ROM"_s).has_value());
    EXPECT_FALSE(menuIconFor(u"弹出 CD-ROM"_s).has_value()); // one blank, not four
}

} // namespace
