// The program starts with its main copy window.
#include "BoxPresenter.h"
#include "CopyChoices.h"
#include "FrmCopy.h"
#include "OperationLogModel.h"
#include "copy/FileResumeStore.h"
#include "copy/VolumeDriveFacts.h"
#include "drives/CDRomDriveControl.h"
#include "platform/linux/LinuxOpticalDrives.h"
#include "platform/linux/LinuxVolumes.h"
#include "platform/linux/LocalFileLayer.h"

#include <QApplication>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Vindaro"));
    vindaro::app::installFontSubstitutions();

    vindaro::platform::LocalFileLayer files;
    vindaro::platform::LinuxVolumes volumes;
    vindaro::copy::FileResumeStore resumeStore;
    vindaro::copy::VolumeDriveFacts drives(volumes);
    vindaro::app::MessageBoxPresenter boxes;
    vindaro::app::DialogCopyChoices choices(&resumeStore);
    vindaro::app::OperationLogModel log;

    vindaro::platform::LinuxOpticalDrives opticalDrives;
    const QString cdRomReport = vindaro::drives::CDRomDriveControl(opticalDrives).GetCDRomInforStr();

    vindaro::app::FrmCopy window({files, resumeStore, drives, boxes, choices, log, {}, cdRomReport});
    window.show();
    return app.exec();
}
