#include "logindialog.h"
#include "ui_logindialog.h"

#include <QPushButton>

LoginDialog::LoginDialog(QWidget *parent)
    : QDialog(parent)
    , m_ui(new Ui::LoginDialog)
{
    m_ui->setupUi(this);
    QFont title = m_ui->titleLabel->font();
    title.setPointSizeF(title.pointSizeF() * 1.3);
    title.setBold(true);
    m_ui->titleLabel->setFont(title);
    setWindowIcon(QIcon::fromTheme(QStringLiteral("object-OT_USER")));
    m_ui->messageWidget->setCloseButtonVisible(false);
    m_ui->messageWidget->hide();
    m_ui->progressLabel->hide();
    m_ui->progressBar->hide();
    m_ui->buttonBox->button(QDialogButtonBox::Ok)->setText(tr("Войти"));
    m_ui->buttonBox->button(QDialogButtonBox::Cancel)->setText(tr("Выход"));
    connect(m_ui->buttonBox, &QDialogButtonBox::accepted, this, &LoginDialog::accept);
    connect(m_ui->buttonBox, &QDialogButtonBox::rejected, this, &LoginDialog::reject);
    connect(m_ui->loginEdit, &QLineEdit::textChanged, this, &LoginDialog::updateOkButton);
    connect(m_ui->serverCombo, &QComboBox::editTextChanged, this, &LoginDialog::updateOkButton);
    updateOkButton();
}

LoginDialog::~LoginDialog() = default;

void LoginDialog::setServers(const QString &embedded, const QStringList &recent,
                             const QString &current)
{
    QComboBox *combo = m_ui->serverCombo;
    combo->clear();
    if (!embedded.isEmpty()) {
        combo->addItem(QIcon::fromTheme(QStringLiteral("object-OT_DATABASE")), embedded);
        combo->setItemData(0, tr("Сервер, встроенный в эту студию"), Qt::ToolTipRole);
    }
    for (const QString &server : recent) {
        if (combo->findText(server) < 0)
            combo->addItem(server);
    }
    const int index = combo->findText(current);
    if (index >= 0)
        combo->setCurrentIndex(index);
    else
        combo->setEditText(current);
}

void LoginDialog::setLogin(const QString &login)
{
    m_ui->loginEdit->setText(login);
    (login.isEmpty() ? static_cast<QWidget *>(m_ui->loginEdit) : m_ui->passwordEdit)->setFocus();
}

QString LoginDialog::login() const
{
    return m_ui->loginEdit->text().trimmed();
}

QString LoginDialog::password() const
{
    return m_ui->passwordEdit->password();
}

QString LoginDialog::serverText() const
{
    return m_ui->serverCombo->currentText().trimmed();
}

QString LoginDialog::messageText() const
{
    return m_ui->messageWidget->isVisibleTo(this) ? m_ui->messageWidget->text() : QString();
}

void LoginDialog::clearPassword()
{
    m_ui->passwordEdit->clear();
}

void LoginDialog::setBusy(const QString &text, int step, int steps)
{
    m_busy = true;
    setFieldsEnabled(false);
    m_ui->messageWidget->hide();
    m_ui->progressLabel->setText(text);
    m_ui->progressLabel->show();
    m_ui->progressBar->setRange(0, steps);
    m_ui->progressBar->setValue(step);
    m_ui->progressBar->show();
    updateOkButton();
}

void LoginDialog::showMessage(const QString &text, MessageWidget::Icon icon)
{
    m_busy = false;
    setFieldsEnabled(true);
    m_ui->progressLabel->hide();
    m_ui->progressBar->hide();
    if (text.isEmpty()) {
        m_ui->messageWidget->hide();
    } else {
        m_ui->messageWidget->setText(text);
        m_ui->messageWidget->setMessageIcon(icon);
        m_ui->messageWidget->setWordWrap(true);
        m_ui->messageWidget->show();
    }
    updateOkButton();
    (login().isEmpty() ? static_cast<QWidget *>(m_ui->loginEdit) : m_ui->passwordEdit)->setFocus();
}

void LoginDialog::accept()
{
    // The dialog stays open: the studio closes it once the operator is logged in.
    if (!m_busy && m_ui->buttonBox->button(QDialogButtonBox::Ok)->isEnabled())
        emit loginRequested();
}

void LoginDialog::reject()
{
    emit quitRequested();
}

void LoginDialog::setFieldsEnabled(bool enabled)
{
    m_ui->loginEdit->setEnabled(enabled);
    m_ui->passwordEdit->setEnabled(enabled);
    m_ui->serverCombo->setEnabled(enabled);
}

void LoginDialog::updateOkButton()
{
    m_ui->buttonBox->button(QDialogButtonBox::Ok)
        ->setEnabled(!m_busy && !login().isEmpty() && !serverText().isEmpty());
}
