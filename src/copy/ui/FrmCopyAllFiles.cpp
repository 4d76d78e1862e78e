#include "FrmCopyAllFiles.h"

#include "platform/linux/ui/MessageBoxes.h"

#include "BatchExistingFileDialog.h"
#include "ContinueCopyDialog.h"
#include "CopyAnimation.h"
#include "FrmChooseDialog.h"
#include "ProgressBar.h"
#include "copy/ProgressFigures.h"
#include "copy/ThreadedCopyHost.h"
#include "files/Format.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>

#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>

namespace vindaro::copy {

namespace {

// The shared progress bar puts its text at 150 of 330 units. The batch's bar is 396 units wide, which
// puts the same proportion at 180, where the batch's percentage starts.
constexpr int kBatchBarWidth = 396;

template<typename T> T* named(T* widget, const char* name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

// A label for a path: the text exactly as given, cut off at the window's edge rather than widening the
// window; the whole text is in the tooltip.
QLabel* pathLabel(const char* name)
{
    auto* label = named(new QLabel, name);
    label->setTextFormat(Qt::PlainText);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    label->setMinimumWidth(kBatchBarWidth);
    return label;
}

} // namespace

// ---- the real questions ----

int DialogBatchPrompts::showBox(const platform::MessageBox& box, QWidget* parent)
{
    return platform::execMessageBox(box, parent);
}

QString DialogBatchPrompts::chooseFolder(bool& copyToSameDir, QWidget* parent)
{
    FrmChooseDialog dialog(parent);
    dialog.setFolder(m_folder);
    dialog.setCopyToSameDir(m_copyToSameDir);
    bool sameDir = m_copyToSameDir;
    const QString folder = dialog.ChooseFolder(sameDir);
    m_copyToSameDir = dialog.copyToSameDir(); // the box keeps its state even when the batch is cancelled
    copyToSameDir = !folder.isEmpty() && sameDir;
    if (!folder.isEmpty())
        m_folder = folder;
    return folder;
}

ContinueChoice DialogBatchPrompts::askContinueCopy(
    const QString& source, const QString& destination, QWidget* parent)
{
    ContinueCopyDialog dialog(parent);
    ResumeRecord record;
    if (m_resumeStore && m_resumeStore->load(destination, record))
        dialog.setRecord(record);
    return continueChoiceFromCode(dialog.Ask(source, destination));
}

BatchExistingChoice DialogBatchPrompts::askBatchExistingFile(
    const QString& source, const QString& destination, QWidget* parent)
{
    BatchExistingFileDialog dialog(parent);
    return batchExistingChoiceFromCode(dialog.Ask(source, destination));
}

// ---- the window ----

FrmCopyAllFiles::FrmCopyAllFiles(const FrmCopyAllFilesServices& services, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_services(services)
{
    setObjectName(QStringLiteral("frmCopyAllFiles"));
    QFont song(QStringLiteral("宋体"));
    song.setPointSizeF(font().pointSizeF());
    setFont(song);
    setWindowTitle(QStringLiteral("批量复制文件"));

    m_worker = std::make_unique<ThreadedBatchHost>(static_cast<BatchHost&>(*this), &m_state);
    m_batch = std::make_unique<BatchCopier>(
        m_state, *m_worker, m_services.files, m_services.resumeStore, m_services.drives);
    m_state.meter.setBatch(&m_batch->counters());
    m_batch->copier().setRescueMapStore(m_services.maps);
    connect(&m_worker->threaded(), &ThreadedCopyHost::jobFinished, this, &FrmCopyAllFiles::onJobFinished);

    buildWindow();
    m_tmrTime->setInterval(m_services.tickMilliseconds);
    m_tmrStop->setInterval(1);
    m_picProgressBar->setBarColour(palette().color(QPalette::Highlight));
    resetFigures();
}

FrmCopyAllFiles::~FrmCopyAllFiles()
{
    // A batch still running ends after its block, as after a cancel: the partial file stays.
    m_worker->shutdown();
}

void FrmCopyAllFiles::buildWindow()
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 8, 10, 10);

    m_picAVIShowWindow = named(new CopyAnimation, "picAVIShowWindow");
    layout->addWidget(m_picAVIShowWindow);

    m_lblSurFilePath = pathLabel("lblSurFilePath");
    m_lblDecFilePath = pathLabel("lblDecFilePath");
    layout->addWidget(m_lblSurFilePath);
    layout->addWidget(m_lblDecFilePath);

