#include "pe/PeImage.h"

#include <QFile>
#include <QHash>
#include <QSet>

#include <cstring>

namespace vindaro::info::pe {

namespace {

// The loader refuses modules with more sections than this; we read no more either, which also keeps the
// RVA lookup (a walk over the sections for every read of the directory) cheap.
constexpr int kMaxSections = 96;
// The walk's caps. A directory names at most 65,536 entries; all directories together at most 4,194,304
// (each is 8 bytes read), and the tree holds at most 262,144 leaves. Real modules stay far below.
constexpr quint32 kMaxEntriesPerDirectory = 65536;
constexpr qint64 kMaxEntriesVisited = 4194304;
constexpr qsizetype kMaxLeaves = 262144;
// All names together: 16 Mi UTF-16 units (a name has at most 65,535).
constexpr qint64 kMaxNameUnits = 16 * 1024 * 1024;
constexpr quint32 kHighBit = 0x80000000u;

// Random-access reads of the module, all or nothing. From a file, pages of 64 KiB are read when first
// touched and kept while the headers and the directory are walked, so a module of hundreds of MB costs
// only the pages its directory lies in.
class Reader
{
public:
    explicit Reader(QByteArray bytes)
        : m_bytes(std::move(bytes))
        , m_size(m_bytes.size())
    {
    }
    explicit Reader(QFile* file)
        : m_file(file)
        , m_size(file->size())
    {
    }

    qint64 size() const { return m_size; }

    bool read(qint64 offset, qint64 length, char* out)
    {
        if (offset < 0 || length < 0 || offset > m_size || length > m_size - offset)
            return false;
        if (!m_file) {
            std::memcpy(out, m_bytes.constData() + offset, static_cast<size_t>(length));
            return true;
        }
        while (length > 0) {
            const qint64 pageIndex = offset / kPageBytes;
            const qint64 within = offset % kPageBytes;
            const QByteArray* page = this->page(pageIndex);
            if (!page || within >= page->size())
                return false;
            const qint64 take = qMin(length, page->size() - within);
            std::memcpy(out, page->constData() + within, static_cast<size_t>(take));
            out += take;
            offset += take;
            length -= take;
        }
        return true;
    }

    std::optional<quint16> u16(qint64 offset)
    {
        unsigned char b[2];
        if (!read(offset, 2, reinterpret_cast<char*>(b)))
            return std::nullopt;
        return static_cast<quint16>(b[0] | (b[1] << 8));
    }
    std::optional<quint32> u32(qint64 offset)
    {
        unsigned char b[4];
        if (!read(offset, 4, reinterpret_cast<char*>(b)))
            return std::nullopt;
        return static_cast<quint32>(b[0]) | (static_cast<quint32>(b[1]) << 8)
            | (static_cast<quint32>(b[2]) << 16) | (static_cast<quint32>(b[3]) << 24);
    }

private:
    static constexpr qint64 kPageBytes = 65536;

    const QByteArray* page(qint64 index)
    {
        auto found = m_pages.constFind(index);
        if (found != m_pages.constEnd())
            return &found.value();
        if (!m_file->seek(index * kPageBytes))
            return nullptr;
        const QByteArray bytes = m_file->read(kPageBytes);
        if (bytes.isEmpty())
            return nullptr;
        return &m_pages.insert(index, bytes).value();
    }

    QByteArray m_bytes;
    QFile* m_file = nullptr;
    qint64 m_size = 0;
    QHash<qint64, QByteArray> m_pages;
};

struct TypeNode
{
    ResourceId type;
    QList<ResourceId> names; // in directory order
};

QString exactKey(const ResourceId& id)
{
    return id.isInteger ? QStringLiteral("#%1").arg(id.number) : QLatin1Char('$') + id.name;
}

// A key of (type, name) equal for ids the lookup takes as the same: numbers exactly, names ignoring case
// as the platform's lookup does.
QString lookupKey(const ResourceId& type, const ResourceId& name)
{
    auto part = [](const ResourceId& id) {
        return id.isInteger ? QStringLiteral("#%1").arg(id.number)
                            : QLatin1Char('$') + id.name.toCaseFolded();
    };
    return part(type) + QChar(0) + part(name);
}

// A decimal number of 1 to 5 digits up to 65535, nothing else (no sign, no blank).
std::optional<quint16> decimalNumber(QStringView text)
{
    if (text.isEmpty() || text.size() > 5)
        return std::nullopt;
    quint32 value = 0;
    for (const QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return std::nullopt;
        value = value * 10 + static_cast<quint32>(c.unicode() - '0');
    }
    if (value > 0xFFFF)
        return std::nullopt;
    return static_cast<quint16>(value);
}

} // namespace

struct PeImage::Impl
{
    QString path;
    QByteArray bytes; // the module, for an image from bytes
    qint64 fileSize = 0;
    bool valid = false;
    bool is64 = false;
    quint32 headerBytes = 0; // SizeOfHeaders: RVAs below it are file offsets
    QList<Section> sections;
    QList<TypeNode> types;
    QList<ResourceEntry> leaves;
    // The first leaf of each (type, name) as the lookup compares them, so a tree of thousands of
    // resources is sized one lookup at a time without a walk over all leaves.
    QHash<QString, qsizetype> firstLeaf;
    QHash<QString, QList<qsizetype>> typeNodes; // the nodes of each type (a damaged file may repeat one)

