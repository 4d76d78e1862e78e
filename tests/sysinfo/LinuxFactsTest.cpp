#include "sysinfo/LinuxFacts.h"
#include "sysinfo/ComputerInfo.h"
#include "sysinfo/OsVersionName.h"

#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>
#include <sys/utsname.h>

using namespace vindaro::sysinfo;

namespace {

struct Page
{
    ComputerInfo computer;
    ProcessorInfo processor;
};

Page pageOf(const LinuxFacts& facts)
{
    Page page;
    GetComputerInfo(factRegistryFrom(facts), page.computer, page.processor);
    return page;
}

const QString kAmdCpuInfo = QStringLiteral("processor\t: 0\nvendor_id\t: AuthenticAMD\ncpu family\t: 25\n"
                                           "model\t\t: 17\nmodel name\t: AMD EPYC 9454P\nstepping\t: 1\n"
                                           "cpu MHz\t\t: 2596.540\n\nprocessor\t: 1\nmodel name\t: Other\n");

TEST(LinuxFacts, FillTheNtLayout)
{
    LinuxFacts facts;
    facts.osRelease
        = QStringLiteral("PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nNAME=\"Debian GNU/Linux\"\n"
                         "VERSION_ID=\"12\"\n");
    facts.kernelName = QStringLiteral("Linux");
    facts.kernelRelease = QStringLiteral("6.1.0-13-amd64");
    facts.machine = QStringLiteral("x86_64");
    facts.cpuInfo = kAmdCpuInfo;
    facts.machineId = QStringLiteral("3d1219c7c4c5404aaa1f6d2a48adfda4");
    facts.fullName = QStringLiteral("王小明");
    facts.dmi = {{QStringLiteral("bios_date"), QStringLiteral("03/14/2023")},
        {QStringLiteral("bios_version"), QStringLiteral("1.9.2")},
        {QStringLiteral("bios_vendor"), QStringLiteral("Dell Inc.")},
        {QStringLiteral("sys_vendor"), QStringLiteral("Dell Inc.")},
        {QStringLiteral("product_name"), QStringLiteral("OptiPlex 7090")}};

    const Page page = pageOf(facts);
    EXPECT_EQ(page.computer.productName, "Debian GNU/Linux");
    EXPECT_EQ(page.computer.version, "12");
    EXPECT_EQ(page.computer.build, "6.1.0-13-amd64");
    EXPECT_EQ(page.computer.productId, "3d1219c7c4c5404aaa1f6d2a48adfda4");
    EXPECT_EQ(page.computer.registeredOwner, "王小明");
    EXPECT_EQ(page.computer.machineIdentifier, "Dell Inc. OptiPlex 7090");
    EXPECT_EQ(page.computer.systemBiosDate, "03/14/2023");
    EXPECT_EQ(page.computer.systemBiosVersion, "1.9.2");
    EXPECT_EQ(page.processor.name, "AMD EPYC 9454P"); // the first processor's block only
    EXPECT_EQ(page.processor.vendor, "AuthenticAMD");
    EXPECT_EQ(page.processor.identifier, "x86_64 Family 25 Model 17 Stepping 1");
    EXPECT_EQ(page.processor.speed, "2597MHz");
    EXPECT_EQ(computerInfoText(page.computer).section(QStringLiteral("\r\n"), 1, 1), "12.6.1.0-13-amd64  ");
}

TEST(LinuxFacts, MissingSourcesLeaveFieldsEmpty)
{
    // An ARM board: no "cpu MHz", no vendor, a frequency from cpufreq; no os-release, DMI or owner.
    LinuxFacts facts;
    facts.kernelName = QStringLiteral("Linux");
    facts.cpuInfo = QStringLiteral("processor\t: 0\nBogoMIPS\t: 108.00\nCPU implementer\t: 0x41\n");
    facts.cpuMaxKiloHertz = QStringLiteral("1800000");
    Page page = pageOf(facts);
    EXPECT_EQ(page.computer.productName, "Linux");
    EXPECT_EQ(page.computer.version, "");
    EXPECT_EQ(page.computer.registeredOwner, "");
    EXPECT_EQ(page.computer.machineIdentifier, "");
    EXPECT_EQ(page.processor.name, "");
    EXPECT_EQ(page.processor.identifier, "");
    EXPECT_EQ(page.processor.speed, "1800MHz");

    facts.cpuMaxKiloHertz.clear();
    EXPECT_EQ(pageOf(facts).processor.speed, "");
}

TEST(LinuxFacts, MemoryFromMeminfo)
{
    const MemoryStatus status = memoryStatusFrom(
        QStringLiteral("MemTotal:       261632 kB\nMemFree:  1024 kB\nMemAvailable:   130816 kB\n"));
    EXPECT_EQ(status.totalPhysBytes, 267911168u);
    EXPECT_EQ(status.availPhysBytes, 133955584u);
    // An old kernel without MemAvailable: the free memory.
    EXPECT_EQ(
        memoryStatusFrom(QStringLiteral("MemTotal: 2048 kB\nMemFree: 1024 kB\n")).availPhysBytes, 1048576u);
}

QString firstCpuField(const QString& cpuInfo, const QString& key)
{
    const QRegularExpression line(QStringLiteral("^%1\\s*:\\s*(.*)$").arg(QRegularExpression::escape(key)),
        QRegularExpression::MultilineOption);
    return line.match(cpuInfo).captured(1).trimmed();
}

// This machine's own sources: only what must hold wherever the tests run.
TEST(LinuxFacts, ThisMachine)
{
    const LinuxFacts facts = readLinuxFacts();
    struct utsname uts;
    ASSERT_EQ(::uname(&uts), 0);
    EXPECT_EQ(facts.kernelRelease, QString::fromUtf8(uts.release));
    const Page page = pageOf(facts);
    EXPECT_EQ(page.computer.build, QString::fromUtf8(uts.release));
    EXPECT_FALSE(page.computer.productName.isEmpty());
    const QString name = osReleaseValues(readOsRelease()).value(QStringLiteral("NAME"));
    if (!name.isEmpty()) {
        EXPECT_EQ(page.computer.productName, name);
    }

    QFile cpuInfo(QStringLiteral("/proc/cpuinfo"));
    ASSERT_TRUE(cpuInfo.open(QIODevice::ReadOnly));
    const QString cpuText = QString::fromUtf8(cpuInfo.readAll());
    if (!firstCpuField(cpuText, QStringLiteral("cpu MHz")).isEmpty()) {
        EXPECT_TRUE(
            QRegularExpression(QStringLiteral("^[1-9][0-9]*MHz$")).match(page.processor.speed).hasMatch())
            << page.processor.speed.toStdString();
    }
    EXPECT_EQ(page.processor.vendor, firstCpuField(cpuText, QStringLiteral("vendor_id")));

    QFile machineId(QStringLiteral("/etc/machine-id"));
    if (machineId.open(QIODevice::ReadOnly)) {
        EXPECT_EQ(page.computer.productId, QString::fromLatin1(machineId.readAll()).trimmed());
    }

    const MemoryStatus memory = memoryStatusFrom(facts.memInfo);
    EXPECT_GT(memory.totalPhysBytes, 0u);
    EXPECT_LE(memory.availPhysBytes, memory.totalPhysBytes);
    EXPECT_FALSE(GetMyUserName().isEmpty());
    EXPECT_FALSE(GetMyComputerName().isEmpty());
}

} // namespace
