#include "CopyTool.h"

#include "ConsoleCopyHost.h"
#include "copy/BatchCopier.h"
#include "copy/CopySession.h"
#include "copy/FileResumeStore.h"
#include "copy/RescueMapStore.h"
#include "copy/RescueMessages.h"
#include "copy/VolumeDriveFacts.h"
#include "disc/DiscFileLayer.h"
#include "oplog/OperationLog.h"
#include "platform/linux/LinuxVolumes.h"
#include "sysinfo/ProgramInfo.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QTextStream>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <limits>
#include <thread>
#include <unistd.h>

namespace {

using namespace vindaro;

// Exit statuses, so a script can tell the outcomes apart.
enum ExitStatus : int
{
    kExitFinished = 0,
    kExitFinishedWithSkips = 1, // unreadable stretches were skipped (zeros in the copy)
    kExitCancelled = 2, // Ctrl-C: the partial file and its resume record are kept
    kExitFailed = 3,
    kExitNotStarted = 4, // refused before the first block: existing destination, no room, bad path
    kExitUsage = 64,
};

const char* const kHelp = R"(用法：vindaro-copy [选项] 源文件 目标文件
      vindaro-copy [选项] --to-folder 文件夹 源文件...

按块复制文件；遇到读不出的块就跳过去继续复制，所以有划痕的光盘也能得到一个可播放的副本。

源文件也可以写成“光驱或光盘映像:/光盘上的路径”，例如 /dev/sr0:/MPEGAV/AVSEQ01.DAT 或
影片.cue:/MPEGAV/AVSEQ01.DAT（BIN/CUE、NRG、cdrdao 和 ISO 映像）。VCD 的 MPEGAV/*.DAT 这类
Mode 2 Form 2 扇区上的文件，无论是这样写还是写成已挂载光盘上的路径，都按扇区整个读出（每扇区 2,324
字节），并校验每个扇区的 EDC：读不出或校验错误的扇区按读不出的块跳过，并记入日志。

选项：
  -r, --read-blocks N    每次读取的块数，1 到 100，默认 10（盘片质量不好时设小一点；批量复制固定为 10）
  -s, --skip-blocks N    每次跳过的块数，1 到 30，默认 10；读不出时跳过 N×8 块（批量复制固定跳过 80 块）
  -e, --existing 方式    目标文件已经存在时的做法：
                           overwrite  覆盖该文件（批量复制时覆盖所有已存在的文件）
                           continue   从上次中断的位置继续复制（没有续拷记录时同 append）
                           append     以追加方式继续复制（从目标文件的长度处继续）
                           merge      把源文件合并到目标文件的末尾
                           rename:名字 以新的文件名复制到同一文件夹
                           keep       批量复制：两个都保留（长度相同时跳过，不同时复制为 N[01]文件名）
                           skip       放弃复制（默认；批量复制时到此结束）
  -t, --to-folder 文件夹 批量复制：把所有源文件复制到这个文件夹
  -k, --keep-folders     批量复制：在文件夹下保留源文件所在卷下的文件夹路径
                           （/media/cdrom/MPEGAV/AVSEQ01.DAT → 文件夹/MPEGAV/AVSEQ01.DAT）
  -y, --ignore-space     目标磁盘空间不足时仍然继续复制
      --refine           复制完成后再读取跳过的部分：只读没有读过的扇区，先从每段跳过部分的两头往里读，
                           再读中间，尽量少碰读不出的扇区（批量复制时对每个有跳过部分的文件都这样做）
      --refine-only      不复制，只读取目标文件以前跳过的部分（按它的复制记录图，或 --map 给出的映射文件）
      --refine-time 秒   读取跳过部分最多用这么多秒（默认不限）
      --sector 字节数    读取跳过部分时一次读的扇区大小（默认按设备：光盘 2048，其他 512）
      --map 映射文件     GNU ddrescue 格式的映射文件：存在时先读入，作为目标文件的复制记录图（与源文件大小
                           不符时拒绝，什么也不改）；结束时把复制记录图写回这个文件
  -q, --quiet            不显示进度行
  -h, --help             显示本说明
      --version          显示版本号

输出：日志条目（“文件跳过：”等）写到标准输出；进度行（已复制、已用时间、剩余时间、估计消耗、
存取速度）写到标准错误。按 Ctrl-C 取消复制：已复制的部分保留，并保存续拷记录，
以后用 --existing continue 继续。再按一次 Ctrl-C 立即退出（读取卡住时也保存续拷记录）。

复制有跳过的部分时，结束后在标准输出列出损坏报告：哪些文件缺了哪些字节（MPEG 节目流还给出缺损处的播放时间），
以及批量复制没有复制到的文件。

退出状态：0 复制完成；1 复制完成，但跳过了读不出的部分；2 已取消；3 复制失败（批量复制时有文件失败）；
          4 没有开始复制（目标文件已存在、空间不足或路径无效）；64 用法错误。
)";

copy::CopyState* g_state = nullptr;
volatile std::sig_atomic_t g_interrupts = 0;
volatile std::sig_atomic_t g_quitPipe = -1; // written to by a second Ctrl-C when a watcher listens

void onInterrupt(int)
{
    if (++g_interrupts > 1) {
        if (g_interrupts == 2 && g_quitPipe >= 0) {
            const char wake = 1;
            if (::write(g_quitPipe, &wake, 1) == 1)
                return; // the watcher saves the record and ends the process
        }
        ::_exit(128 + SIGINT);
    }
    // Lock-free atomics: safe to store from a signal handler. The loop leaves after the block in progress;
    // held, so a Ctrl-C during the preparation is not undone when the copy starts.
    g_state->cancelHeld.store(true);
    g_state->cancelRequested.store(true);
    g_state->stopRequested.store(true);
}

void installInterruptHandler(copy::CopyState& state)
{
    g_state = &state;
    g_interrupts = 0;
    struct sigaction action
    {
    };
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGHUP, &action, nullptr); // a closed terminal cancels too: the record and the log are kept
}

// A second Ctrl-C usually means the copy hangs in a read. Nothing but exiting is safe in a signal
// handler, so a thread waits for it here: it runs `beforeExit` (which stops the copy from writing anything
// more and saves the record of what was written, and writes the operation log), and ends the process
// without waiting for the stuck read. A third Ctrl-C exits at once, should even that hang.
void watchForQuit(std::function<void()> beforeExit)
{
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0)
        return; // a second Ctrl-C then exits at once, as before
    std::thread([beforeExit = std::move(beforeExit), readEnd = fds[0]] {
        char wake = 0;
        while (::read(readEnd, &wake, 1) < 0 && errno == EINTR) { }
        beforeExit();
        ::_exit(128 + SIGINT);
    }).detach();
    g_quitPipe = fds[1];
}

// The tool's entries go to the same OperationNotes.log as the window's, appended when the tool ends.
struct LogAtExit
{
    oplog::OperationLog& log;
    ~LogAtExit() { log.writeRunningText(); }
};

bool parseNumber(const QString& text, int low, int high, int& value)
{
    bool ok = false;
    value = text.toInt(&ok);
    return ok && value >= low && value <= high;
}

} // namespace

namespace vindaro::copy {

namespace {

// Sources on a disc that cannot be opened (no permission on the drive, no disc) are said here, in the
// program's words; true when every source is one of them, and nothing is to be copied.
bool refuseDiscSources(disc::DiscFileLayer* discs, const QStringList& sources, QTextStream& err)
{
    if (!discs)
        return false;
    // One look at the mount table for the whole list: only names on a mounted disc, or naming a drive or
    // image, can be a disc's file.
    platform::LinuxVolumes volumes;
    const QList<platform::Volume> mounted = volumes.list();
    qsizetype refused = 0;
    for (const QString& source : sources) {
        const auto volume = platform::volumeHolding(mounted, source);
        if (!source.contains(QLatin1String(":/")) && (!volume || volume->fsType != QLatin1String("iso9660")))
            continue;
        const QString problem = discs->problemWith(source);
        if (!problem.isEmpty()) {
            err << problem << '\n';
            ++refused;
        }
    }
    err.flush();
    return refused > 0 && refused == sources.size();
}

// What the command line asks of the rescue map and the refine pass.
struct RescueOptions
{
    bool refine = false;
    bool refineOnly = false;
    QString mapfile; // read when it exists, written at the end
    RefineSettings settings;
};

// Writes the destination's map to `mapfile` as a ddrescue mapfile: the kept one, or a whole one when the
// copy left none behind because it is complete.
void exportMap(RescueMapStore& maps, const QString& destination, const QString& source,
    platform::FileLayer& files, const QString& mapfile, const QString& creator, QTextStream& err)
{
    RescueMap map;
    MapfileStatus status;
    if (!maps.load(destination, map, &status)) {
        platform::IoResult io;
        const qint64 length = files.length(source, io);
        if (!io.ok() || !files.exists(destination))
            return;
        map = RescueMap(length, RescueState::Copied);
        status = mapfileStatusOf(map);
    }
    QString why;
    if (!writeMapfile(
            mapfile, map, MapfileHeader{creator, QString(), QDateTime::currentDateTime(), {}}, why, status))
        err << msg::mapfileWriteFailed(mapfile, why) << '\n';
}

// The damage report of the copies named (source, destination) by their kept maps, and of the files a batch
// did not reach, printed when there is anything to report.
void reportDamage(RescueMapStore& maps, const QList<QPair<QString, QString>>& copies,
    const QStringList& notReached, platform::FileLayer& files, QTextStream& out)
{
    std::vector<DamageInput> inputs;
    for (const auto& [source, destination] : copies) {
        RescueMap map;
        if (maps.load(destination, map))
            inputs.push_back(DamageInput{source, destination, map.size(), map});
    }
    const DamageReport report = makeDamageReport(inputs, notReached, &files);
    if (report.isEmpty())
        return;
    out << msg::damageReportText(report) << '\n';
    out.flush();
}

int runBatch(ConsoleCopyHost& host, CopyState& state, const QStringList& sources, platform::FileLayer& files,
    disc::DiscFileLayer* discs, oplog::OperationLog& operationLog, RescueMapStore& maps,
    const RescueOptions& rescue)
{
    QTextStream err(stderr);
    if (sources.isEmpty()) {
        err << QStringLiteral("批量复制需要至少一个源文件（见 --help）。\n");
        return kExitUsage;
    }
    switch (host.existing) {
    case ExistingAnswer::GiveUp:
    case ExistingAnswer::Overwrite:
    case ExistingAnswer::KeepBoth:
        break;
    default:
        err << QStringLiteral("批量复制时 --existing 只能是 overwrite、keep 或 skip。\n");
        return kExitUsage;
    }
    // Against the current folder, looked up once rather than once per file.
    const QDir here = QDir::current();
    QStringList absolute;
    absolute.reserve(sources.size());
    for (const QString& source : sources)
        absolute << QDir::cleanPath(here.absoluteFilePath(source));
    if (refuseDiscSources(discs, absolute, err))
        return kExitNotStarted;

    platform::LinuxVolumes volumes;
    VolumeDriveFacts drives(volumes);
    FileResumeStore resumeStore;
    BatchCopier batch(state, host, files, resumeStore, drives);
    batch.copier().setRescueMapStore(&maps);
    host.setBatchCounters(&batch.counters());
    installInterruptHandler(state);
    watchForQuit([&copier = batch.copier(), &operationLog] {
        copier.abandon();
        copier.saveRecordOnQuit();
        operationLog.writeRunningText();
    });
    const BatchResult result = batch.copyingFiles(absolute);
    if (!result.started)
        return kExitNotStarted;
    // The maps of the batch are in hand; only a file the refine pass read again has a newer one kept.
    std::vector<DamageInput> damaged;
    int stillDamaged = 0;
    for (const DamageInput& copy : result.copies) {
        if (copy.map.isComplete())
            continue;
        DamageInput input = copy;
        // The refine pass reads what the batch skipped in this file, as the single copy's would.
        if (rescue.refine && !result.cancelled && !state.stopRequested) {
            CopySession session(state, host, files, resumeStore, drives);
            session.setRescueMapStore(&maps);
            if (session.refine(copy.source, copy.destination, rescue.settings) == CopyOutcome::Finished)
                continue;
            RescueMap refined;
            if (maps.load(copy.destination, refined))
                input.map = refined;
        }
        ++stillDamaged;
        damaged.push_back(std::move(input));
    }
    if (result.copies.empty())
        stillDamaged = result.withSkips; // no maps to go by
    const DamageReport report = makeDamageReport(damaged, result.notReached, &files);
    if (!report.isEmpty()) {
        host.out() << msg::damageReportText(report) << '\n';
        host.out().flush();
    }
    if (result.cancelled)
        return kExitCancelled;
    if (result.failed > 0 || result.syncFailed || result.finished + result.skipped < result.files)
        return kExitFailed;
    return stillDamaged > 0 ? kExitFinishedWithSkips : kExitFinished;
}

} // namespace

int runCopyTool(const QStringList& args, platform::FileLayer& files, disc::DiscFileLayer* discs)
{
    QTextStream out(stdout);
    QTextStream err(stderr);

    copy::CopyState state;
    copy::ConsoleCopyHost host(state, out, err);
    oplog::OperationLog operationLog;
    host.logged = [&operationLog](const QString& entry) { operationLog.GetFileCopyLog(entry); };
    const LogAtExit writeLogAtExit{operationLog};
    int readBlocks = 10;
    int skipBlocks = 10;
    QStringList paths;
    RescueOptions rescue;

    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        const auto value = [&](QString& v) {
            if (i + 1 >= args.size())
                return false;
            v = args[++i];
            return true;
        };
        QString v;
        if (a == QLatin1String("-h") || a == QLatin1String("--help")) {
            out << QString::fromUtf8(kHelp);
            return kExitFinished;
        } else if (a == QLatin1String("--version")) {
            out << sysinfo::versionLine(QStringLiteral("vindaro-copy")) << '\n';
            return kExitFinished;
        } else if (a == QLatin1String("-r") || a == QLatin1String("--read-blocks")) {
            if (!value(v) || !parseNumber(v, 1, 100, readBlocks)) {
                err << QStringLiteral("每次读取的块数必须是 1 到 100 之间的整数。\n");
                return kExitUsage;
            }
        } else if (a == QLatin1String("-s") || a == QLatin1String("--skip-blocks")) {
            if (!value(v) || !parseNumber(v, 1, 30, skipBlocks)) {
                err << QStringLiteral("每次跳过的块数必须是 1 到 30 之间的整数。\n");
                return kExitUsage;
            }
        } else if (a == QLatin1String("-e") || a == QLatin1String("--existing")) {
            if (!value(v)) {
                err << QStringLiteral("--existing 后面缺少做法。\n");
                return kExitUsage;
            }
            if (v == QLatin1String("overwrite"))
                host.existing = copy::ExistingAnswer::Overwrite;
            else if (v == QLatin1String("continue"))
                host.existing = copy::ExistingAnswer::Continue;
            else if (v == QLatin1String("append"))
                host.existing = copy::ExistingAnswer::Append;
            else if (v == QLatin1String("merge"))
                host.existing = copy::ExistingAnswer::Merge;
            else if (v == QLatin1String("skip"))
                host.existing = copy::ExistingAnswer::GiveUp;
            else if (v == QLatin1String("keep"))
                host.existing = copy::ExistingAnswer::KeepBoth;
            else if (v.startsWith(QLatin1String("rename:")) && v.size() > 7
                && !v.mid(7).contains(QLatin1Char('/'))) {
                host.existing = copy::ExistingAnswer::NewName;
                host.newName = v.mid(7);
            } else {
                err << QStringLiteral("不认识的做法：") << v << QStringLiteral("（见 --help）\n");
                return kExitUsage;
            }
        } else if (a == QLatin1String("-t") || a == QLatin1String("--to-folder")) {
            if (!value(v) || v.isEmpty()) {
                err << QStringLiteral("--to-folder 后面缺少文件夹。\n");
                return kExitUsage;
            }
            host.batchFolder = QFileInfo(v).absoluteFilePath();
        } else if (a == QLatin1String("-k") || a == QLatin1String("--keep-folders")) {
            host.batchSameFolder = false;
        } else if (a == QLatin1String("-y") || a == QLatin1String("--ignore-space")) {
            host.ignoreLowSpace = true;
        } else if (a == QLatin1String("-q") || a == QLatin1String("--quiet")) {
            host.showProgress = false;
        } else if (a == QLatin1String("--refine")) {
            rescue.refine = true;
        } else if (a == QLatin1String("--refine-only")) {
            rescue.refineOnly = true;
        } else if (a == QLatin1String("--refine-time")) {
            int seconds = 0;
            if (!value(v) || !parseNumber(v, 1, std::numeric_limits<int>::max(), seconds)) {
                err << QStringLiteral("--refine-time 后面应是正整数的秒数。\n");
                return kExitUsage;
            }
            rescue.settings.timeBudgetSeconds = seconds;
        } else if (a == QLatin1String("--sector")) {
            int bytes = 0;
            if (!value(v) || !parseNumber(v, 1, 1 << 20, bytes)) {
                err << QStringLiteral("--sector 后面应是扇区的字节数。\n");
                return kExitUsage;
            }
            rescue.settings.sectorBytes = bytes;
        } else if (a == QLatin1String("--map")) {
            if (!value(v) || v.isEmpty()) {
                err << QStringLiteral("--map 后面缺少映射文件。\n");
                return kExitUsage;
            }
            rescue.mapfile = QFileInfo(v).absoluteFilePath();
        } else if (a.startsWith(QLatin1Char('-')) && a.size() > 1) {
            err << QStringLiteral("不认识的选项：") << a << QStringLiteral("（见 --help）\n");
            return kExitUsage;
        } else {
            paths << a;
        }
    }
    state.readBlocks = readBlocks;
    state.skipBlocks = skipBlocks;
    if (discs)
        discs->setLog([&host](const QString& entry) { host.log(entry); });
    const QString creator = sysinfo::versionLine(QStringLiteral("Vindaro"));
    copy::FileRescueMapStore maps(creator);
    if (!host.batchFolder.isEmpty()) {
        if (!rescue.mapfile.isEmpty() || rescue.refineOnly) {
            err << QStringLiteral("--map 和 --refine-only 只用于单个文件。\n");
            return kExitUsage;
        }
        return runBatch(host, state, paths, files, discs, operationLog, maps, rescue);
    }
    if (host.existing == copy::ExistingAnswer::KeepBoth) {
        err << QStringLiteral("--existing keep 只用于批量复制（--to-folder）。\n");
        return kExitUsage;
    }
    if (paths.size() != 2) {
        err << QStringLiteral("需要源文件和目标文件两个路径（见 --help）。\n");
        return kExitUsage;
    }
    const QString source = QFileInfo(paths[0]).absoluteFilePath();
    const QString destination = QFileInfo(paths[1]).absoluteFilePath();
    if (QFileInfo(paths[1]).isDir()) {
        err << QStringLiteral("目标文件是一个文件夹：") << destination << '\n';
        return kExitUsage;
    }
    if (refuseDiscSources(discs, {source}, err))
        return kExitNotStarted;

    platform::LinuxVolumes volumes;
    copy::VolumeDriveFacts drives(volumes);
    copy::FileResumeStore resumeStore;
    copy::CopySession session(state, host, files, resumeStore, drives);
    session.setRescueMapStore(&maps);
    if (host.existing == copy::ExistingAnswer::Merge || host.existing == copy::ExistingAnswer::NewName)
        resumeStore.remove(destination); // the choice on the command line stands above an old record

    // A mapfile given and there already: the destination's map from now on (a ddrescue rescue goes on
    // here). One that does not fit the source is refused, and nothing is touched.
    if (!rescue.mapfile.isEmpty() && QFileInfo::exists(rescue.mapfile)) {
        platform::IoResult io;
        const qint64 sourceLength = files.length(source, io);
        const copy::MapfileResult imported = copy::readMapfile(rescue.mapfile, io.ok() ? sourceLength : -1);
        if (!imported.ok() || !io.ok()) {
            err << copy::msg::mapfileRefused(rescue.mapfile, imported)
                       .replace(QLatin1String("\r\n"), QLatin1String("\n"))
                << '\n';
            return kExitNotStarted;
        }
        maps.save(destination, imported.map, imported.status);
    }

    installInterruptHandler(state);
    watchForQuit([&copier = session.copier(), &operationLog] {
        copier.abandon();
        copier.saveRecordOnQuit();
        operationLog.writeRunningText();
    });

    copy::CopyOutcome outcome = copy::CopyOutcome::FinishedWithSkips;
    if (!rescue.refineOnly)
        outcome = session.startCopy(source, destination);
    if ((rescue.refine && outcome == copy::CopyOutcome::FinishedWithSkips) || rescue.refineOnly) {
        outcome = session.refine(source, destination, rescue.settings);
        if (outcome == copy::CopyOutcome::NotStarted && !rescue.refineOnly)
            outcome = copy::CopyOutcome::Finished;
    }
    if (!rescue.mapfile.isEmpty())
        exportMap(maps, destination, source, files, rescue.mapfile, creator, err);
    // A copy that ended (not one that failed or was stopped: its box or Ctrl-C said so) reports its holes.
    if (outcome == copy::CopyOutcome::Finished || outcome == copy::CopyOutcome::FinishedWithSkips)
        reportDamage(maps, {{source, destination}}, {}, files, out);
    // A copy that went on from an earlier run finishes with that run's holes still in it: its map says so.
    RescueMap kept;
    if (outcome == copy::CopyOutcome::Finished && maps.load(destination, kept) && !kept.isComplete())
        outcome = copy::CopyOutcome::FinishedWithSkips;

    switch (outcome) {
    case copy::CopyOutcome::Finished:
        return kExitFinished;
    case copy::CopyOutcome::FinishedWithSkips:
        return kExitFinishedWithSkips;
    case copy::CopyOutcome::Paused: // no pause without a window; a stop without cancel counts as cancelled
    case copy::CopyOutcome::Cancelled:
        return kExitCancelled;
    case copy::CopyOutcome::Failed:
        return kExitFailed;
    case copy::CopyOutcome::NotStarted:
        return rescue.refineOnly ? kExitFinished : kExitNotStarted;
    }
    return kExitFailed;
}

} // namespace vindaro::copy
