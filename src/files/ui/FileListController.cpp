#include "FileListController.h"

#include "FileDropTarget.h"
#include "FileListCombo.h"
#include "FileMenu.h"
#include "FrmDialog.h"
#include "files/FileListTexts.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QStatusBar>

namespace vindaro::files {

namespace {

void setPanelText(QWidget* panel, const QString& text)
{
    if (auto* bar = qobject_cast<QStatusBar*>(panel))
        bar->showMessage(text);
    else if (auto* label = qobject_cast<QLabel*>(panel))
        label->setText(text);
}

} // namespace

FileListController::FileListController(
    FileSystem& fileSystem, Prompter& prompts, ListDialogs& dialogs, QWidget* mainWindow)
    : QObject(mainWindow)
    , m_window(mainWindow)
    , m_fs(fileSystem)
    , m_prompts(prompts)
    , m_model(fileSystem)
    , m_commands(m_model, fileSystem, prompts, dialogs, mainWindow)
{
    m_combo = new FileListCombo(m_model, fileSystem, m_icons, mainWindow);
    m_menu = new FileMenu(m_commands, m_model, mainWindow);
    m_drops = new FileDropTarget(m_model, this);

    connect(
        m_combo, &FileListCombo::popupMenuRequested, m_menu, [this](const QPoint& at) { m_menu->popup(at); });
    connect(&m_model, &FileListModel::currentTextChanged, this, &FileListController::onListTextChanged);
    connect(&m_model, &QAbstractItemModel::rowsInserted, m_menu, &FileMenu::UpdateMenuState);
    connect(&m_model, &QAbstractItemModel::modelReset, m_menu, &FileMenu::UpdateMenuState);
    connect(m_menu, &FileMenu::previewToggled, this, &FileListController::onListTextChanged);
    connect(m_menu, &FileMenu::exitRequested, this, &FileListController::exitRequested);
    connect(m_menu, &FileMenu::aboutRequested, this, &FileListController::aboutRequested);

    connect(
        &m_model, &FileListModel::busyChanged, this, [this](bool busy) { setBusy(busy, Qt::WaitCursor); });
    connect(
        &m_commands, &FileCommands::busyChanged, this, [this](bool busy) { setBusy(busy, Qt::WaitCursor); });
    connect(&m_model, &FileListModel::scanningChanged, this,
        [this](bool scanning) { setBusy(scanning, Qt::BusyCursor); });
    connect(&m_model, &FileListModel::factsChanged, this, &FileListController::showFacts);
    connect(&m_model, &FileListModel::displaysReset, this, &FileListController::clearDisplays);
    connect(&m_model, &FileListModel::filesInfoChanged, this, [this](const QString& text) {
        if (m_displays.filesInfo)
            m_displays.filesInfo->setText(text);
    });
    connect(&m_model, &FileListModel::destinationChanged, this, [this](const QString& text) {
        if (m_displays.destination && m_displays.destination->text() != text)
            m_displays.destination->setText(text);
    });
    connect(&m_model, &FileListModel::previewStopRequested, this, &FileListController::previewStopRequested);
    connect(&m_model, &FileListModel::previewRequested, this, &FileListController::previewRequested);
    connect(
        &m_commands, &FileCommands::previewStopRequested, this, &FileListController::previewStopRequested);
    connect(
        &m_commands, &FileCommands::previewCloseRequested, this, &FileListController::previewCloseRequested);
    connect(&m_commands, &FileCommands::playerRequested, this, &FileListController::playerRequested);
    connect(&m_commands, &FileCommands::batchCopyRequested, this, &FileListController::batchCopyRequested);
    connect(&m_commands, &FileCommands::renameRequested, this, [this] {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        showRenameDialog();
    });
}

FileListController::~FileListController()
{
    m_model.cancelScans();
}

void FileListController::bindDisplays(const FileListDisplays& displays)
{
    m_displays = displays;
    if (m_displays.filesInfo)
        m_displays.filesInfo->setText(m_model.filesInfo());
    if (m_displays.destination) {
        m_model.setDestination(m_displays.destination->text());
        connect(m_displays.destination, &QLineEdit::textChanged, &m_model, &FileListModel::setDestination);
    }
}

void FileListController::acceptDrops(QWidget* window)
{
    m_drops->attach(window);
}

bool FileListController::showRenameDialog()
{
    if (!m_commands.guardPasses())
        return false;
    FrmDialog dialog(m_model, m_fs, m_prompts, m_icons, m_combo, m_window);
    return dialog.exec() == QDialog::Accepted;
}

void FileListController::onListTextChanged()
{
    m_menu->UpdateMenuState();
    m_model.previewFollowUp();
}

void FileListController::setBusy(bool busy, Qt::CursorShape shape)
{
    if (busy)
        QApplication::setOverrideCursor(shape);
    else if (QApplication::overrideCursor())
        QApplication::restoreOverrideCursor();
}

void FileListController::showFacts(const FileListModel::EntryFacts& facts)
{
    setPanelText(m_displays.statusA, facts.panelA);
    setPanelText(m_displays.statusB, facts.panelB);
    const QPixmap icon = m_icons.smallPixmap(facts.path);
    QPixmap picture;
    if (facts.pictureFile)
        picture.load(facts.path);
    if (m_displays.image) {
        if (picture.isNull())
            m_displays.image->clear();
        else
            m_displays.image->setPixmap(picture);
    }
    if (m_displays.smallIconA) {
        m_displays.smallIconA->setPixmap(
            picture.isNull() ? icon : picture.scaled(16, 16, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    }
    if (m_displays.smallIconB)
        m_displays.smallIconB->setPixmap(icon);
}

void FileListController::clearDisplays()
{
    setPanelText(m_displays.statusA, QString());
    setPanelText(m_displays.statusB, QString());
    for (QLabel* label : {m_displays.smallIconA, m_displays.smallIconB, m_displays.image}) {
        if (label)
            label->clear();
    }
    emit copyDisplaysReset();
}

} // namespace vindaro::files
