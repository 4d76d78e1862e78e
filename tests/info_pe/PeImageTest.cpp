#include "pe/PeImage.h"
#include "PeBuilder.h"
#include "info/InfoSamples.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vindaro::info::pe::PeImage;
using vindaro::info::pe::ResourceEntry;
using vindaro::info::pe::ResourceId;
using vindaro::testing::PeBuilder;

namespace {

constexpr quint32 kRsrc = PeBuilder::kResourceFileOffset;

QStringList texts(const QList<ResourceId>& ids)
{
    QStringList list;
    for (const ResourceId& id : ids)
        list << (id.isInteger ? QStringLiteral("#") : QString()) + id.text();
    return list;
}

// A module with integer and named types and names, several languages, and a named type "23" that only
// the fallback of find() reaches.
PeBuilder sampleModule(bool pe32Plus)
{
    PeBuilder pe(pe32Plus);
    pe.add(14, 1, 0x0804, "icon group")
        .add(6, 2, 0x0804, "strings 17-32")
        .add(6, 1, 0x0804, "strings 1-16")
        .add(14, "MAINICON", 0x0409, "named icon")
        .add("AVI", "INTRO", 0x0804, "avi", 936)
        .add("23", 1, 0x0409, "named type 23")
        .add(10, 7, 0x0804, "raw zh")
        .add(10, 7, 0x0409, "raw en");
    return pe;
}

QByteArray dataOf(const PeImage& image, const QString& type, const QString& name)
{
    const auto entry = image.find(type, name);
    return entry ? image.data(*entry) : QByteArray("<none>");
}

// A module whose resource section is replaced by `section` (offsets relative to its start).
QByteArray withResourceSection(const QByteArray& section)
{
    QByteArray module = PeBuilder().add(10, 1, 0, QByteArray(section.size() + 64, '\0')).build();
    module.replace(kRsrc, section.size(), section);
    return module;
}

} // namespace

TEST(PeImage, HeadersValidAndInvalid)
{
    const QByteArray pe32 = sampleModule(false).build();
    const QByteArray pe64 = sampleModule(true).build();
    auto patched = [](QByteArray bytes, qsizetype at, QByteArray with) {
        return bytes.replace(at, with.size(), with);
    };
    struct Row
    {
        const char* what;
        QByteArray bytes;
        bool valid;
        bool is64;
        qsizetype sections;
        qsizetype types;
    };
    const Row rows[] = {
        {"PE32", pe32, true, false, 2, 5},
        {"PE32+", pe64, true, true, 2, 5},
        {"no resources", PeBuilder(true).build(), true, true, 1, 0},
        {"empty", QByteArray(), false, false, 0, 0},
        {"no MZ", patched(pe32, 0, "ZM"), false, false, 0, 0},
        {"e_lfanew past the end", patched(pe32, 0x3C, QByteArray("\xF0\xFF\xFF\x7F", 4)), false, false, 0, 0},
        {"no PE signature", patched(pe32, PeBuilder::kPeHeaderOffset, "NE"), false, false, 0, 0},
        {"ROM optional header", patched(pe32, PeBuilder::kPeHeaderOffset + 24, QByteArray("\x07\x01", 2)),
            false, false, 0, 0},
        // headers end before the section table: valid, but nothing to map RVAs with
        {"cut after the optional header magic", pe32.left(0x100), true, false, 0, 0},
        // 112 bytes of optional header end just before the resource entry (the section table read there is
        // junk)
        {"optional header too short for the resource entry",
            patched(pe32, PeBuilder::kPeHeaderOffset + 20, QByteArray("\x70\x00", 2)), true, false, 2, 0},
        // the root is whole; the named types' names and every type's directory are cut off
        {"cut inside the resource section", pe32.left(kRsrc + 0x40), true, false, 2, 3},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const PeImage image = PeImage::fromBytes(row.bytes);
        EXPECT_EQ(image.isValid(), row.valid);
        EXPECT_EQ(image.is64(), row.is64);
        EXPECT_EQ(image.sections().size(), row.sections);
        EXPECT_EQ(image.resourceTypes().size(), row.types);
    }
}

class PeImageKinds : public testing::TestWithParam<bool>
{
};

