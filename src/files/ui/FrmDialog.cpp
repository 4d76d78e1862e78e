#include "FrmDialog.h"

#include "FileIcons.h"
#include "files/FileListModel.h"
#include "files/FileListTexts.h"
#include "files/FileSystem.h"
#include "info/Mp3ID3v1TAG.h"

#include <QApplication>
#include <QEnterEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

namespace vindaro::files {

namespace {

const QColor kBalloonColour(255, 255, 204);
const QColor kFieldFrameColour(225, 225, 225);
constexpr int kCornerRadius = 10;
constexpr int kPointerHalfWidth = 9;

QFont dialogFont()
{
    const QString family = QFontDatabase::hasFamily(QStringLiteral("宋体")) ? QStringLiteral("宋体")
                                                                            : QStringLiteral("MS Sans Serif");
    QFont font(family);
    font.setPixelSize(12);
    return font;
}

} // namespace

// A drawn button: raised, hover and pressed looks; acts on the left button going down.
class BalloonButton final : public QWidget
{
public:
    BalloonButton(const QString& name, const QString& text, QWidget* parent)
        : QWidget(parent)
        , m_text(text)
    {
        setObjectName(name);
        setFixedSize(64, 22);
        setCursor(Qt::PointingHandCursor);
        setAttribute(Qt::WA_Hover);
    }
    std::function<void()> onPress;
    void setPressed(bool pressed)
    {
        m_pressed = pressed;
        update();
    }
    bool isPressed() const { return m_pressed; }
    QString text() const { return m_text; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const QRect r = rect().adjusted(0, 0, -1, -1);
        painter.fillRect(rect(), m_hover && !m_pressed ? kBalloonColour.darker(108) : kBalloonColour);
        const QColor light = palette().color(QPalette::Light);
        const QColor dark = palette().color(QPalette::Dark);
        painter.setPen(m_pressed ? dark : light);
        painter.drawLine(r.topLeft(), r.topRight());
        painter.drawLine(r.topLeft(), r.bottomLeft());
        painter.setPen(m_pressed ? light : dark);
        painter.drawLine(r.bottomLeft(), r.bottomRight());
        painter.drawLine(r.topRight(), r.bottomRight());
        painter.setPen(palette().color(QPalette::WindowText));
        painter.setFont(font());
        painter.drawText(rect().translated(m_pressed ? 1 : 0, m_pressed ? 1 : 0), Qt::AlignCenter, m_text);
    }
    void enterEvent(QEnterEvent*) override
    {
        m_hover = true;
        update();
    }
    void leaveEvent(QEvent*) override
    {
        m_hover = false;
        update();
    }
    void mousePressEvent(QMouseEvent* event) override
    {
        if (event->button() == Qt::LeftButton && onPress)
            onPress();
    }

private:
    QString m_text;
    bool m_pressed = false;
    bool m_hover = false;
};

BalloonPlacement placeBalloon(const QRect& anchor, const QRect& screen, const QSize& size)
{
    BalloonPlacement placement;
    const int roomBelow = screen.bottom() - anchor.bottom();
    const int roomAbove = anchor.top() - screen.top();
    placement.below = roomBelow >= size.height() || roomBelow >= roomAbove;
    const int y = placement.below ? anchor.bottom() + 1 : anchor.top() - size.height();
    int x = anchor.left();
    if (x + size.width() - 1 > screen.right())
        x = screen.right() - size.width() + 1;
    x = qMax(x, screen.left());
    placement.topLeft
        = QPoint(x, qBound(screen.top(), y, qMax(screen.top(), screen.bottom() - size.height() + 1)));
    const int margin = kCornerRadius + kPointerHalfWidth;
    placement.pointerX = qBound(margin, anchor.center().x() - x, qMax(margin, size.width() - margin));
    return placement;
}

QPainterPath balloonPath(const QSize& size, bool below, int pointerX)
{
    const int h = FrmDialog::kPointerHeight;
    const QRectF body = below ? QRectF(0.5, h + 0.5, size.width() - 1.0, size.height() - h - 1.0)
                              : QRectF(0.5, 0.5, size.width() - 1.0, size.height() - h - 1.0);
    QPainterPath path;
    path.addRoundedRect(body, kCornerRadius, kCornerRadius);
    QPainterPath pointer;
    const qreal baseY = below ? body.top() + 1 : body.bottom() - 1;
    const qreal tipY = below ? 0.5 : size.height() - 0.5;
    pointer.moveTo(pointerX - kPointerHalfWidth, baseY);
    pointer.lineTo(pointerX, tipY);
    pointer.lineTo(pointerX + kPointerHalfWidth, baseY);
    pointer.closeSubpath();
    return path.united(pointer);
}

FrmDialog::FrmDialog(FileListModel& list, FileSystem& fileSystem, Prompter& prompts, FileIcons& icons,
    QWidget* anchor, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
    , m_list(list)
    , m_fs(fileSystem)
    , m_prompts(prompts)
    , m_anchor(anchor)
    , m_path(list.currentText())
{
    setObjectName(QStringLiteral("frmDialog"));
    setWindowTitle(QStringLiteral("对话框标题"));
    setModal(true);
    setAttribute(Qt::WA_TranslucentBackground, false);
    QPalette pal = palette();
    pal.setColor(QPalette::Window, kBalloonColour);
    pal.setColor(QPalette::Base, kBalloonColour);
    setPalette(pal);
    setAutoFillBackground(false);
    const QFont font = dialogFont();

    auto* lblTitle = new QLabel(QStringLiteral("Title"), this);
    lblTitle->setObjectName(QStringLiteral("lblTitle"));
    auto* lblText = new QLabel(QStringLiteral("Text"), this);
    lblText->setObjectName(QStringLiteral("lblText"));
    auto* lblNewText = new QLabel(QStringLiteral("请输入新的文件名[例如]："), this);
    lblNewText->setObjectName(QStringLiteral("lblNewText"));
    auto* picIcon16 = new QLabel(this);
    picIcon16->setObjectName(QStringLiteral("PicIcon16"));
    picIcon16->setFixedSize(16, 16);
    auto* picIcon32 = new QLabel(this);
    picIcon32->setObjectName(QStringLiteral("PicIcon32"));
    picIcon32->setFixedSize(32, 32);
    auto* picText = new QFrame(this);
    picText->setObjectName(QStringLiteral("PicText"));
    picText->setStyleSheet(
        QStringLiteral("#PicText { border: 1px solid rgb(225, 225, 225); background: rgb(255, 255, 204); }"));
    m_txtNewFileName = new QLineEdit(QStringLiteral("新的文件名"), picText);
    m_txtNewFileName->setObjectName(QStringLiteral("txtNewFileName"));
    m_txtNewFileName->setFrame(false);
    m_picOk = new BalloonButton(QStringLiteral("PicOK"), QStringLiteral("确定"), this);
    m_picCancel = new BalloonButton(QStringLiteral("PicCancel"), QStringLiteral("取消"), this);
    for (QWidget* w : {static_cast<QWidget*>(lblTitle), static_cast<QWidget*>(lblText),
             static_cast<QWidget*>(lblNewText), static_cast<QWidget*>(m_txtNewFileName),
             static_cast<QWidget*>(m_picOk), static_cast<QWidget*>(m_picCancel)})
        w->setFont(font);

    if (m_fs.FileExists(m_path)) {
        lblTitle->setText(wrapTitle(QStringLiteral("重命名：") + m_path, kTitleWidth));
        RenameFacts facts;
        facts.sizeBytes = m_fs.GetFileSize(m_path);
        facts.typeName = m_fs.GetFileTypeName(m_path);
        facts.created = m_fs.GetFileDateTime(m_path, 0);
        facts.modified = m_fs.GetFileDateTime(m_path, 1);
        facts.accessed = m_fs.GetFileDateTime(m_path, 2);
        facts.attributes = m_fs.GetFileAttributesStr(m_path);
        if (lastThreeUpper(m_path) == QLatin1String("MP3")) {
            info::Mp3ID3v1TAG tag;
            if (tag.getId3(m_path)) {
                facts.tag = RenameFacts::Tag{tag.title(), tag.artist(), tag.album(), tag.year(), tag.genre(),
                    tag.track(), tag.comments()};
            }
        }
        lblText->setText(renameFactsText(facts).replace(QLatin1String("\r\n"), QLatin1String("\n")));
        m_txtNewFileName->setText(proposedNewName(m_fs.GetFileName(m_path)));
        picIcon16->setPixmap(icons.smallPixmap(m_path));
        picIcon32->setPixmap(icons.largePixmap(m_path));
        m_txtNewFileName->setToolTip(m_txtNewFileName->text());
    }

    // Stack from the top: title, facts, prompt, the framed field, the buttons.
    auto* fieldLayout = new QHBoxLayout(picText);
    fieldLayout->setContentsMargins(3, 2, 3, 2);
    fieldLayout->addWidget(m_txtNewFileName);
    auto* iconColumn = new QVBoxLayout;
    iconColumn->addWidget(picIcon32);
    iconColumn->addWidget(picIcon16);
    iconColumn->addStretch();
    auto* textColumn = new QVBoxLayout;
    textColumn->addWidget(lblTitle);
    textColumn->addWidget(lblText);
    textColumn->addWidget(lblNewText);
    textColumn->addWidget(picText);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_picOk);
    buttons->addWidget(m_picCancel);
    textColumn->addLayout(buttons);
    auto* top = new QHBoxLayout(this);
    top->addLayout(iconColumn);
    top->addLayout(textColumn, 1);
    m_txtNewFileName->setMinimumWidth(260);

    m_picOk->onPress = [this] { pressOk(); };
    m_picCancel->onPress = [this] { pressCancel(); };
    connect(m_txtNewFileName, &QLineEdit::returnPressed, this, &FrmDialog::pressOk);

    m_tmrTime = new QTimer(this);
    m_tmrTime->setObjectName(QStringLiteral("tmrTime"));
    m_tmrTime->setInterval(500);
    connect(m_tmrTime, &QTimer::timeout, this, &FrmDialog::watchTick);

    place();
    m_txtNewFileName->setFocus();
    m_txtNewFileName->selectAll();
}

void FrmDialog::place()
{
    const int pad = 10;
    layout()->setContentsMargins(pad, pad, pad, pad);
    adjustSize();
    const QSize withPointer(width(), height() + kPointerHeight);
    QRect anchorRect;
    QRect screenRect(0, 0, 1024, 768);
    if (m_anchor) {
        anchorRect = QRect(m_anchor->mapToGlobal(QPoint(0, 0)), m_anchor->size());
        if (QScreen* screen = m_anchor->screen())
            screenRect = screen->availableGeometry();
    } else if (QScreen* screen = QGuiApplication::primaryScreen()) {
        screenRect = screen->availableGeometry();
        anchorRect = QRect(
            screenRect.center() - QPoint(withPointer.width() / 2, withPointer.height() / 2), QSize(1, 1));
    }
    const BalloonPlacement placement = placeBalloon(anchorRect, screenRect, withPointer);
    m_below = placement.below;
    m_pointerX = placement.pointerX;
    layout()->setContentsMargins(
        pad, pad + (m_below ? kPointerHeight : 0), pad, pad + (m_below ? 0 : kPointerHeight));
    setFixedSize(withPointer);
    setMask(QRegion(balloonPath(size(), m_below, m_pointerX).toFillPolygon().toPolygon()));
    move(placement.topLeft);
}

void FrmDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    setMask(QRegion(balloonPath(size(), m_below, m_pointerX).toFillPolygon().toPolygon()));
}

void FrmDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    m_placedAt.reset();
    m_tmrTime->start();
}

void FrmDialog::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPainterPath path = balloonPath(size(), m_below, m_pointerX);
    painter.fillPath(path, kBalloonColour);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawPath(path);
}

// The balloon has no frame to drag it by; if something moves it anyway it no longer points at the list,
// so it goes. The position is recorded on the first tick, after the window manager has placed it.
void FrmDialog::watchTick()
{
    if (!m_placedAt) {
        m_placedAt = pos();
        return;
    }
    if (pos() != *m_placedAt && !m_closing)
        reject();
}

void FrmDialog::pressOk()
{
    if (m_closing)
        return;
    m_closing = true;
    m_picOk->setPressed(true);
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    const FileListModel::RenameResult result = m_list.renameFile(m_path, m_txtNewFileName->text());
    if (!result.renamed)
        m_prompts.notify(result.refusal, kReminderTitle);
    done(result.renamed ? QDialog::Accepted : QDialog::Rejected);
}

void FrmDialog::pressCancel()
{
    if (m_closing)
        return;
    m_closing = true;
    m_picCancel->setPressed(true);
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    QTimer::singleShot(kCancelDelayMs, this, &QDialog::reject);
}

} // namespace vindaro::files
