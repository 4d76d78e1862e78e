// Not a test: a program that previews one file and quits when a line arrives on its standard input, so a
// test can watch the process end while the preview's read hangs in a scratched disc.
//   media_quit_probe PATH
#include "fakes/FakeShell.h"
#include "fakes/FakeVolumes.h"
#include "files/FileSystem.h"
#include "media/ui/frmPrevVideo.h"

#include <QApplication>
#include <QSocketNotifier>

#include <cstdio>
#include <unistd.h>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    if (argc != 2)
        return 2;
    vindaro::testing::FakeVolumes volumes;
    vindaro::testing::FakeShell shell;
    vindaro::files::FileSystem fs(volumes, shell);
    auto* preview = new vindaro::media::frmPrevVideo(fs);
    preview->show();
    preview->OpenMediaFile(QString::fromLocal8Bit(argv[1]));
    preview->StartPlay();
    std::puts("playing");
    std::fflush(stdout);

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &app, [preview] {
        preview->close();
        QCoreApplication::quit();
    });
    return app.exec();
}
