#include "CopySession.h"

#include "CopyMessages.h"
#include "CopyText.h"
#include "RescueMessages.h"
#include "files/Format.h"
#include "platform/Volumes.h"

#include <QDir>
#include <QFileInfo>

namespace vindaro::copy {

using platform::BoxButtons;
using platform::BoxIcon;
using platform::IoResult;
using platform::MessageBox;

using text::folderOf;
using text::kCrLf;
using text::kIndent;
using text::notice;
using text::question;

namespace {

// Whether two paths name one file: the same cleaned absolute path, or the same file through links.
bool isSameFile(const QString& source, const QString& destination)
{
    const QFileInfo a(source);
    const QFileInfo b(destination);
    if (QDir::cleanPath(a.absoluteFilePath()) == QDir::cleanPath(b.absoluteFilePath()))
        return true;
    const QString canonicalA = a.canonicalFilePath(); // through symbolic links; empty when missing
    return !canonicalA.isEmpty() && canonicalA == b.canonicalFilePath();
}

} // namespace

ContinueChoice continueChoiceFromCode(int code)
{
    switch (code) {
    case 1:
        return ContinueChoice::StartOver;
    case 2:
        return ContinueChoice::Continue;
    default:
        return ContinueChoice::GiveUp;
    }
}

ExistingFileChoice existingFileChoiceFromCode(int code)
{
    switch (code) {
    case 1:
        return ExistingFileChoice::Overwrite;
    case 2:
        return ExistingFileChoice::Append;
    case 3:
        return ExistingFileChoice::Merge;
    case 4:
        return ExistingFileChoice::Delete;
    case 5:
        return ExistingFileChoice::Rename;
    default:
        return ExistingFileChoice::GiveUp;
    }
}

bool DriveFacts::sourceDiscNotReady(const QString& path)
{
    return driveType(path) == platform::kDriveCdRom && !driveIsReady(path);
}

std::function<bool(const QString&)> cdRomNotReadyProbe(DriveFacts& drives)
{
    return [&drives](const QString& path) { return drives.sourceDiscNotReady(path); };
}

bool isNetworkPath(const QString& path)
{
    return path.startsWith(QLatin1String("//")) || path.startsWith(QLatin1String("\\\\"))
        || path.contains(QLatin1String("://"));
}

CopySession::CopySession(CopyState& state, CopyHost& host, platform::FileLayer& files,
    ResumeStore& resumeStore, DriveFacts& drives)
    : m_state(state)
    , m_host(host)
    , m_files(files)
    , m_resumeStore(resumeStore)
    , m_drives(drives)
    , m_copier(state, host, files, resumeStore, cdRomNotReadyProbe(drives))
{
}

qint64 continuePosition(const ResumeRecord& record, const QString& destination, platform::FileLayer& files)
{
    IoResult io;
    const qint64 length = files.length(destination, io);
    if (!io.ok())
        return 1;
    return std::clamp<qint64>(record.continuePosition, 1, std::max<qint64>(1, length));
}

void continueMergePositions(const ResumeRecord& record, const QString& destination,
    platform::FileLayer& files, qint64& position, qint64& mergePosition)
{
    IoResult io;
    const qint64 length = std::max<qint64>(0, files.length(destination, io));
    position = std::max<qint64>(1, record.continuePosition);
    mergePosition = std::max<qint64>(1, record.writePosition);
    // Bytes before the write position must all be there (the one at it is rewritten).
    const qint64 lost = mergePosition - 1 - length;
    if (lost <= 0)
        return;
    if (position - lost < 1) {
        position = 1;
        mergePosition = length + 1;
        return;
    }
    position -= lost;
    mergePosition -= lost;
}

void applyContinuePositions(
    const ResumeRecord& record, const QString& destination, platform::FileLayer& files, CopyState& state)
{
    if (!record.merge) {
        state.position = continuePosition(record, destination, files);
        return;
    }
    qint64 position = 1;
    qint64 mergePosition = 1;
    continueMergePositions(record, destination, files, position, mergePosition);
    state.position = position;
    state.mergePosition = mergePosition;
}

qint64 blockBytesFor(int readBlocks, const QString& source, const QString& destination, DriveFacts& drives,
    int platformFamily, qint64 currentBlockBytes)
{
    qint64 factor = 4096;
    if (!isNetworkPath(source) && !isNetworkPath(destination)) {
        switch (drives.driveType(source)) {
        case platform::kDriveCdRom:
            // DVD video sectors are read a little larger than VCD ones
            factor = source.right(3).toUpper() == QLatin1String("VOB") ? 5120 : 4096;
            break;
        case platform::kDriveFixed:
            if (platformFamily == 0)
                return currentBlockBytes; // left as it was
            factor = platformFamily == 1 ? 61440 : 6144;
            break;
        case platform::kDriveRemovable:
            factor = drives.isFloppy(source) ? 128 : 1024;
            break;
        default:
            break;
        }
    }
    return qint64(readBlocks) * factor;
}

qint64 CopySession::computeBlockBytes(const QString& source, const QString& destination)
{
    m_state.blockBytes = blockBytesFor(
        m_state.readBlocks, source, destination, m_drives, m_platformFamily, m_state.blockBytes);
    return m_state.blockBytes;
}

void CopySession::enterCopyingState()
{
    m_copier.enterCopyingState();
}

void CopySession::logLowSpace(
    const QString& source, const QString& destination, double freeBytes, qint64 sourceLength)
{
    m_host.log(msg::lowSpaceEntry(source, m_drives.driveName(destination), freeBytes, sourceLength));
}

CopyOutcome CopySession::run(const QString& source, const QString& destination, bool merge)
{
    m_merging = merge;
    {
        const std::lock_guard<std::mutex> lock(m_refineMutex);
        m_lastRefined = RescueMap(); // the copy's own map is the current one now
    }
    const qint64 step = m_state.blockBytes;
    const CopyOutcome outcome = merge ? m_copier.mergeBlocks(source, destination, step)
                                      : m_copier.copyBlocks(source, destination, step);
    if (outcome == CopyOutcome::Finished || outcome == CopyOutcome::FinishedWithSkips)
        m_resumeStore.remove(destination); // the file is complete: a record would only mislead later
    return outcome;
}

bool CopySession::refuseSameFile(const QString& source, const QString& destination)
{
    if (!isSameFile(source, destination))
        return false;
    m_host.notify(msg::sameFileNotice());
    return true;
}

CopyOutcome CopySession::startOver(const QString& source, const QString& destination)
{
    // Emptying the source itself would lose it before a byte is read: overwriting it is refused.
    if (refuseSameFile(source, destination))
        return CopyOutcome::NotStarted;
    // The user chose to overwrite: only here is an existing destination emptied.
    m_files.truncate(destination);
    m_resumeStore.remove(destination);
    m_copier.forgetMap(destination);
    m_state.position = 1;
    enterCopyingState();
    return run(source, destination, false);
}

CopyOutcome CopySession::startCopy(const QString& source, const QString& destination)
{
    if (source.trimmed().isEmpty() || destination.trimmed().isEmpty()) {
        m_host.notify(msg::emptyPathsNotice());
        return CopyOutcome::NotStarted;
    }

    if (!isNetworkPath(destination)) {
        IoResult io;
        const qint64 sourceLength = m_files.length(source, io);
        m_state.sourceLength = sourceLength;
        const double free = m_drives.freeBytes(destination);
        if (free < 0) {
            m_host.notify(msg::invalidDestinationNotice());
            return CopyOutcome::NotStarted;
        }
        if (double(sourceLength) > free) {
            logLowSpace(source, destination, free, sourceLength);
            const int answer
                = m_host.ask(msg::lowSpaceQuestion(m_drives.driveName(destination), free, sourceLength));
            if (answer != platform::kAnswerYes)
                return CopyOutcome::NotStarted;
        }
    }

    computeBlockBytes(source, destination);

    if (!m_files.exists(destination)) {
        m_state.position = 1;
        enterCopyingState();
        return run(source, destination, false);
    }
    return existingDestination(source, destination);
}

CopyOutcome CopySession::existingDestination(const QString& source, QString destination)
{
    // A new name that exists too brings the same choices for that file: nothing is ever written into an
    // existing file the user did not choose.
    for (;;) {
        ResumeRecord record;
        const bool hasRecord = m_resumeStore.load(destination, record);
        if (hasRecord) {
            const ContinueChoice answer = m_host.askContinueCopy(source, destination);
            if (answer == ContinueChoice::StartOver)
                return startOver(source, destination);
            if (answer != ContinueChoice::Continue)
                return CopyOutcome::NotStarted;
            // A merge goes on as a merge: a plain copy from its read position would write the wrong part
            // of the source over the user's own bytes.
            applyContinuePositions(record, destination, m_files, m_state);
            m_state.elapsedSeconds = record.elapsedSeconds;
            m_host.log(msg::continuedEntry(source, destination));
            enterCopyingState();
            return run(source, destination, record.merge);
        }

        const ExistingFileAnswer answer = m_host.askExistingFile(source, destination);
        IoResult io;
        switch (answer.choice) {
        case ExistingFileChoice::Overwrite:
            return startOver(source, destination);
        case ExistingFileChoice::Append:
            m_state.position = std::max<qint64>(1, m_files.length(destination, io));
            enterCopyingState();
            return run(source, destination, false);
        case ExistingFileChoice::Merge:
            m_state.position = 1;
            m_state.mergePosition = m_files.length(destination, io) + 1;
            enterCopyingState();
            return run(source, destination, true);
        case ExistingFileChoice::Delete:
            m_files.remove(destination);
            m_resumeStore.remove(destination);
            m_copier.forgetMap(destination);
            return CopyOutcome::NotStarted;
        case ExistingFileChoice::Rename: {
            const QString newName = answer.newName.trimmed();
            if (newName.isEmpty() || newName.contains(QLatin1Char('/')))
                return CopyOutcome::NotStarted;
            destination = folderOf(destination) + newName;
            if (m_files.exists(destination))
                continue; // ask again, for the file of that name

            m_state.position = 1;
            enterCopyingState();
            return run(source, destination, false);
        }
        case ExistingFileChoice::GiveUp:
            break;
        }
        return CopyOutcome::NotStarted;
    }
}

CopyOutcome CopySession::refine(
    const QString& source, const QString& destination, const RefineSettings& settings)
{
    if (!m_maps) {
        m_host.notify(msg::noRescueMapNotice(destination));
        return CopyOutcome::Failed;
    }
    RefinePass pass(m_state, m_host, m_files, *m_maps);
    {
        const std::lock_guard<std::mutex> lock(m_refineMutex);
        m_refine = &pass;
    }
    const CopyOutcome outcome = pass.refine(source, destination, settings);
    const std::lock_guard<std::mutex> lock(m_refineMutex);
    m_refine = nullptr;
    m_lastRefined = pass.map();
    return outcome;
}

RescueMap CopySession::currentMap() const
{
    {
        const std::lock_guard<std::mutex> lock(m_refineMutex);
        if (m_refine)
            return m_refine->map();
        if (m_lastRefined.size() > 0)
            return m_lastRefined;
    }
    return m_copier.rescueMap();
}

CopyOutcome CopySession::resumeCopy(const QString& source, const QString& destination)
{
    // A paused merge goes on as a merge: writing its blocks at copy positions would spoil the file.
    const bool merge = m_merging;
    if (isNetworkPath(destination)) {
        enterCopyingState();
        return run(source, destination, merge);
    }

    IoResult io;
    const qint64 sourceLength = m_files.length(source, io);
    m_state.sourceLength = sourceLength;
    const double free = m_drives.freeBytes(destination);
    const auto stayPaused = [this] {
        m_state.copyRunning = false;
        m_state.stopRequested = true;
        m_host.modeChanged(CopyMode::StayPaused);
        return CopyOutcome::Paused;
    };
    if (free < 0) {
        // The destination was changed to a path with no drive: say so and stay paused.
        m_host.notify(msg::invalidDestinationNotice());
        return stayPaused();
    }
    if (double(sourceLength - m_state.position) > free) {
        logLowSpace(source, destination, free, sourceLength);
        const int answer
            = m_host.ask(msg::lowSpaceOnResumeQuestion(m_drives.driveName(destination), free, sourceLength));
        if (answer != platform::kAnswerYes)
            return stayPaused();
        enterCopyingState();
        return run(source, destination, merge);
    }

    if (!m_files.exists(destination)) {
        // The user typed a new destination while paused: it gets the whole source, from the first byte,
        // rather than a file that starts with a hole.
        m_state.position = 1;
        enterCopyingState();
        return run(source, destination, false);
    }

    const int answer = m_host.ask(msg::overwriteOrAppendQuestion(destination));
    if (answer == platform::kAnswerYes) {
        if (refuseSameFile(source, destination))
            return stayPaused(); // another destination can be chosen before continuing
        return startOver(source, destination);
    }
    enterCopyingState();
    return run(source, destination, merge);
}

} // namespace vindaro::copy
