#include "CdDrivePopup.h"

#include "drives/TrayJob.h"

#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QStyle>

namespace vindaro::drives {

namespace {

constexpr int kBandWidth = 22;
// Sub-menus inherit the colours but have no band to leave room for.
const char* const kSubMenuStyle = "QMenu { padding-left: 0px; }";

// A pop-up menu with a coloured band down its left side carrying a title, read bottom to top.
class BandedMenu final : public QMenu
{
public:
    BandedMenu(const QString& bandTitle, QWidget* parent)
        : QMenu(parent)
        , m_bandTitle(bandTitle)
    {
        setStyleSheet(QStringLiteral("QMenu { background: rgb(249, 248, 247); padding-left: %1px; }"
                                     "QMenu::item { padding: 3px 20px 3px 24px; color: black; }"
                                     "QMenu::item:selected { background: rgb(216, 228, 248);"
                                     " border: 1px solid rgb(49, 106, 197); }"
                                     "QMenu::separator { height: 1px; background: rgb(236, 233, 216);"
                                     " margin: 2px 4px; }")
                          .arg(kBandWidth));
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QMenu::paintEvent(event);
        QPainter painter(this);
        const QRect band(0, 0, kBandWidth, height());
        QLinearGradient fill(band.bottomLeft(), band.topLeft());
        fill.setColorAt(0.0, QColor(0, 92, 128));
        fill.setColorAt(1.0, QColor(49, 106, 197));
        painter.fillRect(band, fill);
        painter.setPen(QColor(236, 233, 216));
        QFont bold = font();
        bold.setBold(true);
        painter.setFont(bold);
        painter.translate(0, height());
        painter.rotate(-90);
        painter.drawText(
            QRect(6, 0, height() - 6, kBandWidth), Qt::AlignLeft | Qt::AlignVCenter, m_bandTitle);
    }

private:
    QString m_bandTitle;
};

QAction* addCommand(QMenu* menu, const CdMenuItem& item, bool isPath)
{
    QString text = item.caption;
    if (isPath)
        text.replace(QLatin1Char('&'), QStringLiteral("&&")); // a path's "&" is no mnemonic
    QAction* action = menu->addAction(text);
    action->setData(item.id);
    return action;
}

} // namespace

QMenu* buildCdDriveMenu(const CdDriveMenuModel& model, QWidget* parent)
{
    auto* menu = new BandedMenu(QStringLiteral("CD-ROM"), parent);
    menu->setObjectName(QStringLiteral("cdDriveMenu"));
    const QIcon driveIcon = menu->style()->standardIcon(QStyle::SP_DriveCDIcon);

    const QList<CdMenuItem> top = model.topItems();
    for (const CdMenuItem& item : top) {
        QAction* action = addCommand(menu, item, false);
        if (item.id == CdDriveMenuModel::kCloseAllId)
            action->setIcon(driveIcon);
    }
    menu->addSeparator();

    QMenu* eject = menu->addMenu(CdDriveMenuModel::kEjectMenuTitle);
    eject->setObjectName(QStringLiteral("ejectDriveMenu"));
    eject->menuAction()->setIcon(driveIcon);
    eject->setStyleSheet(kSubMenuStyle);
    const QList<CdMenuItem> ejectItems = model.ejectItems();
    for (const CdMenuItem& item : ejectItems)
        addCommand(eject, item, true);

    QMenu* close = menu->addMenu(CdDriveMenuModel::kCloseMenuTitle);
    close->setObjectName(QStringLiteral("closeDriveMenu"));
    close->setStyleSheet(kSubMenuStyle);
    const QList<CdMenuItem> closeItems = model.closeItems();
    for (const CdMenuItem& item : closeItems)
        addCommand(close, item, true);
    return menu;
}

void runTrayJobWithBusyCursor(std::shared_ptr<platform::OpticalDrives> drives,
    std::function<void(CDRomDriveControl&)> work, std::function<void()> done)
{
    QApplication::setOverrideCursor(Qt::BusyCursor);
    runTrayJob(std::move(drives), std::move(work), [done = std::move(done)] {
        QApplication::restoreOverrideCursor(); // one restore for each job's one set
        if (done)
            done();
    });
}

bool carryOutCdMenuChoice(const CdDriveMenuModel& model, int id,
    std::shared_ptr<platform::OpticalDrives> drives, std::function<void()> done)
{
    const std::optional<TrayCommand> command = model.commandFor(id);
    if (!command || !drives)
        return false;
    runTrayJobWithBusyCursor(
        std::move(drives), [command = *command](CDRomDriveControl& control) { control.carryOut(command); },
        std::move(done));
    return true;
}

void CreatePopupCDDriveMenu(QWidget* owner, std::shared_ptr<platform::OpticalDrives> drives)
{
    if (!drives)
        drives = makeSystemOpticalDrives();
    const CdDriveMenuModel model(drives->list()); // sysfs and the mount table only: no drive is woken
    QPointer<QMenu> menu = buildCdDriveMenu(model, owner);
    QAction* chosen = menu->exec(QCursor::pos());
    const QVariant data = (menu && chosen) ? chosen->data() : QVariant();
    delete menu.data(); // the owner may have taken the menu with it while it was open
    bool isNumber = false;
    const int id = data.toInt(&isNumber);
    if (isNumber)
        carryOutCdMenuChoice(model, id, std::move(drives));
}

} // namespace vindaro::drives
