#pragma once

#include "drives/CDRomDriveControl.h"

#include <functional>
#include <memory>

namespace vindaro::drives {

// Runs work on a thread of the global thread pool, so that a drive that takes seconds to move its tray
// never holds up the window, then calls done (if set) on the application's main thread.
//
// The drives object is shared with the job, which keeps it alive however long the drive takes. Jobs
// run one at a time in the order they were started, on one pool thread at most, so "eject all" then
// "close all" reach each drive in that order. When the application has already gone away by the time the work
// ends, done is not called. The application waits for running jobs when it exits.
void runTrayJob(std::shared_ptr<platform::OpticalDrives> drives, std::function<void(CDRomDriveControl&)> work,
    std::function<void()> done = {});

// The machine's own optical drives.
std::shared_ptr<platform::OpticalDrives> makeSystemOpticalDrives();

} // namespace vindaro::drives
