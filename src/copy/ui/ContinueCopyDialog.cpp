#include "ContinueCopyDialog.h"

#include "ExistingFileDialog.h"
#include "files/Format.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace vindaro::copy {

ContinueCopyDialog::ContinueCopyDialog(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("continueCopyDialog"));
    setWindowTitle(QStringLiteral("提醒！"));
    setModal(true);
    setMinimumWidth(kChoiceDialogMinimumWidth);

    auto* layout = new QVBoxLayout(this);
    auto* question = new QLabel(QStringLiteral("该文件已经存在，并且保存有上次复制中断时的续拷记录："), this);
    question->setObjectName(QStringLiteral("questionLabel"));
    question->setWordWrap(true);
    layout->addWidget(question);
    addFilePairLabels(*this, *layout, m_sourceFacts, m_destinationFacts, m_comparison);
    m_record = new QLabel(this);
    m_record->setObjectName(QStringLiteral("recordLabel"));
    m_record->setWordWrap(true);
    m_record->hide();
    layout->addWidget(m_record);
    layout->addSpacing(6);
    layout->addWidget(new QLabel(QStringLiteral("是否从上次中断的位置继续复制？"), this));

    auto* continueButton
        = addChoiceButton(*this, *layout, QStringLiteral("继续复制：从上次中断的位置接着复制[&C]"),
            QStringLiteral("continueButton"), ContinueFromRecord);
    addChoiceButton(*this, *layout, QStringLiteral("重新复制：清空该文件，从头开始复制[&R]"),
        QStringLiteral("startOverButton"), StartOver);
    addChoiceButton(*this, *layout, QStringLiteral("放弃复制[&X]"), QStringLiteral("giveUpButton"), GiveUp);
    continueButton->setDefault(true);
    continueButton->setFocus();
}

void ContinueCopyDialog::setRecord(const ResumeRecord& record)
{
    m_record->setText(QStringLiteral("上次已复制到：") + files::formatBytes(record.continuePosition)
        + QStringLiteral("    已用时间：") + files::formatDuration(record.elapsedSeconds));
    m_record->show();
}

void ContinueCopyDialog::setFiles(const QString& source, const QString& destination)
{
    showFilePair(*m_sourceFacts, *m_destinationFacts, *m_comparison, source, destination);
}

int ContinueCopyDialog::Ask(const QString& source, const QString& destination)
{
    setFiles(source, destination);
    return exec();
}

} // namespace vindaro::copy
