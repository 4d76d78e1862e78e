#include "copy/ui/FrmChooseDialog.h"
#include "copy/ui/FrmCopyAllFiles.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

using namespace vindaro;
using copy::FrmChooseDialog;

namespace {

template<typename T> T* child(QWidget& parent, const char* name)
{
    T* found = parent.findChild<T*>(QLatin1String(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
}

// Acts on the modal choose dialog once it is up, then lets the caller's exec() go on.
void whenDialogShows(std::function<void(FrmChooseDialog&)> act)
{
    QTimer::singleShot(0, [act] {
        auto* dialog = qobject_cast<FrmChooseDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        act(*dialog);
    });
}

TEST(FrmChooseDialog, AnswersTheFolderAndTheCheckBox)
{
    FrmChooseDialog dialog;
    whenDialogShows([](FrmChooseDialog& d) {
        child<QLineEdit>(d, "txtFolder")->setText(QStringLiteral("  /home/u/out  "));
        QTest::mouseClick(child<QCheckBox>(d, "chkCopyToSameDir"), Qt::LeftButton);
        QTest::mouseClick(child<QPushButton>(d, "cmdOK"), Qt::LeftButton);
    });
    bool sameDir = false;
    EXPECT_EQ(dialog.ChooseFolder(sameDir), QStringLiteral("/home/u/out"));
    EXPECT_TRUE(sameDir);

    whenDialogShows([](FrmChooseDialog& d) {
        QTest::mouseClick(child<QCheckBox>(d, "chkCopyToSameDir"), Qt::LeftButton); // unchecked again
        QTest::mouseClick(child<QPushButton>(d, "cmdCancel"), Qt::LeftButton);
    });
    sameDir = true;
    EXPECT_EQ(dialog.ChooseFolder(sameDir), QString());
    EXPECT_TRUE(sameDir); // left alone by a cancel
}

TEST(FrmChooseDialog, AcceptsOnlyAbsoluteFolders)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString file = dir.filePath(QStringLiteral("a.dat"));
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.close();

    struct Case
    {
        QString folder;
        bool usable;
        bool explained;
    };
    const QList<Case> cases = {
        {QString(), false, false}, {QStringLiteral("   "), false, false},
        {QStringLiteral("out/videos"), false, true}, {file, false, true}, {dir.path(), true, false},
        {dir.filePath(QStringLiteral("new/folder")), true, false}, // made by the batch
    };
    FrmChooseDialog dialog;
    for (const Case& c : cases) {
        dialog.setFolder(c.folder);
        EXPECT_EQ(child<QPushButton>(dialog, "cmdOK")->isEnabled(), c.usable) << c.folder.toStdString();
        EXPECT_EQ(!FrmChooseDialog::folderProblem(c.folder).isEmpty(), c.explained) << c.folder.toStdString();
    }
}

// The real prompts offer the last folder and the option again in the next batch; the option keeps what
// the box was set to even when that batch was cancelled.
TEST(DialogBatchPrompts, RemembersTheFolderAndTheOption)
{
    copy::DialogBatchPrompts prompts;
    whenDialogShows([](FrmChooseDialog& d) {
        EXPECT_FALSE(d.copyToSameDir());
        d.setFolder(QStringLiteral("/home/u/out"));
        d.setCopyToSameDir(true);
        QTest::mouseClick(child<QPushButton>(d, "cmdOK"), Qt::LeftButton);
    });
    bool sameDir = false;
    EXPECT_EQ(prompts.chooseFolder(sameDir, nullptr), QStringLiteral("/home/u/out"));
    EXPECT_TRUE(sameDir);

    whenDialogShows([](FrmChooseDialog& d) {
        EXPECT_EQ(d.folder(), QStringLiteral("/home/u/out"));
        EXPECT_TRUE(d.copyToSameDir());
        d.setCopyToSameDir(false);
        d.reject();
    });
    EXPECT_EQ(prompts.chooseFolder(sameDir, nullptr), QString());
    EXPECT_FALSE(sameDir);

    whenDialogShows([](FrmChooseDialog& d) {
        EXPECT_FALSE(d.copyToSameDir());
        d.reject();
    });
    prompts.chooseFolder(sameDir, nullptr);
}

} // namespace