    void read(Reader& reader);
    void readResources(Reader& reader, quint32 directoryRva);
    void index()
    {
        firstLeaf.reserve(leaves.size());
        for (qsizetype i = 0; i < types.size(); ++i)
            typeNodes[exactKey(types.at(i).type)].push_back(i);
        for (qsizetype i = 0; i < leaves.size(); ++i) {
            const QString key = lookupKey(leaves.at(i).type, leaves.at(i).name);
            if (!firstLeaf.contains(key))
                firstLeaf.insert(key, i);
        }
    }

    // The file offset of `length` bytes at `rva`, when they lie in the file's bytes of one section (or in
    // the headers). Bytes a section has only in memory (past its raw size) are not in the file.
    std::optional<qint64> fileOffset(quint32 rva, quint32 length) const
    {
        const quint64 end = quint64(rva) + length;
        for (const Section& section : sections) {
            const quint64 rawEnd = quint64(section.virtualAddress) + section.rawSize;
            if (rva >= section.virtualAddress && end <= rawEnd)
                return qint64(section.rawOffset) + (rva - section.virtualAddress);
        }
        if (end <= headerBytes)
            return qint64(rva);
        return std::nullopt;
    }
};

// DOS header: "MZ", e_lfanew (offset of the PE header) at 0x3C. PE header: "PE\0\0", then the file header
// (machine 2, section count 2, time stamp 4, symbol table 4, symbol count 4, optional header size 2,
// characteristics 2), then the optional header: magic 0x10B (PE32) or 0x20B (PE32+); SizeOfHeaders at 60;
// NumberOfRvaAndSizes at 92 (PE32) or 108 (PE32+) followed by the data directories (RVA 4, size 4), of
// which the third is the resources. The section table follows the optional header: 40 bytes each, name 8,
// virtual size 4, virtual address 4, raw size 4, raw offset 4.
void PeImage::Impl::read(Reader& reader)
{
    fileSize = reader.size();
    const auto dosMagic = reader.u16(0);
    const auto peOffset = reader.u32(0x3C);
    if (!dosMagic || *dosMagic != 0x5A4D || !peOffset)
        return;
    const qint64 pe = *peOffset;
    const auto signature = reader.u32(pe);
    const auto sectionCount = reader.u16(pe + 6);
    const auto optionalBytes = reader.u16(pe + 20);
    const qint64 optional = pe + 24;
    const auto magic = reader.u16(optional);
    if (!signature || *signature != 0x00004550 || !sectionCount || !optionalBytes || !magic)
        return;
    if (*magic != 0x10B && *magic != 0x20B)
        return;
    valid = true;
    is64 = *magic == 0x20B;
    headerBytes = reader.u32(optional + 60).value_or(0);

    const qint64 sectionTable = optional + *optionalBytes;
    const int count = qMin(int(*sectionCount), kMaxSections);
    for (int i = 0; i < count; ++i) {
        const qint64 at = sectionTable + 40 * qint64(i);
        char name[9] = {};
        const auto virtualSize = reader.u32(at + 8);
        const auto virtualAddress = reader.u32(at + 12);
        const auto rawSize = reader.u32(at + 16);
        const auto rawOffset = reader.u32(at + 20);
        if (!reader.read(at, 8, name) || !virtualSize || !virtualAddress || !rawSize || !rawOffset)
            break;
        Section section;
        section.name = QString::fromLatin1(name);
        section.virtualAddress = *virtualAddress;
        section.virtualSize = *virtualSize;
        section.rawOffset = *rawOffset;
        section.rawSize = *rawSize;
        sections.push_back(section);
    }

    // The data directory of the resources, when the optional header is long enough to hold it.
    const qint64 countField = optional + (is64 ? 108 : 92);
    const qint64 resourceField = countField + 4 + 2 * 8;
    const auto directoryCount = reader.u32(countField);
    if (!directoryCount || *directoryCount <= 2 || resourceField + 8 > optional + *optionalBytes)
        return;
    const auto resourceRva = reader.u32(resourceField);
    if (resourceRva && *resourceRva != 0)
        readResources(reader, *resourceRva);
}

// Resource directory: characteristics 4, time stamp 4, version 2 + 2, named entry count 2, integer entry
// count 2, then the entries, 8 bytes each: name (high bit set: offset of a name, a 16-bit length and as
// many UTF-16 units; clear: the number) and data (high bit set: offset of the next directory; clear: offset
// of a data entry: RVA 4, size 4, code page 4, reserved 4). Offsets count from the directory's start in
// the mapped image, so every read goes through the section table. Levels: type, name, language. Every
// directory is followed once at most, so offsets that point back cannot loop.
void PeImage::Impl::readResources(Reader& reader, quint32 directoryRva)
{
    qint64 entriesVisited = 0;
    QSet<quint32> followed;

    auto at = [&](quint32 offset, quint32 length) -> std::optional<qint64> {
        const quint64 rva = quint64(directoryRva) + offset;
        if (rva > 0xFFFFFFFFu)
            return std::nullopt;
        return fileOffset(static_cast<quint32>(rva), length);
    };
    struct RawEntry
    {
        quint32 name;
        quint32 data;
    };
    auto directory = [&](quint32 offset) {
        QList<RawEntry> entries;
        if (followed.contains(offset))
            return entries;
        followed.insert(offset);
        const auto header = at(offset, 16);
        if (!header)
            return entries;
        const quint32 count
            = qMin(quint32(reader.u16(*header + 12).value_or(0)) + reader.u16(*header + 14).value_or(0),
                kMaxEntriesPerDirectory);
        for (quint32 i = 0; i < count && entriesVisited < kMaxEntriesVisited; ++i, ++entriesVisited) {
            const auto entry = at(offset + 16 + 8 * i, 8);
            const auto name = entry ? reader.u32(*entry) : std::nullopt;
            const auto data = entry ? reader.u32(*entry + 4) : std::nullopt;
            if (!name || !data)
                break;
            entries.push_back({*name, *data});
        }
        return entries;
    };
    // Names are read once per offset; all names together are capped, so a hostile directory whose entries
    // all name one long text, or overlapping long texts, cannot make the walk copy gigabytes.
    QHash<quint32, QString> namesByOffset;
    qint64 nameUnitsRead = 0;
    auto id = [&](quint32 field) -> std::optional<ResourceId> {
        if (!(field & kHighBit))
            return ResourceId::fromNumber(static_cast<quint16>(field));
        const quint32 offset = field & ~kHighBit;
        const auto known = namesByOffset.constFind(offset);
        if (known != namesByOffset.constEnd())
            return ResourceId::fromName(known.value());
        const auto lengthAt = at(offset, 2);
        const auto length = lengthAt ? reader.u16(*lengthAt) : std::nullopt;
        if (!length || nameUnitsRead + *length > kMaxNameUnits)
            return std::nullopt;
        nameUnitsRead += *length;
        const auto textAt = at(offset + 2, 2u * *length);
        QByteArray units(2 * qsizetype(*length), '\0');
        if (!textAt || !reader.read(*textAt, units.size(), units.data()))
            return std::nullopt;
        QString name(*length, Qt::Uninitialized);
        for (qsizetype i = 0; i < name.size(); ++i)
            name[i] = QChar(static_cast<char16_t>(static_cast<unsigned char>(units[2 * i])
                | (static_cast<unsigned char>(units[2 * i + 1]) << 8)));
        namesByOffset.insert(offset, name);
        return ResourceId::fromName(name);
    };
    // An entry that leads to a directory not yet followed. A data entry right below the root or the type
    // level has no place in a three-level tree.
    auto leadsOn = [&](const RawEntry& entry) {
        return (entry.data & kHighBit) && !followed.contains(entry.data & ~kHighBit);
    };

    for (const RawEntry& typeEntry : directory(0)) {
        const auto type = leadsOn(typeEntry) ? id(typeEntry.name) : std::nullopt;
        if (!type)
            continue;
        TypeNode node{*type, {}};
        for (const RawEntry& nameEntry : directory(typeEntry.data & ~kHighBit)) {
            const auto name = leadsOn(nameEntry) ? id(nameEntry.name) : std::nullopt;
            if (!name)
                continue;
            node.names.push_back(*name);
            for (const RawEntry& languageEntry : directory(nameEntry.data & ~kHighBit)) {
                // Languages are numbers; a fourth level is not followed.
                if ((languageEntry.name & kHighBit) || (languageEntry.data & kHighBit))
                    continue;
                const auto dataEntry = at(languageEntry.data, 16);
                const auto rva = dataEntry ? reader.u32(*dataEntry) : std::nullopt;
                const auto size = dataEntry ? reader.u32(*dataEntry + 4) : std::nullopt;
                const auto codePage = dataEntry ? reader.u32(*dataEntry + 8) : std::nullopt;
                if (!rva || !size || !codePage)
                    continue;
                leaves.push_back(
                    {*type, *name, static_cast<quint16>(languageEntry.name), *rva, *size, *codePage});
                if (leaves.size() >= kMaxLeaves)
                    break;
            }
            if (leaves.size() >= kMaxLeaves)
                break;
        }
        types.push_back(std::move(node));
        if (leaves.size() >= kMaxLeaves)
            break;
    }
}

PeImage::PeImage()
    : d(std::make_unique<Impl>())
{
}
PeImage::~PeImage() = default;
PeImage::PeImage(PeImage&&) noexcept = default;
PeImage& PeImage::operator=(PeImage&&) noexcept = default;

PeImage PeImage::fromFile(const QString& path)
{
    PeImage image;
    image.d->path = path;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return image;
    Reader reader(&file);
    image.d->read(reader);
    image.d->index();
    return image;
}

PeImage PeImage::fromBytes(const QByteArray& bytes)
{
    PeImage image;
    image.d->bytes = bytes;
    Reader reader(bytes);
    image.d->read(reader);
    image.d->index();
    return image;
}

bool PeImage::isValid() const
{
    return d->valid;
}

bool PeImage::is64() const
{
    return d->is64;
}

QString PeImage::path() const
{
    return d->path;
}

QList<Section> PeImage::sections() const
{
    return d->sections;
}

QList<ResourceId> PeImage::resourceTypes() const
{
    QList<ResourceId> types;
    types.reserve(d->types.size());
    for (const TypeNode& node : d->types)
        types.push_back(node.type);
    return types;
}

QList<ResourceId> PeImage::resourceNames(const ResourceId& type) const
{
    QList<ResourceId> names;
    for (const qsizetype node : d->typeNodes.value(exactKey(type)))
        names += d->types.at(node).names;
    return names;
}

QList<ResourceEntry> PeImage::resources() const
{
    return d->leaves;
}

std::optional<ResourceEntry> PeImage::find(const QString& typeText, const QString& nameText) const
{
    const auto nameNumber
        = nameText.startsWith(QLatin1Char('#')) ? decimalNumber(QStringView(nameText).mid(1)) : std::nullopt;
    const ResourceId name = nameNumber ? ResourceId::fromNumber(*nameNumber) : ResourceId::fromName(nameText);
    if (const auto typeNumber = decimalNumber(typeText)) {
        if (auto found = find(ResourceId::fromNumber(*typeNumber), name))
            return found;
    }
    return find(ResourceId::fromName(typeText), name);
}

std::optional<ResourceEntry> PeImage::find(const ResourceId& type, const ResourceId& name) const
{
    const auto found = d->firstLeaf.constFind(lookupKey(type, name));
    if (found != d->firstLeaf.constEnd())
        return d->leaves.at(found.value());
    return std::nullopt;
}

QByteArray PeImage::data(const ResourceEntry& entry) const
{
    if (entry.size == 0)
        return {};
    const auto offset = d->fileOffset(entry.dataRva, entry.size);
    if (!offset || *offset > d->fileSize - qint64(entry.size))
        return {};
    if (d->path.isEmpty())
        return d->bytes.mid(*offset, entry.size);
    // Read on demand: the file is opened for each resource, so the image holds no handle while it lives.
    QFile file(d->path);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(*offset))
        return {};
    QByteArray bytes = file.read(entry.size);
    return bytes.size() == qint64(entry.size) ? bytes : QByteArray();
}

} // namespace vindaro::info::pe
