#include "MP3Information.h"

#include "DeviceReader.h"

#include <QFile>
#include <QFileInfo>

#include <cmath>

namespace vindaro::info {

namespace {

// kbit/s by bit-rate index 0-14; index 0 is free format.
constexpr int kBitRatesV1[3][15] = {
    {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448}, // Layer I
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384}, // Layer II
    {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320}, // Layer III
};
constexpr int kBitRatesV2[2][15] = {
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256}, // Layer I
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}, // Layers II and III
};
constexpr int kFrequenciesV1[3] = {44100, 48000, 32000};
constexpr int kFrequenciesV2[3] = {22050, 24000, 16000};

QString yesNo(quint32 bit)
{
    return bit ? QStringLiteral("Yes") : QStringLiteral("No");
}

// Round to nearest, halves to even, independent of the FPU's rounding mode.
qint64 roundHalfEven(double value)
{
    const double floorValue = std::floor(value);
    const double fraction = value - floorValue;
    auto result = static_cast<qint64>(floorValue);
    if (fraction > 0.5 || (fraction == 0.5 && (result % 2) != 0))
        ++result;
    return result;
}

} // namespace

void MP3Information::setFileName(const QString& path)
{
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly)) {
        m_path.clear();
        return;
    }
    file.close();
    m_path = path;
    getMpegInfo();
}

void MP3Information::getMpegInfo()
{
    QFile file(m_path);
    if (m_path.isEmpty() || QFileInfo(m_path).isDir() || !file.open(QIODevice::ReadOnly))
        return; // every field keeps its value
    getMpegInfo(file, m_path);
}

void MP3Information::getMpegInfo(QIODevice& device, const QString& name)
{
    m_openedPath = name;
    DeviceReader reader(device);
    m_fileSizeBytes = reader.size();

    // Any 0xFF starts the header, even one inside leading tag data; the last byte is never examined.
    const qint64 at = reader.indexOf('\xFF', 0, m_fileSizeBytes - 1);
    if (at < 0) {
        // No header: report it as such instead of decoding bytes from past the end.
        m_headerOffset = -1;
        return;
    }
    m_headerOffset = at;
    QByteArray bytes = reader.readAt(at, 4);
    bytes.append(4 - bytes.size(), '\0'); // a header cut by the end of the file reads as zeros
    quint32 word = 0;
    for (char b : bytes)
        word = (word << 8) | static_cast<uchar>(b);
    decodeHeader(word);
    deriveFigures();
}

void MP3Information::decodeHeader(quint32 word)
{
    // Bit k of the text (1 = most significant) is bit 32 - k of the word.
    m_bitStr = QString::number(word, 2); // leading zeros dropped; the first byte is 0xFF anyway
    m_version = (word >> 19) & 1u ? 1 : 2;
    static constexpr int kLayerByCode[4] = {0, 3, 2, 1};
    m_layer = kLayerByCode[(word >> 17) & 3u];
    m_crcs = ((word >> 16) & 1u) ? QStringLiteral("No") : QStringLiteral("Yes");

    const quint32 bitRateIndex = (word >> 12) & 0xFu;
    if (bitRateIndex < 15 && m_layer != 0) {
        if (m_version == 1)
            m_bitRateKbps = kBitRatesV1[m_layer - 1][bitRateIndex];
        else
            m_bitRateKbps = kBitRatesV2[m_layer == 1 ? 0 : 1][bitRateIndex];
    }
    const quint32 frequencyIndex = (word >> 10) & 3u;
    if (frequencyIndex < 3)
        m_frequencyHz = m_version == 1 ? kFrequenciesV1[frequencyIndex] : kFrequenciesV2[frequencyIndex];

    m_padding = yesNo((word >> 9) & 1u);
    m_private = yesNo((word >> 8) & 1u);
    static const QString kModes[4] = {QStringLiteral("立体声"), QStringLiteral("合成立体声"),
        QStringLiteral("双声道"), QStringLiteral("单声道")};
    m_mode = kModes[(word >> 6) & 3u];
    m_copyrighted = yesNo((word >> 3) & 1u);
    m_original = yesNo((word >> 2) & 1u);
    static const QString kEmphases[4] = {QStringLiteral("None"), QStringLiteral("50/15"),
        QStringLiteral("Reserved"), QStringLiteral("CCITT J 17")};
    m_emphasis = kEmphases[word & 3u];
}

void MP3Information::deriveFigures()
{
    // One formula for every version and layer, as the estimate has always been made.
    if (m_frequencyHz != 0)
        m_frameSizeBytes = roundHalfEven(
            static_cast<double>(m_bitRateKbps) * 144000.0 / static_cast<double>(m_frequencyHz));
    if (m_padding == QLatin1String("Yes"))
        ++m_frameSizeBytes;
    if (m_frameSizeBytes > 0)
        m_frames = m_fileSizeBytes / m_frameSizeBytes;
    if (m_bitRateKbps != 0)
        m_seconds = roundHalfEven(
            static_cast<double>(m_fileSizeBytes) * 8.0 / (static_cast<double>(m_bitRateKbps) * 1000.0));
}

QString MP3Information::versionLayer() const
{
    return QStringLiteral("MPEG %1.0 Layer %2").arg(m_version).arg(m_layer);
}

} // namespace vindaro::info
