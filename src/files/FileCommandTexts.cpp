#include "FileCommandTexts.h"

#include <QStringList>

namespace vindaro::files {

namespace {

using Step = platform::FileOpResult::Step;

// What was being done to the failing path, as the user reads it.
QString stepLine(const platform::FileOpResult& result, bool move)
{
    switch (result.step) {
    case Step::Check:
        return (move ? QStringLiteral("无法移动到：") : QStringLiteral("无法复制到：")) + result.path;
    case Step::ReadSource:
        return QStringLiteral("读取失败：") + result.path;
    case Step::WriteTarget:
        return QStringLiteral("写入失败：") + result.path;
    case Step::RemoveSource:
        return QStringLiteral("文件已经完整复制到目标文件夹，但原文件无法删除：") + result.path;
    case Step::Trash:
        return QStringLiteral("无法移到回收站：") + result.path;
    case Step::Delete:
        return QStringLiteral("无法删除：") + result.path;
    }
    return result.path;
}

QString transferFailedText(
    const QString& headline, const QString& source, const platform::FileOpResult& result, bool move)
{
    QStringList lines = {headline, QStringLiteral("文件：") + source, stepLine(result, move),
        QStringLiteral("原因：") + failureReason(result)};
    // A partial copy is always removed; only a failed removal of the original leaves two copies.
    if (result.step != Step::RemoveSource)
        lines << (move ? QStringLiteral("原文件没有改动，目标文件夹中也没有留下不完整的文件。")
                       : QStringLiteral("目标文件夹中没有留下不完整的文件。"));
    return lines.join(QStringLiteral("\r\n"));
}

} // namespace

QString failureReason(const platform::FileOpResult& result)
{
    if (!result.reason.isEmpty())
        return result.reason;
    if (result.error != 0)
        return qt_error_string(result.error);
    return QStringLiteral("未知原因");
}

QString copyFailedText(const QString& source, const platform::FileOpResult& result)
{
    return transferFailedText(QStringLiteral("复制文件失败！"), source, result, false);
}

QString moveFailedText(const QString& source, const platform::FileOpResult& result)
{
    return transferFailedText(QStringLiteral("移动文件失败！"), source, result, true);
}

QString deleteFailedText(const QString& path, const platform::FileOpResult& result)
{
    const QString headline = result.step == Step::Trash ? QStringLiteral("删除到回收站失败！")
                                                        : QStringLiteral("删除文件失败！");
    QStringList lines = {headline, QStringLiteral("文件：") + path};
    if (result.path != path)
        lines << stepLine(result, false);
    lines << QStringLiteral("原因：") + failureReason(result) << QStringLiteral("文件仍然保留在列表中。");
    return lines.join(QStringLiteral("\r\n"));
}

} // namespace vindaro::files
