#include "copy/FileResumeStore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

using vindaro::copy::FileResumeStore;
using vindaro::copy::ResumeRecord;

namespace {

const QDateTime kNow(QDate(2024, 5, 1), QTime(10, 0), Qt::UTC);

ResumeRecord record(qint64 continuePosition, int elapsedSeconds = 12)
{
    ResumeRecord r;
    r.continuePosition = continuePosition;
    r.copiedPosition = continuePosition + 1;
    r.estimatedSeconds = 3600;
    r.elapsedSeconds = elapsedSeconds;
    r.speedKBps = 2048;
    return r;
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
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

TEST_F(FileResumeStoreTest, ANewInstanceReadsWhatAnEarlierOneWrote)
{
    // Positions past 4 GiB and past 2^53 (not exact as a double); int figures beyond 16 bits and negative.
    ResumeRecord big;
    big.continuePosition = 5'000'000'000;
    big.copiedPosition = (qint64(1) << 62) + 1;
    big.estimatedSeconds = 40000;
    big.elapsedSeconds = 32767;
    big.speedKBps = -1;
    big.merge = true; // a merge's record keeps where it writes
    big.writePosition = 6'000'000'001;
    {
        FileResumeStore writer = store();
        ASSERT_TRUE(writer.save(QStringLiteral("/disc/AVSEQ01.DAT"), big))
            << writer.errorString().toStdString();
    }
    FileResumeStore reader = store();
    ResumeRecord loaded;
    ASSERT_TRUE(reader.load(QStringLiteral("/disc/AVSEQ01.DAT"), loaded));
    EXPECT_EQ(loaded, big);
    EXPECT_EQ(loaded.continuePosition, 5'000'000'000);
    EXPECT_EQ(loaded.copiedPosition, (qint64(1) << 62) + 1);
    EXPECT_EQ(loaded.writePosition, 6'000'000'001);
    EXPECT_FALSE(reader.load(QStringLiteral("/disc/AVSEQ02.DAT"), loaded));
}

// Records written before merges were recorded have neither field: they are a plain copy's.
TEST_F(FileResumeStoreTest, ARecordWithoutTheMergeFieldsIsAPlainCopys)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(storePath()).absolutePath()));
    ASSERT_TRUE(writeAll(storePath(),
        R"({"format": "vindaro-resume", "version": 1, "records": {"/out/a.dat": {"continuePosition": 40961,
        "copiedPosition": 40961, "estimatedSeconds": 9, "elapsedSeconds": 3, "speedKBps": 12,
        "savedUtc": "2024-05-01T09:00:00Z"}}})"));
    ResumeRecord loaded;
    ASSERT_TRUE(store().load(QStringLiteral("/out/a.dat"), loaded));
    EXPECT_EQ(loaded.continuePosition, 40961);
    EXPECT_FALSE(loaded.merge);
    EXPECT_EQ(loaded.writePosition, 0);
}

TEST_F(FileResumeStoreTest, NoStoreFileMeansNoRecordAndRemoveCreatesNothing)
{
    FileResumeStore s = store();
    ResumeRecord loaded;
    EXPECT_FALSE(s.load(QStringLiteral("/x.dat"), loaded));
    s.remove(QStringLiteral("/x.dat"));
    EXPECT_FALSE(QFile::exists(storePath()));
    EXPECT_FALSE(s.save(QString(), record(1)));
}

TEST_F(FileResumeStoreTest, DestinationsAreIndependentAndRemoveTakesOnlyItsOwn)
{
    FileResumeStore s = store();
    ASSERT_TRUE(s.save(QStringLiteral("/out/a.dat"), record(100)));
    ASSERT_TRUE(s.save(QStringLiteral("/out/b.dat"), record(200)));
    ASSERT_TRUE(s.save(QStringLiteral("/out/a.dat"), record(150))); // a later save replaces the record

    ResumeRecord loaded;
    ASSERT_TRUE(store().load(QStringLiteral("/out/a.dat"), loaded));
    EXPECT_EQ(loaded, record(150));
    ASSERT_TRUE(store().load(QStringLiteral("/out/b.dat"), loaded));
    EXPECT_EQ(loaded, record(200));

    s.remove(QStringLiteral("/out/a.dat"));
    EXPECT_TRUE(s.errorString().isEmpty());
    EXPECT_FALSE(store().load(QStringLiteral("/out/a.dat"), loaded));
    ASSERT_TRUE(store().load(QStringLiteral("/out/b.dat"), loaded));
    EXPECT_EQ(loaded, record(200));
}

