// The main window over real files, for the test of quitting while a read hangs:
//   frmcopy_quit_probe SOURCE DESTINATION HANG_OFFSET
// Starts the copy; the read at HANG_OFFSET never returns. Once it hangs the probe presses pause, prints
// "QUIT", closes the window answering Yes, and ends the way the program does.
#include "FrmCopyRig.h"
#include "copy/FileResumeStore.h"
#include "platform/linux/LocalFileLayer.h"

#include <QApplication>

#include <atomic>
#include <cstdio>
#include <unistd.h>

using namespace vindaro;
namespace fake = vindaro::testing;

namespace {

std::atomic<bool> g_hanging{false};

class HangingFile final : public platform::RandomAccessFile
{
public:
    HangingFile(std::unique_ptr<platform::RandomAccessFile> inner, qint64 hangAt)
        : m_inner(std::move(inner))
        , m_hangAt(hangAt)
    {
    }
    platform::IoResult readAt(qint64 offset, char* data, qint64 maxBytes) override
    {
        if (offset == m_hangAt) {
            g_hanging = true;
            for (;;)
                ::pause(); // a sector the drive never gives up on
        }
        return m_inner->readAt(offset, data, maxBytes);
    }
    platform::IoResult writeAt(qint64 offset, const char* data, qint64 bytes) override
    {
        return m_inner->writeAt(offset, data, bytes);
    }
    platform::IoResult sync() override { return m_inner->sync(); }
    platform::IoResult close() override { return m_inner->close(); }

private:
    std::unique_ptr<platform::RandomAccessFile> m_inner;
    qint64 m_hangAt;
};

class HangingLayer final : public platform::LocalFileLayer
{
public:
    qint64 hangAt = -1;
    std::unique_ptr<platform::RandomAccessFile> openForReading(
        const QString& path, platform::IoResult& result) override
    {
        auto inner = LocalFileLayer::openForReading(path, result);
        return inner ? std::make_unique<HangingFile>(std::move(inner), hangAt) : nullptr;
    }
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    if (argc != 4)
        return 64;
    HangingLayer files;
    files.hangAt = QByteArray(argv[3]).toLongLong();
    copy::FileResumeStore store;
    fake::CdRomDrives drives;
    fake::ScriptedBoxes boxes;
    boxes.answers = {platform::kAnswerYes}; // "真的要退出Vindaro吗？"
    fake::ScriptedChoices choices;
    oplog::OperationLog log;
    fake::FakeVolumes volumes;
    fake::FakeShell shell;
    fake::ScriptedListPrompts prompts;
    fake::ScriptedBatchPrompts batchPrompts;
    app::FrmCopyServices services{files, store, drives, boxes, choices, log, volumes, shell,
        std::make_shared<fake::FakeOpticalDrives>()};
    services.prompter = &prompts;
    services.listDialogs = &prompts;
    services.batchPrompts = &batchPrompts;
    services.trayAvailable = [] { return false; };
    app::FrmCopy window(services);
    window.show();
    window.findChild<QComboBox*>(QStringLiteral("cmbFileCopy"))->setEditText(QString::fromLocal8Bit(argv[1]));
    window.findChild<QLineEdit*>(QStringLiteral("txtFileCopy"))->setText(QString::fromLocal8Bit(argv[2]));
    QTest::mouseClick(window.findChild<QPushButton*>(QStringLiteral("cmdStartCopy")), Qt::LeftButton);

    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &window, [&] {
        if (!g_hanging)
            return;
        poll.stop();
        QTest::mouseClick(window.findChild<QPushButton*>(QStringLiteral("cmdPauseCopy")), Qt::LeftButton);
        std::puts("QUIT");
        std::fflush(stdout);
        window.close();
    });
    poll.start(10);
    return app::exitStatusAfterRun(window, app.exec());
}
