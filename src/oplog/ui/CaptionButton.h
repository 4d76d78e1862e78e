#pragma once

#include <QAbstractButton>

namespace vindaro::oplog::ui {

// A button the window draws itself: its caption on the window's background, flat while the pointer is
// elsewhere, raised while the pointer is over it and sunken while the left button is down on it.
// clicked() comes on release over the button.
class CaptionButton : public QAbstractButton
{
    Q_OBJECT

public:
    enum class Look
    {
        Flat,
        Raised,
        Sunken
    };

    CaptionButton(const QString& caption, const QString& objectName, QWidget* parent = nullptr);

    Look look() const;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void setHover(bool hover);

    bool m_hover = false; // the pointer is over the button
};

} // namespace vindaro::oplog::ui
