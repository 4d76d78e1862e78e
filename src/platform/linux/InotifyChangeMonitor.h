#pragma once

#include "oplog/ChangeMonitor.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <thread>

namespace vindaro::platform {

struct InotifyMonitorOptions
{
    // Folders followed with every folder below them on the same file system. Empty: the home folder,
    // without the user's cache folder, whose churn (browser caches, thumbnails) would bury everything else.
    QStringList roots;
    QStringList skipped; // folders never followed, with what is below them
    // The mount table followed for media and drives; empty: none. A path outside /proc is a file of the
    // test's own, followed for being rewritten.
    QString mountInfoPath = QStringLiteral("/proc/self/mountinfo");
    QString sysRoot = QStringLiteral("/sys");
    QString devRoot = QStringLiteral("/dev");
    // Mounted removable media (USB sticks, memory cards) are followed like the roots. Optical discs are
    // not: nothing changes on them, and walking a scratched disc's folders could take minutes.
    bool followRemovableMedia = true;
    // The most folders this monitor watches. 0: three quarters of the kernel's max_user_watches, leaving
    // the rest to the user's other programs.
    int maxWatches = 0;
};

// File-system and drive changes for the operation log, from inotify and the mount table.
//
// A thread of its own walks the roots breadth first (shallow folders are watched before deep ones),
// watches every folder, and from then on reads inotify's events and the mount table's change notice and
// hands changes to the sink in batches. Folders created, moved in or mounted later are watched as they
// appear; what a new folder already holds when it is first seen is reported as created. A move within the
// watched folders is a rename with both paths; a move out counts as a deletion, a move in as a creation.
// Closing a file after writing is an update. When the kernel drops events (its queue overflowed), each
// root gets one "folder updated" change. When the watch limit is reached the sink hears of it once and the
// folders already watched go on being followed.
//
// Mount table: a volume that appears is a medium inserted (removable media and optical discs) or a drive
// added (anything else); one that goes is a medium removed or a drive removed, named by its mount point.
class InotifyChangeMonitor final : public oplog::ChangeMonitor
{
public:
    explicit InotifyChangeMonitor(InotifyMonitorOptions options = {});
    ~InotifyChangeMonitor() override;
    InotifyChangeMonitor(const InotifyChangeMonitor&) = delete;
    InotifyChangeMonitor& operator=(const InotifyChangeMonitor&) = delete;

    // False when inotify cannot be had (no kernel support, the per-user instance limit reached).
    bool start(oplog::ChangeSink& sink) override;
    void stop() override;

    // True once the folders present at start are watched (or the limit was reached); changes made before
    // may be missed.
    bool isReady() const;
    // Folders watched now.
    int watchedFolders() const;

private:
    class Worker;

    InotifyMonitorOptions m_options;
    std::unique_ptr<Worker> m_worker;
    std::thread m_thread;
};

} // namespace vindaro::platform
