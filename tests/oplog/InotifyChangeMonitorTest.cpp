#include "platform/linux/InotifyChangeMonitor.h"
#include "oplog/ChangeQueue.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

using namespace vindaro;
using oplog::ChangeEvent;
using platform::InotifyChangeMonitor;
using platform::InotifyMonitorOptions;

namespace vindaro::oplog {
void PrintTo(const ChangeEvent& c, std::ostream* out)
{
    *out << QStringLiteral("{%1 %2 %3}").arg(c.code, 0, 16).arg(c.path1, c.path2).toStdString();
}
} // namespace vindaro::oplog

namespace {

constexpr int kWaitMs = 10000;

void makeFile(const QString& path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
    ASSERT_GE(fd, 0) << path.toStdString();
    ::close(fd);
}

void touch(const QString& path)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Append));
    file.write("x");
}

// A real monitor on a temporary folder "root", with the changes it delivered collected in order. `setUp`
// makes what must exist before the monitor starts and sets its options.
struct Watched
{
    using SetUp = std::function<void(InotifyMonitorOptions&, const QString& root)>;
    QTemporaryDir dir;
    QString root = QDir(dir.path()).filePath(QStringLiteral("root"));
    oplog::ChangeQueue queue;
    std::unique_ptr<InotifyChangeMonitor> monitor;
    QList<ChangeEvent> seen;
    QStringList notes;

    explicit Watched(const SetUp& setUp = {}, qsizetype capacity = oplog::ChangeQueue::kDefaultCapacity)
        : queue(capacity)
    {
        QDir().mkpath(root);
        InotifyMonitorOptions options;
        options.roots = {root};
        options.mountInfoPath.clear(); // the machine's mounts are not this test's business
        if (setUp)
            setUp(options, root);
        monitor = std::make_unique<InotifyChangeMonitor>(options);
        EXPECT_TRUE(monitor->start(queue));
        EXPECT_TRUE(QTest::qWaitFor([this] { return monitor->isReady(); }, kWaitMs));
    }
    QString at(const QString& relative) const { return root + QLatin1Char('/') + relative; }
    void collect()
    {
        for (const oplog::QueuedChange& item : queue.take(1 << 20)) {
            if (item.note.isEmpty())
                seen.append(item.change);
            else
                notes.append(item.note);
        }
    }
    // Waits until `change` has come; the changes before it stay in `seen`.
    bool waitFor(const ChangeEvent& change)
    {
        return QTest::qWaitFor(
            [&] {
                collect();
                return seen.contains(change);
            },
            kWaitMs);
    }
};

ChangeEvent event(quint32 code, const QString& path1, const QString& path2 = {})
{
    return ChangeEvent{code, path1, path2};
}

std::string describe(const QList<ChangeEvent>& changes)
{
    std::string text;
    for (const ChangeEvent& c : changes)
        text += QStringLiteral("%1 %2 %3\n").arg(c.code, 0, 16).arg(c.path1, c.path2).toStdString();
    return text;
}

// Each kind of change in a watched folder, in the order made, files and folders alike.
TEST(InotifyChangeMonitor, ReportsCreateUpdateRenameAndDelete)
{
    Watched w;
    makeFile(w.at("a.txt"));
    ASSERT_TRUE(w.waitFor(event(oplog::kUpdateItem, w.at("a.txt"))));
    touch(w.at("a.txt"));
    ASSERT_TRUE(QFile::rename(w.at("a.txt"), w.at("b.txt")));
    ASSERT_TRUE(QDir().mkdir(w.at("folder")));
    ASSERT_TRUE(QDir().rename(w.at("folder"), w.at("renamed")));
    ASSERT_TRUE(QFile::remove(w.at("b.txt")));
    ASSERT_TRUE(QDir().rmdir(w.at("renamed")));

    const QList<ChangeEvent> expected = {event(oplog::kCreate, w.at("a.txt")),
        event(oplog::kUpdateItem, w.at("a.txt")), event(oplog::kUpdateItem, w.at("a.txt")),
        event(oplog::kRenameItem, w.at("a.txt"), w.at("b.txt")), event(oplog::kMakeDirectory, w.at("folder")),
        event(oplog::kRenameFolder, w.at("folder"), w.at("renamed")), event(oplog::kDelete, w.at("b.txt")),
        event(oplog::kRemoveDirectory, w.at("renamed"))};
    ASSERT_TRUE(w.waitFor(expected.last())) << describe(w.seen);
    EXPECT_EQ(w.seen, expected) << describe(w.seen);
}

