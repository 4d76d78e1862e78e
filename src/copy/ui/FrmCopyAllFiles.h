#pragma once

#include "copy/BatchCopier.h"
#include "copy/CopyState.h"

#include <QTime>
#include <QWidget>

#include <functional>
#include <memory>

class QLabel;
class QPushButton;
class QTimer;

namespace vindaro::copy {

class CopyAnimation;
class ProgressBar;
class ThreadedBatchHost;
class ThreadedCopyHost;

// The questions of a batch copy, behind an interface so that tests answer them without modal windows.
class BatchPrompts
{
public:
    virtual ~BatchPrompts() = default;
    // A message box; answers platform::kAnswerOk, kAnswerYes or kAnswerNo.
    virtual int showBox(const platform::MessageBox& box, QWidget* parent) = 0;
    // The folder choice shown with the same-folder option; empty when the user cancelled.
    virtual QString chooseFolder(bool& copyToSameDir, QWidget* parent) = 0;
    virtual ContinueChoice askContinueCopy(const QString& source, const QString& destination, QWidget* parent)
        = 0;
    virtual BatchExistingChoice askBatchExistingFile(
        const QString& source, const QString& destination, QWidget* parent)
        = 0;
};

// The real questions: message boxes, FrmChooseDialog, ContinueCopyDialog and BatchExistingFileDialog, each
// made for one question. The folder and the same-folder option last as long as this object (the program's
// run, when the main window keeps one): the next batch offers them again.
class DialogBatchPrompts final : public BatchPrompts
{
public:
    // With a resume store, the continue-copy dialog also tells how far the last copy got.
    explicit DialogBatchPrompts(ResumeStore* resumeStore = nullptr)
        : m_resumeStore(resumeStore)
    {
    }
    int showBox(const platform::MessageBox& box, QWidget* parent) override;
    QString chooseFolder(bool& copyToSameDir, QWidget* parent) override;
    ContinueChoice askContinueCopy(
        const QString& source, const QString& destination, QWidget* parent) override;
    BatchExistingChoice askBatchExistingFile(
        const QString& source, const QString& destination, QWidget* parent) override;

private:
    ResumeStore* m_resumeStore; // may be null
    QString m_folder; // the last folder chosen
    bool m_copyToSameDir = false;
};

// What the batch window works with, handed in by whoever creates it.
struct FrmCopyAllFilesServices
{
    platform::FileLayer& files;
    ResumeStore& resumeStore;
    DriveFacts& drives;
    BatchPrompts& prompts;
    // Entries for the operation log; dropped when empty.
    std::function<void(const QString&)> log = {};
    // The time of day for the tick; the wall clock when empty. Tests pin it.
    std::function<QTime()> clock = {};
    // tmrTime's interval. Tests that take the ticks by hand set it out of reach.
    int tickMilliseconds = 1000;
    // Where each file's rescue map is kept; none: no map.
    RescueMapStore* maps = nullptr;
};

// The batch copy's window: copies every listed file into one chosen folder, file after file, showing the
// file in hand, the file counter, the batch's total size, the progress bar of the current file and the
// batch's figures (copied bytes of the whole batch, its seconds, the estimated total time, KB/s and the
// time of day; no remaining time).
//
// The batch (copy::BatchCopier) runs on a worker thread behind a ThreadedBatchHost; this window is the
// BatchHost on the UI thread that its calls arrive at, so the window stays usable while a read hangs.
// The window exists for one batch: CopyingFiles() starts it, the window shows itself once the folder is
// chosen and the checks have passed, and closes itself at the end, after a refusal or after a cancel
// (batchFinished() comes just before). Set Qt::WA_DeleteOnClose to have it deleted then.
class FrmCopyAllFiles : public QWidget, public BatchHost
{
    Q_OBJECT

public:
    explicit FrmCopyAllFiles(const FrmCopyAllFilesServices& services, QWidget* parent = nullptr);
    ~FrmCopyAllFiles() override;

    // Starts the batch on the worker thread for the file list's entries, in list order (entries that are
    // no file are left out). Returns at once; false when this window has run a batch already.
    bool CopyingFiles(const QStringList& entries);

    bool isRunning() const; // from CopyingFiles() until batchFinished()
    bool isFinished() const { return m_finished; }
    const BatchResult& result() const { return m_result; } // valid once finished
    CopyState& copyState() { return m_state; }
    const BatchCounters& counters() const;
    ThreadedCopyHost& worker();
    CopyAnimation& animation() { return *m_picAVIShowWindow; }

    // The one-second tick of tmrTime: the batch's seconds, the time of day, the estimated total and KB/s.
    void tmrTimeTimer();

    // BatchHost, on the UI thread.
    int ask(const platform::MessageBox& question) override;
    void notify(const platform::MessageBox& notice) override;
    ContinueChoice askContinueCopy(const QString& source, const QString& destination) override;
    ExistingFileAnswer askExistingFile(const QString& source, const QString& destination) override;
    void log(const QString& entry) override;
    void progress(qint64 position, qint64 sourceLength) override;
    void modeChanged(CopyMode mode) override;
    QString chooseBatchFolder(bool& copyToSameDir) override;
    BatchExistingChoice askBatchExistingFile(const QString& source, const QString& destination) override;
    void startAnimation() override;
    void stopAnimation() override;
    void showFile(const QString& sourceText, const QString& destinationText, const QString& countText,
        const QString& totalText) override;

signals:
    void batchFinished();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildWindow();
    void resetFigures();
    void showFigures(); // the meter's figures on their labels
    void cmdCancelClick();
    void tmrStopTimer();
    void onJobFinished();
    QTime now() const;

    FrmCopyAllFilesServices m_services;
    CopyState m_state;
    std::unique_ptr<ThreadedBatchHost> m_worker;
    std::unique_ptr<BatchCopier> m_batch;
    BatchResult m_result; // written by the worker's job, read once it has finished
    bool m_started = false;
    bool m_finished = false;
    qint64 m_filePosition = 0; // position of the last block shown; 0 between files

    QLabel* m_lblSurFilePath = nullptr;
    QLabel* m_lblDecFilePath = nullptr;
    QLabel* m_lblTotalFiles = nullptr;
    QLabel* m_lblTotalLength = nullptr;
    QLabel* m_lblYiFuZhi = nullptr;
    QLabel* m_lblZongJiHaoShi = nullptr;
    QLabel* m_lblShuJuLiuLiang = nullptr;
    QLabel* m_lblGuJiXiaoHao = nullptr;
    QLabel* m_lblCurrentTime = nullptr;
    ProgressBar* m_picProgressBar = nullptr;
    CopyAnimation* m_picAVIShowWindow = nullptr;
    QPushButton* m_cmdCancel = nullptr;
    QTimer* m_tmrTime = nullptr;
    QTimer* m_tmrStop = nullptr;
};

} // namespace vindaro::copy
