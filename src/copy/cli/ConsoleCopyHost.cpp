#include "ConsoleCopyHost.h"

#include "copy/ProgressFigures.h"
#include "files/Format.h"

#include <QDateTime>

namespace vindaro::copy {

namespace {

// The second of the minute for the one-second tick. Only differences of it count, and UTC's differ from
// local time's by nothing, so the time zone (a stat of /etc/localtime per call) is left out.
int currentSecond()
{
    return QDateTime::currentDateTimeUtc().time().second();
}

QString plainLines(QString text)
{
    return text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
}

} // namespace

ConsoleCopyHost::ConsoleCopyHost(CopyState& state, QTextStream& out, QTextStream& err)
    : m_state(state)
    , m_out(out)
    , m_err(err)
{
}

int ConsoleCopyHost::showBox(const platform::MessageBox& box)
{
    endProgressLine();
    m_err << box.title << '\n' << plainLines(box.text) << '\n';
    if (box.buttons == platform::BoxButtons::Ok) {
        m_err.flush();
        return platform::kAnswerOk;
    }
    // The only questions a run without a window can meet: too little room (answered by --ignore-space),
    // keep or delete the partial file after Ctrl-C (kept, with its resume record), and "try the block again"
    // (no: a script must not loop forever).
    const bool lowSpace = box.text.contains(QStringLiteral("盘空间不足"));
    const int answer = lowSpace && ignoreLowSpace ? platform::kAnswerYes : platform::kAnswerNo;
    m_err << (answer == platform::kAnswerYes ? QStringLiteral("→ 是[Y]") : QStringLiteral("→ 否[N]")) << '\n';
    m_err.flush();
    return answer;
}

void ConsoleCopyHost::log(const QString& entry)
{
    endProgressLine();
    m_out << plainLines(entry) << '\n';
    m_out.flush();
    if (logged)
        logged(entry);
}

void ConsoleCopyHost::yield()
{
    if (m_timerOn && m_sinceTick.isValid() && m_sinceTick.elapsed() >= 1000)
        tick();
    printProgress(false);
}

void ConsoleCopyHost::enterCopyingState()
{
    // The engine clears the stop flags as it starts a copy: a Ctrl-C that came during the preparation must
    // not be lost with them.
    if (interrupted && interrupted()) {
        m_state.stopRequested = true;
        m_state.cancelRequested = true;
    }
    m_lastSecond = currentSecond();
    m_sinceTick.start();
    m_timerOn = true;
}

void ConsoleCopyHost::enterIdleState()
{
    m_timerOn = false;
    printProgress(true);
    endProgressLine();
}

void ConsoleCopyHost::resetAfterCancel()
{
    enterIdleState();
}

void ConsoleCopyHost::stopTimer()
{
    m_timerOn = false;
}

QString ConsoleCopyHost::copiedText() const
{
    // Formatted only when the line is printed, not after every block. A batch shows the bytes of the whole
    // batch and the percentage of the current file.
    return files::formatBytes(batchCounters ? batchCounters->copiedBytes + m_position : m_position);
}

void ConsoleCopyHost::updateProgress(qint64 position, qint64 sourceLength)
{
    m_position = position;
    m_sourceLength = sourceLength;
}

QString ConsoleCopyHost::chooseBatchFolder(bool& copyToSameDir)
{
    copyToSameDir = batchSameFolder;
    return batchFolder;
}

int ConsoleCopyHost::askBatchExistingFile(const QString&, const QString& destination)
{
    switch (existing) {
    case ExistingAnswer::Overwrite:
        return 2; // this one and every later one
    case ExistingAnswer::KeepBoth:
        return 3;
    default:
        break;
    }
    endProgressLine();
    m_err << QStringLiteral("目标文件已经存在：") << destination << '\n'
          << QStringLiteral(
                 "批量复制到此结束。用 --existing overwrite 或 --existing keep 选择做法（见 --help）。")
          << '\n';
    m_err.flush();
    return 0;
}

void ConsoleCopyHost::showFile(
    const QString& sourceText, const QString& destinationText, const QString& countText, const QString&)
{
    Q_UNUSED(sourceText);
    Q_UNUSED(destinationText);
    m_fileCount = QStringLiteral("[") + countText + QStringLiteral(" ");
}

void ConsoleCopyHost::showCopiedBytes(qint64 bytes)
{
    m_position = bytes;
}

int ConsoleCopyHost::askContinueCopy(const QString&, const QString& destination)
{
    switch (existing) {
    case ExistingAnswer::Overwrite:
        return 1;
    case ExistingAnswer::Continue:
    case ExistingAnswer::Append:
        return 2;
    default:
        break;
    }
    endProgressLine();
    m_err << QStringLiteral("目标文件已经存在，并有续拷记录：") << destination << '\n'
          << QStringLiteral("用 --existing continue 继续复制，或用 --existing overwrite 重新复制。") << '\n';
    m_err.flush();
    return 0;
}

int ConsoleCopyHost::askExistingFile(const QString&, const QString& destination, QString& name)
{
    switch (existing) {
    case ExistingAnswer::Overwrite:
        return 1;
    case ExistingAnswer::Continue: // no resume record: the destination's length is where copying goes on
    case ExistingAnswer::Append:
        return 2;
    case ExistingAnswer::Merge:
        return 3;
    case ExistingAnswer::NewName:
        name = newName;
        existing = ExistingAnswer::GiveUp; // a new name that exists too is not overwritten: give up then
        return 5;
    case ExistingAnswer::GiveUp:
    case ExistingAnswer::KeepBoth:
        break;
    }
    endProgressLine();
    m_err << QStringLiteral("目标文件已经存在：") << destination << '\n'
          << QStringLiteral("没有复制。用 --existing 选择覆盖、追加、合并或新的文件名（见 --help）。")
          << '\n';
    m_err.flush();
    return 0;
}

void ConsoleCopyHost::tick()
{
    m_sinceTick.start();
    const int second = currentSecond();
    m_state.elapsedSeconds += tickDelta(second, m_lastSecond);
    m_lastSecond = second;
    if (batchCounters) {
        const BatchFigures figures = computeBatchFigures(*batchCounters, m_position, m_state.elapsedSeconds);
        m_elapsed = durationText(figures.batchSeconds);
        if (figures.estimatedSeconds >= 0)
            m_estimated = durationText(figures.estimatedSeconds);
        m_throughput = files::formatKBps(figures.kilobytesPerSecond);
        printProgress(true);
        return;
    }
    const qint64 elapsed = m_state.elapsedSeconds;
    const ProgressFigures figures = computeFigures(m_position, m_sourceLength, elapsed);
    m_elapsed = durationText(elapsed);
    if (figures.speedKnown()) {
        m_remaining = durationText(figures.remainingSeconds);
        m_estimated = durationText(figures.estimatedSeconds);
    }
    m_throughput = files::formatKBps(figures.kilobytesPerSecond);
    printProgress(true);
}

void ConsoleCopyHost::printProgress(bool force)
{
    if (!showProgress)
        return;
    if (!force && m_sincePrint.isValid() && m_sincePrint.elapsed() < 250)
        return;
    m_sincePrint.start();
    m_err << '\r' << m_fileCount << percentText(m_position, m_sourceLength) << QStringLiteral("  已复制：")
          << copiedText() << QStringLiteral("  已用时间：") << m_elapsed;
    if (!batchCounters) // a batch shows no remaining time
        m_err << QStringLiteral("  剩余时间：") << m_remaining;
    m_err << QStringLiteral("  估计消耗：") << m_estimated << QStringLiteral("  存取速度：") << m_throughput
          << QStringLiteral("   ");
    m_err.flush();
    m_lineOpen = true;
}

void ConsoleCopyHost::endProgressLine()
{
    if (m_lineOpen) {
        m_err << '\n';
        m_err.flush();
        m_lineOpen = false;
    }
}

} // namespace vindaro::copy
