#pragma once

#include <QString>
#include <QtGlobal>

#include <cerrno>
#include <memory>

namespace vindaro::platform {

// The outcome of one file operation. `error` is the errno value of the failure (0 = success), so the
// copy engine can sort failures into its own classes; `bytes` is what was actually transferred, so end of
// file (bytes < asked, error 0) stays distinct from a failed read.
struct IoResult
{
    qint64 bytes = 0;
    int error = 0;
    QString description; // the system's words for `error`; may be empty

    bool ok() const { return error == 0; }
    static IoResult failure(int errnoValue, QString text = {})
    {
        IoResult r;
        r.error = errnoValue;
        r.description = std::move(text);
        return r;
    }
};

// A file open for access at 0-based byte offsets. The destructor closes a file that close() has not,
// dropping the result: a writer that must know whether its bytes arrived calls sync() and close().
class RandomAccessFile
{
public:
    virtual ~RandomAccessFile() = default;
    // Reads up to `maxBytes` at `offset`; fewer only at end of file.
    virtual IoResult readAt(qint64 offset, char* data, qint64 maxBytes) = 0;
    // Writes all `bytes` at `offset`, growing the file as needed; never truncates.
    virtual IoResult writeAt(qint64 offset, const char* data, qint64 bytes) = 0;
    // Waits until the bytes written so far are on the device; a write-back failure shows here.
    virtual IoResult sync() = 0;
    // Closes the file and answers what the system said (a network share may report a lost write only
    // now). Later calls answer success and do nothing.
    virtual IoResult close() = 0;
    // Whether reading far ahead in one call is cheap and safe: a large file on a disk, not on an optical
    // disc, where a longer read makes the drive retry more bad sectors.
    virtual bool readsAheadWell() const { return false; }
    // Copies `bytes` from this file at `offset` into `destination` at `destinationOffset` inside the
    // system, without passing them through the program (copy_file_range). Answers the bytes copied; a
    // failure does not tell which side failed, so a caller that must know reads and writes them itself.
    // ENOTSUP where the two files cannot do it.
    virtual IoResult copyTo(
        RandomAccessFile& destination, qint64 offset, qint64 destinationOffset, qint64 bytes)
    {
        Q_UNUSED(destination);
        Q_UNUSED(offset);
        Q_UNUSED(destinationOffset);
        Q_UNUSED(bytes);
        return IoResult::failure(ENOTSUP);
    }
    // The size of the pieces the file is read in from its medium, each read or failed whole: 2,324 for a
    // Video CD track (the payload of a Mode 2 Form 2 sector), 2,048 for another file read sector by
    // sector from a disc; 0 where nothing is known of it (a file of the local file system).
    virtual qint64 sectorBytes() const { return 0; }
};

// Whole-file services the copy engine needs. The real one works on the local file system; tests use a
// memory fake that fails chosen reads and writes.
class FileLayer
{
public:
    virtual ~FileLayer() = default;
    virtual std::unique_ptr<RandomAccessFile> openForReading(const QString& path, IoResult& result) = 0;
    // Opens for reading and writing, creating the file when it is missing and keeping its bytes when not.
    virtual std::unique_ptr<RandomAccessFile> openForUpdate(const QString& path, IoResult& result) = 0;
    // The length in bytes, or -1 with the reason in `result` when the file cannot be examined.
    virtual qint64 length(const QString& path, IoResult& result) = 0;
    // Copies a whole file (used for empty sources); replaces an existing destination.
    virtual IoResult copyWhole(const QString& source, const QString& destination) = 0;
    // Cuts the file to zero bytes: only ever called when the user chose to overwrite it.
    virtual IoResult truncate(const QString& path) = 0;
    virtual IoResult remove(const QString& path) = 0;
    virtual bool exists(const QString& path) = 0;
    // Creates a folder and any missing parents; succeeds when it exists already.
    virtual IoResult makeFolders(const QString& path) = 0;
    // Waits until everything written to the file system that holds `path` is on its device; a write-back
    // failure of any file written there since it was opened shows here.
    virtual IoResult syncFileSystem(const QString& path) = 0;
};

} // namespace vindaro::platform