TEST_P(PeImageKinds, TreeInDirectoryOrderWithDataAndCodePages)
{
    const PeImage image = PeImage::fromBytes(sampleModule(GetParam()).build());
    ASSERT_TRUE(image.isValid());
    EXPECT_EQ(image.sections().at(1).name, QStringLiteral(".rsrc"));
    EXPECT_EQ(texts(image.resourceTypes()), QStringList({"23", "AVI", "#6", "#10", "#14"}));
    EXPECT_EQ(texts(image.resourceNames(ResourceId::fromNumber(14))), QStringList({"MAINICON", "#1"}));
    EXPECT_EQ(texts(image.resourceNames(ResourceId::fromNumber(6))), QStringList({"#1", "#2"}));
    EXPECT_EQ(texts(image.resourceNames(ResourceId::fromName("AVI"))), QStringList({"INTRO"}));
    EXPECT_TRUE(image.resourceNames(ResourceId::fromNumber(3)).isEmpty());

    const QList<ResourceEntry> all = image.resources();
    ASSERT_EQ(all.size(), 8);
    EXPECT_EQ(all.at(0).type, ResourceId::fromName("23"));
    EXPECT_EQ(all.at(1).codePage, 936u);
    // languages ascending below one name
    EXPECT_EQ(all.at(4).language, 0x0409);
    EXPECT_EQ(all.at(5).language, 0x0804);
    for (const ResourceEntry& entry : all) {
        EXPECT_GE(entry.dataRva, PeBuilder::kResourceRva);
        EXPECT_EQ(image.data(entry).size(), qsizetype(entry.size));
    }
    EXPECT_EQ(image.data(all.at(1)), QByteArray("avi"));
}

INSTANTIATE_TEST_SUITE_P(Pe32AndPe32Plus, PeImageKinds, testing::Bool());

