#include "BatchCopier.h"

#include "CopyMessages.h"
#include "CopyText.h"
#include "files/Format.h"
#include "platform/Volumes.h"

#include <QDir>
#include <QFileInfo>

namespace vindaro::copy {

using platform::BoxButtons;
using platform::BoxIcon;
using platform::IoResult;
using platform::MessageBox;

using text::fileNameOf;
using text::folderOf;
using text::kCrLf;

namespace {

// The same file under both names: the same cleaned path, or (for files on disk) the same target of any
// links on the way.
bool isSameFile(const QString& source, const QString& destination)
{
    if (QDir::cleanPath(source) == QDir::cleanPath(destination))
        return true;
    const QString canonical = QFileInfo(source).canonicalFilePath();
    return !canonical.isEmpty() && canonical == QFileInfo(destination).canonicalFilePath();
}

} // namespace

BatchExistingChoice batchExistingChoiceFromCode(int code)
{
    switch (code) {
    case 1:
        return BatchExistingChoice::Overwrite;
    case 2:
        return BatchExistingChoice::OverwriteAll;
    case 3:
        return BatchExistingChoice::KeepBoth;
    default:
        return BatchExistingChoice::EndBatch;
    }
}

void FolderDriveFacts::forget()
{
    m_types.clear();
    m_names.clear();
    m_floppies.clear();
}

namespace {

// The answer kept for the path's folder, asked of `fetch` the first time.
template<typename T, typename Fetch>
T keptForFolder(QHash<QString, T>& kept, const QString& path, Fetch fetch)
{
    const QString folder = folderOf(path);
    const auto it = kept.constFind(folder);
    if (it != kept.constEnd())
        return *it;
    const T answer = fetch();
    kept.insert(folder, answer);
    return answer;
}

} // namespace

int FolderDriveFacts::driveType(const QString& path)
{
    return keptForFolder(m_types, path, [&] { return m_drives.driveType(path); });
}

QString FolderDriveFacts::driveName(const QString& path)
{
    return keptForFolder(m_names, path, [&] { return m_drives.driveName(path); });
}

bool FolderDriveFacts::isFloppy(const QString& path)
{
    return keptForFolder(m_floppies, path, [&] { return m_drives.isFloppy(path); });
}

BatchFigures computeBatchFigures(
    const BatchCounters& counters, qint64 position, const std::atomic<int>& currentFileSeconds)
{
    BatchFigures f;
    f.copiedBytes = counters.copiedBytes + std::max<qint64>(0, position);
    {
        const std::lock_guard<std::mutex> lock(counters.secondsMutex);
        f.batchSeconds = qint64(counters.finishedSeconds) + currentFileSeconds;
    }
    if (f.batchSeconds > 0 && f.copiedBytes > 0) {
        const double bytesPerSecond = double(f.copiedBytes) / double(f.batchSeconds);
        f.estimatedSeconds = roundHalfEven(double(counters.totalBytes) / bytesPerSecond);
        f.kilobytesPerSecond = f.copiedBytes / 1024 / f.batchSeconds;
    }
    return f;
}

BatchCopier::BatchCopier(CopyState& state, BatchHost& host, platform::FileLayer& files,
    ResumeStore& resumeStore, DriveFacts& drives)
    : m_state(state)
    , m_host(host)
    , m_files(files)
    , m_resumeStore(resumeStore)
    , m_drives(drives)
    , m_folderDrives(drives)
    , m_copier(state, host, files, resumeStore, cdRomNotReadyProbe(drives))
{
    m_copier.setBatchMode(true);
}

QString BatchCopier::destinationFor(const QString& source, const QString& folder, bool copyToSameDir)
{
    if (copyToSameDir)
        return folder + fileNameOf(source);
    QString below = folderOf(source);
    const QString root = m_folderDrives.driveName(source);
    if (!root.isEmpty() && below.startsWith(root))
        below = below.mid(root.size());
    while (below.startsWith(QLatin1Char('/')))
        below.remove(0, 1);
    return folder + below + fileNameOf(source);
}

BatchResult BatchCopier::copyingFiles(const QStringList& entries)
{
    BatchResult result;
    m_folderDrives.forget();
    m_foldersMade.clear();
    QStringList batchFiles;
    QList<qint64> lengths; // of batchFiles, as counted in the total
    qint64 total = 0;
    for (const QString& entry : entries) {
        // One look per file: a length tells that the file exists. Only a file whose length cannot be had
        // is asked about again; it counts with 0 bytes when it is there.
        IoResult io;
        qint64 length = m_files.length(entry, io);
        if (!io.ok()) {
            if (!m_files.exists(entry))
                continue;
            length = 0;
        }
        length = std::max<qint64>(0, length);
        if (__builtin_add_overflow(total, length, &total)) {
            m_host.notify(msg::tooManyFilesNotice());
            return result;
        }
        batchFiles << entry;
        lengths << length;
    }
    m_counters.totalBytes = total;
    m_counters.copiedBytes = 0;
    m_counters.finishedSeconds = 0;
    m_overwriteAll = false;
    result.files = int(batchFiles.size());

    bool copyToSameDir = false;
    QString folder = m_host.chooseBatchFolder(copyToSameDir);
    if (folder.isEmpty())
        return result;
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');

    if (!isNetworkPath(folder)) {
        const double free = m_drives.freeBytes(folder);
        if (free < 0) {
            m_host.notify(msg::invalidDestinationNotice());
            return result;
        }
        if (free < double(total)) {
            const int answer
                = m_host.ask(msg::batchLowSpaceQuestion(m_drives.driveName(folder), free, total));
            if (answer != platform::kAnswerYes)
                return result;
        }
    }

    result.started = true;
    m_files.makeFolders(folder); // a folder typed on the command line may not exist yet
    m_host.startAnimation();
    const QString totalLabel = msg::batchTotal(total);
    QStringList finishedDestinations; // their records go once the device has confirmed the batch
    QStringList foldersWritten;
    qsizetype reached = 0;
    for (qsizetype i = 0; i < batchFiles.size(); ++i) {
        // A cancel that came between two files ends the batch before the next destination is touched.
        if (m_state.stopRequested)
            break;
        reached = i + 1;
        const QString& source = batchFiles[i];
        const QString destination = destinationFor(source, folder, copyToSameDir);
        m_host.showFile(msg::batchFromText(source), msg::batchToText(destination),
            msg::batchCountText(i + 1, batchFiles.size()), totalLabel);
        if (!copyToSameDir) {
            // Once per folder and batch; a failure shows when the file is opened.
            const QString destinationFolder = folderOf(destination);
            if (!m_foldersMade.contains(destinationFolder) && m_files.makeFolders(destinationFolder).ok())
                m_foldersMade.insert(destinationFolder);
        }

        bool skipThisFile = false;
        QString usedDestination = destination;
        const CopyOutcome outcome = copyOneFile(source, destination, skipThisFile, usedDestination);
        if (!skipThisFile)
            m_counters.copiedBytes += lengths[i]; // the length counted in the total
        if (!skipThisFile && outcome != CopyOutcome::NotStarted) {
            RescueMap map = m_copier.rescueMap();
            if (map.size() == lengths[i])
                result.copies.push_back(DamageInput{source, usedDestination, lengths[i], std::move(map)});
        }

        if (skipThisFile)
            ++result.skipped;
        else if (outcome == CopyOutcome::Finished || outcome == CopyOutcome::FinishedWithSkips) {
            ++result.finished;
            result.withSkips += outcome == CopyOutcome::FinishedWithSkips ? 1 : 0;
            finishedDestinations << usedDestination;
        }
        if (!skipThisFile && outcome != CopyOutcome::NotStarted
            && !foldersWritten.contains(folderOf(usedDestination)))
            foldersWritten << folderOf(usedDestination);
        else if (outcome == CopyOutcome::Failed)
            ++result.failed;

        const bool stop = m_state.stopRequested;
        if (stop && m_state.cancelRequested) {
            // Only a file whose copy ran gets a record: one left alone by a question answered while the
            // cancel came has no position of its own (what is there belongs to the file before it).
            if (outcome == CopyOutcome::Cancelled)
                m_copier.saveResumeRecord(usedDestination); // with this file's own seconds
            result.cancelled = true;
        }
        {
            const std::lock_guard<std::mutex> lock(m_counters.secondsMutex); // the tick sees before or after
            m_counters.finishedSeconds += m_state.elapsedSeconds.exchange(0);
        }
        if (stop)
            break;
    }
    result.notReached = batchFiles.mid(reached);
    // A file's end checks its close alone (a sync after each of thousands of small files would cost more
    // than the copy), so a write-back failure may still come: one sync of each file system written to
    // before the batch ends, and the finished files' records are dropped only once it is confirmed.
    IoResult synced;
    for (const QString& written : std::as_const(foldersWritten)) {
        synced = m_files.syncFileSystem(written);
        if (!synced.ok()) {
            result.syncFailed = true;
            m_host.notify(msg::batchSyncFailure(written, synced.error, synced.description));
            break;
        }
    }
    if (!result.syncFailed) {
        for (const QString& finished : std::as_const(finishedDestinations))
            m_resumeStore.remove(finished);
    }
    m_host.modeChanged(CopyMode::Stopped);
    m_host.stopAnimation();
    m_state.stopRequested = false;
    m_state.cancelRequested = false;
    m_state.copyRunning = false;
    return result;
}

CopyOutcome BatchCopier::startAt(const QString& source, const QString& destination, qint64 position)
{
    m_state.position = position;
    m_copier.enterCopyingState();
    return m_copier.copyBlocks(source, destination, m_state.blockBytes);
}

CopyOutcome BatchCopier::copyOneFile(
    const QString& source, QString destination, bool& skipThisFile, QString& usedDestination)
{
    // The read slider does not count in a batch: always 10 blocks.
    m_state.blockBytes
        = blockBytesFor(10, source, destination, m_folderDrives, m_platformFamily, m_state.blockBytes);
    for (;;) {
        usedDestination = destination;
        if (!m_files.exists(destination))
            return startAt(source, destination, 1); // a missing file cannot be the source itself
        if (isSameFile(source, destination)) {
            // The chosen folder is the file's own: "overwriting" it would empty the source before reading
            // it. Nothing to copy; the file is left alone and not counted, with no question asked.
            skipThisFile = true;
            return CopyOutcome::NotStarted;
        }
        if (m_overwriteAll) {
            m_files.truncate(destination);
            return startAt(source, destination, 1);
        }
        ResumeRecord record;
        if (m_resumeStore.load(destination, record)) {
            const ContinueChoice answer = m_host.askContinueCopy(source, destination);
            if (answer == ContinueChoice::StartOver) {
                m_files.truncate(destination);
                return startAt(source, destination, 1);
            }
            if (answer == ContinueChoice::Continue) {
                m_state.elapsedSeconds = record.elapsedSeconds;
                // A single copy's merge into this file goes on as a merge.
                applyContinuePositions(record, destination, m_files, m_state);
                m_copier.enterCopyingState();
                return record.merge ? m_copier.mergeBlocks(source, destination, m_state.blockBytes)
                                    : m_copier.copyBlocks(source, destination, m_state.blockBytes);
            }
            m_state.stopRequested = true;
            return CopyOutcome::NotStarted;
        }
        switch (m_host.askBatchExistingFile(source, destination)) {
        case BatchExistingChoice::OverwriteAll:
            m_overwriteAll = true;
            [[fallthrough]];
        case BatchExistingChoice::Overwrite:
            m_files.truncate(destination);
            return startAt(source, destination, 1);
        case BatchExistingChoice::KeepBoth: {
            IoResult io;
            if (m_files.length(source, io) == m_files.length(destination, io)) {
                skipThisFile = true;
                return CopyOutcome::NotStarted;
            }
            // Keep both: the copy goes beside the old file with "N[01]" in front of its name. Should that
            // exist too, the same question comes for it: nothing is written into a file nobody chose.
            destination = folderOf(destination) + QStringLiteral("N[01]") + fileNameOf(destination);
            continue;
        }
        case BatchExistingChoice::EndBatch:
            break;
        }
        m_state.stopRequested = true;
        return CopyOutcome::NotStarted;
    }
}

} // namespace vindaro::copy
