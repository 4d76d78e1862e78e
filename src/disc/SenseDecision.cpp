#include "SenseDecision.h"

#include <cerrno>
#include <iterator>

namespace vindaro::disc {

namespace {

constexpr int kAny = -1;

// Sense keys (SPC): 1 recovered error, 2 not ready, 3 medium error, 4 hardware error, 5 illegal request,
// 6 unit attention, 8 blank check, 0xB aborted command.
struct SenseRule
{
    int key;
    int asc; // kAny: every code
    int ascq; // kAny: every qualifier
    ReadFailure failure;
};

// The first rule that matches decides. Drives report a scratch as a medium error (3/11 unrecovered read
// error, 3/15 positioning, 3/02 no seek complete...) and often as a hardware error (4/09 tracking servo,
// 4/15 random positioning): both are an unreadable sector.
constexpr SenseRule kSenseRules[] = {
    {0x1, kAny, kAny, ReadFailure::Recovered},
    {0x2, 0x3A, kAny, ReadFailure::NoDisc}, // medium not present
    {0x2, 0x04, 0x01, ReadFailure::Transient}, // becoming ready
    {0x2, 0x04, 0x07, ReadFailure::Transient}, // operation in progress
    {0x2, 0x04, 0x08, ReadFailure::Transient}, // long write in progress
    {0x2, kAny, kAny, ReadFailure::NoDisc},
    {0x3, kAny, kAny, ReadFailure::MediumError},
    {0x4, kAny, kAny, ReadFailure::MediumError},
    {0x5, 0x64, kAny, ReadFailure::IllegalMode}, // illegal mode for this track
    {0x5, 0x30, kAny, ReadFailure::IllegalMode}, // incompatible medium or format
    {0x5, 0x21, kAny, ReadFailure::OutOfRange}, // logical block address out of range
    {0x5, 0x63, kAny, ReadFailure::OutOfRange}, // end of user area encountered
    {0x5, 0x20, kAny, ReadFailure::Unsupported}, // invalid command operation code
    {0x5, 0x24, kAny, ReadFailure::Unsupported}, // invalid field in the command
    {0x6, 0x28, kAny, ReadFailure::DiscChanged}, // not ready to ready change: a disc was inserted
    {0x6, kAny, kAny, ReadFailure::Transient}, // a reset and the like: the next command is heard
    {0x8, kAny, kAny, ReadFailure::OutOfRange}, // blank check: nothing recorded there
    {0xB, kAny, kAny, ReadFailure::Transient},
};

struct FailureRule
{
    ReadFailure failure;
    int retries;
    int error;
    const char16_t* text;
};

// Only a passing condition is asked again: a drive has retried a bad sector itself before it answers, and
// every further try on a scratched disc costs seconds.
constexpr FailureRule kFailureRules[] = {
    {ReadFailure::MediumError, 0, EIO, u"介质错误"},
    {ReadFailure::IllegalMode, 0, EIO, u"不是 Mode 2 扇区"},
    {ReadFailure::OutOfRange, 0, EIO, u"超出光盘上已记录的范围"},
    {ReadFailure::NoDisc, 0, ENOMEDIUM, u"光驱中没有光盘或光驱未就绪"},
    {ReadFailure::DiscChanged, 0, ENOMEDIUM, u"光驱中的光盘已更换"},
    {ReadFailure::Transient, 2, EIO, u"光驱暂时无法读取"},
    {ReadFailure::Unsupported, 0, EOPNOTSUPP, u"光驱不支持 READ CD 命令"},
    {ReadFailure::Recovered, 0, 0, u"光驱已纠正的错误"},
    {ReadFailure::Unknown, 0, EIO, u"光驱没有说明原因"},
};

const FailureRule& ruleFor(ReadFailure failure)
{
    for (const FailureRule& rule : kFailureRules) {
        if (rule.failure == failure)
            return rule;
    }
    return kFailureRules[std::size(kFailureRules) - 1];
}

} // namespace

SenseData parseSense(const quint8* bytes, int length)
{
    SenseData sense;
    if (!bytes || length < 4)
        return sense;
    const int responseCode = bytes[0] & 0x7F;
    if ((responseCode == 0x70 || responseCode == 0x71) && length >= 14) {
        sense.key = bytes[2] & 0x0F;
        sense.asc = bytes[12];
        sense.ascq = bytes[13];
        sense.valid = true;
    } else if (responseCode == 0x72 || responseCode == 0x73) {
        sense.key = bytes[1] & 0x0F;
        sense.asc = bytes[2];
        sense.ascq = bytes[3];
        sense.valid = true;
    }
    return sense;
}

ReadFailure classifySense(const SenseData& sense)
{
    if (!sense.valid)
        return ReadFailure::Unknown;
    for (const SenseRule& rule : kSenseRules) {
        if (rule.key == sense.key && (rule.asc == kAny || rule.asc == sense.asc)
            && (rule.ascq == kAny || rule.ascq == sense.ascq))
            return rule.failure;
    }
    return ReadFailure::Unknown;
}

ReadVerdict readVerdict(const SenseData& sense)
{
    const ReadFailure failure = classifySense(sense);
    const FailureRule& rule = ruleFor(failure);
    return ReadVerdict{failure, rule.retries, rule.error};
}

QString senseText(const SenseData& sense)
{
    const QString words = QString::fromUtf16(ruleFor(classifySense(sense)).text);
    if (!sense.valid)
        return words;
    return words
        + QStringLiteral("（%1/%2/%3）")
              .arg(sense.key, 0, 16)
              .arg(sense.asc, 2, 16, QLatin1Char('0'))
              .arg(sense.ascq, 2, 16, QLatin1Char('0'))
              .toUpper();
}

} // namespace vindaro::disc
