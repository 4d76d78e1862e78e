#include "drives/CdDriveMenuModel.h"
#include "drives/CDRomDriveControl.h"
#include "fakes/FakeOpticalDrives.h"

#include <gtest/gtest.h>

using vindaro::drives::CdDriveMenuModel;
using vindaro::drives::CdMenuItem;
using vindaro::drives::TrayCommand;
using vindaro::drives::TrayMove;
using vindaro::platform::OpticalDrive;
using namespace Qt::StringLiterals;

namespace {

QList<OpticalDrive> drives(int count)
{
    QList<OpticalDrive> list;
    for (int k = 0; k < count; ++k)
        list.append(OpticalDrive{u"/dev/sr%1"_s.arg(k), k == 0 ? u"/media/cd0"_s : QString()});
    return list;
}

QStringList items(const QList<CdMenuItem>& items)
{
    QStringList out;
    for (const CdMenuItem& item : items)
        out.append(QString::number(item.id) + u' ' + item.caption);
    return out;
}

// Each drive by its root in both sub-menus; choosing one reaches that drive only, the all-commands every
// drive in list order.
TEST(CdDriveMenuModel, ListsEachDriveByItsRootAndEachIdentifierReachesItsDrives)
{
    const CdDriveMenuModel model(drives(2));
    EXPECT_EQ(items(model.topItems()),
        QStringList(
            {"1000 " + CdDriveMenuModel::kEjectAllCaption, "1100 " + CdDriveMenuModel::kCloseAllCaption}));
    EXPECT_EQ(items(model.ejectItems()), QStringList({"1200 /media/cd0", "1201 /dev/sr1"}));
    EXPECT_EQ(items(model.closeItems()), QStringList({"1300 /media/cd0", "1301 /dev/sr1"}));
    const struct
    {
        int id;
        QStringList calls;
    } rows[] = {{1200, {"open /dev/sr0"}}, {1201, {"open /dev/sr1"}}, {1300, {"close /dev/sr0"}},
        {1301, {"close /dev/sr1"}}, {1000, {"open /dev/sr0", "open /dev/sr1"}},
        {1100, {"close /dev/sr0", "close /dev/sr1"}}};
    for (const auto& row : rows) {
        vindaro::testing::FakeOpticalDrives fake;
        for (const OpticalDrive& drive : drives(2))
            fake.add(drive.device, drive.mountPoint);
        const std::optional<TrayCommand> command = model.commandFor(row.id);
        ASSERT_TRUE(command.has_value()) << row.id;
        vindaro::drives::CDRomDriveControl(fake).carryOut(*command);
        EXPECT_EQ(fake.calls(), row.calls) << row.id;
    }
    EXPECT_FALSE(model.commandFor(1202).has_value()); // past the last drive
    EXPECT_FALSE(model.commandFor(1330).has_value());
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
}

// Items stop at 1230 / 1330 so that every item shown can be carried out; with enough drives every accepted
// identifier stands for a command, and eject all still reaches all.
TEST(CdDriveMenuModel, AcceptsOnlyTheCommandRangesAndManyDrivesStopAtTheLastOne)
{
    const CdDriveMenuModel many(drives(40));
    const std::pair<int, bool> rows[] = {{0, false}, {-1, false}, {999, false}, {1000, true}, {1001, false},
        {1099, false}, {1100, true}, {1101, false}, {1199, false}, {1200, true}, {1215, true}, {1230, true},
        {1231, false}, {1299, false}, {1300, true}, {1330, true}, {1331, false}, {1400, false}};
    for (const auto& [id, accepted] : rows) {
        EXPECT_EQ(CdDriveMenuModel::isAcceptedId(id), accepted) << id;
        EXPECT_EQ(many.commandFor(id).has_value(), accepted) << id;
    }
    const CdDriveMenuModel model(drives(33));
    ASSERT_EQ(model.ejectItems().size(), 31);
    EXPECT_EQ(model.ejectItems().last().id, 1230);
    EXPECT_EQ(model.closeItems().last().id, 1330);
    EXPECT_EQ(model.commandFor(1230)->devices, QStringList({"/dev/sr30"}));
    EXPECT_EQ(model.commandFor(1000)->devices.size(), 33);
}

} // namespace
