#include "BatchExistingFileDialog.h"

#include "ExistingFileDialog.h"

#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace vindaro::copy {

BatchExistingFileDialog::BatchExistingFileDialog(QWidget* parent)
    : QDialog(parent)
{
    auto* layout = beginExistingFileDialog(
        *this, QStringLiteral("batchExistingFileDialog"), m_sourceFacts, m_destinationFacts, m_comparison);

    addChoiceButton(
        *this, *layout, QStringLiteral("覆盖该文件[&O]"), QStringLiteral("overwriteButton"), Overwrite);
    addChoiceButton(*this, *layout, QStringLiteral("覆盖该文件及以后所有同名文件，不再询问[&A]"),
        QStringLiteral("overwriteAllButton"), OverwriteAll);
    auto* keepBoth = addChoiceButton(
        *this, *layout, QStringLiteral("保留两个文件[&K]"), QStringLiteral("keepBothButton"), KeepBoth);
    m_keepBothHint = new QLabel(this);
    m_keepBothHint->setObjectName(QStringLiteral("keepBothHintLabel"));
    m_keepBothHint->setWordWrap(true);
    m_keepBothHint->setTextFormat(Qt::PlainText);
    m_keepBothHint->setIndent(16);
    layout->addWidget(m_keepBothHint);
    addChoiceButton(
        *this, *layout, QStringLiteral("停止批量复制[&S]"), QStringLiteral("stopButton"), StopBatch);
    keepBoth->setDefault(true);
    keepBoth->setFocus();
}

void BatchExistingFileDialog::setFiles(const QString& source, const QString& destination)
{
    showFilePair(*m_sourceFacts, *m_destinationFacts, *m_comparison, source, destination);
    const QFileInfo sourceInfo(source);
    const QFileInfo destinationInfo(destination);
    if (sourceInfo.exists() && destinationInfo.exists() && sourceInfo.size() == destinationInfo.size())
        m_keepBothHint->setText(QStringLiteral("两个文件大小相同，将保留原有文件并跳过该文件，不再复制。"));
    else if (QFileInfo::exists(
                 destinationInfo.dir().filePath(QStringLiteral("N[01]") + destinationInfo.fileName())))
        m_keepBothHint->setText(QStringLiteral("原有文件保持不变，源文件以新文件名“N[01]")
            + destinationInfo.fileName()
            + QStringLiteral(
                "”复制到同一文件夹；注意：该文件名也已经存在，到时会再次询问如何处理，不会覆盖它。"));
    else
        m_keepBothHint->setText(QStringLiteral("原有文件保持不变，源文件以新文件名“N[01]")
            + destinationInfo.fileName() + QStringLiteral("”复制到同一文件夹。"));
}

int BatchExistingFileDialog::Ask(const QString& source, const QString& destination)
{
    setFiles(source, destination);
    return exec();
}

} // namespace vindaro::copy
