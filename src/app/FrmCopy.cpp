#include "FrmCopy.h"

#include "BoxPresenter.h"
#include "CopyChoices.h"
#include "chrome/Artwork.h"
#include "chrome/Frame3D.h"
#include "chrome/MenuBand.h"
#include "chrome/PictureButton.h"
#include "chrome/TitleBars.h"
#include "chrome/ToolTips.h"
#include "chrome/TrayController.h"
#include "copy/CopyText.h"
#include "copy/ProgressFigures.h"
#include "copy/RescueMessages.h"
#include "copy/ThreadedCopyHost.h"
#include "copy/ui/DamageReportDialog.h"
#include "copy/ui/FrmCopyAllFiles.h"
#include "copy/ui/ProgressBar.h"
#include "copy/ui/RescueMapView.h"
#include "drives/CdDrivePopup.h"
#include "drives/TrayJob.h"
#include "files/FileSystem.h"
#include "files/Format.h"
#include "files/ui/FileListCombo.h"
#include "files/ui/FileListController.h"
#include "files/ui/FileListDialogs.h"
#include "files/ui/FileMenu.h"
#include "info/ui/frmFileProperty.h"
#include "media/ui/MediaWindows.h"
#include "oplog/ui/frmSystem.h"
#include "search/FileListResults.h"
#include "search/ui/frmSearchFile.h"
#include "sysinfo/ProgramInfo.h"
#include "sysinfo/SplashPage.h"
#include "sysinfo/ui/ProgramIcon.h"
#include "sysinfo/ui/frmSplash.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDateTime>
#include <QFileDialog>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>
#include <QStatusBar>
#include <QTime>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace vindaro::app {

