#include "LinuxFacts.h"

#include "sysinfo/OsVersionName.h"

#include <QFile>
#include <QSysInfo>

#include <cerrno>
#include <cmath>
#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <vector>

namespace vindaro::sysinfo {

namespace {

// Files under /proc and /sys report a size of 0 or 4096 whatever they hold: read until the end, but never
// more than a bound (a many-core /proc/cpuinfo is a few hundred kilobytes).
QString readText(const char* path, qint64 limit = 4 * 1024 * 1024)
{
    QFile file(QString::fromLatin1(path));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.read(limit));
}

// "key : value" lines of the first block (up to the first empty line) of /proc/cpuinfo.
QHash<QString, QString> firstProcessor(const QString& cpuInfo)
{
    QHash<QString, QString> fields;
    const QStringList lines = cpuInfo.split(u'\n');
    for (const QString& line : lines) {
        if (line.trimmed().isEmpty()) {
            if (fields.isEmpty())
                continue;
            break;
        }
        const qsizetype colon = line.indexOf(u':');
        if (colon <= 0)
            continue;
        const QString key = line.left(colon).trimmed();
        if (!fields.contains(key))
            fields.insert(key, line.mid(colon + 1).trimmed());
    }
    return fields;
}

QString firstOf(const QHash<QString, QString>& fields, std::initializer_list<const char*> keys)
{
    for (const char* key : keys) {
        const QString value = fields.value(QString::fromLatin1(key));
        if (!value.isEmpty())
            return value;
    }
    return {};
}

QString joinPresent(const QStringList& parts)
{
    QStringList present;
    for (const QString& part : parts) {
        if (!part.isEmpty())
            present << part;
    }
    return present.join(u' ');
}

std::optional<quint32> processorMegahertz(const QHash<QString, QString>& cpu, const QString& maxKiloHertz)
{
    bool ok = false;
    const double mhz = cpu.value(QStringLiteral("cpu MHz")).toDouble(&ok);
    if (ok && mhz >= 1 && mhz < 4.0e9)
        return static_cast<quint32>(std::lround(mhz));
    const qulonglong khz = maxKiloHertz.trimmed().toULongLong(&ok);
    if (ok && khz >= 1000 && khz / 1000 <= 0xFFFFFFFFULL)
        return static_cast<quint32>(khz / 1000);
    return std::nullopt;
}

struct Account
{
    QString login;
    QString fullName; // the password entry's comment up to its first comma
};

// The password entry of the user running the program, through getpwuid_r with a buffer that grows: a
// directory service can hand back long entries.
Account currentAccount()
{
    std::vector<char> buffer(4096);
    struct passwd entry;
    struct passwd* found = nullptr;
    while (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE
        && buffer.size() < 1024 * 1024)
        buffer.resize(buffer.size() * 2);
    if (!found)
        return {};
    Account account;
    account.login = QString::fromUtf8(found->pw_name ? found->pw_name : "");
    account.fullName
        = QString::fromUtf8(found->pw_gecos ? found->pw_gecos : "").section(u',', 0, 0).trimmed();
    return account;
}

} // namespace

LinuxFacts readLinuxFacts()
{
    LinuxFacts facts;
    facts.osRelease = readOsRelease();
    struct utsname uts;
    if (::uname(&uts) == 0) {
        facts.kernelName = QString::fromUtf8(uts.sysname);
        facts.kernelRelease = QString::fromUtf8(uts.release);
        facts.machine = QString::fromUtf8(uts.machine);
    }
    facts.cpuInfo = readText("/proc/cpuinfo");
    facts.cpuMaxKiloHertz = readText("/sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", 64).trimmed();
    facts.memInfo = readText("/proc/meminfo", 64 * 1024);
    facts.machineId = readText("/etc/machine-id", 256).trimmed();
    for (const char* name : {"bios_date", "bios_version", "bios_vendor", "sys_vendor", "product_name"}) {
        const QString text
            = readText(QByteArray("/sys/class/dmi/id/").append(name).constData(), 1024).trimmed();
        if (!text.isEmpty())
            facts.dmi.insert(QString::fromLatin1(name), text);
    }

    facts.fullName = currentAccount().fullName;
    return facts;
}

