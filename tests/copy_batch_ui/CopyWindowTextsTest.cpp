// Every caption of the copy's windows and dialogs, in each state their texts depend on, checked once against
// a golden file (VINDARO_UPDATE_GOLDEN=1 writes it anew: review the diff). The other tests check wiring.
#include "copy/VolumeDriveFacts.h"
#include "copy/ui/BatchExistingFileDialog.h"
#include "copy/ui/ContinueCopyDialog.h"
#include "copy/ui/ExistingFileDialog.h"
#include "copy/ui/FrmChooseDialog.h"
#include "copy/ui/FrmCopyAllFiles.h"
#include "copy_store/WholeFile.h"
#include "fakes/FakeCopyHost.h"
#include "fakes/FakeVolumes.h"
#include "fakes/MemoryFileLayer.h"
#include "info/GoldenText.h"

#include <QAbstractButton>
#include <QFile>
#include <QLabel>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vindaro::copy;

namespace {

// A file of `bytes` bytes, last modified at a fixed time, as the dialogs show it.
bool writeFile(const QString& path, qsizetype bytes)
{
    QFile file(path);
    return vindaro::testing::writeWholeFile(path, QByteArray(bytes, 'v')) && file.open(QIODevice::Append)
        && file.setFileTime(QDateTime(QDate(2024, 5, 1), QTime(10, 0)), QFileDevice::FileModificationTime);
}

class CopyWindowTexts : public ::testing::Test
{
protected:
    // A window's title, then the texts and tooltips of its labels and buttons in order.
    void add(const QString& name, QWidget& window)
    {
        m_golden.add(name + QStringLiteral(" title"), window.windowTitle());
        int n = 0;
        for (QWidget* widget : window.findChildren<QWidget*>()) {
            const auto* label = qobject_cast<QLabel*>(widget);
            const auto* button = qobject_cast<QAbstractButton*>(widget);
            const QString text = label ? label->text() : button ? button->text() : QString();
            if ((text.isEmpty() && widget->toolTip().isEmpty()) || widget->isHidden())
                continue;
            const QString key = name + QLatin1Char(' ')
                + (widget->objectName().isEmpty() ? QString::number(++n) : widget->objectName());
            if (!text.isEmpty())
                addText(key, text);
            if (!widget->toolTip().isEmpty())
                addText(key + QStringLiteral(" tooltip"), widget->toolTip());
        }
    }
    void addText(const QString& name, const QString& text)
    {
        m_golden.add(name, QString(text).replace(m_dir.path(), QStringLiteral("DIR")));
    }
    QString path(const char* name) const { return m_dir.filePath(QLatin1String(name)); }

    vindaro::testing::GoldenText m_golden;
    QTemporaryDir m_dir;
};

TEST_F(CopyWindowTexts, EveryCaptionIsTheGoldenOne)
{
    vindaro::testing::MemoryFileLayer files;
    vindaro::testing::MemoryResumeStore store;
    vindaro::testing::FakeVolumes volumes;
    VolumeDriveFacts drives(volumes);
    DialogBatchPrompts prompts;
    FrmCopyAllFiles batchWindow(
        FrmCopyAllFilesServices{files, store, drives, prompts, {}, [] { return QTime(10, 0); }});
    add(QStringLiteral("batch window"), batchWindow);

    FrmChooseDialog choose;
    add(QStringLiteral("choose"), choose);
    ASSERT_TRUE(writeFile(path("src.dat"), 100));
    for (const QString& folder : {QStringLiteral("out/videos"), path("src.dat")})
        addText(QStringLiteral("choose problem"), FrmChooseDialog::folderProblem(folder));

    ASSERT_TRUE(writeFile(path("dest.dat"), 50));
    ContinueCopyDialog continueDialog;
    ResumeRecord record;
    record.continuePosition = 5'000'000'000;
    record.elapsedSeconds = 3725;
    continueDialog.setRecord(record);
    continueDialog.setFiles(path("src.dat"), path("dest.dat"));
    add(QStringLiteral("continue"), continueDialog);

    ExistingFileDialog existing;
    existing.setFiles(path("src.dat"), path("dest.dat"));
    add(QStringLiteral("existing smaller"), existing);
    ASSERT_TRUE(writeFile(path("dest.dat"), 1234));
    existing.setFiles(path("src.dat"), path("dest.dat"));
    addText(QStringLiteral("existing bigger"),
        existing.findChild<QLabel*>(QStringLiteral("sizeComparisonLabel"))->text());
    for (const QString& name : {QStringLiteral(" "), QStringLiteral("a/b"), QStringLiteral(".."),
             QString(256, QLatin1Char('n')), QStringLiteral("src.dat")})
        addText(QStringLiteral("name problem"), newNameProblem(name, m_dir.path()));

    BatchExistingFileDialog batch;
    batch.setFiles(path("src.dat"), path("dest.dat"));
    add(QStringLiteral("batch"), batch);
    ASSERT_TRUE(writeFile(path("N[01]dest.dat"), 1));
    batch.setFiles(path("src.dat"), path("dest.dat"));
    addText(QStringLiteral("batch N[01] taken"),
        batch.findChild<QLabel*>(QStringLiteral("keepBothHintLabel"))->text());
    ASSERT_TRUE(writeFile(path("dest.dat"), 100));
    batch.setFiles(path("src.dat"), path("dest.dat"));
    for (const char* label : {"keepBothHintLabel", "sizeComparisonLabel"})
        addText(QStringLiteral("batch same size"), batch.findChild<QLabel*>(QLatin1String(label))->text());
    m_golden.check(QStringLiteral(VINDARO_GOLDEN_DIR "/copy_windows.txt"));
}

} // namespace
