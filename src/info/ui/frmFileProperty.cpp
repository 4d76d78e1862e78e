#include "frmFileProperty.h"

#include "InfoText.h"
#include "PropertyTexts.h"
#include "ResourceBrowser.h"
#include "ZipInformation.h"
#include "chrome/ToolTips.h"
#include "files/FileTexts.h"
#include "files/ui/FileIcons.h"
#include "platform/Volumes.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QFileIconProvider>
#include <QFontDatabase>
#include <QFrame>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QTabBar>
#include <QTreeWidget>

namespace vindaro::info::ui {

namespace {

const QColor kDocketBackground(255, 255, 245);
const QColor kDocketText(0, 92, 128);
const QColor kUsedTop(0, 0, 255);
const QColor kUsedSide(0, 0, 132);
const QColor kFreeTop(255, 0, 255);
const QColor kFreeSide(132, 0, 132);
// The pie's bounding box in the drive panel and the depth of its side.
const QRect kPieBox(100, 180, 126, 48);
constexpr int kPieDepth = 7;

QLabel* caption(const QString& text, int x, int y, QWidget* parent, int width = 80)
{
    auto* label = new QLabel(text, parent);
    label->setGeometry(x, y, width, 18);
    return label;
}

template<typename Widget> Widget* named(Widget* widget, const char* name, const QRect& geometry)
{
    widget->setObjectName(QString::fromLatin1(name));
    widget->setGeometry(geometry);
    return widget;
}

QLabel* valueLabel(const char* name, const QString& text, const QRect& geometry, QWidget* parent)
{
    return named(new QLabel(text, parent), name, geometry);
}

QLineEdit* nameBox(const char* name, const QRect& geometry, QWidget* parent)
{
    auto* box = named(new QLineEdit(parent), name, geometry);
    box->setReadOnly(true);
    box->setFrame(false);
    return box;
}

void separator(int y, QWidget* parent)
{
    auto* line = new QFrame(parent);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    line->setGeometry(8, y, 532, 2);
}

QLabel* swatch(const char* name, const QColor& colour, const QRect& geometry, QWidget* parent)
{
    auto* box = named(new QLabel(parent), name, geometry);
    box->setAutoFillBackground(true);
    box->setFrameShape(QFrame::Box);
    QPalette palette = box->palette();
    palette.setColor(QPalette::Window, colour);
    box->setPalette(palette);
    return box;
}

void docketColours(QWidget* widget)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::Base, kDocketBackground);
    palette.setColor(QPalette::Text, kDocketText);
    widget->setPalette(palette);
}

QString displayLines(QString text)
{
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

void attachBalloon(QLineEdit* box)
{
    auto* tips = new chrome::ToolTips(box);
    tips->OwnerhWnd(box);
    tips->ToolTipsTitle(QString());
    tips->ToolTipsText(box->text());
    tips->CreateToolTipsWindow();
}

} // namespace

DrivePanel::DrivePanel(QWidget* parent)
    : QWidget(parent)
{
}

void DrivePanel::setSpace(qint64 usedBytes, qint64 totalBytes)
{
    m_hasPie = totalBytes > 0;
    m_usedSpan = usedSpanDegrees(usedBytes, totalBytes);
    update();
}

void DrivePanel::paintEvent(QPaintEvent*)
{
    if (!m_hasPie)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // Qt's angles are counter-clockwise from three o'clock in 1/16 degree. The used part starts at three
    // o'clock and runs counter-clockwise; the free part takes the rest.
    const int usedSpan = qRound(m_usedSpan * 16.0);
    const int freeSpan = 360 * 16 - usedSpan;
    const auto slices = [&](const QRect& box, const QColor& used, const QColor& free, bool outline) {
        painter.setPen(outline ? QPen(Qt::black) : QPen(Qt::NoPen));
        if (usedSpan > 0) {
            painter.setBrush(used);
            painter.drawPie(box, 0, usedSpan);
        }
        if (freeSpan > 0) {
            painter.setBrush(free);
            painter.drawPie(box, usedSpan, freeSpan);
        }
    };
    // The side: the disc drawn downwards layer by layer in the darker colours, outlined at the bottom.
    for (int depth = kPieDepth; depth > 0; --depth)
        slices(kPieBox.translated(0, depth), kUsedSide, kFreeSide, depth == kPieDepth);
    painter.setPen(Qt::black);
    painter.drawLine(kPieBox.left(), kPieBox.center().y(), kPieBox.left(), kPieBox.center().y() + kPieDepth);
    painter.drawLine(
        kPieBox.right(), kPieBox.center().y(), kPieBox.right(), kPieBox.center().y() + kPieDepth);
    slices(kPieBox, kUsedTop, kFreeTop, true);
}

