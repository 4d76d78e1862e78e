// The platform's windows: the message box and the "打开方式" chooser, with a recording launcher.
#include "platform/linux/ui/OpenWithDialog.h"
#include "PlatformTestSupport.h"
#include "platform/linux/ui/MessageBoxes.h"

#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace platform = vindaro::platform;
using platform::OpenWithDialog;
using vindaro::testing::onNextModal;
using namespace Qt::StringLiterals;

namespace {

// Every text of the platform's windows, once.
TEST(PlatformTexts, SayWhatTheProgramSays)
{
    EXPECT_EQ(OpenWithDialog::promptText(u"a.dat"_s), u"选择用来打开“a.dat”的程序："_s);
    EXPECT_EQ(OpenWithDialog::noApplicationsText(), u"没有找到已安装的程序。"_s);
    EXPECT_EQ(OpenWithDialog::startFailedText(u"播放器"_s), u"无法启动“播放器”。"_s);
    EXPECT_EQ(OpenWithDialog::badCommandText(u"播放器"_s, u"p 'x'"_s),
        u"“播放器”的启动命令不合规则，无法启动：\r\np 'x'"_s);
    EXPECT_EQ(OpenWithDialog(u"/a.dat"_s, {}, {}).windowTitle(), u"打开方式"_s);
}

// The program's boxes become Qt's: icon, CR LF lines, and the button pressed as the program's answer code.
TEST(MessageBoxes, ShowLinesAndAnswerWithTheProgramsCodes)
{
    const struct
    {
        platform::BoxIcon icon;
        platform::BoxButtons buttons;
        QMessageBox::StandardButton press;
        QMessageBox::Icon shown;
        int answer;
    } rows[] = {{platform::BoxIcon::Exclamation, platform::BoxButtons::YesNo, QMessageBox::No,
                    QMessageBox::Warning, platform::kAnswerNo},
        {platform::BoxIcon::Critical, platform::BoxButtons::YesNo, QMessageBox::Yes, QMessageBox::Critical,
            platform::kAnswerYes},
        {platform::BoxIcon::Exclamation, platform::BoxButtons::Ok, QMessageBox::Ok, QMessageBox::Warning,
            platform::kAnswerOk}};
    for (const auto& row : rows) {
        QString text, title;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        onNextModal<QMessageBox>([&](QMessageBox* box) {
            ASSERT_NE(box, nullptr);
            text = box->text();
            title = box->windowTitle();
            icon = box->icon();
            box->button(row.press)->click();
        });
        EXPECT_EQ(platform::execMessageBox(
                      platform::MessageBox{u"甲\r\n乙"_s, u"提醒！"_s, row.icon, row.buttons}, nullptr),
            row.answer);
        EXPECT_EQ(text, u"甲\n乙"_s);
        EXPECT_EQ(title, u"提醒！"_s);
        EXPECT_EQ(icon, row.shown);
    }
}

platform::DesktopApplication application(
    const char* name, const char* exec, bool terminal = false, const char* folder = "")
{
    platform::DesktopApplication a;
    a.id = QString::fromUtf8(name) + u".desktop"_s;
    a.name = QString::fromUtf8(name);
    a.icon = u"no-such-icon"_s;
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
    void open(QList<platform::DesktopApplication> applications)
    {
        dialog = std::make_unique<OpenWithDialog>(kFile, std::move(applications),
            [this](const QString& program, const QStringList& arguments, const QString& folder) {
                launches.append({program, arguments, folder});
                return starts;
            });
        dialog->setTerminal({u"xterm"_s, u"-e"_s});
        dialog->show();
    }
    QListWidget& list() { return *dialog->findChild<QListWidget*>(u"lstApplications"_s); }
    QPushButton& button(const char* name) { return *dialog->findChild<QPushButton*>(QLatin1String(name)); }
    QPoint centre(int row) { return list().visualItemRect(list().item(row)).center(); }
    // Presses OK and returns the text of the box it brings up.
    QString okWithBox()
    {
        QString text;
        onNextModal<QMessageBox>([&text](QMessageBox* box) {
            ASSERT_NE(box, nullptr);
            text = box->text();
            box->accept();
        });
        QTest::mouseClick(&button("cmdOK"), Qt::LeftButton);
        return text;
    }

    const QString kFile = u"/media/光盘/MPEGAV/AVSEQ01.DAT"_s;
    std::unique_ptr<OpenWithDialog> dialog;
    QList<Launch> launches;
    bool starts = true;
};

// OK starts the chosen program with the file; a double click opens in the entry's terminal and folder.
TEST_F(OpenWithDialogTest, TheChosenProgramStartsWithTheFile)
{
    for (const bool doubleClick : {false, true}) {
        open({application("查看器", "viewer %f"),
            doubleClick ? application("top", "top -d %f", true, "/srv")
                        : application("播放器", "player --x %U")});
        ASSERT_EQ(list().count(), 2);
        EXPECT_FALSE(list().item(1)->icon().isNull()); // an icon the theme lacks falls back to a file icon
        EXPECT_EQ(list().currentRow(), 0);
        QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, centre(1));
        if (doubleClick)
            QTest::mouseDClick(list().viewport(), Qt::LeftButton, {}, centre(1));
        else
            QTest::mouseClick(&button("cmdOK"), Qt::LeftButton);
        EXPECT_EQ(dialog->result(), QDialog::Accepted);
        EXPECT_FALSE(dialog->isVisible());
    }
    EXPECT_EQ(
        dialog->findChild<QLabel*>(u"lblPrompt"_s)->text(), OpenWithDialog::promptText(u"AVSEQ01.DAT"_s));
    ASSERT_EQ(launches.size(), 2);
    EXPECT_EQ(launches[0].program, u"player"_s);
    EXPECT_EQ(launches[0].arguments, QStringList({u"--x"_s, kFile}));
    EXPECT_EQ(launches[1].program, u"xterm"_s);
    EXPECT_EQ(launches[1].arguments, QStringList({u"-e"_s, u"top"_s, u"-d"_s, kFile}));
    EXPECT_EQ(launches[1].folder, u"/srv"_s);
}

TEST_F(OpenWithDialogTest, AProgramThatCannotStartIsToldAndTheListStays)
{
    open({application("坏的", "bad 'x' %f"), application("播放器", "player %f")});
    EXPECT_EQ(
        okWithBox(), OpenWithDialog::badCommandText(u"坏的"_s, u"bad 'x' %f"_s).replace(u"\r\n"_s, u"\n"_s));
    EXPECT_TRUE(launches.isEmpty()); // a broken line runs nothing
    EXPECT_TRUE(dialog->isVisible());

    starts = false;
    list().setCurrentRow(1);
    EXPECT_EQ(okWithBox(), OpenWithDialog::startFailedText(u"播放器"_s));
    EXPECT_EQ(launches.size(), 1);
    EXPECT_TRUE(dialog->isVisible());

    QTest::mouseClick(&button("cmdCancel"), Qt::LeftButton);
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
    EXPECT_EQ(launches.size(), 1);
}

TEST_F(OpenWithDialogTest, NothingToChooseLeavesOnlyCancel)
{
    open({});
    EXPECT_TRUE(
        dialog->findChild<QLabel*>(u"lblPrompt"_s)->text().endsWith(OpenWithDialog::noApplicationsText()));
    EXPECT_FALSE(button("cmdOK").isEnabled());
}

} // namespace
