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

void ConsoleCopyHost::setBatchCounters(const BatchCounters* counters)
{
    m_batchCounters = counters;
    m_state.meter.setBatch(counters);
}

void ConsoleCopyHost::notify(const platform::MessageBox& notice)
{
    endProgressLine();
    m_err << notice.title << '\n' << plainLines(notice.text) << '\n';
    m_err.flush();
}

int ConsoleCopyHost::ask(const platform::MessageBox& question)
{
    endProgressLine();
    m_err << question.title << '\n' << plainLines(question.text) << '\n';
    // The only questions a run without a window can meet: too little room (answered by --ignore-space),
    // keep or delete the partial file after Ctrl-C (kept, with its resume record), and "try the block again"
    // (no: a script must not loop forever).
    const bool lowSpace = question.text.contains(QStringLiteral("盘空间不足"));
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

void ConsoleCopyHost::modeChanged(CopyMode mode)
{
    switch (mode) {
    case CopyMode::Copying:
        m_state.meter.start(currentSecond());
        m_sinceTick.start();
        m_timerOn = true;
        break;
    case CopyMode::Stopped:
        m_timerOn = false;
        break;
    case CopyMode::Idle:
    case CopyMode::IdleAfterCancel:
        m_timerOn = false;
        printProgress(true);
        endProgressLine();
        break;
    case CopyMode::StayPaused:
        break; // no pause without a window
    }
}

QString ConsoleCopyHost::copiedText() const
{
    // Formatted only when the line is printed, not after every block. A batch shows the bytes of the whole
    // batch and the percentage of the current file.
    return files::formatBytes(m_batchCounters ? m_batchCounters->copiedBytes + m_position : m_position);
}

// After every block: the one-second tick is counted here, between blocks, and the line redrawn now and then.
void ConsoleCopyHost::progress(qint64 position, qint64 sourceLength)
{
    m_position = position;
    m_sourceLength = sourceLength;
    if (m_timerOn && m_sinceTick.isValid() && m_sinceTick.elapsed() >= 1000) {
        m_sinceTick.start();
        m_state.meter.tick(currentSecond(), m_position, m_sourceLength);
        printProgress(true);
        return;
    }
    printProgress(false);
}

QString ConsoleCopyHost::chooseBatchFolder(bool& copyToSameDir)
{
    copyToSameDir = batchSameFolder;
    return batchFolder;
}

BatchExistingChoice ConsoleCopyHost::askBatchExistingFile(const QString&, const QString& destination)
{
    switch (existing) {
    case ExistingAnswer::Overwrite:
        return BatchExistingChoice::OverwriteAll;
    case ExistingAnswer::KeepBoth:
        return BatchExistingChoice::KeepBoth;
    default:
        break;
    }
    endProgressLine();
    m_err << QStringLiteral("目标文件已经存在：") << destination << '\n'
          << QStringLiteral(
                 "批量复制到此结束。用 --existing overwrite 或 --existing keep 选择做法（见 --help）。")
          << '\n';
    m_err.flush();
    return BatchExistingChoice::EndBatch;
}

void ConsoleCopyHost::showFile(
    const QString& sourceText, const QString& destinationText, const QString& countText, const QString&)
{
    Q_UNUSED(sourceText);
    Q_UNUSED(destinationText);
    m_fileCount = QStringLiteral("[") + countText + QStringLiteral(" ");
}

ContinueChoice ConsoleCopyHost::askContinueCopy(const QString&, const QString& destination)
{
    switch (existing) {
    case ExistingAnswer::Overwrite:
        return ContinueChoice::StartOver;
    case ExistingAnswer::Continue:
    case ExistingAnswer::Append:
        return ContinueChoice::Continue;
    default:
        break;
    }
    endProgressLine();
    m_err << QStringLiteral("目标文件已经存在，并有续拷记录：") << destination << '\n'
          << QStringLiteral("用 --existing continue 继续复制，或用 --existing overwrite 重新复制。") << '\n';
    m_err.flush();
    return ContinueChoice::GiveUp;
}

ExistingFileAnswer ConsoleCopyHost::askExistingFile(const QString&, const QString& destination)
{
    switch (existing) {
    case ExistingAnswer::Overwrite:
        return {ExistingFileChoice::Overwrite, {}};
    case ExistingAnswer::Continue: // no resume record: the destination's length is where copying goes on
    case ExistingAnswer::Append:
        return {ExistingFileChoice::Append, {}};
    case ExistingAnswer::Merge:
        return {ExistingFileChoice::Merge, {}};
    case ExistingAnswer::NewName:
        existing = ExistingAnswer::GiveUp; // a new name that exists too is not overwritten: give up then
        return {ExistingFileChoice::Rename, newName};
    case ExistingAnswer::GiveUp:
    case ExistingAnswer::KeepBoth:
        break;
    }
    endProgressLine();
    m_err << QStringLiteral("目标文件已经存在：") << destination << '\n'
          << QStringLiteral("没有复制。用 --existing 选择覆盖、追加、合并或新的文件名（见 --help）。")
          << '\n';
    m_err.flush();
    return {};
}

void ConsoleCopyHost::printProgress(bool force)
{
    if (!showProgress)
        return;
    if (!force && m_sincePrint.isValid() && m_sincePrint.elapsed() < 250)
        return;
    m_sincePrint.start();
    const ProgressTexts figures = m_state.meter.texts();
    m_err << '\r' << m_fileCount << percentText(m_position, m_sourceLength) << QStringLiteral("  已复制：")
          << copiedText() << QStringLiteral("  已用时间：") << figures.elapsed;
    if (!m_batchCounters) // a batch shows no remaining time
        m_err << QStringLiteral("  剩余时间：") << figures.remaining;
    m_err << QStringLiteral("  估计消耗：") << figures.estimated << QStringLiteral("  存取速度：")
          << figures.throughput << QStringLiteral("   ");
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
