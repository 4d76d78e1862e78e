#include "copy/ui/CopyAnimation.h"

#include <QImage>
#include <QTest>

#include <gtest/gtest.h>

using vindaro::copy::CopyAnimation;

namespace {

QImage still(CopyAnimation& animation, qreal devicePixelRatio)
{
    QImage image(animation.size() * devicePixelRatio, QImage::Format_ARGB32);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::black);
    animation.render(&image);
    return image;
}

QColor pixelAt(const QImage& image, QPointF widgetPoint)
{
    return image.pixelColor((widgetPoint * image.devicePixelRatio()).toPoint());
}

TEST(CopyAnimation, LoopsUntilStopped)
{
    CopyAnimation animation;
    animation.resize(animation.sizeHint());
    animation.show();
    EXPECT_FALSE(animation.isRunning());
    animation.start();
    EXPECT_TRUE(animation.isRunning());
    // More than one flight: the phase comes back down after reaching the far folder.
    qreal highest = 0;
    bool wrapped = false;
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            const qreal phase = animation.phase();
            wrapped = wrapped || (highest > 0.8 && phase < 0.2);
            highest = std::max(highest, phase);
            return wrapped;
        },
        10 * CopyAnimation::kFlightMilliseconds));
    EXPECT_TRUE(animation.isRunning());
    animation.stop();
    EXPECT_FALSE(animation.isRunning());
    EXPECT_EQ(animation.phase(), 0);
}

// Mid-flight the sheet is drawn where sheetRect() says, at 1x and 2x alike; stopped, only the folders.
TEST(CopyAnimation, DrawsTheSheetInFlightAtBothPixelRatios)
{
    CopyAnimation animation;
    animation.resize(CopyAnimation::kDesignWidth * 3 / 2, CopyAnimation::kDesignHeight * 3 / 2);
    const QRectF sheet = animation.sheetRect(0.5);
    EXPECT_NEAR(sheet.center().x(), animation.width() / 2.0, 1.0);
    const QPointF margin(sheet.left() + sheet.width() / 10, sheet.center().y()); // left of the text lines
    EXPECT_LT(animation.sheetRect(0.5).bottom(), animation.sheetRect(0).top()); // it rises on the way

    for (qreal ratio : {1.0, 2.0}) {
        animation.stop();
        EXPECT_NE(pixelAt(still(animation, ratio), margin), QColor(Qt::white)) << ratio;
        animation.start();
        animation.setPhase(0.5);
        const QImage image = still(animation, ratio);
        EXPECT_EQ(pixelAt(image, margin), QColor(Qt::white)) << ratio;
        // The sheet is hidden in the folder at the start of a flight.
        animation.setPhase(0);
        EXPECT_NE(pixelAt(still(animation, ratio), animation.sheetRect(0).center()), QColor(Qt::white))
            << ratio;
    }
    animation.stop();
}

} // namespace