namespace {

const QString kFileFilters = QStringLiteral("视频VCD文件(*.dat);;视频DVD文件(*.vob);;所有文件(*.*)");

QString blocksText(int value)
{
    return QString::number(value) + QStringLiteral("块");
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

QLabel* iconBox(const char* name, int side)
{
    auto* box = named(new QLabel, name);
    box->setFixedSize(side, side);
    box->setAlignment(Qt::AlignCenter);
    return box;
}

QStatusBar* statusBar(const char* name)
{
    auto* bar = named(new QStatusBar, name);
    bar->setSizeGripEnabled(false);
    bar->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return bar;
}

// The two slider hints go on the sliders' captions: the sliders carry the short tips of the chrome table.
QList<chrome::ToolTipEntry> sliderCaptionTips()
{
    return {{QStringLiteral("lblBlock1Title"), QString(),
                {QStringLiteral("当盘片存在严重的质量问题时"),
                    QStringLiteral("你可以减少读取的块数，这样容易成功")}},
        {QStringLiteral("lblBlock2Title"), QString(),
            {QStringLiteral("当遇到大块的坏区不能读取时"),
                QStringLiteral("建议你手动跳过去否则会消耗很长时间")}}};
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
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint)
    , m_services(services)
{
    installFontSubstitutions();
    QFont song(QStringLiteral("宋体"));
    song.setPointSizeF(font().pointSizeF());
    setFont(song);
    setWindowTitle(QStringLiteral("Vindaro"));
    setWindowIcon(sysinfo::ui::programIcon());
    // The log window is loaded hidden first, so that following changes starts with the program.
    m_logWindow = std::make_unique<oplog::ui::frmSystem>(m_services.log, m_services.changeMonitor);
    m_logWindow->setKeepLoaded(true);

    // Notices of the file system ("drive not ready") come to this window's message boxes.
    m_fileSystem = std::make_unique<files::FileSystem>(m_services.volumes, m_services.shell, this);
    if (!m_services.prompter) {
        m_ownPrompter = std::make_unique<files::MessageBoxPrompter>(this);
        m_services.prompter = m_ownPrompter.get();
    }
    if (!m_services.listDialogs) {
        m_ownListDialogs = std::make_unique<files::QtListDialogs>();
        m_services.listDialogs = m_ownListDialogs.get();
    }
    if (!m_services.batchPrompts) {
        m_ownBatchPrompts = std::make_unique<copy::DialogBatchPrompts>(&m_services.resumeStore);
        m_services.batchPrompts = m_ownBatchPrompts.get();
    }
    if (!m_services.opticalDrives)
        m_services.opticalDrives = drives::makeSystemOpticalDrives();

    m_controller = new copy::CopyController(
        copy::CopyController::Services{m_services.files, m_services.resumeStore, m_services.drives,
            static_cast<copy::CopyPrompts&>(*this), [this](const QString& entry) { log(entry); },
            m_services.clockSecond, m_services.maps},
        this);

    m_fileList
        = new files::FileListController(*m_fileSystem, *m_services.prompter, *m_services.listDialogs, this);
    // ZIP, SWF, EXE, DLL and MP3 files get the program's own property window, shown modally.
    m_fileList->commands().setPropertyWindow([this](const QString& path) {
        info::ui::frmFileProperty window(m_services.volumes, m_services.shell, this);
        window.GetInfor(path);
        window.exec();
    });
    m_tray = new chrome::TrayController(this, m_services.trayAvailable);
    buildWindow();

    // Start-up: the sliders get their range, then their value.
    m_picProgressBar->setBarColour(palette().color(QPalette::Highlight));
    m_sldReadBlocks->setMaximum(100);
    m_sldReadBlocks->setMinimum(1);
    m_sldReadBlocks->setValue(10);
    m_sldSkipBlocks->setMaximum(30);
    m_sldSkipBlocks->setMinimum(1);
    m_sldSkipBlocks->setValue(10);
    copyState().readBlocks = m_sldReadBlocks->value();
    copyState().skipBlocks = m_sldSkipBlocks->value();
    m_lblBlock1->setText(blocksText(m_sldReadBlocks->value()));
    m_lblBlock2->setText(blocksText(m_sldSkipBlocks->value()));
    connect(m_sldReadBlocks, &QSlider::valueChanged, this, [this](int value) {
        m_lblBlock1->setText(blocksText(value));
        m_controller->setReadBlocks(value, sourceText(), destinationText());
    });
    connect(m_sldSkipBlocks, &QSlider::valueChanged, this, [this](int value) {
        m_lblBlock2->setText(blocksText(value));
        m_controller->setSkipBlocks(value);
    });
    connect(m_controller, &copy::CopyController::controlsChanged, this, &FrmCopy::showControls);
    connect(m_controller, &copy::CopyController::figuresChanged, this, &FrmCopy::showFigures);
    connect(m_controller, &copy::CopyController::progressChanged, m_picProgressBar,
        &copy::ProgressBar::setProgress);
    connect(m_controller, &copy::CopyController::barCleared, m_picProgressBar, &copy::ProgressBar::clear);
    connect(m_controller, &copy::CopyController::jobFinished, this, &FrmCopy::copyJobFinished);
    connect(m_controller, &copy::CopyController::mapChanged, m_picRescueMap, &copy::RescueMapView::setMap);
    connect(m_controller, &copy::CopyController::refineFiguresChanged, m_lblRefine, &QLabel::setText);
    connect(m_controller, &copy::CopyController::damageReportReady, this, &FrmCopy::showDamageReport);
    connect(m_chkAutoRefine, &QCheckBox::toggled, m_controller, &copy::CopyController::setAutoRefine);
    connect(
        m_spnRefineMinutes, &QSpinBox::valueChanged, m_controller, &copy::CopyController::setRefineMinutes);
    connect(m_cmdExportMap, &QPushButton::clicked, this, &FrmCopy::exportMap);
    connect(m_cmdImportMap, &QPushButton::clicked, this, &FrmCopy::importMap);

    connectFileList();
    connectChrome();
    // The list starts empty; its box shows the report on optical drives that are not ready.
    showStartText(m_services.fileListText);
    showControls(m_controller->controls());
    m_controller->resetFigures();

    // Last, once every control exists and has its name.
    attachToolTips();
    m_fileList->acceptDrops(this);
}

FrmCopy::~FrmCopy()
{
    delete m_batchWindow.data(); // stops its batch after the block in progress
    // A copy still running stops after its block, like a pause: the partial destination stays as it is.
    delete m_controller;
    // The children (file list, its box and menu, the tray icon) use the file system and the prompters
    // held here: they go first.
    m_fileList->model().cancelScans();
    qDeleteAll(findChildren<QObject*>(QString(), Qt::FindDirectChildrenOnly));
}

void FrmCopy::buildWindow()
{
    // The vertical bar down the left side; the horizontal bar across the top of everything else.
    auto* outer = new QHBoxLayout(this);
    outer->setContentsMargins(1, 1, 1, 1); // room for the window's own one-pixel frame
    outer->setSpacing(0);
    m_picVTitleBar = new chrome::VTitleBar;
    outer->addWidget(m_picVTitleBar);
    auto* column = new QVBoxLayout;
    column->setSpacing(0);
    outer->addLayout(column, 1);
    m_picHTitleBar = new chrome::HTitleBar;
    column->addWidget(m_picHTitleBar);

    auto* body = new QVBoxLayout;
    body->setContentsMargins(8, 6, 8, 4);
    column->addLayout(body, 1);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    m_picRefresh = new chrome::PictureButton(chrome::ArtworkId::Refresh, QStringLiteral("picRefresh"));
    m_picSearch = new chrome::PictureButton(chrome::ArtworkId::Search, QStringLiteral("picSearch"));
    m_picSetUp = new chrome::PictureButton(chrome::ArtworkId::SetUp, QStringLiteral("picSetUp"));
    m_picWatch = new chrome::PictureButton(chrome::ArtworkId::Watch, QStringLiteral("picWatch"));
    for (chrome::PictureButton* button : {m_picRefresh, m_picSearch, m_picSetUp, m_picWatch})
        buttons->addWidget(button);
    buttons->addStretch(1);
    m_image1 = iconBox("Image1", 32);
    m_image1->setScaledContents(true);
    buttons->addWidget(m_image1);
    body->addLayout(buttons);

    // The copy panel.
    m_picture1 = named(new QWidget, "Picture1");
    auto* copyGrid = new QGridLayout(m_picture1);
    copyGrid->setContentsMargins(0, 0, 0, 0);
    m_cmdSourceFile = named(new QPushButton(QStringLiteral("要拷贝的文件[&F]")), "cmdSourceFile");
    m_cmbFileCopy = m_fileList->combo(); // named cmbFileCopy by the file list
    m_cmbFileCopy->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_cmdDestinationPath = named(new QPushButton(QStringLiteral("文件保存路径[&P]")), "cmdDestinationPath");
    m_txtFileCopy = named(new QLineEdit, "txtFileCopy");
    copyGrid->addWidget(m_cmdSourceFile, 0, 0);
    copyGrid->addWidget(m_cmbFileCopy, 0, 1, 1, 3);
    copyGrid->addWidget(m_cmdDestinationPath, 1, 0);
    copyGrid->addWidget(m_txtFileCopy, 1, 1, 1, 3);

    m_lblFilesInfo = named(new QLabel, "lblFilesInfo");
    copyGrid->addWidget(m_lblFilesInfo, 2, 1, 1, 3);

    m_picProgressBar = named(new copy::ProgressBar, "picProgressBar");
    m_picRescueMap = new copy::RescueMapView;
    m_picRescueMap->setVisible(m_services.maps != nullptr);
    auto* bars = new QVBoxLayout;
    bars->setSpacing(2);
    bars->addWidget(m_picProgressBar);
    bars->addWidget(m_picRescueMap);
    copyGrid->addLayout(bars, 3, 0, 1, 4);

    m_lblYiFuZhi = named(new QLabel, "lblYiFuZhi");
    m_lblZongJiHaoShi = named(new QLabel, "lblZongJiHaoShi");
    m_lblShengYuShiJian = named(new QLabel, "lblShengYuShiJian");
    m_lblGuJiXiaoHao = named(new QLabel, "lblGuJiXiaoHao");
    m_lblShuJuLiuLiang = named(new QLabel, "lblShuJuLiuLiang");
    copyGrid->addWidget(titleLabel(QStringLiteral("已复制[字节]："), "lblYiFuZhiTitle"), 4, 0);
    copyGrid->addWidget(m_lblYiFuZhi, 4, 1);
    copyGrid->addWidget(titleLabel(QStringLiteral("已用时间："), "lblZongJiHaoShiTitle"), 4, 2);
    copyGrid->addWidget(m_lblZongJiHaoShi, 4, 3);
    copyGrid->addWidget(titleLabel(QStringLiteral("剩余时间："), "lblShengYuShiJianTitle"), 5, 0);
    copyGrid->addWidget(m_lblShengYuShiJian, 5, 1);
    copyGrid->addWidget(titleLabel(QStringLiteral("估计消耗："), "lblGuJiXiaoHaoTitle"), 5, 2);
    copyGrid->addWidget(m_lblGuJiXiaoHao, 5, 3);
    copyGrid->addWidget(titleLabel(QStringLiteral("存取速度："), "lblShuJuLiuLiangTitle"), 6, 0);
    copyGrid->addWidget(m_lblShuJuLiuLiang, 6, 1);
    m_lblRefine = named(new QLabel, "lblRefine");
    copyGrid->addWidget(m_lblRefine, 6, 2, 1, 2);

    auto* commands = new QHBoxLayout;
    m_optOpenCD = named(new QRadioButton(QStringLiteral("弹出 CD_ROM[&A]")), "optOpenCD");
    m_optCloseCD = named(new QRadioButton(QStringLiteral("关闭 CD_ROM[&Z]")), "optCloseCD");
    m_cmdStartCopy = named(new QPushButton(QStringLiteral("开始复制[&B]")), "cmdStartCopy");
    m_cmdPauseCopy = named(new QPushButton(copy::CopyController::kPauseCaption), "cmdPauseCopy");
    m_cmdCancelCopy = named(new QPushButton(QStringLiteral("取消复制[&C]")), "cmdCancelCopy");
    commands->addWidget(m_optOpenCD);
    commands->addSpacing(6);
    commands->addWidget(m_optCloseCD);
    commands->addStretch(1);
    commands->addWidget(m_cmdStartCopy);
    commands->addWidget(m_cmdPauseCopy);
    commands->addWidget(m_cmdCancelCopy);
    copyGrid->addLayout(commands, 7, 0, 1, 4);
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
    // The refine pass and the rescue maps.
    m_chkAutoRefine = named(new QCheckBox(QStringLiteral("复制后自动读取跳过的部分[&R]")), "chkAutoRefine");
    m_chkAutoRefine->setToolTip(QStringLiteral("复制有跳过的部分时，不再询问，立即只读跳过的部分"));
    setGrid->addWidget(m_chkAutoRefine, 2, 0, 1, 2);
    auto* minutesRow = new QHBoxLayout;
    minutesRow->addWidget(titleLabel(QStringLiteral("读取跳过的部分最多用时："), "lblRefineMinutesTitle"));
    m_spnRefineMinutes = named(new QSpinBox, "spnRefineMinutes");
    m_spnRefineMinutes->setRange(0, 24 * 60);
    m_spnRefineMinutes->setSuffix(QStringLiteral("分钟"));
    m_spnRefineMinutes->setSpecialValueText(QStringLiteral("不限"));
    minutesRow->addWidget(m_spnRefineMinutes);
    minutesRow->addStretch(1);
    setGrid->addLayout(minutesRow, 3, 0, 1, 3);
    auto* mapRow = new QHBoxLayout;
    m_cmdExportMap = named(new QPushButton(QStringLiteral("导出复制记录图[&E]...")), "cmdExportMap");
    m_cmdExportMap->setToolTip(QStringLiteral("把目标文件的复制记录图存为 GNU ddrescue 的映射文件"));
    m_cmdImportMap = named(new QPushButton(QStringLiteral("导入复制记录图[&I]...")), "cmdImportMap");
    m_cmdImportMap->setToolTip(
        QStringLiteral("把 GNU ddrescue 的映射文件作为目标文件的复制记录图，接着救援"));
    mapRow->addWidget(m_cmdExportMap);
    mapRow->addWidget(m_cmdImportMap);
    mapRow->addStretch(1);
    setGrid->addLayout(mapRow, 4, 0, 1, 3);
    for (QWidget* w : {static_cast<QWidget*>(m_chkAutoRefine), static_cast<QWidget*>(m_spnRefineMinutes),
             static_cast<QWidget*>(m_cmdExportMap), static_cast<QWidget*>(m_cmdImportMap)})
        w->setEnabled(m_services.maps != nullptr);
    m_cmdBackCopy = named(new QPushButton(QStringLiteral("返回设置>>")), "cmdBackCopy");
    setGrid->addWidget(m_cmdBackCopy, 5, 2);
    setGrid->setRowStretch(6, 1);
    m_picture2->hide();
    body->addWidget(m_picture2);

    // The facts of the current entry, under both panels: dates, then size, type and attributes, each
    // after a 16-pixel picture of the file.
    m_picSmallIcon16A = iconBox("PicSmallIcon_16A", 16);
    m_picSmallIcon16B = iconBox("PicSmallIcon_16B", 16);
    m_stbFileInfoShowsAreaA = statusBar("stbFileInfoShowsArea_A");
    m_stbFileInfoShowsAreaB = statusBar("stbFileInfoShowsArea_B");
    for (const auto& [icon, bar] :
        {std::pair<QLabel*, QStatusBar*>{m_picSmallIcon16A, m_stbFileInfoShowsAreaA},
            std::pair<QLabel*, QStatusBar*>{m_picSmallIcon16B, m_stbFileInfoShowsAreaB}}) {
        auto* panel = new QFrame;
        panel->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        auto* row = new QHBoxLayout(panel);
        row->setContentsMargins(3, 0, 0, 0);
        row->setSpacing(2);
        row->addWidget(icon);
        row->addWidget(bar, 1);
        column->addWidget(panel);
    }

    connect(m_cmdStartCopy, &QPushButton::clicked, this,
        [this] { m_controller->start(sourceText(), destinationText()); });
    connect(m_cmdPauseCopy, &QPushButton::clicked, this,
        [this] { m_controller->pauseOrContinue(sourceText(), destinationText()); });
    connect(m_cmdCancelCopy, &QPushButton::clicked, this, [this] { m_controller->cancel(); });
    connect(m_cmdSourceFile, &QPushButton::clicked, this, &FrmCopy::cmdSourceFileClick);
    connect(m_cmdDestinationPath, &QPushButton::clicked, this, &FrmCopy::cmdDestinationPathClick);
    connect(m_cmdBackCopy, &QPushButton::clicked, this, &FrmCopy::cmdBackCopyClick);
    connect(m_picSetUp, &QAbstractButton::clicked, this, &FrmCopy::picSetUpClick);
    // The destination's tooltip always shows the whole path, however narrow the box.
    connect(m_txtFileCopy, &QLineEdit::textChanged, m_txtFileCopy, &QLineEdit::setToolTip);
}

void FrmCopy::connectFileList()
{
    m_fileList->bindDisplays({m_stbFileInfoShowsAreaA, m_stbFileInfoShowsAreaB, m_lblFilesInfo,
        m_picSmallIcon16A, m_picSmallIcon16B, m_image1, m_txtFileCopy});
    // The same menu opens from the list box and from the title bar.
    chrome::styleFileMenu(m_fileList->menu());

    connect(m_fileList, &files::FileListController::exitRequested, this, &QWidget::close);
    connect(m_fileList, &files::FileListController::aboutRequested, this, &FrmCopy::showAboutWindow);
    connect(m_fileList, &files::FileListController::batchCopyRequested, this, &FrmCopy::runBatchCopy);
    connect(m_fileList, &files::FileListController::copyDisplaysReset, this, [this] {
        m_picProgressBar->clear();
        m_controller->resetFigures();
    });
    // The video preview follows the list; the player opens from the file menu.
    (new media::MediaWindows(*m_fileSystem, this))->attach(*m_fileList);
}

void FrmCopy::connectChrome()
{
    connect(m_picHTitleBar, &chrome::HTitleBar::fileMenuRequested, this,
        [this](const QPoint& at) { ShowPopupMenu(kFileMenu, at); });
    connect(m_picHTitleBar, &chrome::HTitleBar::closeRequested, this, &QWidget::close);
    connect(m_picHTitleBar, &chrome::HTitleBar::minimizeRequested, this, &QWidget::showMinimized);
    connect(m_picHTitleBar, &chrome::HTitleBar::trayRequested, m_tray, &chrome::TrayController::sendToTray);

    connect(m_picRefresh, &QAbstractButton::clicked, this, [this] { m_fileList->model().RefreshFileList(); });
    connect(m_picSearch, &QAbstractButton::clicked, this, &FrmCopy::showSearchWindow);
    connect(m_picWatch, &QAbstractButton::clicked, this, [this] {
        m_logWindow->show();
        m_logWindow->raise();
        m_logWindow->activateWindow();
    });

    connect(m_optOpenCD, &QAbstractButton::clicked, this, [this] { optCDClick(true); });
    connect(m_optCloseCD, &QAbstractButton::clicked, this, [this] { optCDClick(false); });
    for (QRadioButton* option : {m_optOpenCD, m_optCloseCD}) {
        auto* look = new chrome::OptionButtonChrome(option);
        // Queued: the menu runs its own loop, which must not start inside the button's mouse handling.
        connect(
            look, &chrome::OptionButtonChrome::cdMenuRequested, this,
            [this](const QPoint& at) { ShowPopupMenu(kCdRomMenu, at); }, Qt::QueuedConnection);
    }
}

// One search window, a window of its own that fills this window's list; a second click brings it forward.
void FrmCopy::showSearchWindow()
{
    if (!m_searchWindow) {
        if (!m_searchResults)
            m_searchResults = std::make_unique<search::FileListResults>(m_fileList->model());
        auto* window
            = new search::frmSearchFile(m_services.volumes, m_services.shell, *m_searchResults, this);
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->setWindowIcon(windowIcon());
        m_searchWindow = window;
    }
    m_searchWindow->show();
    m_searchWindow->raise();
    m_searchWindow->activateWindow();
}

void FrmCopy::attachToolTips()
{
    // Balloon tips for the controls of the chrome's table and for the two slider captions. The list box
    // and the destination box keep their own tooltips, which follow their text.
    chrome::attachToolTips(this);
    chrome::attachToolTips(this, sliderCaptionTips());
}

void FrmCopy::ShowPopupMenu(int kind, const QPoint& globalPos)
{
    switch (kind) {
    case kFileMenu:
        m_fileList->menu()->popup(globalPos);
        break;
    case kCdRomMenu:
        chrome::showCdDriveMenu(this, globalPos, m_services.opticalDrives);
        break;
    default:
        break;
    }
}

// The default drive's tray moves on a pool thread: a drive that takes seconds never holds up the window.
void FrmCopy::optCDClick(bool open)
{
    drives::runTrayJobWithBusyCursor(m_services.opticalDrives, [open](drives::CDRomDriveControl& control) {
        if (open)
            control.OpenFirstCDdoor();
        else
            control.CloseFirstCDdoor();
    });
}

// The about window with the computer's facts, modal to this window and gone once closed.
void FrmCopy::showAboutWindow()
{
    auto* about = new sysinfo::ui::frmSplash(sysinfo::gatherSplashFacts(), {}, this);
    about->setAttribute(Qt::WA_DeleteOnClose);
    about->open();
}

// The whole list is copied into one folder by the batch window. It is a window of its own, not a child,
// so that disabling this one leaves it usable; this one is enabled again when the batch has finished.
void FrmCopy::runBatchCopy()
{
    if (m_batchWindow)
        return;
    copy::FrmCopyAllFilesServices services{m_services.files, m_services.resumeStore, m_services.drives,
        *m_services.batchPrompts, [this](const QString& entry) { m_logWindow->GetFileCopyLog(entry); }};
    services.maps = m_services.maps;
    auto* batch = new copy::FrmCopyAllFiles(services);
    batch->setAttribute(Qt::WA_DeleteOnClose);
    batch->setWindowIcon(windowIcon());
    m_batchWindow = batch;
    setEnabled(false);
    connect(batch, &copy::FrmCopyAllFiles::batchFinished, this, [this, batch] {
        setEnabled(true);
        emit batchCopyFinished();
        // What the batch skipped may be read now; then the damage report.
        m_controller->afterBatch(batch->result().copies, batch->result().notReached);
    });
    if (!batch->CopyingFiles(m_fileList->model().entries())) {
        delete batch;
        setEnabled(true);
        emit batchCopyFinished();
    }
}

// Everything the table of state switches names, as the controller leaves it. The settings panel keeps its
// button off while it is open: cmdBackCopy gives it back.
void FrmCopy::showControls(const copy::CopyControls& controls)
{
    for (QWidget* w : {static_cast<QWidget*>(m_cmbFileCopy), static_cast<QWidget*>(m_cmdStartCopy),
             static_cast<QWidget*>(m_cmdSourceFile), static_cast<QWidget*>(m_picVTitleBar),
             static_cast<QWidget*>(m_picRefresh), static_cast<QWidget*>(m_picSearch),
             static_cast<QWidget*>(m_picWatch)})
        w->setEnabled(controls.idle);
    m_cmdDestinationPath->setEnabled(controls.destinationEnabled);
    m_txtFileCopy->setEnabled(controls.destinationEnabled);
    m_picSetUp->setEnabled(controls.setUpEnabled && !m_picture2->isVisibleTo(this));
    m_cmdPauseCopy->setText(controls.pauseCaption);
    m_cmdPauseCopy->setEnabled(controls.pauseEnabled);
    m_cmdCancelCopy->setEnabled(controls.cancelEnabled);
}

void FrmCopy::showFigures(const copy::ProgressTexts& texts)
{
    m_lblYiFuZhi->setText(texts.copied);
    m_lblZongJiHaoShi->setText(texts.elapsed);
    m_lblShengYuShiJian->setText(texts.remaining);
    m_lblGuJiXiaoHao->setText(texts.estimated);
    m_lblShuJuLiuLiang->setText(texts.throughput);
}

QString FrmCopy::sourceText() const
{
    return m_cmbFileCopy->currentText();
}

QString FrmCopy::destinationText() const
{
    return m_txtFileCopy->text();
}

// ---- the rescue map and the damage report ----

void FrmCopy::showDamageReport(const copy::DamageReport& report)
{
    auto* dialog = new copy::DamageReportDialog(report, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &copy::DamageReportDialog::copyAgainRequested, this, [this](const QStringList& files) {
        m_fileList->model().ResetFileList();
        m_fileList->model().appendEntries(files);
        m_fileList->model().RefreshFileList();
        runBatchCopy();
    });
    dialog->show();
}

void FrmCopy::exportMap()
{
    if (!m_services.maps)
        return;
    copy::RescueMap map;
    copy::MapfileStatus status;
    if (!m_services.maps->load(destinationText(), map, &status)) {
        showBox(copy::text::notice(copy::msg::mapStoreNoDestination()));
        return;
    }
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("导出复制记录图"),
        destinationText() + QStringLiteral(".map"), QStringLiteral("映射文件(*.map *.log);;所有文件(*)"));
    if (path.isEmpty())
        return;
    QString why;
    if (!copy::writeMapfile(path, map,
            copy::MapfileHeader{
                sysinfo::versionLine(QStringLiteral("Vindaro")), QString(), QDateTime::currentDateTime(), {}},
            why, status))
        showBox(copy::text::notice(copy::msg::mapfileWriteFailed(path, why)));
}

void FrmCopy::importMap()
{
    if (!m_services.maps)
        return;
    const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("导入复制记录图"), QString(),
        QStringLiteral("映射文件(*.map *.log);;所有文件(*)"));
    if (path.isEmpty())
        return;
    platform::IoResult io;
    const qint64 sourceLength = m_services.files.length(sourceText(), io);
    const copy::MapfileResult imported = copy::readMapfile(path, io.ok() ? sourceLength : -1);
    if (!imported.ok()) {
        showBox(copy::msg::mapfileRefusedNotice(path, imported));
        return;
    }
    m_services.maps->save(destinationText(), imported.map, imported.status);
    m_picRescueMap->setMap(imported.map);
}

