#pragma once

#include "drives/CDRomDriveControl.h"
#include "drives/CdDriveMenuModel.h"

#include <functional>
#include <memory>

class QMenu;
class QWidget;

namespace vindaro::drives {

// Shows the CD-ROM pop-up menu at the mouse position and carries out the chosen command in the
// background (see runTrayJobWithBusyCursor). drives defaults to the machine's own drives.
void CreatePopupCDDriveMenu(QWidget* owner, std::shared_ptr<platform::OpticalDrives> drives = {});

// The menu for a model, owned by the caller: every command action carries its identifier in data();
// the two sub-menus are named "ejectDriveMenu" and "closeDriveMenu".
QMenu* buildCdDriveMenu(const CdDriveMenuModel& model, QWidget* parent);

// Runs a tray job off the window's thread. The busy pointer (an arrow with an hourglass: the window
// stays usable) is shown from now until the job has ended, then done runs on the main thread.
// The option buttons use it as runTrayJobWithBusyCursor(drives, [](CDRomDriveControl& c) {
// c.OpenFirstCDdoor(); }).
void runTrayJobWithBusyCursor(std::shared_ptr<platform::OpticalDrives> drives,
    std::function<void(CDRomDriveControl&)> work, std::function<void()> done = {});

// Carries out a menu identifier of model through runTrayJobWithBusyCursor. False, and nothing runs,
// for an identifier that stands for no command.
bool carryOutCdMenuChoice(const CdDriveMenuModel& model, int id,
    std::shared_ptr<platform::OpticalDrives> drives, std::function<void()> done = {});

} // namespace vindaro::drives
