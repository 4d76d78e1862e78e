#include "chrome/Artwork.h"

#include <QImage>

#include <gtest/gtest.h>

using vindaro::chrome::artworkIcon;
using vindaro::chrome::ArtworkId;
using vindaro::chrome::ArtworkLook;
using vindaro::chrome::artworkPixmap;

namespace {

const ArtworkId kAll[] = {ArtworkId::AppIcon, ArtworkId::FileMenuButton, ArtworkId::MinimizeButton,
    ArtworkId::TrayButton, ArtworkId::CloseButton, ArtworkId::Refresh, ArtworkId::Search, ArtworkId::SetUp,
    ArtworkId::Watch, ArtworkId::OpenFile, ArtworkId::AddToList, ArtworkId::DeleteFile, ArtworkId::CopyTo,
    ArtworkId::MoveTo, ArtworkId::Properties, ArtworkId::About, ArtworkId::CloseAllCd, ArtworkId::EjectCd};

// Share of pixels that are not transparent.
double coverage(const QImage& image)
{
    qint64 drawn = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            drawn += qAlpha(image.pixel(x, y)) > 0 ? 1 : 0;
    return static_cast<double>(drawn) / (image.width() * image.height());
}

class EveryArtwork : public ::testing::TestWithParam<ArtworkId>
{
};

// Each picture draws something, stays inside its box (a clear border) and is drawn afresh at 2x.
TEST_P(EveryArtwork, IsDrawnAtOneAndTwoTimesScale)
{
    for (const qreal dpr : {1.0, 2.0}) {
        const QPixmap pixmap = artworkPixmap(GetParam(), QSize(16, 16), dpr, ArtworkLook::Normal);
        ASSERT_EQ(pixmap.size(), QSize(16, 16) * dpr);
        EXPECT_EQ(pixmap.devicePixelRatio(), dpr);
        const QImage image = pixmap.toImage();
        EXPECT_GT(coverage(image), 0.04) << static_cast<int>(GetParam()) << " at " << dpr;
        EXPECT_LT(coverage(image), 0.95) << static_cast<int>(GetParam()) << " at " << dpr;
    }
}

INSTANTIATE_TEST_SUITE_P(All, EveryArtwork, ::testing::ValuesIn(kAll));

TEST(Artwork, LooksDifferAndDisabledIsGrey)
{
    const QImage normal = artworkPixmap(ArtworkId::Search, QSize(20, 20), 1.0, ArtworkLook::Normal).toImage();
    const QImage hover = artworkPixmap(ArtworkId::Search, QSize(20, 20), 1.0, ArtworkLook::Hover).toImage();
    const QImage pressed
        = artworkPixmap(ArtworkId::Search, QSize(20, 20), 1.0, ArtworkLook::Pressed).toImage();
    const QImage disabled
        = artworkPixmap(ArtworkId::Search, QSize(20, 20), 1.0, ArtworkLook::Disabled).toImage();
    EXPECT_NE(normal, hover);
    EXPECT_NE(normal, pressed);
    EXPECT_NE(hover, pressed);
    for (int y = 0; y < disabled.height(); ++y) {
        for (int x = 0; x < disabled.width(); ++x) {
            const QRgb px = disabled.pixel(x, y);
            if (qAlpha(px) > 0) {
                ASSERT_TRUE(qRed(px) == qGreen(px) && qGreen(px) == qBlue(px)) << x << "," << y;
            }
        }
    }
}

TEST(Artwork, IconPaintsAtTheSizeAsked)
{
    const QIcon icon = artworkIcon(ArtworkId::EjectCd);
    ASSERT_FALSE(icon.isNull());
    EXPECT_EQ(icon.pixmap(QSize(32, 32)).size(), QSize(32, 32));
    EXPECT_EQ(icon.pixmap(QSize(16, 16), 2.0).size(), QSize(32, 32));
    EXPECT_GT(coverage(icon.pixmap(QSize(24, 24)).toImage()), 0.04);
}

} // namespace
