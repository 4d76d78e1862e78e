#include "frmSystem.h"

#include "CaptionButton.h"
#include "chrome/ToolTips.h"
#include "oplog/ChangeMonitor.h"
#include "oplog/LogTexts.h"

#include <QCloseEvent>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTimer>
#include <QVBoxLayout>

namespace vindaro::oplog::ui {

namespace {

const QColor kTextBackground(255, 255, 245);
const QColor kTextColour(0, 92, 128);

// The text boxes show LF line ends; the log keeps CR LF.
QString shownText(const QString& text)
{
    QString shown = text;
    shown.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    return shown;
}

// "宋体" at 9 points where the system has it (or a substitute for it), else "MS Sans Serif" at 8.
QFont windowFont()
{
    const QString song = QStringLiteral("宋体");
    if (QFontDatabase::hasFamily(song) || !QFont::substitutes(song).isEmpty())
        return QFont(song, 9);
    return QFont(QStringLiteral("MS Sans Serif"), 8);
}

QPlainTextEdit* textBox(const char* name)
{
    auto* box = new QPlainTextEdit;
    box->setObjectName(QLatin1String(name));
    box->setReadOnly(true);
    box->setLineWrapMode(QPlainTextEdit::NoWrap);
    QPalette colours = box->palette();
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        colours.setColor(group, QPalette::Base, kTextBackground);
        colours.setColor(group, QPalette::Text, kTextColour);
    }
    box->setPalette(colours);
    return box;
}

} // namespace

frmSystem::frmSystem(OperationLog& log, ChangeMonitor* monitor, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_log(log)
{
    setObjectName(QStringLiteral("frmSystem"));
    setWindowTitle(kLogWindowTitle);
    setFont(windowFont());
    buildWindow();

    connect(&m_log, &OperationLog::entriesAppended, this, &frmSystem::appendToView);
    connect(&m_log, &OperationLog::runningTextCleared, this, &frmSystem::clearView);
    connect(&m_log, &OperationLog::fileViewChanged, this,
        [this](const QString& text) { m_lText->setPlainText(shownText(text)); });
    connect(&m_log, &OperationLog::shownChanged, this, &frmSystem::showShownText);
    // What the log held before the window was loaded.
    appendToView(m_log.runningText());

    if (monitor && monitor->start(m_log.changeQueue()))
        m_monitor = monitor;
    else
        m_log.putLine(kMonitorUnavailable);
    showShownText();
}

frmSystem::~frmSystem()
{
    Unload();
}

void frmSystem::buildWindow()
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(6, 6, 6, 6);
    column->setSpacing(4);
    m_lblTitle = new QLabel(kLogWindowDescription);
    m_lblTitle->setObjectName(QStringLiteral("lblTitle"));
    m_lblTitle->setWordWrap(true);
    column->addWidget(m_lblTitle);

    // tText and lText at the same place and size; one of them is shown.
    auto* texts = new QGridLayout;
    m_tText = textBox("tText");
    m_tText->setMaximumBlockCount(kShownLines);
    m_lText = textBox("lText");
    texts->addWidget(m_tText, 0, 0);
    texts->addWidget(m_lText, 0, 0);
    column->addLayout(texts, 1);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(4);
    QList<chrome::ToolTipEntry> tips;
    for (const LogButtonText& entry : logButtonTexts()) {
        auto* button = new CaptionButton(entry.caption, entry.control);
        buttons->addWidget(button);
        tips.append(chrome::ToolTipEntry{entry.control, QString(), {entry.tip}});
        switch (entry.button) {
        case LogButton::View:
            connect(button, &QAbstractButton::clicked, &m_log, &OperationLog::viewFile);
            break;
        case LogButton::ClearFile:
            connect(button, &QAbstractButton::clicked, &m_log, &OperationLog::emptyFile);
            break;
        case LogButton::ClearRunningText:
            connect(button, &QAbstractButton::clicked, &m_log, &OperationLog::emptyRunningText);
            break;
        case LogButton::Exit:
            connect(button, &QAbstractButton::clicked, this, [this] {
                m_log.showRunningText();
                close();
            });
            break;
        }
    }
    buttons->addStretch(1);
    column->addLayout(buttons);
    chrome::attachToolTips(this, tips);
    resize(560, 380);
}

void frmSystem::appendToView(const QString& text)
{
    if (text.isEmpty())
        return;
    const QString shown = shownText(text);
    const int lines = int(shown.count(QLatin1Char('\n')));
    if (m_pending.isEmpty() && lines <= kLinesPerStep) {
        // The usual case, an entry or a few: shown at once.
        QTextCursor end(m_tText->document());
        end.movePosition(QTextCursor::End);
        end.insertText(shown);
        m_tText->setTextCursor(end); // the newest entry in view
        return;
    }
    m_pending += shown;
    m_pendingLines += lines;
    if (m_pendingLines > kShownLines) {
        // Lines that would scroll out of tText at once are not put in at all.
        qsizetype cut = 0;
        for (int drop = m_pendingLines - kShownLines; drop > 0; --drop)
            cut = m_pending.indexOf(QLatin1Char('\n'), cut) + 1;
        m_pending.remove(0, cut);
        m_pendingLines = kShownLines;
        m_clearBeforePending = true;
    }
    if (!m_stepScheduled && isVisible()) {
        m_stepScheduled = true;
        QTimer::singleShot(0, this, &frmSystem::showPendingStep);
    }
}

void frmSystem::showPendingStep()
{
    m_stepScheduled = false;
    if (m_pending.isEmpty() || !isVisible())
        return;
    if (m_clearBeforePending) {
        m_tText->clear();
        m_clearBeforePending = false;
    }
    qsizetype cut = 0;
    int lines = 0;
    while (lines < kLinesPerStep && cut < m_pending.size()) {
        const qsizetype next = m_pending.indexOf(QLatin1Char('\n'), cut);
        cut = next < 0 ? m_pending.size() : next + 1;
        ++lines;
    }
    QTextCursor end(m_tText->document());
    end.movePosition(QTextCursor::End);
    end.insertText(m_pending.left(cut));
    m_tText->setTextCursor(end);
    m_pending.remove(0, cut);
    m_pendingLines -= lines;
    if (!m_pending.isEmpty()) {
        m_stepScheduled = true;
        QTimer::singleShot(0, this, &frmSystem::showPendingStep);
    }
}

void frmSystem::clearView()
{
    m_tText->clear();
    m_pending.clear();
    m_pendingLines = 0;
    m_clearBeforePending = false;
}

void frmSystem::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!m_pending.isEmpty() && !m_stepScheduled) {
        m_stepScheduled = true;
        QTimer::singleShot(0, this, &frmSystem::showPendingStep);
    }
}

void frmSystem::showShownText()
{
    const bool file = m_log.shown() == OperationLog::Shown::FileView;
    m_lText->setVisible(file);
    m_tText->setVisible(!file);
}

void frmSystem::GetFileCopyLog(const QString& description)
{
    m_log.GetFileCopyLog(description);
}

void frmSystem::Unload()
{
    if (m_unloaded)
        return;
    m_unloaded = true;
    m_keepLoaded = false;
    if (m_monitor)
        m_monitor->stop(); // nothing reaches the queue after this
    m_monitor = nullptr;
    m_log.writeRunningText();
}

void frmSystem::closeEvent(QCloseEvent* event)
{
    if (m_keepLoaded) {
        event->ignore();
        hide();
        return;
    }
    Unload();
    event->accept();
}

} // namespace vindaro::oplog::ui
