#pragma once

#include "CopyHost.h"
#include "CopyState.h"
#include "FailurePolicy.h"
#include "RescueMapStore.h"
#include "ResumeRecord.h"
#include "platform/FileIo.h"

#include <QByteArray>

#include <functional>
#include <mutex>

namespace vindaro::copy {

enum class CopyOutcome
{
    Finished, // the whole source is in the destination
    FinishedWithSkips, // finished, with unreadable stretches left out (zeros in a copy, closed up in a merge)
    Paused, // files closed, `position` kept: the copy goes on later from there
    Cancelled, // the destination was deleted, or kept with a resume record
    Failed, // a failure box was shown; the window is idle
    NotStarted, // preparation stopped before the first block: a box, a No, or a dialog given up
};

// The block loop: copies one file from a possibly damaged disc block by block, and where a block cannot
// be read jumps ahead and goes on, so the readable rest reaches the destination.
//
// A round reads `step` + 1 bytes at `position` and writes them at the same position of the destination
// (at `mergePosition` in a merge), then advances by `step`: consecutive reads overlap by one byte, which is
// written twice with the same value. So after whole blocks from position 1 the destination's length is
// the next position, and a partial destination's length is where copying continues. The destination is
// never truncated here. Every outcome is shown to the user and logged through the host; the return value
// is for callers that need it (the command-line tool's exit status, the batch).
class BlockCopier
{
public:
    // `cdRomNotReady` tells whether a path lies on an optical drive with no readable disc.
    BlockCopier(CopyState& state, CopyHost& host, platform::FileLayer& files, ResumeStore& resumeStore,
        std::function<bool(const QString&)> cdRomNotReady = {});

    CopyOutcome copyBlocks(const QString& source, const QString& destination, qint64 step);
    CopyOutcome mergeBlocks(const QString& source, const QString& destination, qint64 step);

    // Clears the stop flags, marks the copy running and switches the window to copying.
    void enterCopyingState();

    // Saves where a stopped copy can go on, when the destination exists and the source is not all there.
    // Counts only bytes known to be on the device (synced at the last stop, skip or failure), so
    // continuing later leaves no hole and no stale byte. A merge's record says so and where it writes.
    void saveResumeRecord(const QString& destination);

    // Any thread. The program ends while the loop may hang in a read: once this returns, the loop writes
    // nothing more (it checks the flag under the same lock as every write) and does nothing but return.
    void abandon();
    // Any thread, after abandon(): saves the record of the copy in hand from what its writes returned, so
    // it can be continued after the program has ended. False when there was no copy to record.
    bool saveRecordOnQuit();

    int skippedStretches() const { return m_skips; } // unreadable stretches jumped in the last run

    // Where rescue maps are kept; none: no map. A plain copy (not a merge) then keeps the map of its
    // source's bytes as it goes (copied, skipped, found bad), saves it beside the resume record (at every
    // record, and every 30 seconds after a sync), goes on with it (nothing copied is read again) and
    // drops it when the copy is whole. The default path reads and writes exactly as without a map.
    void setRescueMapStore(RescueMapStore* maps) { m_maps = maps; }
    // How often a copy that keeps a map saves its record and map after a sync: 30 s; tests that kill a
    // copy midway make it shorter.
    static void setCheckpointInterval(qint64 milliseconds);
    // The map of the copy in hand or last run (empty before the first); any thread.
    RescueMap rescueMap() const;
    // The destination is gone or starts over: its kept map would only mislead.
    void forgetMap(const QString& destination)
    {
        if (m_maps)
            m_maps->remove(destination);
    }

    // In a batch a file ends without a box or a log entry, unreadable stretches jump a fixed 80 blocks and
    // are not logged, and failures either go on with the next file (Failed) or end the batch: stopRequested
    // is then set, with cancelRequested when the file's resume record is to be kept (Cancelled).
    void setBatchMode(bool batch) { m_batch = batch; }

private:
    struct Positions
    {
        qint64 position = 1; // next to read
        qint64 mergePosition = 1; // next to write in a merge
    };

