#pragma once

#include "chrome/MenuIcons.h"

#include <QAbstractButton>

namespace vindaro::chrome {

// A flat picture button (picRefresh, picSearch, picSetUp, picWatch): its picture alone while the mouse
// is elsewhere, a brighter picture in a raised frame under the mouse, a darker one in a sunken frame
// while the left button is down, and grey when disabled. clicked() comes on release over the button, as
// with any QAbstractButton; setDown(true) keeps the pressed look (picSetUp while its panel is open).
class PictureButton : public QAbstractButton
{
    Q_OBJECT

public:
    enum class Look
    {
        Normal,
        Hover,
        Pressed,
        Disabled
    };

    static constexpr int kPictureSize = 20;
    static constexpr int kButtonSize = 28;

    PictureButton(ArtworkId artwork, const QString& objectName, QWidget* parent = nullptr);

    Look look() const;
    ArtworkId artwork() const { return m_artwork; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void setHover(bool hover);

    ArtworkId m_artwork;
    bool m_hover = false; // the pointer is over the button
};

} // namespace vindaro::chrome
