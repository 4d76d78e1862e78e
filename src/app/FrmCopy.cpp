#include "FrmCopy.h"

#include "BoxPresenter.h"
#include "CopyChoices.h"
#include "OperationLogModel.h"
#include "copy/ProgressFigures.h"
#include "copy/ui/ProgressBar.h"
#include "copy/ui/ThreadedCopyHost.h"
#include "files/Format.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QStyle>
#include <QTime>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>

namespace vindaro::app {

const QString FrmCopy::kPauseCaption = QStringLiteral("暂停复制[&S]");
const QString FrmCopy::kContinueCaption = QStringLiteral("继续复制[&P]");

namespace {

const QString kFileFilters = QStringLiteral("视频VCD文件(*.dat);;视频DVD文件(*.vob);;所有文件(*.*)");
const QString kIdleBytes = QStringLiteral("0字节");
const QString kIdleDuration = QStringLiteral("00:00:00");
const QString kIdleThroughput = QStringLiteral("0KB/秒");

QString blocksText(int value)
{
    return QString::number(value) + QStringLiteral("块");
}

int clampToInt(qint64 value)
{
    return static_cast<int>(std::clamp<qint64>(value, -1, std::numeric_limits<int>::max()));
}

template<typename T> T* named(T* widget, const char* name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

QLabel* titleLabel(const QString& caption, const char* name)
{
    return named(new QLabel(caption), name);
}

QToolButton* pictureButton(QStyle::StandardPixmap icon, const char* name, QStyle* style)
{
    auto* button = named(new QToolButton, name);
    button->setIcon(style->standardIcon(icon));
    button->setAutoRaise(true);
    button->setIconSize(QSize(24, 24));
    return button;
}

} // namespace

void installFontSubstitutions()
{
    QFont::insertSubstitutions(QStringLiteral("宋体"),
        {QStringLiteral("AR PL UMing CN"), QStringLiteral("Noto Serif CJK SC"),
            QStringLiteral("WenQuanYi Micro Hei")});
    QFont::insertSubstitutions(QStringLiteral("MS Sans Serif"),
        {QStringLiteral("DejaVu Sans"), QStringLiteral("Liberation Sans"),
            QStringLiteral("WenQuanYi Micro Hei")});
}

FrmCopy::FrmCopy(const FrmCopyServices& services, QWidget* parent)
    : QWidget(parent)
    , m_services(services)
{
    installFontSubstitutions();
    QFont song(QStringLiteral("宋体"));
    song.setPointSizeF(font().pointSizeF());
    setFont(song);
    setWindowTitle(QStringLiteral("Vindaro"));

    m_worker = std::make_unique<copy::ThreadedCopyHost>(static_cast<copy::CopyHost&>(*this));
    m_session = std::make_unique<copy::CopySession>(
        m_state, *m_worker, m_services.files, m_services.resumeStore, m_services.drives);
    connect(m_worker.get(), &copy::ThreadedCopyHost::jobFinished, this, &FrmCopy::onJobFinished);

    buildWindow();

    // Start-up: the tick is off until a copy starts; the sliders get their range, then their value.
    m_tmrTime->setInterval(1000);
    m_tmrTime->stop();
    m_picProgressBar->setBarColour(palette().color(QPalette::Highlight));
    m_sldReadBlocks->setMaximum(100);
    m_sldReadBlocks->setMinimum(1);
    m_sldReadBlocks->setValue(10);
    m_sldSkipBlocks->setMaximum(30);
    m_sldSkipBlocks->setMinimum(1);
    m_sldSkipBlocks->setValue(10);
    m_state.readBlocks = m_sldReadBlocks->value();
    m_state.skipBlocks = m_sldSkipBlocks->value();
    m_skipValue = m_sldSkipBlocks->value();
    m_lblBlock1->setText(blocksText(m_sldReadBlocks->value()));
    m_lblBlock2->setText(blocksText(m_sldSkipBlocks->value()));
    connect(m_sldReadBlocks, &QSlider::valueChanged, this, &FrmCopy::sldReadBlocksChange);
    connect(m_sldSkipBlocks, &QSlider::valueChanged, this, &FrmCopy::sldSkipBlocksChange);

    m_cmbFileCopy->setEditText(m_services.fileListText.trimmed());
    attachToolTips();
    setControlsForCopying(false);
    resetFigures();
    m_cmdPauseCopy->setText(kPauseCaption);
}

FrmCopy::~FrmCopy()
{
    // A copy still running stops after its block, like a pause: the partial destination stays as it is.
    m_state.stopRequested = true;
    m_worker->shutdown();
}

void FrmCopy::buildWindow()
{
    auto* outer = new QHBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);

