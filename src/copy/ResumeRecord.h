#pragma once

#include <QString>
#include <QtGlobal>

namespace vindaro::copy {

// Where an interrupted copy to one destination can go on from.
struct ResumeRecord
{
    qint64 continuePosition = 0; // the destination's length when saved: becomes `position`
    qint64 copiedPosition = 0; // `position` when saved
    int estimatedSeconds = 0;
    int elapsedSeconds = 0; // becomes `elapsedSeconds` when continuing
    int speedKBps = 0;
    // A merge goes on as a merge: `continuePosition` is then the next position to read in the source and
    // `writePosition` the next position to write in the destination (which is not the source's position).
    bool merge = false;
    qint64 writePosition = 0;

    friend bool operator==(const ResumeRecord& a, const ResumeRecord& b)
    {
        return a.continuePosition == b.continuePosition && a.copiedPosition == b.copiedPosition
            && a.estimatedSeconds == b.estimatedSeconds && a.elapsedSeconds == b.elapsedSeconds
            && a.speedKBps == b.speedKBps && a.merge == b.merge && a.writePosition == b.writePosition;
    }
};

// One record per destination path.
class ResumeStore
{
public:
    virtual ~ResumeStore() = default;
    // True, with the record filled, when one exists for the path.
    virtual bool load(const QString& destination, ResumeRecord& record) = 0;
    virtual bool save(const QString& destination, const ResumeRecord& record) = 0;
    virtual void remove(const QString& destination) = 0;
};

// Rounds to the nearest whole number, ties to even (2.5 -> 2, 3.5 -> 4).
qint64 roundHalfEven(double value);

// The record saved for a destination of `destinationLength` bytes when the copy stopped at `position`.
// Estimated and speed figures are 0 when no second has been counted yet.
ResumeRecord makeResumeRecord(
    qint64 destinationLength, qint64 position, qint64 sourceLength, int elapsedSeconds);

} // namespace vindaro::copy
