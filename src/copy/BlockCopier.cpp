#include "BlockCopier.h"

#include "CopyText.h"
#include "files/Format.h"

#include <QStringList>

#include <cerrno>
#include <chrono>

namespace vindaro::copy {

using platform::BoxButtons;
using platform::BoxIcon;
using platform::IoResult;
using platform::MessageBox;

namespace {

using text::kCrLf;
using text::kIndent;

QString joinLines(std::initializer_list<QString> lines)
{
    return QStringList(lines).join(kCrLf);
}

QString boxTitle(bool merge)
{
    return merge ? QStringLiteral("合并文件时出错！") : QStringLiteral("复制文件时出错！");
}

QString errorEntry(const QString& source, const QString& destination, bool merge, const QString& cause)
{
    if (merge)
        return QStringLiteral("合并文件“") + source + QStringLiteral("”到：") + kCrLf + kIndent
            + QStringLiteral("“") + destination + QStringLiteral("”时遇到错误。") + kCrLf + kIndent + cause;
    return QStringLiteral("复制文件“") + source + QStringLiteral("”时遇到错误。") + kCrLf + kIndent + cause;
}

// Log cause and box text of the failures that end a copy.
struct FailureTexts
{
    QString cause; // empty: nothing is logged
    QString box;
};

FailureTexts failureTexts(
    const FileError& error, bool atFirstPosition, bool cdRomNotReady, const QString& source, bool merge)
{
    switch (error.errorClass) {
    case kDiskFull:
        return merge ? FailureTexts{QStringLiteral("错误原因：磁盘已满，没有足够的可用空间用来合并文件。"),
                   QStringLiteral("磁盘已满，没有足够的可用空间用来合并文件。")}
                     : FailureTexts{QStringLiteral("错误原因：磁盘已满，没有足够的可用空间用来复制文件。"),
                         QStringLiteral("磁盘已满，没有足够的可用空间用来复制文件。")};
    case kBadRecordNumber:
        return {QStringLiteral("错误原因：未知错误，可能是文件拒绝访问权限。"),
            QStringLiteral("未知错误，请检查文件访问权限。")};
    case kPermissionDenied:
        return {QStringLiteral("错误原因：共享冲突,源文件或目标文件可能正在使用。"),
            (merge ? QStringLiteral("无法合并 ") : QStringLiteral("无法复制 ")) + source + kCrLf
                + QStringLiteral("共享冲突,源文件或目标文件可能正在使用。")};
    case kPathAccess:
        Q_ASSERT(atFirstPosition);
        return {QStringLiteral("错误原因：路径/文件访问错误，文件拒绝访问权限。"),
            QStringLiteral("路径/文件访问错误，请检查文件的访问权限。")};
    default:
        break;
    }
    Q_UNUSED(atFirstPosition);
    // Any other failure. The disc texts only for a source on an optical drive that is not ready.
    if (cdRomNotReady) {
        return merge
            ? FailureTexts{QStringLiteral("错误原因：合并文件被意外地终止，光驱中可能没有光盘。"),
                QStringLiteral("合并文件被意外地终止，请检查光驱中是否有光盘。")}
            : FailureTexts{QStringLiteral("错误原因：复制文件被意外地终止，请检查光驱中是否有光盘。"),
                QStringLiteral("复制文件被意外地终止，请检查光驱中是否有光盘。")};
    }
    if (error.description.isEmpty()) {
        if (merge)
            return {QStringLiteral("错误原因：未知错误，可能是目标文件中含有非法字符或是 ") + kCrLf + kIndent
                    + QStringLiteral("在文件合并过程当中遇到了其他无法预料的情况 。"),
                joinLines({QStringLiteral("未知错误，可能是目标文件中含有非法字符或是在文件 "),
                    QStringLiteral("合并过程当中遇到了其他无法预料的情况.如果文件已经"),
                    QStringLiteral("合并了一部份，请重新启动Vindaro，若仍然存在"),
                    QStringLiteral("问题，请检查文件的访问权限.")})};
        return {QStringLiteral("错误原因：未知错误，可能是目标文件中含有非法字符 ") + kCrLf + kIndent
                + QStringLiteral("或是在文件复制过程当中遇到了其他无法预料的情况 。"),
            joinLines({QStringLiteral("未知错误，可能是目标文件中含有非法字符或是在文件 "),
                QStringLiteral("复制过程当中遇到了其他无法预料的情况.如果文件已经"),
                QStringLiteral("复制了一部份，请重新启动Vindaro并再次选择该 "),
                QStringLiteral("文件然后以追加方式继续复制剩余的部分，若仍然存在"),
                QStringLiteral("问题，请检查文件的访问权限.")})};
    }
    // A failure the system describes: shown with its code, not logged.
    return {QString(),
        QStringLiteral("[") + QString::number(error.code) + QStringLiteral("].") + error.description};
}

} // namespace

BlockCopier::BlockCopier(CopyState& state, CopyHost& host, platform::FileLayer& files,
    ResumeStore& resumeStore, std::function<bool(const QString&)> cdRomNotReady)
    : m_state(state)
    , m_host(host)
    , m_files(files)
    , m_resumeStore(resumeStore)
    , m_cdRomNotReady(std::move(cdRomNotReady))
{
}

QString BlockCopier::finishedEntry(const QString& source, const QString& destination, qint64 sourceLength,
    bool merge, const QString& estimated, const QString& throughput)
{
    return source + kCrLf + kIndent
        + (merge ? QStringLiteral("被成功地合并到：") : QStringLiteral("被成功地复制到：")) + kCrLf + kIndent
        + destination + kCrLf + kIndent + QStringLiteral("文件大小：") + files::groupDigits(sourceLength)
        + QStringLiteral("字节") + QStringLiteral("  ") + QStringLiteral("总计消耗：") + estimated
        + QStringLiteral("  ") + QStringLiteral("存取速度：") + throughput;
}

QString BlockCopier::skippedEntry(qint64 position)
{
    return QStringLiteral("文件跳过：") + files::groupDigits(position) + QStringLiteral("字节");
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
    m_state.stopRequested = false;
    m_state.cancelRequested = false;
    m_state.copyRunning = true;
    m_host.enterCopyingState();
}

bool BlockCopier::askToRetry(bool merge)
{
    const int answer = m_host.showBox(text::box(merge ? QStringLiteral("合并文件时出错，是否继续合并？")
                                                      : QStringLiteral("复制文件时出错，是否继续复制？"),
        QStringLiteral("警告！"), BoxIcon::Critical, BoxButtons::YesNo));
    m_state.lastAnswer = answer;
    if (answer != platform::kAnswerYes)
        return false;
    enterCopyingState();
    return true;
}

void BlockCopier::enterIdleState()
{
    m_state.stopRequested = false;
    m_state.cancelRequested = false;
    m_state.copyRunning = false;
    if (!m_batch)
        m_state.elapsedSeconds = 0; // a batch moves the file's seconds to its total itself
    m_host.enterIdleState();
}

void BlockCopier::resetAfterCancel()
{
    m_state.stopRequested = false;
    m_state.cancelRequested = false;
    m_state.copyRunning = false;
    m_state.elapsedSeconds = 0;
    m_host.resetAfterCancel();
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
        m_durable = Positions{m_state.writtenPosition, m_state.writtenMergePosition};
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
            const qint64 position = m_state.position;
            // One byte more than the step, but never past the source's last byte.
            const qint64 wanted = std::max<qint64>(0, std::min(bufferBytes, sourceLength - position + 1));
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
                    }
                }
            }
            m_host.updateProgress(position, sourceLength);
            m_state.position += step; // added, not stored: a manual skip made meanwhile adds up
            if (merge)
                m_state.mergePosition += step;
            if (m_run.bytes > 0) {
                m_run.advance += step;
                m_run.end = Positions{m_state.position, m_state.mergePosition};
            } else {
                noteWritten(m_state.position, m_state.mergePosition);
            }
            m_host.yield();
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
                m_durable = Positions{m_state.writtenPosition, m_state.writtenMergePosition};
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
    const FileError error = classify(io, side);
    // The partial destination can be continued once the destination works again: its record names only
    // what is known to be on the device.
    if (side == IoSide::Destination)
        saveResumeRecord(destination);
    if (m_batch)
        return onBatchFailure(error, source, destination, outcome);
    const qint64 position = m_state.position;

    if (error.errorClass == kInvalidArgument) {
        if (askToRetry(merge))
            return false; // the same round again, from the same position
        enterIdleState();
        outcome = CopyOutcome::Failed;
        return true;
    }

    qint64 skipBytes = 0;
    if (error.errorClass == kBadFileNumber)
        skipBytes = m_state.blockBytes;
    else if (error.errorClass == kPathAccess && position > 1)
        skipBytes = qint64(m_state.skipBlocks) * m_state.blockBytes * 8;
    if (skipBytes > 0) {
        m_state.position += skipBytes;
        noteWritten(m_state.position, m_state.mergePosition); // the stretch is left out on purpose
        ++m_skips;
        m_host.yield();
        if (m_state.position <= m_state.sourceLength) {
            m_host.log(skippedEntry(m_state.position));
            return false; // start again from the new position
        }
        outcome = finish(source, destination, merge, false);
        return true;
    }

    // Only a source can sit on an optical drive without a disc.
    const bool notReady = side == IoSide::Source && m_cdRomNotReady && m_cdRomNotReady(source);
    const FailureTexts texts = failureTexts(error, position <= 1, notReady, source, merge);
    enterIdleState();
    if (!texts.cause.isEmpty())
        m_host.log(errorEntry(source, destination, merge, texts.cause));
    m_host.showBox(text::box(texts.box, boxTitle(merge), BoxIcon::Critical));
    outcome = CopyOutcome::Failed;
    return true;
}