    m_picVTitleBar = named(new QFrame, "picVTitleBar");
    m_picVTitleBar->setFixedWidth(22);
    m_picVTitleBar->setAutoFillBackground(true);
    QPalette barPalette = m_picVTitleBar->palette();
    barPalette.setColor(QPalette::Window, palette().color(QPalette::Highlight));
    m_picVTitleBar->setPalette(barPalette);
    outer->addWidget(m_picVTitleBar);

    auto* body = new QVBoxLayout;
    body->setContentsMargins(8, 6, 8, 8);
    outer->addLayout(body, 1);

    auto* buttons = new QHBoxLayout;
    m_picRefresh = pictureButton(QStyle::SP_BrowserReload, "picRefresh", style());
    m_picSearch = pictureButton(QStyle::SP_FileDialogContentsView, "picSearch", style());
    m_picSetUp = pictureButton(QStyle::SP_FileDialogDetailedView, "picSetUp", style());
    m_picWatch = pictureButton(QStyle::SP_FileDialogInfoView, "picWatch", style());
    buttons->addWidget(m_picRefresh);
    buttons->addWidget(m_picSearch);
    buttons->addWidget(m_picSetUp);
    buttons->addWidget(m_picWatch);
    buttons->addStretch(1);
    body->addLayout(buttons);
    connect(m_picSetUp, &QToolButton::clicked, this, &FrmCopy::picSetUpClick);

    // The copy panel.
    m_picture1 = named(new QWidget, "Picture1");
    auto* copyGrid = new QGridLayout(m_picture1);
    copyGrid->setContentsMargins(0, 0, 0, 0);
    m_cmdSourceFile = named(new QPushButton(QStringLiteral("要拷贝的文件[&F]")), "cmdSourceFile");
    m_cmbFileCopy = named(new QComboBox, "cmbFileCopy");
    m_cmbFileCopy->setEditable(true);
    m_cmbFileCopy->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_cmbFileCopy->setMinimumContentsLength(30);
    m_cmdDestinationPath = named(new QPushButton(QStringLiteral("文件保存路径[&P]")), "cmdDestinationPath");
    m_txtFileCopy = named(new QLineEdit, "txtFileCopy");
    copyGrid->addWidget(m_cmdSourceFile, 0, 0);
    copyGrid->addWidget(m_cmbFileCopy, 0, 1, 1, 3);
    copyGrid->addWidget(m_cmdDestinationPath, 1, 0);
    copyGrid->addWidget(m_txtFileCopy, 1, 1, 1, 3);

    m_picProgressBar = named(new copy::ProgressBar, "picProgressBar");
    copyGrid->addWidget(m_picProgressBar, 2, 0, 1, 4);

    m_lblYiFuZhi = named(new QLabel, "lblYiFuZhi");
    m_lblZongJiHaoShi = named(new QLabel, "lblZongJiHaoShi");
    m_lblShengYuShiJian = named(new QLabel, "lblShengYuShiJian");
    m_lblGuJiXiaoHao = named(new QLabel, "lblGuJiXiaoHao");
    m_lblShuJuLiuLiang = named(new QLabel, "lblShuJuLiuLiang");
    copyGrid->addWidget(titleLabel(QStringLiteral("已复制[字节]："), "lblYiFuZhiTitle"), 3, 0);
    copyGrid->addWidget(m_lblYiFuZhi, 3, 1);
    copyGrid->addWidget(titleLabel(QStringLiteral("已用时间："), "lblZongJiHaoShiTitle"), 3, 2);
    copyGrid->addWidget(m_lblZongJiHaoShi, 3, 3);
    copyGrid->addWidget(titleLabel(QStringLiteral("剩余时间："), "lblShengYuShiJianTitle"), 4, 0);
    copyGrid->addWidget(m_lblShengYuShiJian, 4, 1);
    copyGrid->addWidget(titleLabel(QStringLiteral("估计消耗："), "lblGuJiXiaoHaoTitle"), 4, 2);
    copyGrid->addWidget(m_lblGuJiXiaoHao, 4, 3);
    copyGrid->addWidget(titleLabel(QStringLiteral("存取速度："), "lblShuJuLiuLiangTitle"), 5, 0);
    copyGrid->addWidget(m_lblShuJuLiuLiang, 5, 1);

