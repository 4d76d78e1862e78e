// The resource browser's decisions without its widgets; its texts and export filters are in the golden file
// of tests/info.
#include "ResourceBrowserModel.h"

#include <gtest/gtest.h>

using namespace vindaro::info;

namespace {

TEST(ResourceBrowserModel, NodeTypesAndNames)
{
    EXPECT_EQ(resourceTypeOfNode(QStringLiteral("#14"), QStringLiteral("Hardware-independent icon resource")),
        QStringLiteral("14"));
    EXPECT_EQ(resourceTypeOfNode(QString(), QStringLiteral("AVI")), QStringLiteral("AVI"));
    EXPECT_EQ(resourceNameOfNode(QStringLiteral("1")), QStringLiteral("#1"));
    EXPECT_EQ(resourceNameOfNode(QStringLiteral("MAINICON")), QStringLiteral("MAINICON"));
    EXPECT_EQ(resourceNameOfNode(QStringLiteral("-1")), QStringLiteral("-1"));
}

TEST(ResourceBrowserModel, ExportWritesByEnding)
{
    const struct
    {
        ExportContent content;
        const char* file;
        ExportWrite write;
    } cases[] = {{ExportContent::Text, "/t/menu.TXT", ExportWrite::TextFile},
        {ExportContent::Text, "/t/menu.doc", ExportWrite::Nothing},
        {ExportContent::AllStringTables, "/t/all.txt", ExportWrite::TextFile},
        {ExportContent::Picture, "/t/a.ico", ExportWrite::IconFile},
        {ExportContent::Picture, "/t/a.Cur", ExportWrite::IconFile},
        {ExportContent::Picture, "/t/a.bmp", ExportWrite::BitmapFile},
        {ExportContent::Picture, "/t/a.png", ExportWrite::Nothing},
        {ExportContent::Bytes, "/t/a", ExportWrite::RawBytes}};
    for (const auto& c : cases)
        EXPECT_EQ(exportWriteFor(c.content, QString::fromLatin1(c.file)), c.write) << c.file;
}

} // namespace
