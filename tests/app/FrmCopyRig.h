#pragma once

// The main window with every service faked: memory files for the copy, a scripted desktop, scripted
// questions and choosers, and a table of optical drives.
#include "app/BoxPresenter.h"
#include "app/CopyChoices.h"
#include "app/FrmCopy.h"
#include "copy/ui/FrmCopyAllFiles.h"
#include "fakes/FakeChangeMonitor.h"
#include "fakes/FakeCopyHost.h"
#include "fakes/FakeOpticalDrives.h"
#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "fakes/MemoryFileLayer.h"
#include "fakes/MemoryRescueMapStore.h"
#include "files/ListPrompts.h"
#include "oplog/OperationLog.h"
#include "platform/Volumes.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace vindaro::testing {

constexpr int kWaitMs = 10000;
inline const QString kSource = QStringLiteral("/media/cdrom/MPEGAV/AVSEQ01.DAT");
inline const QString kDestination = QStringLiteral("/home/user/video/a.dat");
inline const QString kDriveReport = QStringLiteral("光盘驱动器/dev/sr0还没有准备好\r\n");

class ScriptedBoxes final : public app::BoxPresenter
{
public:
    QList<platform::MessageBox> shown;
    QList<int> answers; // for Yes/No questions, in order; No once they run out
    std::function<void(const platform::MessageBox&)> onBox;

    int present(const platform::MessageBox& box, QWidget*) override
    {
        shown.append(box);
        if (onBox)
            onBox(box);
        if (box.buttons == platform::BoxButtons::Ok)
            return platform::kAnswerOk;
        return answers.isEmpty() ? platform::kAnswerNo : answers.takeFirst();
    }
};

class ScriptedChoices final : public app::CopyChoices
{
public:
    copy::ContinueChoice askContinueCopy(const QString&, const QString&, QWidget*) override
    {
        return copy::ContinueChoice::GiveUp;
    }
    copy::ExistingFileAnswer askExistingFile(const QString&, const QString&, QWidget*) override { return {}; }
};

// Every path is on a ready optical drive with room to spare.
class CdRomDrives final : public copy::DriveFacts
{
public:
    int driveType(const QString&) override { return platform::kDriveCdRom; }
    double freeBytes(const QString&) override { return 1e12; }
    bool driveIsReady(const QString&) override { return true; }
    QString driveName(const QString&) override { return QStringLiteral("/media/cdrom"); }
    bool isFloppy(const QString&) override { return false; }
};

// The file list's questions (cancel unless scripted) and choosers.
class ScriptedListPrompts final : public files::Prompter, public files::ListDialogs
{
public:
    QList<int> answers;
    QStringList asked;
    QStringList openAnswer; // what the open dialog answers; empty = cancelled

    int askYesNoCancel(const QString& text, const QString&) override
    {
        asked << text;
        return answers.isEmpty() ? files::kAnswerCancel : answers.takeFirst();
    }
    void notify(const QString& text, const QString&) override { asked << text; }
    QStringList chooseFilesToOpen(QWidget*) override { return openAnswer; }
    std::optional<files::FolderChoice> chooseFolderToAdd(QWidget*) override { return std::nullopt; }
};

// The batch copy's questions: the folder is scripted, boxes are acknowledged, conflicts end the batch.
class ScriptedBatchPrompts final : public copy::BatchPrompts
{
public:
    QString folder; // empty = the chooser was cancelled
    bool sameFolder = false; // the chooser's same-folder option
    std::function<void()> onChooseFolder;
    QList<platform::MessageBox> shown;

    int showBox(const platform::MessageBox& box, QWidget*) override
    {
        shown << box;
        return box.buttons == platform::BoxButtons::Ok ? platform::kAnswerOk : platform::kAnswerNo;
    }
    QString chooseFolder(bool& copyToSameDir, QWidget*) override
    {
        copyToSameDir = sameFolder;
        if (onChooseFolder)
            onChooseFolder();
        return folder;
    }
    copy::ContinueChoice askContinueCopy(const QString&, const QString&, QWidget*) override
    {
        return copy::ContinueChoice::GiveUp;
    }
    copy::BatchExistingChoice askBatchExistingFile(const QString&, const QString&, QWidget*) override
    {
        return copy::BatchExistingChoice::EndBatch;
    }
};

