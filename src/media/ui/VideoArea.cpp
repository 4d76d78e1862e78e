#include "VideoArea.h"

#include "media/MediaLayout.h"

#include <QPainter>
#include <QVideoFrame>

namespace vindaro::media {

VideoArea::VideoArea(QWidget* parent)
    : QWidget(parent)
{
    setAutoFillBackground(true);
}

void VideoArea::setLines(const QStringList& lines)
{
    m_lines = lines;
    update();
}

void VideoArea::setPictureShown(bool shown)
{
    const bool before = showsPicture();
    m_pictureShown = shown;
    updateVisibility(before);
}

void VideoArea::clearPicture()
{
    const bool before = showsPicture();
    m_picture = QImage();
    updateVisibility(before);
}

void VideoArea::showFrame(const QVideoFrame& frame)
{
    const bool before = showsPicture();
    // Converted here, once per picture the window takes, not per decoded frame.
    const QImage picture = frame.toImage();
    if (picture.isNull())
        return;
    m_picture = picture;
    updateVisibility(before);
}

void VideoArea::updateVisibility(bool before)
{
    update();
    if (before != showsPicture())
        emit pictureVisibilityChanged(showsPicture());
}

void VideoArea::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (showsPicture()) {
        painter.fillRect(rect(), Qt::black);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(videoPlacement(m_picture.size(), size()), m_picture);
        return;
    }
    painter.setPen(palette().color(QPalette::WindowText));
    const QFontMetrics metrics(font());
    int baseline = metrics.ascent() + 2;
    for (const QString& line : std::as_const(m_lines)) {
        painter.drawText(4, baseline, line);
        baseline += metrics.lineSpacing();
    }
}

} // namespace vindaro::media
