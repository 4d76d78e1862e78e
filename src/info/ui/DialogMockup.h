#pragma once

#include "resources/DialogTemplate.h"

#include <QWidget>

namespace vindaro::info::ui {

// A dialog resource drawn as a faithful mock-up: a frame of the dialog's size, its title bar when the
// template has a caption, and every control at its place with its caption, as plain Qt widgets that take
// no input. Dialog units become pixels through the template's font: x * baseX / 4, y * baseY / 8, with
// baseX the average width of the Latin letters and baseY the font's height.
class DialogMockup : public QWidget
{
    Q_OBJECT

public:
    DialogMockup(const resources::DialogTemplate& dialog, QWidget* parent);

    int baseX() const { return m_baseX; }
    int baseY() const { return m_baseY; }
    // Pixels of a horizontal and a vertical dialog-unit length.
    int toPixelsX(int units) const { return units * m_baseX / 4; }
    int toPixelsY(int units) const { return units * m_baseY / 8; }

private:
    QWidget* makeControl(const resources::DialogControl& control, QWidget* parent);

    int m_baseX = 6;
    int m_baseY = 13;
};

} // namespace vindaro::info::ui
