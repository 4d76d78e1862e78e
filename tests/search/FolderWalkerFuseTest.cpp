// The folder walk on a FUSE file system of the test's own (LoopingTreeFs.cpp): listings without entry
// types, folders that fail to open or to list, and a folder that contains itself.
#include "FuseMount.h"
#include "files/FolderWalker.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vindaro;

namespace {

struct Collect final : files::WalkSink
{
    QStringList paths;
    void found(const QString& path) override { paths.append(path); }
};

TEST(FolderWalkerFuse, UntypedEntriesFailingFoldersAndAFolderInsideItself)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    vindaro::testing::FuseMount tree(
        QStringLiteral(LOOPING_TREE_FS), dir.filePath(QStringLiteral("tree")), {});
    VINDARO_SKIP_UNLESS_MOUNTED(tree);

    std::atomic<bool> stop{false};
    files::FolderWalker::Options options;
    options.names = files::NameRule::lastThree(QStringLiteral("*.DAT"));
    options.includeSubfolders = true;
    files::FolderWalker walker(options, stop);
    Collect sink;
    EXPECT_TRUE(walker.walk(tree.mountPoint(), sink));
    const QString root = tree.mountPoint() + u'/';
    // "again" is "sub" once more: entered from "sub" it would never end (the depth cap would stop it
    // only after 256 copies of b.dat).
    EXPECT_EQ(sink.paths,
        (QStringList{root + QStringLiteral("a.dat"), root + QStringLiteral("sub/b.dat"),
            root + QStringLiteral("z.dat")}));
    // root: 5 entries; sub: b.dat and again (seen, not entered).
    EXPECT_EQ(walker.examined(), 7);
}

} // namespace
