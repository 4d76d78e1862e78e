#include "ListFakes.h"
#include "files/FileListTexts.h"
#include "files/ui/FileDropTarget.h"
#include "files/ui/FileListCombo.h"
#include "files/ui/FileListController.h"
#include "files/ui/FileListDialogs.h"
#include "files/ui/FileMenu.h"
#include "files/ui/FrmDialog.h"

#include <QAction>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

using namespace vindaro;
using namespace vindaro::files;

namespace {

class FileListUiTest : public ::testing::Test
{
protected:
    vindaro::testing::ListWorld world;
    vindaro::testing::ScriptedPrompter prompts;
    vindaro::testing::ScriptedDialogs dialogs;
    QWidget window;
    FileListController controller{world.fs, prompts, dialogs, &window};
    QLabel filesInfo{&window};
    QLineEdit destination{&window};

    void SetUp() override
    {
        controller.combo()->setGeometry(10, 10, 400, 24);
        controller.bindDisplays(
            FileListDisplays{nullptr, nullptr, &filesInfo, nullptr, nullptr, nullptr, &destination});
        window.resize(600, 400);
    }
    QAction* action(const char* name) { return controller.menu()->entry(QString::fromLatin1(name)); }
};

TEST_F(FileListUiTest, MenuHoldsEveryEntryAndTheTenListEntriesFollowTheList)
{
    const QStringList names = {QStringLiteral("mnuOpenFile"), QStringLiteral("mnuClearSelectedItem"),
        QStringLiteral("mnuClearAllListItem"), QStringLiteral("mnuDelSeletedItem"),
        QStringLiteral("mnuReName"), QStringLiteral("mnuCopyTo"), QStringLiteral("mnuMoveTo"),
        QStringLiteral("mnuFindFile"), QStringLiteral("mnuFileroperty"), QStringLiteral("mnuCopyAllFilesTo")};
    for (const QString& name : names)
        EXPECT_FALSE(controller.menu()->entry(name)->isEnabled()) << qPrintable(name);
    for (const char* always : {"mnuPreview", "mnuAddFileToListItem", "mnuExit", "mnuAboutMe"})
        EXPECT_TRUE(action(always)->isEnabled()) << always;
    EXPECT_EQ(action("mnuExit")->text(), QStringLiteral("&Exit  Vindaro"));
    EXPECT_FALSE(action("mnuPlayFile")->isEnabled()); // the player's entry follows the list too
    EXPECT_EQ(controller.menu()->actions().size(), 21);

    controller.model().AddDroppedFiles({world.file(QStringLiteral("a.dat"))});
    for (const QString& name : names)
        EXPECT_TRUE(controller.menu()->entry(name)->isEnabled()) << qPrintable(name);
    action("mnuClearAllListItem")->trigger();
    EXPECT_FALSE(action("mnuOpenFile")->isEnabled());
    EXPECT_EQ(filesInfo.text(), kResetFilesInfo);
}

TEST_F(FileListUiTest, PreviewMarkReachesTheListFlag)
{
    EXPECT_FALSE(controller.model().previewFlag());
    action("mnuPreview")->trigger();
    EXPECT_TRUE(controller.model().previewFlag());
}

TEST_F(FileListUiTest, BoxFollowsTheListAndPickingShowsThePosition)
{
    const QString a = world.file(QStringLiteral("cd/a.dat"), 10);
    const QString b = world.file(QStringLiteral("cd/b.dat"), 20);
    destination.setText(QStringLiteral("/out/old.dat"));
    controller.model().AddDroppedFiles({a, b});
    EXPECT_EQ(controller.combo()->currentText(), a);
    EXPECT_EQ(controller.combo()->count(), 2);
    emit controller.combo()->activated(1);
    EXPECT_EQ(controller.combo()->currentText(), b);
    EXPECT_EQ(destination.text(), QStringLiteral("/out/b.dat"));
    EXPECT_EQ(filesInfo.text(), QStringLiteral("文件总数:2/2个  总计大小:0MB [30字节]"));
    // Typing in the box changes the current text the commands act on.
    controller.combo()->setEditText(QStringLiteral("typed"));
    EXPECT_EQ(controller.model().currentText(), QStringLiteral("typed"));
}

TEST_F(FileListUiTest, TooltipShowsHintOverTheFirstQuarterAndThePathElsewhere)
{
    const QString a = world.file(QStringLiteral("a.dat"));
    controller.model().AddDroppedFiles({a});
    FileListCombo* box = controller.combo();
    EXPECT_EQ(box->toolTipAt(QPoint(box->width() / 4, 5)), kListBoxHint);
    EXPECT_EQ(box->toolTipAt(QPoint(box->width() / 4 + 1, 5)), a);
}

TEST_F(FileListUiTest, DeleteIsSwallowedAndEnterOpensAnExistingFile)
{
    const QString a = world.file(QStringLiteral("a.dat"));
    controller.model().AddDroppedFiles({a});
    window.show();
    QLineEdit* edit = controller.combo()->lineEdit();
    edit->setCursorPosition(0);
    QTest::keyClick(edit, Qt::Key_Delete);
    EXPECT_EQ(controller.combo()->currentText(), a);
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(world.shell.calls, QStringList{QStringLiteral("open ") + a});
    // Text naming no file: Delete edits as usual, Enter opens nothing and adds nothing.
    controller.combo()->setEditText(QStringLiteral("xyz"));
    edit->setCursorPosition(0);
    QTest::keyClick(edit, Qt::Key_Delete);
    EXPECT_EQ(controller.combo()->currentText(), QStringLiteral("yz"));
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(world.shell.calls.size(), 1);
    EXPECT_EQ(controller.combo()->count(), 1);
}

TEST_F(FileListUiTest, RightClickAsksForTheFileMenu)
{
    window.show();
    QSignalSpy menu(controller.combo(), &FileListCombo::popupMenuRequested);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), QPoint(100, 100));
    QApplication::sendEvent(controller.combo()->lineEdit(), &event);
    EXPECT_EQ(menu.size(), 1);
}

