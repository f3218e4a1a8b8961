#include "passwordchangedialog.h"

#include <host/gui/widgets/messagewidget.h>
#include <host/gui/widgets/passwordchangewidget.h>

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

PasswordChangeDialog::PasswordChangeDialog(const QString &login, QWidget *parent)
    : QDialog(parent)
    , m_reason(new MessageWidget(this))
    , m_password(new PasswordChangeWidget(this))
    , m_refusal(new MessageWidget(this))
{
    setWindowTitle(tr("Смена пароля"));
    setWindowIcon(QIcon::fromTheme(QStringLiteral("action-change_password")));
    m_reason->setObjectName(QStringLiteral("reasonMessage"));
    m_reason->setCloseButtonVisible(false);
    m_reason->setWordWrap(true);
    m_reason->setMessageIcon(MessageWidget::Warning);
    auto *intro = new QLabel(tr("Придумайте новый пароль для учётной записи «%1». Старый пароль "
                                "после смены перестанет действовать.")
                                 .arg(login),
                             this);
    intro->setWordWrap(true);
    m_refusal->setObjectName(QStringLiteral("refusalMessage"));
    m_refusal->setCloseButtonVisible(false);
    m_refusal->setWordWrap(true);
    m_refusal->setMessageIcon(MessageWidget::Critical);
    m_refusal->hide();

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_okButton = buttons->button(QDialogButtonBox::Ok);
    m_okButton->setText(tr("Сменить пароль и войти"));
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Отмена"));
    connect(buttons, &QDialogButtonBox::accepted, this, &PasswordChangeDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_password, &PasswordChangeWidget::passCheckResult, this,
            &PasswordChangeDialog::updateOkButton);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_reason);
    layout->addWidget(intro);
    layout->addWidget(m_password);
    layout->addWidget(m_refusal);
    layout->addStretch();
    layout->addWidget(buttons);
    updateOkButton();
    resize(480, sizeHint().height());
}

void PasswordChangeDialog::setReason(const QString &reason)
{
    m_reason->setText(reason);
    m_reason->setVisible(!reason.isEmpty());
}

void PasswordChangeDialog::setPasswordOptions(const QMap<QString, QVariant> &options)
{
    m_password->setPasswordOptions(options);
    updateOkButton();
}

QString PasswordChangeDialog::password() const
{
    return m_password->password();
}

QString PasswordChangeDialog::reasonText() const
{
    return m_reason->isVisibleTo(this) ? m_reason->text() : QString();
}

QString PasswordChangeDialog::refusalText() const
{
    return m_refusal->isVisibleTo(this) ? m_refusal->text() : QString();
}

void PasswordChangeDialog::setBusy(bool busy)
{
    m_busy = busy;
    m_password->setElementsEnabled(!busy);
    if (busy)
        m_refusal->hide();
    updateOkButton();
}

void PasswordChangeDialog::showRefusal(const QString &text)
{
    setBusy(false);
    m_refusal->setText(text);
    m_refusal->show();
    m_password->setFocus();
}

void PasswordChangeDialog::accept()
{
    // The dialog stays open until the server has taken the password.
    if (m_okButton->isEnabled())
        emit changeRequested();
}

void PasswordChangeDialog::updateOkButton()
{
    m_okButton->setEnabled(!m_busy && m_password->isPasswordAcceptable());
}
