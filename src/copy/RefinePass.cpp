#include "RefinePass.h"

#include "CopyMessages.h"
#include "CopyText.h"
#include "RescueMessages.h"

#include <algorithm>
#include <queue>
#include <vector>

namespace vindaro::copy {

using platform::IoResult;

namespace {

constexpr qint64 kCheckpointMilliseconds = 30000;

bool untried(RescueState state)
{
    return state == RescueState::Untried || state == RescueState::NonTrimmed
        || state == RescueState::NonScraped;
}

} // namespace

RefinePass::RefinePass(CopyState& state, CopyHost& host, platform::FileLayer& files, RescueMapStore& maps)
    : m_state(state)
    , m_host(host)
    , m_files(files)
    , m_maps(maps)
{
}

bool RefinePass::stopAsked()
{
    if (m_state.stopRequested || m_state.abandoned) {
        m_end = End::Stop;
        return true;
    }
    const qint64 now = m_settings.clockMilliseconds ? m_settings.clockMilliseconds() : m_timer.elapsed();
    if (m_settings.timeBudgetSeconds > 0 && now - m_startedMs >= m_settings.timeBudgetSeconds * 1000) {
        m_end = End::OutOfTime;
        return true;
    }
    return false;
}

void RefinePass::report()
{
    const qint64 untriedBytes = m_map.bytes(RescueState::Untried) + m_map.bytes(RescueState::NonTrimmed)
        + m_map.bytes(RescueState::NonScraped);
    m_state.refineUntriedBytes = untriedBytes;
    m_state.refineBadBytes = m_map.bytes(RescueState::Bad);
    m_state.refineFailedReads = m_failedReads;
    m_host.progress(m_map.size() - untriedBytes, m_map.size());
}

RefinePass::Read RefinePass::readSector(qint64 offset, qint64 lo, qint64 hi)
{
    Q_UNUSED(lo);
    Q_UNUSED(hi);
    if (stopAsked())
        return Read::Stop;
    const qint64 begin = offset / m_sector * m_sector;
    const qint64 end = std::min(begin + m_sector, m_map.size());
    bool anyUntried = false;
    bool anyBad = false;
    for (const RescueRange& range : m_map.ranges(begin, end - begin)) {
        anyUntried = anyUntried || untried(range.state);
        anyBad = anyBad || range.state == RescueState::Bad;
    }
    if (!anyUntried)
        return anyBad ? Read::Known : Read::Good;

    IoResult io = m_in->readAt(begin, m_buffer.data(), end - begin);
    if (io.ok() && io.bytes < end - begin)
        io = IoResult::failure(EIO); // the source ended early: as unreadable
    if (!io.ok()) {
        ++m_failedReads;
        for (const RescueRange& range : m_map.ranges(begin, end - begin)) {
            if (untried(range.state)) {
                const std::lock_guard<std::mutex> lock(m_mapMutex);
                m_map.mark(range.offset, range.length, RescueState::Bad);
            }
        }
        report();
        return Read::Bad;
    }
    // Only what no read has copied goes to the destination; copied bytes are never written again.
    for (const RescueRange& range : m_map.ranges(begin, end - begin)) {
        if (range.state == RescueState::Copied)
            continue;
        const IoResult written
            = m_out->writeAt(range.offset, m_buffer.constData() + (range.offset - begin), range.length);
        if (!written.ok()) {
            m_failure = written;
            m_end = End::DestinationFailed;
            return Read::Stop;
        }
        const std::lock_guard<std::mutex> lock(m_mapMutex);
        m_map.mark(range.offset, range.length, RescueState::Copied);
    }
    report();
    return Read::Good;
}

qint64 RefinePass::walk(qint64 from, qint64 to, bool forward, Read& last)
{
    // Sector numbers, both ends included.
    qint64 sector = from;
    last = Read::Good;
    while (forward ? sector <= to : sector >= to) {
        last = readSector(sector * m_sector, 0, 0);
        if (last != Read::Good)
            return sector;
        sector += forward ? 1 : -1;
    }
    return sector;
}

void RefinePass::checkpoint(const QString& destination)
{
    const qint64 now = m_settings.clockMilliseconds ? m_settings.clockMilliseconds() : m_timer.elapsed();
    if (now - m_lastCheckpointMs < kCheckpointMilliseconds)
        return;
    m_lastCheckpointMs = now;
    if (m_out->sync().ok())
        m_maps.save(destination, m_map);
}

CopyOutcome RefinePass::refine(
    const QString& source, const QString& destination, const RefineSettings& settings)
{
    m_settings = settings;
    m_end = End::None;
    m_failedReads = 0;
    m_timer.start();
    m_startedMs = m_settings.clockMilliseconds ? m_settings.clockMilliseconds() : 0;
    m_lastCheckpointMs = m_startedMs;

    IoResult io;
    const qint64 sourceLength = m_files.length(source, io);
    RescueMap kept;
    const bool loaded = m_maps.load(destination, kept);
    {
        const std::lock_guard<std::mutex> lock(m_mapMutex);
        m_map = std::move(kept);
    }
    if (!loaded || !io.ok() || m_map.size() != sourceLength) {
        m_host.notify(msg::noRescueMapNotice(destination));
        return CopyOutcome::Failed;
    }
    m_state.sourceLength = sourceLength;
    const qint64 untriedBefore = m_map.bytes(RescueState::Untried) + m_map.bytes(RescueState::NonTrimmed)
        + m_map.bytes(RescueState::NonScraped);
    if (untriedBefore == 0)
        return CopyOutcome::NotStarted;

    m_in = m_files.openForReading(source, io);
    if (!m_in) {
        m_host.notify(text::box(msg::describedFailure(io.error, io.description), msg::errorBoxTitle(false),
            platform::BoxIcon::Critical));
        return CopyOutcome::Failed;
    }
    m_out = m_files.openForUpdate(destination, io);
    if (!m_out) {
        m_in.reset();
        m_host.notify(text::box(msg::describedFailure(io.error, io.description), msg::errorBoxTitle(false),
            platform::BoxIcon::Critical));
        return CopyOutcome::Failed;
    }
    m_sector = m_settings.sectorBytes > 0 ? m_settings.sectorBytes
        : m_in->sectorBytes() > 0         ? m_in->sectorBytes()
                                          : 512;
    m_buffer.resize(m_sector);

    m_state.stopRequested = m_state.cancelHeld.load();
    m_state.cancelRequested = m_state.cancelHeld.load();
    m_state.copyRunning = true;
    m_state.refining = true;
    m_host.modeChanged(CopyMode::Copying);
    m_host.log(msg::refineStartedEntry(source, destination));
    report();

    // The untried areas in sectors, neighbouring untried ranges joined.
    std::vector<Area> areas;
    for (const RescueRange& range : m_map.ranges()) {
        if (!untried(range.state))
            continue;
        const qint64 first = range.offset / m_sector;
        const qint64 last = (range.end() - 1) / m_sector;
        if (!areas.empty() && areas.back().end >= first - 1)
            areas.back().end = std::max(areas.back().end, last);
        else
            areas.push_back(Area{first, last, 0});
    }

    // Largest first; ties go front to back, as a drive reads best.
    const auto smaller = [](const Area& a, const Area& b) {
        const qint64 sa = a.end - a.begin;
        const qint64 sb = b.end - b.begin;
        return sa != sb ? sa < sb : a.begin > b.begin;
    };
    std::priority_queue<Area, std::vector<Area>, decltype(smaller)> inner(smaller);

    Read last = Read::Good;
    for (const Area& area : areas) {
        // Inward from both edges until a read fails on each side.
        const qint64 front = walk(area.begin, area.end, true, last);
        if (last == Read::Stop)
            return end(source, destination);
        if (front > area.end)
            continue; // read whole
        const qint64 back = walk(area.end, front + 1, false, last);
        if (last == Read::Stop)
            return end(source, destination);
        if (back > front + 1)
            inner.push(Area{front + 1, back - 1, 0});
        checkpoint(destination);
    }

    while (!inner.empty()) {
        const Area area = inner.top();
        inner.pop();
        if (area.end < area.begin || area.misses >= m_settings.maxMisses)
            continue; // given up: its probes kept failing
        // A sector of the middle half, not its very middle: the bad sectors of a scratch repeat once a turn
        // of the disc, and halving again and again would hit them again and again where a turn's length
        // divides the area's. The choice is a fixed function of the area, so a pass repeats itself exactly.
        const qint64 span = area.end - area.begin + 1;
        const quint64 mixed = quint64(area.begin) * 0x9E3779B97F4A7C15ULL + quint64(area.end);
        const qint64 middle
            = area.begin + span / 4 + qint64((mixed >> 33) % quint64(std::max<qint64>(1, span / 2)));
        const Read probe = readSector(middle * m_sector, 0, 0);
        if (probe == Read::Stop)
            return end(source, destination);
        if (probe != Read::Good) {
            inner.push(Area{area.begin, middle - 1, area.misses + 1});
            inner.push(Area{middle + 1, area.end, area.misses + 1});
            continue;
        }
        // Outward from a good sector on both sides: what is left on each side is a smaller area.
        const qint64 right = walk(middle + 1, area.end, true, last);
        if (last == Read::Stop)
            return end(source, destination);
        const qint64 left = walk(middle - 1, area.begin, false, last);
        if (last == Read::Stop)
            return end(source, destination);
        if (left >= area.begin)
            inner.push(Area{area.begin, left - 1, 0});
        if (right <= area.end)
            inner.push(Area{right + 1, area.end, 0});
        checkpoint(destination);
    }
    return end(source, destination);
}

RescueMap RefinePass::map() const
{
    const std::lock_guard<std::mutex> lock(m_mapMutex);
    return m_map;
}

CopyOutcome RefinePass::end(const QString& source, const QString& destination)
{
    m_in.reset();
    // What was written reaches the device before the map says so.
    const IoResult synced = m_out->sync();
    const IoResult closed = m_out->close();
    m_out.reset();
    if (m_end == End::None && !synced.ok()) {
        m_failure = synced;
        m_end = End::DestinationFailed;
    } else if (m_end == End::None && !closed.ok()) {
        m_failure = closed;
        m_end = End::DestinationFailed;
    }
    if (m_end != End::DestinationFailed || synced.ok()) {
        if (m_map.isComplete())
            m_maps.remove(destination);
        else
            m_maps.save(destination, m_map);
    }
    report();
    m_state.refining = false;
    m_state.copyRunning = false;
    m_host.modeChanged(CopyMode::Stopped);

    const qint64 untriedBytes = m_map.bytes(RescueState::Untried) + m_map.bytes(RescueState::NonTrimmed)
        + m_map.bytes(RescueState::NonScraped);
    const qint64 badBytes = m_map.bytes(RescueState::Bad);
    CopyOutcome outcome = CopyOutcome::Finished;
    switch (m_end) {
    case End::Stop:
        if (!m_state.cancelRequested) {
            outcome = CopyOutcome::Paused;
            break;
        }
        m_host.log(msg::refineCancelledEntry(source));
        outcome = CopyOutcome::Cancelled;
        break;
    case End::DestinationFailed:
    case End::SourceFailed:
        m_host.notify(text::box(msg::describedFailure(m_failure.error, m_failure.description),
            msg::errorBoxTitle(false), platform::BoxIcon::Critical));
        outcome = CopyOutcome::Failed;
        break;
    case End::OutOfTime:
    case End::None:
        m_host.log(msg::refineFinishedEntry(
            source, destination, untriedBytes, badBytes, m_failedReads, m_end == End::OutOfTime));
        outcome = untriedBytes + badBytes == 0 ? CopyOutcome::Finished : CopyOutcome::FinishedWithSkips;
        break;
    }
    if (outcome == CopyOutcome::Paused) {
        m_host.modeChanged(CopyMode::Stopped);
        return outcome;
    }
    const bool held = m_state.cancelHeld;
    m_state.stopRequested = held;
    m_state.cancelRequested = held;
    m_host.modeChanged(CopyMode::Idle);
    if (outcome == CopyOutcome::Finished || outcome == CopyOutcome::FinishedWithSkips)
        m_host.notify(msg::refineFinishedNotice(destination, untriedBytes + badBytes));
    return outcome;
}

} // namespace vindaro::copy
