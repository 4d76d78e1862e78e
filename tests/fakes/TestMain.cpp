// The one main() of every test executable: a temporary home, a pinned locale, an offscreen application.
#include "TempHome.h"

#include <QApplication>
#include <QLocale>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    static vindaro::testing::TempHome home; // before the application reads any XDG variable
    qputenv("LANG", "C.UTF-8");
    qputenv("LC_ALL", "C.UTF-8");
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
