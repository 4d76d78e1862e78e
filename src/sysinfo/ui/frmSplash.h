#pragma once

#include "chrome/TitleBars.h"
#include "sysinfo/SplashPage.h"

#include <QDialog>

#include <functional>

class QLabel;
class QPushButton;

namespace vindaro::sysinfo::ui {

// The about window: the program's title, version and maker, and a page of facts about the computer
// (names, memory, operating system, processor). It has no system frame; a press on its background drags
// it. Sure closes it; SystemInfo starts the desktop's system-information tool and closes it.
class frmSplash : public QDialog
{
    Q_OBJECT

public:
    static const QString kOkCaption; // "Sure(&S)"
    static const QString kSysInfoCaption; // "SystemInfo(&I)"

    // facts: what the page shows (gatherSplashFacts() for this machine). startSysInfo: what the SystemInfo
    // button starts; StartSysInfo() when empty.
    explicit frmSplash(
        const SplashFacts& facts, std::function<bool()> startSysInfo = {}, QWidget* parent = nullptr);

    // The system family the page was composed with.
    QString winVersion() const { return m_winVersion; }

    QLabel* lblProductName = nullptr;
    QLabel* lblVersion = nullptr;
    QLabel* lblIssueYear = nullptr;
    QLabel* Label3 = nullptr;
    QLabel* Label4 = nullptr;
    QLabel* Label5 = nullptr;
    QLabel* Label6 = nullptr;
    QLabel* lblComputerInfo = nullptr;
    QLabel* lblCPUInformation = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdSysInfo = nullptr;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void buildWindow();
    void showPage(const SplashPage& page);
    void cmdSysInfoClick();

    std::function<bool()> m_startSysInfo;
    QString m_winVersion;
    chrome::WindowDragger m_dragger;
};

} // namespace vindaro::sysinfo::ui
