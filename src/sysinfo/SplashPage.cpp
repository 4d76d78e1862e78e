#include "SplashPage.h"

#include "sysinfo/LinuxFacts.h"
#include "sysinfo/ProgramInfo.h"

namespace vindaro::sysinfo {

SplashFacts gatherSplashFacts()
{
    const LinuxFacts linux = readLinuxFacts();
    SplashFacts facts;
    facts.computerName = GetMyComputerName();
    facts.userName = GetMyUserName();
    facts.memory = memoryStatusFrom(linux.memInfo);
    facts.registry = factRegistryFrom(linux);
    return facts;
}

SplashPage composeSplashPage(const SplashFacts& facts)
{
    SplashPage page;
    page.company = QStringLiteral("CompanyName:") + kCompanyName;
    page.computerName = QStringLiteral("ComputerName:") + facts.computerName;
    page.userName = QStringLiteral("UserName:") + facts.userName;
    page.memory = GetMemoryText(0, facts.memory) + QStringLiteral("\r\n") + GetMemoryText(1, facts.memory);
    const ProgramVersion v = programVersion();
    page.version = QStringLiteral("[Version: %1.%2.%3]").arg(v.major).arg(v.minor).arg(v.revision);
    page.productName = kProgramTitle;
    page.issueYear = kIssueYear;
    page.winVersion = GetWinVersion(facts.registry);
    ComputerInfo computer;
    ProcessorInfo processor;
    GetComputerInfo(facts.registry, computer, processor);
    page.computerInfo = computerInfoText(computer);
    page.cpuInformation = cpuInformationText(processor);
    return page;
}

} // namespace vindaro::sysinfo
