#pragma once

#include <QRectF>
#include <QWidget>

class QVariantAnimation;

namespace vindaro::copy {

// The batch window's picture of a copy in progress: a sheet of paper leaves an open folder on the left,
// flies in an arc and drops into an open folder on the right, over and over. Drawn from vector shapes
// scaled to the widget (design size 272 x 60, kept in proportion and centred), so it is as sharp at a
// device pixel ratio of 2 as at 1. Stopped, it shows the two folders alone.
class CopyAnimation : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kDesignWidth = 272;
    static constexpr int kDesignHeight = 60;
    static constexpr int kFlightMilliseconds = 1400; // one sheet from folder to folder

    explicit CopyAnimation(QWidget* parent = nullptr);

    void start(); // from the beginning of a flight, looping until stop(); a running animation goes on
    void stop();
    bool isRunning() const;
    // How far the current sheet has flown: 0 in the left folder, 1 in the right one.
    qreal phase() const { return m_phase; }
    // Shows the sheet at `phase` until the next frame (the picture of one moment, for a still).
    void setPhase(qreal phase);
    // Where the sheet is drawn at `phase`, in widget coordinates (before its tilt).
    QRectF sheetRect(qreal phase) const;

    QSize sizeHint() const override { return {kDesignWidth, kDesignHeight}; }
    QSize minimumSizeHint() const override { return {kDesignWidth / 2, kDesignHeight / 2}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    qreal scale() const; // widget units per design unit
    QPointF origin() const; // where the design's (0, 0) lies in the widget

    QVariantAnimation* m_animation;
    qreal m_phase = 0;
};

} // namespace vindaro::copy
