#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <string>

namespace vindaro::testing {

// True while `mountPoint` is a mount point in this process's mount table.
bool inMountTable(const QString& mountPoint);

// A FUSE file system of the test's own, started as `program MOUNTPOINT ARGUMENTS...` and mounted for the life
// of the object. The constructor waits (10 s at most) until the mount shows in the mount table, which works
// for a file system that never answers too. The destructor unmounts and ends the program even when the test
// failed, so no mount is left behind.
class FuseMount
{
public:
    FuseMount(const QString& program, const QString& mountPoint, const QStringList& arguments);
    virtual ~FuseMount();
    FuseMount(const FuseMount&) = delete;
    FuseMount& operator=(const FuseMount&) = delete;

    bool mounted() const { return m_mounted; }
    // Not mounted because FUSE cannot mount here (no /dev/fuse, no fusermount3, not permitted): the program
    // ended with the codes fuse_main gives to a failed setup or mount. Any other way of not mounting is a
    // fault of the test's own. why() says why.
    bool unavailable();
    std::string why();
    QString mountPoint() const { return m_mountPoint; }
    QString path(const QString& name) const { return m_mountPoint + QLatin1Char('/') + name; }
    QProcess& process() { return m_fs; }

    // Kills the program: whatever waits on it gets ENOTCONN at once. The dead mount stays until unmount().
    void kill();
    // True when the mount left the mount table, as an eject makes it leave. Something still holding the mount
    // (a file the kernel has not released yet, a stuck read) gets a lazy unmount.
    bool unmount();

private:
    QString m_mountPoint;
    QProcess m_fs;
    bool m_mounted = false;
};

} // namespace vindaro::testing

// Skips the test where FUSE cannot be mounted; fails it where the file system should have mounted but did
// not.
#define VINDARO_SKIP_UNLESS_MOUNTED(mount)                                                                   \
    if ((mount).mounted()) {                                                                                 \
    } else if ((mount).unavailable())                                                                        \
        GTEST_SKIP() << "FUSE cannot be mounted here: " << (mount).why();                                    \
    else                                                                                                     \
        FAIL() << "the FUSE file system did not mount: " << (mount).why()
