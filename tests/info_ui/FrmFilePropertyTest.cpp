#include "ui/frmFileProperty.h"
#include "PropertyTexts.h"
#include "ZipInformation.h"
#include "chrome/ToolTips.h"
#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "files/FileSystem.h"
#include "info/InfoSamples.h"
#include "platform/linux/LinuxVolumes.h"
#include "ui/ResourceBrowser.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace vindaro;
using info::ui::frmFileProperty;

namespace {

constexpr quint64 kGiB = quint64(1) << 30;

class FrmFilePropertyTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        volumes.add(dir.path(), platform::kDriveFixed, QStringLiteral("/dev/sda2"), QStringLiteral("ext4"));
        platform::VolumeSpace space;
        space.totalBytes = 4 * kGiB;
        space.freeBytes = kGiB;
        space.totalFreeBytes = kGiB;
        volumes.spaces.insert(dir.path(), space);
        volumes.identities.insert(
            dir.path(), platform::VolumeIdentity{QStringLiteral("DATA"), 0x1A2B, QStringLiteral("ext4")});
    }

    QString makeFile(const QString& name, qint64 bytes, int mode = 0644, const QByteArray& content = {})
    {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(vindaro::testing::writeFile(path, content));
        EXPECT_TRUE(QFile::resize(path, std::max(bytes, qint64(content.size()))));
        EXPECT_EQ(::chmod(QFile::encodeName(path).constData(), static_cast<mode_t>(mode)), 0);
        return path;
    }

    int attributes(const QString& path)
    {
        files::FileSystem fs(volumes, shell);
        return fs.GetFileAttributesNumber(path);
    }

    QTemporaryDir dir;
    vindaro::testing::FakeVolumes volumes;
    vindaro::testing::FakeShell shell;
};

TEST_F(FrmFilePropertyTest, AttributeBoxesShowTheRealFile)
{
    const struct
    {
        const char* name;
        int mode;
        bool readOnly, hidden;
    } cases[] = {{".hidden.zip", 0644, false, true}, {"ro.zip", 0444, true, false}};
    for (const auto& c : cases) {
        frmFileProperty window(volumes, shell);
        window.GetInfor(makeFile(QString::fromLatin1(c.name), 10, c.mode));
        EXPECT_EQ(window.chkReadOnly->isChecked(), c.readOnly) << c.name;
        EXPECT_EQ(window.chkHide->isChecked(), c.hidden) << c.name;
        EXPECT_TRUE(window.chkDocument->isChecked()) << c.name;
        EXPECT_FALSE(window.chkSystem->isChecked()) << c.name;
        EXPECT_FALSE(window.cmdApply->isEnabled());
    }
}

TEST_F(FrmFilePropertyTest, ApplyWritesTheWordAndOkWithoutApplyDoesNot)
{
    const QString path = makeFile(QStringLiteral("song.mp3"), 100);
    {
        frmFileProperty window(volumes, shell);
        window.GetInfor(path);
        QTest::mouseClick(window.chkReadOnly, Qt::LeftButton);
        EXPECT_TRUE(window.cmdApply->isEnabled());
        EXPECT_EQ(attributes(path), 32); // nothing written before Apply
        QTest::mouseClick(window.cmdApply, Qt::LeftButton);
        EXPECT_EQ(attributes(path), 33);
        EXPECT_EQ(window.cmdSure->text(), QStringLiteral("关闭[&E]"));
    }
    {
        frmFileProperty window(volumes, shell);
        window.GetInfor(path);
        ASSERT_TRUE(window.chkReadOnly->isChecked());
        QTest::mouseClick(window.chkReadOnly, Qt::LeftButton);
        QTest::mouseClick(window.cmdSure, Qt::LeftButton);
        EXPECT_EQ(attributes(path), 33);
    }
}

