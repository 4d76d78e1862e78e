#include "CopyController.h"

#include "RescueMessages.h"
#include "ThreadedCopyHost.h"

#include <QTime>

namespace vindaro::copy {

const QString CopyController::kPauseCaption = QStringLiteral("暂停复制[&S]");
const QString CopyController::kContinueCaption = QStringLiteral("继续复制[&P]");

CopyController::CopyController(const Services& services, QObject* parent)
    : QObject(parent)
    , m_services(services)
{
    m_controls.pauseCaption = kPauseCaption;
    m_worker = std::make_unique<ThreadedCopyHost>(static_cast<CopyHost&>(*this));
    m_session = std::make_unique<CopySession>(
        m_state, *m_worker, m_services.files, m_services.resumeStore, m_services.drives);
    m_session->setRescueMapStore(m_services.maps);
    connect(m_worker.get(), &ThreadedCopyHost::jobFinished, this, &CopyController::onJobFinished);
    // The tick is off until a copy starts.
    m_tmrTime.setObjectName(QStringLiteral("tmrTime"));
    m_tmrTime.setParent(this);
    m_tmrTime.setInterval(1000);
    connect(&m_tmrTime, &QTimer::timeout, this, &CopyController::tick);
    qRegisterMetaType<CopyControls>();
    qRegisterMetaType<RescueMap>();
    qRegisterMetaType<DamageReport>();
}

CopyController::~CopyController()
{
    m_tmrTime.setParent(nullptr); // a member: not deleted as a child
    m_state.stopRequested = true;
    m_worker->shutdown();
}

int CopyController::currentSecond() const
{
    return m_services.clockSecond ? m_services.clockSecond() : QTime::currentTime().second();
}

void CopyController::setControls(const CopyControls& controls)
{
    m_controls = controls;
    emit controlsChanged(m_controls);
}

// ---- the buttons and sliders ----

void CopyController::start(const QString& source, const QString& destination)
{
    if (m_worker->isBusy())
        return;
    m_job = Job::Copy;
    m_jobSource = source;
    m_jobDestination = destination;
    m_refineQueue.clear();
    m_worker->run([this, source, destination] { return int(m_session->startCopy(source, destination)); });
}

void CopyController::pauseOrContinue(const QString& source, const QString& destination)
{
    CopyControls controls = m_controls;
    if (m_controls.pauseCaption == kPauseCaption) {
        m_state.copyRunning = false;
        m_state.stopRequested = true;
        m_mode = Mode::Paused;
        controls.pauseCaption = kContinueCaption;
        controls.cancelEnabled = false;
        controls.setUpEnabled = true;
        // The loop leaves after the block in progress, which may hang on a bad sector: continuing is
        // offered once it has left, so that two loops never run at once.
        if (m_worker->isBusy())
            controls.pauseEnabled = false;
        setControls(controls);
        return;
    }
    if (m_worker->isBusy())
        return;
    m_state.copyRunning = true;
    m_state.stopRequested = false;
    m_mode = Mode::Copying;
    controls.pauseCaption = kPauseCaption;
    controls.cancelEnabled = true;
    setControls(controls);
    if (m_job == Job::Refine) {
        startRefine(); // a paused refine pass goes on from its map
        return;
    }
    m_worker->run([this, source, destination] { return int(m_session->resumeCopy(source, destination)); });
}

void CopyController::cancel()
{
    m_state.stopRequested = true;
    m_state.cancelRequested = true;
}

void CopyController::setReadBlocks(int value, const QString& source, const QString& destination)
{
    m_state.readBlocks = value;
    m_session->computeBlockBytes(source, destination);
}

void CopyController::setSkipBlocks(int value)
{
    const int change = value - m_skipValue;
    m_skipValue = value;
    m_state.skipBlocks = value;
    if (change > 0 && m_mode != Mode::Idle)
        m_state.position += qint64(change) * m_state.blockBytes;
}

void CopyController::tick()
{
    if (m_state.refining) {
        // The bar and the copied figure follow the bytes tried; the time counts as for a copy.
        m_state.meter.tick(currentSecond(), 0, 0);
        emit refineFiguresChanged(msg::refineFigures(
            m_state.refineUntriedBytes, m_state.refineBadBytes, m_state.refineFailedReads));
    } else {
        m_state.meter.tick(currentSecond(), m_state.position, m_state.sourceLength);
    }
    emit figuresChanged(m_state.meter.texts());
    showMap();
}

void CopyController::showMap()
{
    if (m_services.maps)
        emit mapChanged(currentMap());
}

void CopyController::startRefine()
{
    if (m_refineQueue.isEmpty() || m_worker->isBusy())
        return;
    m_job = Job::Refine;
    const auto [source, destination] = m_refineQueue.first();
    m_jobSource = source;
    m_jobDestination = destination;
    RefineSettings settings;
    settings.timeBudgetSeconds = qint64(m_refineMinutes) * 60;
    m_state.cancelHeld = false;
    m_worker->run([this, source = source, destination = destination, settings] {
        return int(m_session->refine(source, destination, settings));
    });
}

void CopyController::offerRefine(const QList<QPair<QString, QString>>& copies, const QStringList& notReached)
{
    m_reportCopies = copies;
    m_notReached = notReached;
    m_refineQueue.clear();
    qint64 untried = 0;
    if (m_services.maps) {
        for (const auto& copy : copies) {
            RescueMap map;
            if (!m_services.maps->load(copy.second, map))
                continue;
            const qint64 bytes = map.bytes(RescueState::Untried) + map.bytes(RescueState::NonTrimmed)
                + map.bytes(RescueState::NonScraped);
            if (bytes > 0) {
                untried += bytes;
                m_refineQueue << copy;
            }
        }
    }
    if (m_refineQueue.isEmpty()
        || (!m_autoRefine
            && m_services.prompts.showBox(msg::refineQuestion(untried)) != platform::kAnswerYes)) {
        m_refineQueue.clear();
        reportDamage();
        return;
    }
    startRefine();
}

void CopyController::afterBatch(const std::vector<DamageInput>& copies, const QStringList& notReached)
{
    QList<QPair<QString, QString>> pairs;
    for (const DamageInput& copy : copies)
        pairs << qMakePair(copy.source, copy.destination);
    offerRefine(pairs, notReached);
}

void CopyController::reportDamage()
{
    std::vector<DamageInput> inputs;
    if (m_services.maps) {
        for (const auto& [source, destination] : std::as_const(m_reportCopies)) {
            RescueMap map;
            if (m_services.maps->load(destination, map))
                inputs.push_back(DamageInput{source, destination, map.size(), map});
        }
    }
    const DamageReport report = makeDamageReport(inputs, m_notReached, &m_services.files);
    m_reportCopies.clear();
    m_notReached.clear();
    if (report.isEmpty())
        return;
    log(msg::damageReportEntry(report));
    emit damageReportReady(report);
}

void CopyController::resetFigures()
{
    m_state.meter.reset();
    emit figuresChanged(m_state.meter.texts());
}

bool CopyController::mayQuit() const
{
    return !m_state.copyRunning || m_state.cancelRequested;
}

void CopyController::quit()
{
    if (m_mode != Mode::Paused && !m_worker->isBusy())
        return;
    BlockCopier& copier = m_session->copier();
    copier.abandon();
    copier.saveRecordOnQuit();
    m_workerAbandoned = m_worker->isBusy();
}

void CopyController::onJobFinished(int outcome)
{
    showMap();
    if (m_job == Job::Refine) {
        emit refineFiguresChanged(msg::refineFigures(
            m_state.refineUntriedBytes, m_state.refineBadBytes, m_state.refineFailedReads));
        const auto result = CopyOutcome(outcome);
        if (result != CopyOutcome::Paused && !m_refineQueue.isEmpty())
            m_refineQueue.removeFirst();
    }
    if (m_mode == Mode::Paused) {
        m_state.copyRunning = false;
        CopyControls controls = m_controls;
        controls.pauseCaption = kContinueCaption;
        controls.pauseEnabled = true;
        setControls(controls);
    } else if (m_mode == Mode::Copying) {
        // The engine ended without a switch of its own (it always makes one today): never leave the
        // window believing a copy runs, or it could not be closed.
        m_state.copyRunning = false;
        enterIdle();
    }
    emit jobFinished(outcome);

    // What comes after: the refine pass of a copy that skipped bytes, the next file's pass, the report.
    const auto result = CopyOutcome(outcome);
    if (m_mode == Mode::Paused)
        return;
    if (m_job == Job::Copy && result == CopyOutcome::FinishedWithSkips) {
        offerRefine({qMakePair(m_jobSource, m_jobDestination)}, {});
        return;
    }
    if (m_job == Job::Refine) {
        if (result == CopyOutcome::Cancelled || result == CopyOutcome::Failed)
            m_refineQueue.clear();
        if (!m_refineQueue.isEmpty()) {
            startRefine();
            return;
        }
        reportDamage();
    }
}

void CopyController::enterIdle()
{
    m_mode = Mode::Idle;
    m_tmrTime.stop();
    CopyControls controls = m_controls;
    controls.idle = true;
    controls.destinationEnabled = true;
    controls.setUpEnabled = true;
    controls.pauseEnabled = false;
    controls.cancelEnabled = false;
    setControls(controls);
    emit barCleared(); // the five figures stay: the final ones remain readable
}

// ---- CopyHost on the UI thread ----

int CopyController::ask(const platform::MessageBox& question)
{
    return m_services.prompts.showBox(question);
}

void CopyController::notify(const platform::MessageBox& notice)
{
    m_services.prompts.showBox(notice);
}

ContinueChoice CopyController::askContinueCopy(const QString& source, const QString& destination)
{
    return m_services.prompts.askContinueCopy(source, destination);
}

ExistingFileAnswer CopyController::askExistingFile(const QString& source, const QString& destination)
{
    return m_services.prompts.askExistingFile(source, destination);
}

void CopyController::log(const QString& entry)
{
    if (m_services.log)
        m_services.log(entry);
}

void CopyController::progress(qint64 position, qint64 sourceLength)
{
    m_state.meter.showCopied(position);
    emit progressChanged(position, sourceLength);
    emit figuresChanged(m_state.meter.texts());
}

void CopyController::modeChanged(CopyMode mode)
{
    switch (mode) {
    case CopyMode::Copying: {
        m_state.meter.start(currentSecond()); // the first tick counts from here
        m_mode = Mode::Copying;
        // A running copy offers pause. A pause pressed during the last block, or just before a failure,
        // ends in idle with "继续复制[&P]" still on the button; the next copy must not start with it.
        CopyControls controls;
        controls.idle = false;
        controls.destinationEnabled = false;
        controls.setUpEnabled = false;
        controls.pauseCaption = kPauseCaption;
        controls.pauseEnabled = true;
        controls.cancelEnabled = true;
        setControls(controls);
        m_tmrTime.start();
        break;
    }
    case CopyMode::Stopped:
        m_tmrTime.stop();
        break;
    case CopyMode::Idle:
        enterIdle();
        break;
    case CopyMode::IdleAfterCancel:
        enterIdle();
        resetFigures();
        break;
    case CopyMode::StayPaused: {
        // Too little room to go on: still paused, and the destination may be changed before continuing.
        m_mode = Mode::Paused;
        CopyControls controls = m_controls;
        controls.pauseCaption = kContinueCaption;
        controls.pauseEnabled = true;
        controls.cancelEnabled = false;
        controls.destinationEnabled = true;
        setControls(controls);
        break;
    }
    }
}

} // namespace vindaro::copy
