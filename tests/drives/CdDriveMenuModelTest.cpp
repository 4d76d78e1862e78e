#include "drives/CdDriveMenuModel.h"
#include "drives/CDRomDriveControl.h"
#include "fakes/FakeOpticalDrives.h"

#include <gtest/gtest.h>

using vindaro::drives::CdDriveMenuModel;
using vindaro::drives::CdMenuItem;
using vindaro::drives::TrayCommand;
using vindaro::drives::TrayMove;
using vindaro::platform::OpticalDrive;

namespace {

QList<OpticalDrive> twoDrives()
{
    return {OpticalDrive{QStringLiteral("/dev/sr0"), QStringLiteral("/media/cd0")},
        OpticalDrive{QStringLiteral("/dev/sr1"), QString()}};
}

QList<int> ids(const QList<CdMenuItem>& items)
{
    QList<int> out;
    for (const CdMenuItem& item : items)
        out.append(item.id);
    return out;
}

QStringList captions(const QList<CdMenuItem>& items)
{
    QStringList out;
    for (const CdMenuItem& item : items)
        out.append(item.caption);
    return out;
}

TEST(CdDriveMenuModel, ListsEachDriveByItsRootInBothSubMenus)
{
    const CdDriveMenuModel model(twoDrives());
    EXPECT_EQ(ids(model.topItems()), QList<int>({1000, 1100}));
    EXPECT_EQ(captions(model.topItems()), QStringList({"弹出[&E] 所有CD-ROM", "关闭[&C] 所有CD-ROM"}));
    EXPECT_EQ(ids(model.ejectItems()), QList<int>({1200, 1201}));
    EXPECT_EQ(ids(model.closeItems()), QList<int>({1300, 1301}));
    EXPECT_EQ(captions(model.ejectItems()), QStringList({"/media/cd0", "/dev/sr1"}));
    EXPECT_EQ(captions(model.closeItems()), QStringList({"/media/cd0", "/dev/sr1"}));
}

// Choosing the second drive reaches that drive only, and all-commands reach every drive in list order.
TEST(CdDriveMenuModel, IdentifiersReachTheirDrives)
{
    const struct
    {
        int id;
        QStringList calls;
    } cases[] = {
        {1200, {"open /dev/sr0"}},
        {1201, {"open /dev/sr1"}},
        {1300, {"close /dev/sr0"}},
        {1301, {"close /dev/sr1"}},
        {1000, {"open /dev/sr0", "open /dev/sr1"}},
        {1100, {"close /dev/sr0", "close /dev/sr1"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        vindaro::testing::FakeOpticalDrives fake;
        for (const OpticalDrive& drive : twoDrives())
            fake.add(drive.device, drive.mountPoint);
        const CdDriveMenuModel model(fake.list());
        const std::optional<TrayCommand> command = model.commandFor(c.id);
        ASSERT_TRUE(command.has_value());
        vindaro::drives::CDRomDriveControl(fake).carryOut(*command);
        EXPECT_EQ(fake.calls(), c.calls);
    }
}

TEST(CdDriveMenuModel, WithoutDrivesTheSubMenusAreEmptyAndAllCommandsDoNothing)
{
    const CdDriveMenuModel model({});
    EXPECT_EQ(model.topItems().size(), 2);
    EXPECT_TRUE(model.ejectItems().isEmpty());
    EXPECT_TRUE(model.closeItems().isEmpty());
    EXPECT_EQ(model.commandFor(1000), (TrayCommand{TrayMove::Open, {}}));
    EXPECT_EQ(model.commandFor(1100), (TrayCommand{TrayMove::Close, {}}));
    EXPECT_FALSE(model.commandFor(1200).has_value());
    EXPECT_FALSE(model.commandFor(1300).has_value());
}

TEST(CdDriveMenuModel, IdentifierPastTheLastDriveDoesNothing)
{
    const CdDriveMenuModel model(twoDrives());
    EXPECT_FALSE(model.commandFor(1202).has_value());
    EXPECT_FALSE(model.commandFor(1330).has_value());
}

class IdentifierRange : public ::testing::TestWithParam<std::pair<int, bool>>
{
};

TEST_P(IdentifierRange, AcceptsOnlyTheCommandRanges)
{
    const auto [id, accepted] = GetParam();
    EXPECT_EQ(CdDriveMenuModel::isAcceptedId(id), accepted);
    // With enough drives every accepted identifier stands for a command.
    QList<OpticalDrive> many;
    for (int k = 0; k < 40; ++k)
        many.append(OpticalDrive{QStringLiteral("/dev/sr%1").arg(k), QString()});
    EXPECT_EQ(CdDriveMenuModel(many).commandFor(id).has_value(), accepted);
}

INSTANTIATE_TEST_SUITE_P(Boundaries, IdentifierRange,
    ::testing::Values(std::pair{0, false}, std::pair{-1, false}, std::pair{999, false}, std::pair{1000, true},
        std::pair{1001, false}, std::pair{1099, false}, std::pair{1100, true}, std::pair{1101, false},
        std::pair{1199, false}, std::pair{1200, true}, std::pair{1215, true}, std::pair{1230, true},
        std::pair{1231, false}, std::pair{1299, false}, std::pair{1300, true}, std::pair{1330, true},
        std::pair{1331, false}, std::pair{1400, false}));

// Items stop at 1230 / 1330 so that every item shown can be carried out; eject all still reaches all.
TEST(CdDriveMenuModel, ManyDrivesStopAtTheLastAcceptedIdentifier)
{
    QList<OpticalDrive> many;
    for (int k = 0; k < 33; ++k)
        many.append(OpticalDrive{QStringLiteral("/dev/sr%1").arg(k), QString()});
    const CdDriveMenuModel model(many);
    ASSERT_EQ(model.ejectItems().size(), 31);
    EXPECT_EQ(model.ejectItems().last().id, 1230);
    EXPECT_EQ(model.closeItems().last().id, 1330);
    EXPECT_EQ(model.commandFor(1230)->devices, QStringList({"/dev/sr30"}));
    EXPECT_EQ(model.commandFor(1000)->devices.size(), 33);
}

} // namespace
