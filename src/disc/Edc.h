#pragma once

#include <QtGlobal>

namespace vindaro::disc {

// The error-detection code of a CD data sector: a 32-bit CRC with the polynomial
// (x^16 + x^15 + x^2 + 1)(x^16 + x^2 + x + 1), bits taken least significant first, starting from 0 and
// stored little-endian after the bytes it covers.
quint32 sectorEdc(const char* data, qsizetype bytes);

} // namespace vindaro::disc