frmFileProperty::frmFileProperty(platform::Volumes& volumes, platform::Shell& shell, QWidget* parent)
    : QDialog(parent)
    , m_fs(std::make_unique<files::FileSystem>(volumes, shell))
    , m_volumes(volumes)
{
    setObjectName(QStringLiteral("frmFileProperty"));
    setModal(true);
    QFont song = font();
    song.setFamily(QFontDatabase::hasFamily(QStringLiteral("宋体")) ? QStringLiteral("宋体")
                                                                    : QStringLiteral("MS Sans Serif"));
    song.setPointSize(9);
    setFont(song);
    setFixedSize(560, 428);

    TabStrip1 = named(new QTabBar(this), "TabStrip1", QRect(6, 6, 548, 24));
    TabStrip1->addTab(QStringLiteral("常规[&N]"));
    TabStrip1->addTab(QStringLiteral("摘要[&D]"));
    TabStrip1->addTab(QStringLiteral("驱动器属性"));
    TabStrip1->setExpanding(false);

    buildGeneralPage();
    buildSummaryPages();
    buildDrivePage();
    // "宋体" draws Latin text at a fixed pitch, which the hex dumps and listings rely on; without it the
    // preview box takes the fixed system face rather than a proportional one.
    if (!QFontDatabase::hasFamily(QStringLiteral("宋体"))) {
        QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        fixed.setPointSize(font().pointSize());
        Pic_EXE_Dll->Text1->setFont(fixed);
    }

    cmdSure = named(new QPushButton(QStringLiteral("确定[&S]"), this), "cmdSure", QRect(320, 396, 74, 24));
    cmdCancel
        = named(new QPushButton(QStringLiteral("取消[&C]"), this), "cmdCancel", QRect(400, 396, 74, 24));
    cmdApply = named(new QPushButton(QStringLiteral("应用[&A]"), this), "cmdApply", QRect(480, 396, 74, 24));
    cmdApply->setEnabled(false);
    cmdSure->setDefault(true);
    connect(cmdSure, &QPushButton::clicked, this, &QDialog::accept);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(cmdApply, &QPushButton::clicked, this, &frmFileProperty::cmdApply_Click);
    connect(Pic_EXE_Dll, &ResourceBrowser::exitRequested, this, &QDialog::reject);
    connect(TabStrip1, &QTabBar::currentChanged, this, &frmFileProperty::showTab);
    showTab(0);
}

frmFileProperty::~frmFileProperty() = default;

void frmFileProperty::buildGeneralPage()
{
    Pic_Normal = named(new QWidget(this), "Pic_Normal", QRect(6, 30, 548, 360));
    QWidget* page = Pic_Normal;
    PicIcon_32 = valueLabel("PicIcon_32", QString(), QRect(16, 12, 32, 32), page);
    txtFullFileName = nameBox("txtFullFileName", QRect(70, 18, 280, 20), page);
    separator(54, page);
    caption(QStringLiteral("类型："), 16, 66, page);
    lblFileType = valueLabel("lblFileType", QString(), QRect(100, 66, 260, 18), page);
    caption(QStringLiteral("位置："), 16, 90, page);
    txtFilePosition = nameBox("txtFilePosition", QRect(100, 89, 250, 20), page);
    caption(QStringLiteral("大小："), 16, 114, page);
    lblFileLength = valueLabel("lblFileLength", QString(), QRect(100, 114, 260, 18), page);
    separator(142, page);
    caption(QStringLiteral("创建时间："), 16, 154, page);
    lblFileCreated = valueLabel("lblFileCreated", QString(), QRect(100, 154, 260, 18), page);
    caption(QStringLiteral("修改时间："), 16, 178, page);
    lblFileModified = valueLabel("lblFileModified", QString(), QRect(100, 178, 260, 18), page);
    caption(QStringLiteral("访问时间："), 16, 202, page);
    lblFileAccessed = valueLabel("lblFileAccessed", QString(), QRect(100, 202, 260, 18), page);
    separator(230, page);
    caption(QStringLiteral("文件属性："), 16, 244, page);
    chkReadOnly
        = named(new QCheckBox(QStringLiteral("只读[&R]"), page), "chkReadOnly", QRect(100, 242, 90, 20));
    chkHide = named(new QCheckBox(QStringLiteral("隐藏[&H]"), page), "chkHide", QRect(200, 242, 90, 20));
    chkDocument
        = named(new QCheckBox(QStringLiteral("存档[&D]"), page), "chkDocument", QRect(100, 266, 90, 20));
    chkSystem = named(new QCheckBox(QStringLiteral("系统[&Y]"), page), "chkSystem", QRect(200, 266, 90, 20));
    for (QCheckBox* box : {chkReadOnly, chkHide, chkDocument, chkSystem}) {
        box->installEventFilter(this);
        // The keyboard's space bar changes a box as well as the mouse does.
        connect(box, &QCheckBox::clicked, this, [this] { cmdApply->setEnabled(true); });
    }
}

