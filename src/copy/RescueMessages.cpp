#include "RescueMessages.h"

#include "CopyText.h"
#include "files/Format.h"

#include <QStringList>

namespace vindaro::copy::msg {

using text::kCrLf;
using text::kIndent;

namespace {

QString lineText(int line)
{
    return QStringLiteral("第") + QString::number(line) + QStringLiteral("行：");
}

// What is wrong, without the file's name.
QString mapfileProblem(const MapfileResult& r)
{
    switch (r.error) {
    case MapfileError::None:
        break;
    case MapfileError::Unreadable:
        return QStringLiteral("无法读取该文件：") + r.detail + QStringLiteral("。");
    case MapfileError::TooLarge:
        return QStringLiteral("该文件太大（") + files::formatWholeMegabytes(r.offset)
            + QStringLiteral("MB），不是映射文件。");
    case MapfileError::NoStatusLine:
        return QStringLiteral("该文件中只有注释和空行，没有状态行，不是映射文件。");
    case MapfileError::BadStatusLine:
        return lineText(r.line)
            + QStringLiteral("状态行应为“当前位置 状态 [遍数]”，状态是 ? * / - F G + 之一。");
    case MapfileError::BadBlockLine:
        return lineText(r.line)
            + QStringLiteral("每行应为“位置 大小 状态”三项，位置和大小用十六进制（0x开头）或十进制数。");
    case MapfileError::BadBlockStatus:
        return lineText(r.line) + QStringLiteral("块的状态只能是 + - / * ? 之一。");
    case MapfileError::EmptyBlock:
        return lineText(r.line) + QStringLiteral("块的大小为0。");
    case MapfileError::NotFromZero:
        return lineText(r.line) + QStringLiteral("第一块应从位置0开始，却从位置")
            + files::groupDigits(r.offset) + QStringLiteral("开始。");
    case MapfileError::Gap:
        return lineText(r.line) + QStringLiteral("上一块结束于位置") + files::groupDigits(r.offset)
            + QStringLiteral("，这一块却从位置") + files::groupDigits(r.figure)
            + QStringLiteral("开始，中间缺了") + files::formatBytes(r.figure - r.offset)
            + QStringLiteral("。");
    case MapfileError::Overlap:
        return lineText(r.line) + QStringLiteral("这一块从位置") + files::groupDigits(r.figure)
            + QStringLiteral("开始，与结束于位置") + files::groupDigits(r.offset)
            + QStringLiteral("的上一块重叠。");
    case MapfileError::Unsorted:
        return lineText(r.line) + QStringLiteral("这一块从位置") + files::groupDigits(r.figure)
            + QStringLiteral("开始，排在了前面的块之后：各块没有按位置排列。");
    case MapfileError::TooBig:
        return lineText(r.line) + QStringLiteral("块的结束位置超出了文件所能有的最大长度。");
    case MapfileError::Shorter:
        return QStringLiteral("映射只到") + files::formatBytes(r.offset) + QStringLiteral("，源文件却有")
            + files::formatBytes(r.figure) + QStringLiteral("：它不是这个源文件的映射。");
    case MapfileError::Longer:
        return QStringLiteral("映射长达") + files::formatBytes(r.offset) + QStringLiteral("，源文件却只有")
            + files::formatBytes(r.figure) + QStringLiteral("：它不是这个源文件的映射。");
    }
    return {};
}

QString secondsText(qint64 seconds)
{
    return files::formatDuration(seconds);
}

// One hole: where, how much, and what play time it takes away.
QString holeLine(const DamageHole& hole)
{
    QString line = byteSpan(hole.offset, hole.length) + QStringLiteral("（");
    if (hole.skippedBytes == 0)
        line += files::formatBytes(hole.length) + QStringLiteral("，读取失败");
    else if (hole.badBytes == 0)
        line += files::formatBytes(hole.length) + QStringLiteral("，跳过");
    else
        line += QStringLiteral("读取失败") + files::formatBytes(hole.badBytes) + QStringLiteral("，跳过")
            + files::formatBytes(hole.skippedBytes);
    line += QStringLiteral("）");
    const QString time = playingTimeSpan(hole);
    if (!time.isEmpty())
        line += QStringLiteral("  播放时间：") + time;
    return line;
}

// The report's lines, each with its depth (0 heading, 1 inside a file or list).
QList<QPair<int, QString>> reportLines(const DamageReport& report)
{
    QList<QPair<int, QString>> lines;
    if (report.isEmpty()) {
        lines.append({0, QStringLiteral("损坏报告：所有文件都已完整复制。")});
        return lines;
    }
    QStringList parts;
    if (!report.files.empty())
        parts << QString::number(report.files.size()) + QStringLiteral("个文件缺少")
                + files::formatBytes(report.missingBytes());
    if (!report.notReached.isEmpty())
        parts << QString::number(report.notReached.size()) + QStringLiteral("个文件没有复制");
    lines.append({0, QStringLiteral("损坏报告：") + parts.join(QStringLiteral("，")) + QStringLiteral("。")});

    for (const DamagedFile& file : report.files) {
        lines.append({0, file.source});
        lines.append({1,
            QStringLiteral("读取失败：") + files::formatBytes(file.badBytes) + QStringLiteral("  跳过：")
                + files::formatBytes(file.skippedBytes) + QStringLiteral("  共")
                + QString::number(file.holes.size()) + QStringLiteral("处")});
        const int listed = qMin<int>(int(file.holes.size()), kListedHoles);
        for (int i = 0; i < listed; ++i)
            lines.append({1, holeLine(file.holes[size_t(i)])});
        if (int(file.holes.size()) > listed)
            lines.append({1,
                QStringLiteral("……另有") + QString::number(file.holes.size() - size_t(listed))
                    + QStringLiteral("处未列出")});
    }
    if (!report.notReached.isEmpty()) {
        lines.append({0, QStringLiteral("没有复制的文件：")});
        for (const QString& path : report.notReached)
            lines.append({1, path});
    }
    return lines;
}

} // namespace

QString mapfileRefused(const QString& path, const MapfileResult& result)
{
    return QStringLiteral("映射文件“") + path + QStringLiteral("”不能使用。") + mapfileProblem(result)
        + QStringLiteral("没有做任何改动。");
}

platform::MessageBox mapfileRefusedNotice(const QString& path, const MapfileResult& result)
{
    return text::notice(QStringLiteral("映射文件“") + path + QStringLiteral("”不能使用。") + kCrLf
        + mapfileProblem(result) + kCrLf + QStringLiteral("没有做任何改动。"));
}

QString mapfileWriteFailed(const QString& path, const QString& reason)
{
    return QStringLiteral("无法写入映射文件“") + path + QStringLiteral("”：") + reason;
}

QString mapStoreNoDestination()
{
    return QStringLiteral("复制映射没有目标文件路径。");
}

QString mapStoreFolderFailed(const QString& folder)
{
    return QStringLiteral("无法创建文件夹“") + folder + QStringLiteral("”，没有保存复制映射。");
}

QString byteSpan(qint64 offset, qint64 length)
{
    return files::groupDigits(offset + 1) + QStringLiteral("至") + files::groupDigits(offset + length)
        + QStringLiteral("字节");
}

QString playingTimeSpan(const DamageHole& hole)
{
    if (!hole.fromSecond && !hole.toSecond)
        return {};
    const QString from = hole.fromSecond ? secondsText(*hole.fromSecond) : QStringLiteral("?");
    const QString to = hole.toSecond ? secondsText(*hole.toSecond)
        : hole.atEnd                 ? QStringLiteral("结尾")
                                     : QStringLiteral("?");
    return from + QStringLiteral("–") + to;
}

QString damageReportEntry(const DamageReport& report)
{
    QStringList lines;
    for (const auto& [depth, text] : reportLines(report))
        lines << (lines.isEmpty() ? text : kIndent + (depth > 0 ? QStringLiteral("  ") : QString()) + text);
    return lines.join(kCrLf);
}

QString damageReportText(const DamageReport& report)
{
    QStringList lines;
    for (const auto& [depth, text] : reportLines(report))
        lines << QString(depth * 2, QLatin1Char(' ')) + text;
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

platform::MessageBox noRescueMapNotice(const QString& destination)
{
    return text::notice(QStringLiteral("没有找到“") + destination
        + QStringLiteral("”的复制记录图（或它与源文件的大小不符），无法读取跳过的部分。"));
}

QString refineStartedEntry(const QString& source, const QString& destination)
{
    return QStringLiteral("读取跳过的部分：") + source + kCrLf + kIndent + QStringLiteral("到：")
        + destination;
}

QString refineCancelledEntry(const QString& source)
{
    return QStringLiteral("取消读取跳过的部分：") + source;
}

QString refineFinishedEntry(const QString& source, const QString& destination, qint64 untriedBytes,
    qint64 badBytes, qint64 failedReads, bool outOfTime)
{
    return (outOfTime ? QStringLiteral("读取跳过的部分（时间已到）：") : QStringLiteral("跳过的部分已读完："))
        + source + kCrLf + kIndent + QStringLiteral("到：") + destination + kCrLf + kIndent
        + refineFigures(untriedBytes, badBytes, failedReads);
}

platform::MessageBox refineFinishedNotice(const QString& destination, qint64 missingBytes)
{
    if (missingBytes == 0)
        return text::notice(destination + kCrLf + QStringLiteral("跳过的部分已全部读出，文件已完整。"),
            QStringLiteral("读取完毕！"));
    return text::notice(destination + kCrLf + QStringLiteral("仍有") + files::groupDigits(missingBytes)
            + QStringLiteral("字节读不出来。"),
        QStringLiteral("读取完毕！"));
}

platform::MessageBox refineQuestion(qint64 untriedBytes)
{
    return text::question(QStringLiteral("复制时跳过了") + files::groupDigits(untriedBytes)
        + QStringLiteral("字节没有读取。是否现在读取跳过的部分？") + kCrLf
        + QStringLiteral("是[Y]：现在读取，只读跳过的部分") + kCrLf + QStringLiteral("否[N]：以后再说"));
}

QString refineFigures(qint64 untriedBytes, qint64 badBytes, qint64 failedReads)
{
    return QStringLiteral("未读：") + files::groupDigits(untriedBytes) + QStringLiteral("字节  坏区：")
        + files::groupDigits(badBytes) + QStringLiteral("字节  读取失败：") + files::groupDigits(failedReads)
        + QStringLiteral("次");
}

} // namespace vindaro::copy::msg
