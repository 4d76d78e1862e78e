#include "platform/linux/DesktopExec.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <ostream>

using vindaro::platform::DesktopApplication;
using vindaro::platform::ExecFields;

namespace {

const QString kClip = QStringLiteral("/media/光盘/MPEGAV/AVSEQ01 (1).DAT");
const QString kOther = QStringLiteral("/tmp/b.dat");

struct Row
{
    const char* what;
    QString exec;
    QStringList files;
    QList<QStringList> commands; // empty: the line breaks the rules
};

void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.what;
}

class ExecLines : public ::testing::TestWithParam<Row>
{
};

TEST_P(ExecLines, ExpandAsTheDesktopEntryRulesSay)
{
    const Row& row = GetParam();
    const ExecFields fields{row.files, QStringLiteral("vlc"), QStringLiteral("VLC 播放器"),
        QStringLiteral("/usr/share/applications/vlc.desktop")};
    EXPECT_EQ(vindaro::platform::expandExec(row.exec, fields), row.commands) << row.what;
}

QString s(const char* text)
{
    return QString::fromUtf8(text);
}

INSTANTIATE_TEST_SUITE_P(Table, ExecLines,
    ::testing::Values(Row{"%U takes every file as it stands", s("vlc --started-from-file %U"),
                          {kClip, kOther}, {{s("vlc"), s("--started-from-file"), kClip, kOther}}},
        Row{"%f starts the program once per file", s("player %f"), {kClip, kOther},
            {{s("player"), kClip}, {s("player"), kOther}}},
        Row{"a code inside a longer argument", s("player --open=%u --x=%%"), {kClip},
            {{s("player"), s("--open=") + kClip, s("--x=%")}}},
        Row{"no file code: the file goes at the end", s("editor  -n"), {kClip},
            {{s("editor"), s("-n"), kClip}}},
        Row{"no files: the file code goes", s("player %f --fullscreen"), {},
            {{s("player"), s("--fullscreen")}}},
        Row{"a quoted program and quoted escapes", s(R"("/opt/My App/run" "a \"b\" \$HOME \\ \`x\`" "" %F)"),
            {kClip}, {{s("/opt/My App/run"), s(R"(a "b" $HOME \ `x`)"), s(""), kClip}}},
        Row{"nothing is expanded inside quotes", s(R"(sh -c "cat %f")"), {kClip},
            {{s("sh"), s("-c"), s("cat %f"), kClip}}},
        Row{"icon, name and entry", s("app %i %c %k"), {},
            {{s("app"), s("--icon"), s("vlc"), s("VLC 播放器"), s("/usr/share/applications/vlc.desktop")}}},
        Row{"deprecated codes are dropped", s("app %d %D %n %N %v %m -x%m %f"), {kClip},
            {{s("app"), s("-x"), kClip}}},
        // Lines that give nothing to run.
        Row{"two file codes", s("app %f %U"), {kClip}, {}}, Row{"an unknown code", s("app %z"), {kClip}, {}},
        Row{"a percent sign at the end", s("app 100%"), {kClip}, {}},
        Row{"%F inside an argument", s("app --files=%F"), {kClip}, {}},
        Row{"%i inside an argument", s("app -i%i"), {kClip}, {}},
        Row{"a single quote", s("sh -c 'x'"), {kClip}, {}},
        Row{"a pipe outside quotes", s("app x|y"), {kClip}, {}}, Row{"a tilde", s("~/bin/app"), {kClip}, {}},
        Row{"an unclosed quote", s(R"(app "x)"), {kClip}, {}},
        Row{"text after a closing quote", s(R"(app "x"y)"), {kClip}, {}},
        Row{"an unescaped dollar inside quotes", s(R"(app "a$b")"), {kClip}, {}},
        Row{"an unknown escape inside quotes", s(R"(app "a\qb")"), {kClip}, {}},
        Row{"an equals sign in the program", s("LANG=C app"), {kClip}, {}},
        Row{"a code in place of the program", s("%f"), {kClip}, {}},
        Row{"an empty line", s("  "), {kClip}, {}}));

TEST(LaunchCommands, ATerminalApplicationRunsInTheTerminal)
{
    DesktopApplication application;
    application.exec = QStringLiteral("top -d %f");
    const QStringList terminal{QStringLiteral("xterm"), QStringLiteral("-e")};
    const QStringList command{QStringLiteral("top"), QStringLiteral("-d"), kClip};
    EXPECT_EQ(vindaro::platform::launchCommands(application, {kClip}, terminal), QList<QStringList>{command});
    application.terminal = true;
    EXPECT_EQ(vindaro::platform::launchCommands(application, {kClip}, terminal),
        QList<QStringList>{terminal + command});
}

// The launcher starts a real program, detached, in the folder asked for; a missing program is reported.
TEST(StartDetached, StartsTheProgramInItsFolder)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString out = dir.filePath(QStringLiteral("pwd.txt"));
    ASSERT_TRUE(vindaro::platform::startDetached(QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), QStringLiteral("pwd -P > \"$1.part\" && mv \"$1.part\" \"$1\""),
            QStringLiteral("sh"), out},
        dir.path()));
    const QDeadlineTimer deadline(10000);
    while (!QFile::exists(out) && !deadline.hasExpired())
        QTest::qWait(10);
    QFile file(out);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(file.readAll()).trimmed(), QDir(dir.path()).canonicalPath());

    EXPECT_FALSE(vindaro::platform::startDetached(dir.filePath(QStringLiteral("no-such-program")), {}, {}));
}

} // namespace
