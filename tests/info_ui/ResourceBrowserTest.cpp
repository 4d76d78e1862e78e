#include "ui/ResourceBrowser.h"
#include "ResourceBrowserModel.h"
#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "info/InfoSamples.h"
#include "info_pe/PeBuilder.h"
#include "info_resources/ResourceBuilder.h"
#include "resources/ResourceTexts.h"
#include "ui/DialogMockup.h"
#include "ui/frmFileProperty.h"

#include <QFile>
#include <QImageReader>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <gtest/gtest.h>

using namespace vindaro;
using info::ui::frmFileProperty;
using info::ui::ResourceBrowser;
using vindaro::testing::PeBuilder;

namespace {

class ResourceBrowserTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        const QByteArray icon = iconDib(16, 0xFFFF0000);
        PeBuilder pe;
        pe.add(3, 1, 0x0409, icon);
        pe.add(3, 2, 0x0409, QByteArray("not an icon"));
        pe.add(14, 1, 0x0409, iconGroup({{16, icon.size(), 1}}));
        pe.add(6, 1, 0x0409, stringTable({{1, QStringLiteral("One")}, {3, QStringLiteral("Three")}}));
        pe.add(6, 2, 0x0409, stringTable({{0, QStringLiteral("Sixteen")}}));
        pe.add(5, 100, 0x0409, dialogTemplate(false));
        pe.add(10, 5, 0x0409, QByteArray("0123456789ABCDEFG"));
        pe.add(
            16, 1, 0x0804, PeBuilder::versionResource({{"CompanyName", "Vindaro"}, {"FileVersion", "2.0"}}));
        pe.add("AVI", "INTRO", 0x0409, QByteArray("RIFF\x10\0\0\0AVI LIST", 16));
        modulePath = dir.filePath(QStringLiteral("lib.dll"));
        ASSERT_TRUE(vindaro::testing::writeFile(modulePath, pe.build()));
        window = std::make_unique<frmFileProperty>(volumes, shell);
        window->GetInfor(modulePath);
        browser = window->Pic_EXE_Dll;
        browser->showError
            = [this](const QString& title, const QString& text) { errors << title + ": " + text; };
    }

    QTreeWidgetItem* typeNode(const QString& text) const
    {
        QTreeWidgetItem* root = browser->rootNode();
        for (int i = 0; root && i < root->childCount(); ++i)
            if (root->child(i)->text(0) == text)
                return root->child(i);
        return nullptr;
    }

    QTreeWidgetItem* resourceNode(const QString& typeText, const QString& name)
    {
        QTreeWidgetItem* type = typeNode(typeText);
        if (!type)
            return nullptr;
        type->setExpanded(true);
        for (int i = 0; i < type->childCount(); ++i)
            if (type->child(i)->text(0) == name)
                return type->child(i);
        return nullptr;
    }

    QTemporaryDir dir;
    vindaro::testing::FakeVolumes volumes;
    vindaro::testing::FakeShell shell;
    QString modulePath;
    std::unique_ptr<frmFileProperty> window;
    ResourceBrowser* browser = nullptr;
    QStringList errors;
};

