#pragma once

#include <QColor>
#include <QWidget>

namespace vindaro::copy {

// The copy window's progress bar: the percentage as text ("37.50%") starting at a fixed x, and a bar in
// the highlight colour from the left edge; where the bar covers the text, the text shows inverted, so it
// stays readable over the bar. Drawing units follow the window's design: a bar 330 units wide and 16
// high with the text at x = 150; they are scaled to the widget's actual size.
class ProgressBar : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kDesignWidth = 330;
    static constexpr int kDesignHeight = 16;
    static constexpr int kDesignTextX = 150;

    explicit ProgressBar(QWidget* parent = nullptr);

    void setProgress(qint64 position, qint64 sourceLength);
    void clear(); // no text, no bar
    void setBarColour(const QColor& colour);

    QString text() const { return m_text; } // empty when cleared
    int filledPixels() const; // width of the bar in pixels
    int textX() const; // where the text starts, in pixels

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    qint64 m_position = 0;
    qint64 m_sourceLength = 0;
    QString m_text;
    QColor m_barColour;
};

} // namespace vindaro::copy
