#pragma once

#include "files/FileSystem.h"

#include <QDialog>

#include <memory>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabBar;
class QTreeWidget;

namespace vindaro::platform {
class Shell;
class Volumes;
} // namespace vindaro::platform

namespace vindaro::info::ui {

class ResourceBrowser;

// The drive panel: its labels, and the pie of used (blue) against free (magenta) space drawn as a disc
// with a side, in the panel's units.
class DrivePanel : public QWidget
{
    Q_OBJECT

public:
    explicit DrivePanel(QWidget* parent = nullptr);
    // Shows the pie for these figures; a total of 0 or less hides it.
    void setSpace(qint64 usedBytes, qint64 totalBytes);
    double usedSpan() const { return m_usedSpan; }
    bool hasPie() const { return m_hasPie; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_hasPie = false;
    double m_usedSpan = 0.0;
};

// The program's own property window for one file: the general page (name, place, type, size, dates,
// attribute boxes), the summary (MP3 and SWF texts, the ZIP listing, the resource browser of EXE and DLL
// files) and the drive page (kind, file system, label, space figures and pie). Apply writes the attribute
// word and the volume label; what the system refuses changes nothing and is not reported.
class frmFileProperty : public QDialog
{
    Q_OBJECT

public:
    frmFileProperty(platform::Volumes& volumes, platform::Shell& shell, QWidget* parent = nullptr);
    ~frmFileProperty() override;

    // Fills the general page, the summary and the drive page, in that order, then gives the four name
    // boxes their balloon tips. The caller shows the window.
    void GetInfor(const QString& path);

    void cmdApply_Click();
    QString path() const { return m_path; }
    QString driveRoot() const { return m_root; }

    QTabBar* TabStrip1 = nullptr;
    QWidget* Pic_Normal = nullptr;
    QWidget* pic_Docket = nullptr;
    ResourceBrowser* Pic_EXE_Dll = nullptr;
    DrivePanel* pic_DriveProp = nullptr;

    QLabel* PicIcon_32 = nullptr;
    QLineEdit* txtFullFileName = nullptr;
    QLineEdit* txtFilePosition = nullptr;
    QLabel* lblFileType = nullptr;
    QLabel* lblFileLength = nullptr;
    QLabel* lblFileCreated = nullptr;
    QLabel* lblFileModified = nullptr;
    QLabel* lblFileAccessed = nullptr;
    QCheckBox* chkReadOnly = nullptr;
    QCheckBox* chkHide = nullptr;
    QCheckBox* chkSystem = nullptr;
    QCheckBox* chkDocument = nullptr;

    QLabel* picIcon_16A = nullptr;
    QLineEdit* txtShortFileNameA = nullptr;
    QPlainTextEdit* txtDocket = nullptr;
    QTreeWidget* lvZIPView = nullptr;

    QLabel* picDiskIcon = nullptr;
    QLabel* lblDiskType = nullptr;
    QLabel* lblFileSystem = nullptr;
    QLineEdit* txtVolumeName = nullptr;
    QLabel* lblTotalSpace = nullptr;
    QLabel* lblAvailableSpace = nullptr;
    QLabel* lblSpaceUsed = nullptr;
    QLabel* lblTotalSpaceA = nullptr;
    QLabel* lblAvailableSpaceA = nullptr;
    QLabel* lblSpaceUsedA = nullptr;
    QLabel* lblDriveName = nullptr;
    QLabel* picAvailSpace = nullptr;
    QLabel* picUseSpace = nullptr;

    QPushButton* cmdSure = nullptr;
    QPushButton* cmdCancel = nullptr;
    QPushButton* cmdApply = nullptr;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void done(int result) override;

private:
    void buildGeneralPage();
    void buildSummaryPages();
    void buildDrivePage();
    void fillGeneralPage();
    void fillSummary();
    void fillDrivePage();
    void showTab(int index);

    std::unique_ptr<files::FileSystem> m_fs;
    platform::Volumes& m_volumes;
    QString m_path;
    QString m_root; // the mount point of the file's volume; empty when it has none
    QString m_labelShown; // the label as filled, so Apply writes it only when it was edited
    bool m_cdRom = false;
    bool m_module = false;
    bool m_zip = false;
};

} // namespace vindaro::info::ui
