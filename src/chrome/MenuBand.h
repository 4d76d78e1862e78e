#pragma once

#include <QColor>
#include <QPoint>
#include <QString>
#include <QWidget>

#include <memory>

class QMenu;

namespace vindaro::platform {
class OpticalDrives;
}

namespace vindaro::drives {
class CdDriveMenuModel;
}

namespace vindaro::chrome {

// The look of a banded pop-up menu.
struct MenuBandLook
{
    QString title; // runs up the band from its foot
    QColor bandFoot; // the band's colour at the bottom ...
    QColor bandHead; // ... and at the top
    QColor bandText;
    QColor background;
    QColor selectionFill;
    QColor selectionBorder;
    QColor separator; // separators and the menu's frame
    QColor text;
    int bandWidth = 24;
};

// "Vindaro", for the file menu.
MenuBandLook fileMenuBandLook();
// "CD-ROM", for the CD-ROM menu, in RGB(0, 92, 128), RGB(216, 228, 248), RGB(49, 106, 197),
// RGB(236, 233, 216) and RGB(249, 248, 247).
MenuBandLook cdMenuBandLook();

// The band down the left side of a menu: a child of the menu painted over its left padding.
class MenuBand : public QWidget
{
    Q_OBJECT

public:
    MenuBand(QMenu* menu, const MenuBandLook& look);

    const MenuBandLook& look() const { return m_look; }
    void setLook(const MenuBandLook& look);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void follow();

    MenuBandLook m_look;
};

// Gives any QMenu the band and colours of look: its own entries move right to make room, its sub-menus
// take the colours without a band. Calling it again replaces the look.
void applyMenuBand(QMenu* menu, const MenuBandLook& look);
MenuBand* menuBandOf(const QMenu* menu);

// Puts the chrome's icons beside the styled captions (see styledMenuIcons) in menu and its sub-menus.
// Returns how many entries got an icon.
int applyMenuIcons(QMenu* menu);

// The file menu's look: band, colours and icons. For the menu that the file commands build.
void styleFileMenu(QMenu* menu);

// The CD-ROM pop-up menu of model (drives::buildCdDriveMenu) in the CD-ROM look with its icons.
QMenu* buildStyledCdDriveMenu(const drives::CdDriveMenuModel& model, QWidget* parent);

// Shows the styled CD-ROM menu at globalPos and carries out the chosen command in the background, as
// drives::CreatePopupCDDriveMenu does. drives defaults to the machine's own drives.
void showCdDriveMenu(
    QWidget* owner, const QPoint& globalPos, std::shared_ptr<platform::OpticalDrives> drives = {});

} // namespace vindaro::chrome
