#include "resources/DialogTemplate.h"
#include "ResourceBuilder.h"

#include <QRect>

#include <gtest/gtest.h>

using namespace vindaro::info::resources;

namespace {

// The same dialog in both forms: "About" at (10, 20) 200×100 with 8-point "MS Shell Dlg", an OK button
// (class ordinal 0x80, id 1), an icon (STATIC, caption ordinal 101, id 0xFFFF...), and a control of a named
// class with 6 bytes of creation data, followed by a fourth control that must still be found.
QByteArray dialog(bool extended)
{
    ResourceBuilder b;
    const quint32 style = 0x80C800C0; // DS_SETFONT among others
    if (extended)
        b.u16(1).u16(0xFFFF).u32(0).u32(0x100).u32(style);
    else
        b.u32(style).u32(0x100);
    b.u16(4).u16(10).u16(20).u16(200).u16(100);
    b.u16(0xFFFF).u16(7); // menu #7
    b.u16(0); // no class
    b.sz(QStringLiteral("About"));
    b.u16(8);
    if (extended)
        b.u16(400).u8(0).u8(1);
    b.sz(QStringLiteral("MS Shell Dlg"));
    auto control = [&b, extended](quint32 controlStyle, int x, int y, int cx, int cy, quint32 id) {
        b.align4();
        if (extended)
            b.u32(0).u32(0).u32(controlStyle);
        else
            b.u32(controlStyle).u32(0);
        b.u16(static_cast<quint32>(x)).u16(static_cast<quint32>(y)).u16(static_cast<quint32>(cx));
        b.u16(static_cast<quint32>(cy));
        if (extended)
            b.u32(id);
        else
            b.u16(id);
    };
    control(0x50010001, 140, 80, 50, 14, 1);
    b.u16(0xFFFF).u16(0x80).sz(QStringLiteral("OK")).u16(0);
    control(0x50000003, 7, -3, 21, 20, extended ? 0x10000 : 0xFFFF);
    b.u16(0xFFFF).u16(0x82).u16(0xFFFF).u16(101).u16(0);
    control(0x50000000, 7, 30, 100, 12, 1001);
    b.sz(QStringLiteral("SysLink")).sz(QStringLiteral("<a>link</a>")).u16(6).u16(1).u16(2).u16(3);
    control(0x50000000, 7, 50, 100, 12, 1002);
    b.u16(0xFFFF).u16(0x81).sz({}).u16(0);
    return b.bytes;
}

} // namespace

class DialogForms : public ::testing::TestWithParam<bool>
{
};

TEST_P(DialogForms, HeaderFontAndControls)
{
    const bool extended = GetParam();
    const QByteArray bytes = dialog(extended);
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