TEST_F(FrmFilePropertyTest, CdRomLabelBoxTakesNoKeyOtherDrivesTakeALabel)
{
    const QString path = makeFile(QStringLiteral("a.zip"), 10);
    {
        volumes.volumes[0].kind = platform::kDriveCdRom;
        frmFileProperty window(volumes, shell);
        window.GetInfor(path);
        QTest::keyClicks(window.txtVolumeName, QStringLiteral("XY"));
        QTest::keyClick(window.txtVolumeName, Qt::Key_Backspace);
        EXPECT_EQ(window.txtVolumeName->text(), QStringLiteral("DATA"));
        EXPECT_FALSE(window.cmdApply->isEnabled());
        EXPECT_EQ(window.txtVolumeName->palette().color(QPalette::Base),
            window.txtVolumeName->palette().color(QPalette::Button));
    }
    {
        volumes.volumes[0].kind = platform::kDriveFixed;
        frmFileProperty window(volumes, shell);
        window.GetInfor(path);
        QTest::keyClicks(window.txtVolumeName, QStringLiteral("2"));
        EXPECT_TRUE(window.cmdApply->isEnabled());
        QTest::mouseClick(window.cmdApply, Qt::LeftButton);
        EXPECT_EQ(volumes.labelsSet.value(dir.path()), QStringLiteral("DATA2"));
    }
}

// The file's size reaches the general page and its volume's figures the drive page, in the texts of
// PropertyTexts.
TEST_F(FrmFilePropertyTest, PagesShowTheFileAndItsVolume)
{
    frmFileProperty window(volumes, shell);
    window.GetInfor(makeFile(QStringLiteral("a.swf"), 1024001));
    EXPECT_EQ(window.windowTitle(), QStringLiteral("a.swf 属性"));
    EXPECT_EQ(window.lblFileLength->text(), info::fileLengthText(1024001));
    EXPECT_EQ(window.lblTotalSpace->text(), info::spaceLongText(4 * kGiB));
    EXPECT_EQ(window.lblAvailableSpaceA->text(), info::spaceShortText(kGiB));
    EXPECT_EQ(window.lblSpaceUsedA->text(), info::spaceShortText(3 * kGiB));
    EXPECT_EQ(window.txtVolumeName->text(), QStringLiteral("DATA"));
    EXPECT_EQ(window.lblFileSystem->text(), QStringLiteral("ext4"));
    EXPECT_EQ(window.lblDriveName->text(),
        info::driveNameText(dir.path(), QStringLiteral("1A2B"), kGiB, 3 * kGiB, 4 * kGiB));
    EXPECT_FALSE(window.lblDiskType->text().isEmpty());
    EXPECT_EQ(window.TabStrip1->tabText(2), info::driveTabCaption(window.lblDiskType->text(), dir.path()));
    EXPECT_TRUE(window.pic_DriveProp->hasPie());
    EXPECT_DOUBLE_EQ(window.pic_DriveProp->usedSpan(), 270.0);
}

TEST_F(FrmFilePropertyTest, FileOffEveryDriveKeepsTheStartingTexts)
{
    volumes.volumes.clear();
    frmFileProperty window(volumes, shell);
    window.GetInfor(makeFile(QStringLiteral("a.swf"), 10));
    EXPECT_EQ(window.lblTotalSpace->text(), QStringLiteral("0  字节"));
    EXPECT_EQ(window.lblTotalSpaceA->text(), QStringLiteral("0 GB"));
    EXPECT_EQ(window.lblDriveName->text(), QStringLiteral("驱动器 "));
    EXPECT_EQ(window.TabStrip1->tabText(2), QStringLiteral("驱动器属性"));
    EXPECT_FALSE(window.pic_DriveProp->hasPie());
}

