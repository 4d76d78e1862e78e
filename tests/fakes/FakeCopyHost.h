#pragma once

#include "copy/CopyHost.h"
#include "copy/ResumeRecord.h"

#include <QHash>
#include <QStringList>

#include <functional>

namespace vindaro::testing {

// Records every box, log entry and mode change of a copy, and answers questions from a script.
class FakeCopyHost final : public copy::CopyHost
{
public:
    QList<platform::MessageBox> boxes; // questions and notices, in order
    QStringList entries;
    QStringList switches; // "copying", "idle", "reset", "timer-off", "stay-paused"
    QList<qint64> progressPositions;
    qint64 copiedShown = -1; // the position of the last progress call that reached the source's length
    QList<int> answers; // answers to Yes/No questions, in order; kAnswerNo once they run out
    std::function<void()> onBlock; // a test acts "between blocks" here: after each block's progress
    std::function<void(const platform::MessageBox&)> onBox;
    int blocks = 0; // progress calls so far

    int ask(const platform::MessageBox& question) override
    {
        boxes.append(question);
        if (onBox)
            onBox(question);
        return answers.isEmpty() ? platform::kAnswerNo : answers.takeFirst();
    }
    void notify(const platform::MessageBox& notice) override
    {
        boxes.append(notice);
        if (onBox)
            onBox(notice);
    }
    void log(const QString& entry) override { entries.append(entry); }
    void progress(qint64 position, qint64 sourceLength) override
    {
        progressPositions.append(position);
        if (position == sourceLength)
            copiedShown = position;
        ++blocks;
        if (onBlock)
            onBlock();
    }
    void modeChanged(copy::CopyMode mode) override
    {
        switch (mode) {
        case copy::CopyMode::Copying:
            switches.append(QStringLiteral("copying"));
            break;
        case copy::CopyMode::Stopped:
            switches.append(QStringLiteral("timer-off"));
            break;
        case copy::CopyMode::Idle:
            switches.append(QStringLiteral("idle"));
            break;
        case copy::CopyMode::IdleAfterCancel:
            switches.append(QStringLiteral("reset"));
            break;
        case copy::CopyMode::StayPaused:
            switches.append(QStringLiteral("stay-paused"));
            break;
        }
    }

    QList<copy::ContinueChoice> continueAnswers; // answers of the continue-copy dialog; GiveUp when out
    QList<copy::ExistingFileChoice> existingAnswers; // answers of the existing-file dialog; GiveUp when out
    QString newName; // the name typed for Rename
    QStringList dialogs; // "continue" / "existing", in the order asked
    copy::ContinueChoice askContinueCopy(const QString&, const QString&) override
    {
        dialogs.append(QStringLiteral("continue"));
        return continueAnswers.isEmpty() ? copy::ContinueChoice::GiveUp : continueAnswers.takeFirst();
    }
    copy::ExistingFileAnswer askExistingFile(const QString&, const QString&) override
    {
        dialogs.append(QStringLiteral("existing"));
        return {existingAnswers.isEmpty() ? copy::ExistingFileChoice::GiveUp : existingAnswers.takeFirst(),
            newName};
    }
};

// Resume records kept in memory.
class MemoryResumeStore final : public copy::ResumeStore
{
public:
    QHash<QString, copy::ResumeRecord> records;
    bool load(const QString& destination, copy::ResumeRecord& record) override
    {
        auto it = records.constFind(destination);
        if (it == records.constEnd())
            return false;
        record = *it;
        return true;
    }
    bool save(const QString& destination, const copy::ResumeRecord& record) override
    {
        records.insert(destination, record);
        return true;
    }
    void remove(const QString& destination) override { records.remove(destination); }
};

} // namespace vindaro::testing
