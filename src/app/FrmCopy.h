#pragma once

#include "copy/CopyController.h"
#include "platform/Host.h"

#include <QWidget>

#include <QPointer>

#include <functional>
#include <memory>

class QCheckBox;
class QComboBox;
class QSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSlider;
class QStatusBar;
class QTimer;

namespace vindaro::copy {
class BatchPrompts;
class ProgressBar;
class RescueMapView;
class ThreadedCopyHost;
} // namespace vindaro::copy

namespace vindaro::files {
class FileListController;
class FileSystem;
class ListDialogs;
class Prompter;
} // namespace vindaro::files

namespace vindaro::platform {
class OpticalDrives;
class Shell;
class Volumes;
} // namespace vindaro::platform

namespace vindaro::search {
class SearchResults;
} // namespace vindaro::search

namespace vindaro::oplog {
class ChangeMonitor;
class OperationLog;
namespace ui {
class frmSystem;
}
} // namespace vindaro::oplog

namespace vindaro::chrome {
class HTitleBar;
class PictureButton;
class TrayController;
class VTitleBar;
} // namespace vindaro::chrome

namespace vindaro::app {

class BoxPresenter;
class CopyChoices;

// What the main window works with, handed in by whoever creates it.
struct FrmCopyServices
{
    platform::FileLayer& files;
    copy::ResumeStore& resumeStore;
    copy::DriveFacts& drives;
    BoxPresenter& boxes;
    CopyChoices& choices;
    // The run's operation log, shown by the log window (picWatch); every copy-engine entry goes there.
    oplog::OperationLog& log;
    // The file list's file system: mounted volumes and the desktop's file operations.
    platform::Volumes& volumes;
    platform::Shell& shell;
    // The optical drives whose trays optOpenCD, optCloseCD and the CD-ROM menu move. Shared with the tray
    // jobs, which may outlive a click by seconds.
    std::shared_ptr<platform::OpticalDrives> opticalDrives;
    // The file list's questions and choosers and the batch copy's questions; when null the window makes
    // its own message boxes and dialogs. Tests hand in scripted ones.
    files::Prompter* prompter = nullptr;
    files::ListDialogs* listDialogs = nullptr;
    copy::BatchPrompts* batchPrompts = nullptr;
    // Whether the desktop has a notification area; QSystemTrayIcon's answer when empty.
    std::function<bool()> trayAvailable = {};
    // The second of the minute (0..59) now; the wall clock when empty. Tests pin it.
    std::function<int()> clockSecond = {};
    // The file list's first text: the report on optical drives that are not ready (empty when all are).
    QString fileListText = {};
    // Where copies keep their rescue maps (beside the resume records); none: no map, no refine pass.
    copy::RescueMapStore* maps = nullptr;
    // The file-system and drive changes the log window follows for the whole run; none when null.
    oplog::ChangeMonitor* changeMonitor = nullptr;
};

// The main copy window: source and destination, start, pause/continue and cancel, the read and skip
// sliders on the settings panel, and the progress figures.
//
// The copy itself belongs to a copy::CopyController (the copy state, the worker thread, pause, cancel,
// the clock); this window lays out the copy area, hands the clicks to it and shows what it says.
//
// Around the copy area: the file list (files::FileListController) with its file menu, status bars and drops,
// the title bars and picture buttons with their balloon tips, the CD-ROM option buttons and menu, the tray
// icon, and the batch copy of the whole list (FrmCopyAllFiles), during which this window is disabled.
//
// Exit is refused without a word while copying or while a batch runs, and asked about otherwise.
class FrmCopy : public QWidget, public platform::Host, private copy::CopyPrompts
{
    Q_OBJECT

public:
    // The first text of the file list's box (the optical-drive report, which start-up asks for in the
    // background because a damaged disc can take seconds to answer); ignored once the box has a text.
    void showStartText(const QString& text);
    using Mode = copy::CopyController::Mode;

    explicit FrmCopy(const FrmCopyServices& services, QWidget* parent = nullptr);
    ~FrmCopy() override;

    copy::CopyController& controller() { return *m_controller; }
    copy::CopyState& copyState() { return m_controller->state(); }
    copy::CopySession& session() { return m_controller->session(); }
    copy::ThreadedCopyHost& worker() { return m_controller->worker(); }
    Mode mode() const { return m_controller->mode(); }

    // platform::Host, for the file system's notices; and the copy's boxes.
    int showBox(const platform::MessageBox& box) override;
    void log(const QString& entry) override;
    void yield() override { }

    // Pop-up menus: kind 0 the file menu, kind 1 the CD-ROM menu, at globalPos.
    enum PopupKind
    {
        kFileMenu = 0,
        kCdRomMenu = 1
    };
    void ShowPopupMenu(int kind, const QPoint& globalPos);

    // The window was closed while its copy hung in a read: the worker thread was abandoned (it writes
    // nothing more) and cannot be joined, so the process must end without destroying this window.
    bool workerAbandoned() const { return m_controller->workerAbandoned(); }

