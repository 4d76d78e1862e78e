#include "resources/DialogTemplate.h"
#include "ResourceBuilder.h"

#include <QRect>

#include <gtest/gtest.h>

using namespace vindaro::info::resources;

class DialogForms : public ::testing::TestWithParam<bool>
{
};

TEST_P(DialogForms, HeaderFontAndControls)
{
    const bool extended = GetParam();
    const QByteArray bytes = dialogTemplate(extended);
    const auto parsed = parseDialogTemplate(bytes);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->extended, extended);
    EXPECT_EQ(parsed->style, 0x80C800C0u);
    EXPECT_EQ(parsed->exStyle, 0x100u);
    EXPECT_EQ(QRect(parsed->x, parsed->y, parsed->cx, parsed->cy), QRect(10, 20, 200, 100));
    EXPECT_EQ(parsed->menu, QStringLiteral("#7"));
    EXPECT_EQ(parsed->windowClass, QString());
    EXPECT_EQ(parsed->title, QStringLiteral("About"));
    EXPECT_EQ(parsed->pointSize, 8);
    EXPECT_EQ(parsed->fontName, QStringLiteral("MS Shell Dlg"));

    ASSERT_EQ(parsed->controls.size(), 4);
    const struct
    {
        const char* windowClass;
        const char* text;
        quint32 id;
        QRect rect;
    } rows[] = {
        {"BUTTON", "OK", 1, QRect(140, 80, 50, 14)},
        {"STATIC", "#101", extended ? 0x10000u : 0xFFFFu, QRect(7, -3, 21, 20)},
        {"SysLink", "<a>link</a>", 1001, QRect(7, 30, 100, 12)},
        {"EDIT", "", 1002, QRect(7, 50, 100, 12)},
    };
    for (int i = 0; i < 4; ++i) {
        const DialogControl& c = parsed->controls[i];
        EXPECT_EQ(c.windowClass, QString::fromLatin1(rows[i].windowClass)) << i;
        EXPECT_EQ(c.text, QString::fromLatin1(rows[i].text)) << i;
        EXPECT_EQ(c.id, rows[i].id) << i;
        EXPECT_EQ(QRect(c.x, c.y, c.cx, c.cy), rows[i].rect) << i;
    }
    EXPECT_EQ(parsed->controls[0].style, 0x50010001u);

    for (qsizetype size = 0; size < bytes.size(); ++size)
        EXPECT_FALSE(parseDialogTemplate(bytes.left(size))) << size;
}

INSTANTIATE_TEST_SUITE_P(ClassicAndExtended, DialogForms, ::testing::Bool());

// Without DS_SETFONT there is no font block; point size 0x7FFF (the message-box font) has nothing after it.
// Either way the one control must be read from the right place.
TEST(DialogTemplate, FontBlockOnlyWhenItIsThere)
{
    for (const bool messageBoxFont : {false, true}) {
        ResourceBuilder b;
        b.u32(messageBoxFont ? 0x80C80040 : 0x80C80000).u32(0).u16(1).u16(0).u16(0).u16(50).u16(40);
        b.u16(0).sz(QStringLiteral("Cls")).sz({});
        if (messageBoxFont)
            b.u16(0x7FFF);
        b.align4().u32(0).u32(0).u16(1).u16(2).u16(3).u16(4).u16(5).u16(0xFFFF).u16(0x80).sz({}).u16(0);
        const auto parsed = parseDialogTemplate(b.bytes);
        ASSERT_TRUE(parsed) << messageBoxFont;
        EXPECT_EQ(parsed->pointSize, 0);
        EXPECT_EQ(parsed->windowClass, QStringLiteral("Cls"));
        ASSERT_EQ(parsed->controls.size(), 1);
        EXPECT_EQ(parsed->controls[0].id, 5u);
    }
}
