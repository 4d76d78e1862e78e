// The file list drives the media windows: the allow-preview mark, a video entry, delete, rename and the
// file menu's play entry, through a real list controller and menu.
#include "fakes/FakeMediaBackend.h"
#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "files/FileSystem.h"
#include "files/ui/FileListController.h"
#include "files/ui/FileMenu.h"
#include "media/MediaSession.h"
#include "media/ui/MediaWindows.h"
#include "media/ui/frmPlaying.h"
#include "media/ui/frmPrevVideo.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using namespace vindaro;
using namespace vindaro::media;
using namespace vindaro::testing;

namespace {

constexpr int kWaitMs = 5000;

class CancellingPrompts final : public files::Prompter, public files::ListDialogs
{
public:
    int askYesNoCancel(const QString&, const QString&) override { return files::kAnswerCancel; }
    void notify(const QString&, const QString&) override { }
    QStringList chooseFilesToOpen(QWidget*) override { return {}; }
    std::optional<files::FolderChoice> chooseFolderToAdd(QWidget*) override { return std::nullopt; }
};

struct WiringRig
{
    QTemporaryDir folder;
    FakeVolumes volumes;
    FakeShell shell;
    files::FileSystem fs{volumes, shell};
    CancellingPrompts prompts;
    QWidget window;
    files::FileListController list{fs, prompts, prompts, &window};
    QList<FakeMediaBackend*> backends; // one per window made, owned by it
    MediaWindows media{fs, &window, [this] {
                           backends << new FakeMediaBackend;
                           return backends.last();
                       }};

    WiringRig()
    {
        volumes.add(QStringLiteral("/"), platform::kDriveFixed, QStringLiteral("/dev/sda1"));
        media.attach(list);
    }
    QString file(const char* name)
    {
        const QString path = folder.filePath(QString::fromLatin1(name));
        QFile out(path);
        if (out.open(QIODevice::WriteOnly))
            out.resize(4096); // large enough for the list to hand it over
        return path;
    }
    void trigger(const char* entry) { list.menu()->entry(QString::fromLatin1(entry))->trigger(); }
};

TEST(MediaWiring, PreviewFollowsTheListAndDeleteAndRenameStopAndCloseIt)
{
    WiringRig rig;
    rig.trigger("mnuPreview");
    const QString video = rig.file("AVSEQ01.DAT");
    rig.list.model().AddDroppedFiles({video});
    ASSERT_TRUE(QTest::qWaitFor([&] { return rig.media.preview() != nullptr; }, kWaitMs));
    FakeMediaBackend* backend = rig.backends.first();
    EXPECT_EQ(backend->calls, QStringList{QStringLiteral("open:") + video});
    emit backend->loaded(10, true, true);
    EXPECT_EQ(backend->calls.last(), QStringLiteral("play"));

    // Delete stops the preview before it asks (and the question is cancelled here).
    rig.trigger("mnuDelSeletedItem");
    EXPECT_EQ(backend->calls.last(), QStringLiteral("close"));
    EXPECT_TRUE(QFile::exists(video));

    // Rename closes it before the rename dialog shows, which is cancelled at once.
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [] {
        if (QWidget* dialog = QApplication::activeModalWidget())
            dialog->close();
    });
    closer.start(10);
    rig.trigger("mnuReName");
    EXPECT_TRUE(QTest::qWaitFor([&] { return rig.media.preview() == nullptr; }, kWaitMs));
}

TEST(MediaWiring, PlayEntryOpensTheCurrentFileInThePlayerWithoutPlaying)
{
    WiringRig rig;
    EXPECT_FALSE(rig.list.menu()->entry(QStringLiteral("mnuPlayFile"))->isEnabled());
    const QString song = rig.file("song.mp3");
    rig.list.model().AddDroppedFiles({song});
    rig.trigger("mnuPlayFile");
    ASSERT_NE(rig.media.player(), nullptr);
    EXPECT_TRUE(rig.media.player()->isVisible());
    emit rig.backends.first()->loaded(200, false, true);
    EXPECT_EQ(rig.backends.first()->calls, QStringList{QStringLiteral("open:") + song});
    EXPECT_EQ(rig.media.player()->session().state(), MediaState::Ready);
    EXPECT_EQ(rig.media.preview(), nullptr); // preview not allowed
}

} // namespace
