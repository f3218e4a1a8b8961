#include "passworddialog.h"
#include "ui_passworddialog.h"

#include <host/core/authdata.h>
#include <host/core/passhash.h>

#include <QCryptographicHash>
#include <QPushButton>

PasswordDialog::PasswordDialog(unsigned int uid, QWidget *parent)
    : QDialog(parent)
    , m_uid(uid)
    , m_ui(std::make_unique<Ui::PasswordDialog>())
{
    m_ui->setupUi(this);

    QPushButton *ok = m_ui->buttonBox->button(QDialogButtonBox::Ok);
    ok->setEnabled(false);
    // Ok accepts only after the current password has been checked, so the box's own
    // accepted() is left unconnected.
    connect(ok, &QPushButton::clicked, this, &PasswordDialog::changePassword);
    connect(m_ui->buttonBox, &QDialogButtonBox::rejected, this, &PasswordDialog::reject);
    connect(m_ui->leOldPassword, &QLineEdit::textEdited, this, &PasswordDialog::oldPasswordEdited);
    m_ui->passChangeWidget->setVisisbleExtraElements(false);
    connect(m_ui->passChangeWidget, &PasswordChangeWidget::passCheckResult, this,
            &PasswordDialog::onPassCheck);
    m_ui->oldPasswordWidget->setVisible(selfChange(m_uid));
    m_ui->lbMessage->hide();
    adjustSize();
}

PasswordDialog::~PasswordDialog() = default;

QString PasswordDialog::password() const
{
    return m_ui->passChangeWidget->password();
}

bool PasswordDialog::selfChange(unsigned int uid)
{
    return uid == AuthData::userId();
}

void PasswordDialog::resizeEvent(QResizeEvent *event)
{
    QDialog::resizeEvent(event);
    m_ui->passChangeWidget->moveCriteriaWidget();
}

void PasswordDialog::moveEvent(QMoveEvent *event)
{
    QDialog::moveEvent(event);
    m_ui->passChangeWidget->moveCriteriaWidget();
}

void PasswordDialog::changePassword()
{
    // Setting another user's password needs no proof beyond the operator's rights.
    if (!selfChange(m_uid)) {
        accept();
        return;
    }
    // The comparison is local, against the hash computed when the operator logged in.
    const QString given = PassHash::encrypt(m_ui->leOldPassword->text(), QCryptographicHash::Md5);
    if (given == AuthData::passwdHash()) {
        accept();
        return;
    }
    m_ui->lbMessage->show();
    m_ui->leOldPassword->clear();
}

void PasswordDialog::onPassCheck(bool ok)
{
    m_ui->buttonBox->button(QDialogButtonBox::Ok)->setEnabled(ok);
}

void PasswordDialog::oldPasswordEdited()
{
    m_ui->lbMessage->hide();
    adjustSize();
}
