#include "DialogTemplate.h"

#include "ResourceBytes.h"

namespace vindaro::info::resources {

namespace {

constexpr quint32 kDsSetFont = 0x40;

// A name or an ordinal: WORD 0 (none), WORD 0xFFFF then the ordinal, or UTF-16 text with its NUL.
struct NameOrOrdinal
{
    QString text;
    std::optional<quint16> ordinal;
};

std::optional<NameOrOrdinal> readNameOrOrdinal(ResourceBytes& in)
{
    const qsizetype start = in.offset();
    const auto first = in.u16();
    if (!first)
        return std::nullopt;
    NameOrOrdinal name;
    if (*first == 0)
        return name;
    if (*first == 0xFFFF) {
        name.ordinal = in.u16();
        if (!name.ordinal)
            return std::nullopt;
        name.text = QStringLiteral("#%1").arg(*name.ordinal);
        return name;
    }
    in.seek(start);
    const auto text = in.utf16z();
    if (!text)
        return std::nullopt;
    name.text = *text;
    return name;
}

// The predefined window classes a control names by ordinal.
QString controlClassName(const NameOrOrdinal& name)
{
    static const char* const kClasses[] = {"BUTTON", "EDIT", "STATIC", "LISTBOX", "SCROLLBAR", "COMBOBOX"};
    if (name.ordinal && *name.ordinal >= 0x80 && *name.ordinal <= 0x85)
        return QString::fromLatin1(kClasses[*name.ordinal - 0x80]);
    return name.text;
}

// Controls, each on a DWORD boundary. Classic DLGITEMTEMPLATE: DWORD style, DWORD exStyle, SHORT x, y, cx,
// cy, WORD id. Extended DLGITEMTEMPLATEEX: DWORD helpId, DWORD exStyle, DWORD style, SHORT x, y, cx, cy,
// DWORD id. Both then: class and caption (name or ordinal), WORD creation-data size and that many bytes
// (skipped; the size word is not counted, as the dialog manager reads it).
bool readControls(ResourceBytes& in, bool extended, quint16 count, QList<DialogControl>& controls)
{
    for (quint16 i = 0; i < count; ++i) {
        if (!in.alignToDword())
            return false;
        DialogControl control;
        std::optional<quint32> style, exStyle, id;
        if (extended) {
            if (!in.u32()) // help id
                return false;
            exStyle = in.u32();
            style = in.u32();
        } else {
            style = in.u32();
            exStyle = in.u32();
        }
        const auto x = in.s16();
        const auto y = in.s16();
        const auto cx = in.s16();
        const auto cy = in.s16();
        if (extended) {
            id = in.u32();
        } else if (const auto shortId = in.u16()) {
            id = *shortId;
        }
        if (!style || !exStyle || !x || !y || !cx || !cy || !id)
            return false;
        const auto windowClass = readNameOrOrdinal(in);
        if (!windowClass)
            return false;
        const auto text = readNameOrOrdinal(in);
        if (!text)
            return false;
        const auto extra = in.u16();
        if (!extra || !in.skip(*extra))
            return false;
        control.windowClass = controlClassName(*windowClass);
        control.text = text->text;
        control.id = *id;
        control.style = *style;
        control.exStyle = *exStyle;
        control.x = *x;
        control.y = *y;
        control.cx = *cx;
        control.cy = *cy;
        controls.append(control);
    }
    return true;
}

} // namespace

// Classic DLGTEMPLATE: DWORD style, DWORD exStyle, WORD control count, SHORT x, y, cx, cy.
// Extended DLGTEMPLATEEX: WORD version 1, WORD 0xFFFF, DWORD helpId, DWORD exStyle, DWORD style, WORD control
// count, SHORT x, y, cx, cy.
// Both then: menu and class (name or ordinal), title (UTF-16 with its NUL), and with DS_SETFONT the font:
// WORD point size (extended: WORD weight, BYTE italic, BYTE charset), face name (UTF-16 with its NUL).
std::optional<DialogTemplate> parseDialogTemplate(const QByteArray& resource)
{
    ResourceBytes in(resource);
    DialogTemplate dialog;
    const auto version = in.u16();
    const auto signature = in.u16();
    if (!version || !signature)
        return std::nullopt;
    dialog.extended = *version == 1 && *signature == 0xFFFF;
    std::optional<quint32> style, exStyle;
    if (dialog.extended) {
        if (!in.u32()) // help id
            return std::nullopt;
        exStyle = in.u32();
        style = in.u32();
    } else {
        in.seek(0);
        style = in.u32();
        exStyle = in.u32();
    }
    const auto count = in.u16();
    const auto x = in.s16();
    const auto y = in.s16();
    const auto cx = in.s16();
    const auto cy = in.s16();
    if (!style || !exStyle || !count || !x || !y || !cx || !cy)
        return std::nullopt;
    dialog.style = *style;
    dialog.exStyle = *exStyle;
    dialog.x = *x;
    dialog.y = *y;
    dialog.cx = *cx;
    dialog.cy = *cy;
    const auto menu = readNameOrOrdinal(in);
    if (!menu)
        return std::nullopt;
    const auto windowClass = readNameOrOrdinal(in);
    if (!windowClass)
        return std::nullopt;
    const auto title = in.utf16z();
    if (!title)
        return std::nullopt;
    dialog.menu = menu->text;
    dialog.windowClass = windowClass->text;
    dialog.title = *title;
    if ((dialog.style & kDsSetFont) != 0) {
        const auto pointSize = in.u16();
        if (!pointSize)
            return std::nullopt;
        // 0x7FFF names the system's message-box font: no weight, italic or face follow, and the template
        // counts as naming no font of its own.
        if (*pointSize == 0x7FFF)
            return readControls(in, dialog.extended, *count, dialog.controls) ? std::optional(dialog)
                                                                              : std::nullopt;
        if (dialog.extended && !in.skip(2 + 1 + 1)) // weight, italic, charset
            return std::nullopt;
        const auto face = in.utf16z();
        if (!face)
            return std::nullopt;
        dialog.pointSize = *pointSize;
        dialog.fontName = *face;
    }
    if (!readControls(in, dialog.extended, *count, dialog.controls))
        return std::nullopt;
    return dialog;
}

} // namespace vindaro::info::resources
