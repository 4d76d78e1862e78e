#pragma once

#include "copy/ResumeRecord.h"

#include <QDialog>
#include <QString>

class QLabel;
class QPushButton;

namespace vindaro::copy {

// Asked at the start of a copy when the destination exists and a resume record is kept for it.
// Ask() answers 1 start over from the beginning (the destination is emptied), 2 continue from the record,
// 0 give up (the give-up button, Esc or closing the window). Enter continues: it keeps what is on disk.
class ContinueCopyDialog : public QDialog
{
    Q_OBJECT

public:
    enum Choice : int
    {
        GiveUp = 0,
        StartOver = 1,
        ContinueFromRecord = 2,
    };

    explicit ContinueCopyDialog(QWidget* parent = nullptr);

    // Shows the dialog modally for the pair and answers the choice code.
    int Ask(const QString& source, const QString& destination);

    // Optional, before Ask(): the record found, so that the dialog can say how far the last copy got.
    void setRecord(const ResumeRecord& record);
    // Fills the texts for the pair without showing anything (Ask() does this first).
    void setFiles(const QString& source, const QString& destination);

private:
    QLabel* m_sourceFacts;
    QLabel* m_destinationFacts;
    QLabel* m_comparison;
    QLabel* m_record;
};

} // namespace vindaro::copy
