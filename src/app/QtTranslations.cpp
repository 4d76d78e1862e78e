#include "QtTranslations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace vindaro::app {

QTranslator* installQtTranslations(QCoreApplication& app)
{
    const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    auto* translator = new QTranslator(&app);
    // "qt_zh_CN" gathers the catalogues of every Qt module (base, multimedia...); "qtbase_zh_CN" alone
    // where the gathering file is missing.
    for (const char* catalogue : {"qt_zh_CN", "qtbase_zh_CN"}) {
        if (translator->load(QLatin1String(catalogue), folder)
            && QCoreApplication::installTranslator(translator))
            return translator;
    }
    delete translator;
    return nullptr;
}

} // namespace vindaro::app
