#include "ProgressBar.h"

#include "copy/ProgressFigures.h"

#include <QPaintEvent>
#include <QPainter>

namespace vindaro::copy {

ProgressBar::ProgressBar(QWidget* parent)
    : QWidget(parent)
    , m_barColour(palette().color(QPalette::Highlight))
{
    setMinimumHeight(kDesignHeight + 2);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize ProgressBar::sizeHint() const
{
    return {kDesignWidth, fontMetrics().height() + 6};
}

void ProgressBar::setProgress(qint64 position, qint64 sourceLength)
{
    m_position = position;
    m_sourceLength = sourceLength;
    m_text = percentText(position, sourceLength);
    update();
}

void ProgressBar::clear()
{
    m_position = 0;
    m_sourceLength = 0;
    m_text.clear();
    update();
}

void ProgressBar::setBarColour(const QColor& colour)
{
    m_barColour = colour;
    update();
}

int ProgressBar::filledPixels() const
{
    if (m_text.isEmpty())
        return 0;
    return filledWidth(m_position, m_sourceLength, width());
}

int ProgressBar::textX() const
{
    return kDesignTextX * width() / kDesignWidth;
}

void ProgressBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QColor background = palette().color(QPalette::Base);
    painter.fillRect(rect(), background);
    if (m_text.isEmpty())
        return;

    const QRect textRect(textX(), 0, width() - textX(), height());
    const int textFlags = Qt::AlignLeft | Qt::AlignVCenter;
    const QColor ink = palette().color(QPalette::Text);
    painter.setPen(ink);
    painter.drawText(textRect, textFlags, m_text);

    // The bar merges with the inverse of what lies under it: over the background it shows its own
    // colour, over the text the text's inverse.
    const QRect bar(0, 0, filledPixels(), height());
    painter.fillRect(bar, m_barColour);
    painter.setClipRect(bar);
    painter.setPen(QColor(255 - ink.red(), 255 - ink.green(), 255 - ink.blue()));
    painter.drawText(textRect, textFlags, m_text);

    painter.setClipping(false);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

} // namespace vindaro::copy
