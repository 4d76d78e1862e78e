#pragma once

#include <QString>

#include <mutex>

namespace vindaro::copy {

struct BatchCounters;
struct CopyState;

// The five figures of a copy as they are shown: copied bytes, elapsed, remaining (a single copy only),
// estimated total and throughput.
struct ProgressTexts
{
    QString copied = QStringLiteral("0字节");
    QString elapsed = QStringLiteral("00:00:00");
    QString remaining = QStringLiteral("00:00:00");
    QString estimated = QStringLiteral("00:00:00");
    QString throughput = QStringLiteral("0KB/秒");
};

// One clock for every host of the copy engine: the copy window, the batch window and vindaro-copy tick it
// once a second, and it counts the copy's elapsed seconds (in CopyState, where the engine and the resume
// record keep them) and works out the figures once. The texts stay as they were last shown until the next
// tick or reset(): the log's finish entry names the estimate and throughput the user last saw.
//
// A single copy shows remaining and estimated time as "--:--:--" while the speed is not known; a batch's
// figures are the whole batch's (its counters plus the file in hand) and keep the last estimate until one
// is known. tick() and the setters run on the thread that shows the figures; texts() on any thread.
class ProgressMeter
{
public:
    // `batch`: the counters of a running batch, whose figures are then the batch's; may be null.
    explicit ProgressMeter(CopyState& state, const BatchCounters* batch = nullptr);

    void setBatch(const BatchCounters* batch) { m_batch = batch; }
    // The clock counts from this second of the minute (0..59): a copy starts or goes on.
    void start(int secondOfMinute) { m_lastSecond = secondOfMinute; }
    // The one-second tick, with the position and length of the file in hand as the host last saw them.
    void tick(int secondOfMinute, qint64 position, qint64 sourceLength);
    void showCopied(qint64 bytes); // the copied figure, after every block and at the finish
    void reset(); // every figure back to its idle text

    ProgressTexts texts() const;
    QString estimatedText() const { return texts().estimated; }
    QString throughputText() const { return texts().throughput; }

private:
    CopyState& m_state;
    const BatchCounters* m_batch;
    int m_lastSecond = 0; // second of the minute at the previous tick, or when the clock started
    mutable std::mutex m_mutex; // guards m_texts
    ProgressTexts m_texts;
};

} // namespace vindaro::copy
