#include "copy/ui/BatchExistingFileDialog.h"
#include "copy/ui/ContinueCopyDialog.h"
#include "copy/ui/ExistingFileDialog.h"

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace vindaro::copy;

namespace {

constexpr int kNotAnswered = -99; // the scripted action found nothing to do and closed the dialog itself

bool writeFile(const QString& path, qsizetype bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(QByteArray(bytes, 'v')) == bytes;
}

// Runs `action` once the modal loop of ask() is running, and answers what ask() returned. An action that
// cannot do its part ends the dialog with kNotAnswered, so a broken dialog fails instead of hanging.
int answerWhile(QDialog& dialog, const std::function<int()>& ask, const std::function<bool()>& action)
{
    QTimer::singleShot(0, &dialog, [&dialog, action] {
        if (!action() && dialog.isVisible())
            dialog.done(kNotAnswered);
    });
    return ask();
}

bool clickButton(QDialog& dialog, const QString& name)
{
    auto* button = dialog.findChild<QPushButton*>(name);
    if (!button || !button->isEnabled() || !button->isVisible())
        return false;
    button->click();
    return true;
}

class ChoiceDialogFiles : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(writeFile(source(), 100));
        ASSERT_TRUE(writeFile(destination(), 50));
    }
    QString source() const { return m_dir.filePath(QStringLiteral("src.dat")); }
    QString destination() const { return m_dir.filePath(QStringLiteral("dest.dat")); }

    QTemporaryDir m_dir;
};

// Every way out of every dialog, with the code it answers.
struct Exit
{
    const char* dialog; // "continue", "existing", "batch"
    const char* how; // a button's objectName, or "Escape", "Return", "close"
    int code;
};

void PrintTo(const Exit& e, std::ostream* os)
{
    *os << e.dialog << "/" << e.how;
}

class DialogExitTest : public ChoiceDialogFiles, public ::testing::WithParamInterface<Exit>
{
};

TEST_P(DialogExitTest, AnswersTheChoiceCode)
{
    const Exit exit = GetParam();
    std::unique_ptr<QDialog> dialog;
    std::function<int()> ask;
    if (qstrcmp(exit.dialog, "continue") == 0) {
        auto* d = new ContinueCopyDialog;
        ask = [d, this] { return d->Ask(source(), destination()); };
        dialog.reset(d);
    } else if (qstrcmp(exit.dialog, "existing") == 0) {
        auto* d = new ExistingFileDialog;
        ask = [d, this] { return d->Ask(source(), destination()); };
        dialog.reset(d);
    } else {
        auto* d = new BatchExistingFileDialog;
        ask = [d, this] { return d->Ask(source(), destination()); };
        dialog.reset(d);
    }
    QDialog* raw = dialog.get();
    const QString how = QString::fromLatin1(exit.how);
    const int answer = answerWhile(*raw, ask, [raw, how] {
        if (how == QLatin1String("Escape") || how == QLatin1String("Return")) {
            QTest::keyClick(raw, how == QLatin1String("Escape") ? Qt::Key_Escape : Qt::Key_Return);
            return true;
        }
        if (how == QLatin1String("close"))
            return raw->close();
        return clickButton(*raw, how);
    });
    EXPECT_EQ(answer, exit.code);
    EXPECT_EQ(raw->windowTitle(), QStringLiteral("提醒！"));
}

INSTANTIATE_TEST_SUITE_P(ChoiceDialogs, DialogExitTest,
    ::testing::Values(Exit{"continue", "startOverButton", 1}, Exit{"continue", "continueButton", 2},
        Exit{"continue", "giveUpButton", 0}, Exit{"continue", "Escape", 0}, Exit{"continue", "close", 0},
        Exit{"continue", "Return", 2}, // Enter keeps what is on disk
        Exit{"existing", "overwriteButton", 1}, Exit{"existing", "appendButton", 2},
        Exit{"existing", "mergeButton", 3}, Exit{"existing", "deleteButton", 4},
        Exit{"existing", "newNameButton", 5}, Exit{"existing", "giveUpButton", 0},
        Exit{"existing", "Escape", 0}, Exit{"existing", "close", 0}, Exit{"existing", "Return", 2},
        Exit{"batch", "overwriteButton", 1}, Exit{"batch", "overwriteAllButton", 2},
        Exit{"batch", "keepBothButton", 3}, Exit{"batch", "stopButton", 0}, Exit{"batch", "Escape", 0},
        Exit{"batch", "close", 0}, Exit{"batch", "Return", 3}));

