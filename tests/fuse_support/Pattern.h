#pragma once

namespace fusefs {

// The bytes of the tests' FUSE files: they depend on the position, with a period no block size divides, so a
// byte that lands in the wrong place shows.
constexpr char patternByte(long long offset)
{
    return static_cast<char>((offset * 7 + offset / 251) & 0xFF);
}

} // namespace fusefs
