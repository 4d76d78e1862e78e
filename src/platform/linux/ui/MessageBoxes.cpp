#include "MessageBoxes.h"

#include <QMessageBox>

namespace vindaro::platform {

int execMessageBox(const MessageBox& box, QWidget* parent)
{
    QMessageBox message(parent);
    message.setWindowTitle(box.title);
    message.setText(QString(box.text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    message.setTextFormat(Qt::PlainText);
    switch (box.icon) {
    case BoxIcon::Exclamation:
        message.setIcon(QMessageBox::Warning);
        break;
    case BoxIcon::Critical:
        message.setIcon(QMessageBox::Critical);
        break;
    case BoxIcon::Information:
        message.setIcon(QMessageBox::Information);
        break;
    }
    if (box.buttons == BoxButtons::YesNo) {
        message.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        message.setDefaultButton(QMessageBox::Yes);
        message.setEscapeButton(QMessageBox::No);
        return message.exec() == QMessageBox::Yes ? kAnswerYes : kAnswerNo;
    }
    message.setStandardButtons(QMessageBox::Ok);
    message.exec();
    return kAnswerOk;
}

} // namespace vindaro::platform
