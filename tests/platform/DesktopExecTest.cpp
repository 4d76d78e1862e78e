#include "platform/linux/DesktopExec.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using vindaro::platform::ExecFields;
using namespace Qt::StringLiterals;

namespace {

TEST(ExecLines, ExpandAsTheDesktopEntryRulesSay)
{
    const QString clip = u"/media/光盘/MPEGAV/AVSEQ01 (1).DAT"_s;
    const QString other = u"/tmp/b.dat"_s;
    const struct
    {
        const char* what;
        QString exec;
        QStringList files;
        QList<QStringList> commands; // empty: the line breaks the rules
    } rows[] = {
        {"%U takes every file as it stands", u"vlc --started-from-file %U"_s, {clip, other},
            {{u"vlc"_s, u"--started-from-file"_s, clip, other}}},
        {"%f starts the program once per file", u"player %f"_s, {clip, other},
            {{u"player"_s, clip}, {u"player"_s, other}}},
        {"a code inside a longer argument", u"player --open=%u --x=%%"_s, {clip},
            {{u"player"_s, u"--open="_s + clip, u"--x=%"_s}}},
        {"no file code: the file goes at the end", u"editor  -n"_s, {clip}, {{u"editor"_s, u"-n"_s, clip}}},
        {"no files: the file code goes", u"player %f --fullscreen"_s, {}, {{u"player"_s, u"--fullscreen"_s}}},
        {"a quoted program and quoted escapes", uR"("/opt/My App/run" "a \"b\" \$HOME \\ \`x\`" "" %F)"_s,
            {clip}, {{u"/opt/My App/run"_s, uR"(a "b" $HOME \ `x`)"_s, u""_s, clip}}},
        {"nothing is expanded inside quotes", uR"(sh -c "cat %f")"_s, {clip},
            {{u"sh"_s, u"-c"_s, u"cat %f"_s, clip}}},
        {"icon, name and entry", u"app %i %c %k"_s, {},
            {{u"app"_s, u"--icon"_s, u"vlc"_s, u"VLC 播放器"_s, u"/usr/share/applications/vlc.desktop"_s}}},
        {"deprecated codes are dropped", u"app %d %D %n %N %v %m -x%m %f"_s, {clip},
            {{u"app"_s, u"-x"_s, clip}}},
        // Lines that give nothing to run.
        {"two file codes", u"app %f %U"_s, {clip}, {}},
        {"an unknown code", u"app %z"_s, {clip}, {}},
        {"a percent sign at the end", u"app 100%"_s, {clip}, {}},
        {"%F inside an argument", u"app --files=%F"_s, {clip}, {}},
        {"%i inside an argument", u"app -i%i"_s, {clip}, {}},
        {"a single quote", u"sh -c 'x'"_s, {clip}, {}},
        {"a pipe outside quotes", u"app x|y"_s, {clip}, {}},
        {"a tilde", u"~/bin/app"_s, {clip}, {}},
        {"an unclosed quote", uR"(app "x)"_s, {clip}, {}},
        {"text after a closing quote", uR"(app "x"y)"_s, {clip}, {}},
        {"an unescaped dollar inside quotes", uR"(app "a$b")"_s, {clip}, {}},
        {"an unknown escape inside quotes", uR"(app "a\qb")"_s, {clip}, {}},
        {"an equals sign in the program", u"LANG=C app"_s, {clip}, {}},
        {"a code in place of the program", u"%f"_s, {clip}, {}},
        {"an empty line", u"  "_s, {clip}, {}},
    };
    for (const auto& row : rows) {
        const ExecFields fields{
            row.files, u"vlc"_s, u"VLC 播放器"_s, u"/usr/share/applications/vlc.desktop"_s};
        EXPECT_EQ(vindaro::platform::expandExec(row.exec, fields), row.commands) << row.what;
    }
}

// The launcher starts a real program, detached, in the folder asked for; a missing program is reported.
TEST(StartDetached, StartsTheProgramInItsFolder)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString out = dir.filePath(u"pwd.txt"_s);
    ASSERT_TRUE(vindaro::platform::startDetached(u"/bin/sh"_s,
        {u"-c"_s, u"pwd -P > \"$1.part\" && mv \"$1.part\" \"$1\""_s, u"sh"_s, out}, dir.path()));
    EXPECT_TRUE(QTest::qWaitFor([&] { return QFile::exists(out); }, 10000));
    QFile file(out);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(file.readAll()).trimmed(), QDir(dir.path()).canonicalPath());
    EXPECT_FALSE(vindaro::platform::startDetached(dir.filePath(u"no-such-program"_s), {}, {}));
}

} // namespace
