// Every text of the operation log, checked once against a golden file; the other tests compare with these
// functions and constants instead of restating the words. After a deliberate change of a text, run with
// VINDARO_UPDATE_GOLDEN=1 to write the file anew and review its diff.
#include "oplog/LogTexts.h"
#include "info/GoldenText.h"
#include "oplog/ChangeMonitor.h"

#include <gtest/gtest.h>

using namespace vindaro::oplog;

namespace {

#define CODE(code) std::pair<const char*, quint32>(#code, code)

TEST(LogTexts, EveryTextIsTheGoldenOne)
{
    vindaro::testing::GoldenText golden;
    // Every code of the table with "/p1" and "/p2" as its paths, then codes outside it (among them an event
    // with the interrupt flag: codes are compared whole), which get no description.
    for (const auto& [name, code] : {CODE(kRenameItem), CODE(kCreate), CODE(kDelete), CODE(kMakeDirectory),
             CODE(kRemoveDirectory), CODE(kMediaInserted), CODE(kMediaRemoved), CODE(kDriveRemoved),
             CODE(kDriveAdded), CODE(kNetShare), CODE(kNetUnshare), CODE(kAttributes), CODE(kUpdateDirectory),
             CODE(kUpdateItem), CODE(kServerDisconnect), CODE(kUpdateImage), CODE(kDriveAddedGui),
             CODE(kRenameFolder), CODE(kFreeSpace), CODE(kAssociationChanged), CODE(kDiskEventsMask),
             CODE(kGlobalEventsMask), CODE(kAllEventsMask), CODE(kInterruptFlag), CODE(0x0), CODE(0x3),
             CODE(kCreate | kInterruptFlag), CODE(0x80000)})
        golden.add(
            QString::fromLatin1(name), describeChange(code, QStringLiteral("/p1"), QStringLiteral("/p2")));
    for (const LogButtonText& button : logButtonTexts())
        golden.add(button.control, button.caption + QLatin1Char('|') + button.tip);
    golden.add(QStringLiteral("title"), kLogWindowTitle);
    golden.add(QStringLiteral("description"), kLogWindowDescription);
    golden.add(QStringLiteral("no records"), kNoLogRecords);
    golden.add(QStringLiteral("no monitor"), kMonitorUnavailable);
    golden.add(QStringLiteral("watch limit"), watchLimitNote(QStringLiteral("/home/u/deep")));
    golden.check(QStringLiteral(VINDARO_GOLDEN_DIR "/log_texts.txt"));
}

} // namespace
