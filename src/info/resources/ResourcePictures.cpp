#include "ResourcePictures.h"

#include "ResourceBytes.h"

#include <QList>

namespace vindaro::info::resources {

namespace {

const QByteArray kPngSignature = QByteArrayLiteral("\x89PNG\r\n\x1a\n");

// One entry of an .ico/.cur directory (16 bytes): BYTE width, BYTE height (0 means 256), BYTE colour count,
// BYTE reserved, WORD planes (hot spot x in a .cur), WORD bits per pixel (hot spot y in a .cur),
// DWORD image bytes, DWORD offset of the image in the file.
struct IconEntry
{
    quint8 width = 0;
    quint8 height = 0;
    quint8 colourCount = 0;
    quint16 planesOrHotX = 0;
    quint16 bitCountOrHotY = 0;
    QByteArray image; // the image bytes as the file holds them (no hot spot)
};

void putU16(QByteArray& out, quint32 value)
{
    out.append(static_cast<char>(value & 0xFF));
    out.append(static_cast<char>((value >> 8) & 0xFF));
}

void putU32(QByteArray& out, quint32 value)
{
    putU16(out, value & 0xFFFF);
    putU16(out, value >> 16);
}

quint32 bigEndian32(const QByteArray& bytes, qsizetype at)
{
    return (static_cast<quint32>(static_cast<quint8>(bytes[at])) << 24)
        | (static_cast<quint32>(static_cast<quint8>(bytes[at + 1])) << 16)
        | (static_cast<quint32>(static_cast<quint8>(bytes[at + 2])) << 8)
        | static_cast<quint32>(static_cast<quint8>(bytes[at + 3]));
}

quint8 sizeByte(qint64 pixels)
{
    return pixels >= 256 ? 0 : static_cast<quint8>(pixels);
}

// The directory entry of one image: a DIB with a BITMAPINFOHEADER (or a later, longer header) whose height
// counts the colour rows and the AND mask rows, or a PNG (width and height from its IHDR chunk). Nothing for
// anything else.
std::optional<IconEntry> entryForImage(const QByteArray& image)
{
    IconEntry entry;
    entry.image = image;
    if (image.startsWith(kPngSignature)) {
        // signature (8), IHDR length (4), "IHDR" (4), width (4), height (4), bit depth (1)
        if (image.size() < 25 || image.mid(12, 4) != "IHDR")
            return std::nullopt;
        const quint32 width = bigEndian32(image, 16);
        const quint32 height = bigEndian32(image, 20);
        if (width == 0 || height == 0)
            return std::nullopt;
        entry.width = sizeByte(width);
        entry.height = sizeByte(height);
        entry.planesOrHotX = 1;
        entry.bitCountOrHotY = 32;
        return entry;
    }
    ResourceBytes in(image);
    const auto headerSize = in.u32();
    const auto width = in.s32();
    const auto height = in.s32();
    const auto planes = in.u16();
    const auto bitCount = in.u16();
    if (!headerSize || *headerSize < 40 || *headerSize > static_cast<quint32>(image.size()) || !width
        || !height || !planes || !bitCount)
        return std::nullopt;
    if (*width <= 0 || *height <= 0 || *height / 2 == 0)
        return std::nullopt;
    entry.width = sizeByte(*width);
    entry.height = sizeByte(*height / 2);
    entry.colourCount = *bitCount < 8 ? static_cast<quint8>(1u << *bitCount) : quint8(0);
    entry.planesOrHotX = *planes;
    entry.bitCountOrHotY = *bitCount;
    return entry;
}

// A cursor image begins with WORD hot spot x, WORD hot spot y; the rest is the image itself.
std::optional<IconEntry> entryForMember(const QByteArray& member, bool cursor)
{
    if (!cursor)
        return entryForImage(member);
    ResourceBytes in(member);
    const auto hotX = in.u16();
    const auto hotY = in.u16();
    if (!hotX || !hotY)
        return std::nullopt;
    auto entry = entryForImage(member.mid(4));
    if (!entry)
        return std::nullopt;
    entry->planesOrHotX = *hotX;
    entry->bitCountOrHotY = *hotY;
    return entry;
}

// A group may name one large member thousands of times; real icon files stay far below this (ten 256-pixel
// 32-bit images are under 3 MiB).
constexpr qint64 kMaxIconFileBytes = 64 * 1024 * 1024;

// ICONDIR (WORD 0, WORD type: 1 icon, 2 cursor, WORD count), the entries, then the images in their order.
QByteArray iconFile(const QList<IconEntry>& entries, bool cursor)
{
    if (entries.isEmpty() || entries.size() > 0xFFFF)
        return {};
    QByteArray file;
    putU16(file, 0);
    putU16(file, cursor ? 2 : 1);
    putU16(file, static_cast<quint32>(entries.size()));
    qint64 imageOffset = 6 + 16 * entries.size();
    for (const IconEntry& entry : entries) {
        if (imageOffset + entry.image.size() > kMaxIconFileBytes)
            return {};
        file.append(static_cast<char>(entry.width));
        file.append(static_cast<char>(entry.height));
        file.append(static_cast<char>(entry.colourCount));
        file.append('\0');
        putU16(file, entry.planesOrHotX);
        putU16(file, entry.bitCountOrHotY);
        putU32(file, static_cast<quint32>(entry.image.size()));
        putU32(file, static_cast<quint32>(imageOffset));
        imageOffset += entry.image.size();
    }
    for (const IconEntry& entry : entries)
        file.append(entry.image);
    return file;
}

} // namespace

QByteArray iconFileFromImage(const QByteArray& image, bool cursor)
{
    const auto entry = entryForMember(image, cursor);
    if (!entry)
        return {};
    return iconFile({*entry}, cursor);
}

// GRPICONDIR / cursor group: WORD 0, WORD type, WORD count, then 14-byte entries whose last WORD is the
// member's resource number. The entries' own size fields are not trusted (a cursor group's hold the
// doubled height and count the hot spot): each file entry is worked out from the member image itself.
QByteArray iconFileFromGroup(
    const QByteArray& group, const std::function<QByteArray(quint16)>& memberImage, bool cursor)
{
    ResourceBytes in(group);
    const auto reserved = in.u16();
    const auto type = in.u16();
    const auto count = in.u16();
    if (!reserved || !type || !count || *reserved != 0)
        return {};
    QList<IconEntry> entries;
    qint64 total = 6;
    for (quint16 i = 0; i < *count; ++i) {
        if (!in.skip(12))
            break; // a directory cut short still gives the members it names
        const quint16 member = *in.u16();
        const auto entry = entryForMember(memberImage(member), cursor);
        if (!entry)
            continue;
        total += 16 + entry->image.size();
        if (total > kMaxIconFileBytes)
            return {};
        entries.append(*entry);
    }
    return iconFile(entries, cursor);
}

// BITMAPFILEHEADER: "BM", DWORD file size, two reserved WORDs, DWORD offset of the pixels. The pixels follow
// the info header, the BI_BITFIELDS/BI_ALPHABITFIELDS masks of a 40-byte header, and the colour table
// (biClrUsed entries, or 2^bits when that is 0 and the bits are 8 or fewer; RGBTRIPLEs after a 12-byte core
// header, RGBQUADs otherwise).
QByteArray bitmapFileFromDib(const QByteArray& dib)
{
    ResourceBytes in(dib);
    const auto headerSize = in.u32();
    if (!headerSize)
        return {};
    qint64 bitCount = 0;
    qint64 coloursUsed = 0;
    qint64 maskBytes = 0;
    qint64 paletteEntryBytes = 4;
    if (*headerSize == 12) {
        in.skip(4 + 2); // WORD width, WORD height, WORD planes
        const auto bits = in.u16();
        if (!bits)
            return {};
        bitCount = *bits;
        paletteEntryBytes = 3;
    } else if (*headerSize >= 40 && *headerSize <= 124) {
        in.skip(8 + 2); // width, height, planes
        const auto bits = in.u16();
        const auto compression = in.u32();
        in.skip(4 + 4 + 4); // image size, x and y resolution
        const auto used = in.u32();
        if (!bits || !compression || !used)
            return {};
        bitCount = *bits;
        coloursUsed = *used;
        if (*headerSize == 40 && *compression == 3)
            maskBytes = 12;
        else if (*headerSize == 40 && *compression == 6)
            maskBytes = 16;
    } else {
        return {};
    }
    const qint64 paletteEntries
        = coloursUsed != 0 ? coloursUsed : (bitCount <= 8 ? (qint64(1) << bitCount) : 0);
    const qint64 pixelsOffset = 14 + *headerSize + maskBytes + paletteEntries * paletteEntryBytes;
    const qint64 fileSize = 14 + dib.size();
    if (pixelsOffset > fileSize || fileSize > 0xFFFFFFFF)
        return {};
    QByteArray file;
    file.reserve(fileSize);
    file.append("BM", 2);
    putU32(file, static_cast<quint32>(fileSize));
    putU32(file, 0);
    putU32(file, static_cast<quint32>(pixelsOffset));
    file.append(dib);
    return file;
}

QString imageTypeText(int resourceType)
{
    switch (resourceType) {
    case 1:
    case 3:
    case 12:
    case 14:
        return QStringLiteral("Icon/cursor (*.ico/*.cur)");
    case 2:
        return QStringLiteral("Bitmap (*.bmp)");
    default:
        return QStringLiteral("None");
    }
}

QString imageTypeText(const QString& resourceType)
{
    bool isNumber = false;
    const int number = resourceType.toInt(&isNumber);
    if (isNumber)
        return imageTypeText(number);
    const QString name = resourceType.toUpper();
    // The picture loader makes bitmaps of the raster formats and metafiles of the vector ones.
    if (name == QLatin1String("WMF"))
        return QStringLiteral("Metafile (*.wmf)");
    if (name == QLatin1String("EMF"))
        return QStringLiteral("Enh Metafile (*.emf)");
    static const QStringList kRaster = {QStringLiteral("JPG"), QStringLiteral("JPEG"), QStringLiteral("GIF"),
        QStringLiteral("PNG"), QStringLiteral("TIF"), QStringLiteral("TIFF")};
    if (kRaster.contains(name))
        return QStringLiteral("Bitmap (*.bmp)");
    return QStringLiteral("None");
}

} // namespace vindaro::info::resources
