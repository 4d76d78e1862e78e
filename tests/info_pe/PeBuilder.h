#pragma once

// Writes small Windows modules (PE32 or PE32+) with a resource section, byte by byte, for the tests.
//
//   PeBuilder pe;                                   // PE32; PeBuilder(true) for PE32+
//   pe.add(14, 1, 0x0409, iconGroupBytes);          // integer type and name
//   pe.add("AVI", "INTRO", 0x0804, aviBytes);       // named type and name
//   const QByteArray module = pe.build();
//
// The file has two sections: ".text" (RVA 0x1000, file offset 0x200, no content) and ".rsrc" (RVA 0x2000,
// file offset 0x400), so a reader that confuses RVAs with file offsets is caught. The directory is sorted
// as linkers sort it: named entries first by name (case-insensitive), then integer entries ascending.
// Without any resource there is no ".rsrc" section and the resource directory entry is zero.

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <map>
#include <utility>

namespace vindaro::testing {

class PeBuilder
{
public:
    // A resource type or name: a number or a text.
    struct Id
    {
        Id(int value)
            : number(static_cast<quint16>(value))
        {
        }
        Id(const char* text)
            : isNumber(false)
            , name(QString::fromUtf8(text))
        {
        }
        Id(QString text)
            : isNumber(false)
            , name(std::move(text))
        {
        }
        bool isNumber = true;
        quint16 number = 0;
        QString name;
    };

    // Where the resource section lies, for tests that damage it.
    static constexpr quint32 kResourceFileOffset = 0x400;
    static constexpr quint32 kResourceRva = 0x2000;
    static constexpr quint32 kPeHeaderOffset = 0x80;

    explicit PeBuilder(bool pe32Plus = false)
        : m_pe32Plus(pe32Plus)
    {
    }

    // Adds one leaf (type, name, language). A second leaf with the same three keys is ignored.
    PeBuilder& add(Id type, Id name, quint16 language, QByteArray bytes, quint32 codePage = 0)
    {
        m_tree[std::move(type)][std::move(name)].emplace(language, Leaf{std::move(bytes), codePage});
        return *this;
    }

    // The whole module.
    QByteArray build() const
    {
        const QByteArray rsrc = m_tree.empty() ? QByteArray() : resourceSection();
        const quint32 rsrcRaw = align(static_cast<quint32>(rsrc.size()), 0x200);
        QByteArray file(static_cast<qsizetype>(kResourceFileOffset + rsrcRaw), '\0');
        put16(file, 0, 0x5A4D); // "MZ"
        put32(file, 0x3C, kPeHeaderOffset);
        file.replace(0x40, 39, "This program cannot be run in DOS mode.");

        quint32 at = kPeHeaderOffset;
        put32(file, at, 0x00004550); // "PE\0\0"
        at += 4;
        const quint16 optionalBytes = m_pe32Plus ? 240 : 224;
        const quint16 sectionCount = rsrc.isEmpty() ? 1 : 2;
        put16(file, at, m_pe32Plus ? 0x8664 : 0x014C); // machine
        put16(file, at + 2, sectionCount);
        put32(file, at + 4, 0x3B9ACA00); // time stamp
        put16(file, at + 16, optionalBytes);
        put16(file, at + 18, 0x2102); // executable, 32-bit words, DLL
        at += 20;

        const quint32 optional = at;
        const quint32 imageSize = align(kResourceRva + static_cast<quint32>(rsrc.size()), 0x1000);
        put16(file, optional, m_pe32Plus ? 0x20B : 0x10B);
        // Offsets of the fields after the standard ones differ by 16 between PE32 and PE32+ (BaseOfData
        // is gone and ImageBase and the four stack and heap sizes are 64-bit).
        if (m_pe32Plus) {
            put32(file, optional + 24, 0x80000000); // ImageBase, low half
            put32(file, optional + 28, 0x1);
        } else {
            put32(file, optional + 28, 0x10000000); // ImageBase
        }
        put32(file, optional + 32, 0x1000); // section alignment
        put32(file, optional + 36, 0x200); // file alignment
        put16(file, optional + 40, 6); // OS version
        put16(file, optional + 48, 6); // subsystem version
        put32(file, optional + 56, imageSize);
        put32(file, optional + 60, 0x200); // size of headers
        put16(file, optional + 68, 2); // GUI subsystem
        const quint32 countField = optional + (m_pe32Plus ? 108 : 92);
        put32(file, countField, 16); // NumberOfRvaAndSizes
        const quint32 directories = countField + 4;
        if (!rsrc.isEmpty()) {
            put32(file, directories + 2 * 8, kResourceRva);
            put32(file, directories + 2 * 8 + 4, static_cast<quint32>(rsrc.size()));
        }

        at = optional + optionalBytes;
        writeSection(file, at, ".text", 0x10, 0x1000, 0x200, 0x200, 0x60000020);
        if (!rsrc.isEmpty()) {
            writeSection(file, at + 40, ".rsrc", static_cast<quint32>(rsrc.size()), kResourceRva, rsrcRaw,
                kResourceFileOffset, 0x40000040);
            file.replace(kResourceFileOffset, rsrc.size(), rsrc);
        }
        return file;
    }

