#include "MediaTexts.h"

#include "files/FileSystem.h"
#include "files/Format.h"
#include "info/MP3Information.h"
#include "info/Mp3ID3v1TAG.h"

#include <cmath>

namespace vindaro::media {

namespace {

qint64 wholeSeconds(double seconds)
{
    // Negative or not-a-number positions come only from a backend that lost its place: show zero.
    return seconds > 0 ? static_cast<qint64>(std::floor(seconds)) : 0;
}

QString rule(qsizetype hyphens)
{
    return QString(hyphens, QLatin1Char('-'));
}

QString orDash(const QString& field)
{
    return field.isEmpty() ? QStringLiteral("-") : field;
}

constexpr qsizetype kFactsRule = 31;

void appendMp3Facts(QStringList& lines, const QString& path)
{
    info::Mp3ID3v1TAG tag;
    if (tag.getId3(path)) {
        lines << QStringLiteral("[ID3v1信息]") + rule(20);
        lines << QStringLiteral("曲名：") + orDash(tag.title());
        lines << QStringLiteral("艺人：") + orDash(tag.artist());
        lines << QStringLiteral("专集：") + orDash(tag.album());
        lines << QStringLiteral("音轨序号：") + orDash(tag.track());
        lines << QStringLiteral("年份：") + orDash(tag.year());
        lines << QStringLiteral("流派：") + orDash(tag.genre());
        lines << QStringLiteral("备注：") + orDash(tag.comments());
    }
    info::MP3Information mpeg;
    mpeg.setFileName(path);
    // A file without a single 0xFF byte has no header to point at.
    const QString header
        = mpeg.headerOffset() < 0 ? QStringLiteral("-") : mpeg.header() + QStringLiteral("字节");
    lines << QStringLiteral("[MPEG信息]") + rule(21);
    lines << QStringLiteral("标头创建于：") + header;
    lines << QStringLiteral("长度：%1秒").arg(mpeg.seconds());
    lines << mpeg.versionLayer();
    lines << QStringLiteral("%1kbit/s  %2帧").arg(mpeg.bitRate()).arg(mpeg.frames());
    lines << QStringLiteral("%1Hz  ").arg(mpeg.frequency()) + mpeg.mode();
    lines << QStringLiteral("CRCs：") + mpeg.crcs();
    lines << QStringLiteral("版权作品：") + mpeg.copyrighted();
    lines << QStringLiteral("正本原件：") + mpeg.original();
    lines << QStringLiteral("信号加重：") + mpeg.emphasis();
}

} // namespace

TimeParts timeParts(double seconds)
{
    const qint64 whole = wholeSeconds(seconds);
    TimeParts parts;
    // Hours stay within 16 bits for any length a medium can have (32,767 hours).
    parts.hours = static_cast<qint16>(qMin<qint64>(whole / 3600, 32767));
    parts.minutes = static_cast<qint16>(whole / 60 % 60);
    parts.seconds = static_cast<qint16>(whole % 60);
    return parts;
}

QString timeText(double seconds)
{
    return files::formatDuration(wholeSeconds(seconds));
}

QString sizeText(qint64 bytes, qint64 bytesLimit)
{
    if (bytes <= bytesLimit)
        return files::groupDigits(bytes) + QStringLiteral("字节");
    return files::groupDigits(bytes / 1024) + QStringLiteral("KB");
}

FileFacts readFileFacts(files::FileSystem& fileSystem, const QString& path)
{
    FileFacts facts;
    facts.bytes = fileSystem.GetFileSize(path);
    facts.typeName = fileSystem.GetFileTypeName(path);
    facts.created = fileSystem.GetFileDateTime(path, 0);
    facts.modified = fileSystem.GetFileDateTime(path, 1);
    facts.accessed = fileSystem.GetFileDateTime(path, 2);
    facts.attributes = fileSystem.GetFileAttributesStr(path);
    return facts;
}

QStringList playerFactsLines(const FileFacts& facts)
{
    return {
        QStringLiteral("大小：") + sizeText(facts.bytes, kPlayerBytesLimit),
        QStringLiteral("类型：") + facts.typeName,
        QStringLiteral("创建：") + facts.created,
        QStringLiteral("修改：") + facts.modified,
        QStringLiteral("访问：") + facts.accessed,
        QStringLiteral("属性：") + facts.attributes,
    };
}

QString previewFactsText(const QString& path, const FileFacts& facts)
{
    QStringList lines;
    lines << rule(kFactsRule);
    lines << QStringLiteral("文件大小：") + sizeText(facts.bytes, kPreviewBytesLimit);
    if (path.endsWith(QLatin1String("MP3"), Qt::CaseInsensitive)) {
        appendMp3Facts(lines, path);
    } else {
        lines << QStringLiteral("类型：") + facts.typeName;
        lines << QStringLiteral("创建：") + facts.created;
        lines << QStringLiteral("修改：") + facts.modified;
        lines << QStringLiteral("访问：") + facts.accessed;
        lines << QStringLiteral("属性：") + facts.attributes;
    }
    lines << rule(kFactsRule);
    return lines.join(QLatin1Char('\n'));
}

QString secondsText(double seconds)
{
    return QString::number(seconds > 0 ? seconds : 0.0, 'f', 2);
}

QString videoLengthText(double seconds, QSize picture)
{
    QString text = files::groupDigits(wholeSeconds(seconds));
    if (!picture.isEmpty())
        text += QStringLiteral("[%1×%2]").arg(picture.width()).arg(picture.height());
    return text;
}

QString positionStripText(double positionSeconds, double durationSeconds, QTime clock)
{
    return timeText(positionSeconds) + QLatin1Char('/') + timeText(durationSeconds) + QLatin1Char(' ')
        + clock.toString(QStringLiteral("HH:mm:ss")) + QStringLiteral("  ")
        + QString::number(positionSeconds > 0 ? positionSeconds : 0.0, 'f', 3);
}

} // namespace vindaro::media
