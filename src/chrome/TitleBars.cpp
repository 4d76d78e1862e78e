#include "TitleBars.h"

#include "chrome/Artwork.h"

#include <QApplication>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>
#include <algorithm>

namespace vindaro::chrome {

const QString HTitleBar::kTitle = QStringLiteral("Vindaro");
const QString VTitleBar::kCaption = QStringLiteral("VINDARO2.0");

namespace {

const QColor kBarDark(0, 92, 128);
const QColor kBarLight(49, 106, 197);

} // namespace

void paintTitleBarBackground(QPainter& painter, const QRect& rect, Qt::Orientation orientation, bool enabled)
{
    QLinearGradient fill = orientation == Qt::Horizontal ? QLinearGradient(rect.topLeft(), rect.topRight())
                                                         : QLinearGradient(rect.bottomLeft(), rect.topLeft());
    fill.setColorAt(0.0, enabled ? kBarDark : QColor(110, 116, 124));
    fill.setColorAt(1.0, enabled ? kBarLight : QColor(168, 174, 182));
    painter.fillRect(rect, fill);
    // A light line along the top (or left) edge and a dark one along the opposite edge.
    painter.setPen(QColor(255, 255, 255, 70));
    if (orientation == Qt::Horizontal)
        painter.drawLine(rect.topLeft(), rect.topRight());
    else
        painter.drawLine(rect.topLeft(), rect.bottomLeft());
    painter.setPen(QColor(0, 0, 0, 80));
    if (orientation == Qt::Horizontal)
        painter.drawLine(rect.bottomLeft(), rect.bottomRight());
    else
        painter.drawLine(rect.topRight(), rect.bottomRight());
}

// --- WindowDragger ---

WindowDragger::WindowDragger(QWidget* handle)
    : m_handle(handle)
{
}

void WindowDragger::press(const QPoint& globalPos)
{
    m_armed = true;
    m_dragging = false;
    m_systemMove = false;
    m_pressGlobal = globalPos;
}

bool WindowDragger::move(const QPoint& globalPos)
{
    if (!m_armed)
        return false;
    QWidget* window = m_handle->window();
    if (!m_dragging) {
        if ((globalPos - m_pressGlobal).manhattanLength() < QApplication::startDragDistance())
            return false;
        m_dragging = true;
        m_windowStart = window->pos();
        QWindow* handle = window->windowHandle();
        m_systemMove = handle && handle->startSystemMove();
        if (m_systemMove)
            m_armed = false; // the window manager has the mouse until the button comes up
    }
    if (!m_systemMove)
        window->move(m_windowStart + (globalPos - m_pressGlobal));
    return true;
}

void WindowDragger::release()
{
    m_armed = false;
    m_dragging = false;
    m_systemMove = false;
}

// --- HTitleBar ---

HTitleBar::HTitleBar(QWidget* parent)
    : QWidget(parent)
    , m_title(kTitle)
    , m_dragger(this)
{
    setObjectName(QStringLiteral("picHTitleBar"));
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void HTitleBar::setTitle(const QString& title)
{
    m_title = title;
    update();
}

QSize HTitleBar::sizeHint() const
{
    return {240, kHeight};
}

QSize HTitleBar::minimumSizeHint() const
{
    return {static_cast<int>(4 * TitleBarLayout::kButtonWidth) + 40, kHeight};
}

TitleBarArea HTitleBar::pressedArea() const
{
    if (TitleBarLayout::isButton(m_pressArea) && m_pressStillOver)
        return m_pressArea;
    return TitleBarArea::Outside;
}

TitleBarArea HTitleBar::areaAt(const QPoint& pos) const
{
    if (pos.y() < 0 || pos.y() >= height())
        return TitleBarArea::Outside;
    return TitleBarLayout::areaAt(pos.x(), width());
}

QRect HTitleBar::buttonRect(TitleBarArea area) const
{
    const AreaSpan span = TitleBarLayout::spanOf(area, width());
    return QRect(static_cast<int>(span.left), 1, static_cast<int>(span.right - span.left), height() - 2);
}

void HTitleBar::paintButton(QPainter& painter, TitleBarArea area)
{
    const QRect r = buttonRect(area);
    const bool pressed = pressedArea() == area;
    const bool hover = !pressed && m_hoverArea == area && m_pressArea == TitleBarArea::Outside && isEnabled();
    if (pressed || hover) {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing, true);
        QColor face = area == TitleBarArea::Close ? QColor(212, 64, 52) : QColor(255, 255, 255, 60);
        if (pressed)
            face = area == TitleBarArea::Close ? QColor(150, 36, 30) : QColor(0, 30, 60, 110);
        painter.setPen(pressed ? QColor(0, 0, 0, 110) : QColor(255, 255, 255, 110));
        painter.setBrush(face);
        painter.drawRoundedRect(QRectF(r).adjusted(0.5, 0.5, -0.5, -0.5), 2.5, 2.5);
        painter.restore();
    }
    ArtworkId art = ArtworkId::FileMenuButton;
    switch (area) {
    case TitleBarArea::Minimize:
        art = ArtworkId::MinimizeButton;
        break;
    case TitleBarArea::Tray:
        art = ArtworkId::TrayButton;
        break;
    case TitleBarArea::Close:
        art = ArtworkId::CloseButton;
        break;
    default:
        break;
    }
    const int side = std::min(r.width(), r.height()) - 2;
    QRectF glyph(0, 0, side, side);
    glyph.moveCenter(QRectF(r).center());
    if (pressed)
        glyph.translate(0.5, 0.5);
    if (!isEnabled())
        painter.setOpacity(0.55);
    paintArtwork(painter, art, glyph);
    painter.setOpacity(1.0);
}

void HTitleBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintTitleBarBackground(painter, rect(), Qt::Horizontal, isEnabled());