    auto* commands = new QHBoxLayout;
    m_cmdStartCopy = named(new QPushButton(QStringLiteral("开始复制[&B]")), "cmdStartCopy");
    m_cmdPauseCopy = named(new QPushButton(kPauseCaption), "cmdPauseCopy");
    m_cmdCancelCopy = named(new QPushButton(QStringLiteral("取消复制[&C]")), "cmdCancelCopy");
    commands->addStretch(1);
    commands->addWidget(m_cmdStartCopy);
    commands->addWidget(m_cmdPauseCopy);
    commands->addWidget(m_cmdCancelCopy);
    copyGrid->addLayout(commands, 6, 0, 1, 4);
    body->addWidget(m_picture1);

    // The settings panel.
    m_picture2 = named(new QWidget, "Picture2");
    auto* setGrid = new QGridLayout(m_picture2);
    setGrid->setContentsMargins(0, 0, 0, 0);
    m_sldReadBlocks = named(new QSlider(Qt::Horizontal), "sldReadBlocks");
    m_sldSkipBlocks = named(new QSlider(Qt::Horizontal), "sldSkipBlocks");
    m_sldReadBlocks->setTickPosition(QSlider::TicksBelow);
    m_sldReadBlocks->setTickInterval(10);
    m_sldSkipBlocks->setTickPosition(QSlider::TicksBelow);
    m_sldSkipBlocks->setTickInterval(5);
    m_lblBlock1 = named(new QLabel, "lblBlock1");
    m_lblBlock2 = named(new QLabel, "lblBlock2");
    setGrid->addWidget(titleLabel(QStringLiteral("设置每次读取的块数："), "lblBlock1Title"), 0, 0);
    setGrid->addWidget(m_sldReadBlocks, 0, 1);
    setGrid->addWidget(m_lblBlock1, 0, 2);
    setGrid->addWidget(titleLabel(QStringLiteral("设置每次跳过的块数："), "lblBlock2Title"), 1, 0);
    setGrid->addWidget(m_sldSkipBlocks, 1, 1);
    setGrid->addWidget(m_lblBlock2, 1, 2);
    m_cmdBackCopy = named(new QPushButton(QStringLiteral("返回设置>>")), "cmdBackCopy");
    setGrid->addWidget(m_cmdBackCopy, 2, 2);
    setGrid->setRowStretch(3, 1);
    m_picture2->hide();
    body->addWidget(m_picture2);

    m_tmrTime = named(new QTimer(this), "tmrTime");

