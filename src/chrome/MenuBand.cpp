#include "MenuBand.h"

#include "chrome/Artwork.h"
#include "chrome/MenuIcons.h"
#include "drives/CdDriveMenuModel.h"
#include "drives/CdDrivePopup.h"
#include "drives/TrayJob.h"

#include <QEvent>
#include <QMenu>
#include <QPainter>
#include <QPointer>

namespace vindaro::chrome {

namespace {

const char* const kBandProperty = "vindaroBand";

QString rgb(const QColor& c)
{
    return QStringLiteral("rgb(%1, %2, %3)").arg(c.red()).arg(c.green()).arg(c.blue());
}

QString styleSheetFor(const MenuBandLook& look)
{
    // The band sits in the banded menu's left padding; sub-menus match only the colours.
    return QStringLiteral("QMenu { background: %1; border: 1px solid %2; color: %3; padding: 2px 0px; }"
                          "QMenu[%4=\"true\"] { padding-left: %5px; }"
                          "QMenu::item { padding: 4px 24px 4px 6px; background: transparent;"
                          " border: 1px solid transparent; }"
                          "QMenu::item:selected { background: %6; border: 1px solid %7; }"
                          "QMenu::item:disabled { color: rgb(150, 150, 150); }"
                          "QMenu::icon { padding-left: 4px; }"
                          "QMenu::separator { height: 1px; background: %2; margin: 3px 6px 3px 28px; }"
                          "QMenu::right-arrow { width: 8px; height: 8px; }")
        .arg(rgb(look.background), rgb(look.separator), rgb(look.text), QLatin1String(kBandProperty))
        .arg(look.bandWidth)
        .arg(rgb(look.selectionFill), rgb(look.selectionBorder));
}

} // namespace

MenuBandLook fileMenuBandLook()
{
    MenuBandLook look = cdMenuBandLook();
    look.title = QStringLiteral("Vindaro");
    look.bandFoot = QColor(20, 52, 110);
    look.bandHead = QColor(49, 106, 197);
    return look;
}

MenuBandLook cdMenuBandLook()
{
    MenuBandLook look;
    look.title = QStringLiteral("CD-ROM");
    look.bandFoot = QColor(0, 92, 128);
    look.bandHead = QColor(49, 106, 197);
    look.bandText = QColor(255, 255, 255);
    look.selectionFill = QColor(216, 228, 248);
    look.selectionBorder = QColor(49, 106, 197);
    look.separator = QColor(236, 233, 216);
    look.background = QColor(249, 248, 247);
    look.text = QColor(0, 0, 0);
    return look;
}

MenuBand::MenuBand(QMenu* menu, const MenuBandLook& look)
    : QWidget(menu)
    , m_look(look)
{
    setObjectName(QStringLiteral("menuBand"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    menu->installEventFilter(this);
    follow();
    show();
}

void MenuBand::setLook(const MenuBandLook& look)
{
    m_look = look;
    follow();
    update();
}

void MenuBand::follow()
{
    if (QWidget* menu = parentWidget())
        setGeometry(0, 0, m_look.bandWidth + 1, menu->height()); // the menu's 1-pixel frame and the band
    raise();
}

bool MenuBand::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parentWidget() && (event->type() == QEvent::Resize || event->type() == QEvent::Show))
        follow();
    return QWidget::eventFilter(watched, event);
}

void MenuBand::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect band(1, 1, m_look.bandWidth, height() - 2);
    QLinearGradient fill(band.bottomLeft(), band.topLeft());
    fill.setColorAt(0.0, m_look.bandFoot);
    fill.setColorAt(1.0, m_look.bandHead);
    painter.fillRect(rect(), m_look.separator); // the frame's left, top and bottom edges
    painter.fillRect(band, fill);

    painter.setRenderHint(QPainter::TextAntialiasing, true);
    QFont bold = font();
    bold.setBold(true);
    bold.setPixelSize(std::max(9, m_look.bandWidth * 11 / 20));
    painter.setFont(bold);
    painter.setPen(m_look.bandText);
    painter.translate(band.left(), band.bottom() + 1);
    painter.rotate(-90);
    painter.drawText(
        QRect(8, 0, band.height() - 8, band.width()), Qt::AlignLeft | Qt::AlignVCenter, m_look.title);
}

MenuBand* menuBandOf(const QMenu* menu)
{
    return menu ? menu->findChild<MenuBand*>(QStringLiteral("menuBand"), Qt::FindDirectChildrenOnly)
                : nullptr;
}

void applyMenuBand(QMenu* menu, const MenuBandLook& look)
{
    if (!menu)
        return;
    menu->setProperty(kBandProperty, true);
    menu->setStyleSheet(styleSheetFor(look));
    if (MenuBand* band = menuBandOf(menu))
        band->setLook(look);
    else
        new MenuBand(menu, look);
}

int applyMenuIcons(QMenu* menu)
{
    if (!menu)
        return 0;
    int count = 0;
    const QList<QAction*> actions = menu->actions();
    for (QAction* action : actions) {
        if (const std::optional<ArtworkId> art = menuIconFor(action->text())) {
            action->setIcon(artworkIcon(*art));
            action->setIconVisibleInMenu(true);
            ++count;
        }
        if (action->menu())
            count += applyMenuIcons(action->menu());
    }
    return count;
}

void styleFileMenu(QMenu* menu)
{
    applyMenuBand(menu, fileMenuBandLook());
    applyMenuIcons(menu);
}

QMenu* buildStyledCdDriveMenu(const drives::CdDriveMenuModel& model, QWidget* parent)
{
    QMenu* menu = drives::buildCdDriveMenu(model, parent);
    applyMenuBand(menu, cdMenuBandLook());
    applyMenuIcons(menu);
    return menu;
}

void showCdDriveMenu(QWidget* owner, const QPoint& globalPos, std::shared_ptr<platform::OpticalDrives> drives)
{
    if (!drives)
        drives = drives::makeSystemOpticalDrives();
    const drives::CdDriveMenuModel model(drives->list()); // sysfs and the mount table only: no drive is woken
    QPointer<QMenu> menu = buildStyledCdDriveMenu(model, owner);
    QAction* chosen = menu->exec(globalPos);
    const QVariant data = (menu && chosen) ? chosen->data() : QVariant();
    delete menu.data(); // the owner may have taken the menu with it while it was open
    bool isNumber = false;
    const int id = data.toInt(&isNumber);
    if (isNumber)
        drives::carryOutCdMenuChoice(model, id, std::move(drives));
}

} // namespace vindaro::chrome