// ---- the copy's boxes and dialogs ----

int FrmCopy::showBox(const platform::MessageBox& box)
{
    return m_services.boxes.present(box, this);
}

void FrmCopy::log(const QString& entry)
{
    m_logWindow->GetFileCopyLog(entry);
}

copy::ContinueChoice FrmCopy::askContinueCopy(const QString& source, const QString& destination)
{
    return m_services.choices.askContinueCopy(source, destination, this);
}

copy::ExistingFileAnswer FrmCopy::askExistingFile(const QString& source, const QString& destination)
{
    return m_services.choices.askExistingFile(source, destination, this);
}

// ---- buttons ----

void FrmCopy::cmdSourceFileClick()
{
    m_controller->resetFigures();
    m_picProgressBar->clear();
    m_fileList->commands().AddFromFileChooser(); // empties the list, then fills it from the open dialog
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
    m_picSetUp->setEnabled(false); // until the panel is left with cmdBackCopy
}

void FrmCopy::cmdBackCopyClick()
{
    m_picture2->hide();
    m_picture1->show();
    if (mode() != Mode::Copying)
        m_picSetUp->setEnabled(true);
}

void FrmCopy::closeEvent(QCloseEvent* event)
{
    // Refused without a word while a copy or a batch runs; a copy already told to cancel may be quit,
    // since its block in progress may hang in a read for minutes on a scratched disc.
    if (!m_controller->mayQuit() || m_batchWindow) {
        event->ignore();
        return;
    }
    platform::MessageBox box;
    box.text = QStringLiteral("真的要退出Vindaro吗？");
    box.title = QStringLiteral("提醒！");
    box.icon = platform::BoxIcon::Exclamation;
    box.buttons = platform::BoxButtons::YesNo;
    const int answer = m_services.boxes.present(box, this);
    if (answer != platform::kAnswerYes) {
        event->ignore();
        return;
    }
    // A paused copy leaves its record; a copy stuck in a read is abandoned with its record, and the
    // process ends without waiting for it (exitStatusAfterRun).
    m_controller->quit();
    m_tray->removeIcon();
    // The log window closes for good and appends the run's entries to the log file.
    m_logWindow->setKeepLoaded(false);
    m_logWindow->Unload();
    m_logWindow->hide();
    event->accept();
}

int exitStatusAfterRun(const FrmCopy& window, int exitCode)
{
    if (window.workerAbandoned()) {
        std::fflush(nullptr);
        std::_Exit(exitCode);
    }
    return exitCode;
}

void FrmCopy::paintEvent(QPaintEvent* event)
{
    QWidget::paintEvent(event);
    // Without the system's frame the window draws its own one-pixel edge.
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Dark));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void FrmCopy::showStartText(const QString& text)
{
    // The report may arrive after the user already picked or typed a source: that text stays.
    if (m_fileList->model().currentText().isEmpty() && m_fileList->model().rowCount() == 0)
        m_fileList->model().setCurrentText(text.trimmed());
}

} // namespace vindaro::app
