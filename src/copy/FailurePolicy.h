#pragma once

#include "platform/FileIo.h"

namespace vindaro::copy {

// What went wrong with a file of a copy, named for what it means to the copy.
enum class Failure
{
    UnreadableStretch, // a read of the source failed past its first byte: a scratch to jump over
    UnreadableStart, // the source cannot be read from its first byte
    BadHandle, // the file handle went bad (EBADF): one block on
    InvalidArgument, // EINVAL: the user is asked whether to read the block again
    DiskFull,
    BadRecord, // ESPIPE, ENXIO: a file that cannot be read or written at positions
    SharingConflict, // EACCES, EPERM, EBUSY, ETXTBSY, EROFS
    NoMedium, // the source's optical drive has no readable disc (decided by the copy, not by the errno)
    Unknown, // a failure the system did not describe
    Described, // anything else: shown with its code and the system's words
};

// Which file a failure came from. Only the source can have unreadable stretches or sit on an optical
// drive; a destination that fails is reported, never skipped over.
enum class IoSide
{
    Source, // the source's length, open or read
    Destination, // the destination's open, write, sync or close
};

struct FileError
{
    Failure failure = Failure::Described;
    IoSide side = IoSide::Source;
    int code = 0; // the number shown in "[code]." boxes
    QString description; // the system's words, or the program's own for a few codes
};

// Sorts a failed I/O result by its errno (the number in brackets is the code a box shows):
//   EIO, ENODATA, EBADMSG, EILSEQ, EREMOTEIO, ETIMEDOUT, ENOLINK, EPROTO, ENOTRECOVERABLE
//                        -> UnreadableStretch [75] (medium, checksum and transport failures of a damaged
//                           disc: these must be skipped, never fatal)
//   EBADF                -> BadHandle [52]         ENOSPC, EDQUOT -> DiskFull [61]
//   ESPIPE, ENXIO        -> BadRecord [63]         EACCES, EPERM, EBUSY, ETXTBSY, EROFS -> SharingConflict
//   [70] EINVAL               -> InvalidArgument [5] EFBIG, EOVERFLOW     -> Described [6] "溢出"   ENOENT,
//   ENOTDIR, EISDIR -> Described [53] "文件未找到" ENOMEDIUM, ENODEV, ESTALE, ENOTCONN, ESHUTDOWN ->
//   Described [71] "磁盘未准备好" (the drive is gone) anything else        -> Described with the errno and
//   the system's text (Unknown without a text)
// A destination keeps only DiskFull and SharingConflict: every other failure of the file being written
// (EIO, ETIMEDOUT, ENODEV, ENOMEDIUM, ESTALE, a pulled stick, a dropped share...) is Described with its
// errno and the system's text, so it is never taken for an unreadable stretch or a missing disc.
FileError classify(const platform::IoResult& result, IoSide side);

// What the copy does about a failure.
enum class Action
{
    SkipBlock, // one block on
    SkipStretch, // a single copy jumps 8 x the skip slider's blocks, a batch a fixed 80 blocks
    AskRetry, // "try again?": Yes reads the block again; No ends the copy (the batch)
    EndWithBox, // a single copy: the cause logged (when it has one), the failure box, idle
    NextFile, // a batch: the cause logged (a described failure shown in a box), on with the next file
    EndBatchKeepRecord, // a batch: the cause logged, the batch ends and the file keeps its record
};

struct FailureRule
{
    Failure failure;
    Action single;
    Action batch;
};

inline constexpr FailureRule kFailureRules[] = {
    {Failure::UnreadableStretch, Action::SkipStretch, Action::SkipStretch},
    {Failure::UnreadableStart, Action::EndWithBox, Action::NextFile},
    {Failure::BadHandle, Action::SkipBlock, Action::SkipBlock},
    {Failure::InvalidArgument, Action::AskRetry, Action::AskRetry},
    {Failure::DiskFull, Action::EndWithBox, Action::EndBatchKeepRecord},
    {Failure::BadRecord, Action::EndWithBox, Action::NextFile},
    {Failure::SharingConflict, Action::EndWithBox, Action::NextFile},
    {Failure::NoMedium, Action::EndWithBox, Action::EndBatchKeepRecord},
    {Failure::Unknown, Action::EndWithBox, Action::NextFile},
    {Failure::Described, Action::EndWithBox, Action::NextFile},
};

Action actionFor(Failure failure, bool batch);

} // namespace vindaro::copy
