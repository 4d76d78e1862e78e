#include "Edc.h"

#include <array>

namespace vindaro::disc {

namespace {

// The polynomial 0x8001801B with its bits reversed, for the least-significant-first register.
constexpr quint32 kReversedPolynomial = 0xD8018001u;

constexpr std::array<quint32, 256> makeTable()
{
    std::array<quint32, 256> table{};
    for (quint32 i = 0; i < 256; ++i) {
        quint32 r = i;
        for (int bit = 0; bit < 8; ++bit)
            r = (r >> 1) ^ ((r & 1u) ? kReversedPolynomial : 0u);
        table[i] = r;
    }
    return table;
}

constexpr std::array<quint32, 256> kTable = makeTable();

} // namespace

quint32 sectorEdc(const char* data, qsizetype bytes)
{
    quint32 edc = 0;
    for (qsizetype i = 0; i < bytes; ++i)
        edc = kTable[(edc ^ static_cast<quint8>(data[i])) & 0xFFu] ^ (edc >> 8);
    return edc;
}

} // namespace vindaro::disc
