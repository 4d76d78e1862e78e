#pragma once

#include <QImage>
#include <QStringList>
#include <QWidget>

class QVideoFrame;

namespace vindaro::media {

// A window's video area: the lines printed into it (the player's file facts) until a picture is to be
// shown, then the newest picture, placed by videoPlacement() on black.
class VideoArea : public QWidget
{
    Q_OBJECT

public:
    explicit VideoArea(QWidget* parent = nullptr);

    void setLines(const QStringList& lines);
    QStringList lines() const { return m_lines; }
    // Pictures are drawn only while shown; the printed lines show otherwise.
    void setPictureShown(bool shown);
    // Forgets the picture: the lines show again until the next one.
    void clearPicture();
    void showFrame(const QVideoFrame& frame);
    bool showsPicture() const { return m_pictureShown && !m_picture.isNull(); }

signals:
    // showsPicture() turned over.
    void pictureVisibilityChanged(bool visible);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void updateVisibility(bool before);

    QStringList m_lines;
    QImage m_picture;
    bool m_pictureShown = false;
};

} // namespace vindaro::media
