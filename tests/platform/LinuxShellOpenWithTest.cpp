// "Open with" on a real session bus: a private dbus-daemon, with or without a stand-in portal on it, or no
// bus at all. The portal is asked first; the program's own chooser comes only when no portal answers.
//
// Qt keeps the process's first session bus connection for the life of the process, so each case needs a
// process of its own, as ctest runs them; run together, the cases after the first skip themselves.
#include "platform/linux/ui/LinuxShell.h"
#include "platform/linux/ui/OpenWithDialog.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QListWidget>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <ostream>
#include <utility>

using vindaro::platform::LinuxShell;
using vindaro::platform::OpenWithDialog;

namespace {

// Whether a case of this process has reached for the session bus already.
bool claimSessionBus()
{
    static bool claimed = false;
    return !std::exchange(claimed, true);
}

// The first non-empty line the process prints within 10 s; empty when none.
QByteArray firstLine(QProcess& process)
{
    const QDeadlineTimer deadline(10000);
    for (;;) {
        while (process.canReadLine()) {
            const QByteArray line = process.readLine().trimmed();
            if (!line.isEmpty())
                return line;
        }
        if (deadline.hasExpired()
            || !process.waitForReadyRead(static_cast<int>(qMax<qint64>(1, deadline.remainingTime()))))
            return {};
    }
}

void stop(QProcess& process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.kill();
    process.waitForFinished(10000);
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
    const char* names[] = {"None", "WithoutPortal", "PortalRefuses", "PortalAnswers"};
    *out << names[static_cast<int>(bus)];
}

class OpenWith : public ::testing::TestWithParam<Bus>
{
protected:
    void SetUp() override
    {
        if (!claimSessionBus())
            GTEST_SKIP() << "the session bus is taken in this process: run each case on its own";
        ASSERT_TRUE(m_dir.isValid());
        m_oldAddress = qgetenv("DBUS_SESSION_BUS_ADDRESS");
        m_hadAddress = qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS");
        m_file = m_dir.filePath(QStringLiteral("AVSEQ01.DAT"));
        QFile file(m_file);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        m_log = m_dir.filePath(QStringLiteral("portal.log"));
        if (GetParam() == Bus::None) {
            qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + QFile::encodeName(m_dir.filePath("no-bus")));
            return;
        }
        startBus();
        if (GetParam() != Bus::WithoutPortal) {
            QStringList arguments{QStringLiteral("--log"), m_log};
            if (GetParam() == Bus::PortalRefuses)
                arguments << QStringLiteral("--fail");
            m_portal.start(QStringLiteral(PORTAL_STANDIN), arguments);
            ASSERT_EQ(firstLine(m_portal), "ready") << m_portal.readAllStandardError().toStdString();
        }
    }

    void TearDown() override
    {
        stop(m_portal);
        stop(m_bus);
        if (m_hadAddress)
            qputenv("DBUS_SESSION_BUS_ADDRESS", m_oldAddress);
        else
            qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    }

    void startBus()
    {
        const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        if (daemon.isEmpty())
            GTEST_SKIP() << "dbus-daemon is not installed";
        // A bus of our own: anyone may own any name, and no service is started on demand.
        QFile config(m_dir.filePath(QStringLiteral("bus.conf")));
        ASSERT_TRUE(config.open(QIODevice::WriteOnly));
        config.write("<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
                     "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
                     "<busconfig><type>session</type><listen>unix:dir="
            + QFile::encodeName(m_dir.path())
            + "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\"/>"
              "<allow own=\"*\"/><allow receive_sender=\"*\"/></policy></busconfig>\n");
        config.close();
        m_bus.start(daemon,
            {QStringLiteral("--config-file=") + config.fileName(), QStringLiteral("--nofork"),
                QStringLiteral("--print-address=1")});
        const QByteArray address = firstLine(m_bus);
        if (address.isEmpty())
            GTEST_SKIP() << "dbus-daemon did not start: " << m_bus.readAllStandardError().toStdString();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    }

    QStringList portalCalls() const
    {
        QFile file(m_log);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    QTemporaryDir m_dir;
    QProcess m_bus;
    QProcess m_portal;
    QString m_file;
    QString m_log;
    QByteArray m_oldAddress;
    bool m_hadAddress = false;
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
    const QStringList expectedCalls{
        QStringLiteral("OpenFile %1 ask=true").arg(QFileInfo(m_file).canonicalFilePath())};
    const bool portalRuns = GetParam() == Bus::PortalAnswers || GetParam() == Bus::PortalRefuses;
    EXPECT_EQ(portalCalls(), portalRuns ? expectedCalls : QStringList{});
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
    const QString data = dir.filePath(QStringLiteral("share"));
    QDir().mkpath(data + QStringLiteral("/applications"));
    QFile entry(data + QStringLiteral("/applications/player.desktop"));
    ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
    entry.write("[Desktop Entry]\nType=Application\nName=Player\nName[zh_CN]=播放器\nExec=player %f\n"
                "MimeType=video/mpeg;\n");
    entry.close();
    const QByteArray oldDirs = qgetenv("XDG_DATA_DIRS");
    const QByteArray oldAddress = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_DATA_DIRS", QFile::encodeName(data));
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + QFile::encodeName(dir.filePath("no-bus")));

    QString title;
    QStringList names;
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<OpenWithDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        title = dialog->windowTitle();
        const auto* list = dialog->findChild<QListWidget*>(QStringLiteral("lstApplications"));
        for (int row = 0; row < list->count(); ++row)
            names << list->item(row)->text();
        dialog->reject();
    });
    LinuxShell shell;
    const bool started = shell.openWith(dir.filePath(QStringLiteral("clip.mpg")));
    qputenv("XDG_DATA_DIRS", oldDirs);
    qputenv("DBUS_SESSION_BUS_ADDRESS", oldAddress);

    EXPECT_FALSE(started);
    EXPECT_EQ(title, QStringLiteral("打开方式"));
    EXPECT_EQ(names, QStringList{QStringLiteral("播放器")});
}

} // namespace
