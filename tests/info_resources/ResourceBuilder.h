#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

#include <utility>

// Little-endian resource bytes written by a test.
struct ResourceBuilder
{
    QByteArray bytes;

    ResourceBuilder& u8(quint32 value)
    {
        bytes.append(static_cast<char>(value & 0xFF));
        return *this;
    }
    ResourceBuilder& u16(quint32 value) { return u8(value).u8(value >> 8); }
    ResourceBuilder& u32(quint32 value) { return u16(value & 0xFFFF).u16(value >> 16); }
    // UTF-16 text and its NUL.
    ResourceBuilder& sz(const QString& text)
    {
        for (QChar c : text)
            u16(c.unicode());
        return u16(0);
    }
    ResourceBuilder& raw(const QByteArray& more)
    {
        bytes.append(more);
        return *this;
    }
    ResourceBuilder& align4()
    {
        while (bytes.size() % 4 != 0)
            u8(0);
        return *this;
    }
};

// A 32-bit icon image as a module holds it: BITMAPINFOHEADER with the height doubled, bottom-up colour rows
// (all `argb`), then the AND mask rows (all 0: opaque).
inline QByteArray iconDib(int size, quint32 argb)
{
    ResourceBuilder b;
    b.u32(40).u32(static_cast<quint32>(size)).u32(static_cast<quint32>(2 * size)).u16(1).u16(32);
    b.u32(0).u32(0).u32(0).u32(0).u32(0).u32(0);
    for (int i = 0; i < size * size; ++i)
        b.u32(argb);
    b.raw(QByteArray(size * ((size + 31) / 32) * 4, '\0'));
    return b.bytes;
}

// A string table: 16 counted UTF-16 strings at their places (0..15), the others empty.
inline QByteArray stringTable(const QList<std::pair<int, QString>>& strings)
{
    ResourceBuilder b;
    for (int i = 0; i < 16; ++i) {
        QString text;
        for (const auto& [at, value] : strings)
            text = at == i ? value : text;
        b.u16(static_cast<quint32>(text.size()));
        for (QChar c : text)
            b.u16(c.unicode());
    }
    return b.bytes;
}

// An icon group: per entry its width and height, the member's size in bytes and the member's number.
struct IconGroupEntry
{
    int size;
    qsizetype bytes;
    quint16 member;
};
inline QByteArray iconGroup(const QList<IconGroupEntry>& entries)
{
    ResourceBuilder group;
    group.u16(0).u16(1).u16(static_cast<quint32>(entries.size()));
    for (const IconGroupEntry& e : entries) {
        group.u8(static_cast<quint32>(e.size)).u8(static_cast<quint32>(e.size)).u8(0).u8(0).u16(1).u16(32);
        group.u32(static_cast<quint32>(e.bytes)).u16(e.member);
    }
    return group.bytes;
}

// The same dialog in both forms: "About" at (10, 20) 200×100 with 8-point "MS Shell Dlg", an OK button
// (class ordinal 0x80, id 1) at (140, 80) 50×14, an icon (STATIC, caption ordinal 101, id 0xFFFF...), and a
// control of a named class with 6 bytes of creation data, followed by a fourth control that must still be
// found.
inline QByteArray dialogTemplate(bool extended)
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
        for (const int value : {x, y, cx, cy})
            b.u16(static_cast<quint32>(value));
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
