// "Open with" on a real session bus: a private dbus-daemon, with or without a stand-in portal on it, or no
// bus at all. The portal is asked first; the program's own chooser comes only when no portal answers.
//
// Qt keeps the process's first session bus connection for the life of the process, so each case needs a
// process of its own, as ctest runs them; run together, the cases after the first skip themselves.
#include "PlatformTestSupport.h"
#include "platform/linux/ui/LinuxShell.h"
#include "platform/linux/ui/OpenWithDialog.h"

#include <QDir>
#include <QListWidget>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <utility>

using vindaro::platform::LinuxShell;
using vindaro::platform::OpenWithDialog;
using namespace vindaro::testing;
using namespace Qt::StringLiterals;

namespace {

// Whether a case of this process has reached for the session bus already.
bool claimSessionBus()
{
    static bool claimed = false;
    return !std::exchange(claimed, true);
}

enum class Bus
{
    None,
    WithoutPortal,
    PortalRefuses,
    PortalAnswers
};

void PrintTo(Bus bus, std::ostream* out)
{
    const char* const names[] = {"None", "WithoutPortal", "PortalRefuses", "PortalAnswers"};
    *out << names[int(bus)];
}

class OpenWith : public ::testing::TestWithParam<Bus>
{
protected:
    void SetUp() override
    {
        if (!claimSessionBus())
            GTEST_SKIP() << "the session bus is taken in this process: run each case on its own";
        ASSERT_TRUE(m_dir.isValid());
        QFile file(m_file);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        if (GetParam() == Bus::None)
            return m_bus.pointNowhere();
        if (const QString why = m_bus.start(); !why.isEmpty())
            GTEST_SKIP() << why.toStdString();
        if (GetParam() != Bus::WithoutPortal) {
            QStringList arguments{u"--log"_s, m_log};
            if (GetParam() == Bus::PortalRefuses)
                arguments << u"--fail"_s;
            ASSERT_TRUE(startService(m_portal, QStringLiteral(PORTAL_STANDIN), arguments))
                << m_portal.readAllStandardError().toStdString();
        }
    }
    void TearDown() override { stopProcess(m_portal); }

    QStringList portalCalls() const
    {
        QFile file(m_log);
        return file.open(QIODevice::ReadOnly)
            ? QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)
            : QStringList();
    }

    QTemporaryDir m_dir;
    PrivateBus m_bus{m_dir.path(), false};
    QProcess m_portal;
    const QString m_file = m_dir.filePath(u"AVSEQ01.DAT"_s);
    const QString m_log = m_dir.filePath(u"portal.log"_s);
};

TEST_P(OpenWith, TheProgramsChooserComesOnlyWhenNoPortalAnswers)
{
    LinuxShell shell;
    QStringList offered;
    shell.setOpenWithChooser([&offered](const QString& path) {
        offered << path;
        return true;
    });
    EXPECT_TRUE(shell.openWith(m_file));

    const bool portalAnswers = GetParam() == Bus::PortalAnswers;
    EXPECT_EQ(offered, portalAnswers ? QStringList{} : QStringList{m_file});
    const bool portalRuns = portalAnswers || GetParam() == Bus::PortalRefuses;
    EXPECT_EQ(portalCalls(),
        portalRuns ? QStringList{u"OpenFile %1 ask=true"_s.arg(QFileInfo(m_file).canonicalFilePath())}
                   : QStringList{});
}

INSTANTIATE_TEST_SUITE_P(Buses, OpenWith,
    ::testing::Values(Bus::None, Bus::WithoutPortal, Bus::PortalRefuses, Bus::PortalAnswers));

// Without a chooser set, the shell brings up the program's own dialog over the desktop's applications.
TEST(OpenWithDefault, ShowsTheProgramsDialogOverTheInstalledApplications)
{
    if (!claimSessionBus())
        GTEST_SKIP() << "the session bus is taken in this process: run each case on its own";
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString data = dir.filePath(u"share"_s);
    QDir().mkpath(data + u"/applications"_s);
    QFile entry(data + u"/applications/player.desktop"_s);
    ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
    entry.write("[Desktop Entry]\nType=Application\nName=Player\nName[zh_CN]=播放器\nExec=player %f\n"
                "MimeType=video/mpeg;\n");
    entry.close();
    const QByteArray oldDirs = qgetenv("XDG_DATA_DIRS");
    qputenv("XDG_DATA_DIRS", QFile::encodeName(data));
    PrivateBus bus(dir.path(), false);
    bus.pointNowhere();

    QStringList names;
    onNextModal<OpenWithDialog>([&names](OpenWithDialog* dialog) {
        ASSERT_NE(dialog, nullptr);
        const auto* list = dialog->findChild<QListWidget*>(u"lstApplications"_s);
        for (int row = 0; row < list->count(); ++row)
            names << list->item(row)->text();
        dialog->reject();
    });
    LinuxShell shell;
    const bool started = shell.openWith(dir.filePath(u"clip.mpg"_s));
    qputenv("XDG_DATA_DIRS", oldDirs);
    EXPECT_FALSE(started);
    EXPECT_EQ(names, QStringList{u"播放器"_s});
}

} // namespace
