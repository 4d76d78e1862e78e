#include "copy/FailurePolicy.h"
#include "copy/ResumeRecord.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>

namespace platform = vindaro::platform;
using namespace vindaro::copy;

// Medium errors of a damaged disc are unreadable stretches (skipped), the rest fail with the code their
// boxes show. The file being written has no unreadable stretches and no disc: only a full disk and a
// refused access keep their meaning there, everything else is described with the errno and the system's
// own text.
TEST(FailurePolicy, SortsLinuxErrorsBySide)
{
    const struct
    {
        int error;
        IoSide side;
        Failure failure;
        int code;
    } table[] = {
        {EIO, IoSide::Source, Failure::UnreadableStretch, 75},
        {ENODATA, IoSide::Source, Failure::UnreadableStretch, 75},
        {EBADMSG, IoSide::Source, Failure::UnreadableStretch, 75},
        {ETIMEDOUT, IoSide::Source, Failure::UnreadableStretch, 75},
        {EBADF, IoSide::Source, Failure::BadHandle, 52},
        {ENOSPC, IoSide::Source, Failure::DiskFull, 61},
        {ESPIPE, IoSide::Source, Failure::BadRecord, 63},
        {EACCES, IoSide::Source, Failure::SharingConflict, 70},
        {EBUSY, IoSide::Source, Failure::SharingConflict, 70},
        {EINVAL, IoSide::Source, Failure::InvalidArgument, 5},
        {EFBIG, IoSide::Source, Failure::Described, 6},
        {ENOENT, IoSide::Source, Failure::Described, 53},
        {ENOMEDIUM, IoSide::Source, Failure::Described, 71},
        {ENOTCONN, IoSide::Source, Failure::Described, 71},
        {EMLINK, IoSide::Source, Failure::Described, EMLINK},
        {ENOSPC, IoSide::Destination, Failure::DiskFull, 61},
        {EDQUOT, IoSide::Destination, Failure::DiskFull, 61},
        {EROFS, IoSide::Destination, Failure::SharingConflict, 70},
        {EIO, IoSide::Destination, Failure::Described, EIO},
        {ETIMEDOUT, IoSide::Destination, Failure::Described, ETIMEDOUT},
        {EBADF, IoSide::Destination, Failure::Described, EBADF},
        {EINVAL, IoSide::Destination, Failure::Described, EINVAL},
        {ENODEV, IoSide::Destination, Failure::Described, ENODEV},
        {ESTALE, IoSide::Destination, Failure::Described, ESTALE},
    };
    for (const auto& row : table) {
        const FileError e
            = classify(platform::IoResult::failure(row.error, QStringLiteral("sys text")), row.side);
        EXPECT_EQ(e.failure, row.failure) << "errno " << row.error;
        EXPECT_EQ(e.code, row.code) << "errno " << row.error;
        EXPECT_EQ(e.side, row.side);
        if (row.code == row.error) {
            EXPECT_EQ(e.description, QStringLiteral("sys text"));
        }
    }
    // Nothing the system could say: the program's "unknown error" texts.
    EXPECT_EQ(classify(platform::IoResult::failure(EMLINK), IoSide::Source).failure, Failure::Unknown);
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
