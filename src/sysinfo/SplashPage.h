#pragma once

#include "sysinfo/ComputerInfo.h"
#include "sysinfo/FactRegistry.h"

#include <QString>

// The about window's page: what it is composed from and the texts of its labels.
namespace vindaro::sysinfo {

// Everything the page shows about the computer, gathered once.
struct SplashFacts
{
    QString computerName;
    QString userName;
    MemoryStatus memory;
    FactRegistry registry;
};

// This machine's facts, from Linux's own sources.
SplashFacts gatherSplashFacts();

// The label texts; lines end with CR LF.
struct SplashPage
{
    QString productName; // lblProductName: the program's title
    QString version; // lblVersion: "[Version: 2.0.0]"
    QString issueYear; // the fixed year label
    QString company; // Label3: "CompanyName:..."
    QString computerName; // Label4: "ComputerName:..."
    QString userName; // Label5: "UserName:..."
    QString memory; // Label6: both memory lines
    QString computerInfo; // lblComputerInfo
    QString cpuInformation; // lblCPUInformation
    QString winVersion; // the system family, kept by the window
};

SplashPage composeSplashPage(const SplashFacts& facts);

} // namespace vindaro::sysinfo
