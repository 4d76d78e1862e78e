#include "search/PatternHistory.h"
#include "search/ProfileFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vindaro::search;

namespace {

class PatternHistoryTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Vindarosearch.ini"));

    void store(const QByteArray& content)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    QString key(int index) const
    {
        return ProfileFile::readString(path, PatternHistory::kSection, PatternHistory::keyFor(index));
    }
};

TEST_F(PatternHistoryTest, LivesInTheUsersConfigurationFolder)
{
    // The test's home is a temporary one: XDG_CONFIG_HOME points into it.
    const QString config = qEnvironmentVariable("XDG_CONFIG_HOME");
    ASSERT_FALSE(config.isEmpty());
    EXPECT_EQ(PatternHistory::settingsFilePath(),
        QDir(config).filePath(QStringLiteral("vindaro/Vindarosearch.ini")));
}

TEST_F(PatternHistoryTest, LoadingStopsAtTheFirstEmptyKey)
{
    EXPECT_TRUE(PatternHistory::load(path).isEmpty()); // no file
    store("[SECTION]\n0TYPE=\n1TYPE=*.VOB\n");
    EXPECT_TRUE(PatternHistory::load(path).isEmpty());
    store("[section]\n1TYPE=*.VOB\n0TYPE=*.DAT\n3TYPE=after a gap\n10TYPE=never read\n");
    EXPECT_EQ(PatternHistory::load(path), (QStringList{QStringLiteral("*.DAT"), QStringLiteral("*.VOB")}));
}

TEST_F(PatternHistoryTest, SavingDropsLaterCopiesAndLeavesHigherKeys)
{
    store("[SECTION]\n0TYPE=a\n1TYPE=b\n2TYPE=c\n3TYPE=d\n4TYPE=e\n");
    ASSERT_TRUE(PatternHistory::save(path,
        {QStringLiteral("*.DAT"), QStringLiteral("*.VOB"), QStringLiteral("*.DAT"), QStringLiteral("*.dat"),
            QStringLiteral("*.VOB")}));
    const QStringList stored{key(0), key(1), key(2), key(3), key(4)};
    EXPECT_EQ(stored,
        (QStringList{QStringLiteral("*.DAT"), QStringLiteral("*.VOB"), QStringLiteral("*.dat"),
            QStringLiteral("d"), QStringLiteral("e")}));
}

TEST_F(PatternHistoryTest, StoresTheFirstTenAndNothingForAnEmptyList)
{
    EXPECT_TRUE(PatternHistory::save(path, {}));
    EXPECT_FALSE(QFile::exists(path));
    QStringList twelve;
    for (int i = 0; i < 12; ++i)
        twelve.append(QStringLiteral("*.%1").arg(i, 3, 10, QLatin1Char('0')));
    ASSERT_TRUE(PatternHistory::save(path, twelve));
    EXPECT_EQ(PatternHistory::load(path), twelve.mid(0, 10));
    EXPECT_EQ(ProfileFile::readString(path, PatternHistory::kSection, QStringLiteral("10TYPE")), QString());
}

} // namespace
