// The two windows wired to their media state: a press or a drag reaches the backend, the backend's answers
// reach the labels, the bar and the picture area. The state itself is tested below the windows.
#include "fakes/FakeMediaBackend.h"
#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "files/FileSystem.h"
#include "media/MediaSession.h"
#include "media/ui/MediaWindowParts.h"
#include "media/ui/VideoArea.h"
#include "media/ui/frmPlaying.h"
#include "media/ui/frmPrevVideo.h"

#include <QFile>
#include <QLabel>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using namespace vindaro::media;
using namespace vindaro::testing;

namespace {

constexpr int kWaitMs = 5000;

struct WindowRig
{
    QTemporaryDir folder;
    FakeVolumes volumes;
    FakeShell shell;
    vindaro::files::FileSystem fs{volumes, shell};
    FakeMediaBackend* backend = new FakeMediaBackend; // the window's once handed over

    QString file(const char* name, qint64 bytes)
    {
        const QString path = folder.filePath(QString::fromLatin1(name));
        QFile out(path);
        if (out.open(QIODevice::WriteOnly))
            out.resize(bytes);
        return path;
    }
};

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

TEST(FrmPlaying, ButtonSliderAndLabelsFollowTheMedia)
{
    WindowRig rig;
    frmPlaying player(rig.fs, nullptr, rig.backend);
    player.show();
    const QString path = rig.file("clip.dat", 1023801);
    player.OpenMediaFile(path);
    auto* area = child<VideoArea>(&player, "picVideo");
    EXPECT_EQ(area->lines().first(), QStringLiteral("大小：999KB"));
    EXPECT_EQ(rig.backend->calls, QStringList{QStringLiteral("open:") + path});

    emit rig.backend->loaded(3725.6, true, true);
    emit rig.backend->pictureSizeKnown(QSize(352, 288));
    EXPECT_EQ(labelText(&player, "lblTotalTime"), QStringLiteral("01:02:05"));
    EXPECT_EQ(labelText(&player, "lblTotalLength"), QStringLiteral("3,725[352×288]"));
    auto* slider = child<QSlider>(&player, "sldProgress");
    EXPECT_EQ(slider->maximum(), 3725);

    // The play half starts; the timer then shows the position.
    auto* button = child<ControlButton>(&player, "picMediaControlButton");
    const QPoint playHalf(button->width() / 4, button->height() / 2);
    const QPoint stopHalf(button->width() * 3 / 4, button->height() / 2);
    QTest::mouseClick(button, Qt::LeftButton, {}, playHalf);
    EXPECT_EQ(rig.backend->calls.last(), QStringLiteral("play"));
    EXPECT_TRUE(button->look().stopActive);
    rig.backend->position = 65.5;
    EXPECT_TRUE(QTest::qWaitFor([&] { return labelText(&player, "lblCurrentTime") == "00:01:05"; }, kWaitMs));
    EXPECT_EQ(slider->value(), 65);
    EXPECT_EQ(labelText(&player, "lblCurrentPosition"), QStringLiteral("65.50"));

    // The stop half pauses; the grey one then does nothing.
    QTest::mouseClick(button, Qt::LeftButton, {}, stopHalf);
    EXPECT_EQ(rig.backend->calls.last(), QStringLiteral("pause"));
    EXPECT_FALSE(child<QTimer>(&player, "tmrTime")->isActive());
    QTest::mouseClick(button, Qt::LeftButton, {}, stopHalf);
    EXPECT_EQ(rig.backend->calls.last(), QStringLiteral("pause"));

    // A page step of the user's is where the next play starts.
    slider->triggerAction(QAbstractSlider::SliderPageStepAdd);
    QCoreApplication::processEvents();
    QTest::mouseClick(button, Qt::LeftButton, {}, playHalf);
    EXPECT_EQ(rig.backend->calls.mid(rig.backend->calls.size() - 2), (QStringList{"seek:75", "play"}));

    // At the end the slider goes home and both icons turn grey.
    emit rig.backend->ended();
    EXPECT_EQ(slider->value(), 0);
    EXPECT_FALSE(button->look().playActive);
    EXPECT_FALSE(button->look().stopActive);
}

TEST(FrmPlaying, FileTheBackendCannotRenderKeepsOnlyItsFacts)
{
    WindowRig rig;
    frmPlaying player(rig.fs, nullptr, rig.backend);
    player.OpenMediaFile(rig.file("broken.avi", 4096));
    emit rig.backend->failed();
    EXPECT_EQ(child<VideoArea>(&player, "picVideo")->lines().size(), 6);
    EXPECT_TRUE(labelText(&player, "lblTotalTime").isEmpty());
    EXPECT_FALSE(child<ControlButton>(&player, "picMediaControlButton")->look().playActive);
}

TEST(FrmPrevVideo, StripBarAndIconFollowThePlay)
{
    WindowRig rig;
    frmPrevVideo preview(rig.fs, nullptr, rig.backend);
    preview.show();
    preview.OpenMediaFile(rig.file("AVSEQ01.DAT", 2048));
    EXPECT_TRUE(labelText(&preview, "lblMP3info").contains(QStringLiteral("文件大小：2,048字节")));
    preview.StartPlay();
    emit rig.backend->loaded(60, true, true);
    EXPECT_EQ(rig.backend->calls.last(), QStringLiteral("play"));

    rig.backend->position = 30;
    const int firstFrame = preview.animationFrame();
    EXPECT_TRUE(QTest::qWaitFor([&] { return preview.animationFrame() != firstFrame; }, kWaitMs));
    EXPECT_TRUE(child<TipStrip>(&preview, "picVideoTipInfo")
                    ->text()
                    .startsWith(QStringLiteral("00:00:30/00:01:00 ")));
    auto* bar = child<QWidget>(&preview, "picProgressBar");
    auto* knob = child<QWidget>(&preview, "picSlider");
    EXPECT_EQ(knob->x(), (bar->width() - knob->width()) / 2);

    // The bar follows the window's width, the knob stays at its share.
    preview.resize(preview.width() + 200, preview.height());
    EXPECT_TRUE(QTest::qWaitFor([&] { return knob->x() == (bar->width() - knob->width()) / 2; }, kWaitMs));

    // Dragged to the far right and let go: the end, at once while playing.
    const QPoint grab = knob->geometry().center();
    QTest::mousePress(bar, Qt::LeftButton, {}, grab);
    QTest::mouseMove(bar, QPoint(bar->width() + 50, grab.y()));
    QTest::mouseRelease(bar, Qt::LeftButton, {}, QPoint(bar->width() + 50, grab.y()));
    EXPECT_EQ(rig.backend->calls.mid(rig.backend->calls.size() - 2), (QStringList{"seek:60", "play"}));
}

} // namespace
