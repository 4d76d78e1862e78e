// Renders the program's icon from its own artwork (the picture the title bar and tray draw): the hicolor
// PNGs at every size the desktop asks for and the scalable SVG.
//   vindaro_render_icon FOLDER   writes FOLDER/hicolor/NxN/apps/vindaro.png and
//                                FOLDER/hicolor/scalable/apps/vindaro.svg
#include "chrome/Artwork.h"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgGenerator>

#include <cstdio>

namespace {

constexpr int kSides[] = {16, 24, 32, 48, 64, 128, 256};
constexpr int kSvgSide = 256;

// The artwork is drawn for a 16-unit box and its arrow's tip reaches a little past it: the icon keeps a
// margin of one unit on every side.
void paintIcon(QPainter& painter, int side)
{
    const qreal unit = side / 16.0;
    vindaro::chrome::paintArtwork(
        painter, vindaro::chrome::ArtworkId::AppIcon, QRectF(unit, unit, side - 2 * unit, side - 2 * unit));
}

bool writePng(const QString& folder, int side)
{
    const QString dir = QStringLiteral("%1/hicolor/%2x%2/apps").arg(folder).arg(side);
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        paintIcon(painter, side);
    }
    return QDir().mkpath(dir) && image.save(dir + QStringLiteral("/vindaro.png"), "PNG", 0);
}

bool writeSvg(const QString& folder)
{
    const QString dir = folder + QStringLiteral("/hicolor/scalable/apps");
    if (!QDir().mkpath(dir))
        return false;
    QSvgGenerator svg;
    svg.setFileName(dir + QStringLiteral("/vindaro.svg"));
    svg.setSize(QSize(kSvgSide, kSvgSide));
    svg.setViewBox(QRect(0, 0, kSvgSide, kSvgSide));
    svg.setTitle(QStringLiteral("Vindaro"));
    svg.setDescription(QStringLiteral("A disc with an arrow: files copied off a disc"));
    QPainter painter;
    if (!painter.begin(&svg))
        return false;
    paintIcon(painter, kSvgSide);
    return painter.end();
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: vindaro_render_icon FOLDER\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    bool ok = writeSvg(folder);
    for (const int side : kSides)
        ok = writePng(folder, side) && ok;
    if (!ok)
        std::fprintf(stderr, "vindaro_render_icon: could not write the icons under %s\n", argv[1]);
    return ok ? 0 : 1;
}
