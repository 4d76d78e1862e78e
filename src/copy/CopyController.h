#pragma once

#include "CopyHost.h"
#include "CopySession.h"
#include "CopyState.h"
#include "DamageReport.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

namespace vindaro::copy {

class ThreadedCopyHost;

// What the copy controller needs of the window it serves: its modal boxes and the two choice dialogs.
class CopyPrompts
{
public:
    virtual ~CopyPrompts() = default;
    // A message box; answers platform::kAnswerOk, kAnswerYes or kAnswerNo.
    virtual int showBox(const platform::MessageBox& box) = 0;
    virtual ContinueChoice askContinueCopy(const QString& source, const QString& destination) = 0;
    virtual ExistingFileAnswer askExistingFile(const QString& source, const QString& destination) = 0;
};

// What the copy area's controls show, as the engine's switches and the buttons leave them.
struct CopyControls
{
    // The list box, the start and source buttons, the title bar and the picture buttons: off while a copy
    // runs or is paused.
    bool idle = true;
    bool destinationEnabled = true; // the destination's button and box: also on when a paused copy lacks room
    bool setUpEnabled = true; // the settings panel's button: also on while paused
    QString pauseCaption;
    bool pauseEnabled = false;
    bool cancelEnabled = false;

    bool operator==(const CopyControls& o) const
    {
        return idle == o.idle && destinationEnabled == o.destinationEnabled && setUpEnabled == o.setUpEnabled
            && pauseCaption == o.pauseCaption && pauseEnabled == o.pauseEnabled
            && cancelEnabled == o.cancelEnabled;
    }
};

// The single copy behind the copy window: the copy state, the worker thread the engine runs on, the
// session, the mode (idle, copying, paused), pause and continue, cancel, the sliders' block sizes and the
// manual skip, the one-second clock, and what quitting does to a copy in hand. The window lays out and
// wires; it shows what the signals say.
//
// The engine runs on a worker thread (ThreadedCopyHost); this object is the CopyHost on the UI thread that
// the worker's calls arrive at, so the window stays usable while a read hangs. The buttons act on
// CopyState, which the block loop reads between blocks.
class CopyController final : public QObject, public CopyHost
{
    Q_OBJECT

public:
    enum class Mode
    {
        Idle,
        Copying,
        Paused
    };

    static const QString kPauseCaption; // "暂停复制[&S]"
    static const QString kContinueCaption; // "继续复制[&P]"

    struct Services
    {
        platform::FileLayer& files;
        ResumeStore& resumeStore;
        DriveFacts& drives;
        CopyPrompts& prompts;
        std::function<void(const QString&)> log; // the operation log's entries
        std::function<int()> clockSecond = {}; // the second of the minute (0..59); the wall clock when empty
        RescueMapStore* maps = nullptr; // where copies keep their rescue maps; none: no map, no refine pass
    };

    explicit CopyController(const Services& services, QObject* parent = nullptr);
    // A copy still running stops after its block, like a pause (the partial destination stays as it is),
    // and the worker is waited for.
    ~CopyController() override;

    // The buttons and sliders, on the UI thread.
    void start(const QString& source, const QString& destination);
    void pauseOrContinue(const QString& source, const QString& destination);
    void cancel(); // the loop leaves after the block in progress and asks about the partial destination
    // The read slider: the block size follows at once (a running loop keeps its step until its next pass).
    void setReadBlocks(int value, const QString& source, const QString& destination);
    // The skip slider. Moving it up by n moves the copy on by n blocks, whether paused (it takes effect
    // when the copy continues) or copying (from the next block read). Moving it down only sets the
    // distance of later skips; while idle only the distance is kept.
    void setSkipBlocks(int value);
    void tick(); // the one-second clock (tmrTime)
    void resetFigures(); // the five figures back to their idle texts

