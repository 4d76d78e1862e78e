#include "FuseMount.h"
#include "Pattern.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using fusefs::patternByte;

namespace {

// The promise of the program, end to end on real system calls: reads of a scratched stretch fail with EIO
// from the kernel, the copy jumps over them and goes on, and everything readable arrives in its place.
TEST(ScratchedDisc, ReadErrorsFromTheKernelAreSkippedAndTheRestArrives)
{
    QTemporaryDir dir;
    const qint64 size = 3'000'000;
    // One file whose reads fail with EIO where it is scratched.
    vindaro::testing::FuseMount disc(QStringLiteral(SCRATCHED_DISC_FS), dir.filePath(QStringLiteral("disc")),
        {QString::number(size), QStringLiteral("1000000:1,2000000:4096")});
    VINDARO_SKIP_UNLESS_MOUNTED(disc);
    const QString source = disc.path(QStringLiteral("disc.dat"));

    const QString copy = dir.filePath(QStringLiteral("copy.dat"));
    QProcess tool;
    tool.start(QStringLiteral(VINDARO_COPY),
        {QStringLiteral("-q"), QStringLiteral("-r"), QStringLiteral("1"), QStringLiteral("-s"),
            QStringLiteral("1"), source, copy});
    ASSERT_TRUE(tool.waitForFinished(120000));
    const QString out = QString::fromUtf8(tool.readAllStandardOutput());
    EXPECT_EQ(tool.exitCode(), 1) << QString::fromUtf8(tool.readAllStandardError()).toStdString();
    EXPECT_EQ(out.count(QStringLiteral("文件跳过：")), 2) << out.toStdString();

    QFile result(copy);
    ASSERT_TRUE(result.open(QIODevice::ReadOnly));
    const QByteArray bytes = result.readAll();
    ASSERT_EQ(bytes.size(), size);
    qint64 zeros = 0;
    for (qint64 i = 0; i < size; ++i) {
        if (bytes[i] != patternByte(i)) {
            ASSERT_EQ(bytes[i], '\0') << "byte " << i << " is neither the disc's nor a skipped one";
            ++zeros;
        }
    }
    EXPECT_EQ(bytes[1000000], '\0');
    EXPECT_EQ(bytes[2000000], '\0');
    EXPECT_LT(zeros, 2 * 9 * 61440); // each stretch is a handful of blocks, not the rest of the file
    EXPECT_EQ(bytes.first(990000), [&] {
        QByteArray expected(990000, Qt::Uninitialized);
        for (qint64 i = 0; i < expected.size(); ++i)
            expected[i] = patternByte(i);
        return expected;
    }());
}

} // namespace
