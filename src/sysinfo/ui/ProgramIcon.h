#pragma once

#include <QIcon>

namespace vindaro::sysinfo::ui {

// The name of the program's icon in the icon theme and of its desktop entry.
inline const QString kIconName = QStringLiteral("vindaro");

// The program's installed icon (hicolor PNGs and SVG under the install prefix's data folder, else the
// icon theme's "vindaro"), so the title bar, the tray and the menu entry show the same picture; the
// program's own artwork where nothing is installed, as when it runs from its build folder.
QIcon programIcon();

} // namespace vindaro::sysinfo::ui
