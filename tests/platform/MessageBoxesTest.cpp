#include "platform/linux/ui/MessageBoxes.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

namespace platform = vindaro::platform;

namespace {

// Answers the modal box that exec() opens: records its text and presses `button`.
void answerNextBox(
    QMessageBox::StandardButton button, QString& seenText, QString& seenTitle, QMessageBox::Icon& seenIcon)
{
    QTimer::singleShot(0, [=, &seenText, &seenTitle, &seenIcon] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        seenText = box->text();
        seenTitle = box->windowTitle();
        seenIcon = box->icon();
        box->button(button)->click();
    });
}

TEST(MessageBoxes, ShowsLinesAndAnswersWithTheProgramsCodes)
{
    QString text, title;
    QMessageBox::Icon icon = QMessageBox::NoIcon;

    answerNextBox(QMessageBox::No, text, title, icon);
    const int no
        = platform::execMessageBox(platform::MessageBox{QStringLiteral("甲\r\n乙"), QStringLiteral("提醒！"),
                                       platform::BoxIcon::Exclamation, platform::BoxButtons::YesNo},
            nullptr);
    EXPECT_EQ(no, platform::kAnswerNo);
    EXPECT_EQ(text, QStringLiteral("甲\n乙"));
    EXPECT_EQ(title, QStringLiteral("提醒！"));
    EXPECT_EQ(icon, QMessageBox::Warning);

    answerNextBox(QMessageBox::Yes, text, title, icon);
    EXPECT_EQ(platform::execMessageBox(platform::MessageBox{QStringLiteral("q"), QStringLiteral("t"),
                                           platform::BoxIcon::Critical, platform::BoxButtons::YesNo},
                  nullptr),
        platform::kAnswerYes);
    EXPECT_EQ(icon, QMessageBox::Critical);

    answerNextBox(QMessageBox::Ok, text, title, icon);
    EXPECT_EQ(platform::execMessageBox(
                  platform::MessageBox{QStringLiteral("done"), QStringLiteral("文件复制完成！"),
                      platform::BoxIcon::Exclamation, platform::BoxButtons::Ok},
                  nullptr),
        platform::kAnswerOk);
    EXPECT_EQ(title, QStringLiteral("文件复制完成！"));
}

} // namespace
