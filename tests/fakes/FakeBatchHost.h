#pragma once

#include "copy/BatchCopier.h"
#include "fakes/FakeCopyHost.h"

namespace vindaro::testing {

// A batch window that answers from a script and records what it was told.
class FakeBatchHost final : public copy::BatchHost
{
public:
    FakeCopyHost base; // boxes, entries, switches and the single-copy dialogs
    QString folder = QStringLiteral("/home/u/out");
    bool sameDir = true;
    QList<int> batchAnswers; // answers of the batch existing-file dialog; 0 (end) when out
    int batchAsked = 0;
    QStringList shownFiles; // "from|to|count|total"
    bool animating = false;

    QString chooseBatchFolder(bool& copyToSameDir) override
    {
        copyToSameDir = sameDir;
        return folder;
    }
    int askBatchExistingFile(const QString&, const QString&) override
    {
        ++batchAsked;
        return batchAnswers.isEmpty() ? 0 : batchAnswers.takeFirst();
    }
    void startAnimation() override { animating = true; }
    void stopAnimation() override { animating = false; }
    void showFile(const QString& from, const QString& to, const QString& count, const QString& total) override
    {
        shownFiles << (QStringList{from, to, count, total}.join(QLatin1Char('|')));
    }

    int showBox(const platform::MessageBox& box) override { return base.showBox(box); }
    void log(const QString& entry) override { base.log(entry); }
    void yield() override { base.yield(); }
    void enterCopyingState() override { base.enterCopyingState(); }
    void enterIdleState() override { base.enterIdleState(); }
    void resetAfterCancel() override { base.resetAfterCancel(); }
    void stopTimer() override { base.stopTimer(); }
    void updateProgress(qint64 position, qint64 length) override { base.updateProgress(position, length); }
    void showCopiedBytes(qint64 bytes) override { base.showCopiedBytes(bytes); }
    QString estimatedText() override { return base.estimatedText(); }
    QString throughputText() override { return base.throughputText(); }
    int askContinueCopy(const QString& s, const QString& d) override { return base.askContinueCopy(s, d); }
    int askExistingFile(const QString& s, const QString& d, QString& n) override
    {
        return base.askExistingFile(s, d, n);
    }
    void stayPaused() override { base.stayPaused(); }
};

} // namespace vindaro::testing
