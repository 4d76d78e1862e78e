// The media windows wired to their state and to the file list, on a backend the test plays: a press, a drag
// or a menu entry reaches the backend, the backend's answers reach the labels, the bar and the picture area.
// The state itself is tested below the windows, the real backend in QtMediaBackendTest.
#include "media/ui/MediaWindows.h"
#include "fakes/FakeMediaBackend.h"
#include "files/ui/FileListController.h"
#include "files/ui/FileMenu.h"
#include "files_list/ListFakes.h"
#include "media/MediaSession.h"
#include "media/MediaTexts.h"
#include "media/ui/MediaWindowParts.h"
#include "media/ui/VideoArea.h"
#include "media/ui/frmPlaying.h"
#include "media/ui/frmPrevVideo.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QSlider>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using namespace vindaro;
using namespace vindaro::media;
using namespace vindaro::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int kWaitMs = 5000;

template<typename T> T* child(QWidget* window, const char* name)
{
    T* found = window->findChild<T*>(QString::fromLatin1(name));
    EXPECT_TRUE(found) << name;
    return found;
}

QString labelText(QWidget* window, const char* name)
{
    return child<QLabel>(window, name)->text();
}

QStringList lastTwo(const QStringList& calls)
{
    return calls.mid(calls.size() - 2);
}

TEST(FrmPlaying, ButtonSliderAndLabelsFollowTheMedia)
{
    ListWorld world;
    auto* backend = new FakeMediaBackend; // the window's once handed over
    frmPlaying player(world.fs, nullptr, backend);
    player.show();
    auto* area = child<VideoArea>(&player, "picVideo");
    auto* button = child<ControlButton>(&player, "picMediaControlButton");
    auto* slider = child<QSlider>(&player, "sldProgress");
    // A file the backend cannot render keeps only its facts.
    const QString broken = world.file(u"broken.avi"_s, 4096);
    player.OpenMediaFile(broken);
    emit backend->failed();
    EXPECT_EQ(area->lines(), playerFactsLines(readFileFacts(world.fs, broken)));
    EXPECT_TRUE(labelText(&player, "lblTotalTime").isEmpty());
    EXPECT_FALSE(button->look().playActive);

    const QString path = world.file(u"clip.dat"_s, 1023801);
    player.OpenMediaFile(path);
    EXPECT_EQ(area->lines(), playerFactsLines(readFileFacts(world.fs, path)));
    EXPECT_EQ(backend->calls.last(), u"open:"_s + path);
    emit backend->loaded(3725.6, true, true);
    emit backend->pictureSizeKnown(QSize(352, 288));
    EXPECT_EQ(labelText(&player, "lblTotalTime"), timeText(3725.6));
    EXPECT_EQ(labelText(&player, "lblTotalLength"), videoLengthText(3725.6, QSize(352, 288)));
    EXPECT_EQ(slider->maximum(), 3725);

    // The play half starts; the timer then shows the position; the stop half pauses.
    const QPoint playHalf(button->width() / 4, button->height() / 2);
    QTest::mouseClick(button, Qt::LeftButton, {}, playHalf);
    EXPECT_EQ(backend->calls.last(), u"play"_s);
    EXPECT_TRUE(button->look().stopActive);
    backend->position = 65.5;
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return labelText(&player, "lblCurrentTime") == timeText(65.5); }, kWaitMs));
    EXPECT_EQ(slider->value(), 65);
    EXPECT_EQ(labelText(&player, "lblCurrentPosition"), secondsText(65.5));
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(button->width() * 3 / 4, button->height() / 2));
    EXPECT_EQ(backend->calls.last(), u"pause"_s);
    EXPECT_FALSE(child<QTimer>(&player, "tmrTime")->isActive());

    // A page step of the user's is where the next play starts.
    slider->triggerAction(QAbstractSlider::SliderPageStepAdd);
    QCoreApplication::processEvents();
    QTest::mouseClick(button, Qt::LeftButton, {}, playHalf);
    EXPECT_EQ(lastTwo(backend->calls), (QStringList{u"seek:75"_s, u"play"_s}));

    // At the end the slider goes home and both icons turn grey.
    emit backend->ended();
    EXPECT_EQ(slider->value(), 0);
    EXPECT_FALSE(button->look().playActive);
    EXPECT_FALSE(button->look().stopActive);
}

