#include "pe/VersionInfo.h"

#include "pe/PeImage.h"

#include <QList>

#include <optional>

namespace vindaro::info::pe {

namespace {

constexpr quint16 kVersionType = 16;

// One block of a version resource: wLength 2 (the block with its children), wValueLength 2 (bytes for a
// binary value, UTF-16 units for a text), wType 2 (0 binary, 1 text), szKey (UTF-16, NUL-ended), padding
// to 32 bits, the value, padding to 32 bits, the children, each starting on 32 bits. Offsets count from
// the resource's start, which is 32-bit aligned in a module.
struct Block
{
    qint64 start = 0;
    qint64 end = 0; // start + wLength, cut to the parent's end
    quint16 valueLength = 0;
    quint16 type = 0;
    QString key;
    qint64 valueStart = 0;
    qint64 childrenStart = 0;
};

qint64 align4(qint64 offset)
{
    return (offset + 3) & ~qint64(3);
}

quint16 u16At(const QByteArray& bytes, qint64 offset)
{
    return static_cast<quint16>(
        static_cast<unsigned char>(bytes[offset]) | (static_cast<unsigned char>(bytes[offset + 1]) << 8));
}

// UTF-16 units from `from` up to the first NUL or `to`.
QString utf16Until(const QByteArray& bytes, qint64 from, qint64 to, qint64* afterNul = nullptr)
{
    QString text;
    qint64 at = from;
    for (; at + 2 <= to; at += 2) {
        const quint16 unit = u16At(bytes, at);
        if (unit == 0) {
            at += 2;
            break;
        }
        text += QChar(static_cast<char16_t>(unit));
    }
    if (afterNul)
        *afterNul = at;
    return text;
}

std::optional<Block> blockAt(const QByteArray& bytes, qint64 start, qint64 parentEnd)
{
    if (start < 0 || start + 6 > parentEnd)
        return std::nullopt;
    Block block;
    block.start = start;
    const quint16 length = u16At(bytes, start);
    if (length < 6)
        return std::nullopt;
    block.end = qMin(start + length, parentEnd);
    block.valueLength = u16At(bytes, start + 2);
    block.type = u16At(bytes, start + 4);
    qint64 afterKey = 0;
    block.key = utf16Until(bytes, start + 6, block.end, &afterKey);
    block.valueStart = qMin(align4(afterKey), block.end);
    const qint64 valueBytes = block.type == 1 ? 2 * qint64(block.valueLength) : qint64(block.valueLength);
    block.childrenStart = qMin(align4(block.valueStart + valueBytes), block.end);
    return block;
}

// The children of a block, in order. Each child is at least 6 bytes long, so the walk ends.
QList<Block> childrenOf(const QByteArray& bytes, const Block& parent)
{
    QList<Block> children;
    qint64 at = parent.childrenStart;
    while (const auto child = blockAt(bytes, at, parent.end)) {
        children.push_back(*child);
        at = align4(child->end);
    }
    return children;
}

bool keyIs(const Block& block, const char* key)
{
    return block.key.compare(QLatin1String(key), Qt::CaseInsensitive) == 0;
}

std::optional<Block> rootOf(const QByteArray& bytes)
{
    return blockAt(bytes, 0, bytes.size());
}

// The first translation's 4 bytes b0 b1 b2 b3 (language, then code page, each little-endian).
std::optional<QByteArray> firstTranslation(const QByteArray& bytes, const Block& root)
{
    for (const Block& info : childrenOf(bytes, root)) {
        if (!keyIs(info, "VarFileInfo"))
            continue;
        for (const Block& var : childrenOf(bytes, info)) {
            if (keyIs(var, "Translation") && var.valueLength >= 4 && var.valueStart + 4 <= var.end)
                return bytes.mid(var.valueStart, 4);
        }
    }
    return std::nullopt;
}

} // namespace

QString versionLanguageTag(const QByteArray& versionResource)
{
    const auto root = rootOf(versionResource);
    const auto translation = root ? firstTranslation(versionResource, *root) : std::nullopt;
    if (!translation)
        return {};
    const QByteArray b = *translation;
    const char tag[] = {b[1], b[0], b[3], b[2]};
    return QString::fromLatin1(QByteArray(tag, 4).toHex().toUpper());
}

QString versionText(const QByteArray& versionResource)
{
    const auto root = rootOf(versionResource);
    if (!root)
        return {};
    const QString tag = versionLanguageTag(versionResource);
    // The first translation's string table. When the module has no table under that tag (or no translation
    // at all) we show its first string table rather than nothing: the strings are still the module's own.
    std::optional<Block> table;
    std::optional<Block> firstTable;
    for (const Block& info : childrenOf(versionResource, *root)) {
        if (!keyIs(info, "StringFileInfo"))
            continue;
        for (const Block& candidate : childrenOf(versionResource, info)) {
            if (!firstTable)
                firstTable = candidate;
            if (!table && !tag.isEmpty() && candidate.key.compare(tag, Qt::CaseInsensitive) == 0)
                table = candidate;
        }
    }
    if (!table)
        table = firstTable;
    if (!table)
        return {};
    const QList<Block> strings = childrenOf(versionResource, *table);
    QString text;
    for (const char* key : kVersionKeys) {
        for (const Block& string : strings) {
            if (!keyIs(string, key))
                continue;
            // Writers disagree on whether wValueLength counts bytes or units; the value runs to the first
            // NUL or the block's end either way.
            const QString value = utf16Until(versionResource, string.valueStart, string.end);
            if (!value.isEmpty())
                text += QLatin1String(key) + QLatin1String(":\r\n\t") + value + QLatin1String("\r\n");
            break;
        }
    }
    return text.trimmed();
}

QString moduleVersionText(const PeImage& image)
{
    for (const ResourceEntry& entry : image.resources()) {
        if (entry.type.isInteger && entry.type.number == kVersionType)
            return versionText(image.data(entry));
    }
    return {};
}

} // namespace vindaro::info::pe