    files::FileListController& fileList() { return *m_fileList; }
    chrome::TrayController& tray() { return *m_tray; }
    // The batch window (a copy::FrmCopyAllFiles) while a batch runs, else null.
    QWidget* batchWindow() const { return m_batchWindow; }
    // The operation log window: loaded hidden with KeepLoaded at start-up, unloaded when the exit goes on.
    oplog::ui::frmSystem& logWindow() { return *m_logWindow; }

signals:
    void copyJobFinished(int outcome); // a start or continue has run its course on the worker
    void batchCopyFinished(); // the batch window has closed and this window is enabled again

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void buildWindow();
    void connectFileList();
    void connectChrome();
    void attachToolTips();
    void showControls(const copy::CopyControls& controls);
    void showFigures(const copy::ProgressTexts& texts);
    void showDamageReport(const copy::DamageReport& report);
    void exportMap(); // the destination's rescue map as a ddrescue mapfile
    void importMap(); // a ddrescue mapfile as the destination's rescue map

    // copy::CopyPrompts
    copy::ContinueChoice askContinueCopy(const QString& source, const QString& destination) override;
    copy::ExistingFileAnswer askExistingFile(const QString& source, const QString& destination) override;

    void cmdSourceFileClick();
    void cmdDestinationPathClick();
    void picSetUpClick();
    void cmdBackCopyClick();
    void optCDClick(bool open);
    void showAboutWindow();
    void showSearchWindow();
    void runBatchCopy();

    QString sourceText() const;
    QString destinationText() const;

    FrmCopyServices m_services;
    std::unique_ptr<oplog::ui::frmSystem> m_logWindow; // a window of its own, so a batch leaves it usable
    // What the file list works with; the window's children, which use them, are deleted first.
    std::unique_ptr<files::FileSystem> m_fileSystem;
    std::unique_ptr<files::Prompter> m_ownPrompter;
    std::unique_ptr<files::ListDialogs> m_ownListDialogs;
    std::unique_ptr<copy::BatchPrompts> m_ownBatchPrompts; // keeps the last batch folder for the run
    copy::CopyController* m_controller = nullptr; // a child

    files::FileListController* m_fileList = nullptr; // a child
    chrome::TrayController* m_tray = nullptr; // a child
    QPointer<QWidget> m_batchWindow; // the batch's window of its own, deleted when it closes
    std::unique_ptr<search::SearchResults> m_searchResults; // this window's list, as the search fills it
    QPointer<QWidget> m_searchWindow; // the search window while it is open (a child, deleted when closed)

    chrome::VTitleBar* m_picVTitleBar = nullptr;
    chrome::HTitleBar* m_picHTitleBar = nullptr;
    chrome::PictureButton* m_picRefresh = nullptr;
    chrome::PictureButton* m_picSearch = nullptr;
    chrome::PictureButton* m_picSetUp = nullptr;
    chrome::PictureButton* m_picWatch = nullptr;
    QWidget* m_picture1 = nullptr;
    QWidget* m_picture2 = nullptr;
    QComboBox* m_cmbFileCopy = nullptr; // the file list's box
    QStatusBar* m_stbFileInfoShowsAreaA = nullptr;
    QStatusBar* m_stbFileInfoShowsAreaB = nullptr;
    QLabel* m_lblFilesInfo = nullptr;
    QLabel* m_picSmallIcon16A = nullptr;
    QLabel* m_picSmallIcon16B = nullptr;
    QLabel* m_image1 = nullptr;
    QRadioButton* m_optOpenCD = nullptr;
    QRadioButton* m_optCloseCD = nullptr;
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
    copy::RescueMapView* m_picRescueMap = nullptr;
    QLabel* m_lblRefine = nullptr; // the refine pass's figures
    QCheckBox* m_chkAutoRefine = nullptr;
    QSpinBox* m_spnRefineMinutes = nullptr;
    QPushButton* m_cmdExportMap = nullptr;
    QPushButton* m_cmdImportMap = nullptr;
    QLabel* m_lblYiFuZhi = nullptr;
    QLabel* m_lblZongJiHaoShi = nullptr;
    QLabel* m_lblShengYuShiJian = nullptr;
    QLabel* m_lblGuJiXiaoHao = nullptr;
    QLabel* m_lblShuJuLiuLiang = nullptr;
};

// What main() answers once the event loop has returned. When `window` abandoned a worker stuck in a read,
// the process ends here and now (after flushing stdio): destroying the window would wait for that thread
// for ever, and a QThread destroyed while it runs aborts the program. The record is saved already and the
// worker writes nothing more, so nothing is lost by skipping the destructors; std::_Exit rather than
// exit() because exit() would run the static destructors while the abandoned thread may still run.
int exitStatusAfterRun(const FrmCopy& window, int exitCode);

// Song-style faces for "宋体" and a sans face for "MS Sans Serif", which Linux does not have under
// those names. Safe to call more than once.
void installFontSubstitutions();

} // namespace vindaro::app