TEST_F(FileListUiTest, DropAcceptsOnlyFileListsAndAddsTheFiles)
{
    const QString a = world.file(QStringLiteral("a.dat"));
    const QString folder = world.folder(QStringLiteral("f"));
    QMimeData text;
    text.setText(QStringLiteral("hello"));
    EXPECT_TRUE(FileDropTarget::droppedPaths(&text).isEmpty());
    QMimeData files;
    files.setUrls(
        {QUrl::fromLocalFile(folder), QUrl::fromLocalFile(a), QUrl(QStringLiteral("https://example.org/x"))});
    EXPECT_EQ(FileDropTarget::droppedPaths(&files), (QStringList{folder, a}));

    controller.acceptDrops(&window);
    window.show();
    QDragEnterEvent refused(QPoint(5, 5), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&destination, &refused);
    EXPECT_FALSE(refused.isAccepted());
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&destination, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&destination, &drop);
    EXPECT_TRUE(drop.isAccepted());
    EXPECT_EQ(controller.model().entries(), QStringList{a});
    EXPECT_EQ(destination.text(), QString()); // the line edit did not take the drop as text
}

TEST_F(FileListUiTest, DropIsTakenAsACopyNeverAsAMove)
{
    // A move accepted by the list would let the file manager delete the dropped originals.
    EXPECT_EQ(FileDropTarget::safeDropAction(Qt::CopyAction | Qt::MoveAction), Qt::CopyAction);
    EXPECT_EQ(FileDropTarget::safeDropAction(Qt::LinkAction | Qt::MoveAction), Qt::LinkAction);
    EXPECT_EQ(FileDropTarget::safeDropAction(Qt::MoveAction), Qt::IgnoreAction);

    const QString a = world.file(QStringLiteral("a.dat"));
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(a)});
    controller.acceptDrops(&window);
    window.show();
    QDragEnterEvent enter(
        QPoint(5, 5), Qt::CopyAction | Qt::MoveAction, &files, Qt::LeftButton, Qt::NoModifier);
    enter.setDropAction(Qt::MoveAction);
    QApplication::sendEvent(&destination, &enter);
    EXPECT_TRUE(enter.isAccepted());
    EXPECT_EQ(enter.dropAction(), Qt::CopyAction);
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction | Qt::MoveAction, &files, Qt::LeftButton, Qt::NoModifier);
    drop.setDropAction(Qt::MoveAction);
    QApplication::sendEvent(&destination, &drop);
    EXPECT_TRUE(drop.isAccepted());
    EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
    EXPECT_EQ(controller.model().entries(), QStringList{a});

    // A source that offers only a move is refused and nothing is added.
    controller.model().ResetFileList();
    QDropEvent moveOnly(QPointF(5, 5), Qt::MoveAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&destination, &moveOnly);
    EXPECT_FALSE(moveOnly.isAccepted());
    EXPECT_TRUE(controller.model().isEmpty());
    EXPECT_TRUE(QFile::exists(a));
}

