#include "search/FileSearch.h"
#include "SearchFakes.h"

#include <QSignalSpy>
#include <QTimer>

#include <unistd.h>

#include <gtest/gtest.h>

using namespace vindaro;
using namespace vindaro::search;

namespace {

class FileSearchTest : public ::testing::Test
{
protected:
    vindaro::testing::SearchTree tree;
    vindaro::testing::FakeResults results;
    FileSearch search{results};
    QSignalSpy finished{&search, &FileSearch::finished};

    // Runs a search to its end; the found count it reported.
    int run(const QString& pattern, const SearchOptions& options = {}, const QString& scope = {})
    {
        finished.clear();
        EXPECT_TRUE(search.StartSearch(scope.isEmpty() ? tree.dir.path() : scope, pattern, options));
        EXPECT_TRUE(finished.wait(20'000));
        return finished.isEmpty() ? -1 : finished.first().first().toInt();
    }
};

TEST_F(FileSearchTest, MissingInputShowsTheMessageForTwoSecondsAndChangesNothing)
{
    results.items = {QStringLiteral("/kept")};
    QTimer* message = search.findChild<QTimer*>(QStringLiteral("messageTimer"));
    ASSERT_TRUE(message);
    const QStringList scopes{QString(), QString(), tree.root()};
    const QStringList patterns{QString(), QStringLiteral("*.DAT"), QString()};
    for (int i = 0; i < scopes.size(); ++i) {
        EXPECT_FALSE(search.StartSearch(scopes.at(i), patterns.at(i), {}));
        EXPECT_EQ(search.statusText(), kEmptyInputText);
        EXPECT_TRUE(message->isActive());
        EXPECT_EQ(message->interval(), 2000);
        EXPECT_FALSE(search.isSearching());
        QMetaObject::invokeMethod(message, "timeout");
        EXPECT_TRUE(search.statusText().isEmpty());
    }
    EXPECT_TRUE(results.calls.isEmpty());
    EXPECT_EQ(results.items, QStringList{QStringLiteral("/kept")});
}

TEST_F(FileSearchTest, FindsInWalkOrderThenCountsAndRefreshes)
{
    const QStringList expected{tree.file(QStringLiteral("AVSEQ01.DAT")), tree.file(QStringLiteral("notdat")),
        tree.file(QStringLiteral("sub/avseq02.dat")), tree.file(QStringLiteral("update.dat"))};
    tree.file(QStringLiteral("other.vob"));
    tree.file(QStringLiteral("update"));
    QSignalSpy searching(&search, &FileSearch::searchingChanged);
    EXPECT_EQ(run(QStringLiteral("AVSEQ*.DAT")), 4);
    EXPECT_EQ(results.items, expected);
    EXPECT_EQ(results.calls.first(), QStringLiteral("reset"));
    EXPECT_EQ(results.calls.last(), QStringLiteral("refresh"));
    EXPECT_EQ(search.statusText(), foundCountText(4));
    ASSERT_EQ(searching.size(), 2);
    EXPECT_TRUE(searching.at(0).first().toBool());
    EXPECT_FALSE(searching.at(1).first().toBool());
    EXPECT_FALSE(finished.first().at(1).toBool());

    SearchOptions flat;
    flat.includeSubfolders = false;
    EXPECT_EQ(run(QStringLiteral("*.dat"), flat), 3);
}

TEST_F(FileSearchTest, NothingFoundLeavesAnEmptyListThatSaysSo)
{
    tree.file(QStringLiteral("a.dat"));
    for (const QString& pattern : {QStringLiteral("*.xyz"), QStringLiteral("*"), QStringLiteral("abc*")}) {
        results.calls.clear();
        EXPECT_EQ(run(pattern), 0) << qPrintable(pattern);
        EXPECT_TRUE(results.items.isEmpty());
        EXPECT_EQ(results.calls,
            (QStringList{QStringLiteral("reset"), QStringLiteral("reset"),
                QStringLiteral("text ") + kNothingFoundText}));
        EXPECT_EQ(results.editText, kNothingFoundText);
        EXPECT_EQ(search.statusText(), foundCountText(0));
    }
}

TEST_F(FileSearchTest, SizeClassesApplyExceptToExactNames)
{
    const QString tiny = tree.file(QStringLiteral("avseq01.dat"), 10);
    const QString edge = tree.file(QStringLiteral("edge.dat"), 10'240'000);
    const QString big = tree.file(QStringLiteral("big.dat"), 20'000'000);
    tree.file(QStringLiteral("below.dat"), 1'023);
    SearchOptions options;
    options.size1 = true;
    EXPECT_EQ(run(QStringLiteral("*.DAT"), options), 1);
    EXPECT_EQ(results.items, QStringList{edge});
    options.size1 = false;
    options.size2 = true;
    EXPECT_EQ(run(QStringLiteral("*.DAT"), options), 2);
    EXPECT_EQ(results.items, (QStringList{big, edge}));
    // A name without "*" is the file wanted, whatever its size.
    EXPECT_EQ(run(QStringLiteral("AVSEQ01.DAT"), options), 1);
    EXPECT_EQ(results.items, QStringList{tiny});
}

TEST_F(FileSearchTest, AttributeBoxesKeepFilesWithAnyCheckedAttribute)
{
    const QString plain = tree.file(QStringLiteral("plain.dat"));
    const QString hidden = tree.file(QStringLiteral(".hidden.dat"));
    const QString readOnly = tree.file(QStringLiteral("ro.dat"));
    ASSERT_TRUE(QFile::setPermissions(readOnly, QFile::ReadOwner | QFile::ReadGroup));
    SearchOptions options;
    EXPECT_EQ(run(QStringLiteral("*.dat"), options), 3); // no box: every file
    options.readOnly = true;
    EXPECT_EQ(run(QStringLiteral("*.dat"), options), 1);
    EXPECT_EQ(results.items, QStringList{readOnly});
    options.hidden = true;
    EXPECT_EQ(run(QStringLiteral("*.dat"), options), 2);
    EXPECT_EQ(results.items, (QStringList{hidden, readOnly}));
    if (::geteuid() == 0) {
        // Files of a person's account are no system files; root's are.
        ASSERT_EQ(::chown(QFile::encodeName(plain).constData(), 1000, 1000), 0);
        SearchOptions system;
        system.system = true;
        EXPECT_EQ(run(QStringLiteral("*.dat"), system), 2);
        EXPECT_EQ(results.items, (QStringList{hidden, readOnly}));
    }
}

TEST_F(FileSearchTest, StopEndsTheSearchAtOnceAndNothingOfItArrivesLater)
{
    for (int d = 0; d < 10; ++d) {
        for (int i = 0; i < 300; ++i)
            tree.file(QStringLiteral("many/d%1/f%2.dat").arg(d).arg(i));
    }
    const QString lone = tree.file(QStringLiteral("other/lone.dat"));
    ASSERT_TRUE(search.StartSearch(tree.root() + QStringLiteral("many"), QStringLiteral("*.dat"), {}));
    EXPECT_TRUE(search.isSearching());
    search.requestStop();
    ASSERT_EQ(finished.size(), 1); // at once, not after the walk has unwound
    EXPECT_TRUE(finished.first().at(1).toBool());
    EXPECT_FALSE(search.isSearching());
    const int shown = finished.first().first().toInt();
    EXPECT_EQ(shown, results.items.size());
    EXPECT_EQ(search.statusText(), foundCountText(shown));
    // A new search may start at once; the stopped walk never reaches the list again.
    EXPECT_EQ(run(QStringLiteral("*.dat"), {}, tree.root() + QStringLiteral("other")), 1);
    EXPECT_EQ(results.items, QStringList{lone});
    search.requestStop(); // nothing runs: nothing happens
    EXPECT_EQ(finished.size(), 1);
}

TEST_F(FileSearchTest, ExactNameModeLastsWhileTheSearchRuns)
{
    tree.file(QStringLiteral("x.dat"));
    ASSERT_TRUE(search.StartSearch(tree.root(), QStringLiteral("x.dat"), {}));
    EXPECT_TRUE(search.isExactNameMode());
    ASSERT_TRUE(finished.wait(10'000));
    EXPECT_FALSE(search.isExactNameMode());
    ASSERT_TRUE(search.StartSearch(tree.root(), QStringLiteral("*.dat"), {}));
    EXPECT_FALSE(search.isExactNameMode());
    search.requestStop();
}

} // namespace