TEST(PeImage, FindAsTheBrowserNamesResources)
{
    const PeImage image = PeImage::fromBytes(sampleModule(false).build());
    const struct
    {
        const char* type;
        const char* name;
        QByteArray expected;
    } rows[] = {
        {"14", "#1", "icon group"},
        {"14", "1", "<none>"}, // without "#" a name is a text
        {"14", "MAINICON", "named icon"},
        {"14", "mainicon", "named icon"}, // names ignore case, as the platform's lookup does
        {"6", "#2", "strings 17-32"},
        {"AVI", "INTRO", "avi"},
        {"avi", "Intro", "avi"},
        {"23", "#1", "named type 23"}, // no integer type 23: found as the named type "23"
        {"10", "#7", "raw en"}, // the first language
        {"010", "#7", "raw en"},
        {"70000", "#1", "<none>"}, // not a 16-bit number, and no type of that name
        {"14", "#70000", "<none>"},
        {"14", "#", "<none>"},
        {"", "", "<none>"},
        {"+14", "#1", "<none>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.type) + " / " + row.name);
        EXPECT_EQ(dataOf(image, QString::fromUtf8(row.type), QString::fromUtf8(row.name)), row.expected);
    }
}

TEST(PeImage, DamagedResourcesGiveWhatCouldBeRead)
{
    const QByteArray good = sampleModule(false).build();
    // Root directory at kRsrc: 16 bytes of header, then 2 named + 3 integer type entries of 8 bytes.
    auto patched32 = [&good](quint32 at, quint32 value) {
        QByteArray bytes = good;
        PeBuilder::put32(bytes, at, value);
        return bytes;
    };
    const quint32 firstTypeData = kRsrc + 16 + 4;
    struct Row
    {
        const char* what;
        QByteArray bytes;
        QStringList types;
        qsizetype leaves;
    };
    const Row rows[] = {
        {"type pointing back at the root", patched32(firstTypeData, 0x80000000u), {"AVI", "#6", "#10", "#14"},
            7},
        {"type pointing past the end", patched32(firstTypeData, 0x80FFFFF0u),
            {"23", "AVI", "#6", "#10", "#14"}, 7},
        {"type name past the end", patched32(kRsrc + 16, 0xFFFFFFF0u), {"AVI", "#6", "#10", "#14"}, 7},
        {"type entry is a leaf", patched32(firstTypeData, 0x10), {"AVI", "#6", "#10", "#14"}, 7},
        {"resource directory RVA not mapped",
            patched32(PeBuilder::kPeHeaderOffset + 24 + 96 + 16, 0x00F00000), {}, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const PeImage image = PeImage::fromBytes(row.bytes);
        EXPECT_EQ(texts(image.resourceTypes()), row.types);
        EXPECT_EQ(image.resources().size(), row.leaves);
    }
}

TEST(PeImage, SharedDirectoriesAreFollowedOnce)
{
    // Root, type and name directories of 1,000 entries each, every entry pointing at the same next directory:
    // followed naively that is 10^9 leaves. Each directory is followed once: one type, one name.
    const quint32 fan = 1000;
    const quint32 typeDir = 16 + 8 * fan;
    const quint32 nameDir = typeDir + 16 + 8 * fan;
    const quint32 dataEntry = nameDir + 16 + 8 * fan;
    QByteArray section(dataEntry + 16 + 4, '\0');
    for (const quint32 dir : {0u, typeDir, nameDir}) {
        PeBuilder::put16(section, dir + 14, fan);
        for (quint32 i = 0; i < fan; ++i) {
            PeBuilder::put32(section, dir + 16 + 8 * i, 1 + i);
            const quint32 next = dir == 0 ? typeDir : dir == typeDir ? nameDir : 0;
            PeBuilder::put32(section, dir + 20 + 8 * i, next ? 0x80000000u | next : dataEntry);
        }
    }
    PeBuilder::put32(section, dataEntry, PeBuilder::kResourceRva + dataEntry + 16);
    PeBuilder::put32(section, dataEntry + 4, 4);
    section.replace(dataEntry + 16, 4, "DATA");
    const PeImage image = PeImage::fromBytes(withResourceSection(section));
    ASSERT_EQ(image.resourceTypes().size(), 1);
    // its 1,000 languages share one data entry; they are leaves of their own
    EXPECT_EQ(image.resources().size(), 1000);
    EXPECT_EQ(image.resourceNames(ResourceId::fromNumber(1)).size(), 1);
    EXPECT_EQ(image.data(image.resources().at(0)), QByteArray("DATA"));

    // Counts of 65,535 + 65,535 entries in a section that holds few: the walk stops at the section's end.
    QByteArray counted = section;
    PeBuilder::put16(counted, 12, 0xFFFF);
    PeBuilder::put16(counted, 14, 0xFFFF);
    EXPECT_LE(PeImage::fromBytes(withResourceSection(counted)).resources().size(), 1000);
}

TEST(PeImage, DataOutsideTheFileIsEmpty)
{
    const PeImage image = PeImage::fromBytes(sampleModule(false).build());
    ResourceEntry entry = image.resources().at(0);
    const struct
    {
        quint32 rva;
        quint32 size;
    } rows[] = {{entry.dataRva, 0}, {entry.dataRva, 0xFFFFFFFFu}, {0xFFFFFFF0u, 0x20},
        {0x1500, 4} /* .text has no raw bytes there */};
    for (const auto& row : rows) {
        entry.dataRva = row.rva;
        entry.size = row.size;
        EXPECT_TRUE(image.data(entry).isEmpty()) << row.rva << " " << row.size;
    }
}

TEST(PeImage, FromFileReadsTheSameAsFromBytes)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("模块.dll"));
    const QByteArray bytes = sampleModule(true).build();
    ASSERT_TRUE(vindaro::testing::writeFile(path, bytes));

    const PeImage fromFile = PeImage::fromFile(path);
    const PeImage fromBytes = PeImage::fromBytes(bytes);
    EXPECT_EQ(fromFile.path(), path);
    EXPECT_TRUE(fromFile.is64());
    ASSERT_EQ(fromFile.resources().size(), fromBytes.resources().size());
    for (const ResourceEntry& entry : fromFile.resources())
        EXPECT_EQ(fromFile.data(entry), fromBytes.data(entry));

    // the file shrinks after the tree was read: its resources are gone, nothing else happens
    ASSERT_TRUE(QFile::resize(path, kRsrc));
    EXPECT_TRUE(fromFile.data(fromFile.resources().last()).isEmpty());
    EXPECT_FALSE(PeImage::fromFile(dir.filePath(QStringLiteral("missing.dll"))).isValid());
}