TEST_F(FileResumeStoreTest, KeyIsTheCleanedAbsolutePath)
{
    FileResumeStore s = store();
    ASSERT_TRUE(s.save(QStringLiteral("/a/./b.dat"), record(7)));
    ResumeRecord loaded;
    EXPECT_TRUE(s.load(QStringLiteral("/a/b.dat"), loaded));
    EXPECT_TRUE(s.load(QStringLiteral("/a/c/../b.dat"), loaded));
    EXPECT_TRUE(s.load(QStringLiteral("//a//b.dat"), loaded));
    EXPECT_FALSE(s.load(QStringLiteral("/a/B.dat"), loaded)); // Linux names are case-sensitive

    // A relative destination is taken against the current folder.
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_dir.path()));
    const bool saved = s.save(QStringLiteral("rel.dat"), record(9));
    QDir::setCurrent(before);
    ASSERT_TRUE(saved);
    EXPECT_TRUE(s.load(m_dir.filePath(QStringLiteral("rel.dat")), loaded));
    EXPECT_EQ(loaded, record(9));
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

    ASSERT_TRUE(writeAll(storePath(), "{}")); // rewritten in place by someone else
    EXPECT_FALSE(reader.load(QStringLiteral("/out/a.dat"), loaded));
    ASSERT_TRUE(QFile::remove(storePath()));
    EXPECT_FALSE(reader.load(QStringLiteral("/out/a.dat"), loaded));
    EXPECT_TRUE(writer.save(QStringLiteral("/out/c.dat"), record(300)));
    EXPECT_FALSE(reader.load(QStringLiteral("/out/a.dat"), loaded));
    EXPECT_TRUE(reader.load(QStringLiteral("/out/c.dat"), loaded));
}

// Store files that are not ours or are broken: read as empty, untouched by reads, set aside by the next save.
class DamagedStoreTest : public FileResumeStoreTest, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(DamagedStoreTest, ReadsAsNoRecordAndTheNextSaveKeepsACopyAside)
{
    const QByteArray damaged = QByteArray(GetParam());
    ASSERT_TRUE(QDir().mkpath(QFileInfo(storePath()).path()));
    ASSERT_TRUE(writeAll(storePath(), damaged));

    FileResumeStore s = store();
    ResumeRecord loaded;
    EXPECT_FALSE(s.load(QStringLiteral("/out/a.dat"), loaded));
    s.remove(QStringLiteral("/out/a.dat"));
    EXPECT_EQ(readAll(storePath()), damaged) << "reading or removing must not touch a damaged store";

    ASSERT_TRUE(s.save(QStringLiteral("/out/a.dat"), record(42))) << s.errorString().toStdString();
    EXPECT_EQ(readAll(s.damagedCopyPath()), damaged);
    ASSERT_TRUE(store().load(QStringLiteral("/out/a.dat"), loaded));
    EXPECT_EQ(loaded, record(42));
}

INSTANTIATE_TEST_SUITE_P(FileResumeStore, DamagedStoreTest,
    ::testing::Values("", "garbage\x01\xff",
        "{\"format\": \"vindaro-resume\", \"version\": 1, \"records\": {\"/a\": {", "[1, 2, 3]",
        "{\"format\": \"other\", \"version\": 1, \"records\": {}}",
        "{\"format\": \"vindaro-resume\", \"version\": 2, \"records\": {}}",
        "{\"format\": \"vindaro-resume\", \"version\": 1, \"records\": []}"));

