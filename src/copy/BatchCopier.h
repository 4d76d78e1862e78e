#pragma once

#include "CopySession.h"
#include "DamageReport.h"

#include <QHash>
#include <QSet>
#include <QStringList>

#include <mutex>

namespace vindaro::copy {

// The batch's existing-file dialog: a destination without a resume record.
enum class BatchExistingChoice
{
    EndBatch,
    Overwrite,
    OverwriteAll, // this one and every later one
    KeepBoth, // the copy beside it, as "N[01]" and its name (nothing when both have one length)
};

// The batch dialog's codes: 1 overwrite, 2 overwrite all, 3 keep both; anything else ends the batch.
BatchExistingChoice batchExistingChoiceFromCode(int code);

// What the batch needs of its window beyond a single copy's host.
class BatchHost : public CopyHost
{
public:
    // The folder chooser shown together with the same-folder option; empty when the user cancelled.
    virtual QString chooseBatchFolder(bool& copyToSameDir) = 0;
    virtual BatchExistingChoice askBatchExistingFile(const QString& source, const QString& destination) = 0;
    virtual void startAnimation() = 0;
    virtual void stopAnimation() = 0;
    // The labels of the file in hand: "从“…”", "到“…”", "i/n ]" and "[ 总共：…".
    virtual void showFile(const QString& sourceText, const QString& destinationText, const QString& countText,
        const QString& totalText)
        = 0;
};

// Figures the batch window's one-second tick reads while the batch runs on its worker thread.
struct BatchCounters
{
    std::atomic<qint64> totalBytes{0}; // the lengths of every file that exists
    std::atomic<qint64> copiedBytes{0}; // the lengths of the files done so far
    std::atomic<int> finishedSeconds{0}; // the seconds of the files done so far
    // Held while a finished file's seconds move into finishedSeconds and while the tick reads the sum, so
    // the sum never counts them twice or not at all.
    mutable std::mutex secondsMutex;
};

struct BatchResult
{
    bool started = false; // false: nothing to copy, no folder chosen, no room, or a bad folder
    bool cancelled = false;
    int files = 0; // files in the batch
    int finished = 0; // copied to the end (unreadable stretches skipped or not)
    int skipped = 0; // left alone: the same length was there already
    int failed = 0;
    int withSkips = 0; // finished, with unreadable stretches left as zeros
    bool syncFailed = false; // the device did not confirm what was written: a box said so
    // Each file whose copy ran, with its rescue map when maps are kept: the damage report's input.
    std::vector<DamageInput> copies;
    QStringList notReached; // the batch ended before these files
};

// The batch's one-second figures: bytes of the whole batch so far, seconds of the finished files plus the
// current one, the estimated total time (-1 until something was copied) and whole KB per second.
struct BatchFigures
{
    qint64 copiedBytes = 0;
    qint64 batchSeconds = 0;
    qint64 estimatedSeconds = -1;
    qint64 kilobytesPerSecond = 0;
};
BatchFigures computeBatchFigures(
    const BatchCounters& counters, qint64 position, const std::atomic<int>& currentFileSeconds);

// The drive facts a batch asks for every file, kept per folder for one batch: the files of one folder lie on
// one volume, so thousands of files cost one look at the mount table per folder, not one each. Free space
// and readiness change while a batch runs and are always asked afresh. (A single file mounted over by a
// bind mount would be taken for its folder's volume; that only changes its block size.)
class FolderDriveFacts final : public DriveFacts
{
public:
    explicit FolderDriveFacts(DriveFacts& drives)
        : m_drives(drives)
    {
    }
    void forget(); // a new batch: the mounts may have changed since the last one

    int driveType(const QString& path) override;
    double freeBytes(const QString& path) override { return m_drives.freeBytes(path); }
    bool driveIsReady(const QString& path) override { return m_drives.driveIsReady(path); }
    QString driveName(const QString& path) override;
    bool isFloppy(const QString& path) override;

private:
    DriveFacts& m_drives;
    QHash<QString, int> m_types; // by folder, with its closing "/"
    QHash<QString, QString> m_names;
    QHash<QString, bool> m_floppies;
};

// Copies every listed file into one folder, file after file, with the block loop of a single copy in its
// batch mode and the batch's own answers for existing destinations.
class BatchCopier
{
public:
    BatchCopier(CopyState& state, BatchHost& host, platform::FileLayer& files, ResumeStore& resumeStore,
        DriveFacts& drives);

    BatchResult copyingFiles(const QStringList& entries);

    // Where a file goes. With `copyToSameDir` straight into `folder`; otherwise into the folders of the
    // source's own path below its volume, kept under `folder`: /media/cdrom/MPEGAV/AVSEQ01.DAT with the
    // folder /home/u/out/ goes to /home/u/out/MPEGAV/AVSEQ01.DAT, and a file of the root volume keeps its
    // whole folder path (/home/u/a.dat -> /home/u/out/home/u/a.dat).
    QString destinationFor(const QString& source, const QString& folder, bool copyToSameDir);

    const BatchCounters& counters() const { return m_counters; }
    // The block loop of the file in hand: a program ending while a read hangs abandons it and saves that
    // file's record from what was written.
    BlockCopier& copier() { return m_copier; }
    void setPlatformFamily(int family) { m_platformFamily = family; }

private:
    CopyOutcome copyOneFile(
        const QString& source, QString destination, bool& skipThisFile, QString& usedDestination);
    CopyOutcome startAt(const QString& source, const QString& destination, qint64 position);

    CopyState& m_state;
    BatchHost& m_host;
    platform::FileLayer& m_files;
    ResumeStore& m_resumeStore;
    DriveFacts& m_drives;
    FolderDriveFacts m_folderDrives; // for the block size and the destination of each file
    BlockCopier m_copier;
    BatchCounters m_counters;
    QSet<QString> m_foldersMade; // destination folders made in this batch
    int m_platformFamily = 3;
    bool m_overwriteAll = false;
};

} // namespace vindaro::copy
