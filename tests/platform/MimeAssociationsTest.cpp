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