TEST(FrmPrevVideo, StripBarAndIconFollowThePlay)
{
    ListWorld world;
    auto* backend = new FakeMediaBackend;
    frmPrevVideo preview(world.fs, nullptr, backend);
    preview.show();
    const QString path = world.file(u"AVSEQ01.DAT"_s, 2048);
    preview.OpenMediaFile(path);
    EXPECT_EQ(labelText(&preview, "lblMP3info"), previewFactsText(path, readFileFacts(world.fs, path)));
    preview.StartPlay();
    emit backend->loaded(60, true, true);
    EXPECT_EQ(backend->calls.last(), u"play"_s);

    backend->position = 30;
    const int firstFrame = preview.animationFrame();
    EXPECT_TRUE(QTest::qWaitFor([&] { return preview.animationFrame() != firstFrame; }, kWaitMs));
    const QString strip = child<TipStrip>(&preview, "picVideoTipInfo")->text();
    EXPECT_TRUE(strip.contains(timeText(30)) && strip.contains(timeText(60))) << strip.toStdString();
    auto* bar = child<QWidget>(&preview, "picProgressBar");
    auto* knob = child<QWidget>(&preview, "picSlider");
    EXPECT_EQ(knob->x(), (bar->width() - knob->width()) / 2);
    // The bar follows the window's width, the knob stays at its share.
    preview.resize(preview.width() + 200, preview.height());
    EXPECT_TRUE(QTest::qWaitFor([&] { return knob->x() == (bar->width() - knob->width()) / 2; }, kWaitMs));

    // Dragged to the far right and let go: the end, at once while playing.
    const QPoint grab = knob->geometry().center();
    const QPoint end(bar->width() + 50, grab.y());
    QTest::mousePress(bar, Qt::LeftButton, {}, grab);
    QTest::mouseMove(bar, end);
    QTest::mouseRelease(bar, Qt::LeftButton, {}, end);
    EXPECT_EQ(lastTwo(backend->calls), (QStringList{u"seek:60"_s, u"play"_s}));
}

// The file list drives the media windows through a real list controller and menu.
struct WiringRig
{
    ListWorld world;
    QWidget window;
    files::FileListController list{world.fs, world.prompts, world.prompts, &window};
    QList<FakeMediaBackend*> backends; // one per window made, owned by it
    MediaWindows media{world.fs, &window, [this] {
                           backends << new FakeMediaBackend;
                           return backends.last();
                       }};

    WiringRig() { media.attach(list); }
    void trigger(const QString& entry) { list.menu()->entry(entry)->trigger(); }
};

TEST(MediaWiring, PreviewFollowsTheListAndDeleteAndRenameStopAndCloseIt)
{
    WiringRig rig;
    rig.trigger(u"mnuPreview"_s);
    const QString video = rig.world.file(u"AVSEQ01.DAT"_s, 4096); // large enough to be handed over
    rig.list.model().AddDroppedFiles({video});
    ASSERT_TRUE(QTest::qWaitFor([&] { return rig.media.preview() != nullptr; }, kWaitMs));
    FakeMediaBackend* backend = rig.backends.first();
    EXPECT_EQ(backend->calls, QStringList{u"open:"_s + video});
    emit backend->loaded(10, true, true);
    EXPECT_EQ(backend->calls.last(), u"play"_s);

    // Delete stops the preview before it asks (and the question is cancelled here).
    rig.trigger(u"mnuDelSeletedItem"_s);
    EXPECT_EQ(backend->calls.last(), u"close"_s);
    EXPECT_TRUE(QFile::exists(video));

    // Rename closes it before the rename dialog shows, which is cancelled at once.
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [] {
        if (QWidget* dialog = QApplication::activeModalWidget())
            dialog->close();
    });
    closer.start(10);
    rig.trigger(u"mnuReName"_s);
    EXPECT_TRUE(QTest::qWaitFor([&] { return rig.media.preview() == nullptr; }, kWaitMs));
}

TEST(MediaWiring, PlayEntryOpensTheCurrentFileInThePlayerWithoutPlaying)
{
    WiringRig rig;
    const QString song = rig.world.file(u"song.mp3"_s, 4096);
    rig.list.model().AddDroppedFiles({song});
    rig.trigger(u"mnuPlayFile"_s);
    ASSERT_NE(rig.media.player(), nullptr);
    EXPECT_TRUE(rig.media.player()->isVisible());
    emit rig.backends.first()->loaded(200, false, true);
    EXPECT_EQ(rig.backends.first()->calls, QStringList{u"open:"_s + song});
    EXPECT_EQ(rig.media.player()->session().state(), MediaState::Ready);
    EXPECT_EQ(rig.media.preview(), nullptr); // preview not allowed
}

} // namespace
