// The program starts with its main copy window. Files named on the command line (as the desktop's
// "open with" passes them) join the file list.
#include "BoxPresenter.h"
#include "CopyChoices.h"
#include "FrmCopy.h"
#include "QtTranslations.h"
#include "copy/FileResumeStore.h"
#include "copy/RescueMapStore.h"
#include "copy/VolumeDriveFacts.h"
#include "disc/DiscFileLayer.h"
#include "drives/CDRomDriveControl.h"
#include "drives/TrayJob.h"
#include "files/FileListModel.h"
#include "files/ui/FileListController.h"
#include "oplog/OperationLog.h"
#include "oplog/PendingLogOnSignal.h"
#include "platform/linux/InotifyChangeMonitor.h"
#include "platform/linux/LinuxVolumes.h"
#include "platform/linux/LocalFileLayer.h"
#include "platform/linux/ui/LinuxShell.h"
#include "sysinfo/ProgramInfo.h"
#include "sysinfo/ui/ProgramIcon.h"

#include <QApplication>
#include <QFileInfo>

#include <memory>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Vindaro"));
    QApplication::setApplicationVersion(vindaro::sysinfo::programVersionText());
    QGuiApplication::setDesktopFileName(vindaro::sysinfo::kAppId);
    QApplication::setWindowIcon(vindaro::sysinfo::ui::programIcon());
    vindaro::app::installQtTranslations(app);
    vindaro::app::installFontSubstitutions();

    vindaro::platform::LocalFileLayer localFiles;
    vindaro::platform::LinuxVolumes volumes;
    // Video CD tracks are read through the disc's own sectors; everything else through the file system.
    vindaro::disc::DiscFileLayer files(localFiles, volumes);
    vindaro::platform::LinuxShell shell;
    vindaro::copy::FileResumeStore resumeStore;
    // Each copy's rescue map, beside its resume record, as a GNU ddrescue mapfile.
    vindaro::copy::FileRescueMapStore maps(vindaro::sysinfo::versionLine(QStringLiteral("Vindaro")));
    vindaro::copy::VolumeDriveFacts drives(volumes);
    vindaro::app::MessageBoxPresenter boxes;
    vindaro::app::DialogCopyChoices choices(&resumeStore);
    vindaro::oplog::OperationLog log;
    // Ended by SIGTERM, SIGINT or SIGHUP, the program still appends what its log holds to the log file.
    vindaro::oplog::PendingLogOnSignal pendingLog([&log] { log.writeRunningText(); });
    vindaro::platform::InotifyChangeMonitor changeMonitor; // the home folder and removable media
    // Unreadable sectors and discs that cannot be opened go to the operation log; the copy's worker thread
    // tells them, and they join the log on the window's thread in the order told.
    files.setLog([&log](const QString& entry) {
        QMetaObject::invokeMethod(
            &log, [&log, entry] { log.GetFileCopyLog(entry); }, Qt::QueuedConnection);
    });

    const auto opticalDrives = vindaro::drives::makeSystemOpticalDrives();

    // The file list's questions, choosers and the batch copy's questions are the window's own dialogs.
    vindaro::app::FrmCopyServices services{
        files, resumeStore, drives, boxes, choices, log, volumes, shell, opticalDrives};
    services.changeMonitor = &changeMonitor;
    services.maps = &maps;
    vindaro::app::FrmCopy window(services);
    window.show();
    QStringList startFiles;
    for (const QString& argument : QApplication::arguments().mid(1))
        startFiles << QFileInfo(argument).absoluteFilePath();
    if (!startFiles.isEmpty())
        window.fileList().model().AddDroppedFiles(startFiles);
    // Asking the drives can take seconds on a damaged disc: the window is usable meanwhile.
    auto report = std::make_shared<QString>();
    vindaro::drives::runTrayJob(
        opticalDrives,
        [report](vindaro::drives::CDRomDriveControl& control) { *report = control.GetCDRomInforStr(); },
        [&window, report] { window.showStartText(*report); });
    return vindaro::app::exitStatusAfterRun(window, app.exec());
}