using ExistingFileDialogTest = ChoiceDialogFiles;

TEST_F(ExistingFileDialogTest, ProposesANameAndReturnsTheTypedOneTrimmed)
{
    ExistingFileDialog dialog;
    QString proposed;
    const int answer = answerWhile(
        dialog, [&] { return dialog.Ask(source(), destination()); },
        [&] {
            auto* edit = dialog.findChild<QLineEdit*>(QStringLiteral("newNameEdit"));
            if (!edit)
                return false;
            proposed = edit->text();
            edit->setText(QStringLiteral("  copy2.dat "));
            return clickButton(dialog, QStringLiteral("newNameButton"));
        });
    EXPECT_EQ(answer, ExistingFileDialog::CopyUnderNewName);
    EXPECT_EQ(proposed, QStringLiteral("N[01]dest.dat"));
    EXPECT_EQ(dialog.NewName(), QStringLiteral("copy2.dat"));
}

TEST_F(ExistingFileDialogTest, EnterInTheNameFieldCopiesUnderThatName)
{
    ExistingFileDialog dialog;
    const int answer = answerWhile(
        dialog, [&] { return dialog.Ask(source(), destination()); },
        [&] {
            auto* edit = dialog.findChild<QLineEdit*>(QStringLiteral("newNameEdit"));
            if (!edit)
                return false;
            edit->setFocus();
            QTest::keyClicks(edit, QStringLiteral("x"));
            QTest::keyClick(edit, Qt::Key_Return);
            return true;
        });
    EXPECT_EQ(answer, ExistingFileDialog::CopyUnderNewName) << "not the default button's append";
    EXPECT_EQ(dialog.NewName(), QStringLiteral("N[01]dest.datx"));
}

// Names that must not be accepted for choice 5: the button stays disabled, Enter does nothing, and the
// reason is shown. The user then still has every other way out.
struct RefusedName
{
    const char* label;
    QString name;
};

class RefusedNameTest : public ChoiceDialogFiles, public ::testing::WithParamInterface<RefusedName>
{
};

