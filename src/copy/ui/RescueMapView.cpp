#include "RescueMapView.h"

#include "files/Format.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace vindaro::copy {

namespace {

constexpr int kCellWidth = 3;
constexpr int kStripHeight = 12;
constexpr int kLegendHeight = 16;

int severity(RescueState state)
{
    switch (state) {
    case RescueState::Bad:
        return 4;
    case RescueState::NonTrimmed:
    case RescueState::NonScraped:
        return 3;
    case RescueState::Untried:
        return 2;
    case RescueState::Copied:
        return 1;
    }
    return 0;
}

QString stateText(RescueState state)
{
    switch (state) {
    case RescueState::Copied:
        return QStringLiteral("已复制");
    case RescueState::Untried:
        return QStringLiteral("未读");
    case RescueState::NonTrimmed:
    case RescueState::NonScraped:
        return QStringLiteral("读取失败");
    case RescueState::Bad:
        return QStringLiteral("坏区");
    }
    return {};
}

} // namespace

RescueMapView::RescueMapView(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("picRescueMap"));
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize RescueMapView::sizeHint() const
{
    return {330, kStripHeight + kLegendHeight + 2};
}

void RescueMapView::setMap(RescueMap map)
{
    if (map == m_map)
        return;
    m_map = std::move(map);
    update();
}

QColor RescueMapView::colour(RescueState state)
{
    switch (state) {
    case RescueState::Copied:
        return QColor(0x3c, 0xa0, 0x3c);
    case RescueState::Untried:
        return QColor(0xc0, 0xc0, 0xc0);
    case RescueState::NonTrimmed:
    case RescueState::NonScraped:
        return QColor(0xe8, 0x9a, 0x20);
    case RescueState::Bad:
        return QColor(0xd0, 0x20, 0x20);
    }
    return Qt::black;
}

RescueState RescueMapView::cellState(const RescueMap& map, qint64 offset, qint64 length)
{
    RescueState worst = RescueState::Copied;
    for (const RescueRange& range : map.ranges(offset, length)) {
        if (severity(range.state) > severity(worst))
            worst = range.state;
    }
    return worst;
}

QString RescueMapView::cellText(const RescueMap& map, qint64 offset, qint64 length)
{
    QStringList parts;
    for (const RescueState state : kRescueStates) {
        qint64 bytes = 0;
        for (const RescueRange& range : map.ranges(offset, length)) {
            if (range.state == state
                || (state == RescueState::NonTrimmed && range.state == RescueState::NonScraped))
                bytes += range.length;
        }
        if (bytes > 0 && state != RescueState::NonScraped)
            parts << stateText(state) + files::groupDigits(bytes) + QStringLiteral("字节");
    }
    return files::groupDigits(offset + 1) + QStringLiteral("至") + files::groupDigits(offset + length)
        + QStringLiteral("字节：") + parts.join(QStringLiteral("，"));
}

QRect RescueMapView::strip() const
{
    return QRect(0, 0, width(), kStripHeight);
}

int RescueMapView::cellCount() const
{
    return std::max(1, width() / kCellWidth);
}

std::pair<qint64, qint64> RescueMapView::cellBytes(int cell) const
{
    const qint64 size = m_map.size();
    const int cells = cellCount();
    const qint64 from = size * cell / cells;
    const qint64 to = size * (cell + 1) / cells;
    return {from, std::max<qint64>(0, to - from)};
}

void RescueMapView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect area = strip();
    painter.fillRect(area, palette().color(QPalette::Base));
    if (m_map.size() > 0) {
        const int cells = cellCount();
        for (int cell = 0; cell < cells; ++cell) {
            const auto [offset, length] = cellBytes(cell);
            if (length <= 0)
                continue;
            const int x = area.width() * cell / cells;
            const int next = area.width() * (cell + 1) / cells;
            painter.fillRect(QRect(x, area.top(), std::max(1, next - x), area.height()),
                colour(cellState(m_map, offset, length)));
        }
    }
    painter.setPen(palette().color(QPalette::Dark));
    painter.drawRect(area.adjusted(0, 0, -1, -1));

    // The legend: a box of each colour and its name.
    int x = 0;
    const int y = kStripHeight + 2;
    for (const RescueState state :
        {RescueState::Copied, RescueState::Untried, RescueState::NonTrimmed, RescueState::Bad}) {
        painter.fillRect(QRect(x, y + 3, 10, 10), colour(state));
        x += 13;
        const QString name = stateText(state);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(QRect(x, y, 200, kLegendHeight), Qt::AlignLeft | Qt::AlignVCenter, name);
        x += fontMetrics().horizontalAdvance(name) + 12;
    }
}

bool RescueMapView::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        if (m_map.size() > 0 && strip().contains(help->pos())) {
            const int cell
                = std::clamp(help->pos().x() * cellCount() / std::max(1, width()), 0, cellCount() - 1);
            const auto [offset, length] = cellBytes(cell);
            QToolTip::showText(help->globalPos(), cellText(m_map, offset, std::max<qint64>(1, length)), this);
        } else {
            QToolTip::hideText();
        }
        return true;
    }
    return QWidget::event(event);
}

} // namespace vindaro::copy