TEST_F(ResourceBrowserTest, IconGroupNodeIsDummyUntilExpandedThenPreviewsTheIcon)
{
    if (!QImageReader::supportedImageFormats().contains("ico"))
        GTEST_SKIP() << "Qt's ico image reader is not installed";
    QTreeWidgetItem* root = browser->rootNode();
    ASSERT_TRUE(root);
    EXPECT_EQ(root->text(0), QStringLiteral("lib.dll"));
    EXPECT_TRUE(root->isExpanded());
    QTreeWidgetItem* group = typeNode(QStringLiteral("Hardware-independent icon resource"));
    ASSERT_TRUE(group);
    ASSERT_EQ(group->childCount(), 1);
    EXPECT_EQ(group->child(0)->text(0), QStringLiteral("Dummy"));

    QTreeWidgetItem* icon
        = resourceNode(QStringLiteral("Hardware-independent icon resource"), QStringLiteral("1"));
    ASSERT_TRUE(icon);
    EXPECT_EQ(group->childCount(), 1);
    browser->TreeView1->setCurrentItem(icon);
    EXPECT_TRUE(browser->text().contains(QStringLiteral("\r\nResourseName: #1\r\n")));
    EXPECT_TRUE(browser->PicInfor->isVisibleTo(browser));
    EXPECT_FALSE(browser->Text1->isVisibleTo(browser));
    EXPECT_EQ(browser->PicInfor->picture().size(), QSize(16, 16));
    const QStringList lines = browser->PicInfor->lines();
    EXPECT_TRUE(lines.contains(QStringLiteral("ImageType: Icon/cursor (*.ico/*.cur)")))
        << lines.join('|').toStdString();
    EXPECT_TRUE(lines.contains(QStringLiteral("ImageSize[Width*Height]: 16×16 pixels")));
    EXPECT_TRUE(lines.contains(QStringLiteral("ResourceName: #1")));
}

TEST_F(ResourceBrowserTest, RawDataShowsItsHeaderAndDumpAndABrokenIconSaysSo)
{
    const QByteArray raw("0123456789ABCDEFG");
    browser->chooseNode(
        resourceNode(QStringLiteral("Application-defined resource (raw data)"), QStringLiteral("5")));
    EXPECT_EQ(browser->text(),
        info::resourceHeaderText(
            QStringLiteral("Application-defined resource (raw data)"), QStringLiteral("#5"), raw.size())
            + info::resources::hexDump(raw));
    browser->chooseNode(
        resourceNode(QStringLiteral("Hardware-dependent icon resource"), QStringLiteral("2")));
    EXPECT_EQ(browser->PicInfor->lines().constLast(), QLatin1String(info::kLoadError));
}

TEST_F(ResourceBrowserTest, TypeSixExportsEveryStringTableAndOtherTypesNeedAName)
{
    const QString target = dir.filePath(QStringLiteral("all.TXT"));
    QString askedFilter;
    browser->askSaveName = [&](const QString& title, const QString& filter) {
        EXPECT_EQ(title, QStringLiteral("保存"));
        askedFilter = filter;
        return target;
    };
    browser->chooseNode(typeNode(QStringLiteral("String-table entry")));
    EXPECT_EQ(browser->text(), QStringLiteral("ResourceType: String-table entry"));
    browser->cmdSave_Click();
    EXPECT_EQ(askedFilter, QStringLiteral("Save as text (*.txt)"));
    QFile file(target);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    EXPECT_TRUE(text.contains(QStringLiteral("1: One\r\n"))) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("3: Three\r\n")));
    EXPECT_TRUE(text.contains(QStringLiteral("16: Sixteen\r\n")));
    EXPECT_TRUE(errors.isEmpty());

    browser->chooseNode(typeNode(QStringLiteral("Application-defined resource (raw data)")));
    browser->cmdSave_Click();
    EXPECT_EQ(errors, QStringList{QStringLiteral("Error!: No resource selected!")});
}

TEST_F(ResourceBrowserTest, VersionResourceShowsTheModulesStringsInKeyOrder)
{
    browser->chooseNode(resourceNode(QStringLiteral("Version resource"), QStringLiteral("1")));
    EXPECT_TRUE(browser->Text1->isVisibleTo(browser));
    EXPECT_TRUE(browser->text().endsWith(QString(77, QLatin1Char('-'))
        + QStringLiteral("\r\nFileVersion:\r\n\t2.0\r\nCompanyName:\r\n\tVindaro")))
        << browser->text().toStdString();
}

