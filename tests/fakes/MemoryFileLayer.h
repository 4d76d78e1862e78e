#pragma once

#include "platform/FileIo.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMutex>
#include <QStringList>

#include <atomic>
#include <functional>

namespace vindaro::testing {

// A byte range [offset, offset + length) of a file, 0-based.
struct ByteRange
{
    qint64 offset = 0;
    qint64 length = 0;
    bool touches(qint64 from, qint64 count) const { return from < offset + length && offset < from + count; }
};

// Files kept in memory, with failures injected where a test wants them:
// reads that touch a bad range fail with `readErrno` (a scratched sector), writes fail once the file would
// pass `writeLimit` bytes (a full disk), opens and length queries fail with a chosen errno.
// Thread-safe, so a copy running on a worker thread can use it.
class MemoryFileLayer final : public platform::FileLayer
{
public:
    struct Faults
    {
        QList<ByteRange> badReads;
        int readErrno = 5; // EIO
        QString readText = QStringLiteral("Input/output error");
        qint64 writeLimit = -1; // -1: no limit
        int writeErrno = 28; // ENOSPC
        QString writeText = QStringLiteral("No space left on device");
        int syncErrno = 0; // sync() of a file open for update fails with this (a write-back failure)
        int closeErrno = 0; // close() of a file open for update fails with this
        int openReadErrno = 0;
        int openUpdateErrno = 0;
        int lengthErrno = 0;
    };

    void reset(); // forgets every file, fault and count
    void put(const QString& path, const QByteArray& bytes);
    // A file of `length` bytes whose content is positionBytes() computed on the fly, taking no memory
    // (the 3 GiB source). Writes into such a file are checked against the same pattern instead of kept.
    void putGenerated(const QString& path, qint64 length);
    qint64 patternMismatches(const QString& path) const; // bytes written that differ from the pattern
    QByteArray bytes(const QString& path) const;
    bool contains(const QString& path) const;
    Faults& faults(const QString& path); // creates the entry's fault set
    // Called before every read with (path, offset, bytes): lets a test hang a read or count them.
    void setReadHook(std::function<void(const QString&, qint64, qint64)> hook);

    int readCount() const;
    int openFiles() const; // files open right now
    int maxOpenFiles() const; // the most ever open at once
    qint64 largestRead() const;
    QList<qint64> readOffsets(const QString& path) const;
    int syncCount(const QString& path) const; // successful syncs of the file
    // Files opened for reading from now on say they read ahead well, as large files on a disk do.
    void setReadsAhead(bool readsAhead) { m_readsAhead = readsAhead; }
    // Files copy into each other inside the "system" (copyTo) from now on; failing as a whole, as
    // copy_file_range does, when either side fails.
    void setCopiesInside(bool copiesInside) { m_copiesInside = copiesInside; }
    int insideCopies() const { return m_insideCopies; } // copyTo calls that succeeded

    std::unique_ptr<platform::RandomAccessFile> openForReading(
        const QString& path, platform::IoResult& result) override;
    std::unique_ptr<platform::RandomAccessFile> openForUpdate(
        const QString& path, platform::IoResult& result) override;
    qint64 length(const QString& path, platform::IoResult& result) override;
    platform::IoResult copyWhole(const QString& source, const QString& destination) override;
    platform::IoResult truncate(const QString& path) override;
    platform::IoResult remove(const QString& path) override;
    bool exists(const QString& path) override;
    platform::IoResult makeFolders(const QString& path) override;
    // Fails with `syncFileSystemErrno` when set, as a device that lost a write-back does.
    platform::IoResult syncFileSystem(const QString& path) override;
    int syncFileSystemErrno = 0;
    QStringList fileSystemsSynced; // the paths asked, in order
    QStringList foldersMade() const;

private:
    friend class MemoryFile;
    std::atomic<bool> m_readsAhead{false};
    std::atomic<bool> m_copiesInside{false};
    std::atomic<int> m_insideCopies{0};
    struct Entry
    {
        QByteArray bytes;
        qint64 generatedLength = -1; // >= 0: a pattern file of this length, `bytes` unused
        qint64 mismatches = 0;
        Faults faults;
        QList<qint64> readOffsets;
        int syncs = 0;
    };
    platform::IoResult read(const QString& path, qint64 offset, char* data, qint64 maxBytes);
    platform::IoResult write(const QString& path, qint64 offset, const char* data, qint64 count);
    platform::IoResult sync(const QString& path);
    platform::IoResult close(const QString& path);
    void closed();

    mutable QMutex m_mutex;
    QHash<QString, Entry> m_files;
    QStringList m_folders;
    std::function<void(const QString&, qint64, qint64)> m_readHook;
    int m_readCount = 0;
    int m_open = 0;
    int m_maxOpen = 0;
    qint64 m_largestRead = 0;
};

// Bytes whose value tells their offset, so a misplaced block shows in a comparison.
QByteArray positionBytes(qint64 length);
inline char patternByte(qint64 offset)
{
    return char((offset * 7 + offset / 251) & 0xFF);
}

} // namespace vindaro::testing
