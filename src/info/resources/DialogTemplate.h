#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

#include <optional>

namespace vindaro::info::resources {

// One control of a dialog template, in dialog units.
struct DialogControl
{
    QString windowClass; // "BUTTON", "EDIT", "STATIC", "LISTBOX", "SCROLLBAR", "COMBOBOX" or a class name
    QString text; // caption; "#N" for a resource reference by number
    quint32 id = 0;
    quint32 style = 0;
    quint32 exStyle = 0;
    int x = 0;
    int y = 0;
    int cx = 0;
    int cy = 0;
};

// A dialog resource (type 5) read from its template: the classic DLGTEMPLATE and the extended DLGTEMPLATEEX.
struct DialogTemplate
{
    bool extended = false;
    quint32 style = 0;
    quint32 exStyle = 0;
    int x = 0;
    int y = 0;
    int cx = 0;
    int cy = 0;
    QString menu;
    QString windowClass;
    QString title;
    int pointSize = 0; // 0 when the template names no font
    QString fontName;
    QList<DialogControl> controls;
};

// Nothing when the bytes are no dialog template (bounds-checked; a hostile template never crashes).
std::optional<DialogTemplate> parseDialogTemplate(const QByteArray& resource);

} // namespace vindaro::info::resources
