// The file list's windows wired to the list: the menu, the box, drops, the add-folder chooser and the rename
// balloon. What the list does with a command is tested below them.
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
using namespace Qt::StringLiterals;

namespace {

class FileListUiTest : public ::testing::Test
{
protected:
    vindaro::testing::ListWorld world;
    vindaro::testing::ScriptedPrompter& prompts = world.prompts;
    QWidget window;
    FileListController controller{world.fs, prompts, prompts, &window};
    QLabel filesInfo{&window};
    QLineEdit destination{&window};

    void SetUp() override
    {
        controller.combo()->setGeometry(10, 10, 400, 24);
        controller.bindDisplays(
            FileListDisplays{nullptr, nullptr, &filesInfo, nullptr, nullptr, nullptr, &destination});
        window.resize(600, 400);
    }
    QAction* action(const QString& name) { return controller.menu()->entry(name); }
    std::unique_ptr<FrmDialog> renameDialog()
    {
        return std::make_unique<FrmDialog>(
            controller.model(), world.fs, prompts, controller.icons(), controller.combo(), &window);
    }
    QLineEdit* nameField(FrmDialog& dialog) { return dialog.findChild<QLineEdit*>(u"txtNewFileName"_s); }
    QString factsShown(FrmDialog& dialog) { return dialog.findChild<QLabel*>(u"lblText"_s)->text(); }
};

TEST_F(FileListUiTest, MenuEntriesFollowTheListAndThePreviewMarkReachesIt)
{
    const QStringList listEntries = {u"mnuOpenFile"_s, u"mnuPlayFile"_s, u"mnuClearSelectedItem"_s,
        u"mnuClearAllListItem"_s, u"mnuDelSeletedItem"_s, u"mnuReName"_s, u"mnuCopyTo"_s, u"mnuMoveTo"_s,
        u"mnuFindFile"_s, u"mnuFileroperty"_s, u"mnuCopyAllFilesTo"_s};
    const auto enabled = [&](bool on) {
        for (const QString& name : listEntries)
            EXPECT_EQ(action(name)->isEnabled(), on) << name.toStdString();
        for (const QString& name :
            {u"mnuPreview"_s, u"mnuAddFileToListItem"_s, u"mnuExit"_s, u"mnuAboutMe"_s})
            EXPECT_TRUE(action(name)->isEnabled()) << name.toStdString();
    };
    enabled(false);
    controller.model().AddDroppedFiles({world.file(u"a.dat"_s)});
    enabled(true);
    action(u"mnuClearAllListItem"_s)->trigger();
    enabled(false);
    EXPECT_EQ(filesInfo.text(), kResetFilesInfo);

    action(u"mnuPreview"_s)->trigger();
    EXPECT_TRUE(controller.model().previewFlag());
}

TEST_F(FileListUiTest, BoxFollowsTheListAndPickingShowsThePosition)
{
    const QString a = world.file(u"cd/a.dat"_s, 10);
    const QString b = world.file(u"cd/b.dat"_s, 20);
    destination.setText(u"/out/old.dat"_s);
    controller.model().AddDroppedFiles({a, b});
    FileListCombo* box = controller.combo();
    EXPECT_EQ(box->currentText(), a);
    EXPECT_EQ(box->count(), 2);
    emit box->activated(1);
    EXPECT_EQ(box->currentText(), b);
    EXPECT_EQ(destination.text(), u"/out/b.dat"_s);
    EXPECT_EQ(filesInfo.text(), filesInfoLine(2, 30, 2));
    // Typing in the box changes the current text the commands act on.
    box->setEditText(u"typed"_s);
    EXPECT_EQ(controller.model().currentText(), u"typed"_s);
    // The tooltip: a hint over the first quarter, the path elsewhere.
    box->setEditText(b);
    EXPECT_EQ(box->toolTipAt(QPoint(box->width() / 4, 5)), kListBoxHint);
    EXPECT_EQ(box->toolTipAt(QPoint(box->width() / 4 + 1, 5)), b);
}

TEST_F(FileListUiTest, KeysAndRightClickInTheBox)
{
    const QString a = world.file(u"a.dat"_s);
    controller.model().AddDroppedFiles({a});
    window.show();
    QLineEdit* edit = controller.combo()->lineEdit();
    // On an existing file Delete is swallowed and Enter opens it.
    edit->setCursorPosition(0);
    QTest::keyClick(edit, Qt::Key_Delete);
    EXPECT_EQ(controller.combo()->currentText(), a);
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(world.shell.calls, QStringList{u"open "_s + a});
    // Text naming no file: Delete edits as usual, Enter opens nothing and adds nothing.
    controller.combo()->setEditText(u"xyz"_s);
    edit->setCursorPosition(0);
    QTest::keyClick(edit, Qt::Key_Delete);
    EXPECT_EQ(controller.combo()->currentText(), u"yz"_s);
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(world.shell.calls.size(), 1);
    EXPECT_EQ(controller.combo()->count(), 1);

    QSignalSpy menu(controller.combo(), &FileListCombo::popupMenuRequested);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), QPoint(100, 100));
    QApplication::sendEvent(edit, &event);
    EXPECT_EQ(menu.size(), 1);
}

