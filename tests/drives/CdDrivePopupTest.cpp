// The drive menu's window side: the model's items as a menu, a choice carried out off the window's
// thread, and the shown menu answering its mnemonic.
#include "drives/CdDrivePopup.h"
#include "fakes/FakeOpticalDrives.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>

using vindaro::drives::CdDriveMenuModel;
using vindaro::testing::FakeOpticalDrives;
using namespace Qt::StringLiterals;

namespace {

// Each action as "text=data", a separator as "-", a sub-menu as "text>".
QStringList entries(const QMenu* menu)
{
    QStringList out;
    for (const QAction* action : menu->actions())
        out << (action->isSeparator() ? u"-"_s
                : action->menu()      ? action->text() + u'>'
                                      : action->text() + u'=' + action->data().toString());
    return out;
}

std::shared_ptr<FakeOpticalDrives> twoDrives()
{
    auto fake = std::make_shared<FakeOpticalDrives>();
    fake->add(u"/dev/sr0"_s, u"/media/Tom & Jerry"_s);
    fake->add(u"/dev/sr1"_s);
    return fake;
}

TEST(CdDrivePopup, MenuCarriesTheModelsItemsAndIdentifiers)
{
    QWidget owner;
    std::unique_ptr<QMenu> menu(
        vindaro::drives::buildCdDriveMenu(CdDriveMenuModel(twoDrives()->list()), &owner));
    EXPECT_EQ(entries(menu.get()),
        QStringList(
            {CdDriveMenuModel::kEjectAllCaption + u"=1000"_s, CdDriveMenuModel::kCloseAllCaption + u"=1100"_s,
                u"-"_s, CdDriveMenuModel::kEjectMenuTitle + u'>', CdDriveMenuModel::kCloseMenuTitle + u'>'}));
    const auto* eject = menu->findChild<QMenu*>(u"ejectDriveMenu"_s);
    const auto* close = menu->findChild<QMenu*>(u"closeDriveMenu"_s);
    ASSERT_TRUE(eject && close);
    // A path's "&" is shown as it is, not taken as a mnemonic.
    EXPECT_EQ(entries(eject), QStringList({u"/media/Tom && Jerry=1200"_s, u"/dev/sr1=1201"_s}));
    EXPECT_EQ(entries(close), QStringList({u"/media/Tom && Jerry=1300"_s, u"/dev/sr1=1301"_s}));
}

// A slow drive keeps the busy pointer up but never the window's thread; the pointer returns afterwards.
TEST(CdDrivePopup, ChoiceRunsInTheBackgroundUnderTheBusyPointer)
{
    auto fake = twoDrives();
    const CdDriveMenuModel model(fake->list());
    for (int id : {0, 1202, 1231, 1331}) {
        EXPECT_FALSE(vindaro::drives::carryOutCdMenuChoice(model, id, fake)) << id;
        EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    }
    fake->holdTrays();
    bool done = false;
    ASSERT_TRUE(vindaro::drives::carryOutCdMenuChoice(model, 1301, fake, [&] { done = true; }));
    ASSERT_NE(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::BusyCursor);
    EXPECT_TRUE(fake->calls().isEmpty());

    fake->releaseTrays();
    ASSERT_TRUE(QTest::qWaitFor([&] { return done; }, 5000));
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(fake->calls(), QStringList({"close /dev/sr1"}));
}

// The shown menu answers its mnemonic: "E" ejects every drive.
TEST(CdDrivePopup, PopupCarriesOutTheChosenCommand)
{
    auto fake = twoDrives();
    QWidget owner;
    owner.show();
    bool sawMenu = false;
    QTimer::singleShot(0, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return;
        sawMenu = menu->objectName() == "cdDriveMenu"_L1;
        QTest::keyClick(menu, Qt::Key_E);
    });
    vindaro::drives::CreatePopupCDDriveMenu(&owner, fake);
    ASSERT_TRUE(sawMenu);
    ASSERT_TRUE(QTest::qWaitFor([&] { return fake->calls().size() == 2; }, 5000));
    EXPECT_EQ(fake->calls(), QStringList({"open /dev/sr0", "open /dev/sr1"}));
    EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::overrideCursor() == nullptr; }, 5000));
}

} // namespace