TEST_P(RefusedNameTest, CannotBeChosen)
{
    ExistingFileDialog dialog;
    bool buttonEnabled = true;
    bool stillOpenAfterEnter = false;
    QString reason;
    const int answer = answerWhile(
        dialog, [&] { return dialog.Ask(source(), destination()); },
        [&] {
            auto* edit = dialog.findChild<QLineEdit*>(QStringLiteral("newNameEdit"));
            auto* button = dialog.findChild<QPushButton*>(QStringLiteral("newNameButton"));
            auto* problem = dialog.findChild<QLabel*>(QStringLiteral("nameProblemLabel"));
            if (!edit || !button || !problem)
                return false;
            edit->setText(GetParam().name);
            buttonEnabled = button->isEnabled();
            button->click(); // a disabled button ignores the click
            edit->setFocus();
            QTest::keyClick(edit, Qt::Key_Return);
            stillOpenAfterEnter = dialog.isVisible();
            reason = problem->isVisible() ? problem->text() : QString();
            return clickButton(dialog, QStringLiteral("giveUpButton"));
        });
    EXPECT_EQ(answer, ExistingFileDialog::GiveUp);
    EXPECT_FALSE(buttonEnabled);
    EXPECT_TRUE(stillOpenAfterEnter);
    EXPECT_FALSE(reason.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(ChoiceDialogs, RefusedNameTest,
    ::testing::Values(RefusedName{"empty", QString()}, RefusedName{"blanks", QStringLiteral("   ")},
        RefusedName{"withFolder", QStringLiteral("sub/name.dat")},
        RefusedName{"absolute", QStringLiteral("/abs.dat")}, RefusedName{"dot", QStringLiteral(".")},
        RefusedName{"dotDot", QStringLiteral("..")},
        RefusedName{"theExistingFile", QStringLiteral("dest.dat")},
        RefusedName{"anotherExistingFile", QStringLiteral("src.dat")},
        RefusedName{"over255Bytes", QString(256, QLatin1Char('n'))},
        RefusedName{"cjkOver255Bytes", QString(90, QChar(0x89C6))}), // 90 characters of 3 UTF-8 bytes
    [](const ::testing::TestParamInfo<RefusedName>& p) { return std::string(p.param.label); });

TEST_F(ExistingFileDialogTest, ProposalSkipsNamesAlreadyTaken)
{
    ASSERT_TRUE(writeFile(m_dir.filePath(QStringLiteral("N[01]dest.dat")), 1));
    EXPECT_EQ(proposedNewName(destination()), QStringLiteral("N[02]dest.dat"));
    EXPECT_TRUE(newNameProblem(QStringLiteral("视频.dat"), m_dir.path()).isEmpty());
    EXPECT_FALSE(newNameProblem(QStringLiteral("N[01]dest.dat"), m_dir.path()).isEmpty());
}

TEST_F(ExistingFileDialogTest, ShowsBothSizesAndWhichFileIsBigger)
{
    ExistingFileDialog dialog;
    dialog.setFiles(source(), destination());
    const auto text
        = [&](const char* name) { return dialog.findChild<QLabel*>(QLatin1String(name))->text(); };
    EXPECT_TRUE(text("sourceFactsLabel").contains(source()));
    EXPECT_TRUE(text("sourceFactsLabel").contains(QStringLiteral("100字节")));
    EXPECT_TRUE(text("destinationFactsLabel").contains(QStringLiteral("50字节")));
    EXPECT_EQ(text("sizeComparisonLabel"), QStringLiteral("目标文件比源文件小 50字节。"));
    EXPECT_TRUE(dialog.findChild<QPushButton*>(QStringLiteral("appendButton"))
                    ->text()
                    .contains(QStringLiteral("50字节")));

    ASSERT_TRUE(writeFile(destination(), 1234));
    dialog.setFiles(source(), destination());
    EXPECT_EQ(text("sizeComparisonLabel"), QStringLiteral("目标文件比源文件大 1,134字节。"));
}

TEST_F(ChoiceDialogFiles, BatchDialogSaysWhatKeepBothWillDo)
{
    BatchExistingFileDialog dialog;
    auto* hint = dialog.findChild<QLabel*>(QStringLiteral("keepBothHintLabel"));
    ASSERT_NE(hint, nullptr);
    dialog.setFiles(source(), destination());
    EXPECT_TRUE(hint->text().contains(QStringLiteral("“N[01]dest.dat”"))) << hint->text().toStdString();

    EXPECT_FALSE(hint->text().contains(QStringLiteral("覆盖")));
    ASSERT_TRUE(writeFile(m_dir.filePath(QStringLiteral("N[01]dest.dat")), 1));
    dialog.setFiles(source(), destination());
    EXPECT_TRUE(hint->text().contains(QStringLiteral("再次询问"))) << "the taken name is pointed out";
    EXPECT_TRUE(hint->text().contains(QStringLiteral("不会覆盖它")))
        << "the batch asks again, it never overwrites";

    ASSERT_TRUE(writeFile(destination(), 100));
    dialog.setFiles(source(), destination());
    EXPECT_TRUE(hint->text().contains(QStringLiteral("跳过"))) << hint->text().toStdString();
    EXPECT_EQ(dialog.findChild<QLabel*>(QStringLiteral("sizeComparisonLabel"))->text(),
        QStringLiteral("两个文件大小相同。"));
}

TEST_F(ChoiceDialogFiles, ContinueDialogShowsHowFarTheRecordGot)
{
    ContinueCopyDialog dialog;
    auto* label = dialog.findChild<QLabel*>(QStringLiteral("recordLabel"));
    ASSERT_NE(label, nullptr);
    ResumeRecord record;
    record.continuePosition = 5'000'000'000;
    record.elapsedSeconds = 3725;
    dialog.setRecord(record);
    EXPECT_EQ(label->text(), QStringLiteral("上次已复制到：5,000,000,000字节    已用时间：01:02:05"));
}

} // namespace