// New folders are watched as they appear, by their present names; a tree made faster than it can be
// watched is reported whole, each entry once.
TEST(InotifyChangeMonitor, FollowsNewAndRenamedFolders)
{
    Watched w;
    ASSERT_TRUE(QDir().mkdir(w.at("new")));
    ASSERT_TRUE(w.waitFor(event(oplog::kMakeDirectory, w.at("new"))));
    makeFile(w.at("new/inside.dat"));
    ASSERT_TRUE(w.waitFor(event(oplog::kCreate, w.at("new/inside.dat"))));

    ASSERT_TRUE(QDir().rename(w.at("new"), w.at("old")));
    makeFile(w.at("old/later.dat"));
    ASSERT_TRUE(w.waitFor(event(oplog::kCreate, w.at("old/later.dat")))) << describe(w.seen);

    // A folder removed and made again at once is followed again.
    ASSERT_TRUE(QDir().mkdir(w.at("again")));
    ASSERT_TRUE(w.waitFor(event(oplog::kMakeDirectory, w.at("again"))));
    ASSERT_TRUE(QDir().rmdir(w.at("again")));
    ASSERT_TRUE(QDir().mkdir(w.at("again")));
    makeFile(w.at("again/x.dat"));
    ASSERT_TRUE(w.waitFor(event(oplog::kCreate, w.at("again/x.dat")))) << describe(w.seen);

    ASSERT_TRUE(QDir().mkpath(w.at("a/b/c")));
    makeFile(w.at("a/b/c/deep.dat"));
    ASSERT_TRUE(w.waitFor(event(oplog::kCreate, w.at("a/b/c/deep.dat")))) << describe(w.seen);
    for (const char* made : {"a", "a/b", "a/b/c"})
        EXPECT_EQ(w.seen.count(event(oplog::kMakeDirectory, w.at(QString::fromLatin1(made)))), 1) << made;
    EXPECT_EQ(w.seen.count(event(oplog::kCreate, w.at("a/b/c/deep.dat"))), 1);
}

// A move out of the watched folders is a deletion, a move in a creation (and the folder moved in is
// followed); the folder that moved out is followed no more.
TEST(InotifyChangeMonitor, MovesAcrossTheWatchedBoundary)
{
    Watched w;
    const QString outside = QDir(w.dir.path()).filePath(QStringLiteral("outside"));
    ASSERT_TRUE(QDir().mkpath(outside + QStringLiteral("/in")));
    ASSERT_TRUE(QDir().mkdir(w.at("leaving")));
    ASSERT_TRUE(w.waitFor(event(oplog::kMakeDirectory, w.at("leaving"))));

    ASSERT_TRUE(QDir().rename(w.at("leaving"), outside + QStringLiteral("/leaving")));
    ASSERT_TRUE(w.waitFor(event(oplog::kRemoveDirectory, w.at("leaving")))) << describe(w.seen);
    ASSERT_TRUE(QDir().rename(outside + QStringLiteral("/in"), w.at("in")));
    ASSERT_TRUE(w.waitFor(event(oplog::kMakeDirectory, w.at("in")))) << describe(w.seen);
    makeFile(outside + QStringLiteral("/leaving/unseen.dat"));
    makeFile(w.at("in/seen.dat"));
    ASSERT_TRUE(w.waitFor(event(oplog::kCreate, w.at("in/seen.dat")))) << describe(w.seen);
    for (const ChangeEvent& c : w.seen)
        EXPECT_FALSE(c.path1.contains(QStringLiteral("unseen"))) << describe(w.seen);
}

// Past the watch limit the sink hears of it once, and the folders already watched are still followed.
TEST(InotifyChangeMonitor, WatchLimitIsSaidOnceAndWatchingGoesOn)
{
    Watched w([](InotifyMonitorOptions& options, const QString& root) {
        for (const char* sub : {"s1", "s2", "s3", "s4"})
            QDir().mkpath(root + QLatin1Char('/') + QLatin1String(sub));
        options.maxWatches = 3;
    });
    EXPECT_EQ(w.monitor->watchedFolders(), 3);
    ASSERT_TRUE(QDir().mkdir(w.at("s5")));
    makeFile(w.at("root.dat"));
    ASSERT_TRUE(w.waitFor(event(oplog::kCreate, w.at("root.dat")))) << describe(w.seen);
    EXPECT_TRUE(w.seen.contains(event(oplog::kMakeDirectory, w.at("s5"))));
    EXPECT_EQ(w.notes.size(), 1);
}

