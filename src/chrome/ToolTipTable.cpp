#include "ToolTipTable.h"

#include <QRegularExpression>

namespace vindaro::chrome {

QList<ToolTipEntry> mainWindowToolTips()
{
    return {
        {QStringLiteral("picRefresh"), QString(), {QStringLiteral("刷新窗口界面及其文件列表")}},
        {QStringLiteral("picSearch"), QStringLiteral("单击打开搜索文件对话框"),
            {QStringLiteral("该文件搜索对话框允许你在硬盘、网上邻居"),
                QStringLiteral("上搜索所有你需要的文件，并在Vindaro"),
                QStringLiteral("程序的组合列表框中显示出来，你可以根据"),
                QStringLiteral("需要添加、清除复制、移动、删除、重命名文件")}},
        {QStringLiteral("picSetUp"), QStringLiteral("单击设置每次读取或跳过的块数"),
            {QStringLiteral("当盘片存在严重的质量问题时"),
                QStringLiteral("你可以减少读取的块数，这样容易成功"),
                QStringLiteral("当遇到大块的坏区不能读取时"),
                QStringLiteral("建议你手动跳过去否则会消耗很长时间")}},
        {QStringLiteral("picWatch"), QStringLiteral("单击打开文件/文件夹操作日志窗口"),
            {QStringLiteral("文件/文件夹操作日志窗口。其主要记录你在复"),
                QStringLiteral("制文件过程中遇到的错误和其他一些异常情况"),
                QStringLiteral("同时也记录你在资源管理器中对文件或文件夹"),
                QStringLiteral("进行的一系列操作，如：新建、删除、重命名"),
                QStringLiteral("文件或文件夹；改变文件的关联；插入或取出"),
                QStringLiteral("光驱中的光盘；添加或删除网络共享等")}},
        {QStringLiteral("picVTitleBar"), QStringLiteral("关于 Vindaro 2.0"),
            {QStringLiteral("Vindaro 2.0：从划伤的光盘上抢救文件"),
                QStringLiteral("读不出的块自动跳过，复制可暂停和续传"),
                QStringLiteral("专为VCD(*.dat)和DVD(*.vob)视频文件而作"),
                QStringLiteral("作者：Vindaro 开发组，2.0 版发布"),
                QStringLiteral("单击标题栏左端的按钮打开文件菜单")}},
        {QStringLiteral("cmdStartCopy"), QString(), {QStringLiteral("开始复制文件")}},
        {QStringLiteral("cmdPauseCopy"), QString(), {QStringLiteral("暂停/继续复制文件")}},
        {QStringLiteral("cmdCancelCopy"), QString(), {QStringLiteral("取消复制文件")}},
        {QStringLiteral("cmdBackCopy"), QString(), {QStringLiteral("返回并继续复制")}},
        {QStringLiteral("cmdSourceFile"), QString(), {QStringLiteral("选择要复制的文件")}},
        {QStringLiteral("cmdDestinationPath"), QString(), {QStringLiteral("选择文件保存路径")}},
        {QStringLiteral("optOpenCD"), QString(), {QStringLiteral("弹出光驱,右击弹出光驱控制菜单")}},
        {QStringLiteral("optCloseCD"), QString(), {QStringLiteral("关闭光驱,右击弹出光驱控制菜单")}},
        {QStringLiteral("sldReadBlocks"), QString(),
            {QStringLiteral("如果盘片质量不太好，建议块数设小一点")}},
        {QStringLiteral("sldSkipBlocks"), QString(),
            {QStringLiteral("设置每次跳过的块数，建议使用缺省设置")}},
    };
}

QStringList toolTipLines(const QString& text)
{
    static const QRegularExpression lineEnd(QStringLiteral("\r\n|\n|\r"));
    return text.split(lineEnd);
}

} // namespace vindaro::chrome
