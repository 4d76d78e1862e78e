#include "copy/ErrorClass.h"
#include "copy/ResumeRecord.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>

namespace platform = vindaro::platform;
using namespace vindaro::copy;

// Medium errors of a damaged disc must land in the skipped class; the rest in the classes whose boxes
// tell the user what to do.
TEST(ErrorClass, SortsLinuxErrorsIntoTheEngineClasses)
{
    const struct
    {
        int error;
        int errorClass;
    } table[] = {
        {EIO, kPathAccess},
        {ENODATA, kPathAccess},
        {EBADMSG, kPathAccess},
        {ETIMEDOUT, kPathAccess},
        {EBADF, kBadFileNumber},
        {ENOSPC, kDiskFull},
        {EDQUOT, kDiskFull},
        {ESPIPE, kBadRecordNumber},
        {EACCES, kPermissionDenied},
        {EPERM, kPermissionDenied},
        {EBUSY, kPermissionDenied},
        {EROFS, kPermissionDenied},
        {EINVAL, kInvalidArgument},
        {EFBIG, kOverflow},
        {ENOENT, kFileNotFound},
        {ENOMEDIUM, kDiskNotReady},
        {ENODEV, kDiskNotReady},
        {ENOTCONN, kDiskNotReady},
        {EMLINK, kOtherError},
    };
    for (const auto& row : table) {
        const FileError e
            = classify(platform::IoResult::failure(row.error, QStringLiteral("x")), IoSide::Source);
        EXPECT_EQ(e.errorClass, row.errorClass) << "errno " << row.error;
        if (row.errorClass == kOtherError)
            EXPECT_EQ(e.code, row.error);
        else
            EXPECT_EQ(e.code, row.errorClass);
    }
}

// The file being written has no unreadable stretches and no disc: only disk full and permission keep
// their classes, everything else is "other" with the errno and the system's own text.
TEST(ErrorClass, DestinationFailuresAreNeverSkippedOrTakenForAMissingDisc)
{
    const struct
    {
        int error;
        int errorClass;
    } table[] = {
        {ENOSPC, kDiskFull},
        {EDQUOT, kDiskFull},
        {EACCES, kPermissionDenied},
        {EROFS, kPermissionDenied},
        {EIO, kOtherError},
        {ETIMEDOUT, kOtherError},
        {EBADF, kOtherError},
        {EINVAL, kOtherError},
        {ENODEV, kOtherError},
        {ENOMEDIUM, kOtherError},
        {ESTALE, kOtherError},
    };
    for (const auto& row : table) {
        const FileError e = classify(
            platform::IoResult::failure(row.error, QStringLiteral("sys text")), IoSide::Destination);
        EXPECT_EQ(e.errorClass, row.errorClass) << "errno " << row.error;
        EXPECT_EQ(e.side, IoSide::Destination);
        if (row.errorClass == kOtherError) {
            EXPECT_EQ(e.code, row.error);
            EXPECT_EQ(e.description, QStringLiteral("sys text"));
        }
    }
}

TEST(ResumeRecord, FiguresRoundHalfToEvenAndAreZeroWithoutElapsedTime)
{
    EXPECT_EQ(roundHalfEven(2.5), 2);
    EXPECT_EQ(roundHalfEven(3.5), 4);
    EXPECT_EQ(roundHalfEven(2.4999), 2);

    // 1,000,000 of 4,000,000 bytes in 10 s: 100,000 B/s -> 40 s in all, 97.66 KB/s -> 98.
    const ResumeRecord r = makeResumeRecord(999'999, 1'000'000, 4'000'000, 10);
    EXPECT_EQ(r.continuePosition, 999'999);
    EXPECT_EQ(r.copiedPosition, 1'000'000);
    EXPECT_EQ(r.estimatedSeconds, 40);
    EXPECT_EQ(r.elapsedSeconds, 10);
    EXPECT_EQ(r.speedKBps, 98);

    const ResumeRecord none = makeResumeRecord(5, 6, 100, 0);
    EXPECT_EQ(none.estimatedSeconds, 0);
    EXPECT_EQ(none.speedKBps, 0);

    // Stopped after the first byte of 4 GiB with 100 s counted: 429,496,729,600 s does not fit an int.
    const ResumeRecord early = makeResumeRecord(1, 1, qint64(4) << 30, 100);
    EXPECT_EQ(early.estimatedSeconds, std::numeric_limits<int>::max());
    EXPECT_EQ(early.copiedPosition, 1);
}
