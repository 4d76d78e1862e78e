#include "ExistingFileDialog.h"

#include "files/Format.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace vindaro::copy {

namespace {

constexpr int kMaxNameBytes = 255; // NAME_MAX of the Linux file systems

QLabel* addWrappedLabel(QWidget& parent, QBoxLayout& layout, const QString& objectName)
{
    auto* label = new QLabel(&parent);
    label->setObjectName(objectName);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout.addWidget(label);
    return label;
}

} // namespace

QString proposedNewName(const QString& destination)
{
    const QFileInfo info(destination);
    const QDir folder = info.absoluteDir();
    const QString base = info.fileName();
    for (int n = 1; n <= 99; ++n) {
        const QString candidate = QStringLiteral("N[%1]").arg(n, 2, 10, QLatin1Char('0')) + base;
        if (!QFileInfo::exists(folder.filePath(candidate)))
            return candidate;
    }
    return QStringLiteral("N[01]") + base;
}

QString newNameProblem(const QString& name, const QString& folder)
{
    const QString trimmed = name.trimmed();
    if (trimmed.isEmpty())
        return QStringLiteral("请输入新的文件名。");
    if (trimmed.contains(QLatin1Char('/')) || trimmed.contains(QChar(0)))
        return QStringLiteral("文件名中不能含有“/”，请只输入文件名，不要输入路径。");
    if (trimmed == QLatin1String(".") || trimmed == QLatin1String(".."))
        return QStringLiteral("“%1”不是有效的文件名。").arg(trimmed);
    if (trimmed.toUtf8().size() > kMaxNameBytes)
        return QStringLiteral("文件名太长，请输入较短的文件名。");
    if (QFileInfo::exists(QDir(folder).filePath(trimmed)))
        return QStringLiteral("“%1”已经存在，请换一个文件名。").arg(trimmed);
    return {};
}

