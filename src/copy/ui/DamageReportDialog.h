#pragma once

#include "copy/DamageReport.h"

#include <QDialog>

class QPlainTextEdit;
class QPushButton;

namespace vindaro::copy {

// The damage report in a window: which files lost bytes, how many, where, and for MPEG program streams at
// what playing time; and the files a batch did not reach, with one button that starts them again.
class DamageReportDialog : public QDialog
{
    Q_OBJECT

public:
    explicit DamageReportDialog(const DamageReport& report, QWidget* parent = nullptr);

    QString text() const;

signals:
    // The user wants the files the batch did not reach copied: the window puts them in its list and starts
    // a batch.
    void copyAgainRequested(const QStringList& files);

private:
    QPlainTextEdit* m_text = nullptr;
    QPushButton* m_copyAgain = nullptr;
};

} // namespace vindaro::copy
