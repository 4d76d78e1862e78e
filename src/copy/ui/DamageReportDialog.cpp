#include "DamageReportDialog.h"

#include "copy/RescueMessages.h"

#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace vindaro::copy {

DamageReportDialog::DamageReportDialog(const DamageReport& report, QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frmDamageReport"));
    setWindowTitle(QStringLiteral("损坏报告"));
    auto* layout = new QVBoxLayout(this);
    m_text = new QPlainTextEdit(this);
    m_text->setObjectName(QStringLiteral("txtReport"));
    m_text->setReadOnly(true);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setPlainText(msg::damageReportText(report));
    layout->addWidget(m_text, 1);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    m_copyAgain = new QPushButton(QStringLiteral("复制没有复制到的文件[&R]"), this);
    m_copyAgain->setObjectName(QStringLiteral("cmdCopyAgain"));
    m_copyAgain->setVisible(!report.notReached.isEmpty());
    connect(m_copyAgain, &QPushButton::clicked, this, [this, files = report.notReached] {
        emit copyAgainRequested(files);
        accept();
    });
    buttons->addWidget(m_copyAgain);
    auto* close = new QPushButton(QStringLiteral("关 闭[&O]"), this);
    close->setObjectName(QStringLiteral("cmdClose"));
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    buttons->addWidget(close);
    layout->addLayout(buttons);
    resize(560, 320);
}

QString DamageReportDialog::text() const
{
    return m_text->toPlainText();
}

} // namespace vindaro::copy
