#include "copy/ui/ProgressBar.h"

#include <QImage>

#include <gtest/gtest.h>

using vindaro::copy::ProgressBar;

namespace {

// Where the bar covers the percentage, the text shows in the inverse of its usual colour.
TEST(ProgressBar, TextIsInvertedWhereTheBarCoversIt)
{
    ProgressBar bar;
    bar.resize(ProgressBar::kDesignWidth * 2, 20);
    bar.setBarColour(Qt::blue);
    const QColor ink = bar.palette().color(QPalette::Text);
    const QColor inverse(255 - ink.red(), 255 - ink.green(), 255 - ink.blue());
    EXPECT_EQ(bar.textX(), 300); // x = 150 design units, scaled

    const auto count = [](const QImage& image, int fromX, int toX, const QColor& colour) {
        int n = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = fromX; x < toX; ++x)
                n += image.pixelColor(x, y) == colour ? 1 : 0;
        return n;
    };

    bar.setProgress(3, 8);
    EXPECT_EQ(bar.text(), "37.50%");
    EXPECT_EQ(bar.filledPixels(), 247); // 0.375 x 660 = 247.5
    QImage image = bar.grab().toImage();
    EXPECT_EQ(image.pixelColor(10, 10), QColor(Qt::blue));
    EXPECT_GT(count(image, bar.textX(), bar.width(), ink), 0); // text beyond the bar: normal

    bar.setProgress(1, 1); // the bar covers the text
    image = bar.grab().toImage();
    EXPECT_EQ(count(image, bar.textX(), bar.width() - 1, ink), 0);
    EXPECT_GT(count(image, bar.textX(), bar.width() - 1, inverse), 0);

    bar.clear();
    EXPECT_TRUE(bar.text().isEmpty());
    EXPECT_EQ(bar.filledPixels(), 0);
    image = bar.grab().toImage();
    EXPECT_EQ(count(image, 1, bar.width() - 1, QColor(Qt::blue)), 0);
}

} // namespace
