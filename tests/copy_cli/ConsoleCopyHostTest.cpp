#include "copy/cli/ConsoleCopyHost.h"

#include <QTextStream>

#include <gtest/gtest.h>

using namespace vindaro::copy;

namespace {

// Without a window the questions have fixed answers: room only when asked for, never delete, never retry.
TEST(ConsoleCopyHost, AnswersQuestionsForAScript)
{
    CopyState state;
    QString out, err;
    QTextStream outStream(&out), errStream(&err);
    ConsoleCopyHost host(state, outStream, errStream);
    const auto ask = [&](const QString& text) {
        return host.ask(vindaro::platform::MessageBox{text, QStringLiteral("提醒！"),
            vindaro::platform::BoxIcon::Exclamation, vindaro::platform::BoxButtons::YesNo});
    };
    EXPECT_EQ(ask(QStringLiteral("/盘空间不足，请重新选择文件保存路径")), vindaro::platform::kAnswerNo);
    host.ignoreLowSpace = true;
    EXPECT_EQ(ask(QStringLiteral("/盘空间不足，请重新选择文件保存路径")), vindaro::platform::kAnswerYes);
    EXPECT_EQ(ask(QStringLiteral("/a.dat\r\n该文件已经存在，是否删除？")), vindaro::platform::kAnswerNo);
    EXPECT_TRUE(err.contains(QStringLiteral("该文件已经存在，是否删除？\n→ 否[N]")));
}

} // namespace
