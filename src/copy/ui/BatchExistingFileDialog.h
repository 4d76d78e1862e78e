#pragma once

#include <QDialog>
#include <QString>

class QLabel;
class QPushButton;

namespace vindaro::copy {

// Asked by the batch copy when a destination exists, no resume record is kept for it and "overwrite all"
// has not been chosen yet. Ask() answers 1 overwrite this file, 2 overwrite this and every later existing
// destination of the batch, 3 keep both, 0 stop the batch (the stop button, Esc or closing the window).
// Keep both means: with different lengths the source goes beside the existing file as "N[01]" + its name;
// with equal lengths the file is taken as already copied and skipped. The dialog says which of the two
// will happen for the pair shown. Enter keeps both: nothing on disk is lost.
class BatchExistingFileDialog : public QDialog
{
    Q_OBJECT

public:
    enum Choice : int
    {
        StopBatch = 0,
        Overwrite = 1,
        OverwriteAll = 2,
        KeepBoth = 3,
    };

    explicit BatchExistingFileDialog(QWidget* parent = nullptr);

    // Shows the dialog modally for the pair and answers the choice code.
    int Ask(const QString& source, const QString& destination);

    // Fills the texts for the pair without showing anything (Ask() does this first).
    void setFiles(const QString& source, const QString& destination);

private:
    QLabel* m_sourceFacts;
    QLabel* m_destinationFacts;
    QLabel* m_comparison;
    QLabel* m_keepBothHint;
};

} // namespace vindaro::copy