TEST_F(FileResumeStoreTest, TruncatedRealStoreReadsAsEmpty)
{
    ASSERT_TRUE(store().save(QStringLiteral("/out/a.dat"), record(5'000'000'000)));
    const QByteArray whole = readAll(storePath());
    for (qsizetype cut : {qsizetype(1), whole.size() / 2, whole.size() - 2}) {
        ASSERT_TRUE(writeAll(storePath(), whole.left(cut)));
        ResumeRecord loaded;
        EXPECT_FALSE(store().load(QStringLiteral("/out/a.dat"), loaded)) << "cut at " << cut;
    }
}

// One record that makes no sense reads as absent; its neighbour still counts.
struct BadField
{
    const char* field;
    const char* json;
};

class BadRecordTest : public FileResumeStoreTest, public ::testing::WithParamInterface<BadField>
{
};

TEST_P(BadRecordTest, OnlyThatRecordIsLost)
{
    ASSERT_TRUE(store().save(QStringLiteral("/out/good.dat"), record(10)));
    ResumeRecord merge = record(20); // a merge's, so its own fields can be spoilt too
    merge.merge = true;
    merge.writePosition = 500;
    ASSERT_TRUE(store().save(QStringLiteral("/out/bad.dat"), merge));
    QByteArray text = readAll(storePath());
    // Replace the value of one field of the bad record; the writer puts keys in sorted order, one per line.
    const qsizetype recordAt = text.indexOf("\"/out/bad.dat\"");
    ASSERT_GE(recordAt, 0);
    const QByteArray key = QByteArray("\"") + GetParam().field + "\": ";
    const qsizetype fieldAt = text.indexOf(key, recordAt);
    ASSERT_GE(fieldAt, 0);
    const qsizetype valueAt = fieldAt + key.size();
    qsizetype valueEnd = valueAt;
    while (valueEnd < text.size() && text[valueEnd] != ',' && text[valueEnd] != '\n')
        ++valueEnd;
    text.replace(valueAt, valueEnd - valueAt, GetParam().json);
    ASSERT_TRUE(writeAll(storePath(), text));

    ResumeRecord loaded;
    EXPECT_FALSE(store().load(QStringLiteral("/out/bad.dat"), loaded));
    ASSERT_TRUE(store().load(QStringLiteral("/out/good.dat"), loaded));
    EXPECT_EQ(loaded, record(10));
}

INSTANTIATE_TEST_SUITE_P(FileResumeStore, BadRecordTest,
    ::testing::Values(BadField{"continuePosition", "-1"}, BadField{"continuePosition", "1.5"},
        BadField{"continuePosition", "\"100\""}, BadField{"copiedPosition", "null"},
        BadField{"elapsedSeconds", "3000000000"}, BadField{"speedKBps", "true"},
        BadField{"savedUtc", "\"yesterday\""}, BadField{"merge", "1"}, BadField{"writePosition", "0"},
        BadField{"writePosition", "null"}));

TEST_F(FileResumeStoreTest, RecordsExpireAfterTheAgeLimitAndAreDroppedAtTheNextSave)
{
    ASSERT_TRUE(store(kNow).save(QStringLiteral("/out/old.dat"), record(1)));
    ResumeRecord loaded;
    EXPECT_TRUE(
        store(kNow.addDays(FileResumeStore::kMaxAgeDays)).load(QStringLiteral("/out/old.dat"), loaded));
    const QDateTime later = kNow.addDays(FileResumeStore::kMaxAgeDays + 1);
    EXPECT_FALSE(store(later).load(QStringLiteral("/out/old.dat"), loaded));

    ASSERT_TRUE(store(later).save(QStringLiteral("/out/new.dat"), record(2)));
    EXPECT_FALSE(readAll(storePath()).contains("/out/old.dat"));
    EXPECT_TRUE(store(later).load(QStringLiteral("/out/new.dat"), loaded));
}

TEST_F(FileResumeStoreTest, SaveAnswersFalseWhenTheFolderCannotBeMade)
{
    // A plain file where the store's folder should be (root ignores permission bits, so use this instead).
    const QString blocker = m_dir.filePath(QStringLiteral("blocker"));
    ASSERT_TRUE(writeAll(blocker, "x"));
    FileResumeStore s(blocker + QStringLiteral("/vindaro/resume.json"), [] { return kNow; });
    EXPECT_FALSE(s.save(QStringLiteral("/out/a.dat"), record(1)));
    EXPECT_FALSE(s.errorString().isEmpty());
    EXPECT_EQ(readAll(blocker), QByteArray("x"));
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

TEST_F(FileResumeStoreTest, AFailedWriteLeavesThePreviousStoreWhole)
{
    ASSERT_TRUE(store().save(QStringLiteral("/out/a.dat"), record(100)));
    const QByteArray before = readAll(storePath());
    bool saved = true;
    {
        FileSizeLimit limit(rlim_t(before.size() + 10)); // the store with two records is bigger
        if (!limit.active())
            GTEST_SKIP() << "cannot lower the file-size limit here";
        saved = store().save(QStringLiteral("/out/b.dat"), record(200));
    }
    EXPECT_FALSE(saved);
    EXPECT_EQ(readAll(storePath()), before);
    const QStringList left = QDir(QFileInfo(storePath()).path()).entryList(QDir::Files);
    EXPECT_EQ(left, QStringList{QStringLiteral("resume.json")}) << "no half-written temporary file is left";
    ResumeRecord loaded;
    ASSERT_TRUE(store().load(QStringLiteral("/out/a.dat"), loaded));
    EXPECT_EQ(loaded, record(100));
    EXPECT_FALSE(store().load(QStringLiteral("/out/b.dat"), loaded));
}

TEST(FileResumeStorePath, FollowsXdgStateHomeElseTheHomeFolder)
{
    const QByteArray saved = qgetenv("XDG_STATE_HOME");
    qputenv("XDG_STATE_HOME", "/tmp/state-here");
    EXPECT_EQ(FileResumeStore::defaultStorePath(), QStringLiteral("/tmp/state-here/vindaro/resume.json"));
    EXPECT_EQ(FileResumeStore().storePath(), QStringLiteral("/tmp/state-here/vindaro/resume.json"));
    qputenv("XDG_STATE_HOME", "relative/state"); // not absolute: to be ignored
    EXPECT_EQ(FileResumeStore::defaultStorePath(),
        QDir::homePath() + QStringLiteral("/.local/state/vindaro/resume.json"));
    qunsetenv("XDG_STATE_HOME");
    EXPECT_EQ(FileResumeStore::defaultStorePath(),
        QDir::homePath() + QStringLiteral("/.local/state/vindaro/resume.json"));
    qputenv("XDG_STATE_HOME", saved);
}

} // namespace
