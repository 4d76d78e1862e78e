#include "FrmChooseDialog.h"

#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace vindaro::copy {

FrmChooseDialog::FrmChooseDialog(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frmChooseDialog"));
    setWindowTitle(QStringLiteral("选择文件保存路径"));
    setModal(true);
    setMinimumWidth(420);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("请选择文件保存路径："), this));
    auto* folderRow = new QHBoxLayout;
    m_txtFolder = new QLineEdit(this);
    m_txtFolder->setObjectName(QStringLiteral("txtFolder"));
    m_cmdBrowse = new QPushButton(QStringLiteral("浏览[&B]..."), this);
    m_cmdBrowse->setObjectName(QStringLiteral("cmdBrowse"));
    m_cmdBrowse->setAutoDefault(false);
    folderRow->addWidget(m_txtFolder, 1);
    folderRow->addWidget(m_cmdBrowse);
    layout->addLayout(folderRow);

    m_lblProblem = new QLabel(this);
    m_lblProblem->setObjectName(QStringLiteral("lblProblem"));
    m_lblProblem->setTextFormat(Qt::PlainText);
    m_lblProblem->setWordWrap(true);
    QPalette warning = m_lblProblem->palette();
    warning.setColor(QPalette::WindowText, QColor(0xB0, 0x00, 0x00));
    m_lblProblem->setPalette(warning);
    layout->addWidget(m_lblProblem);

    m_chkCopyToSameDir = new QCheckBox(QStringLiteral("所有文件都复制到同一个文件夹中[&S]"), this);
    m_chkCopyToSameDir->setObjectName(QStringLiteral("chkCopyToSameDir"));
    layout->addWidget(m_chkCopyToSameDir);
    auto* hint = new QLabel(
        QStringLiteral("不选中时，文件按原来所在的文件夹分别保存，例如光盘上 MPEGAV 文件夹中的文件保存到"
                       "“文件保存路径/MPEGAV/”中。"),
        this);
    hint->setObjectName(QStringLiteral("lblSameDirHint"));
    hint->setWordWrap(true);
    hint->setIndent(20);
    layout->addWidget(hint);

    auto* buttons = new QHBoxLayout;
    m_cmdOK = new QPushButton(QStringLiteral("确定"), this);
    m_cmdOK->setObjectName(QStringLiteral("cmdOK"));
    m_cmdOK->setDefault(true);
    m_cmdCancel = new QPushButton(QStringLiteral("取消"), this);
    m_cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    m_cmdCancel->setAutoDefault(false);
    buttons->addStretch(1);
    buttons->addWidget(m_cmdOK);
    buttons->addWidget(m_cmdCancel);
    layout->addLayout(buttons);

    connect(m_txtFolder, &QLineEdit::textChanged, this, &FrmChooseDialog::updateState);
    connect(m_cmdBrowse, &QPushButton::clicked, this, &FrmChooseDialog::cmdBrowseClick);
    connect(m_cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    updateState();
}

QString FrmChooseDialog::folderProblem(const QString& folder)
{
    const QString text = folder.trimmed();
    if (text.isEmpty())
        return {};
    if (!QDir::isAbsolutePath(text))
        return QStringLiteral("请输入完整的文件夹路径（以“/”开头）。");
    const QFileInfo info(text);
    if (info.exists() && !info.isDir())
        return QStringLiteral("“") + text + QStringLiteral("”是一个文件，不是文件夹。");
    return {};
}

void FrmChooseDialog::updateState()
{
    const QString problem = folderProblem(folder());
    m_lblProblem->setText(problem);
    m_lblProblem->setVisible(!problem.isEmpty());
    m_cmdOK->setEnabled(!folder().isEmpty() && problem.isEmpty());
}

void FrmChooseDialog::cmdBrowseClick()
{
    const QString chosen
        = QFileDialog::getExistingDirectory(this, QStringLiteral("选择文件保存路径"), folder());
    if (!chosen.isEmpty())
        setFolder(chosen);
}

void FrmChooseDialog::setFolder(const QString& folder)
{
    m_txtFolder->setText(folder);
}

QString FrmChooseDialog::folder() const
{
    return m_txtFolder->text().trimmed();
}

void FrmChooseDialog::setCopyToSameDir(bool sameDir)
{
    m_chkCopyToSameDir->setChecked(sameDir);
}

bool FrmChooseDialog::copyToSameDir() const
{
    return m_chkCopyToSameDir->isChecked();
}

QString FrmChooseDialog::ChooseFolder(bool& copyToSameDir)
{
    updateState();
    if (exec() != QDialog::Accepted || !m_cmdOK->isEnabled())
        return {};
    copyToSameDir = this->copyToSameDir();
    return folder();
}

} // namespace vindaro::copy
