#pragma once

#include <QList>
#include <QString>
#include <QtGlobal>

namespace vindaro::oplog {

// The codes of the change events the log describes, with the bit values its table has always used.
// A code is compared as a whole: a value carrying two bits matches no single event.
//
// What produces them on Linux (platform::InotifyChangeMonitor): created, deleted, renamed (file and
// folder), new and deleted folders and updated files come from inotify; media inserted and removed and
// drives added and removed from the mount table; a folder update sums up changes that came too fast to be
// logged one by one. Linux has no source for shares, server connections, file associations, attributes,
// icons or free space: their rows stay in the table but no monitor produces them.
enum ChangeCode : quint32
{
    kRenameItem = 0x1,
    kCreate = 0x2,
    kDelete = 0x4,
    kMakeDirectory = 0x8,
    kRemoveDirectory = 0x10,
    kMediaInserted = 0x20,
    kMediaRemoved = 0x40,
    kDriveRemoved = 0x80,
    kDriveAdded = 0x100,
    kNetShare = 0x200,
    kNetUnshare = 0x400,
    kAttributes = 0x800,
    kUpdateDirectory = 0x1000,
    kUpdateItem = 0x2000,
    kServerDisconnect = 0x4000,
    kUpdateImage = 0x8000,
    kDriveAddedGui = 0x10000,
    kRenameFolder = 0x20000,
    kFreeSpace = 0x40000,
    kAssociationChanged = 0x8000000,
    kDiskEventsMask = 0x2381F,
    kGlobalEventsMask = 0xC0581E0,
    kAllEventsMask = 0x7FFFFFFF,
    kInterruptFlag = 0x80000000,
};

// One change as a monitor saw it. path2 is set for renames only (the new path); a mount point stands for
// a drive.
struct ChangeEvent
{
    quint32 code = 0;
    QString path1;
    QString path2;

    friend bool operator==(const ChangeEvent& a, const ChangeEvent& b)
    {
        return a.code == b.code && a.path1 == b.path1 && a.path2 == b.path2;
    }
};

// Where a monitor hands over what it saw. Called on the monitor's own thread; neither call blocks for
// long, whatever the receiver does with the changes.
class ChangeSink
{
public:
    virtual ~ChangeSink() = default;
    // Changes in the order they happened.
    virtual void addChanges(QList<ChangeEvent> changes) = 0;
    // The system's limit on watches was reached at `folder`: it and the folders not yet watched are not
    // followed. Called once per run.
    virtual void watchLimitReached(const QString& folder) = 0;
};

// A source of file-system and drive changes for the operation log.
class ChangeMonitor
{
public:
    virtual ~ChangeMonitor() = default;
    // Starts following changes; they go to `sink` until stop(). False when the system offers no way to
    // follow them: the log then works as a viewer only.
    virtual bool start(ChangeSink& sink) = 0;
    // No call reaches the sink once this has returned. Safe to call when not started.
    virtual void stop() = 0;
};

} // namespace vindaro::oplog
