#include "search/ProfileFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vindaro::search::ProfileFile;

namespace {

const QByteArray kSample = "; the search history\n"
                           "top=outside any section\n"
                           "[Other]\n"
                           "0TYPE=not this one\n"
                           "[section]\n"
                           "  0type  =  *.DAT  \n"
                           "; 1TYPE=commented out\n"
                           "2TYPE=\"  quoted  \"\n"
                           "2TYPE=second copy\n"
                           "3TYPE=\n"
                           "[SECTION]\n"
                           "4TYPE=in the repeated section\n";

struct Lookup
{
    const char* section;
    const char* key;
    std::optional<const char*> value;
};

class ProfileLookup : public ::testing::TestWithParam<Lookup>
{
};

TEST_P(ProfileLookup, FindsWhatTheProfileFunctionsFind)
{
    const Lookup& c = GetParam();
    const auto found = ProfileFile::find(kSample, QString::fromUtf8(c.section), QString::fromUtf8(c.key));
    ASSERT_EQ(found.has_value(), c.value.has_value()) << c.section << "/" << c.key;
    if (found) {
        EXPECT_EQ(*found, QString::fromUtf8(*c.value));
    }
}

INSTANTIATE_TEST_SUITE_P(Table, ProfileLookup,
    ::testing::Values(Lookup{"SECTION", "0TYPE", "*.DAT"}, // names in any case, blanks trimmed
        Lookup{"Section", "0Type", "*.DAT"}, Lookup{"SECTION", "1TYPE", std::nullopt}, // a comment
        Lookup{"SECTION", "2TYPE", "  quoted  "}, // quotes kept the blanks; the first copy counts
        Lookup{"SECTION", "3TYPE", ""}, Lookup{"SECTION", "4TYPE", std::nullopt}, // first section only
        Lookup{"OTHER", "0TYPE", "not this one"}, Lookup{"SECTION", "top", std::nullopt},
        Lookup{"missing", "0TYPE", std::nullopt}));

TEST(ProfileFile, WritingChangesOnlyTheKeysLine)
{
    const QByteArray crlf
        = "; keep me\r\n[SECTION]\r\n0type=old\r\n1TYPE=b\r\n\r\n[Later]\r\nx=\xC3\xA9\xFF\r\n";
    EXPECT_EQ(ProfileFile::withValue(
                  crlf, QStringLiteral("SECTION"), QStringLiteral("0TYPE"), QStringLiteral("new")),
        QByteArray("; keep me\r\n[SECTION]\r\n0type=new\r\n1TYPE=b\r\n\r\n[Later]\r\nx=\xC3\xA9\xFF\r\n"));
    // A new key goes after the section's last key, in the file's own line ends.
    EXPECT_EQ(
        ProfileFile::withValue(crlf, QStringLiteral("section"), QStringLiteral("2TYPE"), QStringLiteral("c")),
        QByteArray(
            "; keep "
            "me\r\n[SECTION]\r\n0type=old\r\n1TYPE=b\r\n2TYPE=c\r\n\r\n[Later]\r\nx=\xC3\xA9\xFF\r\n"));
    // A new section goes at the end; a last line without its line end gets one.
    EXPECT_EQ(ProfileFile::withValue(
                  "a=1", QStringLiteral("SECTION"), QStringLiteral("0TYPE"), QStringLiteral("*.VOB")),
        QByteArray("a=1\n\n[SECTION]\n0TYPE=*.VOB\n"));
    EXPECT_EQ(ProfileFile::withValue(
                  {}, QStringLiteral("SECTION"), QStringLiteral("0TYPE"), QStringLiteral("影片")),
        QByteArray("[SECTION]\n0TYPE=\xE5\xBD\xB1\xE7\x89\x87\n"));
}

class ProfileFileOnDisk : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path(const char* name = "settings/Vindarosearch.ini") const
    {
        return dir.filePath(QLatin1String(name));
    }
};

TEST_F(ProfileFileOnDisk, MissingFileGivesTheDefaultAndWritingMakesFileAndFolder)
{
    EXPECT_EQ(ProfileFile::readString(
                  path(), QStringLiteral("SECTION"), QStringLiteral("0TYPE"), QStringLiteral("fallback")),
        QStringLiteral("fallback"));
    EXPECT_TRUE(
        ProfileFile::readString(path(), QStringLiteral("SECTION"), QStringLiteral("0TYPE")).isEmpty());
    ASSERT_TRUE(ProfileFile::writeString(
        path(), QStringLiteral("SECTION"), QStringLiteral("0TYPE"), QStringLiteral("*.DAT")));
    EXPECT_EQ(ProfileFile::readString(path(), QStringLiteral("section"), QStringLiteral("0type")),
        QStringLiteral("*.DAT"));
    EXPECT_FALSE(ProfileFile::writeString(
        path(), QStringLiteral("SECTION"), QStringLiteral("1TYPE"), QStringLiteral("a\nb")));
}

TEST_F(ProfileFileOnDisk, LongValuesComeBackCutTo254Characters)
{
    const QString long300 = QString(299, u'x') + u'y';
    ASSERT_TRUE(
        ProfileFile::writeString(path(), QStringLiteral("SECTION"), QStringLiteral("0TYPE"), long300));
    EXPECT_EQ(ProfileFile::readString(path(), QStringLiteral("SECTION"), QStringLiteral("0TYPE")),
        QString(254, u'x'));
    // Never half of a character outside the basic plane.
    const QString wide = QString(253, u'x') + QString::fromUcs4(U"\U0001F4BF") + QStringLiteral("zz");
    ASSERT_TRUE(ProfileFile::writeString(path(), QStringLiteral("SECTION"), QStringLiteral("1TYPE"), wide));
    EXPECT_EQ(ProfileFile::readString(path(), QStringLiteral("SECTION"), QStringLiteral("1TYPE")),
        QString(253, u'x'));
}

TEST_F(ProfileFileOnDisk, ReadOnlyFileIsNotReplaced)
{
    const QString file = path("ro.ini");
    {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("[SECTION]\n0TYPE=*.DAT\n");
    }
    ASSERT_TRUE(QFile::setPermissions(file, QFile::ReadOwner));
    EXPECT_FALSE(ProfileFile::writeString(
        file, QStringLiteral("SECTION"), QStringLiteral("0TYPE"), QStringLiteral("x")));
    EXPECT_EQ(ProfileFile::readString(file, QStringLiteral("SECTION"), QStringLiteral("0TYPE")),
        QStringLiteral("*.DAT"));
}

} // namespace
