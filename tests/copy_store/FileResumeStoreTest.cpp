#include "copy/FileResumeStore.h"
#include "WholeFile.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

using vindaro::copy::FileResumeStore;
using vindaro::copy::ResumeRecord;
using vindaro::testing::readWholeFile;
using vindaro::testing::writeWholeFile;

namespace {

const QDateTime kNow(QDate(2024, 5, 1), QTime(10, 0), Qt::UTC);

ResumeRecord record(qint64 continuePosition)
{
    ResumeRecord r;
    r.continuePosition = continuePosition;
    r.copiedPosition = continuePosition + 1;
    r.estimatedSeconds = 3600;
    r.elapsedSeconds = 12;
    r.speedKBps = 2048;
    return r;
}

class FileResumeStoreTest : public ::testing::Test
{
protected:
    QString storePath() const { return m_dir.filePath(QStringLiteral("state/resume.json")); }
    FileResumeStore store(QDateTime now = kNow) const
    {
        return FileResumeStore(storePath(), [now] { return now; });
    }

    QTemporaryDir m_dir;
};

// One record per destination, keyed by its cleaned absolute path, read back whole by a new instance: 64-bit
// positions past 4 GiB and past 2^53 (not exact as a double), int figures beyond 16 bits and negative, a
// merge's own fields. A later save replaces a record; remove takes only its own.
TEST_F(FileResumeStoreTest, KeepsOneRecordPerCleanedDestinationAcrossInstances)
{
    ResumeRecord big;
    big.continuePosition = 5'000'000'000;
    big.copiedPosition = (qint64(1) << 62) + 1;
    big.estimatedSeconds = 40000;
    big.elapsedSeconds = 32767;
    big.speedKBps = -1;
    big.merge = true;
    big.writePosition = 6'000'000'001;
    FileResumeStore s = store();
    ResumeRecord loaded;
    EXPECT_FALSE(s.load(QStringLiteral("/out/a.dat"), loaded));
    s.remove(QStringLiteral("/out/a.dat"));
    EXPECT_FALSE(QFile::exists(storePath())) << "no store file is made for nothing";
    EXPECT_FALSE(s.save(QString(), record(1)));

    ASSERT_TRUE(s.save(QStringLiteral("/out/a.dat"), record(100)));
    ASSERT_TRUE(s.save(QStringLiteral("/out/./a.dat"), big)) << s.errorString().toStdString();
    ASSERT_TRUE(s.save(QStringLiteral("/out/b.dat"), record(200)));
    FileResumeStore reader = store();
    for (const QString& path :
        {QStringLiteral("/out/a.dat"), QStringLiteral("/out/c/../a.dat"), QStringLiteral("//out//a.dat")}) {
        ASSERT_TRUE(reader.load(path, loaded)) << path.toStdString();
        EXPECT_EQ(loaded, big);
    }
    EXPECT_FALSE(reader.load(QStringLiteral("/out/A.dat"), loaded)); // Linux names are case-sensitive

    s.remove(QStringLiteral("/out/a.dat"));
    EXPECT_TRUE(s.errorString().isEmpty());
    EXPECT_FALSE(store().load(QStringLiteral("/out/a.dat"), loaded));
    ASSERT_TRUE(store().load(QStringLiteral("/out/b.dat"), loaded));
    EXPECT_EQ(loaded, record(200));

    // A relative destination is taken against the current folder.
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_dir.path()));
    const bool saved = s.save(QStringLiteral("rel.dat"), record(9));
    QDir::setCurrent(before);
    ASSERT_TRUE(saved);
    EXPECT_TRUE(s.load(m_dir.filePath(QStringLiteral("rel.dat")), loaded));
}

// A batch asks the store once per file: an unchanged file is read once, yet a store written meanwhile by
// another run (replaced, or rewritten in place) is read again and its records count.
TEST_F(FileResumeStoreTest, AnUnchangedStoreIsReadOnceAndAChangedOneAgain)
{
    FileResumeStore writer = store();
    FileResumeStore reader = store();
    ASSERT_TRUE(writer.save(QStringLiteral("/out/a.dat"), record(100)));
    ResumeRecord loaded;
    for (int i = 0; i < 50; ++i) {
        EXPECT_TRUE(reader.load(QStringLiteral("/out/a.dat"), loaded));
        reader.remove(QStringLiteral("/out/f%1.dat").arg(i)); // no such record: nothing to write
    }
    EXPECT_EQ(reader.fileReads(), 1);

    ASSERT_TRUE(writer.save(QStringLiteral("/out/b.dat"), record(200)));
    ASSERT_TRUE(reader.load(QStringLiteral("/out/b.dat"), loaded));
    EXPECT_EQ(loaded, record(200));
    EXPECT_EQ(reader.fileReads(), 2);

    reader.remove(QStringLiteral("/out/b.dat")); // its own write is read back once, not taken on trust
    EXPECT_FALSE(writer.load(QStringLiteral("/out/b.dat"), loaded));
    EXPECT_TRUE(reader.load(QStringLiteral("/out/a.dat"), loaded));
    EXPECT_EQ(reader.fileReads(), 3);

    ASSERT_TRUE(writeWholeFile(storePath(), "{}")); // rewritten in place by someone else
    EXPECT_FALSE(reader.load(QStringLiteral("/out/a.dat"), loaded));
    ASSERT_TRUE(QFile::remove(storePath()));
    EXPECT_FALSE(reader.load(QStringLiteral("/out/a.dat"), loaded));
    EXPECT_TRUE(writer.save(QStringLiteral("/out/c.dat"), record(300)));
    EXPECT_FALSE(reader.load(QStringLiteral("/out/a.dat"), loaded));
    EXPECT_TRUE(reader.load(QStringLiteral("/out/c.dat"), loaded));
}