void frmFileProperty::buildSummaryPages()
{
    pic_Docket = named(new QWidget(this), "pic_Docket", QRect(6, 30, 548, 360));
    picIcon_16A = valueLabel("picIcon_16A", QString(), QRect(8, 6, 16, 16), pic_Docket);
    txtShortFileNameA = nameBox("txtShortFileNameA", QRect(30, 4, 510, 20), pic_Docket);
    txtDocket = named(new QPlainTextEdit(pic_Docket), "txtDocket", QRect(8, 28, 532, 326));
    txtDocket->setReadOnly(true);
    docketColours(txtDocket);
    lvZIPView = named(new QTreeWidget(pic_Docket), "lvZIPView", QRect(8, 28, 532, 326));
    lvZIPView->setRootIsDecorated(false);
    lvZIPView->setUniformRowHeights(true);
    lvZIPView->setHeaderLabels(ZipInformation::columnCaptions());
    lvZIPView->header()->setStretchLastSection(false);
    const int widths[] = {170, 84, 130, 64, 84, 76};
    for (int column = 0; column < 6; ++column)
        lvZIPView->setColumnWidth(column, widths[column]);
    docketColours(lvZIPView);
    lvZIPView->hide();

    Pic_EXE_Dll = new ResourceBrowser(this);
    Pic_EXE_Dll->setGeometry(6, 30, 548, 360);
}

void frmFileProperty::buildDrivePage()
{
    pic_DriveProp = named(new DrivePanel(this), "pic_DriveProp", QRect(6, 30, 548, 360));
    QWidget* page = pic_DriveProp;
    picDiskIcon = valueLabel("picDiskIcon", QString(), QRect(16, 10, 32, 32), page);
    caption(QStringLiteral("卷标名(&L)："), 60, 18, page, 84);
    txtVolumeName = named(new QLineEdit(page), "txtVolumeName", QRect(146, 16, 204, 20));
    txtVolumeName->installEventFilter(this);
    separator(48, page);
    caption(QStringLiteral("磁盘类型："), 16, 58, page);
    lblDiskType = valueLabel("lblDiskType", QString(), QRect(100, 58, 250, 18), page);
    caption(QStringLiteral("文件系统："), 16, 80, page);
    lblFileSystem = valueLabel("lblFileSystem", QString(), QRect(100, 80, 250, 18), page);
    separator(104, page);
    const QString zeroBytes = QStringLiteral("0  字节");
    const QString zeroGb = QStringLiteral("0 GB");
    picUseSpace = swatch("picUseSpace", kUsedTop, QRect(16, 116, 12, 12), page);
    caption(QStringLiteral("已用空间："), 34, 114, page);
    lblSpaceUsed = valueLabel("lblSpaceUsed", zeroBytes, QRect(110, 114, 150, 18), page);
    lblSpaceUsedA = valueLabel("lblSpaceUsedA", zeroGb, QRect(262, 114, 96, 18), page);
    picAvailSpace = swatch("picAvailSpace", kFreeTop, QRect(16, 138, 12, 12), page);
    caption(QStringLiteral("可用空间："), 34, 136, page);
    lblAvailableSpace = valueLabel("lblAvailableSpace", zeroBytes, QRect(110, 136, 150, 18), page);
    lblAvailableSpaceA = valueLabel("lblAvailableSpaceA", zeroGb, QRect(262, 136, 96, 18), page);
    separator(158, page);
    caption(QStringLiteral("总计空间："), 34, 162, page);
    lblTotalSpace = valueLabel("lblTotalSpace", zeroBytes, QRect(110, 162, 150, 18), page);
    lblTotalSpaceA = valueLabel("lblTotalSpaceA", zeroGb, QRect(262, 162, 96, 18), page);
    lblDriveName = valueLabel("lblDriveName", QStringLiteral("驱动器 "), QRect(8, 250, 532, 18), page);
    for (QLabel* label :
        {lblTotalSpace, lblAvailableSpace, lblSpaceUsed, lblTotalSpaceA, lblAvailableSpaceA, lblSpaceUsedA})
        label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
}

