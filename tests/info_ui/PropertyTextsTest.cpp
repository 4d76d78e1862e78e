// The property window's decisions without its widgets; its texts are in the golden file of tests/info.
#include "PropertyTexts.h"
#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "files/FileSystem.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace vindaro::info;

namespace {

TEST(PropertyTexts, ApplyWordIsOneOfEightAndNeverHoldsSystem)
{
    const int expected[] = {0, 1, 2, 3, 32, 33, 34, 35};
    for (int bits = 0; bits < 8; ++bits)
        EXPECT_EQ(attributeWordFromBoxes(bits & 1, bits & 2, bits & 4), expected[bits]) << bits;
}

TEST(PropertyTexts, SummaryKindFromTheLastThreeCharacters)
{
    const struct
    {
        const char* path;
        SummaryKind kind;
    } cases[] = {{"/a/song.mp3", SummaryKind::Mp3}, {"/a/SONG.Mp3", SummaryKind::Mp3},
        {"/a/movie.swf", SummaryKind::Swf}, {"/a/pack.ZIP", SummaryKind::Zip},
        {"/a/setup.exe", SummaryKind::Module}, {"/a/lib.DLL", SummaryKind::Module},
        {"/a/notes.txt", SummaryKind::None}, {"/a/pack.tar.gz", SummaryKind::None},
        {"/a/archivezip", SummaryKind::Zip}, {"", SummaryKind::None}};
    for (const auto& c : cases)
        EXPECT_EQ(summaryKindOf(QString::fromLatin1(c.path)), c.kind) << c.path;
}

TEST(PropertyTexts, PieSpan)
{
    EXPECT_DOUBLE_EQ(usedSpanDegrees(1, 4), 90.0);
    EXPECT_DOUBLE_EQ(usedSpanDegrees(0, 10), 0.0);
    EXPECT_DOUBLE_EQ(usedSpanDegrees(12, 10), 360.0);
    EXPECT_DOUBLE_EQ(usedSpanDegrees(5, 0), 0.0);
    EXPECT_DOUBLE_EQ(usedSpanDegrees(qint64(3) << 40, qint64(4) << 40), 270.0);
}

// On a real file: the word written is what FileSystem reads back.
TEST(PropertyTexts, ApplyReadOnlyOnARealFile)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.mp3"));
    QFile(path).open(QIODevice::WriteOnly);
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0664), 0);
    vindaro::testing::FakeVolumes volumes;
    vindaro::testing::FakeShell shell;
    vindaro::files::FileSystem fs(volumes, shell);
    ASSERT_EQ(fs.GetFileAttributesNumber(path), 32);
    for (const auto& [word, mode] : {std::pair{33, 0444u}, {32, 0644u}}) {
        EXPECT_TRUE(applyAttributeWord(path, word));
        EXPECT_EQ(fs.GetFileAttributesNumber(path), word);
        struct stat st;
        ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &st), 0);
        EXPECT_EQ(st.st_mode & 0777, mode);
    }
    EXPECT_FALSE(applyAttributeWord(dir.filePath(QStringLiteral("missing")), 1));
}

} // namespace
