#pragma once
// Helpers of the tests on desktop services: a private D-Bus daemon, the stand-in services run on it, and
// the modal boxes and dialogs a test answers.

#include <QApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>

#include <functional>

namespace vindaro::testing {

// The first non-empty line the process prints within 10 s; empty when none.
inline QByteArray firstLine(QProcess& process)
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

inline void stopProcess(QProcess& process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.kill();
    process.waitForFinished(10000);
}

// Starts a stand-in service and waits for the "ready" it prints once its name is taken.
inline bool startService(QProcess& process, const QString& program, const QStringList& arguments)
{
    process.start(program, arguments);
    return firstLine(process) == "ready";
}

// A dbus-daemon of the test's own in `folder`, standing in for the session or the system bus: its address
// variable names the private bus while this lives. Anyone may own any name; no service starts on demand.
class PrivateBus
{
public:
    PrivateBus(const QString& folder, bool system)
        : m_folder(folder)
        , m_variable(system ? "DBUS_SYSTEM_BUS_ADDRESS" : "DBUS_SESSION_BUS_ADDRESS")
        , m_type(system ? "system" : "session")
        , m_old(qgetenv(m_variable))
        , m_had(qEnvironmentVariableIsSet(m_variable))
    {
    }
    ~PrivateBus()
    {
        stopProcess(m_daemon);
        if (m_had)
            qputenv(m_variable, m_old);
        else
            qunsetenv(m_variable);
    }

    // Starts the daemon; empty when it runs, else why it does not (the caller skips).
    QString start()
    {
        const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        if (daemon.isEmpty())
            return QStringLiteral("dbus-daemon is not installed");
        QFile config(m_folder + QStringLiteral("/bus.conf"));
        if (!config.open(QIODevice::WriteOnly))
            return QStringLiteral("cannot write the bus configuration");
        config.write("<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
                     "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n<busconfig><type>"
            + m_type + "</type><listen>unix:dir=" + QFile::encodeName(m_folder)
            + "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\"/>"
              "<allow own=\"*\"/><allow receive_sender=\"*\"/></policy></busconfig>\n");
        config.close();
        m_daemon.start(daemon,
            {QStringLiteral("--config-file=") + config.fileName(), QStringLiteral("--nofork"),
                QStringLiteral("--print-address=1")});
        const QByteArray address = firstLine(m_daemon);
        if (address.isEmpty())
            return QStringLiteral("dbus-daemon did not start: ")
                + QString::fromLocal8Bit(m_daemon.readAllStandardError());
        qputenv(m_variable, address);
        return {};
    }
    // No bus at all: the variable names a socket nobody listens on.
    void pointNowhere()
    {
        qputenv(m_variable, "unix:path=" + QFile::encodeName(m_folder + QStringLiteral("/no-bus")));
    }

private:
    QString m_folder;
    const char* m_variable;
    QByteArray m_type;
    QByteArray m_old;
    bool m_had;
    QProcess m_daemon;
};

// Once the event loop runs (inside the exec() of a modal box or dialog), hands the active modal widget, as
// T, to `answer`, which must close it; a null pointer when it is no T.
template<typename T> void onNextModal(std::function<void(T*)> answer)
{
    QTimer::singleShot(0, [answer] { answer(qobject_cast<T*>(QApplication::activeModalWidget())); });
}

} // namespace vindaro::testing
