#pragma once

#include <QString>

namespace vindaro::platform {

// Answer codes of questions: the message-box codes the rest of the program keys on.
enum AnswerCode : int
{
    kAnswerOk = 1,
    kAnswerYes = 6,
    kAnswerNo = 7,
};

enum class BoxIcon
{
    Exclamation,
    Critical,
    Information
};
enum class BoxButtons
{
    Ok,
    YesNo
};

struct MessageBox
{
    QString text;
    QString title;
    BoxIcon icon = BoxIcon::Exclamation;
    BoxButtons buttons = BoxButtons::Ok;
};

// Everything a long-running piece of logic needs from whoever runs it. The window implements it on the
// UI thread (marshalling from its worker thread); tests implement it with scripted answers.
class Host
{
public:
    virtual ~Host() = default;
    // A modal question or notice; answers kAnswerOk, kAnswerYes or kAnswerNo.
    virtual int showBox(const MessageBox& box) = 0;
    // One entry for the operation log.
    virtual void log(const QString& entry) = 0;
    // Lets pending window events run: the only place where pause, cancel and slider moves act.
    virtual void yield() = 0;
};

} // namespace vindaro::platform
