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

struct SizeCase
{
    qint64 bytes;
    const char* length; // the general page's size line
    const char* shortForm; // the drive page's short form
};

const SizeCase kSizes[] = {
    {0, "0字节", "0 字节"},
    {1023, "1,023字节", "1,023 字节"},
    {1024, "1,024字节", "1.00 KB"},
    {1536, "1,536字节", "1.50 KB"},
    {1024000, "1,024,000字节", "1,000.00 KB"},
    {1024001, "1,000KB [1,024,001字节]", "1,000.00 KB"},
    {2048000, "2,000KB [2,048,000字节]", "1.95 MB"},
    {1048576, "1,024KB [1,048,576字节]", "1.00 MB"},
    {1073741823, "1,048,575KB [1,073,741,823字节]", "1,024.00 MB"},
    {5368709120, "5,242,880KB [5,368,709,120字节]", "5.00 GB"},
    {3298534883328, "3,221,225,472KB [3,298,534,883,328字节]", "3,072.00 GB"},
};

class SizeTexts : public ::testing::TestWithParam<SizeCase>
{
};

TEST_P(SizeTexts, LengthAndShortForm)
{
    const SizeCase& c = GetParam();
    EXPECT_EQ(fileLengthText(c.bytes), QString::fromUtf8(c.length));
    EXPECT_EQ(spaceShortText(c.bytes), QString::fromUtf8(c.shortForm));
}

INSTANTIATE_TEST_SUITE_P(Sizes, SizeTexts, ::testing::ValuesIn(kSizes));

TEST(PropertyTexts, DriveLineCaptionAndPercentages)
{
    const struct
    {
        qint64 part, total;
        const char* text;
    } percents[] = {{1, 4, "25.00%"}, {1, 3, "33.33%"}, {2, 3, "66.67%"}, {0, 0, "0.00%"}, {7, 7, "100.00%"}};
    for (const auto& p : percents)
        EXPECT_EQ(percentText(p.part, p.total), QString::fromLatin1(p.text)) << p.part << "/" << p.total;

    EXPECT_EQ(driveNameText(QStringLiteral("/media/cd"), QStringLiteral("1A2B"), 1, 3, 4),
        QStringLiteral("Drive:/media/cd  SN:1A2B  p(A/T):25.00%  p(U/T):75.00%"));
    EXPECT_EQ(spaceLongText(1234567), QStringLiteral("1,234,567 字节"));
    EXPECT_EQ(driveTabCaption(QStringLiteral("本地磁盘"), QStringLiteral("/home")),
        QStringLiteral("本地磁盘(/home)属性"));
}

TEST(PropertyTexts, ApplyWordIsOneOfEightAndNeverHoldsSystem)
{
    const int expected[] = {0, 1, 2, 3, 32, 33, 34, 35};
    for (int bits = 0; bits < 8; ++bits) {
        const int word = attributeWordFromBoxes(bits & 1, bits & 2, bits & 4);
        EXPECT_EQ(word, expected[bits]) << bits;
        EXPECT_EQ(word & 4, 0);
    }
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
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0664), 0);
    vindaro::testing::FakeVolumes volumes;
    vindaro::testing::FakeShell shell;
    vindaro::files::FileSystem fs(volumes, shell);
    ASSERT_EQ(fs.GetFileAttributesNumber(path), 32);

    EXPECT_TRUE(applyAttributeWord(path, 33));
    EXPECT_EQ(fs.GetFileAttributesNumber(path), 33);
    struct stat st;
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0444u);

    EXPECT_TRUE(applyAttributeWord(path, 32));
    EXPECT_EQ(fs.GetFileAttributesNumber(path), 32);
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0644u);

    EXPECT_FALSE(applyAttributeWord(dir.filePath(QStringLiteral("missing")), 1));
}

} // namespace
