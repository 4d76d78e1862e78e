#pragma once

#include "platform/linux/DesktopExec.h"
#include "platform/linux/MimeAssociations.h"

#include <QDialog>

class QListWidget;
class QPushButton;

namespace vindaro::platform {

// "打开方式": the program's own chooser of the application that opens a file, for desktops without a
// portal of their own. It lists the applications given (icon and name, the first chosen), and on 确定 or a
// double-click starts the chosen one through `launcher` with its Exec line expanded for the file. It
// closes accepted once the program started; when it cannot start, a "提醒！" box says so and the list
// stays up for another choice.
class OpenWithDialog final : public QDialog
{
    Q_OBJECT
public:
    OpenWithDialog(const QString& path, QList<DesktopApplication> applications, Launcher launcher,
        QWidget* parent = nullptr);

    // The terminal for applications that ask for one; defaultTerminal() unless set.
    void setTerminal(QStringList terminal) { m_terminal = std::move(terminal); }

    static QString promptText(const QString& fileName);
    static QString noApplicationsText();
    static QString startFailedText(const QString& name);
    static QString badCommandText(const QString& name, const QString& exec);

private:
    void openChosen();
    void tell(const QString& text);

    QString m_path;
    QList<DesktopApplication> m_applications; // in the list's order
    Launcher m_launcher;
    QStringList m_terminal;
    QListWidget* m_list = nullptr;
    QPushButton* m_ok = nullptr;
};

} // namespace vindaro::platform