bool BlockCopier::onBatchFailure(
    const FileError& error, const QString& source, const QString& destination, CopyOutcome& outcome)
{
    m_host.stopTimer();
    const auto logCause
        = [&](const QString& cause) { m_host.log(errorEntry(source, destination, false, cause)); };
    const auto endBatch = [&](bool keepRecord) {
        m_state.stopRequested = true;
        m_state.cancelRequested = keepRecord;
        outcome = keepRecord ? CopyOutcome::Cancelled : CopyOutcome::Failed;
        return true;
    };
    const auto nextFile = [&] {
        enterIdleState();
        outcome = CopyOutcome::Failed;
        return true;
    };

    const qint64 position = m_state.position;
    qint64 skipBytes = 0;
    if (error.errorClass == kBadFileNumber)
        skipBytes = m_state.blockBytes;
    else if (error.errorClass == kPathAccess && position > 1)
        skipBytes = 80 * m_state.blockBytes; // a fixed 80 blocks in a batch, not the skip slider
    if (skipBytes > 0) {
        m_state.position += skipBytes;
        ++m_skips;
        m_host.yield();
        if (m_state.position <= m_state.sourceLength)
            return false; // the loop starts again there; a batch logs no skipped block
        return endBatch(false);
    }

    switch (error.errorClass) {
    case kInvalidArgument: {
        if (askToRetry(false))
            return false; // read the same block again
        return endBatch(false);
    }
    case kDiskFull:
        logCause(QStringLiteral("错误原因：磁盘已满，没有足够的可用空间用来复制文件。"));
        return endBatch(true);
    case kBadRecordNumber:
        logCause(QStringLiteral("错误原因：未知错误，请检查文件访问权限。"));
        return nextFile();
    case kPermissionDenied:
        logCause(QStringLiteral("错误原因：共享冲突,源文件或目标文件可能正在使用。"));
        return nextFile();
    case kPathAccess: // at position 1
        logCause(QStringLiteral("错误原因：路径/文件访问错误，请检查文件的访问权限。"));
        return nextFile();
    default:
        break;
    }
    if (error.side == IoSide::Source && m_cdRomNotReady && m_cdRomNotReady(source)) {
        logCause(QStringLiteral("错误原因：复制文件被意外地终止，可能是光驱中没有光盘。"));
        return endBatch(true);
    }
    if (error.description.isEmpty()) {
        logCause(QStringLiteral("错误原因：未知错误，可能是目标文件中含有非法字符 ") + kCrLf + kIndent
            + QStringLiteral("或是在文件复制过程当中遇到了其他无法预料的情况。"));
        return nextFile();
    }
    nextFile();
    m_host.showBox(MessageBox{
        QStringLiteral("[") + QString::number(error.code) + QStringLiteral("].") + error.description,
        QStringLiteral("复制文件时出错！"), BoxIcon::Critical, BoxButtons::Ok});
    return true;
}

