#include "ProgressMeter.h"

#include "BatchCopier.h"
#include "CopyState.h"
#include "ProgressFigures.h"
#include "files/Format.h"

namespace vindaro::copy {

ProgressMeter::ProgressMeter(CopyState& state, const BatchCounters* batch)
    : m_state(state)
    , m_batch(batch)
{
}

void ProgressMeter::tick(int secondOfMinute, qint64 position, qint64 sourceLength)
{
    m_state.elapsedSeconds += tickDelta(secondOfMinute, m_lastSecond);
    m_lastSecond = secondOfMinute;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_batch) {
        const BatchFigures figures = computeBatchFigures(*m_batch, position, m_state.elapsedSeconds);
        m_texts.elapsed = durationText(figures.batchSeconds);
        if (figures.estimatedSeconds >= 0) { // nothing copied yet: the figure keeps its text
            m_texts.estimated = durationText(figures.estimatedSeconds);
        }
        m_texts.throughput = files::formatKBps(figures.kilobytesPerSecond);
        return;
    }
    const qint64 elapsed = m_state.elapsedSeconds;
    const ProgressFigures figures = computeFigures(position, sourceLength, elapsed);
    m_texts.elapsed = durationText(elapsed);
    m_texts.remaining = durationText(figures.remainingSeconds);
    m_texts.estimated = durationText(figures.estimatedSeconds);
    m_texts.throughput = files::formatKBps(figures.kilobytesPerSecond);
}

void ProgressMeter::showCopied(qint64 bytes)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_texts.copied = files::formatBytes(bytes);
}

void ProgressMeter::reset()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_texts = ProgressTexts();
}

ProgressTexts ProgressMeter::texts() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_texts;
}

} // namespace vindaro::copy
