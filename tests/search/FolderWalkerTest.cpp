#include "files/FolderWalker.h"
#include "SearchFakes.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

using namespace vindaro::files;

namespace {

struct Collect final : WalkSink
{
    QStringList paths;
    std::function<void()> onFound;
    void found(const QString& path) override
    {
        paths.append(path);
        if (onFound)
            onFound();
    }
};

class FolderWalkerTest : public ::testing::Test
{
protected:
    vindaro::testing::SearchTree tree;
    const QTemporaryDir& dir = tree.dir;
    std::atomic<bool> stop{false};

    QString root() const { return tree.root(); }
    void file(const QString& relative, qint64 size = 0) { tree.file(relative, size); }
    QStringList walk(FolderWalker::Options options, const QString& from = {})
    {
        FolderWalker walker(std::move(options), stop);
        Collect sink;
        walker.walk(from.isEmpty() ? dir.path() : from, sink);
        return sink.paths;
    }
    QStringList expect(std::initializer_list<const char*> relative) const
    {
        QStringList paths;
        for (const char* r : relative)
            paths.append(root() + QString::fromUtf8(r));
        return paths;
    }
};

TEST_F(FolderWalkerTest, DepthFirstInCaseInsensitiveNameOrder)
{
    // "ascii" is sorted on bytes, "text" (other scripts) as text: both in the same order.
    for (const char* name : {"ascii/b.dat", "ascii/B.dat", "ascii/a_x.dat", "ascii/aa.dat", "ascii/Z/z.dat",
             "ascii/Z/y/deep.dat", "ascii/zz.vob", "ascii/.hidden.dat", "text/été.dat", "text/Ébène.dat",
             "text/B.dat", "text/a_x.dat", "text/b.dat"})
        file(QString::fromUtf8(name));
    FolderWalker::Options options;
    options.names = NameRule::lastThree(QStringLiteral("*.dat"));
    options.includeSubfolders = true;
    // "_" sorts before letters, as lower-case text does; "B.dat" before "b.dat" on the tie.
    EXPECT_EQ(walk(options),
        expect({"ascii/.hidden.dat", "ascii/a_x.dat", "ascii/aa.dat", "ascii/B.dat", "ascii/b.dat",
            "ascii/Z/y/deep.dat", "ascii/Z/z.dat", "text/a_x.dat", "text/B.dat", "text/b.dat",
            "text/Ébène.dat", "text/été.dat"}));
    options.includeSubfolders = false;
    EXPECT_TRUE(walk(options).isEmpty());
    EXPECT_EQ(walk(options, root() + QStringLiteral("ascii")).size(), 5);
}

TEST_F(FolderWalkerTest, LinksToFilesCountLinkedFoldersAreNotWalked)
{
    file(QStringLiteral("t/f.dat"));
    ASSERT_TRUE(QFile::link(dir.filePath(QStringLiteral("t")), dir.filePath(QStringLiteral("t/loop"))));
    ASSERT_TRUE(
        QFile::link(dir.filePath(QStringLiteral("t/f.dat")), dir.filePath(QStringLiteral("t/link.dat"))));
    ASSERT_TRUE(
        QFile::link(dir.filePath(QStringLiteral("gone")), dir.filePath(QStringLiteral("t/dangling.dat"))));
    ASSERT_EQ(::mkfifo(QFile::encodeName(dir.filePath(QStringLiteral("t/pipe.dat"))).constData(), 0600), 0);
    FolderWalker::Options options;
    options.includeSubfolders = true;
    EXPECT_EQ(walk(options), expect({"t/f.dat", "t/link.dat"}));
    // A link as the starting folder is the user's choice: it is followed.
    EXPECT_EQ(walk(options, dir.filePath(QStringLiteral("t/loop"))),
        (QStringList{
            dir.filePath(QStringLiteral("t/loop/f.dat")), dir.filePath(QStringLiteral("t/loop/link.dat"))}));
}

TEST_F(FolderWalkerTest, FilterSeesTheFactsOfTheLinkedFile)
{
    file(QStringLiteral("big.dat"), 20'000);
    file(QStringLiteral("small.dat"), 10);
    file(QStringLiteral(".shy.dat"), 20'000);
    ASSERT_TRUE(
        QFile::link(dir.filePath(QStringLiteral("big.dat")), dir.filePath(QStringLiteral("to-big.dat"))));
    FolderWalker::Options options;
    QList<bool> hiddenSeen;
    options.keep = [&](const WalkedFile& f) {
        hiddenSeen.append(f.hiddenName);
        return S_ISREG(f.mode) && f.sizeBytes > 1'000;
    };
    EXPECT_EQ(walk(options), expect({".shy.dat", "big.dat", "to-big.dat"}));
    EXPECT_EQ(hiddenSeen.count(true), 1);
}

TEST_F(FolderWalkerTest, DepthIsCappedAndAMissingFolderGivesNothing)
{
    file(QStringLiteral("1/2/3/deep.dat"));
    file(QStringLiteral("1/2/two.dat"));
    FolderWalker::Options options;
    options.includeSubfolders = true;
    options.maxDepth = 2;
    EXPECT_EQ(walk(options), expect({"1/2/two.dat"}));
    EXPECT_TRUE(walk(options, dir.filePath(QStringLiteral("missing"))).isEmpty());
}

TEST_F(FolderWalkerTest, StopEndsTheWalkAtTheNextEntry)
{
    for (int i = 0; i < 50; ++i)
        file(QStringLiteral("d%1/f.dat").arg(i));
    FolderWalker::Options options;
    options.includeSubfolders = true;
    FolderWalker walker(options, stop);
    Collect sink;
    sink.onFound = [&] { stop = true; };
    EXPECT_FALSE(walker.walk(dir.path(), sink));
    EXPECT_EQ(sink.paths.size(), 1);
}

TEST_F(FolderWalkerTest, TicksNameTheEntryBeingExamined)
{
    for (int i = 0; i < 600; ++i)
        file(QStringLiteral("many/%1.vob").arg(i, 3, 10, QLatin1Char('0')));
    struct Ticks final : WalkSink
    {
        QStringList seen;
        void found(const QString&) override { }
        void tick(const FolderWalker& walker) override { seen.append(walker.currentPath()); }
    } ticks;
    FolderWalker::Options options;
    options.names = NameRule::nothing();
    options.includeSubfolders = true;
    FolderWalker walker(options, stop);
    EXPECT_TRUE(walker.walk(dir.path(), ticks));
    EXPECT_EQ(walker.examined(), 601);
    ASSERT_GE(ticks.seen.size(), 4); // two folders opened, two runs of 256 entries
    EXPECT_EQ(ticks.seen.first(), root());
    EXPECT_TRUE(ticks.seen.contains(root() + QStringLiteral("many/")));
    EXPECT_TRUE(ticks.seen.last().startsWith(root() + QStringLiteral("many/")));
    EXPECT_TRUE(ticks.seen.last().endsWith(QStringLiteral(".vob")));
}

} // namespace
