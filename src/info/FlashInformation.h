#pragma once

#include <QString>
#include <QtGlobal>

class QIODevice;

namespace vindaro::info {

// The header of an uncompressed SWF movie ("FWS"): version, declared length, frame rate and count,
// playing time, stage size and the first tag's colour. Compressed movies ("CWS", "ZWS") are not read.
//
// Layout (little-endian): "FWS" 3, version 1, length 4, stage rectangle R bytes (5 bits N, then Xmin, Xmax,
// Ymin, Ymax as N-bit fields in twips), frame rate 2 (8.8 fixed point), frame count 2, then the first tag:
// code-and-length word 2 and, for the background-colour tag that movies start with, red, green, blue.
class FlashInformation
{
public:
    // True when the file begins with "FWS" and its header through the frame count could be read.
    bool getFlashInformation(const QString& path);
    bool getFlashInformation(QIODevice& device);

    QString version() const { return QString::number(m_version); }
    qint64 sizes() const { return m_declaredBytes; }
    // Whole frames per second: the integer byte of the 8.8 rate (a 29.97 fps movie shows 29).
    qint64 speed() const { return m_speed; }
    qint64 frames() const { return m_frames; }
    // Frames divided by the exact 8.8 rate, to two decimals; 0 for a rate of 0.
    double seconds() const { return static_cast<double>(m_hundredths) / 100.0; }
    // seconds() in its shortest decimal form: "10", "12.5", "10.42".
    QString secondsText() const;
    qint64 width() const { return m_width; }
    qint64 height() const { return m_height; }
    // The first tag's body taken as the background colour; it is not shown anywhere, so we do not search
    // further tags for the real background-colour tag.
    int red() const { return m_red; }
    int green() const { return m_green; }
    int blue() const { return m_blue; }

private:
    int m_version = 0;
    qint64 m_declaredBytes = 0;
    qint64 m_speed = 0;
    qint64 m_frames = 0;
    qint64 m_hundredths = 0; // playing time in hundredths of a second
    qint64 m_width = 0;
    qint64 m_height = 0;
    int m_red = 0;
    int m_green = 0;
    int m_blue = 0;
};

} // namespace vindaro::info
