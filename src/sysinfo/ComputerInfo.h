#pragma once

#include "sysinfo/FactRegistry.h"

#include <QString>

// The facts of the about window's page and how they read as text.
namespace vindaro::sysinfo {

// Every field is text, empty when the value is missing.
struct ComputerInfo
{
    QString productName; // "Microsoft Windows NT" when the system gives none
    QString version;
    QString build; // NT layout only
    QString servicePack;
    QString productId;
    QString productKey;
    QString registeredOwner;
    QString registeredOrganization;
    QString machineIdentifier;
    QString systemBiosDate;
    QString systemBiosVersion;
    QString videoBiosDate;
    QString videoBiosVersion;
};

struct ProcessorInfo
{
    QString name;
    QString vendor;
    QString identifier;
    QString speed; // "1800MHz"
};

inline const QString kDefaultProductName = QStringLiteral("Microsoft Windows NT");

// The key that holds the system's facts for a family: the 9x key for "9x" and "9x/NT", the NT key
// otherwise. A family code the table does not know (every system newer than it, and this one, whose
// facts are filled in the NT layout) reads the NT key, where such systems keep their facts.
QString systemKeyFor(const QString& family);

// Fills both records from the registry, in the order the values are read: product name, version (and
// build in the NT layout), service pack, product identifier and key, owner, organisation, machine
// identifier, BIOS dates and versions, then the processor's name, vendor, identifier and speed.
void GetComputerInfo(const FactRegistry& registry, ComputerInfo& computer, ProcessorInfo& processor);

// Physical memory as the platform reports it, in bytes.
struct MemoryStatus
{
    quint64 totalPhysBytes = 0;
    quint64 availPhysBytes = 0;
};

// Kind 0: "TotalPhysMem:261,632K(256M)" (the megabytes are the whole part plus one, so exactly 256 MB
// reads 257M); kind 1: "TotalAvailMem:130,816K"; any other kind "". KB is 1,024 bytes, MB 1,048,576.
QString GetMemoryText(int kind, const MemoryStatus& memory);

// The page's computer lines, each ended by CR LF: product name; version.build, two blanks, service
// pack; "RegisteredOwner:"...; "RegisteredOrganization:"...; "ProductID:"...
QString computerInfoText(const ComputerInfo& computer);
// Name; vendor, two blanks, speed; identifier; joined by CR LF.
QString cpuInformationText(const ProcessorInfo& processor);

} // namespace vindaro::sysinfo
