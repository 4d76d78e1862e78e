#pragma once

#include "platform/Host.h"

#include <QString>

namespace vindaro::copy {

// The continue-copy dialog: a destination with a resume record.
enum class ContinueChoice
{
    GiveUp,
    StartOver, // overwrite the destination and copy from the first byte
    Continue, // go on from the record
};

// The existing-file dialog: a destination without a resume record.
enum class ExistingFileChoice
{
    GiveUp,
    Overwrite,
    Append, // go on where the destination ends
    Merge, // the whole source behind the destination's bytes
    Delete,
    Rename,
};

struct ExistingFileAnswer
{
    ExistingFileChoice choice = ExistingFileChoice::GiveUp;
    QString newName; // a file name without folder; only for Rename
};

// The dialogs answer with the codes of their buttons: continue-copy 1 start over, 2 continue; existing-file
// 1 overwrite, 2 append, 3 merge, 4 delete, 5 new name; anything else gives up.
ContinueChoice continueChoiceFromCode(int code);
ExistingFileChoice existingFileChoiceFromCode(int code);

// What the engine tells whoever runs it about the copy. The engine sets CopyState's flags itself; the
// host follows with its controls and its clock.
enum class CopyMode
{
    Copying, // a copy starts or goes on: controls off, pause and cancel on, the clock runs
    Stopped, // the loop has stopped (a pause, a cancel, a batch's failure): the clock stops
    Idle, // the copy is over: controls on, the clock off, the bar cleared, the figures kept
    IdleAfterCancel, // as Idle, and the figures back to their idle texts
    StayPaused, // a paused copy cannot go on (too little room): still paused, the destination may change
};

// What the block loop needs of whoever runs it: questions, notices, log entries, progress and one mode
// change. Called on the thread the engine runs on.
class CopyHost
{
public:
    virtual ~CopyHost() = default;
    // A Yes/No question; answers platform::kAnswerYes or kAnswerNo.
    virtual int ask(const platform::MessageBox& question) = 0;
    // A notice or failure box with one button.
    virtual void notify(const platform::MessageBox& notice) = 0;
    virtual ContinueChoice askContinueCopy(const QString& source, const QString& destination) = 0;
    virtual ExistingFileAnswer askExistingFile(const QString& source, const QString& destination) = 0;
    // One entry for the operation log.
    virtual void log(const QString& entry) = 0;
    // After each block with the position of that block before it advances; at the finish with the
    // source's length.
    virtual void progress(qint64 position, qint64 sourceLength) = 0;
    virtual void modeChanged(CopyMode mode) = 0;
};

} // namespace vindaro::copy
