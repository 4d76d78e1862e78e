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
    std::function<void(const QString&)> logged; // each log entry once printed: the operation log
    // A batch: the folder, and whether every file goes straight into it.
    QString batchFolder;
    bool batchSameFolder = true;
    QTextStream& out() { return m_out; } // where log entries go
    // The batch's counters once it runs: the figures are then the whole batch's.
    void setBatchCounters(const BatchCounters* counters);

    int ask(const platform::MessageBox& question) override;
    void notify(const platform::MessageBox& notice) override;
    ContinueChoice askContinueCopy(const QString& source, const QString& destination) override;
    ExistingFileAnswer askExistingFile(const QString& source, const QString& destination) override;
    void log(const QString& entry) override;
    void progress(qint64 position, qint64 sourceLength) override;
    void modeChanged(CopyMode mode) override;
    QString chooseBatchFolder(bool& copyToSameDir) override;
    BatchExistingChoice askBatchExistingFile(const QString& source, const QString& destination) override;
    void startAnimation() override { }
    void stopAnimation() override { }
    void showFile(const QString& sourceText, const QString& destinationText, const QString& countText,
        const QString& totalText) override;

private:
    void printProgress(bool force);
    QString copiedText() const;
    void endProgressLine();

    CopyState& m_state;
    QTextStream& m_out;
    QTextStream& m_err;
    QElapsedTimer m_sinceTick; // the one-second tick, counted between blocks
    QElapsedTimer m_sincePrint; // the progress line is redrawn at most a few times a second
    const BatchCounters* m_batchCounters = nullptr;
    bool m_timerOn = false;
    bool m_lineOpen = false;
    qint64 m_position = 0;
    qint64 m_sourceLength = 0;
    QString m_fileCount; // "[i/n ]" in a batch
};

} // namespace vindaro::copy
