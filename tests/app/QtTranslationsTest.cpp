// Qt's standard texts speak the program's language once its translations are installed.
#include "app/QtTranslations.h"

#include <QApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QTranslator>

#include <gtest/gtest.h>

namespace {

TEST(QtTranslations, QuestionBoxButtonsAreChinese)
{
    const QString catalogue = QLibraryInfo::path(QLibraryInfo::TranslationsPath) + "/qtbase_zh_CN.qm";
    if (!QFile::exists(catalogue))
        GTEST_SKIP() << "Qt's Chinese translations are not installed (Debian package qt6-translations-l10n): "
                     << catalogue.toStdString();

    QTranslator* translator = vindaro::app::installQtTranslations(*qApp);
    ASSERT_NE(translator, nullptr);
    QMessageBox box(QMessageBox::Question, QStringLiteral("提醒！"), QStringLiteral("真的要退出Vindaro吗？"),
        QMessageBox::Yes | QMessageBox::No);
    EXPECT_EQ(box.button(QMessageBox::Yes)->text(), QStringLiteral("是(&Y)"));
    EXPECT_EQ(box.button(QMessageBox::No)->text(), QStringLiteral("否(&N)"));
    QCoreApplication::removeTranslator(translator);
    delete translator;
    EXPECT_EQ(QMessageBox(QMessageBox::Question, QString(), QString(), QMessageBox::Yes)
                  .button(QMessageBox::Yes)
                  ->text(),
        QStringLiteral("&Yes"));
}

} // namespace
