#include "ComputerInfo.h"

namespace vindaro::sysinfo {

namespace {

const QString kCrLf = QStringLiteral("\r\n");

// The same comma groups as every other figure of the program ("##,#0").
QString groupDigits(quint64 value)
{
    QString digits = QString::number(value);
    for (qsizetype at = digits.size() - 3; at > 0; at -= 3)
        digits.insert(at, QLatin1Char(','));
    return digits;
}

} // namespace

QString systemKeyFor(const QString& family)
{
    return family == u"9x" || family == u"9x/NT" ? k9xSystemKey : kNtSystemKey;
}

void GetComputerInfo(const FactRegistry& registry, ComputerInfo& computer, ProcessorInfo& processor)
{
    const QString family = GetWinVersion(registry);
    const QString systemKey = systemKeyFor(family);
    const bool ntLayout = systemKey == kNtSystemKey;
    const auto read = [&registry](const QString& key, const char* name) {
        return ReadRemoteReg(registry, RootKey::LocalMachine, key, QString::fromLatin1(name));
    };

    computer.productName = read(systemKey, "ProductName");
    if (computer.productName.isEmpty())
        computer.productName = kDefaultProductName;
    if (ntLayout) {
        computer.version = read(systemKey, "CurrentVersion");
        computer.build = read(systemKey, "CurrentBuildNumber");
    } else {
        computer.version = read(systemKey, "VersionNumber");
        computer.build.clear();
    }
    computer.servicePack = read(systemKey, "CSDVersion");
    computer.productId = read(systemKey, "ProductID");
    computer.productKey = read(systemKey, "ProductKey");
    computer.registeredOwner = read(systemKey, "RegisteredOwner");
    computer.registeredOrganization = read(systemKey, "RegisteredOrganization");
    computer.machineIdentifier = read(kSystemDescriptionKey, "Identifier");
    computer.systemBiosDate = read(kSystemDescriptionKey, "SystemBiosDate");
    computer.systemBiosVersion = read(kSystemDescriptionKey, "SystemBiosVersion");
    computer.videoBiosDate = read(kSystemDescriptionKey, "VideoBiosDate");
    computer.videoBiosVersion = read(kSystemDescriptionKey, "VideoBiosVersion");

    processor.name = read(kProcessorKey, "ProcessorNameString");
    processor.vendor = read(kProcessorKey, "VendorIdentifier");
    processor.identifier = read(kProcessorKey, "Identifier");
    const QString speed = read(kProcessorKey, "~Mhz");
    processor.speed
        = speed.isEmpty() ? QString() : QString::number(HexToNumber(speed)) + QStringLiteral("MHz");
}

QString GetMemoryText(int kind, const MemoryStatus& memory)
{
    switch (kind) {
    case 0:
        return QStringLiteral("TotalPhysMem:") + groupDigits(memory.totalPhysBytes / 1024)
            + QStringLiteral("K(") + groupDigits(memory.totalPhysBytes / 1048576 + 1) + QStringLiteral("M)");
    case 1:
        return QStringLiteral("TotalAvailMem:") + groupDigits(memory.availPhysBytes / 1024) + u'K';
    default:
        return {};
    }
}

QString computerInfoText(const ComputerInfo& computer)
{
    return computer.productName + kCrLf + computer.version + u'.' + computer.build + QStringLiteral("  ")
        + computer.servicePack + kCrLf + QStringLiteral("RegisteredOwner:") + computer.registeredOwner + kCrLf
        + QStringLiteral("RegisteredOrganization:") + computer.registeredOrganization + kCrLf
        + QStringLiteral("ProductID:") + computer.productId + kCrLf;
}

QString cpuInformationText(const ProcessorInfo& processor)
{
    return processor.name + kCrLf + processor.vendor + QStringLiteral("  ") + processor.speed + kCrLf
        + processor.identifier;
}

} // namespace vindaro::sysinfo
