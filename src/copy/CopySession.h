#pragma once

#include "BlockCopier.h"
#include "RefinePass.h"

namespace vindaro::copy {

// What copy preparation asks about the drives of its paths.
class DriveFacts
{
public:
    virtual ~DriveFacts() = default;
    virtual int driveType(const QString& path) = 0; // a platform::DriveKind; 0 when the path has no drive
    virtual double freeBytes(const QString& path) = 0; // bytes free for the caller; -1 when no drive
    virtual bool driveIsReady(const QString& path) = 0;
    virtual QString driveName(const QString& path)
        = 0; // how the drive is named in messages (its mount point)
    virtual bool isFloppy(const QString& path) = 0; // a removable drive that is a floppy disk
    // Whether the source `path` of a failed copy lies on an optical drive with no readable disc: the drive
    // it was on when the copy was prepared, even when the disc has been ejected (and unmounted) since and
    // the path now falls under another volume. False for a source that was not on an optical drive. The
    // default asks about the drive the path is on now.
    virtual bool sourceDiscNotReady(const QString& path);
};

// Whether a failed copy's source lies on an optical drive with no readable disc, for the block loop's
// failure table (see DriveFacts::sourceDiscNotReady).
std::function<bool(const QString&)> cdRomNotReadyProbe(DriveFacts& drives);

// A path that names a network share rather than a local one ("//server/share", "\\\\server\\share",
// "smb://server/share"): no free-space check, and the network block size.
bool isNetworkPath(const QString& path);

// Where a copy goes on from its resume record: the stored position, but never past the destination's
// present length (a file cut short since would otherwise get a hole of zeros).
qint64 continuePosition(const ResumeRecord& record, const QString& destination, platform::FileLayer& files);

// Where a merge goes on from its record: the stored read and write positions. A destination cut short
// since the record was saved moves both back by the bytes it lost, so the source closes up behind what is
// still there; should even the destination's own bytes be gone, the whole source is merged again behind
// what is left.
void continueMergePositions(const ResumeRecord& record, const QString& destination,
    platform::FileLayer& files, qint64& position, qint64& mergePosition);

// Sets `position` (and for a merge `mergePosition`) to where the copy the record names goes on.
void applyContinuePositions(
    const ResumeRecord& record, const QString& destination, platform::FileLayer& files, CopyState& state);

// Bytes per block: `readBlocks` times a factor that follows the kinds of drive and file: 4096 for network
// paths and CD-ROMs (5120 for DVD ".vob" files), 6144 for fixed drives (61440 on the old consumer family;
// the oldest family keeps `currentBlockBytes`), 128 for floppies, 1024 for other removable drives, 4096 for
// anything else.
qint64 blockBytesFor(int readBlocks, const QString& source, const QString& destination, DriveFacts& drives,
    int platformFamily, qint64 currentBlockBytes);

// Everything between the start button and the first block, and the checks of a paused copy that goes on:
// empty paths, free space, the block size, and what to do with an existing destination. Runs wherever the
// block loop runs (the window's worker thread); every question goes through the host.
class CopySession
{
public:
    CopySession(CopyState& state, CopyHost& host, platform::FileLayer& files, ResumeStore& resumeStore,
        DriveFacts& drives);

    // Starts a copy from the start button. Answers the outcome of the block loop, or Failed when the
    // preparation stopped (a box was shown, a question answered No, a dialog given up).
    CopyOutcome startCopy(const QString& source, const QString& destination);
    // A paused copy goes on (the pause button has set the flags and its caption).
    CopyOutcome resumeCopy(const QString& source, const QString& destination);
    // Reads what the copy to `destination` skipped, by its rescue map (see RefinePass).
    CopyOutcome refine(const QString& source, const QString& destination, const RefineSettings& settings);
    // Where rescue maps are kept; none: copies keep no map and refine() has nothing to go on.
    void setRescueMapStore(RescueMapStore* maps)
    {
        m_maps = maps;
        m_copier.setRescueMapStore(maps);
    }
    RescueMapStore* rescueMapStore() const { return m_maps; }
    // Any thread: the map of the copy or refine pass in hand (or the last one), for the window's picture.
    RescueMap currentMap() const;
    // Sets and answers state.blockBytes from the read slider and the kinds of the drive and file.
    qint64 computeBlockBytes(const QString& source, const QString& destination);

    // 0 Win32s-like, 1 the old consumer family, 2 the NT family, 3 anything else. Linux is "anything else".
    void setPlatformFamily(int family) { m_platformFamily = family; }
    BlockCopier& copier() { return m_copier; }

private:
    CopyOutcome existingDestination(const QString& source, QString destination);
    CopyOutcome startOver(const QString& source, const QString& destination);
    // Shows why and answers true when the destination is the source itself, which must not be emptied.
    bool refuseSameFile(const QString& source, const QString& destination);
    CopyOutcome run(const QString& source, const QString& destination, bool merge);
    void logLowSpace(
        const QString& source, const QString& destination, double freeBytes, qint64 sourceLength);
    void enterCopyingState();

    CopyState& m_state;
    CopyHost& m_host;
    platform::FileLayer& m_files;
    ResumeStore& m_resumeStore;
    DriveFacts& m_drives;
    BlockCopier m_copier;
    int m_platformFamily = 3;
    bool m_merging = false; // the running or paused loop is a merge: it goes on as one
    RescueMapStore* m_maps = nullptr;
    mutable std::mutex m_refineMutex; // guards m_refine
    RefinePass* m_refine = nullptr; // the pass in hand, on the worker's stack
    RescueMap m_lastRefined; // the map the last pass ended with
};

} // namespace vindaro::copy
