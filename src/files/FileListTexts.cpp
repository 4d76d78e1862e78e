#include "FileListTexts.h"

#include "FileTexts.h"
#include "Format.h"

#include <QFileInfo>

namespace vindaro::files {

QString lastThreeUpper(const QString& text)
{
    return text.right(3).toUpper();
}

bool matchesScanPattern(const QString& fileName, const QString& pattern)
{
    if (pattern.trimmed() == QLatin1String("*.*"))
        return true;
    return lastThreeUpper(fileName) == lastThreeUpper(pattern);
}

std::optional<qint64> addFolderCapacity(int platformId)
{
    switch (platformId) {
    case 1:
        return 32'736;
    case 2:
        return 2'147'483'615;
    default:
        return std::nullopt;
    }
}

bool addFolderAllowed(qint64 entryCount, std::optional<qint64> limit)
{
    return !limit || entryCount <= *limit;
}

QString filesInfoLine(qint64 entryCount, qint64 totalBytes, qint64 position)
{
    QString line = QStringLiteral("文件总数:");
    if (position > 0)
        line += QString::number(position) + u'/';
    line += QString::number(entryCount) + QStringLiteral("个  总计大小:") + formatWholeMegabytes(totalBytes)
        + QStringLiteral("MB [") + groupDigits(totalBytes) + QStringLiteral("字节]");
    return line;
}

QString sizeTypePanel(qint64 bytes, const QString& typeName, const QString& attributes)
{
    return QStringLiteral("  大小：") + groupDigits(bytes / 1024) + QStringLiteral("KB [")
        + groupDigits(bytes) + QStringLiteral("字节]  类型：") + typeName + QStringLiteral("  属性：")
        + attributes;
}

QString datesPanel(const QString& modified, const QString& accessed)
{
    return QStringLiteral("  修改时间：") + modified + QStringLiteral("  访问时间：") + accessed;
}

bool isPictureEnding(const QString& path)
{
    static const QStringList endings
        = {QStringLiteral("ICO"), QStringLiteral("CUR"), QStringLiteral("BMP"), QStringLiteral("DIB"),
            QStringLiteral("JPG"), QStringLiteral("GIF"), QStringLiteral("WMF"), QStringLiteral("EMF")};
    return endings.contains(lastThreeUpper(path));
}

bool isPreviewVideo(const QString& path)
{
    if (path.startsWith(QLatin1String("//")))
        return false;
    static const QStringList endings = {QStringLiteral("DAT"), QStringLiteral("VOB"), QStringLiteral("AVI"),
        QStringLiteral("ASF"), QStringLiteral("ASX")};
    return endings.contains(lastThreeUpper(path)) || path.right(4).toUpper() == QLatin1String("MPEG");
}

QString followedDestination(const QString& destination, const QString& currentEntry)
{
    if (destination.isEmpty())
        return destination;
    return withTrailingSlash(parentFolderOf(destination)) + fileNameOf(currentEntry);
}

QString deleteQuestionText(const QString& path)
{
    return QStringLiteral("真的要删除：") + path + QStringLiteral(" 吗？\r\n\r\n")
        + QStringLiteral("是[Y]：永久删除文件\r\n") + QStringLiteral("否[N]：删除到回收站\r\n")
        + QStringLiteral("取 消：取消删除文件\r\n");
}

bool propertiesUseOwnWindow(const QString& path, const QString& osName)
{
    const QString ending = lastThreeUpper(path);
    if (ending == QLatin1String("ZIP") || ending == QLatin1String("SWF") || ending == QLatin1String("EXE")
        || ending == QLatin1String("DLL"))
        return true;
    if (ending == QLatin1String("MP3"))
        return osName != QLatin1String("Microsoft Windows XP");
    return false;
}

QString renameSizeLine(qint64 bytes)
{
    if (bytes < 1'024'001)
        return QStringLiteral("文件大小：") + formatBytes(bytes);
    return QStringLiteral("文件大小：") + groupDigitsRounded(bytes, 1024) + QStringLiteral("KB");
}

QString renameFactsText(const RenameFacts& facts)
{
    QStringList lines = {renameSizeLine(facts.sizeBytes), QStringLiteral("文件类型：") + facts.typeName,
        QStringLiteral("创建时间：") + facts.created, QStringLiteral("修改时间：") + facts.modified,
        QStringLiteral("访问时间：") + facts.accessed, QStringLiteral("文件属性：") + facts.attributes};
    if (facts.tag) {
        const RenameFacts::Tag& tag = *facts.tag;
        lines << QStringLiteral("曲名：") + tag.title << QStringLiteral("艺人：") + tag.artist
              << QStringLiteral("专集：") + tag.album
              << QStringLiteral("年份：") + tag.year + QStringLiteral("  流派：") + tag.genre
                + QStringLiteral("  音轨序号：") + tag.track
              << QStringLiteral("备注：") + tag.comments;
    }
    return lines.join(QStringLiteral("\r\n"));
}

QString proposedNewName(const QString& fileName)
{
    return QStringLiteral("N[01]") + fileName;
}

QString wrapTitle(const QString& title, int width)
{
    if (width <= 0)
        return title;
    QStringList lines;
    for (qsizetype at = 0; at < title.size(); at += width)
        lines << title.mid(at, width);
    return lines.join(u'\n');
}

QString renameRefusalText(const QString& oldPath, const QString& folder, const QString& newName)
{
    QString reason;
    if (newName.isEmpty()) {
        reason = QStringLiteral("新的文件名是空的。");
    } else if (newName.contains(u'/') || newName.contains(QChar(0))) {
        reason = QStringLiteral("文件名中不能有“/”字符。");
    } else if (newName == QLatin1String(".") || newName == QLatin1String("..")) {
        reason = QStringLiteral("“.”和“..”不能用作文件名。");
    } else if (QFile::encodeName(newName).size() > 255) {
        reason = QStringLiteral("文件名太长（最多255个字节）。");
    } else if (!QFileInfo::exists(oldPath) && !QFileInfo(oldPath).isSymLink()) {
        reason = QStringLiteral("原来的文件已经不存在了。");
    } else if (QFileInfo::exists(folder + newName) || QFileInfo(folder + newName).isSymLink()) {
        reason = QStringLiteral("该文件夹中已经有同名的文件或文件夹。");
    } else {
        reason = QStringLiteral("系统拒绝了这个名字（可能没有该文件夹的写入权限）。");
    }
    return QStringLiteral("不能把文件改名为“") + newName + QStringLiteral("”：\r\n") + reason
        + QStringLiteral("\r\n文件和列表都没有改变。");
}

} // namespace vindaro::files
