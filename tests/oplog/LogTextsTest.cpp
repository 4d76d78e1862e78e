// Every text of the operation log, checked once; the other tests compare with these functions and
// constants instead of restating the words.
#include "oplog/LogTexts.h"
#include "oplog/ChangeMonitor.h"

#include <gtest/gtest.h>

using namespace vindaro::oplog;

namespace {

TEST(LogTexts, EveryText)
{
    const auto d
        = [](quint32 code) { return describeChange(code, QStringLiteral("/p1"), QStringLiteral("/p2")); };
    QStringList buttons;
    for (const LogButtonText& b : logButtonTexts())
        buttons << b.control + QLatin1Char('|') + b.caption + QLatin1Char('|') + b.tip;
    const std::pair<QString, const char*> rows[] = {
        {d(kRenameItem), "重命名文件 “/p1”为“/p2”"},
        {d(kCreate), "创建文件：“/p1”"},
        {d(kDelete), "删除文件：“/p1”"},
        {d(kMakeDirectory), "新建文件夹：“/p1”"},
        {d(kRemoveDirectory), "删除文件夹：“/p1”"},
        {d(kMediaInserted), "/p1中插入可移动存储介质"},
        {d(kMediaRemoved), "/p1中移去可移动存储介质"},
        {d(kDriveRemoved), "移去驱动器：/p1"},
        {d(kDriveAdded), "添加驱动器：/p1"},
        {d(kNetShare), "改变文件夹 “/p1”的共享属性"},
        {d(kNetUnshare), "SHCNE_NETUNSHARE"},
        {d(kAttributes), "SHCNE_ATTRIBUTES"},
        {d(kUpdateDirectory), "更新文件夹 “/p1”"},
        {d(kUpdateItem), "更新文件：“/p1”"},
        {d(kServerDisconnect), "断开与服务器的连接“/p1”“/p2”"},
        {d(kUpdateImage), "SHCNE_UPDATEIMAGE"},
        {d(kDriveAddedGui), "SHCNE_DRIVEADDGUI"},
        {d(kRenameFolder), "重命名文件夹“/p1”为“/p2”"},
        {d(kFreeSpace), "磁盘空间大小改变"},
        {d(kAssociationChanged), "改变文件关联"},
        {d(kDiskEventsMask), "SHCNE_DISKEVENTS"},
        {d(kGlobalEventsMask), "SHCNE_GLOBALEVENTS"},
        {d(kAllEventsMask), "SHCNE_ALLEVENTS"},
        {d(kInterruptFlag), "SHCNE_INTERRUPT"},
        // Codes outside the table, among them an event with the interrupt flag: compared whole, no match.
        {d(0x0) + d(0x3) + d(kCreate | kInterruptFlag) + d(0x80000), ""},
        {buttons.join(QLatin1Char(';')),
            "picView|查看记录|查看最近的日志记录;picClear|清除记录|清除最近的日志记录;"
            "picDelete|清空记录|清空当前的日志记录;picExit|退出|退出"},
        {kLogWindowTitle, "文件/文件夹操作日志记录"},
        {kLogWindowDescription,
            "文件/"
            "文件夹操作日志窗口。其主要记录你在复制文件过程中遇到的错误和其他一些异常情况，同时也记录你在资源"
            "管理器中对文件或文件夹进行的一系列操作，如：新建、删除、重命名文件或文件夹；改变文件的关联；插入"
            "或取出"
            "光驱中的光盘；添加或删除网络共享等。"},
        {kNoLogRecords, "无日志记录！"},
        {kMonitorUnavailable, "系统不支持操作监视程序."},
    };
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(text.toStdString(), expected);
}

} // namespace