void frmFileProperty::showTab(int index)
{
    Pic_Normal->setVisible(index == 0);
    pic_DriveProp->setVisible(index == 2);
    Pic_EXE_Dll->setVisible(index == 1 && m_module);
    pic_Docket->setVisible(index == 1 && !m_module);
    lvZIPView->setVisible(m_zip);
    txtDocket->setVisible(!m_zip);
}

void frmFileProperty::GetInfor(const QString& path)
{
    QGuiApplication::setOverrideCursor(Qt::BusyCursor);
    const auto restore = qScopeGuard([] { QGuiApplication::restoreOverrideCursor(); });
    m_path = path;
    fillGeneralPage();
    fillSummary();
    fillDrivePage();
    for (QLineEdit* box :
        {txtFullFileName, txtFilePosition, txtShortFileNameA, Pic_EXE_Dll->txtShortFileNameB})
        attachBalloon(box);
    showTab(TabStrip1->currentIndex());
}

void frmFileProperty::fillGeneralPage()
{
    files::FileIcons icons;
    PicIcon_32->setPixmap(icons.largePixmap(m_path));
    const QString name = m_fs->GetFileName(m_path);
    setWindowTitle(name + QStringLiteral(" 属性"));
    txtFullFileName->setText(name);
    txtFilePosition->setText(m_fs->GetParentFolderName(m_path));
    lblFileType->setText(m_fs->GetFileTypeName(m_path));
    lblFileLength->setText(fileLengthText(m_fs->GetFileSize(m_path)));
    lblFileCreated->setText(m_fs->GetFileDateTime(m_path, 0));
    lblFileModified->setText(m_fs->GetFileDateTime(m_path, 1));
    lblFileAccessed->setText(m_fs->GetFileDateTime(m_path, 2));
    const int word = m_fs->GetFileAttributesNumber(m_path);
    if (word >= 0) {
        chkReadOnly->setChecked(word & 1);
        chkHide->setChecked(word & 2);
        chkSystem->setChecked(word & 4);
        chkDocument->setChecked(word & 32);
    }
}

void frmFileProperty::fillSummary()
{
    files::FileIcons icons;
    const QString name = m_fs->GetFileName(m_path);
    picIcon_16A->setPixmap(icons.smallPixmap(m_path));
    txtShortFileNameA->setText(name);
    const SummaryKind kind = summaryKindOf(m_path);
    m_module = kind == SummaryKind::Module;
    m_zip = kind == SummaryKind::Zip;
    txtDocket->clear();
    switch (kind) {
    case SummaryKind::Mp3:
        txtDocket->setPlainText(displayLines(mp3Summary(m_path)));
        break;
    case SummaryKind::Swf:
        txtDocket->setPlainText(displayLines(flashSummary(m_path)));
        break;
    case SummaryKind::Zip: {
        ZipInformation zip;
        const QColor folderColour(QRgb(0xFF000000u | ZipInformation::kFolderRgb));
        QList<QTreeWidgetItem*> rows;
        zip.readZip(m_path, [&](const ZipRow& row) {
            auto* item = new QTreeWidgetItem(
                QStringList{row.text, row.size, row.modified, row.ratio, row.compressedSize, row.crc});
            for (int column = 0; column < 6; ++column) {
                item->setToolTip(column, row.toolTip);
                if (row.isFolder)
                    item->setForeground(column, folderColour);
            }
            rows.append(item);
            return true;
        });
        for (const QString& line : zip.getFileQuantitySize())
            rows.append(new QTreeWidgetItem(QStringList{line}));
        lvZIPView->addTopLevelItems(rows);
        break;
    }
    case SummaryKind::Module:
        Pic_EXE_Dll->picIcon_16B->setPixmap(icons.smallPixmap(m_path));
        Pic_EXE_Dll->txtShortFileNameB->setText(name);
        Pic_EXE_Dll->openModule(m_path, name);
        break;
    case SummaryKind::None:
        break;
    }
}

