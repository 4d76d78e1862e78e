#include "OpenWithDialog.h"

#include "platform/Host.h"
#include "platform/linux/ui/MessageBoxes.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace vindaro::platform {

namespace {

constexpr int kIconPixels = 24;

QIcon applicationIcon(const QString& icon, const QIcon& fallback)
{
    if (icon.isEmpty())
        return fallback;
    if (QDir::isAbsolutePath(icon))
        return QFileInfo::exists(icon) ? QIcon(icon) : fallback;
    return QIcon::fromTheme(icon, fallback);
}

} // namespace

QString OpenWithDialog::promptText(const QString& fileName)
{
    return QStringLiteral("选择用来打开“%1”的程序：").arg(fileName);
}

QString OpenWithDialog::noApplicationsText()
{
    return QStringLiteral("没有找到已安装的程序。");
}

QString OpenWithDialog::startFailedText(const QString& name)
{
    return QStringLiteral("无法启动“%1”。").arg(name);
}

QString OpenWithDialog::badCommandText(const QString& name, const QString& exec)
{
    return QStringLiteral("“%1”的启动命令不合规则，无法启动：\r\n%2").arg(name, exec);
}

OpenWithDialog::OpenWithDialog(
    const QString& path, QList<DesktopApplication> applications, Launcher launcher, QWidget* parent)
    : QDialog(parent)
    , m_path(path)
    , m_applications(std::move(applications))
    , m_launcher(std::move(launcher))
    , m_terminal(defaultTerminal())
{
    setWindowTitle(QStringLiteral("打开方式"));
    auto* layout = new QVBoxLayout(this);
    QString text = promptText(QFileInfo(path).fileName());
    if (m_applications.isEmpty())
        text += QLatin1Char('\n') + noApplicationsText();
    auto* prompt = new QLabel(text, this);
    prompt->setObjectName(QStringLiteral("lblPrompt"));
    prompt->setWordWrap(true);
    layout->addWidget(prompt);

    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("lstApplications"));
    m_list->setIconSize(QSize(kIconPixels, kIconPixels));
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    const QIcon fallback = style()->standardIcon(QStyle::SP_FileIcon);
    for (const DesktopApplication& application : std::as_const(m_applications)) {
        auto* item
            = new QListWidgetItem(applicationIcon(application.icon, fallback), application.name, m_list);
        item->setToolTip(application.exec);
    }
    layout->addWidget(m_list);

    auto* buttons = new QDialogButtonBox(this);
    m_ok = buttons->addButton(QStringLiteral("确定"), QDialogButtonBox::AcceptRole);
    m_ok->setObjectName(QStringLiteral("cmdOK"));
    m_ok->setDefault(true);
    QPushButton* cancel = buttons->addButton(QStringLiteral("取消"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    layout->addWidget(buttons);

    connect(buttons, &QDialogButtonBox::accepted, this, &OpenWithDialog::openChosen);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list, &QListWidget::itemDoubleClicked, this,
        &OpenWithDialog::openChosen); // Enter: the default button
    connect(m_list, &QListWidget::currentRowChanged, this, [this](int row) { m_ok->setEnabled(row >= 0); });
    m_ok->setEnabled(false);
    if (m_list->count() > 0)
        m_list->setCurrentRow(0); // the type's default, when it has one
    resize(420, 400);
}

void OpenWithDialog::openChosen()
{
    const int row = m_list->currentRow();
    if (row < 0)
        return;
    const DesktopApplication& application = m_applications.at(row);
    const QList<QStringList> commands = launchCommands(application, {m_path}, m_terminal);
    if (commands.isEmpty()) {
        tell(badCommandText(application.name, application.exec));
        return;
    }
    for (const QStringList& command : commands) {
        if (!m_launcher(command.first(), command.mid(1), application.workingFolder)) {
            tell(startFailedText(application.name));
            return;
        }
    }
    accept();
}

void OpenWithDialog::tell(const QString& text)
{
    execMessageBox(MessageBox{text, QStringLiteral("提醒！"), BoxIcon::Exclamation, BoxButtons::Ok}, this);
}

} // namespace vindaro::platform
