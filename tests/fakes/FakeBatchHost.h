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
    QList<copy::BatchExistingChoice>
        batchAnswers; // answers of the batch existing-file dialog; EndBatch when out
    int batchAsked = 0;
    QStringList shownFiles; // "from|to|count|total"
    bool animating = false;

    QString chooseBatchFolder(bool& copyToSameDir) override
    {
        copyToSameDir = sameDir;
        return folder;
    }
    copy::BatchExistingChoice askBatchExistingFile(const QString&, const QString&) override
    {
        ++batchAsked;
        return batchAnswers.isEmpty() ? copy::BatchExistingChoice::EndBatch : batchAnswers.takeFirst();
    }
    void startAnimation() override { animating = true; }
    void stopAnimation() override { animating = false; }
    void showFile(const QString& from, const QString& to, const QString& count, const QString& total) override
    {
        shownFiles << (QStringList{from, to, count, total}.join(QLatin1Char('|')));
    }

    int ask(const platform::MessageBox& question) override { return base.ask(question); }
    void notify(const platform::MessageBox& notice) override { base.notify(notice); }
    copy::ContinueChoice askContinueCopy(const QString& s, const QString& d) override
    {
        return base.askContinueCopy(s, d);
    }
    copy::ExistingFileAnswer askExistingFile(const QString& s, const QString& d) override
    {
        return base.askExistingFile(s, d);
    }
    void log(const QString& entry) override { base.log(entry); }
    void progress(qint64 position, qint64 length) override { base.progress(position, length); }
    void modeChanged(copy::CopyMode mode) override { base.modeChanged(mode); }
};

} // namespace vindaro::testing
