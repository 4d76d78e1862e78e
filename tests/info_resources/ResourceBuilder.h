#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

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
