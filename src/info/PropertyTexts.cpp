#include "PropertyTexts.h"

#include "files/Format.h"

#include <QFile>

#include <cmath>
#include <sys/stat.h>

namespace vindaro::info {

namespace {

constexpr qint64 kKB = 1024;
constexpr qint64 kMB = kKB * 1024;
constexpr qint64 kGB = kMB * 1024;

// Two decimals, rounded half up, with grouped whole digits: 1536.004 -> "1,536.00".
QString twoDecimals(double value)
{
    const auto hundredths = static_cast<qint64>(std::llround(value * 100.0));
    return files::groupDigits(hundredths / 100) + QLatin1Char('.')
        + QStringLiteral("%1").arg(hundredths % 100, 2, 10, QLatin1Char('0'));
}

} // namespace

QString fileLengthText(qint64 bytes)
{
    if (bytes < 1024001)
        return files::formatBytes(bytes);
    return files::groupDigits(bytes / 1024) + QStringLiteral("KB [") + files::formatBytes(bytes)
        + QLatin1Char(']');
}

QString spaceLongText(qint64 bytes)
{
    return files::groupDigits(bytes) + QStringLiteral(" 字节");
}

QString spaceShortText(qint64 bytes)
{
    const auto value = static_cast<double>(bytes);
    if (bytes < kKB)
        return spaceLongText(bytes);
    if (bytes < kMB)
        return twoDecimals(value / double(kKB)) + QStringLiteral(" KB");
    if (bytes < kGB)
        return twoDecimals(value / double(kMB)) + QStringLiteral(" MB");
    return twoDecimals(value / double(kGB)) + QStringLiteral(" GB");
}

QString percentText(qint64 part, qint64 total)
{
    if (total <= 0)
        return QStringLiteral("0.00%");
    return twoDecimals(static_cast<double>(part) * 100.0 / static_cast<double>(total)) + QLatin1Char('%');
}

QString driveNameText(
    const QString& root, const QString& serialHex, qint64 freeBytes, qint64 usedBytes, qint64 totalBytes)
{
    return QStringLiteral("Drive:") + root + QStringLiteral("  SN:") + serialHex + QStringLiteral("  p(A/T):")
        + percentText(freeBytes, totalBytes) + QStringLiteral("  p(U/T):")
        + percentText(usedBytes, totalBytes);
}

QString driveTabCaption(const QString& diskTypeText, const QString& root)
{
    return diskTypeText + QLatin1Char('(') + root + QStringLiteral(")属性");
}

int attributeWordFromBoxes(bool readOnly, bool hidden, bool archive)
{
    return (readOnly ? 1 : 0) | (hidden ? 2 : 0) | (archive ? 32 : 0);
}

bool applyAttributeWord(const QString& path, int word)
{
    const QByteArray native = QFile::encodeName(path);
    struct stat st;
    if (::stat(native.constData(), &st) != 0)
        return false;
    constexpr mode_t kWriteBits = S_IWUSR | S_IWGRP | S_IWOTH;
    mode_t mode = st.st_mode & 07777;
    if (word & 1)
        mode &= ~kWriteBits;
    else if ((mode & kWriteBits) == 0)
        mode |= S_IWUSR; // only the owner gets the write bit back; group and others stay as chosen before
    if (mode == (st.st_mode & 07777))
        return true;
    return ::chmod(native.constData(), mode) == 0;
}

SummaryKind summaryKindOf(const QString& path)
{
    const QString ending = path.right(3).toUpper();
    if (ending == QLatin1String("MP3"))
        return SummaryKind::Mp3;
    if (ending == QLatin1String("SWF"))
        return SummaryKind::Swf;
    if (ending == QLatin1String("ZIP"))
        return SummaryKind::Zip;
    if (ending == QLatin1String("EXE") || ending == QLatin1String("DLL"))
        return SummaryKind::Module;
    return SummaryKind::None;
}

double usedSpanDegrees(qint64 usedBytes, qint64 totalBytes)
{
    if (totalBytes <= 0 || usedBytes <= 0)
        return 0.0;
    if (usedBytes >= totalBytes)
        return 360.0;
    return 360.0 * static_cast<double>(usedBytes) / static_cast<double>(totalBytes);
}

} // namespace vindaro::info