    connect(m_cmdStartCopy, &QPushButton::clicked, this, &FrmCopy::cmdStartCopyClick);
    connect(m_cmdPauseCopy, &QPushButton::clicked, this, &FrmCopy::cmdPauseCopyClick);
    connect(m_cmdCancelCopy, &QPushButton::clicked, this, &FrmCopy::cmdCancelCopyClick);
    connect(m_cmdSourceFile, &QPushButton::clicked, this, &FrmCopy::cmdSourceFileClick);
    connect(m_cmdDestinationPath, &QPushButton::clicked, this, &FrmCopy::cmdDestinationPathClick);
    connect(m_cmdBackCopy, &QPushButton::clicked, this, &FrmCopy::cmdBackCopyClick);
    connect(m_tmrTime, &QTimer::timeout, this, &FrmCopy::tmrTimeTimer);
    // The destination's tooltip always shows the whole path, however narrow the box.
    connect(m_txtFileCopy, &QLineEdit::textChanged, m_txtFileCopy, &QLineEdit::setToolTip);
}

void FrmCopy::attachToolTips()
{
    // Plain tooltips; the chrome's balloon tooltips replace them later.
    const QString nl = QStringLiteral("\n");
    m_cmdStartCopy->setToolTip(QStringLiteral("开始复制文件"));
    m_cmdPauseCopy->setToolTip(QStringLiteral("暂停/继续复制文件"));
    m_cmdCancelCopy->setToolTip(QStringLiteral("取消复制文件"));
    m_cmdBackCopy->setToolTip(QStringLiteral("返回并继续复制"));
    m_cmdSourceFile->setToolTip(QStringLiteral("选择要复制的文件"));
    m_cmdDestinationPath->setToolTip(QStringLiteral("选择文件保存路径"));
    m_sldReadBlocks->setToolTip(QStringLiteral("如果盘片质量不太好，建议块数设小一点"));
    m_sldSkipBlocks->setToolTip(QStringLiteral("设置每次跳过的块数，建议使用缺省设置"));
    findChild<QLabel*>(QStringLiteral("lblBlock1Title"))
        ->setToolTip(QStringLiteral("当盘片存在严重的质量问题时") + nl
            + QStringLiteral("你可以减少读取的块数，这样容易成功"));
    findChild<QLabel*>(QStringLiteral("lblBlock2Title"))
        ->setToolTip(QStringLiteral("当遇到大块的坏区不能读取时") + nl
            + QStringLiteral("建议你手动跳过去否则会消耗很长时间"));
    m_picSetUp->setToolTip(
        QStringLiteral("<b>单击设置每次读取或跳过的块数</b><br>当盘片存在严重的质量问题时<br>"
                       "你可以减少读取的块数，这样容易成功<br>当遇到大块的坏区不能读取时<br>"
                       "建议你手动跳过去否则会消耗很长时间"));
    m_picRefresh->setToolTip(QStringLiteral("刷新窗口界面及其文件列表"));
}

// Everything the table of state switches names: on while idle, off while copying; pause, cancel and the
// one-second tick the other way round.
void FrmCopy::setControlsForCopying(bool copying)
{
    for (QWidget* w : {static_cast<QWidget*>(m_cmbFileCopy), static_cast<QWidget*>(m_txtFileCopy),
             static_cast<QWidget*>(m_cmdStartCopy), static_cast<QWidget*>(m_cmdSourceFile),
             static_cast<QWidget*>(m_cmdDestinationPath), static_cast<QWidget*>(m_picVTitleBar),
             static_cast<QWidget*>(m_picRefresh), static_cast<QWidget*>(m_picSearch),
             static_cast<QWidget*>(m_picSetUp), static_cast<QWidget*>(m_picWatch)})
        w->setEnabled(!copying);
    m_cmdPauseCopy->setEnabled(copying);
    m_cmdCancelCopy->setEnabled(copying);
    if (copying)
        m_tmrTime->start();
    else
        m_tmrTime->stop();
}

void FrmCopy::resetFigures()
{
    m_lblYiFuZhi->setText(kIdleBytes);
    m_lblZongJiHaoShi->setText(kIdleDuration);
    m_lblShengYuShiJian->setText(kIdleDuration);
    m_lblGuJiXiaoHao->setText(kIdleDuration);
    m_lblShuJuLiuLiang->setText(kIdleThroughput);
}

int FrmCopy::currentSecond() const
{
    return m_services.clockSecond ? m_services.clockSecond() : QTime::currentTime().second();
}

QString FrmCopy::sourceText() const
{
    return m_cmbFileCopy->currentText();
}

QString FrmCopy::destinationText() const
{
    return m_txtFileCopy->text();
}

// ---- copy::CopyHost on the UI thread ----

int FrmCopy::showBox(const platform::MessageBox& box)
{
    return m_services.boxes.present(box, this);
}

void FrmCopy::log(const QString& entry)
{
    m_services.log.add(entry);
}

void FrmCopy::enterCopyingState()
{
    m_lastSecond = currentSecond(); // the first tick counts from here
    m_state.stopRequested = false;
    m_state.cancelRequested = false;
    m_state.copyRunning = true;
    m_mode = Mode::Copying;
    setControlsForCopying(true);
}

void FrmCopy::enterIdleState()
{
    m_state.stopRequested = false;
    m_state.cancelRequested = false;
    m_state.copyRunning = false;
    m_state.elapsedSeconds = 0;
    m_mode = Mode::Idle;
    setControlsForCopying(false);
    m_picProgressBar->clear(); // the five figures stay: the final ones remain readable
}

void FrmCopy::resetAfterCancel()
{
    enterIdleState();
    resetFigures();
}

void FrmCopy::stopTimer()
{
    m_tmrTime->stop();
}

void FrmCopy::updateProgress(qint64 position, qint64 sourceLength)
{
    m_lblYiFuZhi->setText(files::formatBytes(position));
    m_picProgressBar->setProgress(position, sourceLength);
}

void FrmCopy::showCopiedBytes(qint64 bytes)
{
    m_lblYiFuZhi->setText(files::formatBytes(bytes));
}

QString FrmCopy::estimatedText()
{
    return m_lblGuJiXiaoHao->text();
}

QString FrmCopy::throughputText()
{
    return m_lblShuJuLiuLiang->text();
}

int FrmCopy::askContinueCopy(const QString& source, const QString& destination)
{
    return m_services.choices.askContinueCopy(source, destination, this);
}

int FrmCopy::askExistingFile(const QString& source, const QString& destination, QString& newName)
{
    return m_services.choices.askExistingFile(source, destination, newName, this);
}

void FrmCopy::stayPaused()
{
    // Too little room to go on: still paused, and the destination may be changed before continuing.
    m_state.copyRunning = false;
    m_state.stopRequested = true;
    m_mode = Mode::Paused;
    m_cmdPauseCopy->setText(kContinueCaption);
    m_cmdPauseCopy->setEnabled(true);
    m_cmdCancelCopy->setEnabled(false);
    m_cmdDestinationPath->setEnabled(true);
    m_txtFileCopy->setEnabled(true);
}

// ---- the one-second tick ----

void FrmCopy::tmrTimeTimer()
{
    const int now = currentSecond();
    m_state.elapsedSeconds += copy::tickDelta(now, m_lastSecond);
    m_lastSecond = now;
    const qint64 elapsed = m_state.elapsedSeconds;
    const copy::ProgressFigures figures
        = copy::computeFigures(m_state.position, m_state.sourceLength, elapsed);
    m_state.remainingSeconds = clampToInt(figures.remainingSeconds);
    m_state.estimatedSeconds = clampToInt(figures.estimatedSeconds);
    m_lblZongJiHaoShi->setText(copy::durationText(elapsed));
    m_lblShengYuShiJian->setText(copy::durationText(figures.remainingSeconds));
    m_lblGuJiXiaoHao->setText(copy::durationText(figures.estimatedSeconds));
    m_lblShuJuLiuLiang->setText(files::formatKBps(figures.kilobytesPerSecond));
}

// ---- buttons and sliders ----

void FrmCopy::cmdStartCopyClick()
{
    const QString source = sourceText();
    const QString destination = destinationText();
    m_worker->run([this, source, destination] { return int(m_session->startCopy(source, destination)); });
}

void FrmCopy::cmdPauseCopyClick()
{
    if (m_cmdPauseCopy->text() == kPauseCaption) {
        m_state.copyRunning = false;
        m_state.stopRequested = true;
        m_mode = Mode::Paused;
        m_cmdPauseCopy->setText(kContinueCaption);
        m_cmdCancelCopy->setEnabled(false);
        m_picSetUp->setEnabled(true);
        // The loop leaves after the block in progress, which may hang on a bad sector: continuing is
        // offered once it has left, so that two loops never run at once.
        if (m_worker->isBusy())
            m_cmdPauseCopy->setEnabled(false);
        return;
    }
    if (m_worker->isBusy())
        return;
    m_state.copyRunning = true;
    m_state.stopRequested = false;
    m_mode = Mode::Copying;
    m_cmdPauseCopy->setText(kPauseCaption);
    m_cmdCancelCopy->setEnabled(true);
    const QString source = sourceText();
    const QString destination = destinationText();
    m_worker->run([this, source, destination] { return int(m_session->resumeCopy(source, destination)); });
}

void FrmCopy::cmdCancelCopyClick()
{
    // The loop leaves after the block in progress and asks whether to delete the partial destination.
    m_state.stopRequested = true;
    m_state.cancelRequested = true;
}

void FrmCopy::onJobFinished(int outcome)
{
    if (m_mode == Mode::Paused) {
        m_state.copyRunning = false;
        m_cmdPauseCopy->setText(kContinueCaption);
        m_cmdPauseCopy->setEnabled(true);
    } else if (m_mode == Mode::Copying) {
        // The engine ended without a switch of its own (it always makes one today): never leave the
        // window believing a copy runs, or it could not be closed.
        enterIdleState();
    }
    emit copyJobFinished(outcome);
}

void FrmCopy::cmdSourceFileClick()
{
    resetFigures();
    m_picProgressBar->clear();
    const QStringList chosen = QFileDialog::getOpenFileNames(
        this, QStringLiteral("打开"), QFileInfo(sourceText()).absolutePath(), kFileFilters);
    if (chosen.isEmpty())
        return;
    m_cmbFileCopy->clear();
    m_cmbFileCopy->addItems(chosen);
    m_cmbFileCopy->setCurrentIndex(0);
}

void FrmCopy::cmdDestinationPathClick()
{
    // An existing file is dealt with when the copy starts, with the choices it offers.
    const QString chosen = QFileDialog::getSaveFileName(this, QStringLiteral("保存"), destinationText(),
        kFileFilters, nullptr, QFileDialog::DontConfirmOverwrite);
    if (!chosen.isEmpty())
        m_txtFileCopy->setText(chosen);
}

void FrmCopy::picSetUpClick()
{
    m_picture1->hide();
    m_picture2->show();
    m_picSetUp->setDown(true); // pressed look while the panel is open
}

void FrmCopy::cmdBackCopyClick()
{
    m_picture2->hide();
    m_picture1->show();
    m_picSetUp->setDown(false);
    if (m_mode != Mode::Copying)
        m_picSetUp->setEnabled(true);
}

void FrmCopy::sldReadBlocksChange(int value)
{
    m_lblBlock1->setText(blocksText(value));
    m_state.readBlocks = value;
    // A running loop keeps its step until its next pass; the skip distances use the new size at once.
    m_session->computeBlockBytes(sourceText(), destinationText());
}

// The manual skip: moving the slider up by n moves the copy on by n blocks, whether paused (it takes
// effect when the copy continues) or copying (from the next block read; the block in progress ends
// where it began). Moving it down only sets the distance of later skips: the copy never steps back
// onto a stretch that was just jumped. While idle only the distance is kept, since every copy sets its
// own start position.
void FrmCopy::sldSkipBlocksChange(int value)
{
    m_lblBlock2->setText(blocksText(value));
    const int change = value - m_skipValue;
    m_skipValue = value;
    m_state.skipBlocks = value;
    if (change > 0 && m_mode != Mode::Idle)
        m_state.position += qint64(change) * m_state.blockBytes;
}

void FrmCopy::closeEvent(QCloseEvent* event)
{
    if (m_state.copyRunning) {
        event->ignore(); // refused without a word while a copy runs
        return;
    }
    platform::MessageBox box;
    box.text = QStringLiteral("真的要退出Vindaro吗？");
    box.title = QStringLiteral("提醒！");
    box.icon = platform::BoxIcon::Exclamation;
    box.buttons = platform::BoxButtons::YesNo;
    const int answer = m_services.boxes.present(box, this);
    m_state.lastAnswer = answer;
    if (answer == platform::kAnswerYes)
        event->accept();
    else
        event->ignore();
}

} // namespace vindaro::app
