#include "FailurePolicy.h"

#include <cerrno>

namespace vindaro::copy {

namespace {

struct Sorted
{
    Failure failure;
    int code; // 0: the errno itself
    const char16_t* description; // the program's own words; null: the system's
};

Sorted sort(int e)
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
        return {Failure::UnreadableStretch, 75, nullptr};
    case EBADF:
        return {Failure::BadHandle, 52, nullptr};
    case ENOSPC:
    case EDQUOT:
        return {Failure::DiskFull, 61, nullptr};
    case ESPIPE:
    case ENXIO:
        return {Failure::BadRecord, 63, nullptr};
    case EACCES:
    case EPERM:
    case EBUSY:
    case ETXTBSY:
    case EROFS:
        return {Failure::SharingConflict, 70, nullptr};
    case EINVAL:
        return {Failure::InvalidArgument, 5, nullptr};
    case EFBIG:
    case EOVERFLOW:
        return {Failure::Described, 6, u"溢出"};
    case ENOENT:
    case ENOTDIR:
    case EISDIR:
        return {Failure::Described, 53, u"文件未找到"};
    case ENOMEDIUM:
    case ENODEV:
    case ESTALE:
    case ENOTCONN:
    case ESHUTDOWN:
        return {Failure::Described, 71, u"磁盘未准备好"};
    default:
        return {Failure::Described, 0, nullptr};
    }
}

} // namespace

FileError classify(const platform::IoResult& result, IoSide side)
{
    Sorted sorted = sort(result.error);
    if (side == IoSide::Destination && sorted.failure != Failure::DiskFull
        && sorted.failure != Failure::SharingConflict)
        sorted = {Failure::Described, 0, nullptr};
    FileError error;
    error.side = side;
    error.failure = sorted.failure;
    error.code = sorted.code != 0 ? sorted.code : result.error;
    error.description = sorted.description ? QString::fromUtf16(sorted.description) : result.description;
    if (error.failure == Failure::Described && error.description.isEmpty())
        error.failure = Failure::Unknown;
    return error;
}

Action actionFor(Failure failure, bool batch)
{
    for (const FailureRule& rule : kFailureRules) {
        if (rule.failure == failure)
            return batch ? rule.batch : rule.single;
    }
    Q_ASSERT(false);
    return batch ? Action::NextFile : Action::EndWithBox;
}

} // namespace vindaro::copy