// Only file lists are taken, and always as a copy: a move accepted by the list would let the file manager
// delete the dropped originals. The line edit under the drop does not take it as text.
TEST_F(FileListUiTest, DropsAreTakenOnlyAsFileListsAndNeverAsAMove)
{
    const QString a = world.file(u"a.dat"_s);
    const QString folder = world.folder(u"f"_s);
    QMimeData text;
    text.setText(u"hello"_s);
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(folder), QUrl::fromLocalFile(a), QUrl(u"https://example.org/x"_s)});
    EXPECT_TRUE(FileDropTarget::droppedPaths(&text).isEmpty());
    EXPECT_EQ(FileDropTarget::droppedPaths(&files), (QStringList{folder, a}));
    EXPECT_EQ(FileDropTarget::safeDropAction(Qt::LinkAction | Qt::MoveAction), Qt::LinkAction);

    controller.acceptDrops(&window);
    window.show();
    const struct
    {
        QMimeData* mime;
        Qt::DropActions offered;
        Qt::DropAction proposed;
        bool accepted;
    } rows[] = {
        {&text, Qt::CopyAction, Qt::CopyAction, false},
        {&files, Qt::CopyAction, Qt::CopyAction, true},
        {&files, Qt::CopyAction | Qt::MoveAction, Qt::MoveAction, true},
        {&files, Qt::MoveAction, Qt::MoveAction, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(int(row.offered));
        controller.model().ResetFileList();
        QDragEnterEvent enter(QPoint(5, 5), row.offered, row.mime, Qt::LeftButton, Qt::NoModifier);
        enter.setDropAction(row.proposed);
        QApplication::sendEvent(&destination, &enter);
        QDropEvent drop(QPointF(5, 5), row.offered, row.mime, Qt::LeftButton, Qt::NoModifier);
        drop.setDropAction(row.proposed);
        QApplication::sendEvent(&destination, &drop);
        EXPECT_EQ(enter.isAccepted(), row.accepted);
        EXPECT_EQ(drop.isAccepted(), row.accepted);
        if (row.accepted) {
            EXPECT_EQ(enter.dropAction(), Qt::CopyAction);
            EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
        }
        EXPECT_EQ(controller.model().entries(), row.accepted ? QStringList{a} : QStringList());
        EXPECT_EQ(destination.text(), QString());
        EXPECT_TRUE(QFile::exists(a));
    }
}

