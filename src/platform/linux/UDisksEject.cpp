#include "UDisksEject.h"

#include <QByteArrayList>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QVariantMap>

#include <atomic>
#include <climits>

namespace vindaro::platform {

namespace {

const QString kService = QStringLiteral("org.freedesktop.UDisks2");
const QString kManagerPath = QStringLiteral("/org/freedesktop/UDisks2/Manager");
const QString kManager = QStringLiteral("org.freedesktop.UDisks2.Manager");
const QString kBlock = QStringLiteral("org.freedesktop.UDisks2.Block");
const QString kFilesystem = QStringLiteral("org.freedesktop.UDisks2.Filesystem");
const QString kDrive = QStringLiteral("org.freedesktop.UDisks2.Drive");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");

// The address libdbus uses for the system bus when the environment names none.
const QString kDefaultSystemBus = QStringLiteral("unix:path=/var/run/dbus/system_bus_socket");

// A private connection of its own for every request, closed afterwards. Connecting by address, read
// from the environment each time, keeps the request independent of any shared connection (and of a
// system bus that was restarted since).
class PrivateSystemBus
{
public:
    PrivateSystemBus()
        : m_name(QStringLiteral("vindaro-udisks-%1").arg(nextNumber()))
        , m_connection(QDBusConnection::connectToBus(
              qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS", kDefaultSystemBus), m_name))
    {
    }
    ~PrivateSystemBus() { QDBusConnection::disconnectFromBus(m_name); }
    PrivateSystemBus(const PrivateSystemBus&) = delete;
    PrivateSystemBus& operator=(const PrivateSystemBus&) = delete;

    QDBusConnection& connection() { return m_connection; }

private:
    static quint64 nextNumber()
    {
        static std::atomic<quint64> counter{0};
        return ++counter;
    }

    QString m_name;
    QDBusConnection m_connection;
};

// One request's calls to the service, all under one deadline.
class UDisksCalls
{
public:
    UDisksCalls(QDBusConnection& bus, int timeoutMs)
        : m_bus(bus)
        , m_deadline(timeoutMs)
    {
    }

    QDBusMessage call(
        const QString& path, const QString& interface, const QString& method, const QVariantList& arguments)
    {
        if (m_deadline.hasExpired())
            return QDBusMessage::createError(QDBusError::Timeout, QStringLiteral("no time left"));
        QDBusMessage message = QDBusMessage::createMethodCall(kService, path, interface, method);
        message.setArguments(arguments);
        const qint64 remainingMs = qBound(qint64(1), m_deadline.remainingTime(), qint64(INT_MAX));
        return m_bus.call(message, QDBus::Block, static_cast<int>(remainingMs));
    }

    // The property's value, or an invalid QVariant with `error` set.
    QVariant property(const QString& path, const QString& interface, const QString& name, QString& error)
    {
        const QDBusMessage reply = call(path, kProperties, QStringLiteral("Get"), {interface, name});
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
            error = reply.errorName();
            return {};
        }
        return reply.arguments().constFirst().value<QDBusVariant>().variant();
    }

private:
    QDBusConnection& m_bus;
    QDeadlineTimer m_deadline;
};

bool succeeded(const QDBusMessage& reply)
{
    return reply.type() == QDBusMessage::ReplyMessage;
}

// Containers arrive as a QDBusArgument still to be read; plain values arrive as themselves.
template<typename T> T fromBus(const QVariant& value)
{
    if (value.userType() == qMetaTypeId<QDBusArgument>())
        return qdbus_cast<T>(value.value<QDBusArgument>());
    return value.value<T>();
}

// The answers of a D-Bus service (GDBus or QtDBus) for an object that has no such interface or property.
bool isNoSuchInterface(const QString& errorName)
{
    return errorName == QLatin1String("org.freedesktop.DBus.Error.InvalidArgs")
        || errorName == QLatin1String("org.freedesktop.DBus.Error.UnknownInterface")
        || errorName == QLatin1String("org.freedesktop.DBus.Error.UnknownProperty");
}

} // namespace

UDisksEjectResult ejectThroughUDisks(const QString& device, int timeoutMs)
{
    if (device.isEmpty())
        return UDisksEjectResult::NotHandled;
    static const bool typesKnown = [] {
        qDBusRegisterMetaType<QByteArrayList>();
        qDBusRegisterMetaType<QList<QDBusObjectPath>>();
        return true;
    }();
    Q_UNUSED(typesKnown);

    PrivateSystemBus bus;
    if (!bus.connection().isConnected())
        return UDisksEjectResult::NotHandled;
    UDisksCalls calls(bus.connection(), timeoutMs);

    // ResolveDevice follows links such as /dev/cdrom. It came with UDisks 2.7.3; an older service
    // answers UnknownMethod and the ioctl is tried instead.
    const QVariantMap devspec{{QStringLiteral("path"), device}};
    const QDBusMessage resolved
        = calls.call(kManagerPath, kManager, QStringLiteral("ResolveDevice"), {devspec, QVariantMap()});
    if (!succeeded(resolved) || resolved.arguments().isEmpty())
        return UDisksEjectResult::NotHandled;
    const auto blocks = fromBus<QList<QDBusObjectPath>>(resolved.arguments().constFirst());
    if (blocks.isEmpty())
        return UDisksEjectResult::NotHandled;
    const QString block = blocks.constFirst().path();

    // A blank or audio disc has no file system interface at all: nothing to unmount.
    QString error;
    const QVariant mountPoints = calls.property(block, kFilesystem, QStringLiteral("MountPoints"), error);
    if (!mountPoints.isValid() && !isNoSuchInterface(error))
        return UDisksEjectResult::NotHandled;
    if (!fromBus<QByteArrayList>(mountPoints).isEmpty()) {
        // Options a{sv}, none given: a plain unmount that a busy file system refuses.
        const QDBusMessage unmounted
            = calls.call(block, kFilesystem, QStringLiteral("Unmount"), {QVariantMap()});
        if (!succeeded(unmounted))
            return UDisksEjectResult::StillMounted;
    }

    const auto drive
        = fromBus<QDBusObjectPath>(calls.property(block, kBlock, QStringLiteral("Drive"), error));
    if (drive.path().isEmpty() || drive.path() == QLatin1String("/"))
        return UDisksEjectResult::NotHandled;
    const QDBusMessage ejected = calls.call(drive.path(), kDrive, QStringLiteral("Eject"), {QVariantMap()});
    return succeeded(ejected) ? UDisksEjectResult::Ejected : UDisksEjectResult::NotHandled;
}

} // namespace vindaro::platform
