// The file subsystem's texts (attributes, drive kinds, disk facts, dates, numbers, the file list's lines, the
// rename dialog and the failure notices) checked once against a golden file; the other tests check facts, not
// wording. After a deliberate change of a text, run with VINDARO_UPDATE_GOLDEN=1 and review the diff. The
// path and volume rules behind the texts are tables here too.
#include "files/FileTexts.h"
#include "files/FileCommandTexts.h"
#include "files/FileListTexts.h"
#include "files/Format.h"
#include "info/GoldenText.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>

using namespace vindaro::files;
using namespace Qt::StringLiterals;
using vindaro::platform::FileOpResult;
using vindaro::platform::Volume;
using vindaro::platform::VolumeIdentity;
using vindaro::platform::VolumeSpace;

namespace {

const VolumeSpace kSpace{5'000'000'000, 1'234'567, 2'000'000, 512, 8, 1'220'703, 488};
const VolumeIdentity kIdentity{u"VIDEO_CD"_s, 0x0A1B2C3D, u"iso9660"_s};

TEST(FileTexts, EveryTextIsTheGoldenOne)
{
    vindaro::testing::GoldenText golden;
    for (const int word : {-1, 0, 5, 16, 32, 33, 34, 35, 48, 64, 2083, 2087})
        golden.add(u"attribute %1"_s.arg(word), attributeText(word));
    for (int kind = 0; kind <= 6; ++kind)
        golden.add(u"drive kind %1"_s.arg(kind), driveKindText(kind, false));
    golden.add(u"drive kind 2 floppy"_s, driveKindText(2, true));
    golden.add(u"drive kind 3 floppy"_s, driveKindText(3, true));
    for (int kind = -1; kind <= 11; ++kind)
        golden.add(u"disk line %1"_s.arg(kind), diskInformationLine(kind, kSpace, kIdentity));
    golden.add(u"disk line 5 serial 0"_s, diskInformationLine(5, kSpace, {u"X"_s, 0, u"vfat"_s}));
    for (const QString& path : {u"/a/b.dat"_s, u"/a.d/README"_s, u"x.tar.gz"_s})
        golden.add(u"type of "_s + path, fallbackTypeName(path));
    const QDateTime stamp(QDate(2003, 5, 1), QTime(14, 5, 9));
    for (const QLocale::Language language : {QLocale::Chinese, QLocale::English, QLocale::German})
        golden.add(u"date "_s + QLocale::languageToCode(language),
            dateTimeText(stamp, QTime(9, 0, 0), QLocale(language)));
    golden.add(u"date at midnight"_s,
        dateTimeText(QDateTime(QDate(2003, 5, 1), QTime(0, 0, 0)), QTime(21, 7, 3), QLocale::Chinese));
    golden.add(u"date a second past midnight"_s,
        dateTimeText(QDateTime(QDate(2003, 5, 1), QTime(0, 0, 1)), QTime(21, 7, 3), QLocale::Chinese));

    for (const qint64 n :
        {0LL, 999LL, 1000LL, 1234567LL, -999LL, -1234567LL, std::numeric_limits<qint64>::min()})
        golden.add(u"digits %1"_s.arg(n), groupDigits(n));
    golden.add(u"bytes"_s, formatBytes(1234));
    golden.add(
        u"megabytes"_s, formatWholeMegabytes(734003200) + u'|' + formatWholeMegabytes(1024 * 1024 - 1));
    for (const qint64 s : {0, 7, 61, 3725, 360000, -5})
        golden.add(u"duration %1"_s.arg(s), formatDuration(s));
    golden.add(u"speed"_s, formatKBps(0) + u'|' + formatKBps(1024));

    golden.add(u"list line"_s, filesInfoLine(12, 1'470'103'552, 3));
    golden.add(u"list line without position"_s, filesInfoLine(1, 1023));
    golden.add(u"empty list line"_s, kResetFilesInfo);
    golden.add(u"list box hint"_s, kListBoxHint);
    golden.add(u"reminder title"_s, kReminderTitle);
    golden.add(u"over capacity"_s, kOverCapacityText);
    golden.add(u"size panel"_s, sizeTypePanel(1'048'576, u"DAT 文件"_s, u"只读"_s));
    golden.add(u"size panel small"_s, sizeTypePanel(1023, u"T"_s, QString()));
    golden.add(u"dates panel"_s, datesPanel(u"m"_s, u"a"_s));
    golden.add(u"delete question"_s, deleteQuestionText(u"/v/a.dat"_s));
    // Kilobytes are rounded as "##,#0" rounds a fraction, halves up; sizes are 64-bit.
    for (const qint64 bytes : {0LL, 1'024'000LL, 1'024'001LL, 1'024'511LL, 1'024'512LL, 2'047'999LL,
             5'000'000'000'000LL, std::numeric_limits<qint64>::max()})
        golden.add(u"rename size %1"_s.arg(bytes), renameSizeLine(bytes));
    RenameFacts facts{5, u"MP3 文件"_s, u"c"_s, u"m"_s, u"a"_s, u"存档"_s, std::nullopt};
    golden.add(u"rename facts"_s, renameFactsText(facts));
    facts.tag = RenameFacts::Tag{u"Song"_s, u"未知艺术家"_s, u"Al"_s, u"2003"_s, u"Rock"_s, u"7"_s, u"c"_s};
    golden.add(u"rename facts with tag"_s, renameFactsText(facts));
    golden.add(u"proposed name"_s, proposedNewName(u"AVSEQ01.DAT"_s));

    QTemporaryDir dir;
    const QString folder = dir.path() + u'/';
    QFile(folder + u"a.dat"_s).open(QIODevice::WriteOnly);
    QFile(folder + u"taken.dat"_s).open(QIODevice::WriteOnly);
    for (const QString& name :
        {QString(), u"sub/x.dat"_s, u".."_s, QString(86, u'影') /* 258 bytes */, u"taken.dat"_s, u"ok.dat"_s})
        golden.add(u"refused "_s + name.left(9), renameRefusalText(folder + u"a.dat"_s, folder, name));
    golden.add(u"refused gone"_s, renameRefusalText(folder + u"gone.dat"_s, folder, u"b.dat"_s));

    const QString src = u"/media/cdrom/AVSEQ01.DAT"_s;
    using Step = FileOpResult::Step;
    golden.add(
        u"copy failed"_s, copyFailedText(src, FileOpResult::failed(Step::WriteTarget, EROFS, u"/ro/a"_s)));
    golden.add(u"copy refused"_s,
        copyFailedText(
            src, FileOpResult::failed(Step::Check, EINVAL, u"/media/cdrom/"_s, u"the same folder"_s)));
    golden.add(
        u"move failed reading"_s, moveFailedText(src, FileOpResult::failed(Step::ReadSource, EIO, src)));
    golden.add(
        u"move failed removing"_s, moveFailedText(src, FileOpResult::failed(Step::RemoveSource, EROFS, src)));
    golden.add(
        u"trash failed"_s, deleteFailedText(src, FileOpResult::failed(Step::Trash, 0, src, u"no trash"_s)));
    golden.add(u"delete failed"_s, deleteFailedText(src, FileOpResult::failed(Step::Delete, EACCES, src)));
    golden.check(QStringLiteral(VINDARO_GOLDEN_DIR "/file_texts.txt"));
}

TEST(FileTexts, PathRules)
{
    const struct
    {
        QString (*rule)(const QString&);
        QString path;
        QString expected;
    } rows[] = {
        {fileNameOf, u"/a/b.dat"_s, u"b.dat"_s},
        {parentFolderOf, u"/a/b.dat"_s, u"/a/"_s},
        {fileNameOf, u"b.dat"_s, u"b.dat"_s}, // no "/": whole, both ways
        {parentFolderOf, u"b.dat"_s, u"b.dat"_s},
        {fileNameOf, u"/a/b/"_s, QString()},
        {parentFolderOf, u"/"_s, u"/"_s},
        {fileNameOf, u"/媒体/影片 1.vob"_s, u"影片 1.vob"_s},
        {parentFolderOf, u"/媒体/影片 1.vob"_s, u"/媒体/"_s},
        {existenceProbePath, u"  /tmp/x/  "_s, u"/tmp/x"_s},
        {existenceProbePath, u"/tmp/x//"_s, u"/tmp/x/"_s}, // one slash only
        {existenceProbePath, u" / "_s, u"/"_s},
        {existenceProbePath, u"\t/x"_s, u"\t/x"_s}, // only blanks go
        {withTrailingSlash, u"/media/cd"_s, u"/media/cd/"_s},
        {withTrailingSlash, u"/"_s, u"/"_s},
        {withTrailingSlash, QString(), QString()},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.rule(row.path), row.expected) << row.path.toStdString();

    const QStringList mounts = {u"/"_s, u"/home"_s, u"/media/my disc"_s, u"/srv/"_s};
    EXPECT_EQ(joinRoots(mounts), u"//home//media/my disc//srv/"_s);
    EXPECT_EQ(splitRootList(joinRoots(mounts)),
        (QStringList{u"/"_s, u"/home/"_s, u"/media/my disc/"_s, u"/srv/"_s}));
    EXPECT_TRUE(splitRootList(QString()).isEmpty());
}

TEST(FileTexts, AttributeWordFromLinuxFacts)
{
    const struct
    {
        PathFacts facts; // link, folder, regular, read-only, hidden
        int word;
    } rows[] = {
        {{false, true, false, false, false}, 16}, {{false, false, true, true, false}, 33},
        {{false, false, true, false, true}, 34},
        {{true, false, false, true, true}, 64}, // a link reads as a link, nothing else
        {{}, 0}, // neither file nor folder: no archive bit
    };
    for (const auto& row : rows)
        EXPECT_EQ(attributeWord(row.facts), row.word);
}

TEST(FileTexts, VolumeOfPathIsTheLongestComponentPrefix)
{
    const QList<Volume> volumes = {{u"/"_s, {}, {}, 3}, {u"/media/cd"_s, {}, {}, 5},
        {u"/media/cd/inner"_s, {}, {}, 2}, {u"/home"_s, u"old"_s, {}, 3},
        {u"/home"_s, u"new"_s, {}, 4}}; // the second /home is mounted over the first
    const struct
    {
        const char* path;
        const char* mount; // "" for none
    } rows[] = {
        {"/media/cd/a.dat", "/media/cd"},
        {"/media/cd", "/media/cd"},
        {"/media/cd/", "/media/cd"},
        {"/media/cdrom/a.dat", "/"}, // not a component prefix
        {"/media/cd/inner/x", "/media/cd/inner"},
        {"/media/cd/inner/../x", "/media/cd"},
        {"//media//cd", "/media/cd"},
        {"Q:\\x", ""},
        {"relative/x", ""},
        {"", ""},
    };
    for (const auto& row : rows) {
        const auto volume = volumeOfPath(volumes, QString::fromUtf8(row.path));
        EXPECT_EQ(volume ? volume->mountPoint : QString(), QString::fromUtf8(row.mount)) << row.path;
    }
    EXPECT_EQ(volumeOfPath(volumes, u"/home/u"_s)->device, u"new"_s);
}

TEST(FileTexts, DiskInformationValuesKeepSixtyFourBits)
{
    EXPECT_EQ(diskInformationValue(0, kSpace, kIdentity).toLongLong(), 5'000'000'000LL);
    EXPECT_EQ(diskInformationValue(3, kSpace, kIdentity).toLongLong(), 4'998'000'000LL);
    EXPECT_EQ(diskInformationValue(4, kSpace, kIdentity).toString(), u"VIDEO_CD"_s);
    EXPECT_EQ(diskInformationValue(9, kSpace, kIdentity).toLongLong(), 512);
    EXPECT_FALSE(diskInformationValue(11, kSpace, kIdentity).isValid());
    EXPECT_EQ(diskInformationValue(5, kSpace, {}).toString(), QString()); // serial 0
    VolumeSpace inconsistent = kSpace;
    inconsistent.totalFreeBytes = kSpace.totalBytes + 1; // must not wrap around
    EXPECT_EQ(diskInformationValue(3, inconsistent, kIdentity).toLongLong(), 0);
}

} // namespace
