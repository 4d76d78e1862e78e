#pragma once
// Reads that hang, as a scratched sector's can: a read of one of the chosen files at a chosen offset waits
// until the test lets it go. Shared by the tests of the worker-thread host and of the batch window.
#include "fakes/MemoryFileLayer.h"

#include <QSemaphore>
#include <QStringList>
#include <QTest>

namespace vindaro::testing {

struct HangingReads
{
    QSemaphore entered;
    QSemaphore release;

    void install(MemoryFileLayer& files, const QStringList& paths, qint64 offset)
    {
        files.setReadHook([this, paths, offset](const QString& path, qint64 at, qint64) {
            if (at == offset && paths.contains(path)) {
                entered.release();
                release.acquire();
            }
        });
    }
    // True once a read hangs (within 20 s); each hang is waited for once.
    bool waitEntered()
    {
        return QTest::qWaitFor([this] { return entered.tryAcquire(); }, 20000);
    }
};

} // namespace vindaro::testing