    // "[ 总共：700 MB" and "3/12 ]" read as one bracket.
    auto* counts = new QHBoxLayout;
    m_lblTotalLength = named(new QLabel, "lblTotalLength");
    m_lblTotalFiles = named(new QLabel, "lblTotalFiles");
    counts->addWidget(m_lblTotalLength);
    counts->addSpacing(12);
    counts->addWidget(m_lblTotalFiles);
    counts->addStretch(1);
    layout->addLayout(counts);

    m_picProgressBar = named(new ProgressBar, "picProgressBar");
    m_picProgressBar->setMinimumWidth(kBatchBarWidth);
    layout->addWidget(m_picProgressBar);

    auto* figures = new QGridLayout;
    m_lblYiFuZhi = named(new QLabel, "lblYiFuZhi");
    m_lblZongJiHaoShi = named(new QLabel, "lblZongJiHaoShi");
    m_lblGuJiXiaoHao = named(new QLabel, "lblGuJiXiaoHao");
    m_lblShuJuLiuLiang = named(new QLabel, "lblShuJuLiuLiang");
    m_lblCurrentTime = named(new QLabel, "lblCurrentTime");
    figures->addWidget(named(new QLabel(QStringLiteral("已复制：")), "lblYiFuZhiTitle"), 0, 0);
    figures->addWidget(m_lblYiFuZhi, 0, 1);
    figures->addWidget(named(new QLabel(QStringLiteral("已用时间：")), "lblZongJiHaoShiTitle"), 0, 2);
    figures->addWidget(m_lblZongJiHaoShi, 0, 3);
    figures->addWidget(named(new QLabel(QStringLiteral("存取速度：")), "lblShuJuLiuLiangTitle"), 1, 0);
    figures->addWidget(m_lblShuJuLiuLiang, 1, 1);
    figures->addWidget(named(new QLabel(QStringLiteral("估计消耗：")), "lblGuJiXiaoHaoTitle"), 1, 2);
    figures->addWidget(m_lblGuJiXiaoHao, 1, 3);
    figures->addWidget(named(new QLabel(QStringLiteral("当前时间：")), "lblCurrentTimeTitle"), 2, 2);
    figures->addWidget(m_lblCurrentTime, 2, 3);
    figures->setColumnStretch(1, 1);
    figures->setColumnStretch(3, 1);
    layout->addLayout(figures);

    auto* commands = new QHBoxLayout;
    m_cmdCancel = named(new QPushButton(QStringLiteral("取消复制[&C]")), "cmdCancel");
    m_cmdCancel->setToolTip(QStringLiteral("停止批量复制，保留正在复制的文件以便以后继续复制"));
    commands->addStretch(1);
    commands->addWidget(m_cmdCancel);
    layout->addLayout(commands);