    // The resource section alone: directory offsets relative to its start, data RVAs relative to
    // `kResourceRva`. Directory tables, then data entries, then name strings, then the data (8-aligned).
    QByteArray resourceSection() const
    {
        quint32 directoryBytes = dirBytes(m_tree.size());
        quint32 leafCount = 0;
        for (const auto& [type, names] : m_tree) {
            directoryBytes += dirBytes(names.size());
            for (const auto& [name, leaves] : names) {
                directoryBytes += dirBytes(leaves.size());
                leafCount += static_cast<quint32>(leaves.size());
            }
        }
        const quint32 stringsAt = directoryBytes + 16 * leafCount;
        QByteArray section(static_cast<qsizetype>(stringsAt), '\0');
        QByteArray strings;
        QByteArray data;
        QList<std::pair<quint32, quint32>> dataEntryFixups; // data entry offset, offset within `data`

        auto nameField = [&](const Id& id) -> quint32 {
            if (id.isNumber)
                return id.number;
            const quint32 offset = stringsAt + static_cast<quint32>(strings.size());
            putLe(strings, static_cast<quint32>(id.name.size()), 2);
            strings.append(reinterpret_cast<const char*>(id.name.utf16()), id.name.size() * 2);
            return 0x80000000u | offset;
        };
        // The next directory, depth first: its header, its entries written by the caller.
        quint32 nextDir = 0;
        auto directory = [&](std::size_t count, std::size_t named) {
            const quint32 at = nextDir;
            nextDir += dirBytes(count);
            put32(section, at + 4, 0x3B9ACA00);
            put16(section, at + 12, static_cast<quint32>(named));
            put16(section, at + 14, static_cast<quint32>(count - named));
            return at;
        };
        quint32 nextEntry = directoryBytes;
        const quint32 root = directory(m_tree.size(), countNamed(m_tree));
        quint32 t = 0;
        for (const auto& [type, names] : m_tree) {
            const quint32 typeDir = directory(names.size(), countNamed(names));
            put32(section, root + 16 + 8 * t, nameField(type));
            put32(section, root + 20 + 8 * t++, 0x80000000u | typeDir);
            quint32 n = 0;
            for (const auto& [name, leaves] : names) {
                const quint32 nameDir = directory(leaves.size(), 0);
                put32(section, typeDir + 16 + 8 * n, nameField(name));
                put32(section, typeDir + 20 + 8 * n++, 0x80000000u | nameDir);
                quint32 l = 0;
                for (const auto& [language, leaf] : leaves) {
                    put32(section, nameDir + 16 + 8 * l, language);
                    put32(section, nameDir + 20 + 8 * l++, nextEntry);
                    data.append((8 - data.size() % 8) % 8, '\0');
                    dataEntryFixups.push_back({nextEntry, static_cast<quint32>(data.size())});
                    put32(section, nextEntry + 4, static_cast<quint32>(leaf.bytes.size()));
                    put32(section, nextEntry + 8, leaf.codePage);
                    data += leaf.bytes;
                    nextEntry += 16;
                }
            }
        }
        section += strings;
        section.append((8 - section.size() % 8) % 8, '\0');
        const quint32 dataBase = static_cast<quint32>(section.size());
        for (const auto& [entry, offset] : dataEntryFixups)
            put32(section, entry, kResourceRva + dataBase + offset);
        return section + data;
    }