void frmFileProperty::fillDrivePage()
{
    const auto volume = files::volumeOfPath(m_volumes.list(), m_path);
    if (!volume)
        return; // no drive: the page keeps its starting texts
    m_root = volume->mountPoint;
    const auto figure = [&](int kind) { return static_cast<qint64>(m_fs->GetDiskSpaceSize(m_root, kind)); };
    const qint64 total = figure(0);
    const qint64 free = figure(1);
    const qint64 used = figure(2);
    m_labelShown = m_fs->GetDiskInformationA(m_root, 4).toString();
    txtVolumeName->setText(m_labelShown);
    lblFileSystem->setText(m_fs->GetDiskInformationA(m_root, 6).toString());
    const QString diskType = m_fs->GetDriveTypeStr(m_root);
    lblDiskType->setText(diskType);
    m_cdRom = m_fs->GetDriveType(m_root) == platform::kDriveCdRom;
    if (m_cdRom) {
        txtVolumeName->setReadOnly(true);
        QPalette palette = txtVolumeName->palette();
        palette.setColor(QPalette::Base, palette.color(QPalette::Button));
        txtVolumeName->setPalette(palette);
    }
    if (total >= 0) {
        lblTotalSpace->setText(spaceLongText(total));
        lblAvailableSpace->setText(spaceLongText(free));
        lblSpaceUsed->setText(spaceLongText(used));
        lblTotalSpaceA->setText(spaceShortText(total));
        lblAvailableSpaceA->setText(spaceShortText(free));
        lblSpaceUsedA->setText(spaceShortText(used));
        lblDriveName->setText(
            driveNameText(m_root, m_fs->GetDiskInformationA(m_root, 5).toString(), free, used, total));
        pic_DriveProp->setSpace(used, total);
    }
    TabStrip1->setTabText(2, driveTabCaption(diskType, m_root));
    QFileIconProvider provider;
    picDiskIcon->setPixmap(provider.icon(QFileIconProvider::Drive).pixmap(32, 32));
}

bool frmFileProperty::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == txtVolumeName) {
        const bool typed = event->type() == QEvent::KeyPress || event->type() == QEvent::InputMethod;
        if (typed && m_cdRom)
            return true; // a disc's label cannot be changed: the key goes nowhere
        if (event->type() == QEvent::KeyPress && !static_cast<QKeyEvent*>(event)->text().isEmpty())
            cmdApply->setEnabled(true);
        if (event->type() == QEvent::InputMethod)
            cmdApply->setEnabled(true);
    } else if (event->type() == QEvent::MouseButtonPress
        && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        cmdApply->setEnabled(true);
    }
    return QDialog::eventFilter(watched, event);
}

void frmFileProperty::cmdApply_Click()
{
    // The system box is not part of the word (Linux has no system flag); see attributeWordFromBoxes().
    applyAttributeWord(m_path,
        attributeWordFromBoxes(chkReadOnly->isChecked(), chkHide->isChecked(), chkDocument->isChecked()));
    // Linux volumes mostly refuse a new label; a refusal changes nothing and is not reported.
    if (!m_root.isEmpty() && !m_cdRom && txtVolumeName->text() != m_labelShown)
        m_fs->SetDiskVolumeLabel(m_root, txtVolumeName->text());
    cmdSure->setText(QStringLiteral("关闭[&E]"));
}

void frmFileProperty::closeEvent(QCloseEvent* event)
{
    Pic_EXE_Dll->closeBrowser();
    QDialog::closeEvent(event);
}

void frmFileProperty::done(int result)
{
    Pic_EXE_Dll->closeBrowser();
    QDialog::done(result);
}

} // namespace vindaro::info::ui
