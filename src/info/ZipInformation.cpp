#include "ZipInformation.h"

#include "DeviceReader.h"
#include "LocalText.h"
#include "files/Format.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <limits>

namespace vindaro::info {

namespace {

constexpr qint64 kHeaderRestBytes = 26; // local header offsets 4 to 29
constexpr quint32 kZip64Marker = 0xFFFFFFFFu;
constexpr quint16 kUtf8NameFlag = 0x0800;

quint64 littleEndian(const QByteArray& bytes, qsizetype at, int width)
{
    quint64 value = 0;
    for (int i = width - 1; i >= 0; --i)
        value = (value << 8) | static_cast<uchar>(bytes[at + i]);
    return value;
}

// Sizes of 0xFFFFFFFF mean the real ones are in the ZIP64 extra field (id 1): uncompressed first, then
// compressed, each present only when its 32-bit field holds the marker.
void applyZip64Sizes(const QByteArray& extra, quint64& uncompressed, quint64& compressed)
{
    for (qsizetype at = 0; at + 4 <= extra.size();) {
        const auto id = littleEndian(extra, at, 2);
        const auto length = static_cast<qsizetype>(littleEndian(extra, at + 2, 2));
        const qsizetype body = at + 4;
        if (body + length > extra.size())
            return;
        if (id == 1) {
            qsizetype field = body;
            if (uncompressed == kZip64Marker && field + 8 <= body + length) {
                uncompressed = littleEndian(extra, field, 8);
                field += 8;
            }
            if (compressed == kZip64Marker && field + 8 <= body + length)
                compressed = littleEndian(extra, field, 8);
            return;
        }
        at = body + length;
    }
}

QString twoDigits(qint64 value)
{
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

} // namespace

QString ZipInformation::dosDateTime(quint16 date, quint16 time)
{
    const int year = date / 512 + 1980;
    const int month = (date % 512) / 32;
    const int day = date % 32;
    const int hour = time / 2048;
    const int minute = (time % 2048) / 32;
    const int second = (time % 32) * 2;
    return QStringLiteral("%1-%2-%3 %4:%5:%6")
        .arg(year)
        .arg(twoDigits(month), twoDigits(day), twoDigits(hour), twoDigits(minute), twoDigits(second));
}

QStringList ZipInformation::columnCaptions()
{
    return {QStringLiteral("名称"), QStringLiteral("文件大小[字节]"), QStringLiteral("更改时间"),
        QStringLiteral("压缩比率"), QStringLiteral("压缩大小[字节]"), QStringLiteral("CRC")};
}

bool ZipInformation::readZip(const QString& path, const RowSink& addRow)
{
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly))
        return false;
    readZip(file, addRow);
    return true;
}

void ZipInformation::readZip(QIODevice& device, const RowSink& addRow)
{
    DeviceReader reader(device);
    qint64 offset = 0;
    QByteArray signature = reader.readAt(offset, 4);
    offset += 4;
    while (signature == QByteArrayView("PK\x03\x04", 4)) {
        const QByteArray header = reader.readAt(offset, kHeaderRestBytes);
        if (header.size() != kHeaderRestBytes)
            return;
        offset += kHeaderRestBytes;
        // Offsets below are those of the whole header minus the 4 signature bytes.
        const auto flags = static_cast<quint16>(littleEndian(header, 2, 2));
        const auto time = static_cast<quint16>(littleEndian(header, 6, 2));
        const auto date = static_cast<quint16>(littleEndian(header, 8, 2));
        const auto crc = static_cast<quint32>(littleEndian(header, 10, 4));
        quint64 compressed = littleEndian(header, 14, 4);
        quint64 uncompressed = littleEndian(header, 18, 4);
        const auto nameBytes = static_cast<qint64>(littleEndian(header, 22, 2));
        const auto extraBytes = static_cast<qint64>(littleEndian(header, 24, 2));

        const QByteArray name = reader.readAt(offset, nameBytes);
        const QByteArray extra = reader.readAt(offset + nameBytes, extraBytes);
        if (name.size() != nameBytes || extra.size() != extraBytes)
            return; // the header is cut short: damage
        offset += nameBytes + extraBytes;
        if (compressed == kZip64Marker || uncompressed == kZip64Marker)
            applyZip64Sizes(extra, uncompressed, compressed);
        const auto kMax = static_cast<quint64>(std::numeric_limits<qint64>::max());
        if (compressed > kMax - static_cast<quint64>(offset) - 8 || uncompressed > kMax)
            return;
        offset += static_cast<qint64>(compressed);

        const QString text = (flags & kUtf8NameFlag) ? QString::fromUtf8(name) : decodeLocalText(name);
        ZipRow row;
        ++m_entries;
        if (text.endsWith(QLatin1Char('/'))) {
            ++m_folders;
            row.isFolder = true;
            row.text = QLatin1Char('[') + twoDigits(m_folders) + QStringLiteral("][文件夹]") + text;
        } else {
            ++m_files;
            row.text = QLatin1Char('[') + twoDigits(m_files) + QLatin1Char(']') + text;
            row.size = files::groupDigits(static_cast<qint64>(uncompressed));
            if (uncompressed > 0) {
                const double ratio
                    = 1.0 - static_cast<double>(compressed) / static_cast<double>(uncompressed);
                // Two decimals and a percent sign in the locale's decimal mark, without digit groups:
                // an entry stored in far more bytes than it holds reads "-199900.00%".
                QLocale locale;
                locale.setNumberOptions(locale.numberOptions() | QLocale::OmitGroupSeparator);
                row.ratio = locale.toString(ratio * 100.0, 'f', 2) + QLatin1Char('%');
            }
            row.compressedSize = files::groupDigits(static_cast<qint64>(compressed));
            // Most significant byte first; each byte as two digits so the column reads as one CRC-32.
            row.crc = QStringLiteral("%1").arg(crc, 8, 16, QLatin1Char('0')).toUpper();
        }
        row.modified = dosDateTime(date, time);
        row.toolTip = row.text;
        if (m_totalBytes <= std::numeric_limits<qint64>::max() - static_cast<qint64>(uncompressed))
            m_totalBytes += static_cast<qint64>(uncompressed);
        if (!addRow(row))
            return;

        signature = reader.readAt(offset, 4);
        offset += 4;
    }
}

QStringList ZipInformation::getFileQuantitySize() const
{
    return {QString(), QStringLiteral("文件夹数：%1 个").arg(m_folders),
        QStringLiteral("文 件 数：%1 个").arg(m_files),
        QStringLiteral("总计大小：") + files::groupDigits(m_totalBytes / 1024) + QStringLiteral(" KB")};
}

} // namespace vindaro::info
