#pragma once

#include "copy/CopyHost.h"
#include "copy/CopySession.h"
#include "copy/CopyState.h"

#include <QWidget>

#include <functional>
#include <memory>

class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QTimer;
class QToolButton;

namespace vindaro::copy {
class ProgressBar;
class ThreadedCopyHost;
} // namespace vindaro::copy

namespace vindaro::app {

class BoxPresenter;
class CopyChoices;
class OperationLogModel;

// What the main window works with, handed in by whoever creates it.
struct FrmCopyServices
{
    platform::FileLayer& files;
    copy::ResumeStore& resumeStore;
    copy::DriveFacts& drives;
    BoxPresenter& boxes;
    CopyChoices& choices;
    OperationLogModel& log;
    // The second of the minute (0..59) now; the wall clock when empty. Tests pin it.
    std::function<int()> clockSecond = {};
    // The file list's first text: the report on optical drives that are not ready (empty when all are).
    QString fileListText = {};
};

// The main copy window: source and destination, start, pause/continue and cancel, the read and skip
// sliders on the settings panel, and the progress figures.
//
// The copy itself runs on a worker thread (copy::ThreadedCopyHost); this window is the copy::CopyHost on
// the UI thread that the worker's calls arrive at. Buttons, sliders and the one-second tick act on the
// shared copy::CopyState, which the block loop reads between blocks.
//
// Modes: idle, copying, paused. Exit is refused without a word while copying and asked about otherwise.
class FrmCopy : public QWidget, public copy::CopyHost
{
    Q_OBJECT

public:
    enum class Mode
    {
        Idle,
        Copying,
        Paused
    };

    static const QString kPauseCaption; // "暂停复制[&S]"
    static const QString kContinueCaption; // "继续复制[&P]"

    explicit FrmCopy(const FrmCopyServices& services, QWidget* parent = nullptr);
    ~FrmCopy() override;

    copy::CopyState& copyState() { return m_state; }
    copy::CopySession& session() { return *m_session; }
    copy::ThreadedCopyHost& worker() { return *m_worker; }
    Mode mode() const { return m_mode; }

    // copy::CopyHost, on the UI thread.
    int showBox(const platform::MessageBox& box) override;
    void log(const QString& entry) override;
    void yield() override { }
    void enterCopyingState() override;
    void enterIdleState() override;
    void resetAfterCancel() override;
    void stopTimer() override;
    void updateProgress(qint64 position, qint64 sourceLength) override;
    void showCopiedBytes(qint64 bytes) override;
    QString estimatedText() override;
    QString throughputText() override;
    int askContinueCopy(const QString& source, const QString& destination) override;
    int askExistingFile(const QString& source, const QString& destination, QString& newName) override;
    void stayPaused() override;

    // The one-second tick of tmrTime: elapsed, remaining, estimated and throughput figures.
    void tmrTimeTimer();

signals:
    void copyJobFinished(int outcome); // a start or continue has run its course on the worker

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildWindow();
    void attachToolTips();
    void setControlsForCopying(bool copying);
    void resetFigures();
    void onJobFinished(int outcome);

    void cmdStartCopyClick();
    void cmdPauseCopyClick();
    void cmdCancelCopyClick();
    void cmdSourceFileClick();
    void cmdDestinationPathClick();
    void picSetUpClick();
    void cmdBackCopyClick();
    void sldReadBlocksChange(int value);
    void sldSkipBlocksChange(int value);

    int currentSecond() const;
    QString sourceText() const;
    QString destinationText() const;

    FrmCopyServices m_services;
    copy::CopyState m_state;
    std::unique_ptr<copy::ThreadedCopyHost> m_worker; // the engine's host on the worker thread
    std::unique_ptr<copy::CopySession> m_session;
    Mode m_mode = Mode::Idle;
    int m_lastSecond = 0; // second of the minute at the previous tick
    int m_skipValue = 10; // the skip slider's value before its latest move

    QFrame* m_picVTitleBar = nullptr;
    QToolButton* m_picRefresh = nullptr;
    QToolButton* m_picSearch = nullptr;
    QToolButton* m_picSetUp = nullptr;
    QToolButton* m_picWatch = nullptr;
    QWidget* m_picture1 = nullptr;
    QWidget* m_picture2 = nullptr;
    QComboBox* m_cmbFileCopy = nullptr;
    QLineEdit* m_txtFileCopy = nullptr;
    QPushButton* m_cmdSourceFile = nullptr;
    QPushButton* m_cmdDestinationPath = nullptr;
    QPushButton* m_cmdStartCopy = nullptr;
    QPushButton* m_cmdPauseCopy = nullptr;
    QPushButton* m_cmdCancelCopy = nullptr;
    QPushButton* m_cmdBackCopy = nullptr;
    QSlider* m_sldReadBlocks = nullptr;
    QSlider* m_sldSkipBlocks = nullptr;
    QLabel* m_lblBlock1 = nullptr;
    QLabel* m_lblBlock2 = nullptr;
    copy::ProgressBar* m_picProgressBar = nullptr;
    QLabel* m_lblYiFuZhi = nullptr;
    QLabel* m_lblZongJiHaoShi = nullptr;
    QLabel* m_lblShengYuShiJian = nullptr;
    QLabel* m_lblGuJiXiaoHao = nullptr;
    QLabel* m_lblShuJuLiuLiang = nullptr;
    QTimer* m_tmrTime = nullptr;
};

// Song-style faces for "宋体" and a sans face for "MS Sans Serif", which Linux does not have under
// those names. Safe to call more than once.
void installFontSubstitutions();

} // namespace vindaro::app
