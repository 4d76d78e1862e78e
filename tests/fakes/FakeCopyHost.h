#pragma once

#include "copy/CopyHost.h"
#include "copy/ResumeRecord.h"

#include <QHash>
#include <QStringList>

#include <functional>

namespace vindaro::testing {

// Records every box, log entry and state switch of a copy, and answers questions from a script.
class FakeCopyHost final : public copy::CopyHost
{
public:
    QList<platform::MessageBox> boxes;
    QStringList entries;
    QStringList switches; // "copying", "idle", "reset", "timer-off"
    QList<qint64> progressPositions;
    qint64 copiedShown = -1;
    QList<int> answers; // answers to Yes/No questions, in order; kAnswerNo once they run out
    std::function<void()> onYield; // a test acts "between blocks" here
    std::function<void(const platform::MessageBox&)> onBox;
    int yields = 0;

    int showBox(const platform::MessageBox& box) override
    {
        boxes.append(box);
        if (onBox)
            onBox(box);
        if (box.buttons == platform::BoxButtons::Ok)
            return platform::kAnswerOk;
        return answers.isEmpty() ? platform::kAnswerNo : answers.takeFirst();
    }
    void log(const QString& entry) override { entries.append(entry); }
    void yield() override
    {
        ++yields;
        if (onYield)
            onYield();
    }
    void enterCopyingState() override { switches.append(QStringLiteral("copying")); }
    void enterIdleState() override { switches.append(QStringLiteral("idle")); }
    void resetAfterCancel() override { switches.append(QStringLiteral("reset")); }
    void stopTimer() override { switches.append(QStringLiteral("timer-off")); }
    void updateProgress(qint64 position, qint64) override { progressPositions.append(position); }
    void showCopiedBytes(qint64 bytes) override { copiedShown = bytes; }
    QString estimatedText() override { return QStringLiteral("00:00:09"); }
    QString throughputText() override { return QStringLiteral("2,048KB/秒"); }

    QList<int> continueAnswers; // answers of the continue-copy dialog, in order; 0 (give up) when out
    QList<int> existingAnswers; // answers of the existing-file dialog
    QString newName; // the name typed for choice 5
    QStringList dialogs; // "continue" / "existing", in the order asked
    int askContinueCopy(const QString&, const QString&) override
    {
        dialogs.append(QStringLiteral("continue"));
        return continueAnswers.isEmpty() ? 0 : continueAnswers.takeFirst();
    }
    int askExistingFile(const QString&, const QString&, QString& name) override
    {
        dialogs.append(QStringLiteral("existing"));
        name = newName;
        return existingAnswers.isEmpty() ? 0 : existingAnswers.takeFirst();
    }
    void stayPaused() override { switches.append(QStringLiteral("stay-paused")); }
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
