#include "frmSplash.h"

#include "chrome/Frame3D.h"
#include "sysinfo/ProgramInfo.h"
#include "sysinfo/SysInfoTool.h"
#include "sysinfo/ui/ProgramIcon.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace vindaro::sysinfo::ui {

const QString frmSplash::kOkCaption = QStringLiteral("Sure(&S)");
const QString frmSplash::kSysInfoCaption = QStringLiteral("SystemInfo(&I)");

namespace {

const QColor kLineWhite(255, 255, 255);
const QColor kLineGrey(128, 128, 128);

// One pair of the frame's lines across the page: grey above white, which reads as a groove.
class FrameLinePair final : public QWidget
{
public:
    explicit FrameLinePair(const QString& name)
    {
        setObjectName(name);
        setFixedHeight(2);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setPen(kLineGrey);
        painter.drawLine(0, 0, width() - 1, 0);
        painter.setPen(kLineWhite);
        painter.drawLine(0, 1, width() - 1, 1);
    }
};

QLabel* label(QWidget* parent, const char* name)
{
    auto* l = new QLabel(parent);
    l->setObjectName(QLatin1String(name));
    l->setTextFormat(Qt::PlainText);
    return l;
}

QString screenLines(QString text)
{
    return text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
}

} // namespace

frmSplash::frmSplash(const SplashFacts& facts, std::function<bool()> startSysInfo, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
    , m_startSysInfo(std::move(startSysInfo))
    , m_dragger(this)
{
    setObjectName(QStringLiteral("frmSplash"));
    if (!m_startSysInfo)
        m_startSysInfo = [] { return StartSysInfo(); };
    QFont song(QStringLiteral("宋体"));
    song.setPointSizeF(font().pointSizeF());
    setFont(song);
    setWindowTitle(QStringLiteral("关于 ") + kProgramTitle);
    setWindowIcon(programIcon());
    buildWindow();
    showPage(composeSplashPage(facts));
}

void frmSplash::buildWindow()
{
    auto* logo = new QLabel(this);
    logo->setObjectName(QStringLiteral("imgLogo"));
    logo->setPixmap(programIcon().pixmap(QSize(48, 48)));
    logo->setAlignment(Qt::AlignTop);

    lblProductName = label(this, "lblProductName");
    QFont big = lblProductName->font();
    big.setPointSizeF(big.pointSizeF() * 1.8);
    big.setBold(true);
    lblProductName->setFont(big);
    lblVersion = label(this, "lblVersion");
    lblIssueYear = label(this, "lblIssueYear");
    Label3 = label(this, "Label3");
    Label4 = label(this, "Label4");
    Label5 = label(this, "Label5");
    Label6 = label(this, "Label6");
    lblComputerInfo = label(this, "lblComputerInfo");
    lblCPUInformation = label(this, "lblCPUInformation");
    lblComputerInfo->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    lblCPUInformation->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    lblCPUInformation->setWordWrap(true); // a long processor name wraps; the machine id must not

    cmdOK = new QPushButton(kOkCaption, this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    cmdSysInfo = new QPushButton(kSysInfoCaption, this);
    cmdSysInfo->setObjectName(QStringLiteral("cmdSysInfo"));
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    connect(cmdSysInfo, &QPushButton::clicked, this, &frmSplash::cmdSysInfoClick);

    auto* titles = new QVBoxLayout;
    titles->setSpacing(2);
    titles->addWidget(lblProductName);
    auto* versionRow = new QHBoxLayout;
    versionRow->addWidget(lblVersion);
    versionRow->addStretch(1);
    versionRow->addWidget(lblIssueYear);
    titles->addLayout(versionRow);
    auto* head = new QHBoxLayout;
    head->setSpacing(12);
    head->addWidget(logo);
    head->addLayout(titles, 1);

    auto* facts = new QHBoxLayout;
    facts->setSpacing(16);
    facts->addWidget(lblComputerInfo);
    facts->addWidget(lblCPUInformation, 1);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdSysInfo);

    auto* page = new QVBoxLayout(this);
    page->setContentsMargins(14, 12, 14, 12);
    page->setSpacing(6);
    page->addLayout(head);
    page->addWidget(new FrameLinePair(QStringLiteral("linFrame1")));
    for (QLabel* line : {Label3, Label4, Label5, Label6})
        page->addWidget(line);
    page->addWidget(new FrameLinePair(QStringLiteral("linFrame2")));
    page->addLayout(facts);
    page->addWidget(new FrameLinePair(QStringLiteral("linFrame3")));
    page->addLayout(buttons);
    setMinimumWidth(520);
}

void frmSplash::showPage(const SplashPage& page)
{
    Label3->setText(page.company);
    Label4->setText(page.computerName);
    Label5->setText(page.userName);
    Label6->setText(screenLines(page.memory));
    lblVersion->setText(page.version);
    lblProductName->setText(page.productName);
    lblIssueYear->setText(page.issueYear);
    m_winVersion = page.winVersion;
    // The computer lines end with a line break; the label shows no empty line after them.
    lblComputerInfo->setText(screenLines(page.computerInfo).chopped(1));
    lblCPUInformation->setText(screenLines(page.cpuInformation));
}

// Nothing to tell when no tool is installed: the window closes all the same.
void frmSplash::cmdSysInfoClick()
{
    m_startSysInfo();
    accept();
}

void frmSplash::paintEvent(QPaintEvent* event)
{
    QDialog::paintEvent(event);
    QPainter painter(this);
    chrome::Draw3DFrame(
        painter, rect().adjusted(1, 1, -1, -1), chrome::FrameStyle::Raised, kLineWhite, kLineGrey);
}

void frmSplash::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_dragger.press(event->globalPosition().toPoint());
    QDialog::mousePressEvent(event);
}

void frmSplash::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_dragger.move(event->globalPosition().toPoint()))
        QDialog::mouseMoveEvent(event);
}

void frmSplash::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_dragger.release();
    QDialog::mouseReleaseEvent(event);
}

} // namespace vindaro::sysinfo::ui