    const qint64 w = width();
    const AreaSpan leftButton = TitleBarLayout::spanOf(TitleBarArea::FileMenu, w);
    const AreaSpan firstRight = TitleBarLayout::spanOf(TitleBarArea::Minimize, w);
    QFont bold = font();
    bold.setBold(true);
    painter.setFont(bold);
    const QRect titleRect(static_cast<int>(leftButton.right) + 4, 0,
        static_cast<int>(firstRight.left - leftButton.right) - 8, height());
    painter.setPen(QColor(0, 0, 0, 90));
    painter.drawText(titleRect.translated(1, 1), Qt::AlignLeft | Qt::AlignVCenter, m_title);
    painter.setPen(isEnabled() ? Qt::white : QColor(230, 230, 230));
    painter.drawText(titleRect, Qt::AlignLeft | Qt::AlignVCenter, m_title);

    for (TitleBarArea area :
        {TitleBarArea::FileMenu, TitleBarArea::Minimize, TitleBarArea::Tray, TitleBarArea::Close})
        paintButton(painter, area);
}

void HTitleBar::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->accept();
        return;
    }
    m_pressArea = areaAt(event->position().toPoint());
    m_pressStillOver = true;
    if (m_pressArea == TitleBarArea::Caption)
        m_dragger.press(event->globalPosition().toPoint());
    update();
    event->accept();
}

void HTitleBar::mouseMoveEvent(QMouseEvent* event)
{
    const TitleBarArea area = areaAt(event->position().toPoint());
    if (area != m_hoverArea) {
        m_hoverArea = area;
        update();
    }
    if (!(event->buttons() & Qt::LeftButton))
        return;
    if (TitleBarLayout::isButton(m_pressArea)) {
        const bool over = area == m_pressArea;
        if (over != m_pressStillOver) {
            m_pressStillOver = over;
            update();
        }
    } else if (m_pressArea == TitleBarArea::Caption) {
        m_dragger.move(event->globalPosition().toPoint());
    }
}

void HTitleBar::mouseReleaseEvent(QMouseEvent* event)
{
    const QPoint pos = event->position().toPoint();
    const TitleBarArea area = areaAt(pos);
    if (event->button() == Qt::RightButton) {
        event->accept();
        if (TitleBarLayout::opensFileMenuOnRightClick(area))
            emit fileMenuRequested(event->globalPosition().toPoint());
        return;
    }
    if (event->button() != Qt::LeftButton)
        return;
    const TitleBarArea pressed = m_pressArea;
    m_pressArea = TitleBarArea::Outside;
    m_pressStillOver = false;
    m_dragger.release();
    update();
    event->accept();
    if (!TitleBarLayout::isButton(pressed) || area != pressed)
        return;
    // Emitted last: a receiver may close the window and take the bar with it.
    switch (pressed) {
    case TitleBarArea::FileMenu:
        emit fileMenuRequested(mapToGlobal(QPoint(0, height())));
        break;
    case TitleBarArea::Minimize:
        emit minimizeRequested();
        break;
    case TitleBarArea::Tray:
        emit trayRequested();
        break;
    case TitleBarArea::Close:
        emit closeRequested();
        break;
    case TitleBarArea::Outside:
    case TitleBarArea::Caption:
        break;
    }
}

void HTitleBar::leaveEvent(QEvent* event)
{
    m_hoverArea = TitleBarArea::Outside;
    update();
    QWidget::leaveEvent(event);
}

void HTitleBar::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::EnabledChange) {
        m_pressArea = TitleBarArea::Outside;
        m_dragger.release();
        update();
    }
    QWidget::changeEvent(event);
}

// --- VTitleBar ---

VTitleBar::VTitleBar(QWidget* parent)
    : QWidget(parent)
    , m_dragger(this)
{
    setObjectName(QStringLiteral("picVTitleBar"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
}

QSize VTitleBar::sizeHint() const
{
    return {kWidth, 200};
}

QSize VTitleBar::minimumSizeHint() const
{
    return {kWidth, 60};
}

void VTitleBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintTitleBarBackground(painter, rect(), Qt::Vertical, isEnabled());
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    QFont arial(QStringLiteral("Arial"));
    arial.setPixelSize(std::max(10, width() - 8));
    arial.setBold(true);
    arial.setLetterSpacing(QFont::AbsoluteSpacing, 1.0);
    painter.setFont(arial);
    // Runs upwards from the bottom: x of the turned painter goes up the bar, y goes right across it.
    painter.translate(0, height());
    painter.rotate(-90);
    const QRect along(8, 0, height() - 16, width());
    painter.setPen(QColor(0, 0, 0, 90));
    painter.drawText(along.translated(1, 1), Qt::AlignLeft | Qt::AlignVCenter, kCaption);
    painter.setPen(isEnabled() ? Qt::white : QColor(230, 230, 230));
    painter.drawText(along, Qt::AlignLeft | Qt::AlignVCenter, kCaption);
}

void VTitleBar::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_dragger.press(event->globalPosition().toPoint());
    event->accept();
}

void VTitleBar::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton)
        m_dragger.move(event->globalPosition().toPoint());
}

void VTitleBar::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const bool dragged = m_dragger.isDragging();
    m_dragger.release();
    event->accept();
    if (!dragged && rect().contains(event->position().toPoint()))
        emit clicked();
}

} // namespace vindaro::chrome
