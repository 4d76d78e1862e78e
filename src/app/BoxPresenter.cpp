#include "BoxPresenter.h"

#include <QMessageBox>

namespace vindaro::app {

QString displayText(const QString& text)
{
    QString shown = text;
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return shown;
}

int MessageBoxPresenter::present(const platform::MessageBox& box, QWidget* parent)
{
    QMessageBox message(parent);
    message.setWindowTitle(box.title);
    message.setText(displayText(box.text));
    message.setTextFormat(Qt::PlainText);
    switch (box.icon) {
    case platform::BoxIcon::Exclamation:
        message.setIcon(QMessageBox::Warning);
        break;
    case platform::BoxIcon::Critical:
        message.setIcon(QMessageBox::Critical);
        break;
    case platform::BoxIcon::Information:
        message.setIcon(QMessageBox::Information);
        break;
    }
    if (box.buttons == platform::BoxButtons::YesNo) {
        message.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        message.setDefaultButton(QMessageBox::Yes);
        message.setEscapeButton(QMessageBox::No);
        return message.exec() == QMessageBox::Yes ? platform::kAnswerYes : platform::kAnswerNo;
    }
    message.setStandardButtons(QMessageBox::Ok);
    message.exec();
    return platform::kAnswerOk;
}

} // namespace vindaro::app
