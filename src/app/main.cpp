// The program starts with its main copy window.
#include "BoxPresenter.h"
#include "CopyChoices.h"
#include "FrmCopy.h"
#include "OperationLogModel.h"
#include "copy/FileResumeStore.h"
#include "copy/VolumeDriveFacts.h"
#include "drives/CDRomDriveControl.h"
#include "drives/TrayJob.h"
#include "platform/linux/LinuxVolumes.h"
#include "platform/linux/LocalFileLayer.h"
#include "platform/linux/ui/LinuxShell.h"

#include <QApplication>

#include <memory>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Vindaro"));
    vindaro::app::installFontSubstitutions();

    vindaro::platform::LocalFileLayer files;
    vindaro::platform::LinuxVolumes volumes;
    vindaro::platform::LinuxShell shell;
    vindaro::copy::FileResumeStore resumeStore;
    vindaro::copy::VolumeDriveFacts drives(volumes);
    vindaro::app::MessageBoxPresenter boxes;
    vindaro::app::DialogCopyChoices choices(&resumeStore);
    vindaro::app::OperationLogModel log;

    const auto opticalDrives = vindaro::drives::makeSystemOpticalDrives();

    // The file list's questions, choosers and the batch copy's questions are the window's own dialogs.
    vindaro::app::FrmCopyServices services{
        files, resumeStore, drives, boxes, choices, log, volumes, shell, opticalDrives};
    vindaro::app::FrmCopy window(services);
    window.show();
    // Asking the drives can take seconds on a damaged disc: the window is usable meanwhile.
    auto report = std::make_shared<QString>();
    vindaro::drives::runTrayJob(
        opticalDrives,
        [report](vindaro::drives::CDRomDriveControl& control) { *report = control.GetCDRomInforStr(); },
        [&window, report] { window.showStartText(*report); });
    return vindaro::app::exitStatusAfterRun(window, app.exec());
}
