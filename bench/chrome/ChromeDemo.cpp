// Builds a window from every chrome piece and saves pictures of it: prefix-window.png, -looks.png,
// -balloon.png, -filemenu.png, -cdmenu.png and, on a real display, -screen.png. For looking, not testing.
#include "chrome/Frame3D.h"
#include "chrome/MenuBand.h"
#include "chrome/PictureButton.h"
#include "chrome/TitleBars.h"
#include "chrome/ToolTips.h"
#include "chrome/TrayController.h"
#include "drives/CdDriveMenuModel.h"

#include <QApplication>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSlider>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>

using namespace vindaro::chrome;

namespace {

template<typename T> T* named(T* widget, const char* name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

void save(const QPixmap& pixmap, const QString& path)
{
    std::printf("%s %s (%dx%d px)\n", pixmap.save(path) ? "saved" : "FAILED", qPrintable(path),
        pixmap.width(), pixmap.height());
}

QMenu* demoFileMenu()
{
    auto* menu = new QMenu;
    const QStringList captions = {QStringLiteral("打开当前文件(&O)"), QStringLiteral("加文件到列表(&D)"),
        QStringLiteral("删除当前文件(&K)"), QString(), QStringLiteral("复制该文件到(&C)..."),
        QStringLiteral("移动该文件到(&M)..."), QStringLiteral("重命名文件(&R)"), QString(),
        QStringLiteral("查看文件属性(&P)"), QStringLiteral("&About Vindaro"), QStringLiteral("退出(&X)")};
    for (const QString& caption : captions) {
        if (caption.isEmpty())
            menu->addSeparator();
        else
            menu->addAction(caption);
    }
    menu->actions().at(2)->setEnabled(false);
    styleFileMenu(menu);
    return menu;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QString prefix = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/vindaro-chrome");

    QWidget window(nullptr, Qt::FramelessWindowHint);
    window.setObjectName(QStringLiteral("FrmCopy"));
    auto* outer = new QHBoxLayout(&window);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);
    auto* vbar = new VTitleBar;
    outer->addWidget(vbar);
    auto* column = new QVBoxLayout;
    column->setSpacing(0);
    outer->addLayout(column, 1);
    auto* hbar = new HTitleBar;
    column->addWidget(hbar);
    auto* body = new QVBoxLayout;
    body->setContentsMargins(10, 6, 10, 10);
    column->addLayout(body, 1);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    auto* picRefresh = new PictureButton(ArtworkId::Refresh, QStringLiteral("picRefresh"));
    auto* picSearch = new PictureButton(ArtworkId::Search, QStringLiteral("picSearch"));
    auto* picSetUp = new PictureButton(ArtworkId::SetUp, QStringLiteral("picSetUp"));
    auto* picWatch = new PictureButton(ArtworkId::Watch, QStringLiteral("picWatch"));
    for (PictureButton* b : {picRefresh, picSearch, picSetUp, picWatch})
        buttons->addWidget(b);
    buttons->addStretch(1);
    body->addLayout(buttons);

    auto* grid = new QGridLayout;
    grid->addWidget(named(new QPushButton(QStringLiteral("要拷贝的文件[&F]")), "cmdSourceFile"), 0, 0);
    auto* combo = named(new QComboBox, "cmbFileCopy");
    combo->setEditable(true);
    combo->setEditText(QStringLiteral("你可能没有安装光盘驱动器，或者驱动程序不正常。"));
    grid->addWidget(combo, 0, 1, 1, 3);
    grid->addWidget(named(new QPushButton(QStringLiteral("文件保存路径[&P]")), "cmdDestinationPath"), 1, 0);
    grid->addWidget(new QLabel(QStringLiteral("已复制[字节]：0字节   已用时间：00:00:00")), 1, 1, 1, 3);
    grid->addWidget(named(new QPushButton(QStringLiteral("开始复制[&B]")), "cmdStartCopy"), 2, 0);
    grid->addWidget(named(new QPushButton(QStringLiteral("暂停复制[&S]")), "cmdPauseCopy"), 2, 1);
    grid->addWidget(named(new QPushButton(QStringLiteral("取消复制[&C]")), "cmdCancelCopy"), 2, 2);
    auto* optOpen = named(new QRadioButton(QStringLiteral("弹出 CD_ROM[&A]")), "optOpenCD");
    auto* optClose = named(new QRadioButton(QStringLiteral("关闭 CD_ROM[&Z]")), "optCloseCD");
    grid->addWidget(optOpen, 3, 0);
    grid->addWidget(optClose, 3, 1);
    auto* read = named(new QSlider(Qt::Horizontal), "sldReadBlocks");
    grid->addWidget(read, 4, 0, 1, 2);
    grid->addWidget(named(new QSlider(Qt::Horizontal), "sldSkipBlocks"), 4, 2, 1, 2);
    grid->addWidget(named(new QPushButton(QStringLiteral("返回设置>>")), "cmdBackCopy"), 2, 3);
    body->addLayout(grid);
    body->addStretch(1);

    auto* openChrome = new OptionButtonChrome(optOpen);
    new OptionButtonChrome(optClose);
    openChrome->frame()->setFrameStyle(FrameStyle::Sunken); // as while the left button is down

    const QStringList missing = attachToolTips(&window);
    std::printf("tooltips attached, missing: %s\n", qPrintable(missing.join(QLatin1Char(' '))));
    auto* tray = new TrayController(&window);
    QObject::connect(hbar, &HTitleBar::trayRequested, tray, &TrayController::sendToTray);
    QObject::connect(hbar, &HTitleBar::closeRequested, &window, &QWidget::close);

    window.resize(560, 260);
    window.move(40, 40);
    window.show();
    picWatch->setEnabled(false);

    // The four looks of each picture button, side by side.
    QTimer::singleShot(300, [&] {
        save(window.grab(), prefix + QStringLiteral("-window.png"));

        const qreal dpr = window.devicePixelRatioF();
        QPixmap looks(QSize(4 * 32, 4 * 32) * dpr);
        looks.setDevicePixelRatio(dpr);
        looks.fill(window.palette().color(QPalette::Window));
        QPainter painter(&looks);
        const ArtworkId arts[] = {ArtworkId::Refresh, ArtworkId::Search, ArtworkId::SetUp, ArtworkId::Watch};
        for (int row = 0; row < 4; ++row) {
            PictureButton probe(arts[row], QStringLiteral("probe"));
            probe.resize(probe.sizeHint());
            for (int col = 0; col < 4; ++col) {
                probe.setEnabled(col != 3);
                probe.setDown(col == 2);
                if (col == 1) {
                    QEnterEvent enter(QPointF(4, 4), QPointF(4, 4), QPointF(4, 4));
                    QApplication::sendEvent(&probe, &enter);
                } else {
                    QEvent leave(QEvent::Leave);
                    QApplication::sendEvent(&probe, &leave);
                }
                probe.render(&painter, QPoint(col * 32 + 2, row * 32 + 2));
            }
        }
        painter.end();
        save(looks, prefix + QStringLiteral("-looks.png"));

        QHelpEvent help(QEvent::ToolTip, QPoint(8, 8), picWatch->mapToGlobal(QPoint(8, 8)));
        QApplication::sendEvent(picWatch, &help);
        if (BalloonTip* balloon = ToolTips::of(picWatch)->balloon())
            save(balloon->grab(), prefix + QStringLiteral("-balloon.png"));

        QMenu* fileMenu = demoFileMenu();
        fileMenu->popup(window.mapToGlobal(QPoint(30, 60)));
        fileMenu->setActiveAction(fileMenu->actions().at(1));
        using vindaro::platform::OpticalDrive;
        const vindaro::drives::CdDriveMenuModel model({OpticalDrive{QStringLiteral("/dev/sr0"), QString()},
            OpticalDrive{QStringLiteral("/dev/sr1"), QStringLiteral("/media/cdrom1")}});
        QMenu* cdMenu = buildStyledCdDriveMenu(model, &window);
        cdMenu->popup(window.mapToGlobal(QPoint(330, 90)));
        cdMenu->setActiveAction(cdMenu->actions().at(1));

        QTimer::singleShot(400, [&, fileMenu, cdMenu] {
            save(fileMenu->grab(), prefix + QStringLiteral("-filemenu.png"));
            save(cdMenu->grab(), prefix + QStringLiteral("-cdmenu.png"));
            if (QGuiApplication::platformName() == QLatin1String("xcb"))
                save(window.screen()->grabWindow(0), prefix + QStringLiteral("-screen.png"));
            fileMenu->close();
            cdMenu->close();
            delete fileMenu;
            app.quit();
        });
    });
    return app.exec();
}
