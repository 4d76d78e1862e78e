#include "ErrorClass.h"

#include <cerrno>

namespace vindaro::copy {

namespace {

int classOf(int e)
{
    switch (e) {
    case EIO:
    case ENODATA:
    case EBADMSG:
    case EILSEQ:
    case EREMOTEIO:
    case ETIMEDOUT:
    case ENOLINK:
    case EPROTO:
    case ENOTRECOVERABLE:
        return kPathAccess;
    case EBADF:
        return kBadFileNumber;
    case ENOSPC:
    case EDQUOT:
        return kDiskFull;
    case ESPIPE:
    case ENXIO:
        return kBadRecordNumber;
    case EACCES:
    case EPERM:
    case EBUSY:
    case ETXTBSY:
    case EROFS:
        return kPermissionDenied;
    case EINVAL:
        return kInvalidArgument;
    case EFBIG:
    case EOVERFLOW:
        return kOverflow;
    case ENOENT:
    case ENOTDIR:
    case EISDIR:
        return kFileNotFound;
    case ENOMEDIUM:
    case ENODEV:
    case ESTALE:
    case ENOTCONN:
    case ESHUTDOWN:
        return kDiskNotReady;
    default:
        return kOtherError;
    }
}

} // namespace

FileError classify(const platform::IoResult& result, IoSide side)
{
    FileError error;
    error.side = side;
    error.errorClass = classOf(result.error);
    if (side == IoSide::Destination && error.errorClass != kDiskFull && error.errorClass != kPermissionDenied)
        error.errorClass = kOtherError;
    error.code = error.errorClass == kOtherError ? result.error : error.errorClass;
    error.description = result.description;
    // The classes shown with their code get the program's own words.
    switch (error.errorClass) {
    case kFileNotFound:
        error.description = QStringLiteral("文件未找到");
        break;
    case kOverflow:
        error.description = QStringLiteral("溢出");
        break;
    case kDiskNotReady:
        error.description = QStringLiteral("磁盘未准备好");
        break;
    default:
        break;
    }
    return error;
}

} // namespace vindaro::copy