    CopyOutcome run(const QString& source, const QString& destination, qint64 step, bool merge);
    // Syncs (when `flush`) and closes the destination; a sync that succeeds makes what was written durable.
    platform::IoResult closeDestination(platform::RandomAccessFile& out, bool flush);
    void noteWritten(qint64 position, qint64 mergePosition);
    // confirmedOnly: `at` counts only what a sync confirmed, and the map kept with it says the same.
    void saveRecord(const QString& destination, Positions at, bool merge, bool confirmedOnly);
    void noteDurable(); // a sync has confirmed every write so far
    CopyOutcome onStop(const QString& source, const QString& destination, bool merge);
    // The map for a run that begins at `position` of a `sourceLength`-byte source: the kept one when it
    // fits, else a new one with the bytes before `position` copied.
    void startMap(const QString& destination, qint64 sourceLength);
    // Marks only the bytes that no read has tried yet (a failed block never unmarks a copied byte).
    void markUntried(qint64 offset, qint64 length, RescueState state);
    void markCopied(qint64 offset, qint64 length);
    CopyOutcome finish(const QString& source, const QString& destination, bool merge, bool showCopied);
    // Decides what a failure means: true with `outcome` set when the copy ends, false to run the pass again.
    bool onFailure(const platform::IoResult& io, IoSide side, const QString& source,
        const QString& destination, bool merge, CopyOutcome& outcome);
    // A batch ends after this file: stopRequested set, with cancelRequested when the file's record is kept.
    bool endBatch(bool keepRecord, CopyOutcome& outcome);
    bool askToRetry(bool merge); // true: the user wants the block read again (the window is copying)
    void clearFlags(); // the copy is over: no stop asked, unless the host holds a cancel
    void enterIdleState();
    void resetAfterCancel();

    CopyState& m_state;
    CopyHost& m_host;
    platform::FileLayer& m_files;
    ResumeStore& m_resumeStore;
    std::function<bool(const QString&)> m_cdRomNotReady;
    QByteArray m_buffer; // reused by every round and pass
    // Where the source reads ahead well, one read fetches the next blocks at once and the blocks are
    // served from here; the first read that fails turns it off for the rest of the copy, so from there on
    // every block is read on its own and fails, or skips, exactly as without it.
    const char* readBlock(platform::RandomAccessFile& in, qint64 offset, qint64 bytes, qint64 sourceLength,
        platform::IoResult& io);
    bool aheadHolds(qint64 offset, qint64 bytes) const;
    QByteArray m_ahead;
    qint64 m_aheadOffset = 0;
    qint64 m_aheadBytes = 0; // 0: nothing held
    bool m_readAhead = false; // this pass reads ahead
    bool m_readAheadFailed = false; // this copy met a failed read
    // Where the source reads ahead well, consecutive blocks are written together: they overlap by one
    // byte, so they lie side by side in the source and in the destination, and one write of a few MiB
    // costs what one 60 KiB write did. The system copies such a run itself (copy_file_range: the bytes
    // never pass through the program) until that fails once; from then on the blocks are read into the
    // read-ahead buffer and the run is written from there. The positions advance block by block as
    // before (progress, pause and skips are unchanged); only the written positions wait for the run.
    static constexpr qint64 kRunBytes = qint64(4) << 20;
    struct WriteRun
    {
        const char* data = nullptr; // into m_ahead; null: the system copies the run
        qint64 sourceOffset = 0;
        qint64 destinationOffset = 0;
        qint64 bytes = 0; // 0: nothing held back
        qint64 advance = 0; // what the positions moved for the blocks held back
        Positions end; // the positions after the last block held back
    };
    bool m_inside = false; // this pass has the system copy its runs
    bool m_insideFailed = false; // this copy met a failed copy inside the system
    WriteRun m_run;
    int m_skips = 0;
    bool m_batch = false;
    bool m_merge = false; // the run in hand
    Positions m_durable; // known on the device: synced, or there before this run began
    // Held around the abandon check and the write it allows; timed, so a quit never waits on a write
    // that hangs itself.
    std::timed_mutex m_writeGate;
    std::mutex m_destinationMutex;
    QString m_destination; // of the run in hand, for saveRecordOnQuit()

    RescueMapStore* m_maps = nullptr;
    bool m_mapActive = false; // the run in hand keeps a map
    bool m_mapStarted = false; // m_map belongs to the run in hand
    mutable std::mutex m_mapMutex; // guards m_map: the quit saves it from another thread
    RescueMap m_map;
    std::vector<RescueRange> m_unsynced; // copied since the last confirmed sync (guarded by m_mapMutex)
    qint64 m_lastReadOffset = 0; // the block the last read asked for: a failure marks it
    qint64 m_lastReadBytes = 0;
};

} // namespace vindaro::copy
