#include "drives/CdDrivePopup.h"
#include "fakes/FakeOpticalDrives.h"

#include "DrivesTestSupport.h"

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

namespace {

struct Entry
{
    QString text;
    QVariant data;
    bool isSeparator = false;
    bool isSubMenu = false;
};

QList<Entry> entries(const QMenu* menu)
{
    QList<Entry> out;
    const QList<QAction*> actions = menu->actions();
    for (const QAction* action : actions)
        out.append(Entry{action->text(), action->data(), action->isSeparator(), action->menu() != nullptr});
    return out;
}

std::shared_ptr<FakeOpticalDrives> twoDrives()
{
    auto fake = std::make_shared<FakeOpticalDrives>();
    fake->add(QStringLiteral("/dev/sr0"), QStringLiteral("/media/Tom & Jerry"));
    fake->add(QStringLiteral("/dev/sr1"));
    return fake;
}

TEST(CdDrivePopup, MenuCarriesCaptionsAndIdentifiers)
{
    QWidget owner;
    const CdDriveMenuModel model(twoDrives()->list());
    std::unique_ptr<QMenu> menu(vindaro::drives::buildCdDriveMenu(model, &owner));

    const QList<Entry> top = entries(menu.get());
    ASSERT_EQ(top.size(), 5);
    EXPECT_EQ(top[0].text, QStringLiteral("弹出[&E] 所有CD-ROM"));
    EXPECT_EQ(top[0].data, QVariant(1000));
    EXPECT_EQ(top[1].text, QStringLiteral("关闭[&C] 所有CD-ROM"));
    EXPECT_EQ(top[1].data, QVariant(1100));
    EXPECT_TRUE(top[2].isSeparator);
    EXPECT_EQ(top[3].text, QStringLiteral("弹出    CD-ROM"));
    EXPECT_TRUE(top[3].isSubMenu);
    EXPECT_EQ(top[4].text, QStringLiteral("关闭    CD-ROM"));
    EXPECT_TRUE(top[4].isSubMenu);

    const auto* eject = menu->findChild<QMenu*>(QStringLiteral("ejectDriveMenu"));
    const auto* close = menu->findChild<QMenu*>(QStringLiteral("closeDriveMenu"));
    ASSERT_TRUE(eject && close);
    const QList<Entry> ejectEntries = entries(eject);
    const QList<Entry> closeEntries = entries(close);
    ASSERT_EQ(ejectEntries.size(), 2);
    ASSERT_EQ(closeEntries.size(), 2);
    // A path's "&" is shown as it is, not taken as a mnemonic.
    EXPECT_EQ(ejectEntries[0].text, QStringLiteral("/media/Tom && Jerry"));
    EXPECT_EQ(ejectEntries[0].data, QVariant(1200));
    EXPECT_EQ(ejectEntries[1].text, QStringLiteral("/dev/sr1"));
    EXPECT_EQ(ejectEntries[1].data, QVariant(1201));
    EXPECT_EQ(closeEntries[1].text, QStringLiteral("/dev/sr1"));
    EXPECT_EQ(closeEntries[1].data, QVariant(1301));
}

TEST(CdDrivePopup, MenuWithoutDrivesHasEmptySubMenus)
{
    const CdDriveMenuModel model({});
    std::unique_ptr<QMenu> menu(vindaro::drives::buildCdDriveMenu(model, nullptr));
    EXPECT_EQ(menu->actions().size(), 5);
    EXPECT_TRUE(menu->findChild<QMenu*>(QStringLiteral("ejectDriveMenu"))->actions().isEmpty());
    EXPECT_TRUE(menu->findChild<QMenu*>(QStringLiteral("closeDriveMenu"))->actions().isEmpty());
}

// A slow drive keeps the busy pointer up but never the window's thread; the pointer returns afterwards.
TEST(CdDrivePopup, ChoiceRunsInTheBackgroundUnderTheBusyPointer)
{
    auto fake = twoDrives();
    const CdDriveMenuModel model(fake->list());
    fake->holdTrays();
    bool done = false;
    ASSERT_TRUE(vindaro::drives::carryOutCdMenuChoice(model, 1301, fake, [&] { done = true; }));
    ASSERT_NE(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::BusyCursor);
    EXPECT_TRUE(fake->calls().isEmpty());

    fake->releaseTrays();
    ASSERT_TRUE(vindaro::testing::waitFor([&] { return done; }));
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(fake->calls(), QStringList({"close /dev/sr1"}));
}

TEST(CdDrivePopup, UnknownChoiceDoesNothing)
{
    auto fake = twoDrives();
    const CdDriveMenuModel model(fake->list());
    for (int id : {0, 1202, 1231, 1331}) {
        EXPECT_FALSE(vindaro::drives::carryOutCdMenuChoice(model, id, fake));
        EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    }
    EXPECT_TRUE(fake->calls().isEmpty());
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
        sawMenu = menu->objectName() == QLatin1String("cdDriveMenu");
        QTest::keyClick(menu, Qt::Key_E);
    });
    vindaro::drives::CreatePopupCDDriveMenu(&owner, fake);
    ASSERT_TRUE(sawMenu);
    ASSERT_TRUE(vindaro::testing::waitFor([&] { return fake->calls().size() == 2; }));
    EXPECT_EQ(fake->calls(), QStringList({"open /dev/sr0", "open /dev/sr1"}));
    EXPECT_TRUE(vindaro::testing::waitFor([] { return QApplication::overrideCursor() == nullptr; }));
}

} // namespace