TEST_F(FileListUiTest, AddFolderChooserCarriesPatternAndSubfolderBox)
{
    std::unique_ptr<QFileDialog> dialog(QtListDialogs::createAddFolderDialog(&window));
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("选择待添加的文件目录"));
    auto* pattern = dialog->findChild<QLineEdit*>(QStringLiteral("txtFilePattern"));
    auto* subFolders = dialog->findChild<QCheckBox*>(QStringLiteral("chkSubFolders"));
    ASSERT_TRUE(pattern && subFolders);
    EXPECT_EQ(pattern->text(), QStringLiteral("*.*"));
    EXPECT_FALSE(subFolders->isChecked());
    EXPECT_EQ(subFolders->text(), QStringLiteral("也包括下级子文件夹"));
    const QString folder = world.folder(QStringLiteral("MPEGAV"));
    dialog->setDirectory(folder);
    dialog->selectFile(folder);
    pattern->setText(QStringLiteral("*.DAT"));
    subFolders->setChecked(true);
    const auto choice = QtListDialogs::folderChoiceOf(*dialog);
    ASSERT_TRUE(choice.has_value());
    EXPECT_EQ(QFileInfo(choice->folder).canonicalFilePath(), QFileInfo(folder).canonicalFilePath());
    EXPECT_EQ(choice->pattern, QStringLiteral("*.DAT"));
    EXPECT_TRUE(choice->includeSubfolders);
}

TEST(Balloon, OpensBelowWhenThereIsRoomElseAboveAndStaysOnScreen)
{
    const QRect screen(0, 0, 1024, 768);
    const QSize size(300, 200);
    BalloonPlacement below = placeBalloon(QRect(100, 100, 400, 24), screen, size);
    EXPECT_TRUE(below.below);
    EXPECT_EQ(below.topLeft, QPoint(100, 124));
    EXPECT_EQ(below.pointerX, 199); // under the anchor's middle (x 299)
    BalloonPlacement above = placeBalloon(QRect(900, 700, 100, 24), screen, size);
    EXPECT_FALSE(above.below);
    EXPECT_EQ(above.topLeft, QPoint(724, 500)); // shifted left to fit, ending at the screen's edge
    EXPECT_GE(above.pointerX, 19);
    EXPECT_LE(above.pointerX, 300 - 19);
}

class FrmDialogTest : public FileListUiTest
{
};

TEST_F(FrmDialogTest, ShowsFactsAndProposal)
{
    const QString a = world.file(QStringLiteral("v/AVSEQ01.DAT"), 1'024'001);
    controller.model().AddDroppedFiles({a});
    FrmDialog dialog(controller.model(), world.fs, prompts, controller.icons(), controller.combo(), &window);
    EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("txtNewFileName"))->text(),
        QStringLiteral("N[01]AVSEQ01.DAT"));
    const QString facts = dialog.findChild<QLabel*>(QStringLiteral("lblText"))->text();
    EXPECT_TRUE(facts.startsWith(QStringLiteral("文件大小：1,000KB\n文件类型：Video\n创建时间：")))
        << qPrintable(facts);
    EXPECT_TRUE(
        dialog.findChild<QLabel*>(QStringLiteral("lblTitle"))->text().startsWith(QStringLiteral("重命名：")));
    EXPECT_TRUE(dialog.windowFlags().testFlag(Qt::FramelessWindowHint));
    // The balloon's shape: no square corners, the pointer's tip at the edge facing the list box.
    const QRegion shape = dialog.mask();
    EXPECT_FALSE(shape.contains(QPoint(0, 0)));
    EXPECT_FALSE(shape.contains(QPoint(dialog.width() - 1, dialog.height() - 1)));
    const int tipY = dialog.isBelowAnchor() ? 2 : dialog.height() - 3;
    EXPECT_TRUE(shape.contains(QPoint(dialog.pointerX(), tipY)));
    EXPECT_FALSE(shape.contains(QPoint(dialog.pointerX() + 12, tipY)));
}

