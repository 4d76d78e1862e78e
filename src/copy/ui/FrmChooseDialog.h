#pragma once

#include <QDialog>
#include <QString>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace vindaro::copy {

// The folder choice of a batch copy, shown together with the option that decides where in it the files
// go: checked (`chkCopyToSameDir`), every file goes straight into the folder; unchecked, each file keeps
// the folders of its own path below its volume (a disc's MPEGAV folder becomes <folder>/MPEGAV/).
// The folder can be typed or picked with the browse button; a folder that does not exist yet is created
// by the batch.
class FrmChooseDialog : public QDialog
{
    Q_OBJECT

public:
    explicit FrmChooseDialog(QWidget* parent = nullptr);

    // Shows the dialog modally. Answers the chosen folder, or empty when the user cancelled;
    // `copyToSameDir` is the check box as the user left it (unchanged when cancelled).
    QString ChooseFolder(bool& copyToSameDir);

    void setFolder(const QString& folder);
    QString folder() const; // as typed, blanks trimmed
    void setCopyToSameDir(bool sameDir);
    bool copyToSameDir() const;

    // Why `folder` cannot take the batch's files, in the program's words; empty when it can (an empty
    // text is not usable either, but needs no words: the OK button simply stays off).
    static QString folderProblem(const QString& folder);

private:
    void cmdBrowseClick();
    void updateState();

    QLineEdit* m_txtFolder;
    QPushButton* m_cmdBrowse;
    QCheckBox* m_chkCopyToSameDir;
    QLabel* m_lblProblem;
    QPushButton* m_cmdOK;
    QPushButton* m_cmdCancel;
};

} // namespace vindaro::copy
