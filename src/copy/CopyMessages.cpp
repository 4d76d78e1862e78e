#include "CopyMessages.h"

#include "CopyText.h"
#include "files/Format.h"

#include <QStringList>

namespace vindaro::copy::msg {

using platform::BoxButtons;
using platform::BoxIcon;
using platform::MessageBox;
using text::kCrLf;
using text::kIndent;

namespace {

QString joinLines(std::initializer_list<QString> lines)
{
    return QStringList(lines).join(kCrLf);
}

QString megabytes(double bytes)
{
    return files::formatWholeMegabytes(bytes < 0 ? 0 : qint64(bytes));
}

} // namespace

FailureTexts singleFailure(Failure failure, bool merge, const QString& source)
{
    switch (failure) {
    case Failure::DiskFull:
        return merge ? FailureTexts{QStringLiteral("错误原因：磁盘已满，没有足够的可用空间用来合并文件。"),
                   QStringLiteral("磁盘已满，没有足够的可用空间用来合并文件。")}
                     : FailureTexts{QStringLiteral("错误原因：磁盘已满，没有足够的可用空间用来复制文件。"),
                         QStringLiteral("磁盘已满，没有足够的可用空间用来复制文件。")};
    case Failure::BadRecord:
        return {QStringLiteral("错误原因：未知错误，可能是文件拒绝访问权限。"),
            QStringLiteral("未知错误，请检查文件访问权限。")};
    case Failure::SharingConflict:
        return {QStringLiteral("错误原因：共享冲突,源文件或目标文件可能正在使用。"),
            (merge ? QStringLiteral("无法合并 ") : QStringLiteral("无法复制 ")) + source + kCrLf
                + QStringLiteral("共享冲突,源文件或目标文件可能正在使用。")};
    case Failure::UnreadableStart:
        return {QStringLiteral("错误原因：路径/文件访问错误，文件拒绝访问权限。"),
            QStringLiteral("路径/文件访问错误，请检查文件的访问权限。")};
    case Failure::NoMedium:
        return merge
            ? FailureTexts{QStringLiteral("错误原因：合并文件被意外地终止，光驱中可能没有光盘。"),
                QStringLiteral("合并文件被意外地终止，请检查光驱中是否有光盘。")}
            : FailureTexts{QStringLiteral("错误原因：复制文件被意外地终止，请检查光驱中是否有光盘。"),
                QStringLiteral("复制文件被意外地终止，请检查光驱中是否有光盘。")};
    default:
        break;
    }
    if (merge)
        return {QStringLiteral("错误原因：未知错误，可能是目标文件中含有非法字符或是 ") + kCrLf + kIndent
                + QStringLiteral("在文件合并过程当中遇到了其他无法预料的情况 。"),
            joinLines({QStringLiteral("未知错误，可能是目标文件中含有非法字符或是在文件 "),
                QStringLiteral("合并过程当中遇到了其他无法预料的情况.如果文件已经"),
                QStringLiteral("合并了一部份，请重新启动Vindaro，若仍然存在"),
                QStringLiteral("问题，请检查文件的访问权限.")})};
    return {QStringLiteral("错误原因：未知错误，可能是目标文件中含有非法字符 ") + kCrLf + kIndent
            + QStringLiteral("或是在文件复制过程当中遇到了其他无法预料的情况 。"),
        joinLines({QStringLiteral("未知错误，可能是目标文件中含有非法字符或是在文件 "),
            QStringLiteral("复制过程当中遇到了其他无法预料的情况.如果文件已经"),
            QStringLiteral("复制了一部份，请重新启动Vindaro并再次选择该 "),
            QStringLiteral("文件然后以追加方式继续复制剩余的部分，若仍然存在"),
            QStringLiteral("问题，请检查文件的访问权限.")})};
}

QString batchFailureCause(Failure failure)
{
    switch (failure) {
    case Failure::DiskFull:
        return QStringLiteral("错误原因：磁盘已满，没有足够的可用空间用来复制文件。");
    case Failure::BadRecord:
        return QStringLiteral("错误原因：未知错误，请检查文件访问权限。");
    case Failure::SharingConflict:
        return QStringLiteral("错误原因：共享冲突,源文件或目标文件可能正在使用。");
    case Failure::UnreadableStart:
        return QStringLiteral("错误原因：路径/文件访问错误，请检查文件的访问权限。");
    case Failure::NoMedium:
        return QStringLiteral("错误原因：复制文件被意外地终止，可能是光驱中没有光盘。");
    default:
        break;
    }
    return QStringLiteral("错误原因：未知错误，可能是目标文件中含有非法字符 ") + kCrLf + kIndent
        + QStringLiteral("或是在文件复制过程当中遇到了其他无法预料的情况。");
}

QString describedFailure(int code, const QString& description)
{
    return QStringLiteral("[") + QString::number(code) + QStringLiteral("].") + description;
}

QString errorBoxTitle(bool merge)
{
    return merge ? QStringLiteral("合并文件时出错！") : QStringLiteral("复制文件时出错！");
}

QString errorEntry(const QString& source, const QString& destination, bool merge, const QString& cause)
{
    if (merge)
        return QStringLiteral("合并文件“") + source + QStringLiteral("”到：") + kCrLf + kIndent
            + QStringLiteral("“") + destination + QStringLiteral("”时遇到错误。") + kCrLf + kIndent + cause;
    return QStringLiteral("复制文件“") + source + QStringLiteral("”时遇到错误。") + kCrLf + kIndent + cause;
}

QString finishedEntry(const QString& source, const QString& destination, qint64 sourceLength, bool merge,
    const QString& estimated, const QString& throughput)
{
    return source + kCrLf + kIndent
        + (merge ? QStringLiteral("被成功地合并到：") : QStringLiteral("被成功地复制到：")) + kCrLf + kIndent
        + destination + kCrLf + kIndent + QStringLiteral("文件大小：") + files::groupDigits(sourceLength)
        + QStringLiteral("字节") + QStringLiteral("  ") + QStringLiteral("总计消耗：") + estimated
        + QStringLiteral("  ") + QStringLiteral("存取速度：") + throughput;
}

MessageBox finishedNotice(const QString& source, const QString& destination, bool merge)
{
    return text::notice(source + kCrLf
            + (merge ? QStringLiteral("已被成功地合并到：") : QStringLiteral("已被成功地复制到："))
            + destination,
        merge ? QStringLiteral("文件合并完成！") : QStringLiteral("文件复制完成！"));
}

QString skippedEntry(qint64 position)
{
    return QStringLiteral("文件跳过：") + files::groupDigits(position) + QStringLiteral("字节");
}

MessageBox retryQuestion(bool merge)
{
    return text::box(merge ? QStringLiteral("合并文件时出错，是否继续合并？")
                           : QStringLiteral("复制文件时出错，是否继续复制？"),
        QStringLiteral("警告！"), BoxIcon::Critical, BoxButtons::YesNo);
}

QString cancelledEntry(const QString& source, bool merge)
{
    return (merge ? QStringLiteral("取消合并：") : QStringLiteral("取消复制：")) + source;
}

MessageBox deletePartialQuestion(const QString& destination)
{
    return text::question(destination + kCrLf + QStringLiteral("该文件已经存在，是否删除？"));
}

MessageBox emptyPathsNotice()
{
    return text::notice(QStringLiteral("源文件路径与文件保存路径不能为空。"));
}

MessageBox invalidDestinationNotice()
{
    return text::notice(QStringLiteral("无效的文件保存路径。"), QStringLiteral("Error"));
}

MessageBox sameFileNotice()
{
    return text::notice(
        QStringLiteral("源文件和文件保存路径是同一个文件，不能覆盖。请重新选择文件保存路径。"));
}

QString lowSpaceEntry(const QString& source, const QString& driveName, double freeBytes, qint64 sourceLength)
{
    return QStringLiteral("复制文件“") + source + QStringLiteral("”时遇到错误。") + kCrLf + kIndent
        + QStringLiteral("错误原因：") + driveName + QStringLiteral("盘空间不足") + kCrLf + kIndent
        + QStringLiteral("可用空间：") + megabytes(freeBytes) + QStringLiteral("MB") + kCrLf + kIndent
        + QStringLiteral("文件大小：") + megabytes(double(sourceLength)) + QStringLiteral("MB");
}

// Mount points are case-sensitive on Linux: the drive is named as it is, not upper-cased.
MessageBox lowSpaceQuestion(const QString& driveName, double freeBytes, qint64 sourceLength)
{
    return text::question(driveName + QStringLiteral("盘空间不足，请重新选择文件保存路径") + kCrLf
        + QStringLiteral("可用空间：") + megabytes(freeBytes) + QStringLiteral("MB") + kCrLf
        + QStringLiteral("文件大小：") + megabytes(double(sourceLength)) + QStringLiteral("MB") + kCrLf
        + kCrLf + QStringLiteral("是[Y]：忽略，继续复制") + kCrLf
        + QStringLiteral("否[N]：取消复制，重新选择文件保存路径"));
}

MessageBox lowSpaceOnResumeQuestion(const QString& driveName, double freeBytes, qint64 sourceLength)
{
    return text::question(driveName
        + QStringLiteral("盘空间不足，请重新选择文件保存路径，然后单击[继续]并继续复制") + kCrLf
        + QStringLiteral("可用空间:") + megabytes(freeBytes) + QStringLiteral("MB") + kCrLf
        + QStringLiteral("文件大小:") + megabytes(double(sourceLength)) + QStringLiteral("MB") + kCrLf + kCrLf
        + QStringLiteral("是[Y]：忽略，继续复制") + kCrLf
        + QStringLiteral("否[N]：取消复制，重新选择文件保存路径"));
}

QString continuedEntry(const QString& source, const QString& destination)
{
    return QStringLiteral("续拷文件：") + source + kCrLf + kIndent + QStringLiteral("到：") + destination;
}

MessageBox overwriteOrAppendQuestion(const QString& destination)
{
    return text::question(destination + kCrLf
        + QStringLiteral("该文件已经存在，是否覆盖或以追加方式继续复制？") + kCrLf
        + QStringLiteral("是[Y]：覆盖该文件") + kCrLf + QStringLiteral("否[N]：以追加方式继续复制"));
}

MessageBox tooManyFilesNotice()
{
    return text::notice(QStringLiteral("复制的文件数目超出了允许的最大范围！"));
}

MessageBox batchLowSpaceQuestion(const QString& driveName, double freeBytes, qint64 totalBytes)
{
    return text::question(driveName + QStringLiteral("盘空间不足，请重新选择文件保存路径") + kCrLf
        + QStringLiteral("可用空间：") + files::formatWholeMegabytes(qint64(freeBytes)) + QStringLiteral("MB")
        + kCrLf + QStringLiteral("文件容量：") + files::formatWholeMegabytes(totalBytes)
        + QStringLiteral("MB") + kCrLf + kCrLf + QStringLiteral("是[Y]：忽略，继续复制") + kCrLf
        + QStringLiteral("否[N]：取消复制，重新选择文件保存路径"));
}

MessageBox batchSyncFailure(const QString& folder, int code, const QString& description)
{
    return text::box(
        folder + kCrLf + describedFailure(code, description), errorBoxTitle(false), BoxIcon::Critical);
}

QString batchTotal(qint64 totalBytes)
{
    QString amount;
    if (totalBytes >= 1024000)
        amount = files::groupDigits(totalBytes / 1024 / 1024) + QStringLiteral(" MB");
    else if (totalBytes >= 10240)
        amount = files::groupDigits(totalBytes / 1024) + QStringLiteral(" KB");
    else
        amount = files::groupDigits(totalBytes) + QStringLiteral(" 字节");
    return QStringLiteral("[ 总共：") + amount;
}

QString batchFromText(const QString& source)
{
    return QStringLiteral("从“") + source + QStringLiteral("”");
}

QString batchToText(const QString& destination)
{
    return QStringLiteral("到“") + destination + QStringLiteral("”");
}

QString batchCountText(qint64 number, qint64 count)
{
    return QString::number(number) + QLatin1Char('/') + QString::number(count) + QStringLiteral(" ]");
}

} // namespace vindaro::copy::msg
