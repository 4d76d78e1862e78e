#pragma once

#include "platform/FileIo.h"

namespace vindaro::copy {

// The classes the copy engine sorts file failures into; each decides skip, question or failure box.
enum ErrorClass : int
{
    kOtherError = 0, // anything else: shown with its code and description
    kInvalidArgument = 5, // asks whether to try the same block again
    kOverflow = 6,
    kBadFileNumber = 52, // skip one block
    kFileNotFound = 53,
    kDiskFull = 61,
    kBadRecordNumber = 63,
    kPermissionDenied = 70,
    kDiskNotReady = 71, // no medium: reported as a drive that is not ready
    kPathAccess = 75, // an unreadable stretch of the source: skipped past position 1
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
    int errorClass = kOtherError;
    IoSide side = IoSide::Source;
    int code = 0; // the number shown in "[code]." boxes
    QString description; // may be empty: then the "unknown error" texts are shown
};

// Sorts a failed I/O result by its errno:
//   EIO, ENODATA, EBADMSG, EILSEQ, EREMOTEIO, ETIMEDOUT, ENOLINK, EPROTO, ENOTRECOVERABLE -> 75
//       (medium, checksum and transport failures of a damaged disc: these must be skipped, never fatal)
//   EBADF                       -> 52     ENOSPC, EDQUOT             -> 61
//   ESPIPE, ENXIO               -> 63     EACCES, EPERM, EBUSY, ETXTBSY, EROFS -> 70
//   EINVAL                      -> 5      EFBIG, EOVERFLOW           -> 6
//   ENOENT, ENOTDIR, EISDIR     -> 53     ENOMEDIUM, ENODEV, ESTALE, ENOTCONN, ESHUTDOWN -> 71 (drive gone)
//   anything else               -> other, with the errno as code and the system's text
// A destination keeps only the disk-full and permission classes: every other failure of the file being
// written (EIO, ETIMEDOUT, ENODEV, ENOMEDIUM, ESTALE, a pulled stick, a dropped share...) is "other", with
// its errno and the system's text, so it is never taken for an unreadable stretch or a missing disc.
FileError classify(const platform::IoResult& result, IoSide side);

} // namespace vindaro::copy
