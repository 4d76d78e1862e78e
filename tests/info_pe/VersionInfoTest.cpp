#include "pe/VersionInfo.h"
#include "PeBuilder.h"
#include "pe/PeImage.h"

#include <gtest/gtest.h>

using namespace vindaro::info::pe;
using vindaro::testing::PeBuilder;

namespace {

using Strings = QList<std::pair<QString, QString>>;

// All eight keys, in an order other than the shown one, plus a key that is not shown.
const Strings kEight = {
    {"CompanyName", "维达罗工作室"},
    {"FileDescription", "Disc rescue"},
    {"Comments", "not shown"},
    {"FileVersion", "1.2.3.4"},
    {"InternalName", "vindaro"},
    {"LegalCopyright", "(C) 2026"},
    {"OriginalFilename", "vindaro.exe"},
    {"ProductName", "Vindaro"},
    {"ProductVersion", "1.2"},
};

const char* const kEightText = "OriginalFilename:\r\n\tvindaro.exe\r\n"
                               "InternalName:\r\n\tvindaro\r\n"
                               "FileVersion:\r\n\t1.2.3.4\r\n"
                               "FileDescription:\r\n\tDisc rescue\r\n"
                               "ProductName:\r\n\tVindaro\r\n"
                               "ProductVersion:\r\n\t1.2\r\n"
                               "CompanyName:\r\n\t维达罗工作室\r\n"
                               "LegalCopyright:\r\n\t(C) 2026";

Strings without(Strings strings, const QStringList& keys)
{
    strings.removeIf([&keys](const auto& s) { return keys.contains(s.first); });
    return strings;
}

} // namespace

TEST(VersionInfo, EightEntriesInKeyOrder)
{
    const QByteArray resource = PeBuilder::versionResource(kEight);
    EXPECT_EQ(versionText(resource), QString::fromUtf8(kEightText));
    EXPECT_EQ(versionLanguageTag(resource), QStringLiteral("080404B0"));
}

TEST(VersionInfo, TablesAndValues)
{
    const struct
    {
        const char* what;
        QByteArray resource;
        QString tag;
        QStringList keys; // the keys shown, in order
    } rows[] = {
        {"six entries", PeBuilder::versionResource(without(kEight, {"LegalCopyright", "InternalName"})),
            "080404B0",
            {"OriginalFilename", "FileVersion", "FileDescription", "ProductName", "ProductVersion",
                "CompanyName"}},
        {"empty values give nothing",
            PeBuilder::versionResource(
                {{"FileVersion", ""}, {"ProductName", "P"}, {"CompanyName", QString()}}),
            "080404B0", {"ProductName"}},
        {"US English, Windows Latin-1", PeBuilder::versionResource({{"ProductName", "P"}}, 0x0409, 0x04E4),
            "040904E4", {"ProductName"}},
        // no table under the translation's tag: the first table is shown
        {"table under another tag",
            PeBuilder::versionResource({{"ProductName", "P"}}, 0x0409, 0x04B0, QStringLiteral("000004B0")),
            "040904B0", {"ProductName"}},
        {"no version resource", QByteArray("garbage"), "", {}},
        {"empty", QByteArray(), "", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(versionLanguageTag(row.resource), row.tag);
        const QString text = versionText(row.resource);
        QStringList keys;
        const QStringList lines = text.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
        for (qsizetype i = 0; i < lines.size(); i += 2) {
            EXPECT_TRUE(lines.at(i).endsWith(QLatin1Char(':'))) << lines.at(i).toStdString();
            keys << lines.at(i).chopped(1);
            ASSERT_LT(i + 1, lines.size());
            EXPECT_TRUE(lines.at(i + 1).startsWith(QLatin1Char('\t')));
        }
        EXPECT_EQ(keys, row.keys);
    }
}

TEST(VersionInfo, ValueEndsAtItsFirstNul)
{
    EXPECT_EQ(
        versionText(PeBuilder::versionResource({{"ProductName", QString::fromLatin1("Vin\0garbage", 11)}})),
        QStringLiteral("ProductName:\r\n\tVin"));
}

// Cut anywhere, the resource gives a beginning of the full text and never reads past its end.
TEST(VersionInfo, TruncatedResourceGivesABeginningOfTheText)
{
    Strings ordered;
    for (const char* key : kVersionKeys)
        ordered.push_back(
            *std::find_if(kEight.begin(), kEight.end(), [key](const auto& s) { return s.first == key; }));
    const QByteArray full = PeBuilder::versionResource(ordered);
    const QString fullText = versionText(full);
    for (qsizetype length = 0; length < full.size(); ++length) {
        const QString text = versionText(full.left(length));
        EXPECT_TRUE(fullText.startsWith(text)) << length;
    }
}

TEST(VersionInfo, ModuleTextComesFromItsFirstVersionResource)
{
    PeBuilder pe;
    pe.add(3, 1, 0x0804, "icon")
        .add(16, 1, 0x0804, PeBuilder::versionResource(kEight))
        .add(16, 2, 0x0804, PeBuilder::versionResource({{"ProductName", "other"}}));
    EXPECT_EQ(moduleVersionText(PeImage::fromBytes(pe.build())), QString::fromUtf8(kEightText));
    EXPECT_TRUE(moduleVersionText(PeImage::fromBytes(PeBuilder().add(3, 1, 0, "icon").build())).isEmpty());
}
