// Times the resource tree of a module with many resources and the opening of the property window.
// Usage: property_window_bench <empty folder> [resources=10000]
#include "files/ui/FileIcons.h"
#include "info_pe/PeBuilder.h"
#include "platform/linux/LinuxVolumes.h"
#include "platform/linux/ui/LinuxShell.h"
#include "ui/ResourceBrowser.h"
#include "ui/frmFileProperty.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFontDatabase>
#include <QTreeWidget>

#include <cstdio>

using namespace vindaro;

namespace {

bool writeFile(const QString& path, const QByteArray& bytes, qint64 size = -1)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return false;
    if (size > bytes.size())
        file.resize(size);
    return true;
}

// Resources spread over 20 types, as a large module has them.
QByteArray bigModule(int resources)
{
    testing::PeBuilder pe;
    for (int i = 0; i < resources; ++i)
        pe.add(101 + i % 20, i / 20 + 1, 0x0409, QByteArray(32, static_cast<char>(i)));
    return pe.build();
}

QByteArray bigZip(int entries)
{
    QByteArray bytes;
    const auto le = [&](quint32 value, int width) {
        for (int i = 0; i < width; ++i)
            bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
    };
    for (int i = 0; i < entries; ++i) {
        const QByteArray name = QByteArray("folder/file") + QByteArray::number(i) + ".txt";
        bytes += QByteArray("PK\x03\x04", 4);
        le(20, 2), le(0, 2), le(0, 2), le(0x6000, 2), le(0x2E21, 2), le(0x12345678, 4), le(16, 4), le(16, 4);
        le(static_cast<quint32>(name.size()), 2), le(0, 2);
        bytes += name + QByteArray(16, 'x');
    }
    return bytes + QByteArray("PK\x01\x02", 4);
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // figures appear as they are measured
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s <empty folder> [resources]\n", argv[0]);
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    const int resources = argc > 2 ? std::atoi(argv[2]) : 10'000;
    const QString module = folder + QStringLiteral("/big.dll");
    if (!writeFile(module, bigModule(resources))) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(module));
        return 1;
    }

    {
        // The desktop's first-use costs (font list, MIME database, icon theme), paid once per process.
        QElapsedTimer clock;
        clock.start();
        QFontDatabase::hasFamily(QStringLiteral("宋体"));
        const double fonts = double(clock.nsecsElapsed()) / 1e9;
        files::FileIcons().largePixmap(module);
        std::printf("first use of the font list %.3f s, of file type icons %.3f s\n", fonts,
            double(clock.nsecsElapsed()) / 1e9 - fonts);
    }
    {
        info::ui::ResourceBrowser browser;
        QElapsedTimer clock;
        clock.start();
        browser.openModule(module, QStringLiteral("big.dll"));
        const double fill = double(clock.nsecsElapsed()) / 1e9;
        QTreeWidgetItem* root = browser.rootNode();
        for (int i = 0; root && i < root->childCount(); ++i)
            root->child(i)->setExpanded(true);
        const double all = double(clock.nsecsElapsed()) / 1e9;
        int nodes = 0;
        for (int i = 0; root && i < root->childCount(); ++i)
            nodes += root->child(i)->childCount();
        std::printf("resource tree, %d resources: filled in %.3f s, every type expanded (%d nodes) in %.3f s "
                    "(goal: under 0.2 s)\n",
            resources, fill, nodes, all);
    }

    const struct
    {
        const char* name;
        QByteArray bytes;
        qint64 size;
    } files[] = {
        {"big.dll", {}, -1},
        {"archive.zip", bigZip(10'000), -1},
        {"song.mp3", QByteArray("\xFF\xFB\x90\x64", 4), 64LL << 20},
        {"movie.swf", QByteArray("FWS\x06\x20\0\0\0\x78\0\x05\x5F\0\0\x0F\xA0\0\0\x18\x01\0", 21), -1},
        {"plain.txt", QByteArray("text"), -1},
    };
    platform::LinuxVolumes volumes;
    platform::LinuxShell shell;
    double worst = 0;
    for (const auto& f : files) {
        const QString path = folder + QLatin1Char('/') + QString::fromLatin1(f.name);
        if (!f.bytes.isEmpty() && !writeFile(path, f.bytes, f.size))
            return 1;
        QElapsedTimer clock;
        clock.start();
        info::ui::frmFileProperty window(volumes, shell);
        window.GetInfor(path);
        window.show();
        QCoreApplication::processEvents(); // the first paint
        const double seconds = double(clock.nsecsElapsed()) / 1e9;
        worst = qMax(worst, seconds);
        std::printf("property window of %-12s opened in %.3f s\n", f.name, seconds);
    }
    std::printf("slowest property window: %.3f s (goal: under 0.5 s)\n", worst);
    return 0;
}
