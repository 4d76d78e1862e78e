#include "platform/linux/ui/OpenWithDialog.h"

#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using vindaro::platform::DesktopApplication;
using vindaro::platform::OpenWithDialog;

namespace {

const QString kFile = QStringLiteral("/media/光盘/MPEGAV/AVSEQ01.DAT");

DesktopApplication application(
    const char* name, const char* exec, bool terminal = false, const char* folder = "")
{
    DesktopApplication a;
    a.id = QString::fromUtf8(name) + QStringLiteral(".desktop");
    a.name = QString::fromUtf8(name);
    a.icon = QStringLiteral("no-such-icon");
    a.exec = QString::fromUtf8(exec);
    a.terminal = terminal;
    a.workingFolder = QString::fromUtf8(folder);
    return a;
}

struct Launch
{
    QString program;
    QStringList arguments;
    QString folder;
};

class OpenWithDialogTest : public ::testing::Test
{
protected:
    OpenWithDialog& open(QList<DesktopApplication> applications)
    {
        dialog = std::make_unique<OpenWithDialog>(kFile, std::move(applications),
            [this](const QString& program, const QStringList& arguments, const QString& folder) {
                launches.append({program, arguments, folder});
                return starts;
            });
        dialog->setTerminal({QStringLiteral("xterm"), QStringLiteral("-e")});
        dialog->show();
        return *dialog;
    }
    QListWidget& list() { return *dialog->findChild<QListWidget*>(QStringLiteral("lstApplications")); }
    QPushButton& button(const char* name) { return *dialog->findChild<QPushButton*>(QLatin1String(name)); }
    QPoint centre(int row) { return list().visualItemRect(list().item(row)).center(); }

    // Reads and closes the "提醒！" box that the next launch brings up.
    void answerNextBox()
    {
        QTimer::singleShot(0, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(box, nullptr);
            boxTitle = box->windowTitle();
            boxText = box->text();
            box->accept();
        });
    }

    std::unique_ptr<OpenWithDialog> dialog;
    QList<Launch> launches;
    bool starts = true;
    QString boxTitle;
    QString boxText;
};

TEST_F(OpenWithDialogTest, TheChosenProgramStartsWithTheFile)
{
    open({application("查看器", "viewer %f"), application("播放器", "player --x %U")});
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("打开方式"));
    EXPECT_EQ(dialog->findChild<QLabel*>(QStringLiteral("lblPrompt"))->text(),
        OpenWithDialog::promptText(QStringLiteral("AVSEQ01.DAT")));
    ASSERT_EQ(list().count(), 2);
    EXPECT_EQ(list().item(1)->text(), QStringLiteral("播放器"));
    EXPECT_FALSE(list().item(1)->icon().isNull()); // an icon the theme lacks falls back to a file icon
    EXPECT_EQ(list().currentRow(), 0);

    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, centre(1));
    QTest::mouseClick(&button("cmdOK"), Qt::LeftButton);
    ASSERT_EQ(launches.size(), 1);
    EXPECT_EQ(launches[0].program, QStringLiteral("player"));
    EXPECT_EQ(launches[0].arguments, QStringList({QStringLiteral("--x"), kFile}));
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(OpenWithDialogTest, ADoubleClickOpensInTheEntrysTerminalAndFolder)
{
    open({application("viewer", "viewer %f"), application("top", "top -d %f", true, "/srv")});
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, centre(1));
    QTest::mouseDClick(list().viewport(), Qt::LeftButton, {}, centre(1));
    ASSERT_EQ(launches.size(), 1);
    EXPECT_EQ(launches[0].program, QStringLiteral("xterm"));
    EXPECT_EQ(launches[0].arguments,
        QStringList({QStringLiteral("-e"), QStringLiteral("top"), QStringLiteral("-d"), kFile}));
    EXPECT_EQ(launches[0].folder, QStringLiteral("/srv"));
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
}

TEST_F(OpenWithDialogTest, AProgramThatCannotStartIsToldAndTheListStays)
{
    open({application("坏的", "bad 'x' %f"), application("播放器", "player %f")});
    answerNextBox();
    QTest::mouseClick(&button("cmdOK"), Qt::LeftButton);
    EXPECT_TRUE(launches.isEmpty()); // a broken line runs nothing
    EXPECT_EQ(boxTitle, QStringLiteral("提醒！"));
    EXPECT_EQ(boxText,
        OpenWithDialog::badCommandText(QStringLiteral("坏的"), QStringLiteral("bad 'x' %f"))
            .replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    EXPECT_TRUE(dialog->isVisible());

    starts = false;
    list().setCurrentRow(1);
    answerNextBox();
    QTest::mouseClick(&button("cmdOK"), Qt::LeftButton);
    EXPECT_EQ(launches.size(), 1);
    EXPECT_EQ(boxText, OpenWithDialog::startFailedText(QStringLiteral("播放器")));
    EXPECT_TRUE(dialog->isVisible());

    QTest::mouseClick(&button("cmdCancel"), Qt::LeftButton);
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
    EXPECT_EQ(launches.size(), 1);
}

TEST_F(OpenWithDialogTest, NothingToChooseLeavesOnlyCancel)
{
    open({});
    EXPECT_TRUE(dialog->findChild<QLabel*>(QStringLiteral("lblPrompt"))
                    ->text()
                    .endsWith(OpenWithDialog::noApplicationsText()));
    EXPECT_FALSE(button("cmdOK").isEnabled());
}

TEST(OpenWithTexts, SayWhatTheProgramSays)
{
    EXPECT_EQ(
        OpenWithDialog::promptText(QStringLiteral("a.dat")), QStringLiteral("选择用来打开“a.dat”的程序："));
    EXPECT_EQ(
        OpenWithDialog::startFailedText(QStringLiteral("播放器")), QStringLiteral("无法启动“播放器”。"));
    EXPECT_EQ(OpenWithDialog::badCommandText(QStringLiteral("播放器"), QStringLiteral("p 'x'")),
        QStringLiteral("“播放器”的启动命令不合规则，无法启动：\r\np 'x'"));
}

} // namespace
