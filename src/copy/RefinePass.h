#pragma once

#include "BlockCopier.h"
#include "CopyHost.h"
#include "CopyState.h"
#include "RescueMapStore.h"
#include "platform/FileIo.h"

#include <QElapsedTimer>

#include <functional>
#include <mutex>

namespace vindaro::copy {

struct RefineSettings
{
    qint64 sectorBytes = 0; // the device's sector; 0: the source says, else 2,048 on optical media and 512
    // Failed probes in a row within one area's splits before the area is given up: a long bad run costs a
    // handful of failed reads, not one per sector.
    int maxMisses = 3;
    qint64 timeBudgetSeconds = 0; // 0: no limit
    std::function<qint64()> clockMilliseconds = {}; // a monotonic clock; a QElapsedTimer when empty
};

// The second pass over a copy's rescue map: it reads the bytes the copy skipped, sector by sector, and
// writes what it reads in its place.
//
// Its order keeps failed reads few, since on a scratched disc a failed read costs seconds and a good one
// next to nothing: first every untried area from both edges inward, until a read fails on each side;
// then what is left inside, largest area first, by reading a sector in its middle and, when that works,
// outward from it on both sides until a read fails, which splits the area in two. An area whose probes
// keep failing (`maxMisses` in a row) is given up.
//
// Promises: only bytes the map has not copied are read for and written; nothing copied is overwritten and
// the destination is never cut short (a copy that a skip past the end left short may grow). The map is
// saved as it goes (at a pause, a cancel, a failure, every 30 s and at the end, after a sync) and dropped
// when the copy is whole. Pause, cancel and the time budget act between sectors; a pause or cancel keeps
// the map, so the pass goes on later from it.
class RefinePass
{
public:
    RefinePass(CopyState& state, CopyHost& host, platform::FileLayer& files, RescueMapStore& maps);

    // Finished (whole), FinishedWithSkips (bytes are still missing: bad, given up or out of time), Paused,
    // Cancelled, Failed (a box was shown: no map, the source or destination failed), NotStarted (nothing to
    // do: no untried bytes).
    CopyOutcome refine(const QString& source, const QString& destination, const RefineSettings& settings);

    RescueMap map() const; // any thread: the map as it stands
    qint64 failedReads() const { return m_failedReads; }

private:
    struct Area
    {
        qint64 begin = 0;
        qint64 end = 0;
        int misses = 0;
    };
    enum class Read
    {
        Good,
        Bad,
        Known, // the sector was found bad before: not read again
        Stop, // pause, cancel, budget, or a failure that ends the pass (`m_end` says which)
    };
    enum class End
    {
        None,
        Stop,
        OutOfTime,
        DestinationFailed,
        SourceFailed,
    };

    // Reads the sector that holds `offset`, writes its untried bytes, marks it. Only within [lo, hi).
    Read readSector(qint64 offset, qint64 lo, qint64 hi);
    // From `from` towards `to` (either way), sector by sector, until a read fails or the area ends.
    // Answers where it stopped: the first byte not read (forward) or the end of what is left (backward).
    qint64 walk(qint64 from, qint64 to, bool forward, Read& last);
    bool stopAsked();
    void report();
    void checkpoint(const QString& destination);
    CopyOutcome end(const QString& source, const QString& destination);

    CopyState& m_state;
    CopyHost& m_host;
    platform::FileLayer& m_files;
    RescueMapStore& m_maps;
    RefineSettings m_settings;
    QElapsedTimer m_timer;
    qint64 m_startedMs = 0;
    qint64 m_lastCheckpointMs = 0;
    std::unique_ptr<platform::RandomAccessFile> m_in;
    std::unique_ptr<platform::RandomAccessFile> m_out;
    QByteArray m_buffer;
    mutable std::mutex m_mapMutex; // guards m_map's changes against map() from another thread
    RescueMap m_map;
    qint64 m_sector = 2048;
    qint64 m_failedReads = 0;
    End m_end = End::None;
    platform::IoResult m_failure;
};

} // namespace vindaro::copy
