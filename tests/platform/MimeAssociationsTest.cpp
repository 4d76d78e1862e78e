// Default applications and the chooser's list from real folders of desktop entries and mimeapps.list files.
#include "platform/linux/MimeAssociations.h"
#include "platform/linux/ui/LinuxShell.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using vindaro::platform::MimeAssociations;
using namespace Qt::StringLiterals;

namespace {

const QByteArray kApplication
    = "[Desktop Entry]\nType=Application\nName=x\nName[zh_CN]=y\nExec=true %f\nMimeType=";

// A desktop of folders in a temporary tree: config home, one config folder, data home, one data folder.
struct Desktop
{
    QTemporaryDir dir;
    const QString configHome = dir.filePath(u"config"_s);
    const QString configDir = dir.filePath(u"xdg"_s);
    const QString dataHome = dir.filePath(u"data"_s);
    const QString dataDir = dir.filePath(u"share"_s);

    MimeAssociations::Folders folders(QStringList desktops = {}) const
    {
        return {{configHome, configDir}, {dataHome, dataDir}, desktops};
    }
    static void write(const QString& path, const QByteArray& text)
    {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    // A desktop entry in the data folder.
    void entry(const char* id, const QByteArray& lines) const
    {
        write(dataDir + u"/applications/"_s + QString::fromLatin1(id),
            "[Desktop Entry]\nType=Application\n" + lines);
    }
};

// Each row's files are "folder/relative path" and content; "app:" stands for an installed application's
// entry, with its MimeType line and any extra lines following.
TEST(MimeDefaults, FollowTheDesktopsRules)
{
    const struct
    {
        const char* what;
        std::vector<std::pair<const char*, QByteArray>> files;
        const char* mimeType;
        const char* expected;
        QStringList desktops = {};
    } rows[] = {
        {"nothing installed", {}, "video/mpeg", ""},
        {"an entry lists the type", {{"share/applications/player.desktop", "app:video/mpeg;"}}, "video/mpeg",
            "player.desktop"},
        {"the default list beats the entries' order",
            {{"share/applications/a.desktop", "app:video/mpeg;"},
                {"share/applications/b.desktop", "app:video/mpeg;"},
                {"config/mimeapps.list", "[Default Applications]\nvideo/mpeg=b.desktop\n"}},
            "video/mpeg", "b.desktop"},
        {"a default that is not installed gives way to the next",
            {{"share/applications/b.desktop", "app:"},
                {"xdg/mimeapps.list", "[Default Applications]\nvideo/mpeg=gone.desktop;b.desktop;\n"}},
            "video/mpeg", "b.desktop"},
        {"a removed association hides the entry",
            {{"share/applications/a.desktop", "app:video/mpeg;"},
                {"config/mimeapps.list", "[Removed Associations]\nvideo/mpeg=a.desktop;\n"}},
            "video/mpeg", ""},
        {"an added association needs no MimeType line",
            {{"share/applications/c.desktop", "app:"},
                {"share/applications/mimeapps.list", "[Added Associations]\nvideo/mpeg=c.desktop;\n"}},
            "video/mpeg", "c.desktop"},
        {"a hidden entry is not installed",
            {{"share/applications/a.desktop", "app:video/mpeg;\nHidden=true"}}, "video/mpeg", ""},
        {"the user's hidden copy hides the system's entry",
            {{"share/applications/a.desktop", "app:video/mpeg;"},
                {"data/applications/a.desktop", "app:video/mpeg;\nHidden=true"}},
            "video/mpeg", ""},
        {"a missing TryExec program",
            {{"share/applications/a.desktop", "app:video/mpeg;\nTryExec=/nonexistent/player"}}, "video/mpeg",
            ""},
        {"an application for the parent type", {{"share/applications/editor.desktop", "app:text/plain;"}},
            "text/x-csrc", "editor.desktop"},
        {"an entry in a subfolder has a dashed id",
            {{"share/applications/kde4/player.desktop", "app:"},
                {"config/mimeapps.list", "[Default Applications]\nvideo/mpeg=kde4-player.desktop\n"}},
            "video/mpeg", "kde4-player.desktop"},
        {"the desktop's own list comes first",
            {{"share/applications/a.desktop", "app:"}, {"share/applications/b.desktop", "app:"},
                {"config/mimeapps.list", "[Default Applications]\nvideo/mpeg=a.desktop\n"},
                {"config/xfce-mimeapps.list", "[Default Applications]\nvideo/mpeg=b.desktop\n"}},
            "video/mpeg", "b.desktop", {u"xfce"_s}},
    };
    for (const auto& row : rows) {
        Desktop desktop;
        ASSERT_TRUE(desktop.dir.isValid());
        for (const auto& [path, content] : row.files)
            desktop.write(desktop.dir.filePath(QString::fromLatin1(path)),
                content.startsWith("app:") ? kApplication + content.mid(4) + '\n' : content);
        MimeAssociations associations(desktop.folders(row.desktops));
        EXPECT_EQ(
            associations.defaultApplication(QString::fromLatin1(row.mimeType)).toStdString(), row.expected)
            << row.what;
    }
}

// The chooser's list: the type's applications first (its default leading), then every other displayed,
// usable application by name.
TEST(MimeApplications, TheTypesApplicationsComeFirstThenTheRestByName)
{
    Desktop d;
    ASSERT_TRUE(d.dir.isValid());
    d.entry("player.desktop",
        "Name=Player\nName[zh_CN]=播放器\nName[zh]=播放\nIcon=player\nExec=player\\s--x "
        "%U\nMimeType=video/mpeg;\n");
    d.entry("viewer.desktop",
        "Name=Viewer\nName[zh]=查看器\nExec=viewer %f\nMimeType=video/mpeg;\nNoDisplay=true\n");
    d.entry("editor.desktop", "Name=Editor\nExec=editor %f\nMimeType=text/plain;\n");
    d.entry("alpha.desktop", "Name=alpha\nExec=alpha\nTerminal=true\nPath=/srv\n");
    d.entry("zed.desktop", "Name=Zed\nExec=zed\n");
    d.entry("kde4/beta.desktop", "Name=Beta\nExec=beta\n");
    d.entry("menu-only.desktop", "Name=Aaa\nExec=aaa\nNoDisplay=true\n");
    d.entry("broken.desktop", "Name=Aab\nExec=aab\nTryExec=/nonexistent/aab\n");
    d.entry("gone.desktop", "Name=Aac\nExec=aac\nHidden=true\n");
    d.entry("noexec.desktop", "Name=Aad\n");
    d.write(d.dataDir + u"/applications/site.desktop"_s, "[Desktop Entry]\nType=Link\nName=Aae\n");
    d.write(d.configHome + "/mimeapps.list", "[Default Applications]\nvideo/mpeg=viewer.desktop\n");

    const auto ids = [](const QList<vindaro::platform::DesktopApplication>& applications) {
        QStringList list;
        for (const auto& application : applications)
            list << application.id;
        return list;
    };
    MimeAssociations associations(d.folders());
    const auto forClip = associations.applicationsForFile(d.dir.filePath(u"clip.mpg"_s));
    EXPECT_EQ(ids(forClip),
        QStringList({"viewer.desktop", "player.desktop", "alpha.desktop", "kde4-beta.desktop",
            "editor.desktop", "zed.desktop"}));
    ASSERT_EQ(forClip.size(), 6);
    EXPECT_EQ(forClip[0].name, u"查看器"_s); // Name[zh] when there is no Name[zh_CN]
    const auto& player = forClip[1];
    EXPECT_EQ(player.name, u"播放器"_s);
    EXPECT_EQ(player.icon, u"player"_s);
    EXPECT_EQ(player.exec, u"player --x %U"_s);
    EXPECT_EQ(player.entryPath, d.dataDir + u"/applications/player.desktop"_s);
    EXPECT_FALSE(player.terminal);
    EXPECT_TRUE(forClip[2].terminal);
    EXPECT_EQ(forClip[2].workingFolder, u"/srv"_s);

    // A C source: the application of its parent type first; an unassociated hidden-from-menus one stays out.
    const auto forSource = ids(associations.applicationsForFile(d.dir.filePath(u"main.c"_s)));
    EXPECT_EQ(forSource.value(0), u"editor.desktop"_s);
    EXPECT_FALSE(forSource.contains(u"viewer.desktop"_s));
    EXPECT_EQ(forSource.size(), 5);

    MimeAssociations german(d.folders(), u"de_DE"_s);
    EXPECT_EQ(german.applicationsFor(u"video/mpeg"_s).value(1).name, u"Player"_s);
}

// The shell reads the folders the environment names: a temporary XDG home with one application.
TEST(MimeDefaults, ShellAsksTheEnvironmentsDesktop)
{
    Desktop desktop;
    ASSERT_TRUE(desktop.dir.isValid());
    desktop.write(desktop.dataDir + u"/applications/player.desktop"_s, kApplication + "video/mpeg;\n");
    const char* names[]
        = {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DATA_DIRS", "XDG_CURRENT_DESKTOP"};
    const QString values[] = {desktop.configHome, desktop.configDir, desktop.dataHome, desktop.dataDir, {}};
    // The MIME database itself is found through XDG_DATA_DIRS: load it before the folders change.
    ASSERT_TRUE(QMimeDatabase().mimeTypeForName(u"video/mpeg"_s).isValid());
    QByteArray saved[5];
    for (int i = 0; i < 5; ++i) {
        saved[i] = qgetenv(names[i]);
        qputenv(names[i], QFile::encodeName(values[i]));
    }
    vindaro::platform::LinuxShell shell;
    const bool video = shell.hasDefaultApplication(desktop.dir.filePath(u"clip.mpg"_s));
    const bool text = shell.hasDefaultApplication(desktop.dir.filePath(u"notes.txt"_s));
    for (int i = 0; i < 5; ++i)
        qputenv(names[i], saved[i]);
    EXPECT_TRUE(video);
    EXPECT_FALSE(text);
}

} // namespace
