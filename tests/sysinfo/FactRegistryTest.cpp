#include "sysinfo/FactRegistry.h"
#include "sysinfo/ComputerInfo.h"
#include "sysinfo/ProgramInfo.h"
#include "sysinfo/SplashPage.h"

#include <gtest/gtest.h>

#include <utility>

using namespace vindaro::sysinfo;

namespace {

constexpr RootKey kLm = RootKey::LocalMachine;

void set(FactRegistry& r, const QString& key, const char* name, const FactValue& value)
{
    r.setValue(kLm, key, QString::fromLatin1(name), value);
}

TEST(ReadRemoteReg, EachTypeReadsAsText)
{
    FactRegistry r;
    set(r, kProcessorKey, "~Mhz", FactValue::numberValue(1800));
    set(r, kProcessorKey, "Zero", FactValue::numberValue(0));
    set(r, kProcessorKey, "Top", FactValue::numberValue(0xFFFFFFFFu));
    set(r, kSystemDescriptionKey, "SystemBiosVersion",
        FactValue::multiString({QStringLiteral("BIOS 1.2"), QStringLiteral("Vendor")}));
    set(r, kNtSystemKey, "CSDVersion", FactValue::string(QStringLiteral("Pack 2") + QChar(u'\0') + "junk"));
    set(r, kNtSystemKey, "DigitalProductId", {ValueType::Binary, QStringLiteral("\x01\x02"), 0});

    EXPECT_EQ(ReadRemoteReg(r, kLm, kProcessorKey, "~Mhz"), "708");
    EXPECT_EQ(ReadRemoteReg(r, kLm, kProcessorKey, "Zero"), "0");
    EXPECT_EQ(ReadRemoteReg(r, kLm, kProcessorKey, "Top"), "FFFFFFFF");
    EXPECT_EQ(ReadRemoteReg(r, kLm, kSystemDescriptionKey, "SystemBiosVersion"), "BIOS 1.2");
    EXPECT_EQ(ReadRemoteReg(r, kLm, kNtSystemKey, "CSDVersion"), "Pack 2");
    EXPECT_EQ(ReadRemoteReg(r, kLm, kNtSystemKey, "DigitalProductId"), "");
    // Keys and names ignore case; a missing key, value or root reads empty.
    EXPECT_EQ(ReadRemoteReg(r, kLm, kProcessorKey.toLower(), "~MHZ"), "708");
    EXPECT_EQ(ReadRemoteReg(r, kLm, kProcessorKey, "Identifier"), "");
    EXPECT_EQ(ReadRemoteReg(r, kLm, QStringLiteral("HARDWARE\\Nothing"), "~Mhz"), "");
    EXPECT_EQ(ReadRemoteReg(r, RootKey::CurrentUser, kProcessorKey, "~Mhz"), "");
}

TEST(HexToNumber, ReadsHexDigitsAndRefusesTheRest)
{
    const std::pair<const char*, quint64> rows[]
        = {{"708", 1800u}, {"85", 133u}, {"ff", 255u}, {"FFFFFFFF", 0xFFFFFFFFu},
            {"FFFFFFFFFFFFFFFF", ~quint64(0)}, {"", 0u}, {"7G8", 0u}, {"10000000000000000", 0u}}; // 17 digits
    for (const auto& [text, number] : rows)
        EXPECT_EQ(HexToNumber(text), number) << text;
}

TEST(GetWinVersion, FamilyOfTheVersion)
{
    const struct
    {
        const char* versionNumber; // 9x key; nullptr: missing
        const char* currentVersion; // NT key; nullptr: missing
        const char* family;
    } rows[] = {{nullptr, "5.1", "NT"}, {nullptr, "5.0", "NT"}, {nullptr, "4.0", "9x/NT"},
        {"4.90", nullptr, "9x"}, {"4.10", "5.1", "9x"},
        // A 9x version text with its build appended counts by its first two parts.
        {"4.10.1998", nullptr, "9x"}, {"4.00.950", nullptr, "9x/NT"},
        // Codes outside the table are kept: a newer system, this one's "12", a text that is no number.
        {nullptr, "6.1", "610"}, {nullptr, "12", "100"}, {nullptr, "rolling", "rng"}, {nullptr, nullptr, ""}};
    for (const auto& row : rows) {
        FactRegistry r;
        if (row.versionNumber)
            set(r, k9xSystemKey, "VersionNumber", FactValue::string(QString::fromLatin1(row.versionNumber)));
        if (row.currentVersion)
            set(r, kNtSystemKey, "CurrentVersion",
                FactValue::string(QString::fromLatin1(row.currentVersion)));
        EXPECT_EQ(GetWinVersion(r).toStdString(), row.family)
            << (row.versionNumber ? row.versionNumber : "-") << " "
            << (row.currentVersion ? row.currentVersion : "-");
    }
}

TEST(GetComputerInfo, NtLayoutWithMissingValues)
{
    FactRegistry r;
    set(r, kNtSystemKey, "CurrentVersion", FactValue::string(QStringLiteral("5.1")));
    set(r, kNtSystemKey, "CurrentBuildNumber", FactValue::string(QStringLiteral("2600")));
    set(r, kNtSystemKey, "CSDVersion", FactValue::string(QStringLiteral("Service Pack 2")));
    set(r, kNtSystemKey, "RegisteredOwner", FactValue::string(QStringLiteral("王小明")));
    set(r, kProcessorKey, "~Mhz", FactValue::numberValue(133));
    set(r, kProcessorKey, "VendorIdentifier", FactValue::string(QStringLiteral("GenuineIntel")));
    ComputerInfo computer;
    ProcessorInfo processor;
    GetComputerInfo(r, computer, processor);
    EXPECT_EQ(computer.productName, "Microsoft Windows NT");
    EXPECT_EQ(processor.speed, "133MHz");
    EXPECT_EQ(computerInfoText(computer),
        "Microsoft Windows NT\r\n5.1.2600  Service Pack 2\r\nRegisteredOwner:王小明\r\n"
        "RegisteredOrganization:\r\nProductID:\r\n");
    EXPECT_EQ(cpuInformationText(processor), "\r\nGenuineIntel  133MHz\r\n");

    set(r, kProcessorKey, "~Mhz", FactValue::numberValue(1800));
    GetComputerInfo(r, computer, processor);
    EXPECT_EQ(processor.speed, "1800MHz");
}

TEST(GetComputerInfo, NineXLayoutReadsItsOwnKeyAndHasNoBuild)
{
    FactRegistry r;
    set(r, k9xSystemKey, "VersionNumber", FactValue::string(QStringLiteral("4.10.2222")));
    set(r, k9xSystemKey, "ProductName", FactValue::string(QStringLiteral("Microsoft Windows 98")));
    set(r, kNtSystemKey, "ProductName", FactValue::string(QStringLiteral("not this one")));
    set(r, kNtSystemKey, "CurrentBuildNumber", FactValue::string(QStringLiteral("2600")));
    ComputerInfo computer;
    ProcessorInfo processor;
    computer.build = QStringLiteral("stale");
    GetComputerInfo(r, computer, processor);
    EXPECT_EQ(computer.productName, "Microsoft Windows 98");
    EXPECT_EQ(computer.version, "4.10.2222");
    EXPECT_EQ(computer.build, "");
    EXPECT_EQ(processor.speed, ""); // no ~Mhz value: no speed, not "0MHz"
}

TEST(GetMemoryText, KindsAndThePlusOneMegabyteRule)
{
    const MemoryStatus status{267911168, 133955584};
    EXPECT_EQ(GetMemoryText(0, status), "TotalPhysMem:261,632K(256M)");
    EXPECT_EQ(GetMemoryText(1, status), "TotalAvailMem:130,816K");
    EXPECT_EQ(GetMemoryText(0, {256ull << 20, 0}), "TotalPhysMem:262,144K(257M)");
    EXPECT_EQ(GetMemoryText(0, {64ull << 30, 0}), "TotalPhysMem:67,108,864K(65,537M)");
    EXPECT_EQ(GetMemoryText(2, status), "");
}

TEST(SplashPage, ComposesTheLabels)
{
    SplashFacts facts;
    facts.computerName = QStringLiteral("disc-box");
    facts.userName = QStringLiteral("ming");
    facts.memory = {267911168, 133955584};
    const SplashPage page = composeSplashPage(facts);
    const ProgramVersion v = programVersion();
    EXPECT_EQ(page.version, QStringLiteral("[Version: %1.%2.%3]").arg(v.major).arg(v.minor).arg(v.revision));
    EXPECT_EQ(page.productName, "Vindaro");
    EXPECT_EQ(page.issueYear, "2003");
    EXPECT_EQ(page.company, "CompanyName:Vindaro 开发组");
    EXPECT_EQ(page.computerName, "ComputerName:disc-box");
    EXPECT_EQ(page.userName, "UserName:ming");
    EXPECT_EQ(page.memory, "TotalPhysMem:261,632K(256M)\r\nTotalAvailMem:130,816K");
    // An empty registry: the default name and empty lines.
    EXPECT_EQ(page.computerInfo,
        "Microsoft Windows NT\r\n.  \r\nRegisteredOwner:\r\nRegisteredOrganization:\r\nProductID:\r\n");
    EXPECT_EQ(page.cpuInformation, "\r\n  \r\n");
}

TEST(ProgramInfo, VersionFromTheBuildAndDataBesideTheExecutables)
{
    EXPECT_EQ(programVersionText(), VINDARO_TEST_VERSION);
    EXPECT_EQ(
        versionLine(QStringLiteral("vindaro-copy")), QStringLiteral("vindaro-copy ") + VINDARO_TEST_VERSION);
    EXPECT_EQ(dataDirFor(QStringLiteral("/opt/vindaro/bin")), "/opt/vindaro/share");
    EXPECT_EQ(dataDirFor(QStringLiteral("/tmp/stage/usr/bin")), "/tmp/stage/usr/share");
}

} // namespace
