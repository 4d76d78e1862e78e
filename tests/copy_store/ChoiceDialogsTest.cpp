// The choice dialogs' wiring: every way out answers its code, and the new-name field takes only a usable
// name. Their captions are checked with the other copy windows' (tests/copy_batch_ui/CopyWindowTextsTest).
#include "WholeFile.h"
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

using namespace vindaro::copy;
using vindaro::testing::writeWholeFile;

namespace {

constexpr int kNotAnswered = -99; // the scripted action found nothing to do and closed the dialog itself

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

class ChoiceDialogs : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(writeWholeFile(source(), QByteArray(100, 'v')));
        ASSERT_TRUE(writeWholeFile(destination(), QByteArray(50, 'v')));
    }
    QString source() const { return m_dir.filePath(QStringLiteral("src.dat")); }
    QString destination() const { return m_dir.filePath(QStringLiteral("dest.dat")); }
    // The existing-file dialog, asked with `action` run inside it.
    int askExisting(ExistingFileDialog& dialog, const std::function<bool(QLineEdit&)>& action)
    {
        return answerWhile(
            dialog, [&] { return dialog.Ask(source(), destination()); },
            [&] {
                auto* edit = dialog.findChild<QLineEdit*>(QStringLiteral("newNameEdit"));
                return edit && action(*edit);
            });
    }
    // Asks `Dialog` and leaves it by a button's objectName, or by "Escape", "Return" or "close".
    template<typename Dialog> int leaveBy(const QString& how)
    {
        Dialog dialog;
        return answerWhile(
            dialog, [&] { return dialog.Ask(source(), destination()); },
            [&] {
                if (how == QLatin1String("Escape") || how == QLatin1String("Return")) {
                    QTest::keyClick(
                        &dialog, how == QLatin1String("Escape") ? Qt::Key_Escape : Qt::Key_Return);
                    return true;
                }
                return how == QLatin1String("close") ? dialog.close() : clickButton(dialog, how);
            });
    }

    QTemporaryDir m_dir;
};

// Every way out of every dialog answers its choice code; Enter keeps what is on disk.
TEST_F(ChoiceDialogs, EveryWayOutAnswersItsCode)
{
    const struct
    {
        const char* dialog; // "continue", "existing", "batch"
        const char* how;
        int code;
    } rows[] = {{"continue", "startOverButton", 1}, {"continue", "continueButton", 2},
        {"continue", "giveUpButton", 0}, {"continue", "Escape", 0}, {"continue", "close", 0},
        {"continue", "Return", 2}, {"existing", "overwriteButton", 1}, {"existing", "appendButton", 2},
        {"existing", "mergeButton", 3}, {"existing", "deleteButton", 4}, {"existing", "newNameButton", 5},
        {"existing", "giveUpButton", 0}, {"existing", "Escape", 0}, {"existing", "close", 0},
        {"existing", "Return", 2}, {"batch", "overwriteButton", 1}, {"batch", "overwriteAllButton", 2},
        {"batch", "keepBothButton", 3}, {"batch", "stopButton", 0}, {"batch", "Escape", 0},
        {"batch", "close", 0}, {"batch", "Return", 3}};
    for (const auto& row : rows) {
        const QString how = QString::fromLatin1(row.how);
        const int answer = qstrcmp(row.dialog, "continue") == 0 ? leaveBy<ContinueCopyDialog>(how)
            : qstrcmp(row.dialog, "existing") == 0              ? leaveBy<ExistingFileDialog>(how)
                                                                : leaveBy<BatchExistingFileDialog>(how);
        EXPECT_EQ(answer, row.code) << row.dialog << "/" << row.how;
    }
}

// The proposed name is typed over and comes back trimmed; Enter in the name field copies under the name in
// it, not the default button's append.
TEST_F(ChoiceDialogs, ANewNameIsProposedAndTheTypedOneTaken)
{
    ExistingFileDialog dialog;
    QString proposed;
    EXPECT_EQ(askExisting(dialog,
                  [&](QLineEdit& edit) {
                      proposed = edit.text();
                      edit.setText(QStringLiteral("  copy2.dat "));
                      return clickButton(dialog, QStringLiteral("newNameButton"));
                  }),
        ExistingFileDialog::CopyUnderNewName);
    EXPECT_EQ(proposed, QStringLiteral("N[01]dest.dat"));
    EXPECT_EQ(dialog.NewName(), QStringLiteral("copy2.dat"));

    EXPECT_EQ(askExisting(dialog,
                  [&](QLineEdit& edit) {
                      edit.setFocus();
                      QTest::keyClicks(&edit, QStringLiteral("x"));
                      QTest::keyClick(&edit, Qt::Key_Return);
                      return true;
                  }),
        ExistingFileDialog::CopyUnderNewName);
    EXPECT_EQ(dialog.NewName(), QStringLiteral("N[01]dest.datx"));

    // A taken proposal moves on to the next number.
    ASSERT_TRUE(writeWholeFile(m_dir.filePath(QStringLiteral("N[01]dest.dat")), QByteArray(1, 'v')));
    EXPECT_EQ(proposedNewName(destination()), QStringLiteral("N[02]dest.dat"));
    EXPECT_TRUE(newNameProblem(QStringLiteral("视频.dat"), m_dir.path()).isEmpty());
}

// Names that must not be accepted: the button stays disabled, Enter does nothing, and the reason is shown.
// The user then still has every other way out.
TEST_F(ChoiceDialogs, AnUnusableNameCannotBeChosen)
{
    const QString refused[]
        = {QString(), QStringLiteral("   "), QStringLiteral("sub/name.dat"), QStringLiteral("/abs.dat"),
            QStringLiteral("."), QStringLiteral(".."), QStringLiteral("dest.dat"), QStringLiteral("src.dat"),
            QString(256, QLatin1Char('n')), QString(90, QChar(0x89C6))}; // 90 characters of 3 UTF-8 bytes
    for (const QString& name : refused) {
        ExistingFileDialog dialog;
        bool buttonEnabled = true;
        bool stillOpenAfterEnter = false;
        QString reason;
        const int answer = askExisting(dialog, [&](QLineEdit& edit) {
            auto* button = dialog.findChild<QPushButton*>(QStringLiteral("newNameButton"));
            auto* problem = dialog.findChild<QLabel*>(QStringLiteral("nameProblemLabel"));
            if (!button || !problem)
                return false;
            edit.setText(name);
            buttonEnabled = button->isEnabled();
            button->click(); // a disabled button ignores the click
            edit.setFocus();
            QTest::keyClick(&edit, Qt::Key_Return);
            stillOpenAfterEnter = dialog.isVisible();
            reason = problem->isVisible() ? problem->text() : QString();
            return clickButton(dialog, QStringLiteral("giveUpButton"));
        });
        EXPECT_EQ(answer, ExistingFileDialog::GiveUp) << name.toStdString();
        EXPECT_FALSE(buttonEnabled) << name.toStdString();
        EXPECT_TRUE(stillOpenAfterEnter) << name.toStdString();
        EXPECT_FALSE(reason.isEmpty()) << name.toStdString();
    }
}

} // namespace