// Store files that are not ours or are broken, truncated ones among them: read as empty, untouched by reads,
// set aside by the next save.
TEST_F(FileResumeStoreTest, ADamagedStoreReadsAsEmptyAndTheNextSaveKeepsACopyAside)
{
    ASSERT_TRUE(store().save(QStringLiteral("/out/a.dat"), record(5'000'000'000)));
    const QByteArray whole = readWholeFile(storePath());
    const QByteArray damages[]
        = {"", "garbage\x01\xff", "{\"format\": \"vindaro-resume\", \"version\": 1, \"records\": {\"/a\": {",
            "[1, 2, 3]", "{\"format\": \"other\", \"version\": 1, \"records\": {}}",
            "{\"format\": \"vindaro-resume\", \"version\": 2, \"records\": {}}",
            "{\"format\": \"vindaro-resume\", \"version\": 1, \"records\": []}", whole.left(1),
            whole.left(whole.size() / 2), whole.left(whole.size() - 2)};
    for (const QByteArray& damaged : damages) {
        SCOPED_TRACE(damaged.toStdString());
        ASSERT_TRUE(writeWholeFile(storePath(), damaged));
        FileResumeStore s = store();
        ResumeRecord loaded;
        EXPECT_FALSE(s.load(QStringLiteral("/out/a.dat"), loaded));
        s.remove(QStringLiteral("/out/a.dat"));
        EXPECT_EQ(readWholeFile(storePath()), damaged)
            << "reading or removing must not touch a damaged store";

        ASSERT_TRUE(s.save(QStringLiteral("/out/b.dat"), record(42))) << s.errorString().toStdString();
        EXPECT_EQ(readWholeFile(s.damagedCopyPath()), damaged);
        ASSERT_TRUE(store().load(QStringLiteral("/out/b.dat"), loaded));
        EXPECT_EQ(loaded, record(42));
    }
}

// Records written before merges were recorded have neither merge field: they are a plain copy's. One record
// that makes no sense reads as absent; its neighbour still counts.
TEST_F(FileResumeStoreTest, AnOlderRecordIsAPlainCopysAndOneThatMakesNoSenseIsLostAlone)
{
    const QByteArray older = R"({"continuePosition": 40961, "copiedPosition": 40961, "estimatedSeconds": 9,
        "elapsedSeconds": 3, "speedKBps": 12, "savedUtc": "2024-05-01T09:00:00Z"})";
    const QList<std::pair<QString, QJsonValue>> spoilt = {{QString(), QJsonValue()}, // none: a valid merge
        {QStringLiteral("continuePosition"), -1}, {QStringLiteral("continuePosition"), 1.5},
        {QStringLiteral("continuePosition"), QStringLiteral("100")},
        {QStringLiteral("copiedPosition"), QJsonValue::Null}, {QStringLiteral("elapsedSeconds"), 3e9},
        {QStringLiteral("speedKBps"), true}, {QStringLiteral("savedUtc"), QStringLiteral("yesterday")},
        {QStringLiteral("merge"), 1}, {QStringLiteral("writePosition"), 0},
        {QStringLiteral("writePosition"), QJsonValue::Null}};
    for (const auto& [field, value] : spoilt) {
        SCOPED_TRACE(field.toStdString());
        QJsonObject merge = QJsonDocument::fromJson(older).object();
        merge.insert(QStringLiteral("merge"), true);
        merge.insert(QStringLiteral("writePosition"), 500);
        if (!field.isEmpty())
            merge.insert(field, value);
        QJsonObject records{{QStringLiteral("/out/old.dat"), QJsonDocument::fromJson(older).object()},
            {QStringLiteral("/out/merge.dat"), merge}};
        ASSERT_TRUE(writeWholeFile(storePath(),
            QJsonDocument(QJsonObject{{QStringLiteral("format"), QStringLiteral("vindaro-resume")},
                              {QStringLiteral("version"), 1}, {QStringLiteral("records"), records}})
                .toJson()));

        ResumeRecord loaded;
        EXPECT_EQ(store().load(QStringLiteral("/out/merge.dat"), loaded), field.isEmpty());
        ASSERT_TRUE(store().load(QStringLiteral("/out/old.dat"), loaded));
        EXPECT_EQ(loaded.continuePosition, 40961);
        EXPECT_FALSE(loaded.merge);
        EXPECT_EQ(loaded.writePosition, 0);
    }
}

TEST_F(FileResumeStoreTest, RecordsExpireAfterTheAgeLimitAndAreDroppedAtTheNextSave)
{
    ASSERT_TRUE(store(kNow).save(QStringLiteral("/out/old.dat"), record(1)));
    ResumeRecord loaded;
    EXPECT_TRUE(
        store(kNow.addDays(FileResumeStore::kMaxAgeDays)).load(QStringLiteral("/out/old.dat"), loaded));
    const QDateTime later = kNow.addDays(FileResumeStore::kMaxAgeDays + 1);
    EXPECT_FALSE(store(later).load(QStringLiteral("/out/old.dat"), loaded));

    ASSERT_TRUE(store(later).save(QStringLiteral("/out/new.dat"), record(2)));
    EXPECT_FALSE(readWholeFile(storePath()).contains("/out/old.dat"));
    EXPECT_TRUE(store(later).load(QStringLiteral("/out/new.dat"), loaded));
}

// A full disk while writing: the file-size limit makes every write past it fail with EFBIG, as on a
// full disk, whatever the user's rights.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        m_oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_old);
        rlimit limited = m_old;
        limited.rlim_cur = bytes;
        m_active = setrlimit(RLIMIT_FSIZE, &limited) == 0;
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_oldHandler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    bool active() const { return m_active; }

private:
    rlimit m_old{};
    void (*m_oldHandler)(int) = nullptr;
    bool m_active = false;
};

