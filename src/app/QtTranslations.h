#pragma once

class QCoreApplication;
class QTranslator;

namespace vindaro::app {

// Qt's own texts (standard buttons, file and folder dialogs, context menus) in Chinese like the rest of
// the program, whatever the user's locale: Qt's Simplified Chinese catalogue from Qt's translations
// folder. Answers the installed translator (owned by app), or null when the catalogue is not installed
// (Debian's qt6-translations-l10n), in which case Qt's texts stay English.
QTranslator* installQtTranslations(QCoreApplication& app);

} // namespace vindaro::app
