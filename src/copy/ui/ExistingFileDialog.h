#pragma once

#include <QDialog>
#include <QString>

class QBoxLayout;
class QKeyEvent;
class QLabel;
class QVBoxLayout;
class QLineEdit;
class QPushButton;

namespace vindaro::copy {

// Asked at the start of a single copy when the destination exists and no resume record is kept for it.
// Ask() answers:
//   1 overwrite (start over), 2 continue by appending to the existing file, 3 merge (the whole source is
//   added to the end of the existing file), 4 delete the existing file and copy nothing, 5 copy under
//   NewName() into the destination's folder, 0 give up (the give-up button, Esc or closing the window).
// Choice 5 is offered only for a usable name: not empty, no "/", not "." or "..", at most 255 bytes, and not
// the name of a file that already exists in that folder (so the copy never lands on another file unasked).
class ExistingFileDialog : public QDialog
{
    Q_OBJECT

public:
    enum Choice : int
    {
        GiveUp = 0,
        Overwrite = 1,
        Append = 2,
        Merge = 3,
        DeleteExisting = 4,
        CopyUnderNewName = 5,
    };

    explicit ExistingFileDialog(QWidget* parent = nullptr);

    // Shows the dialog modally for the pair and answers the choice code.
    int Ask(const QString& source, const QString& destination);
    // The name typed for choice 5: a file name without folder, blanks trimmed from both ends.
    QString NewName() const;

    // Fills the texts for the pair without showing anything (Ask() does this first).
    void setFiles(const QString& source, const QString& destination);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void updateNewNameState();
    void chooseNewName();

    QLabel* m_sourceFacts;
    QLabel* m_destinationFacts;
    QLabel* m_comparison;
    QPushButton* m_appendButton;
    QLineEdit* m_newNameEdit;
    QLabel* m_nameProblem;
    QPushButton* m_newNameButton;
    QString m_destinationFolder;
};

// Shared by the copy engine's choice dialogs.

// Wide enough for a path and its size line side by side without wrapping every few characters.
constexpr int kChoiceDialogMinimumWidth = 460;

// The name proposed for a copy beside `destination`: "N[01]" before its file name, or N[02], N[03] ... up to
// N[99] when that name is taken in the folder (N[01] again if all are).
QString proposedNewName(const QString& destination);
// Why `name` cannot be used for a new file in `folder`, in the program's words; empty when it can.
QString newNameProblem(const QString& name, const QString& folder);
// "大小：1,234字节    修改时间：2024-05-01 10:00:00", or a note that the file cannot be found.
QString fileFactsText(const QString& path);
// Which of the two files is bigger and by how much, so that the user sees what is at stake.
QString sizeComparisonText(const QString& source, const QString& destination);
// A full-width choice button that ends `dialog` with `code`.
QPushButton* addChoiceButton(
    QDialog& dialog, QBoxLayout& layout, const QString& text, const QString& objectName, int code);
// The labels that show a source/destination pair; the caller keeps the three it gets back.
void addFilePairLabels(QWidget& parent, QBoxLayout& layout, QLabel*& sourceFacts, QLabel*& destinationFacts,
    QLabel*& comparison);
// The common top of the existing-file dialogs: title, the question, the file pair and the choice prompt.
// Answers the layout the caller adds its choice buttons to.
QVBoxLayout* beginExistingFileDialog(QDialog& dialog, const QString& objectName, QLabel*& sourceFacts,
    QLabel*& destinationFacts, QLabel*& comparison);
void showFilePair(QLabel& sourceFacts, QLabel& destinationFacts, QLabel& comparison, const QString& source,
    const QString& destination);

} // namespace vindaro::copy
