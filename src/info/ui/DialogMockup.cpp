#include "DialogMockup.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>

namespace vindaro::info::ui {

namespace {

// Window and control style bits of the template.
constexpr quint32 kWsCaption = 0x00C00000;
constexpr quint32 kButtonTypeMask = 0x0F;
constexpr quint32 kEditMultiLine = 0x0004;
constexpr quint32 kStaticTypeMask = 0x1F;
constexpr quint32 kScrollBarVertical = 0x0001;

// The classes a template may name by atom, spelled out by the template reader.
QString upper(const QString& text)
{
    return text.toUpper();
}

// A control that looks like itself but takes neither mouse nor keys.
void freeze(QWidget* widget)
{
    widget->setAttribute(Qt::WA_TransparentForMouseEvents);
    widget->setFocusPolicy(Qt::NoFocus);
    for (QWidget* child : widget->findChildren<QWidget*>()) {
        child->setAttribute(Qt::WA_TransparentForMouseEvents);
        child->setFocusPolicy(Qt::NoFocus);
    }
}

QString caption(const QString& text)
{
    // Captions keep Windows' "&" mnemonic marker, which Qt reads the same way; "#N" names an icon or
    // bitmap by number, which the mock-up shows as its reference.
    return text;
}

} // namespace

DialogMockup::DialogMockup(const resources::DialogTemplate& dialog, QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("DialogMockup"));
    QFont dialogFont = font();
    if (!dialog.fontName.isEmpty())
        dialogFont.setFamily(dialog.fontName);
    if (dialog.pointSize > 0)
        dialogFont.setPointSize(dialog.pointSize);
    setFont(dialogFont);
    const QFontMetrics metrics(dialogFont);
    // Windows' base unit: the average width of the 52 Latin letters, rounded, and the character height.
    const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    m_baseX = qMax(1, (metrics.horizontalAdvance(letters) / 26 + 1) / 2);
    m_baseY = qMax(1, metrics.height());

    auto* frame = new QFrame(this);
    frame->setFrameShape(QFrame::Panel);
    frame->setFrameShadow(QFrame::Raised);
    frame->setLineWidth(2);
    frame->setAutoFillBackground(true);
    int titleHeight = 0;
    if ((dialog.style & kWsCaption) == kWsCaption) {
        titleHeight = metrics.height() + 6;
        auto* title = new QLabel(dialog.title, frame);
        title->setObjectName(QStringLiteral("DialogTitle"));
        title->setAutoFillBackground(true);
        QPalette palette = title->palette();
        palette.setColor(QPalette::Window, QColor(0, 0, 128));
        palette.setColor(QPalette::WindowText, Qt::white);
        title->setPalette(palette);
        title->setGeometry(2, 2, toPixelsX(dialog.cx), titleHeight);
        title->setIndent(4);
    }
    auto* client = new QWidget(frame);
    client->setObjectName(QStringLiteral("DialogClient"));
    client->setGeometry(2, 2 + titleHeight, toPixelsX(dialog.cx), toPixelsY(dialog.cy));
    for (const resources::DialogControl& control : dialog.controls) {
        QWidget* widget = makeControl(control, client);
        int height = toPixelsY(control.cy);
        if (qobject_cast<QComboBox*>(widget)) // a combo's template height includes its drop-down list
            height = qMin(height, widget->sizeHint().height());
        widget->setGeometry(toPixelsX(control.x), toPixelsY(control.y), toPixelsX(control.cx), height);
        freeze(widget);
    }
    const QSize size(toPixelsX(dialog.cx) + 4, toPixelsY(dialog.cy) + titleHeight + 4);
    frame->setGeometry(0, 0, size.width(), size.height());
    resize(size);
}

QWidget* DialogMockup::makeControl(const resources::DialogControl& control, QWidget* parent)
{
    const QString windowClass = upper(control.windowClass);
    const QString text = caption(control.text);
    QWidget* widget = nullptr;
    if (windowClass == QLatin1String("BUTTON")) {
        switch (control.style & kButtonTypeMask) {
        case 2: // check box, auto check box, three-state, auto three-state
        case 3:
        case 5:
        case 6:
            widget = new QCheckBox(text, parent);
            break;
        case 4: // radio button, auto radio button
        case 9:
            widget = new QRadioButton(text, parent);
            break;
        case 7:
            widget = new QGroupBox(text, parent);
            break;
        default:
            widget = new QPushButton(text, parent);
            break;
        }
    } else if (windowClass == QLatin1String("EDIT")) {
        if (control.style & kEditMultiLine)
            widget = new QPlainTextEdit(text, parent);
        else
            widget = new QLineEdit(text, parent);
    } else if (windowClass == QLatin1String("STATIC")) {
        const quint32 kind = control.style & kStaticTypeMask;
        auto* label = new QLabel(parent);
        if (kind <= 2) { // left, centred, right aligned text
            label->setText(text);
            label->setWordWrap(true);
            label->setAlignment(kind == 1 ? Qt::AlignHCenter | Qt::AlignTop
                    : kind == 2           ? Qt::AlignRight | Qt::AlignTop
                                          : Qt::AlignLeft | Qt::AlignTop);
        } else if (kind == 0x0B) { // simple text
            label->setText(text);
        } else { // icons, bitmaps, frames and rectangles: their outline
            label->setFrameShape(QFrame::Box);
        }
        widget = label;
    } else if (windowClass == QLatin1String("LISTBOX")) {
        widget = new QListWidget(parent);
    } else if (windowClass == QLatin1String("COMBOBOX")) {
        auto* combo = new QComboBox(parent);
        combo->addItem(text);
        widget = combo;
    } else if (windowClass == QLatin1String("SCROLLBAR")) {
        widget = new QScrollBar((control.style & kScrollBarVertical) ? Qt::Vertical : Qt::Horizontal, parent);
    } else {
        // A custom class: its outline and its class name, since we cannot run its code.
        auto* label = new QLabel(text.isEmpty() ? control.windowClass : text, parent);
        label->setFrameShape(QFrame::Box);
        label->setAlignment(Qt::AlignCenter);
        widget = label;
    }
    widget->setObjectName(QStringLiteral("DialogControl%1").arg(control.id));
    return widget;
}

} // namespace vindaro::info::ui
