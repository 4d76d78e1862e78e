#pragma once

#include "platform/Shell.h"

#include <QObject>
#include <QString>

#include <memory>

namespace vindaro::platform {

struct TransferJob;

// One copy or move of a file or folder to `target` (its full new path), run on a worker thread so that a
// read that hangs on a damaged disc never holds the window.
//
// Promises:
// - every file is written beside its target under a temporary name, flushed to the disk (fsync) and
//   closed, and only then renamed into place: a failed or cancelled transfer leaves no partial file, and
//   an existing target is replaced only when `replace` allows it (otherwise the transfer fails with
//   EEXIST, even when the name appeared while the copy ran);
// - a move is one rename on the same file system; across file systems the source is removed only after
//   every piece arrived, was flushed, closed and has the source's size;
// - cancel() returns at once, even while the worker waits in a read: the worker is abandoned, the partial
//   files it made are removed there and then, and the worker ends by itself once its read returns.
//   Pieces already complete (in a folder copy) stay; nothing that existed before is ever removed.
//
// The result says what failed, on which path and with which errno; reading the source and writing the
// target are told apart.
class FileTransfer : public QObject
{
    Q_OBJECT

public:
    FileTransfer(
        const QString& source, const QString& target, bool move, bool replace, QObject* parent = nullptr);
    ~FileTransfer() override; // abandons a running worker, as cancel() does

    void start();
    void cancel();
    bool isFinished() const;
    // How it ended, once finished() was emitted or cancel() was called.
    FileOpResult result() const;
    qint64 doneBytes() const;
    qint64 totalBytes() const; // -1 until the source was measured

    // For tests and a clean exit: waits until every abandoned worker has ended; false on timeout.
    static bool waitForAbandonedWorkers(int timeoutMs);

signals:
    // Emitted on this object's thread when the worker ended (not after cancel()).
    void finished();

private:
    std::shared_ptr<TransferJob> m_job;
    bool m_started = false;
    bool m_cancelled = false;
};

// Removes a file, a link or a folder tree (links inside are removed, never followed). Stops at the first
// entry that cannot be removed and names it, with step Delete.
FileOpResult removePermanently(const QString& path);

} // namespace vindaro::platform
