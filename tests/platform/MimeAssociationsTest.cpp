#include "platform/linux/MimeAssociations.h"
#include "platform/linux/ui/LinuxShell.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <ostream>

using vindaro::platform::MimeAssociations;

namespace {

// A desktop of folders in a temporary tree: config home, one config folder, data home, one data folder.
struct Desktop
{
    QTemporaryDir dir;
    QString configHome() const { return dir.filePath(QStringLiteral("config")); }
    QString configDir() const { return dir.filePath(QStringLiteral("xdg")); }
    QString dataHome() const { return dir.filePath(QStringLiteral("data")); }
    QString dataDir() const { return dir.filePath(QStringLiteral("share")); }
    MimeAssociations::Folders folders(QStringList desktops = {}) const
    {
        return {{configHome(), configDir()}, {dataHome(), dataDir()}, desktops};
    }
    static void write(const QString& path, const QByteArray& text)
    {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    // An installed application in the data folder (or `data`), with extra lines for its entry.
    void app(
        const char* id, const QByteArray& mimeTypes, const QByteArray& extra = {}, QString data = {}) const
    {
        if (data.isEmpty())
            data = dataDir();
        write(data + QStringLiteral("/applications/") + QString::fromLatin1(id),
            "[Desktop Entry]\nType=Application\nName=x\nName[zh_CN]=y\nExec=true %f\nMimeType=" + mimeTypes
                + "\n" + extra);
    }
};

struct Row
{
    const char* what;
    std::function<void(Desktop&)> build;
    const char* mimeType;
    const char* expected;
    QStringList desktops = {};
};

void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.what;
}

class MimeDefaults : public ::testing::TestWithParam<Row>
{
};

TEST_P(MimeDefaults, FollowTheDesktopsRules)
{
    const Row& row = GetParam();
    Desktop desktop;
    ASSERT_TRUE(desktop.dir.isValid());
    row.build(desktop);
    MimeAssociations associations(desktop.folders(row.desktops));
    EXPECT_EQ(
        associations.defaultApplication(QString::fromLatin1(row.mimeType)), QString::fromLatin1(row.expected))
        << row.what;
}

INSTANTIATE_TEST_SUITE_P(Table, MimeDefaults,
    ::testing::Values(Row{"nothing installed", [](Desktop&) {}, "video/mpeg", ""},
        Row{"an entry lists the type", [](Desktop& d) { d.app("player.desktop", "video/mpeg;"); },
            "video/mpeg", "player.desktop"},
        Row{"the default list beats the entries' order",
            [](Desktop& d) {
                d.app("a.desktop", "video/mpeg;");
                d.app("b.desktop", "video/mpeg;");
                d.write(d.configHome() + "/mimeapps.list", "[Default Applications]\nvideo/mpeg=b.desktop\n");
            },
            "video/mpeg", "b.desktop"},
        Row{"a default that is not installed gives way to the next",
            [](Desktop& d) {
                d.app("b.desktop", "");
                d.write(d.configDir() + "/mimeapps.list",
                    "[Default Applications]\nvideo/mpeg=gone.desktop;b.desktop;\n");
            },
            "video/mpeg", "b.desktop"},
        Row{"a removed association hides the entry",
            [](Desktop& d) {
                d.app("a.desktop", "video/mpeg;");
                d.write(d.configHome() + "/mimeapps.list", "[Removed Associations]\nvideo/mpeg=a.desktop;\n");
            },
            "video/mpeg", ""},
        Row{"an added association needs no MimeType line",
            [](Desktop& d) {
                d.app("c.desktop", "");
                d.write(d.dataDir() + "/applications/mimeapps.list",
                    "[Added Associations]\nvideo/mpeg=c.desktop;\n");
            },
            "video/mpeg", "c.desktop"},
        Row{"a hidden entry is not installed",
            [](Desktop& d) { d.app("a.desktop", "video/mpeg;", "Hidden=true\n"); }, "video/mpeg", ""},
        Row{"the user's hidden copy hides the system's entry",
            [](Desktop& d) {
                d.app("a.desktop", "video/mpeg;");
                d.app("a.desktop", "video/mpeg;", "Hidden=true\n", d.dataHome());
            },
            "video/mpeg", ""},
        Row{"a missing TryExec program",
            [](Desktop& d) { d.app("a.desktop", "video/mpeg;", "TryExec=/nonexistent/player\n"); },
            "video/mpeg", ""},
        Row{"an application for the parent type", [](Desktop& d) { d.app("editor.desktop", "text/plain;"); },
            "text/x-csrc", "editor.desktop"},
        Row{"an entry in a subfolder has a dashed id",
            [](Desktop& d) {
                d.app("kde4/player.desktop", "");
                d.write(d.configHome() + "/mimeapps.list",
                    "[Default Applications]\nvideo/mpeg=kde4-player.desktop\n");
            },
            "video/mpeg", "kde4-player.desktop"},
        Row{"the desktop's own list comes first",
            [](Desktop& d) {
                d.app("a.desktop", "");
                d.app("b.desktop", "");
                d.write(d.configHome() + "/mimeapps.list", "[Default Applications]\nvideo/mpeg=a.desktop\n");
                d.write(
                    d.configHome() + "/xfce-mimeapps.list", "[Default Applications]\nvideo/mpeg=b.desktop\n");
            },
            "video/mpeg", "b.desktop", {QStringLiteral("xfce")}}));

// A real folder of desktop entries as the chooser lists them: the type's applications first (its default
// leading), then every other displayed, usable application by name.
TEST(MimeApplications, TheTypesApplicationsComeFirstThenTheRestByName)
{
    Desktop d;
    ASSERT_TRUE(d.dir.isValid());
    const auto entry = [&d](const char* id, const QByteArray& lines) {
        d.write(d.dataDir() + QStringLiteral("/applications/") + QString::fromLatin1(id),
            "[Desktop Entry]\nType=Application\n" + lines);
    };
    entry("player.desktop",
        "Name=Player\nName[zh_CN]=播放器\nName[zh]=播放\nIcon=player\nExec=player\\s--x %U\n"
        "MimeType=video/mpeg;\n");
    entry("viewer.desktop",
        "Name=Viewer\nName[zh]=查看器\nExec=viewer %f\nMimeType=video/mpeg;\nNoDisplay=true\n");
    entry("editor.desktop", "Name=Editor\nExec=editor %f\nMimeType=text/plain;\n");
    entry("alpha.desktop", "Name=alpha\nExec=alpha\nTerminal=true\nPath=/srv\n");
    entry("zed.desktop", "Name=Zed\nExec=zed\n");
    entry("kde4/beta.desktop", "Name=Beta\nExec=beta\n");
    entry("menu-only.desktop", "Name=Aaa\nExec=aaa\nNoDisplay=true\n");
    entry("broken.desktop", "Name=Aab\nExec=aab\nTryExec=/nonexistent/aab\n");
    entry("gone.desktop", "Name=Aac\nExec=aac\nHidden=true\n");
    entry("noexec.desktop", "Name=Aad\n");
    d.write(
        d.dataDir() + QStringLiteral("/applications/site.desktop"), "[Desktop Entry]\nType=Link\nName=Aae\n");
    d.write(d.configHome() + "/mimeapps.list", "[Default Applications]\nvideo/mpeg=viewer.desktop\n");

    const auto ids = [](const QList<vindaro::platform::DesktopApplication>& applications) {
        QStringList list;
        for (const auto& application : applications)
            list << application.id;
        return list;
    };
    MimeAssociations associations(d.folders());
    const auto forClip = associations.applicationsForFile(d.dir.filePath(QStringLiteral("clip.mpg")));
    EXPECT_EQ(ids(forClip),
        QStringList({"viewer.desktop", "player.desktop", "alpha.desktop", "kde4-beta.desktop",
            "editor.desktop", "zed.desktop"}));
    ASSERT_EQ(forClip.size(), 6);
    EXPECT_EQ(forClip[0].name, QStringLiteral("查看器")); // Name[zh] when there is no Name[zh_CN]
    const auto& player = forClip[1];
    EXPECT_EQ(player.name, QStringLiteral("播放器"));
    EXPECT_EQ(player.icon, QStringLiteral("player"));
    EXPECT_EQ(player.exec, QStringLiteral("player --x %U"));
    EXPECT_EQ(player.entryPath, d.dataDir() + QStringLiteral("/applications/player.desktop"));
    EXPECT_FALSE(player.terminal);
    EXPECT_TRUE(forClip[2].terminal);
    EXPECT_EQ(forClip[2].workingFolder, QStringLiteral("/srv"));

    // A C source: the application of its parent type (text/plain) first; a hidden-from-menus application
    // that is not associated stays out.
    const auto forSource = ids(associations.applicationsForFile(d.dir.filePath(QStringLiteral("main.c"))));
    EXPECT_EQ(forSource.value(0), QStringLiteral("editor.desktop"));
    EXPECT_FALSE(forSource.contains(QStringLiteral("viewer.desktop")));
    EXPECT_EQ(forSource.size(), 5);

    MimeAssociations german(d.folders(), QStringLiteral("de_DE"));
    EXPECT_EQ(german.applicationsFor(QStringLiteral("video/mpeg")).value(1).name, QStringLiteral("Player"));
}

// The shell reads the folders the environment names: a temporary XDG home with one application.
TEST(MimeDefaults, ShellAsksTheEnvironmentsDesktop)
{
    Desktop desktop;
    ASSERT_TRUE(desktop.dir.isValid());
    desktop.app("player.desktop", "video/mpeg;");
    const char* names[]
        = {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DATA_DIRS", "XDG_CURRENT_DESKTOP"};
    const QString values[]
        = {desktop.configHome(), desktop.configDir(), desktop.dataHome(), desktop.dataDir(), {}};
    // The MIME database itself is found through XDG_DATA_DIRS: load it before the folders change.
    ASSERT_TRUE(QMimeDatabase().mimeTypeForName(QStringLiteral("video/mpeg")).isValid());
    QByteArray saved[5];
    for (int i = 0; i < 5; ++i) {
        saved[i] = qgetenv(names[i]);
        qputenv(names[i], QFile::encodeName(values[i]));
    }
    vindaro::platform::LinuxShell shell;
    const bool video = shell.hasDefaultApplication(desktop.dir.filePath(QStringLiteral("clip.mpg")));
    const bool text = shell.hasDefaultApplication(desktop.dir.filePath(QStringLiteral("notes.txt")));
    for (int i = 0; i < 5; ++i)
        qputenv(names[i], saved[i]);
    EXPECT_TRUE(video);
    EXPECT_FALSE(text);
}

} // namespace