QString fileFactsText(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("（找不到该文件）");
    return QStringLiteral("大小：") + files::formatBytes(info.size()) + QStringLiteral("    修改时间：")
        + info.lastModified().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString sizeComparisonText(const QString& source, const QString& destination)
{
    const QFileInfo sourceInfo(source);
    const QFileInfo destinationInfo(destination);
    if (!sourceInfo.exists() || !destinationInfo.exists())
        return {};
    const qint64 difference = destinationInfo.size() - sourceInfo.size();
    if (difference == 0)
        return QStringLiteral("两个文件大小相同。");
    if (difference < 0)
        return QStringLiteral("目标文件比源文件小 ") + files::formatBytes(-difference) + QStringLiteral("。");
    return QStringLiteral("目标文件比源文件大 ") + files::formatBytes(difference) + QStringLiteral("。");
}

QPushButton* addChoiceButton(
    QDialog& dialog, QBoxLayout& layout, const QString& text, const QString& objectName, int code)
{
    auto* button = new QPushButton(text, &dialog);
    button->setObjectName(objectName);
    button->setAutoDefault(false);
    button->setStyleSheet(QStringLiteral("text-align: left; padding: 4px 10px;"));
    QObject::connect(button, &QPushButton::clicked, &dialog, [&dialog, code] { dialog.done(code); });
    layout.addWidget(button);
    return button;
}

void addFilePairLabels(
    QWidget& parent, QBoxLayout& layout, QLabel*& sourceFacts, QLabel*& destinationFacts, QLabel*& comparison)
{
    sourceFacts = addWrappedLabel(parent, layout, QStringLiteral("sourceFactsLabel"));
    destinationFacts = addWrappedLabel(parent, layout, QStringLiteral("destinationFactsLabel"));
    comparison = addWrappedLabel(parent, layout, QStringLiteral("sizeComparisonLabel"));
}

void showFilePair(QLabel& sourceFacts, QLabel& destinationFacts, QLabel& comparison, const QString& source,
    const QString& destination)
{
    sourceFacts.setText(
        QStringLiteral("源文件：") + source + QStringLiteral("\n        ") + fileFactsText(source));
    destinationFacts.setText(QStringLiteral("目标文件：") + destination + QStringLiteral("\n        ")
        + fileFactsText(destination));
    const QString compared = sizeComparisonText(source, destination);
    comparison.setText(compared);
    comparison.setVisible(!compared.isEmpty());
}

QVBoxLayout* beginExistingFileDialog(QDialog& dialog, const QString& objectName, QLabel*& sourceFacts,
    QLabel*& destinationFacts, QLabel*& comparison)
{
    dialog.setObjectName(objectName);
    dialog.setWindowTitle(QStringLiteral("提醒！"));
    dialog.setModal(true);
    dialog.setMinimumWidth(kChoiceDialogMinimumWidth);

    auto* layout = new QVBoxLayout(&dialog);
    auto* question = new QLabel(QStringLiteral("文件保存路径中已经存在同名文件："), &dialog);
    question->setObjectName(QStringLiteral("questionLabel"));
    layout->addWidget(question);
    addFilePairLabels(dialog, *layout, sourceFacts, destinationFacts, comparison);
    layout->addSpacing(6);
    layout->addWidget(new QLabel(QStringLiteral("请选择如何处理该文件："), &dialog));
    return layout;
}

ExistingFileDialog::ExistingFileDialog(QWidget* parent)
    : QDialog(parent)
{
    auto* layout = beginExistingFileDialog(
        *this, QStringLiteral("existingFileDialog"), m_sourceFacts, m_destinationFacts, m_comparison);

    addChoiceButton(*this, *layout, QStringLiteral("覆盖该文件，从头开始复制[&O]"),
        QStringLiteral("overwriteButton"), Overwrite);
    m_appendButton = addChoiceButton(
        *this, *layout, QStringLiteral("以追加方式继续复制[&A]"), QStringLiteral("appendButton"), Append);
    addChoiceButton(*this, *layout, QStringLiteral("合并：把整个源文件接到该文件的末尾[&M]"),
        QStringLiteral("mergeButton"), Merge);
    addChoiceButton(*this, *layout, QStringLiteral("删除该文件，不进行复制[&D]"),
        QStringLiteral("deleteButton"), DeleteExisting);

    auto* nameRow = new QHBoxLayout;
    auto* nameCaption = new QLabel(QStringLiteral("新文件名[&F]："), this);
    m_newNameEdit = new QLineEdit(this);
    m_newNameEdit->setObjectName(QStringLiteral("newNameEdit"));
    nameCaption->setBuddy(m_newNameEdit);
    nameRow->addWidget(nameCaption);
    nameRow->addWidget(m_newNameEdit, 1);
    m_newNameButton = new QPushButton(QStringLiteral("以新文件名复制[&N]"), this);
    m_newNameButton->setObjectName(QStringLiteral("newNameButton"));
    m_newNameButton->setAutoDefault(false);
    nameRow->addWidget(m_newNameButton);
    layout->addLayout(nameRow);
    m_nameProblem = addWrappedLabel(*this, *layout, QStringLiteral("nameProblemLabel"));
    m_nameProblem->setStyleSheet(QStringLiteral("color: #b00000;"));

    addChoiceButton(*this, *layout, QStringLiteral("放弃复制[&X]"), QStringLiteral("giveUpButton"), GiveUp);

    // Keeping what is on disk is the safe answer to a stray Enter.
    m_appendButton->setDefault(true);

    connect(m_newNameEdit, &QLineEdit::textChanged, this, &ExistingFileDialog::updateNewNameState);
    connect(m_newNameButton, &QPushButton::clicked, this, &ExistingFileDialog::chooseNewName);
}

void ExistingFileDialog::setFiles(const QString& source, const QString& destination)
{
    showFilePair(*m_sourceFacts, *m_destinationFacts, *m_comparison, source, destination);
    const QFileInfo destinationInfo(destination);
    m_destinationFolder = destinationInfo.absolutePath();
    if (destinationInfo.exists())
        m_appendButton->setText(QStringLiteral("以追加方式继续复制：保留已有的 ")
            + files::formatBytes(destinationInfo.size()) + QStringLiteral("，接着复制其余部分[&A]"));
    m_newNameEdit->setText(proposedNewName(destination));
    m_newNameEdit->setToolTip(m_newNameEdit->text());
    updateNewNameState();
}

int ExistingFileDialog::Ask(const QString& source, const QString& destination)
{
    setFiles(source, destination);
    return exec();
}

QString ExistingFileDialog::NewName() const
{
    return m_newNameEdit->text().trimmed();
}

void ExistingFileDialog::keyPressEvent(QKeyEvent* event)
{
    // Enter in the name field means "copy under this name", never the default button; a name that cannot
    // be used leaves the dialog open with its reason shown.
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && focusWidget() == m_newNameEdit) {
        event->accept();
        chooseNewName();
        return;
    }
    QDialog::keyPressEvent(event);
}

void ExistingFileDialog::updateNewNameState()
{
    const QString problem = newNameProblem(m_newNameEdit->text(), m_destinationFolder);
    m_nameProblem->setText(problem);
    m_nameProblem->setVisible(!problem.isEmpty());
    m_newNameButton->setEnabled(problem.isEmpty());
}

void ExistingFileDialog::chooseNewName()
{
    // The state can be stale if the folder changed since the last keystroke: check again.
    updateNewNameState();
    if (m_newNameButton->isEnabled())
        done(CopyUnderNewName);
}

} // namespace vindaro::copy