// The run's operation log, its entries readable without their stamps.
struct RigLog : oplog::OperationLog
{
    QStringList entries() const
    {
        QString text = runningText();
        QStringList found;
        if (text.endsWith(QStringLiteral("\r\n")))
            text.chop(2);
        if (text.isEmpty())
            return found;
        // An entry's continuation lines start with blanks, the next entry with its stamp.
        for (const QString& entry : text.split(QStringLiteral("\r\n[")))
            found << entry.mid(entry.indexOf(QStringLiteral("] ")) + 2);
        return found;
    }
};

struct Rig
{
    MemoryFileLayer files;
    MemoryResumeStore store;
    MemoryRescueMapStore maps;
    CdRomDrives drives;
    ScriptedBoxes boxes;
    ScriptedChoices choices;
    RigLog log;
    FakeChangeMonitor changeMonitor;
    FakeVolumes volumes;
    FakeShell shell;
    std::shared_ptr<FakeOpticalDrives> opticalDrives = std::make_shared<FakeOpticalDrives>();
    ScriptedListPrompts listPrompts;
    ScriptedBatchPrompts batchPrompts;
    int second = 0; // the pinned clock's second of the minute
    app::FrmCopy frm{services()};
    QSignalSpy finished{&frm, &app::FrmCopy::copyJobFinished};

    app::FrmCopyServices services()
    {
        volumes.add(QStringLiteral("/"), platform::kDriveFixed, QStringLiteral("/dev/sda1"));
        app::FrmCopyServices s{files, store, drives, boxes, choices, log, volumes, shell, opticalDrives};
        s.prompter = &listPrompts;
        s.listDialogs = &listPrompts;
        s.batchPrompts = &batchPrompts;
        s.trayAvailable = [] { return false; }; // no notification area: the window minimises instead
        s.clockSecond = [this] { return second; };
        s.fileListText = kDriveReport;
        s.changeMonitor = &changeMonitor;
        s.maps = &maps;
        return s;
    }

    Rig()
    {
        EXPECT_EQ(combo()->currentText(), "光盘驱动器/dev/sr0还没有准备好"); // the drive report comes first
        frm.show();
    }
    // The source and destination of a single copy, typed in.
    void typePaths(const QString& source = kSource, const QString& destination = kDestination)
    {
        combo()->setEditText(source);
        text("txtFileCopy")->setText(destination);
    }
    template<typename T = QWidget> T* child(const char* name)
    {
        T* found = frm.findChild<T*>(QLatin1String(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    QLabel* label(const char* name) { return child<QLabel>(name); }
    QLineEdit* text(const char* name) { return child<QLineEdit>(name); }
    QComboBox* combo() { return child<QComboBox>("cmbFileCopy"); }
    QPushButton* button(const char* name) { return child<QPushButton>(name); }
    void click(const char* name) { QTest::mouseClick(child<QWidget>(name), Qt::LeftButton); }
    QTimer* timer() { return frm.findChild<QTimer*>(QStringLiteral("tmrTime")); }
    int waitForOutcome()
    {
        if (finished.isEmpty() && !finished.wait(kWaitMs))
            return -1;
        return finished.takeFirst().at(0).toInt();
    }
    QStringList figures()
    {
        return {label("lblYiFuZhi")->text(), label("lblZongJiHaoShi")->text(),
            label("lblShengYuShiJian")->text(), label("lblGuJiXiaoHao")->text(),
            label("lblShuJuLiuLiang")->text()};
    }
};

inline const QStringList kIdleFigures{QStringLiteral("0字节"), QStringLiteral("00:00:00"),
    QStringLiteral("00:00:00"), QStringLiteral("00:00:00"), QStringLiteral("0KB/秒")};

} // namespace vindaro::testing
