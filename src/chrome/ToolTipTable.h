#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace vindaro::chrome {

// One balloon tip of a window: the control it belongs to (by objectName), an optional title and the text
// lines.
struct ToolTipEntry
{
    QString control;
    QString title; // empty: no title line
    QStringList lines;

    // The lines joined by CR LF, as the tip's text is kept.
    QString text() const { return lines.join(QStringLiteral("\r\n")); }
};

// The tips of the main copy window, in the order they are attached.
QList<ToolTipEntry> mainWindowToolTips();

// Splits a tip's text into its lines; CR LF, LF and a lone CR all end a line.
QStringList toolTipLines(const QString& text);

} // namespace vindaro::chrome
