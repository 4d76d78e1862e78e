#pragma once

#include "ResumeRecord.h"

#include <QDateTime>
#include <QJsonObject>
#include <QString>

#include <functional>
#include <mutex>

namespace vindaro::copy {

// Resume records kept in one JSON file in the user's state folder, one record per destination.
//
// Promises:
// - The key is the destination's absolute, cleaned path ("/a/./b.dat" and "/a/b.dat" are one record);
//   symbolic links are not resolved, so a record survives its destination being missing for a while.
// - Every save rewrites the file through QSaveFile: a crash or a full disk leaves the previous store
//   whole, and the save answers false.
// - A store file that is truncated, not JSON, or of another format reads as "no records"; it is never
//   touched by a read. The next successful save first copies it aside to "<store>.bad" (replacing an
//   older .bad) and then starts a fresh store, so a damaged file can still be looked at.
// - Single records that do not make sense (a missing field, a negative or fractional position, a figure
//   that does not fit) read as absent; the other records still count.
// - Records live until remove() or until they are kMaxAgeDays old: an older record reads as absent and
//   is dropped at the next save. A copy left for half a year is not worth continuing blind.
// - Every call looks at the file afresh, so two stores on the same file (two windows, two runs) see each
//   other's records; the last writer wins for its own key only. What was read last is kept in memory with
//   the file's identity (inode, size, change times): a call whose file is unchanged costs one stat instead
//   of a read and a parse, which a batch of thousands of files would otherwise pay per file. (Our own
//   writes always replace the file, so they change its inode; only a foreign rewrite in place that keeps
//   the size within one tick of the file system's clock could go unseen.)
class FileResumeStore final : public ResumeStore
{
public:
    static constexpr int kMaxAgeDays = 180;
    static constexpr qint64 kMaxStoreBytes = 16 * 1024 * 1024; // a larger file is treated as damaged

    // storePath empty: defaultStorePath(). now: the clock used to stamp and expire records (tests pin it).
    explicit FileResumeStore(QString storePath = {}, std::function<QDateTime()> now = {});

    // $XDG_STATE_HOME/vindaro/resume.json, or ~/.local/state/vindaro/resume.json without it.
    static QString defaultStorePath();
    // The key under which a destination is kept: absolute (against the current folder) and cleaned.
    static QString keyFor(const QString& destination);

    QString storePath() const { return m_storePath; }
    QString damagedCopyPath() const { return m_storePath + QStringLiteral(".bad"); }

    bool load(const QString& destination, ResumeRecord& record) override;
    // False when the store could not be written (no folder, no room); the previous store is then intact.
    bool save(const QString& destination, const ResumeRecord& record) override;
    // Quietly does nothing when there is no such record or the store cannot be written.
    void remove(const QString& destination) override;

    // Why the last save or remove failed, in the program's words; empty after a success.
    QString errorString() const { return m_errorString; }

    // How many times the store file was read and parsed: tests tell a kept answer from a fresh read.
    int fileReads() const { return m_fileReads; }

private:
    enum class State
    {
        Missing, // no file yet: an empty store
        Valid,
        Damaged, // readable bytes that are not a store of ours
        Unreadable // exists but cannot be opened or read: leave it alone
    };
    struct Contents
    {
        State state = State::Missing;
        QJsonObject records;
    };
    // The file's identity: any write, in place or by replacing the file, changes one of these.
    struct FileStamp
    {
        quint64 device = 0;
        quint64 inode = 0;
        qint64 size = -1;
        qint64 modifiedNs = 0;
        qint64 changedNs = 0;
        bool operator==(const FileStamp& o) const
        {
            return device == o.device && inode == o.inode && size == o.size && modifiedNs == o.modifiedNs
                && changedNs == o.changedNs;
        }
    };
    static bool stampOf(const QByteArray& path, FileStamp& stamp); // false: no such file (or no stat)

    // The store as the file holds it now: from memory when the file is unchanged since it was last read.
    const Contents& contents();
    bool write(const QJsonObject& records);

    QString m_storePath;
    std::function<QDateTime()> m_now;
    QByteArray m_encodedStorePath; // for the stat of every call
    QString m_errorString;
    std::mutex m_mutex; // the window and its copy's worker thread share one store
    Contents m_contents; // what the file held when it had m_stamp
    bool m_kept = false; // m_contents and m_stamp hold a read of the file
    FileStamp m_stamp;
    int m_fileReads = 0;
};

} // namespace vindaro::copy