// The real mount table: the temporary folder's volume fills the drive page, and a label the system
// refuses changes nothing and shows nothing.
TEST_F(FrmFilePropertyTest, RealVolumeFillsTheDrivePageAndARefusedLabelSaysNothing)
{
    platform::LinuxVolumes real;
    const QString path = makeFile(QStringLiteral("real.zip"), 10);
    frmFileProperty window(real, shell);
    window.GetInfor(path);
    if (window.driveRoot().isEmpty())
        GTEST_SKIP() << "the temporary folder is on no volume of the mount table";
    EXPECT_TRUE(path.startsWith(window.driveRoot()));
    EXPECT_NE(window.lblTotalSpace->text(), QStringLiteral("0  字节"));
    EXPECT_TRUE(window.pic_DriveProp->hasPie());
    const QString label = real.identity(window.driveRoot()).value_or(platform::VolumeIdentity{}).label;
    if (window.txtVolumeName->isReadOnly())
        GTEST_SKIP() << "the volume is an optical disc";
    QTest::keyClicks(window.txtVolumeName, QStringLiteral("Z"));
    QTest::mouseClick(window.cmdApply, Qt::LeftButton);
    EXPECT_EQ(real.identity(window.driveRoot()).value_or(platform::VolumeIdentity{}).label, label);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(FrmFilePropertyTest, ZipSummaryListsRowsWithColoursTipsAndTotals)
{
    using vindaro::testing::ZipEntry;
    const QByteArray zip
        = vindaro::testing::zipArchive({ZipEntry{"docs/"}, ZipEntry{"docs/a.txt", 1000, 250}});
    frmFileProperty window(volumes, shell);
    window.GetInfor(makeFile(QStringLiteral("pack.zip"), 0, 0644, zip));
    window.TabStrip1->setCurrentIndex(1);
    EXPECT_TRUE(window.lvZIPView->isVisibleTo(&window));
    EXPECT_FALSE(window.txtDocket->isVisibleTo(&window));
    ASSERT_EQ(window.lvZIPView->columnCount(), 6);
    ASSERT_EQ(window.lvZIPView->topLevelItemCount(), 6); // two entries and the four summary rows
    const QTreeWidgetItem* folder = window.lvZIPView->topLevelItem(0);
    const QTreeWidgetItem* file = window.lvZIPView->topLevelItem(1);
    EXPECT_EQ(folder->foreground(0).color(), QColor(0, 168, 168));
    EXPECT_EQ(file->text(0), QStringLiteral("[01]docs/a.txt"));
    EXPECT_EQ(file->text(3), QStringLiteral("75.00%"));
    EXPECT_EQ(file->toolTip(4), file->text(0));
    EXPECT_EQ(window.lvZIPView->palette().color(QPalette::Base), QColor(255, 255, 245));
}

TEST_F(FrmFilePropertyTest, TabsShowTheirPanelsAndNameBoxesGetBalloons)
{
    frmFileProperty window(volumes, shell);
    window.GetInfor(makeFile(QStringLiteral("clip.swf"), 10));
    const struct
    {
        int tab;
        QWidget* shown;
    } cases[] = {{0, window.Pic_Normal}, {1, window.pic_Docket}, {2, window.pic_DriveProp}};
    for (const auto& c : cases) {
        window.TabStrip1->setCurrentIndex(c.tab);
        for (QWidget* panel : {window.Pic_Normal, window.pic_Docket,
                 static_cast<QWidget*>(window.Pic_EXE_Dll), static_cast<QWidget*>(window.pic_DriveProp)})
            EXPECT_EQ(panel->isVisibleTo(&window), panel == c.shown) << c.tab;
    }
    window.TabStrip1->setCurrentIndex(1);
    EXPECT_TRUE(window.txtDocket->isVisibleTo(&window));
    EXPECT_FALSE(window.lvZIPView->isVisibleTo(&window));
    for (const char* name :
        {"txtFullFileName", "txtFilePosition", "txtShortFileNameA", "txtShortFileNameB"}) {
        auto* box = window.findChild<QLineEdit*>(QString::fromLatin1(name));
        ASSERT_TRUE(box) << name;
        const auto* tip = chrome::ToolTips::of(box);
        ASSERT_TRUE(tip) << name;
        EXPECT_EQ(tip->text(), box->text()) << name;
    }
}

} // namespace
