#pragma once
// MPEG program streams made up for the tests: pack headers written bit by bit, each pack filled with a
// padding packet whose bytes hold chance start codes (00 00 01 BA followed by bytes no pack header has).
#include <QByteArray>
#include <QtGlobal>

namespace vindaro::testing {

inline QByteArray mpeg1PackHeader(qint64 scr90kHz, quint32 muxRate = 3528)
{
    const qint64 s = scr90kHz;
    const char bytes[12] = {0, 0, 1, char(0xBA), char(0x21 | ((s >> 30) & 7) << 1), char(s >> 22),
        char(((s >> 15) & 0x7F) << 1 | 1), char(s >> 7), char((s & 0x7F) << 1 | 1),
        char(0x80 | ((muxRate >> 15) & 0x7F)), char(muxRate >> 7), char((muxRate & 0x7F) << 1 | 1)};
    return QByteArray(bytes, 12);
}

inline QByteArray mpeg2PackHeader(qint64 clock27MHz, quint32 muxRate = 25200)
{
    const qint64 s = clock27MHz / 300;
    const qint64 e = clock27MHz % 300;
    const char bytes[14] = {0, 0, 1, char(0xBA), char(0x44 | ((s >> 30) & 7) << 3 | ((s >> 28) & 3)),
        char(s >> 20), char(((s >> 15) & 0x1F) << 3 | 0x04 | ((s >> 13) & 3)), char(s >> 5),
        char((s & 0x1F) << 3 | 0x04 | ((e >> 7) & 3)), char((e & 0x7F) << 1 | 1), char(muxRate >> 14),
        char(muxRate >> 6), char((muxRate & 0x3F) << 2 | 3), char(0xF8)};
    return QByteArray(bytes, 14);
}

// `packs` packs of `packBytes` bytes; pack i carries the clock first27MHz + i * step27MHz.
inline QByteArray programStream(bool mpeg2, int packs, int packBytes, qint64 first27MHz, qint64 step27MHz)
{
    QByteArray stream;
    stream.reserve(qsizetype(packs) * packBytes);
    for (int i = 0; i < packs; ++i) {
        const qint64 clock = first27MHz + i * step27MHz;
        QByteArray pack = mpeg2 ? mpeg2PackHeader(clock) : mpeg1PackHeader(clock / 300);
        const int padding = packBytes - int(pack.size()) - 6;
        pack += QByteArray("\x00\x00\x01\xBE", 4) + char(padding >> 8) + char(padding & 0xFF);
        QByteArray fill(padding, char(0xFF));
        for (int at = 100; at + 12 < padding; at += 700)
            fill.replace(at, 4, QByteArray("\x00\x00\x01\xBA", 4)); // a chance start code, no header after it
        stream += pack + fill;
    }
    return stream;
}

} // namespace vindaro::testing
