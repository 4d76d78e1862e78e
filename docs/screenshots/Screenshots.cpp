// Takes the README's screenshots of the main window: one with a list of Video CD files, one while a copy
// runs. Run by take.sh under xvfb-run, with a temporary home:
//   vindaro_screenshots DEMO_FOLDER OUTPUT_FOLDER
// DEMO_FOLDER/cdrom/MPEGAV holds the listed tracks (sparse files), DEMO_FOLDER/Videos receives the copy.
#include "app/BoxPresenter.h"
#include "app/CopyChoices.h"
#include "app/FrmCopy.h"
#include "app/QtTranslations.h"
#include "copy/FileResumeStore.h"
#include "copy/RescueMapStore.h"
#include "copy/VolumeDriveFacts.h"
#include "drives/TrayJob.h"
#include "files/FileListModel.h"
#include "files/ui/FileListController.h"
#include "oplog/OperationLog.h"
#include "platform/linux/LinuxVolumes.h"
#include "platform/linux/LocalFileLayer.h"
#include "platform/linux/ui/LinuxShell.h"
#include "sysinfo/ProgramInfo.h"
#include "sysinfo/ui/ProgramIcon.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>

namespace {

constexpr qint64 kReadBytesPerSecond = 40 * 1024 * 1024; // a 40x drive, so the copy is still running

// Reads at the pace of an optical drive (on the copy's worker thread; the window stays responsive), so
// the copy is caught while it runs whatever the machine; two scratches fail their reads, so the picture of
// the rescue map has something to show.
class DrivePacedFile final : public vindaro::platform::RandomAccessFile
{
public:
    explicit DrivePacedFile(std::unique_ptr<vindaro::platform::RandomAccessFile> file)
        : m_file(std::move(file))
    {
    }
    vindaro::platform::IoResult readAt(qint64 offset, char* data, qint64 maxBytes) override
    {
        std::this_thread::sleep_for(std::chrono::microseconds(maxBytes * 1000000 / kReadBytesPerSecond));
        for (const qint64 scratch : {qint64(22) << 20, qint64(61) << 20}) {
            if (offset <= scratch && scratch < offset + maxBytes)
                return vindaro::platform::IoResult::failure(EIO, QStringLiteral("Input/output error"));
        }
        return m_file->readAt(offset, data, maxBytes);
    }
    vindaro::platform::IoResult writeAt(qint64 offset, const char* data, qint64 bytes) override
    {
        return m_file->writeAt(offset, data, bytes);
    }
    vindaro::platform::IoResult sync() override { return m_file->sync(); }
    vindaro::platform::IoResult close() override { return m_file->close(); }

private:
    std::unique_ptr<vindaro::platform::RandomAccessFile> m_file;
};

class DrivePacedFiles final : public vindaro::platform::LocalFileLayer
{
public:
    std::unique_ptr<vindaro::platform::RandomAccessFile> openForReading(
        const QString& path, vindaro::platform::IoResult& result) override
    {
        auto file = LocalFileLayer::openForReading(path, result);
        return file ? std::make_unique<DrivePacedFile>(std::move(file)) : nullptr;
    }
};

// No box may stop the screenshots: each is printed and answered No (or OK).
class PrintedBoxes final : public vindaro::app::BoxPresenter
{
public:
    int present(const vindaro::platform::MessageBox& box, QWidget*) override
    {
        std::fprintf(stderr, "box: %s\n", qPrintable(box.text));
        return box.buttons == vindaro::platform::BoxButtons::YesNo ? vindaro::platform::kAnswerNo
                                                                   : vindaro::platform::kAnswerOk;
    }
};

bool save(QWidget& window, const QString& path)
{
    const bool saved = window.grab().save(path, "PNG", 0); // quality 0: the smallest file
    std::printf("%s %s\n", saved ? "wrote" : "could not write", qPrintable(path));
    return saved;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: vindaro_screenshots DEMO_FOLDER OUTPUT_FOLDER\n");
        return 2;
    }
    QApplication::setApplicationName(QStringLiteral("Vindaro"));
    QApplication::setWindowIcon(vindaro::sysinfo::ui::programIcon());
    vindaro::app::installFontSubstitutions();
    vindaro::app::installQtTranslations(app);
    const QString demo = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    const QString output = QString::fromLocal8Bit(argv[2]);

    // The tracks of a Video CD, as large as real ones; sparse, so they take no room.
    const QString tracks = demo + QStringLiteral("/cdrom/MPEGAV");
    QDir().mkpath(tracks);
    QDir().mkpath(demo + QStringLiteral("/Videos"));
    QStringList listed;
    const qint64 sizes[] = {734003200, 91750400, 120586240, 65011712};
    for (int i = 0; i < 4; ++i) {
        QFile track(tracks + QStringLiteral("/AVSEQ%1.DAT").arg(i + 1, 2, 10, QLatin1Char('0')));
        if (!track.open(QIODevice::WriteOnly) || !track.resize(sizes[i]))
            return 1;
        listed << track.fileName();
    }

    DrivePacedFiles files;
    vindaro::platform::LinuxVolumes volumes;
    vindaro::platform::LinuxShell shell;
    vindaro::copy::FileResumeStore resumeStore;
    vindaro::copy::VolumeDriveFacts drives(volumes);
    PrintedBoxes boxes;
    vindaro::app::DialogCopyChoices choices(&resumeStore);
    vindaro::oplog::OperationLog log;
    vindaro::copy::FileRescueMapStore maps(vindaro::sysinfo::versionLine(QStringLiteral("Vindaro")));
    const auto opticalDrives = vindaro::drives::makeSystemOpticalDrives();
    vindaro::app::FrmCopyServices services{
        files, resumeStore, drives, boxes, choices, log, volumes, shell, opticalDrives};
    services.maps = &maps;
    vindaro::app::FrmCopy window(services);
    window.move(0, 0);
    window.show();
    if (!QTest::qWaitForWindowExposed(&window))
        return 1;

    window.findChild<QLineEdit*>(QStringLiteral("txtFileCopy"))
        ->setText(demo + QStringLiteral("/Videos/AVSEQ01.DAT"));
    window.fileList().model().AddDroppedFiles(listed);
    QTest::qWait(300); // the list's icons and facts
    bool ok = save(window, output + QStringLiteral("/main-window.png"));

    // The first track, copied long enough for the once-a-second figures to have moved twice.
    window.findChild<QPushButton*>(QStringLiteral("cmdStartCopy"))->click();
    QTest::qWait(2600);
    if (window.mode() != vindaro::app::FrmCopy::Mode::Copying) {
        std::fprintf(stderr, "the copy was not running when the screenshot was due\n");
        ok = false;
    }
    ok = save(window, output + QStringLiteral("/copy-in-progress.png")) && ok;
    window.findChild<QPushButton*>(QStringLiteral("cmdPauseCopy"))->click();
    if (!QTest::qWaitFor([&window] { return window.mode() != vindaro::app::FrmCopy::Mode::Copying; }, 10000))
        std::fprintf(stderr, "the copy did not pause\n");
    return ok ? 0 : 1;
}
