// A stand-in for the UDisks2 service: one optical drive with one block device, on the system bus named by
// DBUS_SYSTEM_BUS_ADDRESS. It answers the calls an eject needs the way udisksd does, writes every action
// call to the log file before answering it, and prints "ready" once the service name is taken.
//
//   udisks2_standin --device /dev/NAME --log FILE [--mounted] [--no-filesystem]
//                   [--unmount-busy] [--unmount-stalls] [--eject-fails]
#include <QByteArrayList>
#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QFile>
#include <QStringList>
#include <QVariantMap>

#include <cstdio>

namespace {

const QString kBlockPath = QStringLiteral("/org/freedesktop/UDisks2/block_devices/standin0");
const QString kDrivePath = QStringLiteral("/org/freedesktop/UDisks2/drives/StandIn_DVD_RW");
const QString kManagerPath = QStringLiteral("/org/freedesktop/UDisks2/Manager");
const QString kInvalidArgs = QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs");

class StandIn final : public QDBusVirtualObject
{
public:
    explicit StandIn(const QStringList& arguments)
        : m_device(arguments.value(arguments.indexOf(QStringLiteral("--device")) + 1))
        , m_logPath(arguments.value(arguments.indexOf(QStringLiteral("--log")) + 1))
        , m_mounted(arguments.contains(QStringLiteral("--mounted")))
        , m_hasFilesystem(!arguments.contains(QStringLiteral("--no-filesystem")))
        , m_unmountBusy(arguments.contains(QStringLiteral("--unmount-busy")))
        , m_unmountStalls(arguments.contains(QStringLiteral("--unmount-stalls")))
        , m_ejectFails(arguments.contains(QStringLiteral("--eject-fails")))
    {
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        const QString call = message.interface() + QLatin1Char('.') + message.member();
        const QString path = message.path();
        if (path == kManagerPath && call == QLatin1String("org.freedesktop.UDisks2.Manager.ResolveDevice"))
            return reply(connection, message, resolve(message));
        if (call == QLatin1String("org.freedesktop.DBus.Properties.Get"))
            return reply(connection, message, property(message));
        if (path == kBlockPath && m_hasFilesystem
            && call == QLatin1String("org.freedesktop.UDisks2.Filesystem.Unmount")) {
            log(QStringLiteral("Unmount ") + path);
            if (m_unmountStalls)
                return true; // never answered: the caller's timeout must end its wait
            if (m_unmountBusy)
                return reply(connection, message,
                    message.createErrorReply(QStringLiteral("org.freedesktop.UDisks2.Error.DeviceBusy"),
                        QStringLiteral("Error unmounting %1: target is busy").arg(m_device)));
            m_mounted = false;
            return reply(connection, message, message.createReply());
        }
        if (path == kDrivePath && call == QLatin1String("org.freedesktop.UDisks2.Drive.Eject")) {
            log(QStringLiteral("Eject ") + path);
            if (m_ejectFails || m_mounted)
                return reply(connection, message,
                    message.createErrorReply(QStringLiteral("org.freedesktop.UDisks2.Error.Failed"),
                        QStringLiteral("Error ejecting %1: eject failed").arg(m_device)));
            return reply(connection, message, message.createReply());
        }
        return reply(connection, message,
            message.createErrorReply(QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"), call));
    }

private:
    static bool reply(const QDBusConnection& connection, const QDBusMessage&, const QDBusMessage& answer)
    {
        QDBusConnection(connection).send(answer);
        return true;
    }

    QDBusMessage resolve(const QDBusMessage& message) const
    {
        const QVariantMap devspec = qdbus_cast<QVariantMap>(message.arguments().value(0));
        QList<QDBusObjectPath> found;
        if (devspec.value(QStringLiteral("path")).toString() == m_device)
            found.append(QDBusObjectPath(kBlockPath));
        return message.createReply(QVariant::fromValue(found));
    }

    // Properties.Get(interface, name), answered as GDBus answers for a missing interface or property.
    QDBusMessage property(const QDBusMessage& message) const
    {
        const QString interface = message.arguments().value(0).toString();
        const QString name = message.arguments().value(1).toString();
        QVariant value;
        if (message.path() == kBlockPath && interface == QLatin1String("org.freedesktop.UDisks2.Block")) {
            if (name == QLatin1String("Drive"))
                value = QVariant::fromValue(QDBusObjectPath(kDrivePath));
            else if (name == QLatin1String("Device"))
                value = QVariant::fromValue(m_device.toUtf8() + '\0'); // NUL-terminated, as udisksd sends it
        } else if (message.path() == kBlockPath && m_hasFilesystem
            && interface == QLatin1String("org.freedesktop.UDisks2.Filesystem")
            && name == QLatin1String("MountPoints")) {
            QByteArrayList points;
            if (m_mounted)
                points.append(QByteArrayLiteral("/media/user/DISC") + '\0');
            value = QVariant::fromValue(points);
        }
        if (!value.isValid())
            return message.createErrorReply(kInvalidArgs,
                QStringLiteral("No such interface '%1' on object at path %2").arg(interface, message.path()));
        return message.createReply(QVariant::fromValue(QDBusVariant(value)));
    }

    void log(const QString& line) const
    {
        QFile file(m_logPath);
        if (file.open(QIODevice::Append | QIODevice::Text)) {
            file.write(line.toUtf8() + '\n');
            file.close(); // on disk before the answer leaves
        }
    }

    QString m_device;
    QString m_logPath;
    bool m_mounted;
    bool m_hasFilesystem;
    bool m_unmountBusy;
    bool m_unmountStalls;
    bool m_ejectFails;
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    qDBusRegisterMetaType<QByteArrayList>();
    qDBusRegisterMetaType<QList<QDBusObjectPath>>();
    QDBusConnection bus = QDBusConnection::systemBus();
    StandIn standIn(QCoreApplication::arguments());
    if (!bus.registerVirtualObject(
            QStringLiteral("/org/freedesktop/UDisks2"), &standIn, QDBusConnection::SubPath)
        || !bus.registerService(QStringLiteral("org.freedesktop.UDisks2"))) {
        std::fprintf(
            stderr, "udisks2_standin: cannot serve on the bus: %s\n", qPrintable(bus.lastError().message()));
        return 1;
    }
    std::printf("ready\n");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
