#include "chrome/ToolTipTable.h"
#include "chrome/MenuIcons.h"

#include <QSet>

#include <gtest/gtest.h>

using vindaro::chrome::mainWindowToolTips;
using vindaro::chrome::ToolTipEntry;

namespace {

ToolTipEntry entryFor(const QString& control)
{
    const QList<ToolTipEntry> table = mainWindowToolTips();
    for (const ToolTipEntry& entry : table) {
        if (entry.control == control)
            return entry;
    }
    return {};
}

struct Expected
{
    const char* control;
    const char* title;
    const char* text; // lines joined by CR LF
};

class MainWindowTip : public ::testing::TestWithParam<Expected>
{
};

TEST_P(MainWindowTip, HasItsTitleAndText)
{
    const Expected e = GetParam();
    const ToolTipEntry entry = entryFor(QString::fromUtf8(e.control));
    ASSERT_EQ(entry.control, QString::fromUtf8(e.control)) << "no tip for " << e.control;
    EXPECT_EQ(entry.title, QString::fromUtf8(e.title));
    EXPECT_EQ(entry.text(), QString::fromUtf8(e.text));
    EXPECT_EQ(vindaro::chrome::toolTipLines(entry.text()), entry.lines);
}

INSTANTIATE_TEST_SUITE_P(Table, MainWindowTip,
    ::testing::Values(Expected{"picRefresh", "", "刷新窗口界面及其文件列表"},
        Expected{"picSearch", "单击打开搜索文件对话框",
            "该文件搜索对话框允许你在硬盘、网上邻居\r\n上搜索所有你需要的文件，并在Vindaro\r\n"
            "程序的组合列表框中显示出来，你可以根据\r\n需要添加、清除复制、移动、删除、重命名文件"},
        Expected{"picSetUp", "单击设置每次读取或跳过的块数",
            "当盘片存在严重的质量问题时\r\n你可以减少读取的块数，这样容易成功\r\n"
            "当遇到大块的坏区不能读取时\r\n建议你手动跳过去否则会消耗很长时间"},
        Expected{"picWatch", "单击打开文件/文件夹操作日志窗口",
            "文件/文件夹操作日志窗口。其主要记录你在复\r\n制文件过程中遇到的错误和其他一些异常情况\r\n"
            "同时也记录你在资源管理器中对文件或文件夹\r\n进行的一系列操作，如：新建、删除、重命名\r\n"
            "文件或文件夹；改变文件的关联；插入或取出\r\n光驱中的光盘；添加或删除网络共享等"},
        Expected{"cmdStartCopy", "", "开始复制文件"}, Expected{"cmdPauseCopy", "", "暂停/继续复制文件"},
        Expected{"cmdCancelCopy", "", "取消复制文件"}, Expected{"cmdBackCopy", "", "返回并继续复制"},
        Expected{"cmdSourceFile", "", "选择要复制的文件"},
        Expected{"cmdDestinationPath", "", "选择文件保存路径"},
        Expected{"optOpenCD", "", "弹出光驱,右击弹出光驱控制菜单"},
        Expected{"optCloseCD", "", "关闭光驱,右击弹出光驱控制菜单"},
        Expected{"sldReadBlocks", "", "如果盘片质量不太好，建议块数设小一点"},
        Expected{"sldSkipBlocks", "", "设置每次跳过的块数，建议使用缺省设置"}));

TEST(MainWindowTips, EveryControlOnceAndTheAboutTipHasFiveLines)
{
    const QList<ToolTipEntry> table = mainWindowToolTips();
    QSet<QString> seen;
    for (const ToolTipEntry& entry : table) {
        EXPECT_FALSE(seen.contains(entry.control)) << qPrintable(entry.control);
        seen.insert(entry.control);
        for (const QString& line : entry.lines)
            EXPECT_FALSE(line.isEmpty() || line.contains(QLatin1Char('\n'))) << qPrintable(entry.control);
    }
    EXPECT_EQ(table.size(), 15);
    const ToolTipEntry about = entryFor(QStringLiteral("picVTitleBar"));
    EXPECT_TRUE(about.title.contains(QStringLiteral("Vindaro")));
    EXPECT_EQ(about.lines.size(), 5);
}

TEST(ToolTipLines, SplitsOnEveryLineEnd)
{
    EXPECT_EQ(vindaro::chrome::toolTipLines(QStringLiteral("a\r\nb\nc\rd")),
        (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("d")}));
    EXPECT_EQ(vindaro::chrome::toolTipLines(QStringLiteral("one")), QStringList{QStringLiteral("one")});
}

TEST(MenuIcons, NineCaptionsInOrderAndOnlyExactMatches)
{
    using vindaro::chrome::ArtworkId;
    using vindaro::chrome::menuIconFor;
    const auto icons = vindaro::chrome::styledMenuIcons();
    ASSERT_EQ(icons.size(), 9);
    EXPECT_EQ(icons.first().caption, QStringLiteral("打开当前文件(&O)"));
    EXPECT_EQ(icons.last().caption, QStringLiteral("弹出    CD-ROM"));
    EXPECT_EQ(menuIconFor(QStringLiteral("&About Vindaro")), ArtworkId::About);
    EXPECT_EQ(menuIconFor(QStringLiteral("关闭[&C] 所有CD-ROM")), ArtworkId::CloseAllCd);
    EXPECT_FALSE(menuIconFor(QStringLiteral("弹出[&E] 所有CD-ROM")).has_value());
    EXPECT_FALSE(menuIconFor(QStringLiteral("弹出 CD-ROM")).has_value()); // one blank, not four
}

} // namespace