TEST_F(ResourceBrowserTest, ExportWritesByTheChosenEnding)
{
    if (!QImageReader::supportedImageFormats().contains("ico"))
        GTEST_SKIP() << "Qt's ico image reader is not installed";
    const struct
    {
        const char* type;
        const char* name;
        const char* file;
        QByteArray head; // the written file begins so; empty: nothing is written
    } cases[] = {
        {"Hardware-independent icon resource", "1", "a.ico", QByteArray("\0\0\1\0", 4)},
        {"Hardware-independent icon resource", "1", "a.bmp", QByteArray("BM")},
        {"Hardware-independent icon resource", "1", "a.png", {}},
        {"Application-defined resource (raw data)", "5", "raw.bin", QByteArray("0123456789ABCDEFG")},
        {"Version resource", "1", "version.doc", {}},
    };
    for (const auto& c : cases) {
        const QString target = dir.filePath(QString::fromLatin1(c.file));
        browser->askSaveName = [&](const QString&, const QString&) { return target; };
        browser->chooseNode(resourceNode(QString::fromLatin1(c.type), QString::fromLatin1(c.name)));
        browser->cmdSave_Click();
        QFile file(target);
        EXPECT_EQ(file.exists(), !c.head.isEmpty()) << c.file;
        if (file.open(QIODevice::ReadOnly)) {
            EXPECT_TRUE(file.readAll().startsWith(c.head)) << c.file;
        }
    }
    EXPECT_FALSE(QImage(dir.filePath(QStringLiteral("a.ico"))).isNull());
    EXPECT_EQ(QImage(dir.filePath(QStringLiteral("a.bmp"))).size(), QSize(16, 16));
    EXPECT_TRUE(errors.isEmpty());
}

TEST_F(ResourceBrowserTest, DialogIsDrawnAsAMockUpAtItsDialogUnits)
{
    browser->chooseNode(resourceNode(QStringLiteral("Dialog box"), QStringLiteral("100")));
    auto* mockup = browser->PicInfor->findChild<info::ui::DialogMockup*>();
    ASSERT_TRUE(mockup);
    EXPECT_EQ(mockup->pos(), QPoint(0, 0));
    auto* ok = mockup->findChild<QPushButton*>();
    ASSERT_TRUE(ok);
    EXPECT_EQ(ok->text(), QStringLiteral("OK"));
    EXPECT_EQ(ok->geometry(),
        QRect(mockup->toPixelsX(140), mockup->toPixelsY(80), mockup->toPixelsX(50), mockup->toPixelsY(14)));
    EXPECT_GE(mockup->width(), mockup->toPixelsX(200));

    browser->chooseNode(browser->rootNode()); // choosing another node destroys it
    EXPECT_FALSE(browser->PicInfor->findChild<info::ui::DialogMockup*>());
}

TEST_F(ResourceBrowserTest, ClosingTheWindowWhileAVideoPlaysDeletesItsFile)
{
    browser->chooseNode(resourceNode(QStringLiteral("AVI"), QStringLiteral("INTRO")));
    const QString temp = info::ResourceBrowserModel::videoTempPath();
    EXPECT_TRUE(browser->videoPlaying());
    EXPECT_TRUE(QFile::exists(temp));
    window->reject();
    EXPECT_FALSE(browser->videoPlaying());
    EXPECT_FALSE(QFile::exists(temp));
}

TEST_F(ResourceBrowserTest, OpenAnotherModuleShowsItsFullPath)
{
    const QString other = dir.filePath(QStringLiteral("other.exe"));
    ASSERT_TRUE(
        vindaro::testing::writeFile(other, PeBuilder().add(4, 1, 0x0409, QByteArray(16, '\0')).build()));
    browser->askOpenName = [&](const QString& title, const QString&) {
        EXPECT_EQ(title, QStringLiteral("打开"));
        return other;
    };
    browser->cmdOpen_Click();
    ASSERT_TRUE(browser->rootNode());
    EXPECT_EQ(browser->rootNode()->text(0), other);
    EXPECT_EQ(browser->txtShortFileNameB->text(), QStringLiteral("other.exe"));
    ASSERT_EQ(browser->rootNode()->childCount(), 1);
    EXPECT_EQ(browser->rootNode()->child(0)->text(0), QStringLiteral("Menu resource"));
}

} // namespace