TEST_F(FileListUiTest, AddFolderChooserCarriesPatternAndSubfolderBox)
{
    std::unique_ptr<QFileDialog> dialog(QtListDialogs::createAddFolderDialog(&window));
    EXPECT_EQ(dialog->windowTitle(), u"选择待添加的文件目录"_s);
    auto* pattern = dialog->findChild<QLineEdit*>(u"txtFilePattern"_s);
    auto* subFolders = dialog->findChild<QCheckBox*>(u"chkSubFolders"_s);
    ASSERT_TRUE(pattern && subFolders);
    EXPECT_EQ(pattern->text(), u"*.*"_s);
    EXPECT_FALSE(subFolders->isChecked());
    EXPECT_EQ(subFolders->text(), u"也包括下级子文件夹"_s);
    const QString folder = world.folder(u"MPEGAV"_s);
    dialog->setDirectory(folder);
    dialog->selectFile(folder);
    pattern->setText(u"*.DAT"_s);
    subFolders->setChecked(true);
    const auto choice = QtListDialogs::folderChoiceOf(*dialog);
    ASSERT_TRUE(choice.has_value());
    EXPECT_EQ(QFileInfo(choice->folder).canonicalFilePath(), QFileInfo(folder).canonicalFilePath());
    EXPECT_EQ(choice->pattern, u"*.DAT"_s);
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

TEST_F(FileListUiTest, RenameBalloonShowsTheFactsAndTheProposalInItsShape)
{
    const QString a = world.file(u"v/AVSEQ01.DAT"_s, 1'024'001);
    controller.model().AddDroppedFiles({a});
    auto dialog = renameDialog();
    EXPECT_EQ(nameField(*dialog)->text(), proposedNewName(u"AVSEQ01.DAT"_s));
    EXPECT_TRUE(factsShown(*dialog).startsWith(renameSizeLine(1'024'001) + u"\n"_s));
    EXPECT_TRUE(factsShown(*dialog).contains(u"Video"_s)); // the desktop's type name
    EXPECT_TRUE(dialog->windowFlags().testFlag(Qt::FramelessWindowHint));
    // No square corners; the pointer's tip at the edge facing the list box.
    const QRegion shape = dialog->mask();
    EXPECT_FALSE(shape.contains(QPoint(0, 0)));
    EXPECT_FALSE(shape.contains(QPoint(dialog->width() - 1, dialog->height() - 1)));
    const int tipY = dialog->isBelowAnchor() ? 2 : dialog->height() - 3;
    EXPECT_TRUE(shape.contains(QPoint(dialog->pointerX(), tipY)));
    EXPECT_FALSE(shape.contains(QPoint(dialog->pointerX() + 12, tipY)));

    // An MP3 file's tag is read into the facts.
    QByteArray tag(128, '\0');
    tag.replace(0, 7, "TAGSong");
    tag[127] = 17;
    QFile mp3(world.file(u"s.mp3"_s, 0));
    ASSERT_TRUE(mp3.open(QIODevice::WriteOnly));
    mp3.write(QByteArray(200, 'x') + tag);
    mp3.close();
    controller.model().ResetFileList();
    controller.model().AddDroppedFiles({mp3.fileName()});
    EXPECT_TRUE(factsShown(*renameDialog()).contains(u"Song"_s));
}

TEST_F(FileListUiTest, RenameBalloonRenamesOnEnterAndExplainsARefusal)
{
    const QString x = world.file(u"v/x.dat"_s);
    const QString a = world.file(u"v/a.dat"_s);
    controller.model().AddDroppedFiles({x, a});
    emit controller.combo()->activated(1);
    auto refused = renameDialog();
    refused->show();
    nameField(*refused)->setText(u"x.dat"_s);
    refused->pressOk();
    EXPECT_EQ(refused->result(), QDialog::Rejected);
    ASSERT_EQ(prompts.notices.size(), 1);
    EXPECT_TRUE(prompts.notices.first().contains(u"x.dat"_s));
    EXPECT_EQ(controller.model().entries(), (QStringList{x, a}));

    auto dialog = renameDialog();
    dialog->show();
    nameField(*dialog)->setText(u" b.dat "_s);
    QTest::keyClick(nameField(*dialog), Qt::Key_Return);
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_FALSE(dialog->isVisible());
    const QString b = world.path(u"v/b.dat"_s);
    EXPECT_EQ(controller.model().entries(), (QStringList{x, b}));
    EXPECT_EQ(controller.combo()->currentText(), b);
    EXPECT_EQ(prompts.notices.size(), 1);
}

TEST_F(FileListUiTest, RenameBalloonCancelWaitsHalfASecond)
{
    const QString a = world.file(u"v/a.dat"_s);
    controller.model().AddDroppedFiles({a});
    auto dialog = renameDialog();
    dialog->show();
    QSignalSpy rejected(dialog.get(), &QDialog::rejected);
    QElapsedTimer clock;
    clock.start();
    dialog->pressCancel();
    EXPECT_TRUE(dialog->isVisible());
    ASSERT_TRUE(rejected.wait(5000));
    EXPECT_GE(clock.elapsed(), FrmDialog::kCancelDelayMs - 5);
    EXPECT_EQ(controller.model().entries(), QStringList{a});
    EXPECT_TRUE(QFile::exists(a));
}

} // namespace
