#include "ResourceBrowserModel.h"

#include <gtest/gtest.h>

using namespace vindaro::info;

namespace {

TEST(ResourceBrowserModel, NodeTypesNamesAndHeader)
{
    EXPECT_EQ(resourceTypeOfNode(QStringLiteral("#14"), QStringLiteral("Hardware-independent icon resource")),
        QStringLiteral("14"));
    EXPECT_EQ(resourceTypeOfNode(QString(), QStringLiteral("AVI")), QStringLiteral("AVI"));
    EXPECT_EQ(resourceNameOfNode(QStringLiteral("1")), QStringLiteral("#1"));
    EXPECT_EQ(resourceNameOfNode(QStringLiteral("MAINICON")), QStringLiteral("MAINICON"));
    EXPECT_EQ(resourceNameOfNode(QStringLiteral("-1")), QStringLiteral("-1"));

    const QString header = resourceHeaderText(QStringLiteral("Bitmap resource"), QStringLiteral("#7"), 17);
    EXPECT_EQ(header,
        QStringLiteral("ResourceType: Bitmap resource\r\nResourseName: #7\r\nResourceSize: 17 bytes\r\n")
            + QString(77, QLatin1Char('-')) + QStringLiteral("\r\n"));
    EXPECT_EQ(
        resourcePictureLines(QStringLiteral("Menu resource"), QStringLiteral("#2"), 0).join(QLatin1Char('|')),
        QStringLiteral("ResourceType: Menu resource|ResourceName: #2|ResourceSize: 0 bytes"));
}

TEST(ResourceBrowserModel, ExportPlans)
{
    const struct
    {
        const char* type;
        const char* name;
        const char* filter; // the Qt filter string; "" for "No resource selected!"
        ExportContent content;
    } cases[] = {
        {"1", "#1", "Cursor files (*.cur);;Bitmap files (*.bmp)", ExportContent::Picture},
        {"12", "#1", "Cursor files (*.cur);;Bitmap files (*.bmp)", ExportContent::Picture},
        {"2", "#1", "Bitmap files (*.bmp)", ExportContent::Picture},
        {"14", "#1", "Icon files(*.ico);;Bitmap files (*.bmp)", ExportContent::Picture},
        {"4", "#1", "Save as text (*.txt)", ExportContent::Text},
        {"16", "#1", "Save as text (*.txt)", ExportContent::Text},
        {"6", "#1", "Save as text (*.txt)", ExportContent::Text},
        {"6", "", "Save as text (*.txt)", ExportContent::AllStringTables},
        {"23", "#1", "HTML files (*.html)", ExportContent::Bytes},
        {"avi", "#1", "AVI files (*.avi)", ExportContent::Bytes},
        {"GIF", "LOGO", "GIF files (*.gif)", ExportContent::Bytes},
        {"10", "#1", "Save as data (*.*)", ExportContent::Bytes},
        {"10", "", "", ExportContent::Bytes},
        {"", "", "", ExportContent::Bytes},
    };
    for (const auto& c : cases) {
        const auto plan = exportPlanFor(QString::fromLatin1(c.type), QString::fromLatin1(c.name));
        if (!*c.filter) {
            EXPECT_FALSE(plan) << c.type;
            continue;
        }
        ASSERT_TRUE(plan) << c.type;
        EXPECT_EQ(qtFilterString(plan->filters), QString::fromLatin1(c.filter)) << c.type;
        EXPECT_EQ(plan->content, c.content) << c.type;
    }
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
