#include "FileTexts.h"

#include "Format.h"

#include <limits>

namespace vindaro::files {

QString fileNameOf(const QString& path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return slash < 0 ? path : path.mid(slash + 1);
}

QString parentFolderOf(const QString& path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return slash < 0 ? path : path.left(slash + 1);
}

QString existenceProbePath(const QString& path)
{
    // Only blanks are trimmed: a tab or newline would be part of a (strange) name.
    qsizetype first = 0;
    qsizetype last = path.size();
    while (first < last && path.at(first) == QLatin1Char(' '))
        ++first;
    while (last > first && path.at(last - 1) == QLatin1Char(' '))
        --last;
    QString probe = path.mid(first, last - first);
    if (probe.size() > 1 && probe.endsWith(QLatin1Char('/')))
        probe.chop(1);
    return probe;
}

QString withTrailingSlash(const QString& folder)
{
    if (folder.isEmpty() || folder.endsWith(QLatin1Char('/')))
        return folder;
    return folder + QLatin1Char('/');
}

bool hasWildcard(const QString& path)
{
    const QString name = fileNameOf(path);
    return name.contains(QLatin1Char('*')) || name.contains(QLatin1Char('?'));
}

int attributeWord(const PathFacts& facts)
{
    if (facts.isLink)
        return kAttrLink;
    int word = 0;
    if (facts.readOnly)
        word |= kAttrReadOnly;
    if (facts.hidden)
        word |= kAttrHidden;
    if (facts.isDirectory)
        word |= kAttrDirectory;
    else if (facts.isRegular)
        word |= kAttrArchive;
    return word;
}

QString attributeText(int word)
{
    struct Entry
    {
        int word;
        const char* text;
    };
    static const Entry kTexts[] = {
        {0, "正常(无任何属性)"},
        {1, "只读"},
        {2, "隐藏"},
        {3, "只读,隐藏"},
        {4, "系统"},
        {5, "系统,只读"},
        {6, "隐藏,系统"},
        {7, "只读,隐藏,系统"},
        {32, "存档"},
        {33, "只读,存档"},
        {34, "隐藏,存档"},
        {35, "只读,隐藏,存档"},
        {38, "隐藏,系统,存档"},
        {39, "只读,隐藏,系统,存档"},
        {64, "链接或快捷方式"},
        {128, "压缩"},
        {2054, "隐藏,系统,压缩"},
        {2055, "只读,隐藏,系统,压缩"},
        {2083, "只读,隐藏,系统,压缩,编制索引"},
        {2086, "隐藏,系统,存档,压缩"},
        {2087, "只读,隐藏,系统,存档,压缩"},
    };
    if (word == -1)
        return {};
    for (const Entry& e : kTexts) {
        if (e.word == word)
            return QString::fromUtf8(e.text);
    }
    return QStringLiteral("未知(%1)").arg(word);
}

bool isFloppyDevice(const QString& device)
{
    return device.startsWith(QLatin1String("/dev/fd"));
}

QString driveKindText(int kind, bool floppy)
{
    switch (kind) {
    case platform::kDriveUnknown:
        return QStringLiteral("未知磁盘");
    case platform::kDriveNoRoot:
        return QStringLiteral("无效磁盘");
    case platform::kDriveRemovable:
        return floppy ? QStringLiteral("3.5英寸软盘") : QStringLiteral("可移动磁盘");
    case platform::kDriveFixed:
        return QStringLiteral("本地磁盘");
    case platform::kDriveRemote:
        return QStringLiteral("远程磁盘");
    case platform::kDriveCdRom:
        return QStringLiteral("光盘");
    case platform::kDriveRamDisk:
        return QStringLiteral("Ram磁盘");
    default:
        return QStringLiteral("未知磁盘");
    }
}

std::optional<platform::Volume> volumeOfPath(const QList<platform::Volume>& volumes, const QString& path)
{
    return platform::volumeHolding(volumes, path);
}

QString joinRoots(const QStringList& mountPoints)
{
    QString joined;
    for (const QString& mount : mountPoints)
        joined += withTrailingSlash(mount);
    return joined;
}

QStringList splitRootList(const QString& roots)
{
    QStringList list;
    qsizetype start = 0;
    for (qsizetype i = 1; i < roots.size(); ++i) {
        if (roots.at(i) == QLatin1Char('/') && roots.at(i - 1) == QLatin1Char('/')) {
            list.append(roots.mid(start, i - start));
            start = i;
        }
    }
    if (start < roots.size())
        list.append(roots.mid(start));
    return list;
}

QString serialText(quint32 serial)
{
    return serial == 0 ? QString() : QString::number(serial, 16).toUpper();
}

namespace {

qint64 asSigned(quint64 value)
{
    // Byte and cluster counts of real volumes are far below 2^63; clamp rather than wrap.
    return value > quint64(std::numeric_limits<qint64>::max()) ? std::numeric_limits<qint64>::max()
                                                               : static_cast<qint64>(value);
}

const char* const kDiskLabels[] = {
    "总计空间：",
    "可用空间：",
    "可用空间：",
    "已用空间：",
    "卷标：",
    "序列号：",
    "文件系统：",
    "总的簇数：",
    "每簇的扇区数：",
    "每扇区的字节数：",
    "剩余的簇数：",
};

} // namespace

QVariant diskInformationValue(
    int kind, const platform::VolumeSpace& space, const platform::VolumeIdentity& identity)
{
    switch (kind) {
    case 0:
        return asSigned(space.totalBytes);
    case 1:
        return asSigned(space.freeBytes);
    case 2:
        return asSigned(space.totalFreeBytes);
    case 3:
        return asSigned(
            space.totalBytes >= space.totalFreeBytes ? space.totalBytes - space.totalFreeBytes : 0);
    case 4:
        return identity.label;
    case 5:
        return serialText(identity.serial);
    case 6:
        return identity.fsName;
    case 7:
        return asSigned(space.totalClusters);
    case 8:
        return qint64(space.sectorsPerCluster);
    case 9:
        return qint64(space.bytesPerSector);
    case 10:
        return asSigned(space.freeClusters);
    default:
        return {};
    }
}

QString diskInformationLine(
    int kind, const platform::VolumeSpace& space, const platform::VolumeIdentity& identity)
{
    if (kind < 0 || kind > 10)
        return {};
    const QVariant value = diskInformationValue(kind, space, identity);
    QString text;
    if (kind <= 3)
        text = groupDigits(value.toLongLong()) + QStringLiteral(" 字节");
    else if (kind <= 6)
        text = value.toString();
    else
        text = QString::number(value.toLongLong());
    return QString::fromUtf8(kDiskLabels[kind]) + text;
}

QString fallbackTypeName(const QString& path)
{
    const QString name = fileNameOf(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const QString extension = dot < 0 ? name : name.mid(dot + 1);
    return extension.toUpper() + QStringLiteral(" 文件");
}

namespace {

// Removes every format token made only of `letter` (outside quoted text) together with the separators
// that stood between it and the rest, then trims what is left.
QString dropToken(const QString& format, QChar letter)
{
    QString out;
    bool quoted = false;
    for (qsizetype i = 0; i < format.size();) {
        const QChar c = format.at(i);
        if (c == QLatin1Char('\'')) {
            quoted = !quoted;
            out += c;
            ++i;
            continue;
        }
        if (!quoted && c == letter) {
            qsizetype end = i;
            while (end < format.size() && format.at(end) == letter)
                ++end;
            // Swallow the separator after the token ("dddd, "), or before it when at the end (" t").
            qsizetype after = end;
            while (after < format.size()
                && (format.at(after) == QLatin1Char(',') || format.at(after) == QLatin1Char(' ')))
                ++after;
            if (after == format.size()) {
                while (!out.isEmpty() && (out.endsWith(QLatin1Char(' ')) || out.endsWith(QLatin1Char(','))))
                    out.chop(1);
            }
            i = after;
            continue;
        }
        out += c;
        ++i;
    }
    return out.trimmed();
}

} // namespace

QString dateTimeText(const QDateTime& local, const QTime& now, const QLocale& locale)
{
    QTime time = local.time();
    if (time.hour() == 0 && time.minute() == 0 && time.second() == 0)
        time = now;
    // Only "dddd" (the weekday name) uses four d's; "d" alone is the day number.
    QString dateFormat = locale.dateFormat(QLocale::LongFormat);
    dateFormat.replace(QLatin1String("dddd"), QLatin1String("\x01"));
    dateFormat = dropToken(dateFormat, QChar(0x01));
    const QString timeFormat = dropToken(locale.timeFormat(QLocale::LongFormat), QLatin1Char('t'));
    return locale.toString(local.date(), dateFormat) + QLatin1Char(' ') + locale.toString(time, timeFormat);
}

} // namespace vindaro::files
