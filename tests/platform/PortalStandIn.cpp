// A stand-in for the desktop portal's OpenURI service on the session bus named by DBUS_SESSION_BUS_ADDRESS.
// OpenFile writes "OpenFile <the file the descriptor names> ask=<true|false>" to the log, then answers with
// a request handle as the portal does, or with an error under --fail. Prints "ready" once the name is taken.
//
//   portal_standin --log FILE [--fail]
#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QVariantMap>

#include <cstdio>

namespace {

class StandIn final : public QDBusVirtualObject
{
public:
    explicit StandIn(const QStringList& arguments)
        : m_logPath(arguments.value(arguments.indexOf(QStringLiteral("--log")) + 1))
        , m_fail(arguments.contains(QStringLiteral("--fail")))
    {
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        QDBusMessage answer;
        if (message.interface() == QLatin1String("org.freedesktop.portal.OpenURI")
            && message.member() == QLatin1String("OpenFile")) {
            const auto fd = qvariant_cast<QDBusUnixFileDescriptor>(message.arguments().value(1));
            const QVariantMap options = qdbus_cast<QVariantMap>(message.arguments().value(2));
            const QString file
                = QFileInfo(QStringLiteral("/proc/self/fd/%1").arg(fd.fileDescriptor())).symLinkTarget();
            log(QStringLiteral("OpenFile %1 ask=%2")
                    .arg(file,
                        options.value(QStringLiteral("ask")).toBool() ? QStringLiteral("true")
                                                                      : QStringLiteral("false")));
            answer = m_fail
                ? message.createErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotAllowed"),
                    QStringLiteral("stand-in refuses"))
                : message.createReply(QVariant::fromValue(
                    QDBusObjectPath(QStringLiteral("/org/freedesktop/portal/desktop/request/1/t"))));
        } else {
            answer = message.createErrorReply(
                QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"), message.member());
        }
        QDBusConnection(connection).send(answer);
        return true;
    }

private:
    void log(const QString& line) const
    {
        QFile file(m_logPath);
        if (file.open(QIODevice::Append | QIODevice::Text))
            file.write(line.toUtf8() + '\n'); // closed, so on disk, before the answer leaves
    }

    QString m_logPath;
    bool m_fail;
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QDBusConnection bus = QDBusConnection::sessionBus();
    StandIn standIn(QCoreApplication::arguments());
    if (!bus.registerVirtualObject(QStringLiteral("/org/freedesktop/portal/desktop"), &standIn)
        || !bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"))) {
        std::fprintf(
            stderr, "portal_standin: cannot serve on the bus: %s\n", qPrintable(bus.lastError().message()));
        return 1;
    }
    std::printf("ready\n");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
