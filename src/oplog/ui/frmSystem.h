#pragma once

#include "oplog/OperationLog.h"

#include <QWidget>

class QLabel;
class QPlainTextEdit;

namespace vindaro::oplog {
class ChangeMonitor;
}

namespace vindaro::oplog::ui {

class CaptionButton;

// The operation log window: the description, the running text (tText) or the log file as last viewed
// (lText) in the same place, and four drawn buttons: view the file, empty the file, empty the running text,
// close. It shows an OperationLog, which decides; the window lays out and wires.
//
// Loading it (the constructor) starts `monitor`; when there is none or it cannot start, the running text
// begins with "系统不支持操作监视程序." and the window works as a viewer that still takes the copy
// engine's entries. While KeepLoaded is true a close only hides it. Unload() stops the monitor and appends
// the running text to the log file; the destructor unloads a window that was not unloaded.
class frmSystem : public QWidget
{
    Q_OBJECT

public:
    // How many lines tText keeps; older ones leave the view (they stay in the running text or the file).
    static constexpr int kShownLines = 20000;
    // Lines put into tText at one go: a burst is shown in steps of this many, each a few milliseconds, with
    // the window's events handled in between. While the window is hidden a burst waits (the newest
    // kShownLines of it) until it is shown.
    static constexpr int kLinesPerStep = 100;

    frmSystem(OperationLog& log, ChangeMonitor* monitor, QWidget* parent = nullptr);
    ~frmSystem() override;

    void GetFileCopyLog(const QString& description);
    bool KeepLoaded() const { return m_keepLoaded; }
    void setKeepLoaded(bool keep) { m_keepLoaded = keep; }
    bool isMonitoring() const { return m_monitor != nullptr; }
    bool isUnloaded() const { return m_unloaded; }
    void Unload();

    OperationLog& log() { return m_log; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void buildWindow();
    void appendToView(const QString& text);
    void showPendingStep();
    void clearView();
    void showShownText();

    OperationLog& m_log;
    ChangeMonitor* m_monitor = nullptr; // null when not monitoring
    bool m_keepLoaded = false;
    bool m_unloaded = false;

    QLabel* m_lblTitle = nullptr;
    QPlainTextEdit* m_tText = nullptr;
    QPlainTextEdit* m_lText = nullptr;
    QString m_pending; // text not yet in tText, LF line ends
    int m_pendingLines = 0;
    bool m_clearBeforePending = false; // what tText holds is older than the kShownLines lines pending
    bool m_stepScheduled = false;
};

} // namespace vindaro::oplog::ui