FactRegistry factRegistryFrom(const LinuxFacts& facts)
{
    FactRegistry registry;
    const auto set = [&registry](const QString& key, const char* name, const FactValue& value) {
        registry.setValue(RootKey::LocalMachine, key, QString::fromLatin1(name), value);
    };
    const auto setText = [&set](const QString& key, const char* name, const QString& text) {
        if (!text.isEmpty())
            set(key, name, FactValue::string(text));
    };

    const QHash<QString, QString> release = osReleaseValues(facts.osRelease);
    QString product = release.value(QStringLiteral("NAME"));
    if (product.isEmpty())
        product = release.value(QStringLiteral("PRETTY_NAME"));
    if (product.isEmpty())
        product = facts.kernelName;
    setText(kNtSystemKey, "ProductName", product);
    setText(kNtSystemKey, "CurrentVersion", release.value(QStringLiteral("VERSION_ID")));
    setText(kNtSystemKey, "CurrentBuildNumber", facts.kernelRelease);
    setText(kNtSystemKey, "ProductID", facts.machineId);
    setText(kNtSystemKey, "RegisteredOwner", facts.fullName);

    setText(kSystemDescriptionKey, "Identifier",
        joinPresent({facts.dmi.value(QStringLiteral("sys_vendor")),
            facts.dmi.value(QStringLiteral("product_name"))}));
    setText(kSystemDescriptionKey, "SystemBiosDate", facts.dmi.value(QStringLiteral("bios_date")));
    const QString biosVersion = facts.dmi.value(QStringLiteral("bios_version"));
    if (!biosVersion.isEmpty())
        set(kSystemDescriptionKey, "SystemBiosVersion",
            FactValue::multiString({biosVersion, facts.dmi.value(QStringLiteral("bios_vendor"))}));

    const QHash<QString, QString> cpu = firstProcessor(facts.cpuInfo);
    setText(
        kProcessorKey, "ProcessorNameString", firstOf(cpu, {"model name", "Processor", "cpu model", "cpu"}));
    setText(kProcessorKey, "VendorIdentifier", firstOf(cpu, {"vendor_id", "vendor"}));
    QStringList identifier;
    for (const auto& [label, key] :
        {std::pair{"Family", "cpu family"}, {"Model", "model"}, {"Stepping", "stepping"}}) {
        const QString value = cpu.value(QString::fromLatin1(key));
        if (!value.isEmpty())
            identifier << QString::fromLatin1(label) + u' ' + value;
    }
    if (!identifier.isEmpty())
        setText(kProcessorKey, "Identifier", joinPresent({facts.machine, identifier.join(u' ')}));
    if (const std::optional<quint32> mhz = processorMegahertz(cpu, facts.cpuMaxKiloHertz))
        set(kProcessorKey, "~Mhz", FactValue::numberValue(*mhz));
    return registry;
}

MemoryStatus memoryStatusFrom(const QString& memInfo)
{
    MemoryStatus status;
    bool haveAvailable = false;
    quint64 freeBytes = 0;
    const QStringList lines = memInfo.split(u'\n');
    for (const QString& line : lines) {
        const QStringList parts = line.simplified().split(u' ');
        if (parts.size() < 2)
            continue;
        bool ok = false;
        quint64 bytes = parts[1].toULongLong(&ok);
        if (!ok)
            continue;
        if (parts.size() >= 3 && parts[2] == u"kB")
            bytes *= 1024;
        if (parts[0] == u"MemTotal:")
            status.totalPhysBytes = bytes;
        else if (parts[0] == u"MemAvailable:") {
            status.availPhysBytes = bytes;
            haveAvailable = true;
        } else if (parts[0] == u"MemFree:")
            freeBytes = bytes;
    }
    if (!haveAvailable)
        status.availPhysBytes = freeBytes;
    return status;
}

QString GetMyComputerName()
{
    return QSysInfo::machineHostName();
}

QString GetMyUserName()
{
    const QString login = currentAccount().login;
    return login.isEmpty() ? qEnvironmentVariable("USER") : login;
}

} // namespace vindaro::sysinfo
