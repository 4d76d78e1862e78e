#include "LogTexts.h"

#include "ChangeMonitor.h"

namespace vindaro::oplog {

const QString kLogWindowTitle = QStringLiteral("文件/文件夹操作日志记录");
const QString kLogWindowDescription = QStringLiteral(
    "文件/"
    "文件夹操作日志窗口。其主要记录你在复制文件过程中遇到的错误和其他一些异常情况，同时也记录你在资源管理"
    "器中对文件或文件夹进行的一系列操作，如：新建、删除、重命名文件或文件夹；改变文件的关联；插入或取出光驱中"
    "的"
    "光盘；添加或删除网络共享等。");
const QString kNoLogRecords = QStringLiteral("无日志记录！");
const QString kMonitorUnavailable = QStringLiteral("系统不支持操作监视程序.");

QString describeChange(quint32 code, const QString& path1, const QString& path2)
{
    // “ and ” are part of the texts.
    switch (code) {
    case kRenameItem:
        return QStringLiteral("重命名文件 “") + path1 + QStringLiteral("”为“") + path2 + QStringLiteral("”");
    case kCreate:
        return QStringLiteral("创建文件：“") + path1 + QStringLiteral("”");
    case kDelete:
        return QStringLiteral("删除文件：“") + path1 + QStringLiteral("”");
    case kMakeDirectory:
        return QStringLiteral("新建文件夹：“") + path1 + QStringLiteral("”");
    case kRemoveDirectory:
        return QStringLiteral("删除文件夹：“") + path1 + QStringLiteral("”");
    case kMediaInserted:
        return path1 + QStringLiteral("中插入可移动存储介质");
    case kMediaRemoved:
        return path1 + QStringLiteral("中移去可移动存储介质");
    case kDriveRemoved:
        return QStringLiteral("移去驱动器：") + path1;
    case kDriveAdded:
        return QStringLiteral("添加驱动器：") + path1;
    case kNetShare:
        return QStringLiteral("改变文件夹 “") + path1 + QStringLiteral("”的共享属性");
    case kNetUnshare:
        return QStringLiteral("SHCNE_NETUNSHARE");
    case kAttributes:
        return QStringLiteral("SHCNE_ATTRIBUTES");
    case kUpdateDirectory:
        return QStringLiteral("更新文件夹 “") + path1 + QStringLiteral("”");
    case kUpdateItem:
        return QStringLiteral("更新文件：“") + path1 + QStringLiteral("”");
    case kServerDisconnect:
        return QStringLiteral("断开与服务器的连接“") + path1 + QStringLiteral("”“") + path2
            + QStringLiteral("”");
    case kUpdateImage:
        return QStringLiteral("SHCNE_UPDATEIMAGE");
    case kDriveAddedGui:
        return QStringLiteral("SHCNE_DRIVEADDGUI");
    case kRenameFolder:
        return QStringLiteral("重命名文件夹“") + path1 + QStringLiteral("”为“") + path2 + QStringLiteral("”");
    case kFreeSpace:
        return QStringLiteral("磁盘空间大小改变");
    case kAssociationChanged:
        return QStringLiteral("改变文件关联");
    case kDiskEventsMask:
        return QStringLiteral("SHCNE_DISKEVENTS");
    case kGlobalEventsMask:
        return QStringLiteral("SHCNE_GLOBALEVENTS");
    case kAllEventsMask:
        return QStringLiteral("SHCNE_ALLEVENTS");
    case kInterruptFlag:
        return QStringLiteral("SHCNE_INTERRUPT");
    default:
        return QString();
    }
}

QString watchLimitNote(const QString& folder)
{
    return QStringLiteral("监视的文件夹数目已达到系统的上限，“") + folder
        + QStringLiteral("”和其余尚未监视的文件夹中的更改不再记录");
}

QList<LogButtonText> logButtonTexts()
{
    return {
        {LogButton::View, QStringLiteral("picView"), QStringLiteral("查看记录"),
            QStringLiteral("查看最近的日志记录")},
        {LogButton::ClearFile, QStringLiteral("picClear"), QStringLiteral("清除记录"),
            QStringLiteral("清除最近的日志记录")},
        {LogButton::ClearRunningText, QStringLiteral("picDelete"), QStringLiteral("清空记录"),
            QStringLiteral("清空当前的日志记录")},
        {LogButton::Exit, QStringLiteral("picExit"), QStringLiteral("退出"), QStringLiteral("退出")},
    };
}

} // namespace vindaro::oplog
