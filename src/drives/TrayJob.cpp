#include "TrayJob.h"

#include "platform/linux/LinuxOpticalDrives.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QThreadPool>

#include <deque>
#include <mutex>

namespace vindaro::drives {

namespace {

// Tray jobs wait in one queue, drained by at most one pool thread at a time: they run in start order
// and a drive stuck for seconds holds up only other tray jobs, never more than one pool thread.
struct TrayQueue
{
    std::mutex lock;
    std::deque<std::function<void()>> jobs; // guarded by lock
    bool draining = false; // a pool thread is working through jobs; guarded by lock
};

TrayQueue& trayQueue()
{
    static TrayQueue queue;
    return queue;
}

void drainTrayQueue()
{
    TrayQueue& queue = trayQueue();
    for (;;) {
        std::function<void()> next;
        {
            std::lock_guard<std::mutex> hold(queue.lock);
            if (queue.jobs.empty()) {
                queue.draining = false;
                return;
            }
            next = std::move(queue.jobs.front());
            queue.jobs.pop_front();
        }
        next();
    }
}

void enqueue(std::function<void()> job)
{
    TrayQueue& queue = trayQueue();
    {
        std::lock_guard<std::mutex> hold(queue.lock);
        queue.jobs.push_back(std::move(job));
        if (queue.draining)
            return;
        queue.draining = true;
    }
    QThreadPool::globalInstance()->start(drainTrayQueue);
}

} // namespace

void runTrayJob(std::shared_ptr<platform::OpticalDrives> drives, std::function<void(CDRomDriveControl&)> work,
    std::function<void()> done)
{
    enqueue([drives = std::move(drives), work = std::move(work), done = std::move(done)]() mutable {
        if (drives && work) {
            CDRomDriveControl control(*drives);
            work(control);
        }
        if (!done)
            return;
        // The application object outlives every pool job: its destructor waits for them.
        if (QCoreApplication* app = QCoreApplication::instance())
            QMetaObject::invokeMethod(app, std::move(done), Qt::QueuedConnection);
    });
}

std::shared_ptr<platform::OpticalDrives> makeSystemOpticalDrives()
{
    return std::make_shared<platform::LinuxOpticalDrives>();
}

} // namespace vindaro::drives