// A store that cannot be written answers false and says why: a full disk leaves the previous store whole
// and no half-written temporary file behind; a plain file where the store's folder should be (root ignores
// permission bits, so this instead of a read-only folder) is left as it is.
TEST_F(FileResumeStoreTest, AStoreThatCannotBeWrittenLeavesWhatWasThere)
{
    ASSERT_TRUE(store().save(QStringLiteral("/out/a.dat"), record(100)));
    const QByteArray before = readWholeFile(storePath());
    bool saved = true;
    {
        FileSizeLimit limit(rlim_t(before.size() + 10)); // the store with two records is bigger
        if (!limit.active())
            GTEST_SKIP() << "cannot lower the file-size limit here";
        saved = store().save(QStringLiteral("/out/b.dat"), record(200));
    }
    EXPECT_FALSE(saved);
    EXPECT_EQ(readWholeFile(storePath()), before);
    const QStringList left = QDir(QFileInfo(storePath()).path()).entryList(QDir::Files);
    EXPECT_EQ(left, QStringList{QStringLiteral("resume.json")}) << "no half-written temporary file is left";
    ResumeRecord loaded;
    ASSERT_TRUE(store().load(QStringLiteral("/out/a.dat"), loaded));
    EXPECT_EQ(loaded, record(100));
    EXPECT_FALSE(store().load(QStringLiteral("/out/b.dat"), loaded));

    const QString blocker = m_dir.filePath(QStringLiteral("blocker"));
    ASSERT_TRUE(writeWholeFile(blocker, "x"));
    FileResumeStore blocked(blocker + QStringLiteral("/vindaro/resume.json"), [] { return kNow; });
    EXPECT_FALSE(blocked.save(QStringLiteral("/out/a.dat"), record(1)));
    EXPECT_FALSE(blocked.errorString().isEmpty());
    EXPECT_EQ(readWholeFile(blocker), QByteArray("x"));
}

TEST(FileResumeStorePath, FollowsXdgStateHomeElseTheHomeFolder)
{
    const QByteArray saved = qgetenv("XDG_STATE_HOME");
    const QString inHome = QDir::homePath() + QStringLiteral("/.local/state/vindaro/resume.json");
    qputenv("XDG_STATE_HOME", "/tmp/state-here");
    EXPECT_EQ(FileResumeStore::defaultStorePath(), QStringLiteral("/tmp/state-here/vindaro/resume.json"));
    EXPECT_EQ(FileResumeStore().storePath(), QStringLiteral("/tmp/state-here/vindaro/resume.json"));
    qputenv("XDG_STATE_HOME", "relative/state"); // not absolute: to be ignored
    EXPECT_EQ(FileResumeStore::defaultStorePath(), inHome);
    qunsetenv("XDG_STATE_HOME");
    EXPECT_EQ(FileResumeStore::defaultStorePath(), inHome);
    qputenv("XDG_STATE_HOME", saved);
}

} // namespace
