#include "oplog/LogTexts.h"
#include "oplog/ChangeMonitor.h"

#include <gtest/gtest.h>

using namespace vindaro::oplog;

namespace {

struct DescriptionRow
{
    quint32 code;
    const char* expected;
};

// Every description of the change table, with "/p1" and "/p2" as the two paths.
const DescriptionRow kDescriptions[] = {
    {kRenameItem, "重命名文件 “/p1”为“/p2”"},
    {kCreate, "创建文件：“/p1”"},
    {kDelete, "删除文件：“/p1”"},
    {kMakeDirectory, "新建文件夹：“/p1”"},
    {kRemoveDirectory, "删除文件夹：“/p1”"},
    {kMediaInserted, "/p1中插入可移动存储介质"},
    {kMediaRemoved, "/p1中移去可移动存储介质"},
    {kDriveRemoved, "移去驱动器：/p1"},
    {kDriveAdded, "添加驱动器：/p1"},
    {kNetShare, "改变文件夹 “/p1”的共享属性"},
    {kNetUnshare, "SHCNE_NETUNSHARE"},
    {kAttributes, "SHCNE_ATTRIBUTES"},
    {kUpdateDirectory, "更新文件夹 “/p1”"},
    {kUpdateItem, "更新文件：“/p1”"},
    {kServerDisconnect, "断开与服务器的连接“/p1”“/p2”"},
    {kUpdateImage, "SHCNE_UPDATEIMAGE"},
    {kDriveAddedGui, "SHCNE_DRIVEADDGUI"},
    {kRenameFolder, "重命名文件夹“/p1”为“/p2”"},
    {kFreeSpace, "磁盘空间大小改变"},
    {kAssociationChanged, "改变文件关联"},
    {kDiskEventsMask, "SHCNE_DISKEVENTS"},
    {kGlobalEventsMask, "SHCNE_GLOBALEVENTS"},
    {kAllEventsMask, "SHCNE_ALLEVENTS"},
    {kInterruptFlag, "SHCNE_INTERRUPT"},
    // Codes outside the table, among them an event with the interrupt flag: compared whole, no match.
    {0x0, ""},
    {0x3, ""},
    {kCreate | kInterruptFlag, ""},
    {0x80000, ""},
};

void PrintTo(const DescriptionRow& row, std::ostream* out)
{
    *out << "0x" << std::hex << row.code;
}

class ChangeDescription : public ::testing::TestWithParam<DescriptionRow>
{
};

TEST_P(ChangeDescription, FollowsTheTable)
{
    const DescriptionRow row = GetParam();
    EXPECT_EQ(
        describeChange(row.code, QStringLiteral("/p1"), QStringLiteral("/p2")).toStdString(), row.expected);
}

INSTANTIATE_TEST_SUITE_P(AllCodes, ChangeDescription, ::testing::ValuesIn(kDescriptions));

TEST(LogTexts, ButtonsCarryTheirCaptionsAndTips)
{
    const QList<LogButtonText> buttons = logButtonTexts();
    ASSERT_EQ(buttons.size(), 4);
    const char* const expected[][3]
        = {{"picView", "查看记录", "查看最近的日志记录"}, {"picClear", "清除记录", "清除最近的日志记录"},
            {"picDelete", "清空记录", "清空当前的日志记录"}, {"picExit", "退出", "退出"}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(buttons[i].control.toStdString(), expected[i][0]);
        EXPECT_EQ(buttons[i].caption.toStdString(), expected[i][1]);
        EXPECT_EQ(buttons[i].tip.toStdString(), expected[i][2]);
    }
    EXPECT_EQ(kLogWindowTitle.toStdString(), "文件/文件夹操作日志记录");
    EXPECT_EQ(kLogWindowDescription.toStdString(),
        "文件/"
        "文件夹操作日志窗口。其主要记录你在复制文件过程中遇到的错误和其他一些异常情况，同时也记录你在资源管理"
        "器中"
        "对文件或文件夹进行的一系列操作，如：新建、删除、重命名文件或文件夹；改变文件的关联；插入或取出光驱中"
        "的光盘；"
        "添加或删除网络共享等。");
}

} // namespace
