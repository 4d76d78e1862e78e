#pragma once

#include <QString>
#include <QtGlobal>

namespace vindaro::disc {

// The three figures of a drive's sense data that say why a command failed.
struct SenseData
{
    bool valid = false; // false: the drive said nothing (a timeout, a transport failure)
    int key = 0;
    int asc = 0; // additional sense code
    int ascq = 0; // its qualifier
};

// Sense data in fixed format (response code 0x70/0x71: key in byte 2, ASC and ASCQ in bytes 12 and 13) or
// descriptor format (0x72/0x73: bytes 1, 2 and 3); anything shorter or else is not valid.
SenseData parseSense(const quint8* bytes, int length);

// What a failed READ CD of one sector means.
enum class ReadFailure
{
    MediumError, // the sector cannot be read (a scratch, a tracking failure): skip it
    IllegalMode, // the sector is not a Mode 2 sector (an audio or Mode 1 sector where the file said Form 2)
    OutOfRange, // past the end of what is recorded: no later sector reads either
    NoDisc, // the drive holds no disc, or is not ready and will not become so by itself
    DiscChanged, // the disc was changed since it was opened: its files are not this one's
    Transient, // becoming ready, a reset, an aborted command: the same read again may work
    Unsupported, // the drive does not know READ CD as asked
    Recovered, // the drive corrected the data itself: use it, its EDC still decides
    Unknown, // no sense data, or none we know
};
ReadFailure classifySense(const SenseData& sense);

// What the reader does about a failure: how often it asks again, and the errno it reports when it gives up.
struct ReadVerdict
{
    ReadFailure failure = ReadFailure::Unknown;
    int retries = 0;
    int error = 0; // 0: the data is used
};
ReadVerdict readVerdict(const SenseData& sense);

// The failure in the program's words for the log, with the drive's figures ("介质错误（3/11/00）").
QString senseText(const SenseData& sense);

} // namespace vindaro::disc
