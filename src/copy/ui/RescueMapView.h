#pragma once

#include "copy/RescueMap.h"

#include <QWidget>

namespace vindaro::copy {

// The picture of a rescue map: a strip of cells, each coloured by the worst state of the bytes it stands
// for (bad, then failed, then not read, then copied), with a legend under it and, under the pointer, the
// byte range of the cell and what is known of it. It draws a snapshot: whoever shows it hands a new one
// when the figures refresh (once a second), never per block, so it never slows the copy.
class RescueMapView : public QWidget
{
    Q_OBJECT

public:
    explicit RescueMapView(QWidget* parent = nullptr);

    void setMap(RescueMap map);
    const RescueMap& map() const { return m_map; }

    // The worst state among [offset, offset + length) of `map`, as its cell shows it.
    static RescueState cellState(const RescueMap& map, qint64 offset, qint64 length);
    // The text under the pointer for the cell [offset, offset + length).
    static QString cellText(const RescueMap& map, qint64 offset, qint64 length);
    static QColor colour(RescueState state);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    QRect strip() const;
    int cellCount() const;
    std::pair<qint64, qint64> cellBytes(int cell) const; // offset and length

    RescueMap m_map;
};

} // namespace vindaro::copy
