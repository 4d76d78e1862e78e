#pragma once

#include <QtGlobal>

namespace vindaro::disc {

constexpr qint64 kRawSectorBytes = 2352; // a whole sector: sync, header and the rest
constexpr qint64 kMode2SectorBytes = 2336; // a Mode 2 sector after sync and header
constexpr qint64 kForm2PayloadBytes = 2324; // what a Form 2 sector carries for its file
constexpr qint64 kDataSectorBytes = 2048; // user data of a Mode 1 or Mode 2 Form 1 sector
constexpr qint64 kSubheaderBytes = 8;

// A Mode 2 sector as READ CD returns it with sub-header, user data and EDC (2,336 bytes):
//   0..3       sub-header: file number, channel, submode, coding; 4..7 the same again
//   Form 2 (submode bit 5 set):
//     8..2331    payload
//     2332..2335 EDC over 0..2331, little-endian; 0 when none was recorded (the format allows that)
//   Form 1:
//     8..2055    user data
//     2056..2059 EDC over 0..2055, then 276 bytes of error correction
// A damaged submode byte puts the EDC check in the wrong place, which fails it: such a sector is
// unreadable rather than data.
struct Mode2Sector
{
    bool form2 = false;
    bool edcRecorded = false;
    bool good = false; // the EDC matches, or a Form 2 sector recorded none
};
Mode2Sector inspectMode2Sector(const char* sector);

// A whole sector of a raw (2,352 bytes a sector) image:
//   0..11 sync, 12..14 address, 15 mode;
//   Mode 1: 16..2063 user data, 2064..2067 EDC over 0..2063, then zeros and error correction;
//   Mode 2: 16..2351 as inspectMode2Sector() describes.
// The user data of a Mode 1 or Mode 2 Form 1 sector, checked by its EDC.
enum class DataSector
{
    Good, // `offset` says where its 2,048 bytes start
    EdcMismatch,
    NotData, // an audio, empty or Form 2 sector: no 2,048 bytes of user data
};
DataSector inspectRawDataSector(const char* raw, qint64& offset);

} // namespace vindaro::disc