// A skipped folder (the cache by default) is not followed.
TEST(InotifyChangeMonitor, SkippedFolderIsNotFollowed)
{
    Watched w([](InotifyMonitorOptions& options, const QString& root) {
        QDir().mkpath(root + QStringLiteral("/.cache/thumbs"));
        options.skipped = {root + QStringLiteral("/.cache")};
    });
    makeFile(w.at(".cache/thumbs/t.png"));
    makeFile(w.at("after.dat"));
    ASSERT_TRUE(w.waitFor(event(oplog::kUpdateItem, w.at("after.dat"))));
    for (const ChangeEvent& c : w.seen)
        EXPECT_FALSE(c.path1.contains(QStringLiteral(".cache"))) << describe(w.seen);
}

// A burst bigger than the queue: the queue holds its capacity, the rest is summed up as one update of the
// folder the burst happened in.
TEST(InotifyChangeMonitor, BurstBeyondTheQueueIsSummedUp)
{
    constexpr int kFiles = 2000;
    const auto file = [](const QString& root, int i) { return root + QStringLiteral("/burst/%1").arg(i); };
    Watched w(
        [&](InotifyMonitorOptions&, const QString& root) {
            QDir().mkpath(root + QStringLiteral("/burst"));
            for (int i = 0; i < kFiles; ++i)
                makeFile(file(root, i));
        },
        100);
    for (int i = 0; i < kFiles; ++i)
        ASSERT_EQ(::unlink(QFile::encodeName(file(w.root, i)).constData()), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return w.queue.summedUp() == kFiles - 100; }, kWaitMs))
        << w.queue.summedUp();
    w.monitor->stop();
    const QList<oplog::QueuedChange> taken = w.queue.take(kFiles);
    ASSERT_EQ(taken.size(), 101);
    EXPECT_EQ(taken.first().change, event(oplog::kDelete, file(w.root, 0)));
    EXPECT_EQ(taken.last().change, event(oplog::kUpdateDirectory, w.at("burst")));
}

// The mount table: a volume that appears is a medium inserted (removable) or a drive added, one that goes
// the opposite; a removable medium is followed like the roots. The table here is a file of the test's own,
// rewritten as the kernel would change its own; the sysfs tree says which disk is removable.
TEST(InotifyChangeMonitor, MountTableGivesMediaAndDrives)
{
    QTemporaryDir dir;
    const auto write = [](const QString& path, const QByteArray& text) {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
    };
    write(dir.filePath(QStringLiteral("sys/block/sdz/removable")), "1\n");
    write(dir.filePath(QStringLiteral("sys/block/sda/removable")), "0\n");
    QDir().mkpath(dir.filePath(QStringLiteral("sys/block/sdz/sdz1")));
    const QString stick = dir.filePath(QStringLiteral("stick"));
    const QString data = dir.filePath(QStringLiteral("data"));
    QDir().mkpath(stick);
    QDir().mkpath(data);
    const QString table = dir.filePath(QStringLiteral("mounts/mountinfo"));
    const QByteArray rootLine = "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n";
    write(table, rootLine);
    Watched w([&](InotifyMonitorOptions& options, const QString&) {
        options.mountInfoPath = table;
        options.sysRoot = dir.filePath(QStringLiteral("sys"));
        options.devRoot = dir.filePath(QStringLiteral("dev"));
    });

    const QByteArray stickLine = "40 1 8:17 / " + QFile::encodeName(stick) + " rw - vfat /dev/sdz1 rw\n";
    write(
        table, rootLine + stickLine + "41 1 8:3 / " + QFile::encodeName(data) + " rw - ext4 /dev/sda3 rw\n");
    ASSERT_TRUE(w.waitFor(event(oplog::kDriveAdded, data))) << describe(w.seen);
    EXPECT_TRUE(w.seen.contains(event(oplog::kMediaInserted, stick))) << describe(w.seen);
    makeFile(stick + QStringLiteral("/photo.jpg"));
    ASSERT_TRUE(w.waitFor(event(oplog::kCreate, stick + QStringLiteral("/photo.jpg")))) << describe(w.seen);

    write(table, rootLine);
    ASSERT_TRUE(w.waitFor(event(oplog::kMediaRemoved, stick))) << describe(w.seen);
    ASSERT_TRUE(w.waitFor(event(oplog::kDriveRemoved, data))) << describe(w.seen);
}

} // namespace
