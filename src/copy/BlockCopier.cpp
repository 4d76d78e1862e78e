#include "BlockCopier.h"

#include "CopyMessages.h"
#include "CopyText.h"

#include <QElapsedTimer>

#include <cerrno>
#include <chrono>

namespace vindaro::copy {

namespace {

std::atomic<qint64> g_checkpointMilliseconds{30000}; // a crash loses at most this much of a copy's record

} // namespace

void BlockCopier::setCheckpointInterval(qint64 milliseconds)
{
    g_checkpointMilliseconds = milliseconds;
}

using platform::BoxButtons;
using platform::BoxIcon;
using platform::IoResult;
using platform::MessageBox;

BlockCopier::BlockCopier(CopyState& state, CopyHost& host, platform::FileLayer& files,
    ResumeStore& resumeStore, std::function<bool(const QString&)> cdRomNotReady)
    : m_state(state)
    , m_host(host)
    , m_files(files)
    , m_resumeStore(resumeStore)
    , m_cdRomNotReady(std::move(cdRomNotReady))
{
}

CopyOutcome BlockCopier::copyBlocks(const QString& source, const QString& destination, qint64 step)
{
    m_skips = 0;
    m_readAheadFailed = false;
    m_insideFailed = false;
    return run(source, destination, step, false);
}

CopyOutcome BlockCopier::mergeBlocks(const QString& source, const QString& destination, qint64 step)
{
    m_skips = 0;
    m_readAheadFailed = false;
    m_insideFailed = false;
    return run(source, destination, step, true);
}

void BlockCopier::enterCopyingState()
{
    // A cancel held by the host (Ctrl-C during the preparation, a batch's delayed cancel) survives the
    // start of every file.
    const bool held = m_state.cancelHeld;
    m_state.stopRequested = held;
    m_state.cancelRequested = held;
    m_state.copyRunning = true;
    m_host.modeChanged(CopyMode::Copying);
}

bool BlockCopier::askToRetry(bool merge)
{
    if (m_host.ask(msg::retryQuestion(merge)) != platform::kAnswerYes)
        return false;
    enterCopyingState();
    return true;
}

void BlockCopier::clearFlags()
{
    const bool held = m_state.cancelHeld;
    m_state.stopRequested = held;
    m_state.cancelRequested = held;
    m_state.copyRunning = false;
}

void BlockCopier::enterIdleState()
{
    clearFlags();
    if (!m_batch)
        m_state.elapsedSeconds = 0; // a batch moves the file's seconds to its total itself
    m_host.modeChanged(CopyMode::Idle);
}

void BlockCopier::resetAfterCancel()
{
    clearFlags();
    m_state.elapsedSeconds = 0;
    m_host.modeChanged(CopyMode::IdleAfterCancel);
}

void BlockCopier::noteWritten(qint64 position, qint64 mergePosition)
{
    m_state.writtenPosition = position;
    m_state.writtenMergePosition = mergePosition;
}

IoResult BlockCopier::closeDestination(platform::RandomAccessFile& out, bool flush)
{
    const IoResult synced = flush ? out.sync() : IoResult();
    const IoResult closed = out.close();
    if (!synced.ok())
        return synced;
    if (closed.ok() && flush)
        noteDurable();
    return closed;
}

CopyOutcome BlockCopier::run(const QString& source, const QString& destination, qint64 step, bool merge)
{
    Q_ASSERT(step > 0);
    m_merge = merge;
    m_state.merging = merge;
    {
        const std::lock_guard<std::mutex> lock(m_destinationMutex);
        m_destination = destination;
    }
    // What the destination holds before this run is the user's own, or was synced by the run that saved
    // the record this one continues from.
    m_durable = Positions{m_state.position, m_state.mergePosition};
    noteWritten(m_state.position, m_state.mergePosition);
    {
        const std::lock_guard<std::mutex> lock(m_mapMutex);
        m_unsynced.clear();
    }
    // A merge closes up behind what it skips: its bytes have no place of their own in the source to map.
    m_mapActive = m_maps && !merge;
    {
        const std::lock_guard<std::mutex> lock(m_mapMutex);
        m_mapStarted = false;
    }
    QElapsedTimer sinceCheckpoint;
    sinceCheckpoint.start();

    enum class End
    {
        Through, // the last whole block of this pass was written
        Stop, // pause or cancel
        SourceFailed,
        DestinationFailed,
    };

    // Each pass of this loop is a fresh entry of the block loop: after a skip, after "try again", and for
    // the short tail round. A loop rather than nested calls, so any number of skips costs nothing more.
    for (;;) {
        if (m_state.abandoned)
            return CopyOutcome::Cancelled;
        IoResult io;
        CopyOutcome outcome = CopyOutcome::Failed;
        // True when the copy ends (`outcome` set), false to run the pass again.
        const auto failed
            = [&](IoSide side) { return onFailure(io, side, source, destination, merge, outcome); };
        const qint64 sourceLength = m_files.length(source, io);
        if (!io.ok()) {
            if (failed(IoSide::Source))
                return outcome;
            continue;
        }
        m_state.sourceLength = sourceLength;
        if (m_mapActive) {
            if (!m_mapStarted)
                startMap(destination, sourceLength);
            else if (m_map.size() != sourceLength) {
                const std::lock_guard<std::mutex> lock(m_mapMutex);
                m_map.resize(sourceLength); // the source grew or shrank under us
            }
        }

        if (sourceLength == 0 && !merge) {
            // Nothing to read block by block: the plain file copy makes the (empty) destination. A
            // destination that exists is only opened, as a block round would, and left as it is: an
            // overwrite has emptied it already, and after an append, a continue or a resume the user chose
            // to keep its bytes, which the plain copy (it replaces the file) would throw away.
            IoSide side = IoSide::Destination;
            if (m_files.exists(destination)) {
                if (auto out = m_files.openForUpdate(destination, io))
                    io = out->close();
            } else {
                side = IoSide::Source;
                if (m_files.openForReading(source, io)) {
                    side = IoSide::Destination; // the source opens: what fails now is the new file
                    io = m_files.copyWhole(source, destination);
                }
            }
            if (!io.ok()) {
                if (failed(side))
                    return outcome;
                continue;
            }
            return finish(source, destination, merge, true);
        }

        const qint64 bufferBytes = std::min(sourceLength, step) + 1;
        if (m_buffer.size() < bufferBytes)
            m_buffer.resize(bufferBytes);

        auto in = m_files.openForReading(source, io);
        if (!in) {
            if (failed(IoSide::Source))
                return outcome;
            continue;
        }
        auto out = m_files.openForUpdate(destination, io);
        if (!out) {
            in.reset();
            if (failed(IoSide::Destination))
                return outcome;
            continue;
        }
        m_readAhead = in->readsAheadWell() && !m_readAheadFailed;
        // Not in a merge: a failed copy may have put down bytes in front of the bad sector, which a merge
        // closing up behind the skipped stretch could leave beyond its end. In a copy they are the source's
        // own bytes at their own place.
        m_inside = m_readAhead && !merge && !m_insideFailed;
        m_aheadBytes = 0; // a new pass reads the source afresh
        m_run = WriteRun();
        End end = End::Through;
        // Writes the blocks held back in the run. Failed: the write failed (`io` says why) and the
        // positions are back at the run's first block; Redo: the system's own copy of the run failed and a
        // read of it too, so the positions are back at the run's first block and the loop meets the failure
        // block by block; Abandoned: the program is ending.
        enum class Flush
        {
            Done,
            Redo,
            Failed,
            Abandoned,
        };
        const auto writeRun = [&] {
            if (m_run.bytes == 0)
                return Flush::Done;
            const std::unique_lock<std::timed_mutex> gate(m_writeGate);
            if (m_state.abandoned)
                return Flush::Abandoned; // not one byte more
            Flush flushed = Flush::Done;
            if (m_run.data) {
                io = out->writeAt(m_run.destinationOffset, m_run.data, m_run.bytes);
                if (!io.ok())
                    flushed = Flush::Failed;
            } else if (!in->copyTo(*out, m_run.sourceOffset, m_run.destinationOffset, m_run.bytes).ok()) {
                // It does not say which side failed: the program reads and writes the run itself, and from
                // here on every run. The bytes the system did copy are the right ones, written again.
                m_inside = false;
                m_insideFailed = true;
                if (m_ahead.size() < m_run.bytes)
                    m_ahead.resize(m_run.bytes);
                m_aheadBytes = 0;
                io = in->readAt(m_run.sourceOffset, m_ahead.data(), m_run.bytes);
                if (!io.ok() || io.bytes < m_run.bytes) {
                    io = IoResult();
                    flushed = Flush::Redo;
                } else {
                    io = out->writeAt(m_run.destinationOffset, m_ahead.constData(), m_run.bytes);
                    if (!io.ok())
                        flushed = Flush::Failed;
                }
            }
            if (flushed == Flush::Done) {
                noteWritten(m_run.end.position, m_run.end.mergePosition);
                markCopied(m_run.sourceOffset, m_run.bytes);
            } else {
                // Back to the run's first block. A manual skip made since its last block is dropped: the
                // blocks are read again and the copy goes on from where the run ended, copying more rather
                // than jumping from the wrong place.
                m_state.position -= m_run.advance + (m_state.position - m_run.end.position);
                if (merge)
                    m_state.mergePosition -= m_run.advance;
            }
            m_run = WriteRun();
            return flushed;
        };
        for (;;) {
            if (m_state.stopRequested) {
                end = End::Stop;
                const Flush flushed = writeRun(); // after a Redo the copy stops at the run's first block
                if (flushed == Flush::Abandoned)
                    return CopyOutcome::Cancelled;
                if (flushed == Flush::Failed)
                    end = End::DestinationFailed;
                break;
            }
            if (m_mapActive) {
                // What an earlier run copied is not read again: the copy goes on after it.
                const qint64 at = m_state.position - 1;
                if (at >= 0 && at < sourceLength) {
                    std::unique_lock<std::mutex> lock(m_mapMutex);
                    const RescueRange range = m_map.rangeAt(at);
                    lock.unlock();
                    // The next block starts on the last copied byte, as every block overlaps the one before.
                    if (range.state == RescueState::Copied && range.end() - 1 > at)
                        m_state.position
                            += range.end() - 1 - at; // added: a manual skip made meanwhile adds up
                }
            }
            const qint64 position = m_state.position;
            // One byte more than the step, but never past the source's last byte.
            const qint64 wanted = std::max<qint64>(0, std::min(bufferBytes, sourceLength - position + 1));
            m_lastReadOffset = position - 1;
            m_lastReadBytes = wanted;
            if (wanted > 0) {
                const qint64 readOffset = position - 1;
                const qint64 writeOffset = (merge ? m_state.mergePosition.load() : position) - 1;
                // Consecutive blocks overlap by one byte, in the source and in the destination.
                const bool joins = m_run.bytes > 0 && readOffset == m_run.sourceOffset + m_run.bytes - 1
                    && writeOffset == m_run.destinationOffset + m_run.bytes - 1
                    && (m_run.data ? aheadHolds(readOffset, wanted) : m_run.bytes + wanted - 1 <= kRunBytes);
                if (m_run.bytes > 0 && !joins) {
                    const Flush flushed = writeRun();
                    if (flushed == Flush::Abandoned)
                        return CopyOutcome::Cancelled;
                    if (flushed == Flush::Failed) {
                        end = End::DestinationFailed;
                        break;
                    }
                    if (flushed == Flush::Redo)
                        continue; // from the run's first block again
                }
                if (joins) {
                    m_run.bytes += wanted - 1; // the overlapping byte is there already
                } else if (m_inside) {
                    // Nothing is read now: the system copies the run when it is written.
                    m_run.sourceOffset = readOffset;
                    m_run.destinationOffset = writeOffset;
                    m_run.bytes = wanted;
                } else {
                    const char* const block = readBlock(*in, readOffset, wanted, sourceLength, io);
                    if (io.ok() && io.bytes < wanted)
                        io = IoResult::failure(
                            EIO, QString()); // the source shrank under us: an unreadable stretch
                    if (!io.ok()) {
                        end = End::SourceFailed;
                        break;
                    }
                    if (m_readAhead) {
                        m_run.data = block; // written when the read-ahead buffer moves on
                        m_run.sourceOffset = readOffset;
                        m_run.destinationOffset = writeOffset;
                        m_run.bytes = wanted;
                    } else {
                        // Block by block (an optical disc, or after a failed read): each block is written
                        // as it is read, so a failure is met exactly where it happens.
                        {
                            const std::lock_guard<std::timed_mutex> gate(m_writeGate);
                            if (m_state.abandoned)
                                return CopyOutcome::Cancelled; // the program is ending: not one byte more
                            io = out->writeAt(writeOffset, block, wanted);
                        }
                        if (!io.ok()) {
                            end = End::DestinationFailed;
                            break;
                        }
                        markCopied(readOffset, wanted);
                    }
                }
            }
            m_host.progress(position, sourceLength);
            m_state.position += step; // added, not stored: a manual skip made meanwhile adds up
            if (merge)
                m_state.mergePosition += step;
            if (m_run.bytes > 0) {
                m_run.advance += step;
                m_run.end = Positions{m_state.position, m_state.mergePosition};
            } else {
                noteWritten(m_state.position, m_state.mergePosition);
            }
            if (m_mapActive && sinceCheckpoint.elapsed() >= g_checkpointMilliseconds) {
                // The record and map of what is on the device, so a crash loses at most this long.
                sinceCheckpoint.restart();
                const Flush flushed = writeRun();
                if (flushed == Flush::Abandoned)
                    return CopyOutcome::Cancelled;
                if (flushed == Flush::Failed) {
                    end = End::DestinationFailed;
                    break;
                }
                if (flushed == Flush::Done && out->sync().ok()) {
                    noteDurable();
                    saveResumeRecord(destination);
                }
            }
            if (m_state.position >= sourceLength - step) {
                const Flush flushed = writeRun();
                if (flushed == Flush::Abandoned)
                    return CopyOutcome::Cancelled;
                if (flushed == Flush::Failed)
                    end = End::DestinationFailed;
                if (flushed == Flush::Redo)
                    continue;
                break;
            }
        }
        in.reset();
        if (m_state.abandoned)
            return CopyOutcome::Cancelled;

        if (end == End::DestinationFailed) {
            // The block that failed is not counted; what was written before it counts only if the device
            // confirms it now. The close can only add to a failure already in hand.
            if (out->sync().ok())
                noteDurable();
            out->close();
            out.reset();
            if (failed(IoSide::Destination))
                return outcome;
            continue;
        }
        const bool tail = end == End::Through && m_state.position < sourceLength;
        // The destination reaches the device before a stop (a resume record or a quit may follow), before
        // a skip or a failure of the source (which may end with a record) and before the finish box; the
        // pass before the tail round waits for the tail's own end. A batch does not wait at the end of a
        // file: a sync after each of thousands of small files would cost more than the copy, so there a
        // file's end checks the close alone.
        const bool flush = !tail && (!m_batch || end != End::Through);
        const IoResult closed = closeDestination(*out, flush);
        out.reset();
        if (!closed.ok()) {
            io = closed;
            if (failed(IoSide::Destination))
                return outcome;
            continue;
        }
        if (end == End::Stop)
            return onStop(source, destination, merge);
        if (end == End::SourceFailed) {
            if (failed(IoSide::Source))
                return outcome;
            continue;
        }
        if (tail) {
            step = sourceLength - m_state.position; // the tail: reads exactly up to the last byte
            continue;
        }
        return finish(source, destination, merge, true);
    }
}

bool BlockCopier::aheadHolds(qint64 offset, qint64 bytes) const
{
    return m_aheadBytes > 0 && offset >= m_aheadOffset && offset + bytes <= m_aheadOffset + m_aheadBytes;
}

const char* BlockCopier::readBlock(
    platform::RandomAccessFile& in, qint64 offset, qint64 bytes, qint64 sourceLength, IoResult& io)
{
    // 4 MiB a read: with the default 60 KiB blocks the loop then costs what one large block would.
    constexpr qint64 kReadAheadBytes = qint64(4) << 20;
    if (m_readAhead) {
        if (offset < m_aheadOffset || offset + bytes > m_aheadOffset + m_aheadBytes) {
            const qint64 chunk = std::min(std::max(kReadAheadBytes, bytes), sourceLength - offset);
            if (m_ahead.size() < chunk)
                m_ahead.resize(chunk);
            const IoResult ahead = in.readAt(offset, m_ahead.data(), chunk);
            m_aheadOffset = offset;
            m_aheadBytes = ahead.ok() && ahead.bytes == chunk ? chunk : 0;
            if (m_aheadBytes == 0) {
                // A failed or short read: block by block from here on, this very block first.
                m_readAhead = false;
                m_readAheadFailed = true;
            }
        }
        if (m_readAhead) {
            io = IoResult();
            io.bytes = bytes;
            return m_ahead.constData() + (offset - m_aheadOffset);
        }
    }
    io = in.readAt(offset, m_buffer.data(), bytes);
    return m_buffer.constData();
}

bool BlockCopier::onFailure(const IoResult& io, IoSide side, const QString& source,
    const QString& destination, bool merge, CopyOutcome& outcome)
{
    if (m_state.abandoned) {
        outcome = CopyOutcome::Cancelled;
        return true;
    }
    FileError error = classify(io, side);
    if (error.failure == Failure::UnreadableStretch && m_state.position <= 1)
        error.failure = Failure::UnreadableStart;
    // Only a source can sit on an optical drive without a disc; asked only where the answer counts.
    if ((error.failure == Failure::Described || error.failure == Failure::Unknown) && side == IoSide::Source
        && m_cdRomNotReady && m_cdRomNotReady(source))
        error.failure = Failure::NoMedium;
    // The partial destination can be continued once the destination works again: its record names only
    // what is known to be on the device.
    if (side == IoSide::Destination)
        saveResumeRecord(destination);
    if (m_batch)
        m_host.modeChanged(CopyMode::Stopped);

    const Action action = actionFor(error.failure, m_batch);
    switch (action) {
    case Action::SkipBlock:
    case Action::SkipStretch: {
        const qint64 blocks = action == Action::SkipBlock ? 1 : m_batch ? 80 : qint64(m_state.skipBlocks) * 8;
        // The block whose read failed holds a bad sector somewhere; the rest of the stretch is not tried.
        markUntried(m_lastReadOffset, m_lastReadBytes, RescueState::NonTrimmed);
        m_state.position += blocks * m_state.blockBytes;
        noteWritten(m_state.position, m_state.mergePosition); // the stretch is left out on purpose
        ++m_skips;
        if (m_state.position <= m_state.sourceLength) {
            if (!m_batch)
                m_host.log(msg::skippedEntry(m_state.position)); // a batch logs no skipped block
            return false; // start again from the new position
        }
        if (m_batch)
            return endBatch(false, outcome);
        outcome = finish(source, destination, merge, false);
        return true;
    }
    case Action::AskRetry:
        if (askToRetry(merge && !m_batch))
            return false; // the same round again, from the same position
        if (m_batch)
            return endBatch(false, outcome);
        enterIdleState();
        outcome = CopyOutcome::Failed;
        return true;
    case Action::EndWithBox: {
        const msg::FailureTexts texts = error.failure == Failure::Described
            ? msg::FailureTexts{QString(), msg::describedFailure(error.code, error.description)}
            : msg::singleFailure(error.failure, merge, source);
        enterIdleState();
        if (!texts.cause.isEmpty())
            m_host.log(msg::errorEntry(source, destination, merge, texts.cause));
        m_host.notify(text::box(texts.box, msg::errorBoxTitle(merge), BoxIcon::Critical));
        outcome = CopyOutcome::Failed;
        return true;
    }
    case Action::NextFile:
        // A batch names no merge in its entries, even for a file whose merge it continues.
        if (error.failure != Failure::Described)
            m_host.log(msg::errorEntry(source, destination, false, msg::batchFailureCause(error.failure)));
        enterIdleState();
        outcome = CopyOutcome::Failed;
        if (error.failure == Failure::Described)
            m_host.notify(text::box(msg::describedFailure(error.code, error.description),
                msg::errorBoxTitle(false), BoxIcon::Critical));
        return true;
    case Action::EndBatchKeepRecord:
        m_host.log(msg::errorEntry(source, destination, false, msg::batchFailureCause(error.failure)));
        return endBatch(true, outcome);
    }
    Q_UNREACHABLE();
    return true;
}

bool BlockCopier::endBatch(bool keepRecord, CopyOutcome& outcome)
{
    m_state.stopRequested = true;
    m_state.cancelRequested = keepRecord;
    outcome = keepRecord ? CopyOutcome::Cancelled : CopyOutcome::Failed;
    return true;
}

CopyOutcome BlockCopier::finish(
    const QString& source, const QString& destination, bool merge, bool showCopied)
{
    if (m_mapActive) {
        // A whole copy leaves no map behind; one with skipped stretches keeps it for a refine pass.
        const RescueMap map = rescueMap();
        if (map.isComplete())
            m_maps->remove(destination); // an earlier run's map would only mislead now
        else
            m_maps->save(destination, map);
    }
    if (m_batch) {
        enterIdleState(); // the per-file reset; the batch goes on with the next file
        return m_skips > 0 ? CopyOutcome::FinishedWithSkips : CopyOutcome::Finished;
    }
    const qint64 sourceLength = m_state.sourceLength;
    if (showCopied)
        m_host.progress(sourceLength, sourceLength);
    enterIdleState();
    m_host.log(msg::finishedEntry(source, destination, sourceLength, merge, m_state.meter.estimatedText(),
        m_state.meter.throughputText()));
    m_host.notify(msg::finishedNotice(source, destination, merge));
    return m_skips > 0 ? CopyOutcome::FinishedWithSkips : CopyOutcome::Finished;
}

CopyOutcome BlockCopier::onStop(const QString& source, const QString& destination, bool merge)
{
    m_host.modeChanged(CopyMode::Stopped);
    if (!m_state.cancelRequested)
        return CopyOutcome::Paused; // the copy goes on later from `position`
    if (m_batch)
        return CopyOutcome::Cancelled; // the batch keeps the file and saves its record

    m_host.log(msg::cancelledEntry(source, merge));
    if (m_host.ask(msg::deletePartialQuestion(destination)) == platform::kAnswerYes) {
        resetAfterCancel();
        m_files.remove(destination);
        m_resumeStore.remove(destination); // a record for a file that is gone would only mislead
        forgetMap(destination);
    } else {
        saveResumeRecord(destination);
        resetAfterCancel();
    }
    return CopyOutcome::Cancelled;
}

void BlockCopier::saveResumeRecord(const QString& destination)
{
    if (m_state.abandoned)
        return; // saveRecordOnQuit() has the last word
    saveRecord(destination, m_durable, m_merge, true);
}

void BlockCopier::saveRecord(const QString& destination, Positions at, bool merge, bool confirmedOnly)
{
    if (!m_files.exists(destination) || at.position >= m_state.sourceLength)
        return;
    IoResult io;
    const qint64 destinationLength = m_files.length(destination, io);
    if (!io.ok())
        return;
    // A copy goes on where its destination ends, but never past the last byte known to be there. A merge
    // goes on reading where it stopped and writing where it stopped: two positions, apart by the length
    // the destination had before the merge (and by any stretch skipped since).
    ResumeRecord record = makeResumeRecord(merge ? at.position : std::min(destinationLength, at.position),
        at.position, m_state.sourceLength, m_state.elapsedSeconds);
    if (merge) {
        record.merge = true;
        record.writePosition = at.mergePosition;
    }
    m_resumeStore.save(destination, record);
    if (!m_mapActive)
        return;
    RescueMap map;
    {
        const std::lock_guard<std::mutex> lock(m_mapMutex);
        map = m_mapStarted ? m_map : RescueMap();
        // Bytes written since the device last confirmed a sync may be lost with a failed write-back: the map
        // kept with a record of confirmed bytes calls them untried, so a continue reads them again.
        if (confirmedOnly) {
            for (const RescueRange& range : m_unsynced)
                map.mark(range.offset, range.length, RescueState::Untried);
        }
    }
    m_maps->save(destination, map);
}

void BlockCopier::startMap(const QString& destination, qint64 sourceLength)
{
    const qint64 before = std::clamp<qint64>(m_state.position - 1, 0, sourceLength);
    RescueMap map;
    // A copy from the first byte starts a new map; one that goes on keeps what its map knew.
    if (before == 0 || !m_maps->load(destination, map) || map.size() != sourceLength) {
        map = RescueMap(sourceLength);
        map.mark(0, before, RescueState::Copied); // the destination's bytes up to where the copy goes on
    }
    const std::lock_guard<std::mutex> lock(m_mapMutex);
    m_map = std::move(map);
    m_mapStarted = true;
}

void BlockCopier::markCopied(qint64 offset, qint64 length)
{
    if (!m_mapActive)
        return;
    const std::lock_guard<std::mutex> lock(m_mapMutex);
    m_map.mark(offset, length, RescueState::Copied);
    if (!m_unsynced.empty() && m_unsynced.back().end() >= offset)
        m_unsynced.back().length
            = std::max(m_unsynced.back().end(), offset + length) - m_unsynced.back().offset;
    else
        m_unsynced.push_back(RescueRange{offset, length, RescueState::Copied});
}

void BlockCopier::noteDurable()
{
    m_durable = Positions{m_state.writtenPosition, m_state.writtenMergePosition};
    const std::lock_guard<std::mutex> lock(m_mapMutex);
    m_unsynced.clear();
}

void BlockCopier::markUntried(qint64 offset, qint64 length, RescueState state)
{
    if (!m_mapActive || length <= 0)
        return;
    const std::lock_guard<std::mutex> lock(m_mapMutex);
    for (const RescueRange& range : m_map.ranges(offset, length)) {
        if (range.state == RescueState::Untried)
            m_map.mark(range.offset, range.length, state);
    }
}

RescueMap BlockCopier::rescueMap() const
{
    const std::lock_guard<std::mutex> lock(m_mapMutex);
    return m_mapStarted ? m_map : RescueMap();
}

void BlockCopier::abandon()
{
    std::unique_lock<std::timed_mutex> gate(m_writeGate, std::defer_lock);
    // A write that hangs itself holds the gate: after a moment the quit goes on without it. Whatever that
    // write puts down are the right bytes in the right place, past the position the record names.
    (void)gate.try_lock_for(std::chrono::milliseconds(300));
    m_state.abandoned = true;
    m_state.stopRequested = true;
}

bool BlockCopier::saveRecordOnQuit()
{
    QString destination;
    {
        const std::lock_guard<std::mutex> lock(m_destinationMutex);
        destination = m_destination;
    }
    if (destination.isEmpty())
        return false;
    // Every write before these positions returned success, so the bytes are in the system's hands; the
    // quit does not wait for the device (a sync of a large copy to a slow stick could take minutes), and
    // the system writes them out after the program has ended.
    saveRecord(destination, Positions{m_state.writtenPosition, m_state.writtenMergePosition}, m_state.merging,
        false);
    return true;
}

} // namespace vindaro::copy