    // The refine pass: after a copy that skipped bytes, read them at once without asking; and at most so
    // many minutes for it (0: no limit).
    void setAutoRefine(bool on) { m_autoRefine = on; }
    void setRefineMinutes(int minutes) { m_refineMinutes = minutes; }
    // After a batch: offers the refine pass for its copies that skipped bytes, then reports the damage
    // (with the files the batch did not reach).
    void afterBatch(const std::vector<DamageInput>& copies, const QStringList& notReached);
    bool isRefining() const { return m_job == Job::Refine; }
    // Any thread: the map of the copy or refine pass in hand, for the picture.
    RescueMap currentMap() const { return m_session->currentMap(); }

    // Exit is refused without a word while a copy runs; a copy already told to cancel may be quit, since
    // its block in progress may hang in a read for minutes on a scratched disc.
    bool mayQuit() const;
    // The program ends: a paused copy leaves its record, so it can be continued later. When the block in
    // progress still hangs in a read, the worker is abandoned: it writes nothing more, the partial file is
    // kept with its record, and workerAbandoned() tells the program not to wait for it.
    void quit();
    bool workerAbandoned() const { return m_workerAbandoned; }

    Mode mode() const { return m_mode; }
    const CopyControls& controls() const { return m_controls; }
    CopyState& state() { return m_state; }
    CopySession& session() { return *m_session; }
    ThreadedCopyHost& worker() { return *m_worker; }

signals:
    void controlsChanged(const vindaro::copy::CopyControls& controls);
    void progressChanged(qint64 position, qint64 sourceLength); // the bar
    void barCleared();
    void figuresChanged(const vindaro::copy::ProgressTexts& texts);
    void jobFinished(int outcome); // a start or continue has run its course on the worker
    void mapChanged(const vindaro::copy::RescueMap& map); // with the figures, never per block
    void refineFiguresChanged(const QString& text); // empty when no refine pass runs
    // Bytes are missing after a copy, a refine pass or a batch: the report is in the log already.
    void damageReportReady(const vindaro::copy::DamageReport& report);

private:
    // CopyHost, on the UI thread.
    int ask(const platform::MessageBox& question) override;
    void notify(const platform::MessageBox& notice) override;
    ContinueChoice askContinueCopy(const QString& source, const QString& destination) override;
    ExistingFileAnswer askExistingFile(const QString& source, const QString& destination) override;
    void log(const QString& entry) override;
    void progress(qint64 position, qint64 sourceLength) override;
    void modeChanged(CopyMode mode) override;

    void onJobFinished(int outcome);
    void startRefine(); // the first of m_refineQueue
    void offerRefine(const QList<QPair<QString, QString>>& copies, const QStringList& notReached);
    void reportDamage();
    void showMap();
    void setControls(const CopyControls& controls);
    void enterIdle();
    int currentSecond() const;

    Services m_services;
    CopyState m_state;
    std::unique_ptr<ThreadedCopyHost> m_worker;
    std::unique_ptr<CopySession> m_session;
    QTimer m_tmrTime;
    Mode m_mode = Mode::Idle;
    CopyControls m_controls;
    int m_skipValue = 10; // the skip slider's value before its latest move
    bool m_workerAbandoned = false;

    enum class Job
    {
        Copy,
        Refine,
    };
    Job m_job = Job::Copy; // the job in hand, or the last one
    QString m_jobSource;
    QString m_jobDestination;
    bool m_autoRefine = false;
    int m_refineMinutes = 0;
    QList<QPair<QString, QString>> m_refineQueue; // (source, destination) still to refine; the first in hand
    QList<QPair<QString, QString>> m_reportCopies; // what the damage report covers
    QStringList m_notReached;
};

} // namespace vindaro::copy

Q_DECLARE_METATYPE(vindaro::copy::CopyControls)
Q_DECLARE_METATYPE(vindaro::copy::RescueMap)
Q_DECLARE_METATYPE(vindaro::copy::DamageReport)