CopyOutcome BlockCopier::finish(
    const QString& source, const QString& destination, bool merge, bool showCopied)
{
    if (m_batch) {
        enterIdleState(); // the per-file reset; the batch goes on with the next file
        return m_skips > 0 ? CopyOutcome::FinishedWithSkips : CopyOutcome::Finished;
    }
    const qint64 sourceLength = m_state.sourceLength;
    if (showCopied)
        m_host.showCopiedBytes(sourceLength);
    enterIdleState();
    m_host.log(finishedEntry(
        source, destination, sourceLength, merge, m_host.estimatedText(), m_host.throughputText()));
    m_host.showBox(text::notice(source + kCrLf
            + (merge ? QStringLiteral("已被成功地合并到：") : QStringLiteral("已被成功地复制到："))
            + destination,
        merge ? QStringLiteral("文件合并完成！") : QStringLiteral("文件复制完成！")));
    return m_skips > 0 ? CopyOutcome::FinishedWithSkips : CopyOutcome::Finished;
}

CopyOutcome BlockCopier::onStop(const QString& source, const QString& destination, bool merge)
{
    m_host.stopTimer();
    if (!m_state.cancelRequested)
        return CopyOutcome::Paused; // the copy goes on later from `position`
    if (m_batch)
        return CopyOutcome::Cancelled; // the batch keeps the file and saves its record

    m_host.log((merge ? QStringLiteral("取消合并：") : QStringLiteral("取消复制：")) + source);
    const int answer
        = m_host.showBox(text::question(destination + kCrLf + QStringLiteral("该文件已经存在，是否删除？")));
    m_state.lastAnswer = answer;
    if (answer == platform::kAnswerYes) {
        resetAfterCancel();
        m_files.remove(destination);
        m_resumeStore.remove(destination); // a record for a file that is gone would only mislead
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
    saveRecord(destination, m_durable, m_merge);
}

void BlockCopier::saveRecord(const QString& destination, Positions at, bool merge)
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
    saveRecord(
        destination, Positions{m_state.writtenPosition, m_state.writtenMergePosition}, m_state.merging);
    return true;
}

} // namespace vindaro::copy
