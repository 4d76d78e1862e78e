#pragma once

#include "sysinfo/ComputerInfo.h"
#include "sysinfo/FactRegistry.h"

#include <QHash>
#include <QString>

// What Linux tells about the computer, and how it fills the about window's fact registry.
namespace vindaro::sysinfo {

// The raw texts, as read; every field is "" where the source is missing or unreadable.
struct LinuxFacts
{
    QString osRelease; // /etc/os-release, else /usr/lib/os-release
    QString kernelName; // uname: "Linux"
    QString kernelRelease; // uname: "6.1.0-13-amd64"
    QString machine; // uname: "x86_64"
    QString cpuInfo; // /proc/cpuinfo
    QString cpuMaxKiloHertz; // /sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq
    QString memInfo; // /proc/meminfo
    QString machineId; // /etc/machine-id
    QHash<QString, QString> dmi; // file name under /sys/class/dmi/id ("bios_date") -> its text, trimmed
    QString fullName; // the user's full name: the password entry's comment up to its first comma
};

// This machine's facts. Reads a few small files; never blocks on a device.
LinuxFacts readLinuxFacts();

// The facts in the layout the readers expect, under the local machine:
// - the NT system key: ProductName (os-release NAME, else PRETTY_NAME, else the kernel's name),
//   CurrentVersion (VERSION_ID), CurrentBuildNumber (the kernel release), ProductID (the machine id),
//   RegisteredOwner (the user's full name);
// - the system description: Identifier (DMI vendor and product), SystemBiosDate and SystemBiosVersion
//   (a multi-string of the BIOS version and vendor);
// - the first processor: ProcessorNameString, VendorIdentifier, Identifier ("x86_64 Family 25 Model 17
//   Stepping 1") and ~Mhz (the "cpu MHz" of /proc/cpuinfo rounded, else the highest frequency cpufreq
//   reports), a 32-bit number.
// What Linux does not know (service pack, product key, organisation, video BIOS) stays missing.
FactRegistry factRegistryFrom(const LinuxFacts& facts);

// MemTotal and MemAvailable of /proc/meminfo (MemFree where the kernel has no MemAvailable), in bytes.
MemoryStatus memoryStatusFrom(const QString& memInfo);

// The computer's host name and the logged-on user's login name ("" when unknown).
QString GetMyComputerName();
QString GetMyUserName();

} // namespace vindaro::sysinfo