    // A version resource (VS_VERSIONINFO) with one string table holding `strings` in the given order and
    // a Translation value (language, code page). `tableKey` names the string table; empty: the 8 hex digits
    // of the translation ("080404B0").
    static QByteArray versionResource(const QList<std::pair<QString, QString>>& strings,
        quint16 language = 0x0804, quint16 codePage = 0x04B0, QString tableKey = {})
    {
        if (tableKey.isEmpty())
            tableKey = QStringLiteral("%1%2")
                           .arg(language, 4, 16, QLatin1Char('0'))
                           .arg(codePage, 4, 16, QLatin1Char('0'))
                           .toUpper();
        QList<QByteArray> children;
        for (const auto& [key, value] : strings) {
            QByteArray text = utf16z(value);
            children << block(key, text, static_cast<quint16>(value.size() + 1), 1, {});
        }
        const QByteArray table = block(tableKey, {}, 0, 1, children);
        const QByteArray stringInfo = block(QStringLiteral("StringFileInfo"), {}, 0, 1, {table});
        QByteArray translation;
        putLe(translation, language, 2);
        putLe(translation, codePage, 2);
        const QByteArray var = block(QStringLiteral("Translation"), translation, 4, 0, {});
        const QByteArray varInfo = block(QStringLiteral("VarFileInfo"), {}, 0, 1, {var});
        QByteArray fixed;
        putLe(fixed, 0xFEEF04BD, 4); // signature
        putLe(fixed, 0x00010000, 4); // structure version
        putLe(fixed, 0x00010002, 4); // file version 1.2.3.4
        putLe(fixed, 0x00030004, 4);
        putLe(fixed, 0x00010002, 4); // product version
        putLe(fixed, 0x00030004, 4);
        fixed += QByteArray(52 - fixed.size(), '\0');
        return block(QStringLiteral("VS_VERSION_INFO"), fixed, 52, 0, {stringInfo, varInfo});
    }

    // The text as UTF-16 little-endian with a closing NUL.
    static QByteArray utf16z(const QString& text)
    {
        QByteArray bytes(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
        bytes.append(2, '\0');
        return bytes;
    }

    static void putLe(QByteArray& bytes, quint64 value, int width)
    {
        for (int i = 0; i < width; ++i)
            bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
    }
    static void put16(QByteArray& bytes, quint32 at, quint32 value)
    {
        bytes[at] = static_cast<char>(value & 0xFF);
        bytes[at + 1] = static_cast<char>((value >> 8) & 0xFF);
    }
    static void put32(QByteArray& bytes, quint32 at, quint32 value)
    {
        put16(bytes, at, value & 0xFFFF);
        put16(bytes, at + 2, value >> 16);
    }

private:
    // Named entries first, by name ignoring case, then integer entries ascending.
    struct IdLess
    {
        bool operator()(const Id& a, const Id& b) const
        {
            if (a.isNumber != b.isNumber)
                return !a.isNumber;
            if (a.isNumber)
                return a.number < b.number;
            const int order = QString::compare(a.name, b.name, Qt::CaseInsensitive);
            return order != 0 ? order < 0 : a.name < b.name;
        }
    };
    struct Leaf
    {
        QByteArray bytes;
        quint32 codePage;
    };
    using Names = std::map<Id, std::map<quint16, Leaf>, IdLess>; // by name, then language

    template<typename Map> static std::size_t countNamed(const Map& nodes)
    {
        return static_cast<std::size_t>(
            std::count_if(nodes.begin(), nodes.end(), [](const auto& node) { return !node.first.isNumber; }));
    }
    static quint32 dirBytes(std::size_t entries) { return 16 + 8 * static_cast<quint32>(entries); }
    static quint32 align(quint32 value, quint32 to) { return (value + to - 1) / to * to; }

    static void writeSection(QByteArray& file, quint32 at, const char* name, quint32 virtualSize, quint32 rva,
        quint32 rawSize, quint32 rawOffset, quint32 characteristics)
    {
        file.replace(at, static_cast<qsizetype>(qstrlen(name)), name);
        put32(file, at + 8, virtualSize);
        put32(file, at + 12, rva);
        put32(file, at + 16, rawSize);
        put32(file, at + 20, rawOffset);
        put32(file, at + 36, characteristics);
    }

    // One block of the version resource: wLength, wValueLength, wType, the key (UTF-16, NUL), padding to
    // 32 bits, the value, padding, the children each starting on 32 bits. wLength leaves out the padding
    // after the block's last byte.
    static QByteArray block(const QString& key, const QByteArray& value, quint16 valueLength, quint16 type,
        const QList<QByteArray>& children)
    {
        QByteArray bytes(6, '\0');
        bytes += utf16z(key);
        while (bytes.size() % 4 != 0)
            bytes += '\0';
        bytes += value;
        for (const QByteArray& child : children) {
            while (bytes.size() % 4 != 0)
                bytes += '\0';
            bytes += child;
        }
        put16(bytes, 0, static_cast<quint32>(bytes.size()));
        put16(bytes, 2, valueLength);
        put16(bytes, 4, type);
        return bytes;
    }

    bool m_pe32Plus = false;
    std::map<Id, Names, IdLess> m_tree;
};

} // namespace vindaro::testing
