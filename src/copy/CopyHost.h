#pragma once

#include "platform/Host.h"

#include <QString>

namespace vindaro::copy {

// What the block loop needs of the window that runs it, beyond questions, log and yield.
// Flags of CopyState are set by the engine itself; these calls switch controls and labels only.
class CopyHost : public platform::Host
{
public:
    virtual void enterCopyingState() = 0; // controls disabled, pause/cancel enabled, timer on
    virtual void enterIdleState() = 0; // controls enabled, timer off, progress bar cleared, figures kept
    virtual void resetAfterCancel() = 0; // as idle, and the five figures back to their idle texts
    virtual void stopTimer() = 0;
    // After each block, with the position of that block before it advances.
    virtual void updateProgress(qint64 position, qint64 sourceLength) = 0;
    virtual void showCopiedBytes(qint64 bytes) = 0; // the copied figure at the finish
    // The estimated-total and throughput figures as shown, for the finish entry of the log.
    virtual QString estimatedText() = 0;
    virtual QString throughputText() = 0;

    // The choice dialogs of an existing destination.
    // Continue copy: 1 start over, 2 continue from the resume record, anything else gives up.
    virtual int askContinueCopy(const QString& source, const QString& destination) = 0;
    // Existing file: 1 overwrite, 2 append, 3 merge, 4 delete, 5 copy under `newName` (a file name without
    // folder), anything else gives up.
    virtual int askExistingFile(const QString& source, const QString& destination, QString& newName) = 0;
    // A paused copy could not go on (too little room): pause/continue shows "继续复制[&P]" again, cancel is
    // disabled and the destination can be changed.
    virtual void stayPaused() = 0;
};

} // namespace vindaro::copy
