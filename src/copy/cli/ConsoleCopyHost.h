#pragma once

#include "copy/BatchCopier.h"
#include "copy/CopyState.h"

#include <QElapsedTimer>
#include <QTextStream>

#include <functional>

namespace vindaro::copy {

// What the command-line tool answers for an existing destination.
enum class ExistingAnswer
{
    GiveUp,
    Overwrite,
    Continue,
    Append,
    Merge,
    NewName,
    KeepBoth, // a batch only: keep both files
};

// The copy host of `vindaro-copy`: questions are answered from the command line, boxes and log entries are
// printed (log entries also go to `logged`), and the progress figures of the window are printed as one line
// on stderr.
class ConsoleCopyHost final : public BatchHost
{
public:
    ConsoleCopyHost(CopyState& state, QTextStream& out, QTextStream& err);

    ExistingAnswer existing = ExistingAnswer::GiveUp;
    QString newName;
    bool ignoreLowSpace = false;
    bool showProgress = true;
    std::function<bool()> interrupted; // the user pressed Ctrl-C
    std::function<void(const QString&)> logged; // each log entry once printed: the operation log
    // A batch: the folder, whether every file goes straight into it, and its counters once it runs.
    QString batchFolder;
    bool batchSameFolder = true;
    const BatchCounters* batchCounters = nullptr;

    int showBox(const platform::MessageBox& box) override;
    void log(const QString& entry) override;
    void yield() override;
    void enterCopyingState() override;
    void enterIdleState() override;
    void resetAfterCancel() override;
    void stopTimer() override;
    void updateProgress(qint64 position, qint64 sourceLength) override;
    void showCopiedBytes(qint64 bytes) override;
    QString estimatedText() override { return m_estimated; }
    QString throughputText() override { return m_throughput; }
    int askContinueCopy(const QString& source, const QString& destination) override;
    int askExistingFile(const QString& source, const QString& destination, QString& name) override;
    void stayPaused() override { }
    QString chooseBatchFolder(bool& copyToSameDir) override;
    int askBatchExistingFile(const QString& source, const QString& destination) override;
    void startAnimation() override { }
    void stopAnimation() override { }
    void showFile(const QString& sourceText, const QString& destinationText, const QString& countText,
        const QString& totalText) override;

private:
    void tick();
    void printProgress(bool force);
    QString copiedText() const;
    void endProgressLine();

    CopyState& m_state;
    QTextStream& m_out;
    QTextStream& m_err;
    QElapsedTimer m_sinceTick; // the one-second tick, counted between blocks
    QElapsedTimer m_sincePrint; // the progress line is redrawn at most a few times a second
    int m_lastSecond = 0;
    bool m_timerOn = false;
    bool m_lineOpen = false;
    qint64 m_position = 0;
    qint64 m_sourceLength = 0;
    QString m_fileCount; // "[i/n ]" in a batch
    QString m_elapsed = QStringLiteral("00:00:00");
    QString m_remaining = QStringLiteral("00:00:00");
    QString m_estimated = QStringLiteral("00:00:00");
    QString m_throughput = QStringLiteral("0KB/秒");
};

} // namespace vindaro::copy