    m_tmrTime = named(new QTimer(this), "tmrTime");
    m_tmrStop = named(new QTimer(this), "tmrStop");
    connect(m_cmdCancel, &QPushButton::clicked, this, &FrmCopyAllFiles::cmdCancelClick);
    connect(m_tmrTime, &QTimer::timeout, this, &FrmCopyAllFiles::tmrTimeTimer);
    connect(m_tmrStop, &QTimer::timeout, this, &FrmCopyAllFiles::tmrStopTimer);
}

void FrmCopyAllFiles::resetFigures()
{
    m_state.meter.reset();
    showFigures();
    m_lblCurrentTime->setText(now().toString(QStringLiteral("HH:mm:ss")));
}

void FrmCopyAllFiles::showFigures()
{
    const ProgressTexts texts = m_state.meter.texts();
    m_lblYiFuZhi->setText(texts.copied);
    m_lblZongJiHaoShi->setText(texts.elapsed);
    m_lblGuJiXiaoHao->setText(texts.estimated);
    m_lblShuJuLiuLiang->setText(texts.throughput);
}

QTime FrmCopyAllFiles::now() const
{
    return m_services.clock ? m_services.clock() : QTime::currentTime();
}

const BatchCounters& FrmCopyAllFiles::counters() const
{
    return m_batch->counters();
}

ThreadedCopyHost& FrmCopyAllFiles::worker()
{
    return m_worker->threaded();
}

bool FrmCopyAllFiles::isRunning() const
{
    return m_started && !m_finished;
}

bool FrmCopyAllFiles::CopyingFiles(const QStringList& entries)
{
    if (m_started)
        return false;
    m_started = true;
    const bool running = m_worker->threaded().run([this, entries] {
        m_result = m_batch->copyingFiles(entries);
        return int(m_result.started);
    });
    if (!running)
        m_finished = true;
    return running;
}

void FrmCopyAllFiles::onJobFinished()
{
    m_tmrTime->stop();
    m_tmrStop->stop();
    m_picAVIShowWindow->stop();
    m_picProgressBar->clear();
    m_finished = true;
    emit batchFinished();
    close();
}

void FrmCopyAllFiles::closeEvent(QCloseEvent* event)
{
    if (isRunning()) {
        // Closing the window while files are copied is a cancel: it closes once the batch has stopped.
        event->ignore();
        cmdCancelClick();
        return;
    }
    m_picAVIShowWindow->stop();
    event->accept();
}

// ---- cancel, one tick later ----

void FrmCopyAllFiles::cmdCancelClick()
{
    // The flags change in the 1 ms tick, between two blocks of the loop, never inside this click.
    m_tmrStop->start();
}

void FrmCopyAllFiles::tmrStopTimer()
{
    m_tmrStop->stop();
    // Held: the start of the next file, and the end of the file in hand, do not undo it.
    m_state.cancelHeld = true;
    m_state.stopRequested = true;
    m_state.cancelRequested = true;
}

// ---- the one-second tick ----

void FrmCopyAllFiles::tmrTimeTimer()
{
    const QTime time = now();
    m_state.meter.tick(time.second(), m_filePosition, 0);
    showFigures();
    m_lblCurrentTime->setText(time.toString(QStringLiteral("HH:mm:ss")));
}

// ---- BatchHost on the UI thread ----

int FrmCopyAllFiles::ask(const platform::MessageBox& question)
{
    return m_services.prompts.showBox(question, isVisible() ? this : parentWidget());
}

void FrmCopyAllFiles::notify(const platform::MessageBox& notice)
{
    m_services.prompts.showBox(notice, isVisible() ? this : parentWidget());
}

void FrmCopyAllFiles::log(const QString& entry)
{
    if (m_services.log)
        m_services.log(entry);
}

void FrmCopyAllFiles::modeChanged(CopyMode mode)
{
    switch (mode) {
    case CopyMode::Copying:
        // A file starts: its seconds count from this second. The tick goes on from file to file
        // (restarting it for every file would starve it in a batch of files shorter than a second).
        m_state.meter.start(now().second());
        if (!m_tmrTime->isActive())
            m_tmrTime->start();
        m_cmdCancel->setEnabled(true);
        break;
    case CopyMode::Stopped:
        m_tmrTime->stop();
        break;
    case CopyMode::Idle:
    case CopyMode::IdleAfterCancel:
        // The per-file reset: the bar is cleared, the batch's figures stay.
        m_filePosition = 0;
        m_picProgressBar->clear();
        if (mode == CopyMode::IdleAfterCancel)
            resetFigures();
        break;
    case CopyMode::StayPaused:
        break; // a batch does not pause
    }
}

void FrmCopyAllFiles::progress(qint64 position, qint64 sourceLength)
{
    m_filePosition = position;
    m_state.meter.showCopied(counters().copiedBytes + position);
    m_lblYiFuZhi->setText(m_state.meter.texts().copied);
    m_picProgressBar->setProgress(position, sourceLength);
}

ContinueChoice FrmCopyAllFiles::askContinueCopy(const QString& source, const QString& destination)
{
    return m_services.prompts.askContinueCopy(source, destination, isVisible() ? this : parentWidget());
}

ExistingFileAnswer FrmCopyAllFiles::askExistingFile(const QString&, const QString&)
{
    return {}; // a single copy's question; a batch asks askBatchExistingFile
}

QString FrmCopyAllFiles::chooseBatchFolder(bool& copyToSameDir)
{
    return m_services.prompts.chooseFolder(copyToSameDir, parentWidget());
}

BatchExistingChoice FrmCopyAllFiles::askBatchExistingFile(const QString& source, const QString& destination)
{
    return m_services.prompts.askBatchExistingFile(source, destination, isVisible() ? this : parentWidget());
}

void FrmCopyAllFiles::startAnimation()
{
    // The checks have passed: the batch begins, and the window shows.
    show();
    raise();
    m_picAVIShowWindow->start();
}

void FrmCopyAllFiles::stopAnimation()
{
    m_picAVIShowWindow->stop();
}

void FrmCopyAllFiles::showFile(const QString& sourceText, const QString& destinationText,
    const QString& countText, const QString& totalText)
{
    m_lblSurFilePath->setText(sourceText);
    m_lblSurFilePath->setToolTip(sourceText);
    m_lblDecFilePath->setText(destinationText);
    m_lblDecFilePath->setToolTip(destinationText);
    m_lblTotalFiles->setText(countText);
    m_lblTotalLength->setText(totalText);
}

} // namespace vindaro::copy
