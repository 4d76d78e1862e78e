#include "FileListDialogs.h"

#include "platform/Host.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>

namespace vindaro::files {

namespace {

QString shownText(const QString& text)
{
    QString shown = text;
    shown.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    return shown;
}

} // namespace

QStringList QtListDialogs::chooseFilesToOpen(QWidget* owner)
{
    QPointer<QFileDialog> dialog = new QFileDialog(owner, QStringLiteral("打开"));
    dialog->setAttribute(Qt::WA_DeleteOnClose, false);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setNameFilters({QStringLiteral("视频VCD文件(*.dat)"), QStringLiteral("视频DVD文件(*.vob)"),
        QStringLiteral("所有文件(*.*)")});
    dialog->selectNameFilter(QStringLiteral("视频VCD文件(*.dat)"));
    dialog->setDefaultSuffix(QStringLiteral("dat"));
    QStringList chosen;
    if (dialog->exec() == QDialog::Accepted && dialog)
        chosen = dialog->selectedFiles();
    delete dialog;
    return chosen;
}

QFileDialog* QtListDialogs::createAddFolderDialog(QWidget* owner)
{
    auto* dialog = new QFileDialog(owner, QStringLiteral("选择待添加的文件目录"));
    dialog->setOption(QFileDialog::DontUseNativeDialog, true);
    dialog->setOption(QFileDialog::ShowDirsOnly, true);
    dialog->setFileMode(QFileDialog::Directory);

    auto* row = new QWidget(dialog);
    auto* rowLayout = new QHBoxLayout(row);
    rowLayout->setContentsMargins(0, 0, 0, 0);
    auto* label = new QLabel(QStringLiteral("加载的文件[例如：*.DAT]"), row);
    auto* pattern = new QLineEdit(QStringLiteral("*.*"), row);
    pattern->setObjectName(QStringLiteral("txtFilePattern"));
    label->setBuddy(pattern);
    auto* subFolders = new QCheckBox(QStringLiteral("也包括下级子文件夹"), row);
    subFolders->setObjectName(QStringLiteral("chkSubFolders"));
    rowLayout->addWidget(label);
    rowLayout->addWidget(pattern, 1);
    rowLayout->addWidget(subFolders);
    if (auto* grid = qobject_cast<QGridLayout*>(dialog->layout()))
        grid->addWidget(row, grid->rowCount(), 0, 1, grid->columnCount());
    else if (dialog->layout())
        dialog->layout()->addWidget(row);
    return dialog;
}

std::optional<FolderChoice> QtListDialogs::folderChoiceOf(const QFileDialog& dialog)
{
    const QStringList folders = dialog.selectedFiles();
    if (folders.isEmpty() || folders.first().isEmpty())
        return std::nullopt;
    FolderChoice choice;
    choice.folder = folders.first();
    if (const auto* pattern = dialog.findChild<QLineEdit*>(QStringLiteral("txtFilePattern")))
        choice.pattern = pattern->text();
    if (const auto* subFolders = dialog.findChild<QCheckBox*>(QStringLiteral("chkSubFolders")))
        choice.includeSubfolders = subFolders->isChecked();
    return choice;
}

std::optional<FolderChoice> QtListDialogs::chooseFolderToAdd(QWidget* owner)
{
    QPointer<QFileDialog> dialog = createAddFolderDialog(owner);
    std::optional<FolderChoice> choice;
    if (dialog->exec() == QDialog::Accepted && dialog)
        choice = folderChoiceOf(*dialog);
    delete dialog;
    return choice;
}

int MessageBoxPrompter::askYesNoCancel(const QString& text, const QString& title)
{
    QMessageBox box(QMessageBox::Warning, title, shownText(text),
        QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, m_owner);
    switch (box.exec()) {
    case QMessageBox::Yes:
        return platform::kAnswerYes;
    case QMessageBox::No:
        return platform::kAnswerNo;
    default:
        return kAnswerCancel;
    }
}

void MessageBoxPrompter::notify(const QString& text, const QString& title)
{
    QMessageBox box(QMessageBox::Warning, title, shownText(text), QMessageBox::Ok, m_owner);
    box.exec();
}

} // namespace vindaro::files
