#include "rootpassworddialog.h"

#include <host/gui/widgets/passwordchangewidget.h>

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

RootPasswordDialog::RootPasswordDialog(QWidget *parent)
    : QDialog(parent)
    , m_password(new PasswordChangeWidget(this))
{
    setWindowTitle(tr("Пароль администратора"));
    auto *intro = new QLabel(
        tr("Это первый запуск с новой базой данных. Задайте пароль учётной записи «root»: она "
           "может всё, и без пароля войти в неё нельзя. Запомните пароль или сохраните его в "
           "надёжном месте: восстановить его студия не сможет."),
        this);
    intro->setWordWrap(true);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_okButton = buttons->button(QDialogButtonBox::Ok);
    m_okButton->setText(tr("Задать пароль"));
    m_okButton->setEnabled(false);
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Выход"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_password, &PasswordChangeWidget::passCheckResult, m_okButton,
            &QPushButton::setEnabled);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addWidget(m_password);
    layout->addWidget(buttons);
    resize(480, sizeHint().height());
}

QString RootPasswordDialog::password() const
{
    return m_password->password();
}
