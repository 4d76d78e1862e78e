#include "copy/ui/CopyAnimation.h"

#include <QImage>
#include <QTest>

#include <gtest/gtest.h>

using vindaro::copy::CopyAnimation;

namespace {

// Started, the sheet flies from folder to folder again and again until stopped: the phase comes back down
// after reaching the far folder.
TEST(CopyAnimation, LoopsUntilStopped)
{
    CopyAnimation animation;
    animation.resize(animation.sizeHint());
    animation.show();
    EXPECT_FALSE(animation.isRunning());
    animation.start();
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

// Mid-flight the sheet is drawn where sheetRect() says, at 1x and 2x alike, rising on its way; at the start
// of a flight it is hidden in the folder; stopped, only the folders show.
TEST(CopyAnimation, DrawsTheSheetInFlightAtBothPixelRatios)
{
    CopyAnimation animation;
    animation.resize(CopyAnimation::kDesignWidth * 3 / 2, CopyAnimation::kDesignHeight * 3 / 2);
    const QRectF sheet = animation.sheetRect(0.5);
    EXPECT_NEAR(sheet.center().x(), animation.width() / 2.0, 1.0);
    EXPECT_LT(sheet.bottom(), animation.sheetRect(0).top());
    const QPointF margin(sheet.left() + sheet.width() / 10, sheet.center().y()); // left of the text lines
    for (const qreal ratio : {1.0, 2.0}) {
        const auto isWhiteAt = [&](QPointF point) {
            QImage image(animation.size() * ratio, QImage::Format_ARGB32);
            image.setDevicePixelRatio(ratio);
            image.fill(Qt::black);
            animation.render(&image);
            return image.pixelColor((point * ratio).toPoint()) == QColor(Qt::white);
        };
        animation.stop();
        EXPECT_FALSE(isWhiteAt(margin)) << ratio;
        animation.start();
        animation.setPhase(0.5);
        EXPECT_TRUE(isWhiteAt(margin)) << ratio;
        animation.setPhase(0);
        EXPECT_FALSE(isWhiteAt(animation.sheetRect(0).center())) << ratio;
    }
    animation.stop();
}

} // namespace
