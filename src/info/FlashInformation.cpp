#include "FlashInformation.h"

#include "DeviceReader.h"

#include <QFile>
#include <QFileInfo>

namespace vindaro::info {

namespace {

// `count` bits starting at 0-based bit `start` of `bytes`, most significant bit first, unsigned.
quint64 bitsAt(const QByteArray& bytes, qint64 start, int count)
{
    quint64 value = 0;
    for (int i = 0; i < count; ++i) {
        const qint64 bit = start + i;
        const qint64 byteIndex = bit / 8;
        const bool set
            = byteIndex < bytes.size() && (static_cast<uchar>(bytes[byteIndex]) >> (7 - bit % 8)) & 1;
        value = (value << 1) | (set ? 1u : 0u);
    }
    return value;
}

quint32 littleEndian(const QByteArray& bytes)
{
    quint32 value = 0;
    for (qsizetype i = bytes.size() - 1; i >= 0; --i)
        value = (value << 8) | static_cast<uchar>(bytes[i]);
    return value;
}

} // namespace

bool FlashInformation::getFlashInformation(const QString& path)
{
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly))
        return false;
    return getFlashInformation(file);
}

bool FlashInformation::getFlashInformation(QIODevice& device)
{
    DeviceReader reader(device);
    if (reader.readAt(0, 3) != "FWS")
        return false;
    const QByteArray fixed = reader.readAt(3, 5);
    const QByteArray rect = reader.readAt(8, 21);
    if (fixed.size() != 5 || rect.isEmpty())
        return false;
    const int bitsPerField = static_cast<uchar>(rect[0]) >> 3;
    const qint64 rectBytes = (4 * bitsPerField + 5) / 8 + 1;
    const QByteArray rate = reader.readAt(8 + rectBytes, 2);
    const QByteArray frames = reader.readAt(10 + rectBytes, 2);
    // A movie cut short before its frame count has no header to show.
    if (rect.size() < rectBytes || rate.size() != 2 || frames.size() != 2)
        return false;

    m_version = static_cast<uchar>(fixed[0]);
    m_declaredBytes = littleEndian(fixed.sliced(1, 4));
    m_speed = static_cast<uchar>(rate[1]);
    m_frames = littleEndian(frames);
    // 8.8 fixed point: the whole rate in 1/256 frames per second. Seconds use the exact rate, so a
    // 29.97 fps movie is timed right although speed() shows 29; a zero rate gives a time of 0.
    const qint64 rate256 = (m_speed << 8) | static_cast<uchar>(rate[0]);
    m_hundredths = rate256 == 0 ? 0 : (m_frames * 25600 * 2 + rate256) / (2 * rate256);

    const QByteArray colour = reader.readAt(14 + rectBytes, 3);
    if (colour.size() == 3) {
        m_red = static_cast<uchar>(colour[0]);
        m_green = static_cast<uchar>(colour[1]);
        m_blue = static_cast<uchar>(colour[2]);
    }

    // Xmax starts after N (5 bits) and Xmin; Ymax after Xmax and Ymin. Xmin and Ymin are taken as 0.
    const quint64 xMax = bitsAt(rect, 5 + bitsPerField, bitsPerField);
    const quint64 yMax = bitsAt(rect, 5 + 3 * bitsPerField, bitsPerField);
    m_width = static_cast<qint64>(xMax / 20);
    m_height = static_cast<qint64>(yMax / 20);
    return true;
}

QString FlashInformation::secondsText() const
{
    QString text = QString::number(m_hundredths / 100);
    const qint64 fraction = m_hundredths % 100;
    if (fraction % 10 != 0)
        text += QStringLiteral(".%1").arg(fraction, 2, 10, QLatin1Char('0'));
    else if (fraction != 0)
        text += QStringLiteral(".%1").arg(fraction / 10);
    return text;
}

} // namespace vindaro::info
