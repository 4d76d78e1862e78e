// vindaro-info FILE...: prints the summary the property window shows for MP3, SWF and ZIP files, the
// resource tree and version text of EXE and DLL modules, and the tracks and files of a disc.
#include "InfoText.h"
#include "ZipInformation.h"
#include "disc/Disc.h"
#include "files/Format.h"
#include "pe/PeImage.h"
#include "pe/VersionInfo.h"
#include "platform/linux/LinuxVolumes.h"
#include "resources/ResourceTexts.h"
#include "sysinfo/ProgramInfo.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <cstdio>
#include <iterator>

namespace {

using namespace vindaro::info;

void write(FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
}

// The summary texts use CR LF; a terminal wants LF.
QString unixLines(QString text)
{
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

void printHelp()
{
    write(stdout,
        QStringLiteral("用法：vindaro-info 文件...\n"
                       "显示 MP3、SWF 和 ZIP 文件的摘要信息（与文件属性窗口的“摘要”页相同）：\n"
                       "  MP3  ID3v1 标签信息和 MPEG 信息\n"
                       "  SWF  Flash 影片信息（仅限未压缩的影片）\n"
                       "  ZIP  压缩包中的文件和文件夹列表及统计\n"
                       "  EXE、DLL  资源树（类型、名称、字节数）和版本信息\n"
                       "光盘（光驱设备、已挂载光盘的挂载点，或 .cue、.bin、.nrg、.toc、.iso 光盘映像）：\n"
                       "  轨道，以及光盘上的文件和文件夹，每个文件的扇区模式和实际大小\n"
                       "  （Mode 2 Form 2 文件按每扇区 2,324 字节计，即复制得到的大小）\n"
                       "选项：\n"
                       "  -h, --help  显示此帮助\n"
                       "  --version   显示版本号\n"
                       "任一文件无法读取时，退出码为 1。\n"));
}

bool printZip(const QString& path)
{
    ZipInformation zip;
    write(stdout, ZipInformation::columnCaptions().join(QLatin1Char('\t')) + QLatin1Char('\n'));
    const bool opened = zip.readZip(path, [](const ZipRow& row) {
        const QStringList cells = row.isFolder
            ? QStringList{row.text, QString(), row.modified}
            : QStringList{row.text, row.size, row.modified, row.ratio, row.compressedSize, row.crc};
        write(stdout, cells.join(QLatin1Char('\t')) + QLatin1Char('\n'));
        return true;
    });
    if (!opened)
        return false;
    write(stdout, zip.getFileQuantitySize().join(QLatin1Char('\n')) + QLatin1Char('\n'));
    return true;
}

// The resource tree as the browser shows it, one line per type (its key "#N" or its name, a tab, its
// text) and per resource below it (a tab, its name, a tab, its size as the browser finds it), then the
// version text. False when the file is no module.
bool printModule(const QString& path)
{
    using namespace vindaro::info::pe;
    const PeImage image = PeImage::fromFile(path);
    if (!image.isValid())
        return false;
    write(stdout, QStringLiteral("资源：\n"));
    const QList<ResourceId> types = image.resourceTypes();
    if (types.isEmpty())
        write(stdout, QStringLiteral("（没有资源）\n"));
    for (const ResourceId& type : types) {
        const QString key = type.isInteger ? QStringLiteral("#%1").arg(type.number) : type.name;
        write(stdout,
            key + QLatin1Char('\t')
                + (type.isInteger ? vindaro::info::resources::resourceTypeText(type.number) : type.name)
                + QLatin1Char('\n'));
        for (const ResourceId& name : image.resourceNames(type)) {
            const QString nameText = name.isInteger ? QStringLiteral("#%1").arg(name.number) : name.name;
            const auto entry = image.find(type.text(), nameText);
            write(stdout, QStringLiteral("\t%1\t%2 字节\n").arg(name.text()).arg(entry ? entry->size : 0));
        }
    }
    const QString version = moduleVersionText(image);
    write(stdout, QStringLiteral("版本信息：\n"));
    write(stdout,
        version.isEmpty() ? QStringLiteral("（没有版本信息）\n") : unixLines(version) + QLatin1Char('\n'));
    return true;
}

QString sectorModeText(const vindaro::disc::DiscEntry& entry)
{
    using vindaro::disc::SectorMode;
    if (entry.folder)
        return QStringLiteral("文件夹");
    switch (entry.mode) {
    case SectorMode::Form2:
        return QStringLiteral("Mode 2 Form 2");
    case SectorMode::Form1:
        return QStringLiteral("Mode 2 Form 1");
    case SectorMode::Mode1:
        break;
    }
    return QStringLiteral("Mode 1");
}

// The disc in `source` (a drive or an image): its tracks, then every file and folder with its sector
// mode, the size its copy holds, the size the directory records, its first sector and its sector count.
// False, with the reason on stderr, when the disc cannot be opened.
bool printDisc(const QString& path, const QString& source)
{
    using namespace vindaro;
    disc::DiscFailure failure;
    const std::unique_ptr<disc::Disc> opened = disc::Disc::open(source, failure);
    if (!opened) {
        write(stderr, QStringLiteral("vindaro-info：") + failure.message + QLatin1Char('\n'));
        return false;
    }
    write(stdout, QStringLiteral("== %1 ==\n").arg(path));
    const QString label = opened->volumeLabel();
    if (!label.isEmpty())
        write(stdout, QStringLiteral("卷标：%1\n").arg(label));
    write(stdout, QStringLiteral("轨道\t起始扇区\t结束扇区\t格式\n"));
    for (const disc::DiscTrack& track : opened->tracks()) {
        write(stdout,
            QStringLiteral("%1\t%2\t%3\t%4\n")
                .arg(track.number)
                .arg(track.firstLsn)
                .arg(track.lastLsn)
                .arg(track.format));
    }
    const QList<disc::DiscEntry> entries = opened->entries();
    if (entries.isEmpty()) {
        write(stdout, QStringLiteral("（光盘上没有可读的 ISO 9660 文件系统）\n"));
        return true;
    }
    write(stdout, QStringLiteral("文件\t扇区模式\t大小（字节）\t目录记载（字节）\t起始扇区\t扇区数\n"));
    for (const disc::DiscEntry& entry : entries) {
        if (entry.folder) {
            write(stdout, entry.path + QStringLiteral("/\t") + sectorModeText(entry) + QLatin1Char('\n'));
            continue;
        }
        write(stdout,
            QStringList{entry.path, sectorModeText(entry), files::groupDigits(entry.length()),
                files::groupDigits(entry.recordedBytes), QString::number(entry.lsn),
                QString::number(entry.sectors)}
                    .join(QLatin1Char('\t'))
                + QLatin1Char('\n'));
    }
    return true;
}

// The disc `path` names: a drive or an image itself, or the mount point of a mounted ISO 9660 disc; empty
// for any other file.
QString discOf(const QString& path)
{
    using namespace vindaro;
    if (disc::discKindOf(path) != disc::DiscKind::None)
        return path;
    if (!QFileInfo(path).isDir())
        return {};
    platform::LinuxVolumes volumes;
    const std::optional<platform::Volume> volume = volumes.volumeOf(QFileInfo(path).absoluteFilePath());
    if (volume && volume->fsType == QLatin1String("iso9660")
        && QFileInfo(volume->mountPoint) == QFileInfo(path))
        return volume->device;
    return {};
}

// False when the file could not be read at all.
bool printFile(const QString& path)
{
    if (const QString source = discOf(path); !source.isEmpty())
        return printDisc(path, source);
    const QFileInfo info(path);
    QFile probe(path);
    if (!info.exists() || info.isDir() || !probe.open(QIODevice::ReadOnly)) {
        write(
            stderr, QStringLiteral("vindaro-info：无法读取文件“%1”：文件不存在或没有读取权限。\n").arg(path));
        return false;
    }
    probe.close();
    write(stdout, QStringLiteral("== %1 ==\n").arg(path));
    const QString kind = path.right(3).toUpper();
    if (kind == QLatin1String("MP3")) {
        write(stdout, unixLines(mp3Summary(path)).mid(1) + QLatin1Char('\n'));
    } else if (kind == QLatin1String("SWF")) {
        const QString text = flashSummary(path);
        if (text.isEmpty())
            write(stdout, QStringLiteral("（不是未压缩的 Flash 影片，没有可显示的信息）\n"));
        else
            write(stdout, unixLines(text).mid(1) + QLatin1Char('\n'));
    } else if (kind == QLatin1String("ZIP")) {
        if (!printZip(path)) {
            write(stderr, QStringLiteral("vindaro-info：无法读取文件“%1”。\n").arg(path));
            return false;
        }
    } else if (kind == QLatin1String("EXE") || kind == QLatin1String("DLL")) {
        if (!printModule(path)) {
            write(stderr, QStringLiteral("vindaro-info：文件“%1”不是可读的 EXE 或 DLL 模块。\n").arg(path));
            return false;
        }
    } else {
        write(stderr,
            QStringLiteral("vindaro-info：不支持文件“%1”的类型，只能显示 MP3、SWF、ZIP、EXE、DLL "
                           "文件和光盘（光驱或光盘映像）的信息。\n")
                .arg(path));
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QStringList files = QCoreApplication::arguments().mid(1);
    bool onlyFiles = false;
    QStringList paths;
    for (const QString& argument : files) {
        if (!onlyFiles && argument == QLatin1String("--")) {
            onlyFiles = true;
        } else if (!onlyFiles && (argument == QLatin1String("-h") || argument == QLatin1String("--help"))) {
            printHelp();
            return 0;
        } else if (!onlyFiles && argument == QLatin1String("--version")) {
            write(stdout, vindaro::sysinfo::versionLine(QStringLiteral("vindaro-info")) + QLatin1Char('\n'));
            return 0;
        } else if (!onlyFiles && argument.startsWith(QLatin1Char('-')) && argument.size() > 1) {
            write(
                stderr, QStringLiteral("vindaro-info：未知选项“%1”。请用 --help 查看用法。\n").arg(argument));
            return 2;
        } else {
            paths << argument;
        }
    }
    if (paths.isEmpty()) {
        printHelp();
        return 2;
    }
    bool allRead = true;
    for (qsizetype i = 0; i < paths.size(); ++i) {
        if (i > 0)
            write(stdout, QStringLiteral("\n"));
        allRead = printFile(paths.at(i)) && allRead;
    }
    std::fflush(stdout);
    return allRead ? 0 : 1;
}