TEST_F(FrmDialogTest, Mp3FileShowsItsTag)
{
    QByteArray tag(128, '\0');
    tag.replace(0, 3, "TAG");
    tag.replace(3, 4, "Song");
    tag[126] = 7;
    tag[127] = 17;
    const QString mp3 = world.file(QStringLiteral("s.mp3"), 0);
    {
        QFile f(mp3);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(QByteArray(200, 'x') + tag);
    }
    controller.model().AddDroppedFiles({mp3});
    FrmDialog dialog(controller.model(), world.fs, prompts, controller.icons(), controller.combo(), &window);
    const QString facts = dialog.findChild<QLabel*>(QStringLiteral("lblText"))->text();
    EXPECT_TRUE(facts.contains(QStringLiteral("\n曲名：Song\n艺人：未知艺术家\n"))) << qPrintable(facts);
    EXPECT_TRUE(facts.contains(QStringLiteral("流派：Rock  音轨序号：7"))) << qPrintable(facts);
}

TEST_F(FrmDialogTest, EnterRenamesAndTheListKeepsItsOrder)
{
    const QString x = world.file(QStringLiteral("v/x.dat"));
    const QString a = world.file(QStringLiteral("v/a.dat"));
    controller.model().AddDroppedFiles({x, a});
    emit controller.combo()->activated(1);
    FrmDialog dialog(controller.model(), world.fs, prompts, controller.icons(), controller.combo(), &window);
    dialog.show();
    auto* field = dialog.findChild<QLineEdit*>(QStringLiteral("txtNewFileName"));
    field->setText(QStringLiteral(" b.dat "));
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_FALSE(dialog.isVisible());
    const QString b = world.path(QStringLiteral("v/b.dat"));
    EXPECT_EQ(controller.model().entries(), (QStringList{x, b}));
    EXPECT_EQ(controller.combo()->currentText(), b);
    EXPECT_TRUE(prompts.notices.isEmpty());
}

TEST_F(FrmDialogTest, RefusedNameIsExplainedAndChangesNothing)
{
    const QString a = world.file(QStringLiteral("v/a.dat"));
    world.file(QStringLiteral("v/b.dat"));
    controller.model().AddDroppedFiles({a});
    FrmDialog dialog(controller.model(), world.fs, prompts, controller.icons(), controller.combo(), &window);
    dialog.show();
    dialog.findChild<QLineEdit*>(QStringLiteral("txtNewFileName"))->setText(QStringLiteral("b.dat"));
    dialog.pressOk();
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    ASSERT_EQ(prompts.notices.size(), 1);
    EXPECT_TRUE(prompts.notices.first().contains(QStringLiteral("b.dat")));
    EXPECT_EQ(controller.model().entries(), QStringList{a});
    EXPECT_TRUE(QFile::exists(a));
}

TEST_F(FrmDialogTest, CancelWaitsHalfASecond)
{
    const QString a = world.file(QStringLiteral("v/a.dat"));
    controller.model().AddDroppedFiles({a});
    FrmDialog dialog(controller.model(), world.fs, prompts, controller.icons(), controller.combo(), &window);
    dialog.show();
    QSignalSpy rejected(&dialog, &QDialog::rejected);
    QElapsedTimer clock;
    clock.start();
    dialog.pressCancel();
    EXPECT_TRUE(dialog.isVisible());
    ASSERT_TRUE(rejected.wait(5000));
    EXPECT_GE(clock.elapsed(), FrmDialog::kCancelDelayMs - 5);
    EXPECT_EQ(controller.model().entries(), QStringList{a});
    EXPECT_TRUE(QFile::exists(a));
}

} // namespace
