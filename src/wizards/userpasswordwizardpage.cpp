#include "userpasswordwizardpage.h"
#include "ui_userpasswordwizardpage.h"

#include <src/pastmarkingdateedit.h>
#include <src/wizards/newusertask.h>

#include <host/core/guipassfuncs.h>
#include <host/core/logging.h>
#include <host/core/passhash.h>
#include <shared/dbkeys.h>

#include <QCryptographicHash>
#include <QDate>
#include <QEvent>
#include <QWizard>

UserPasswordWizardPage::UserPasswordWizardPage(QWidget *parent)
    : ZRWizardPage(parent)
    , m_ui(std::make_unique<Ui::UserPasswordWizardPage>())
{
    m_ui->setupUi(this);

    m_ui->passwExpireDate = PastMarkingDateEdit::replace(m_ui->passwExpireDate);
    setTabOrder(m_ui->cbIsPasswordTimeLimit, m_ui->passwExpireDate);

    connect(m_ui->cbIsPasswordTimeLimit, &QCheckBox::clicked, this,
            &UserPasswordWizardPage::passwExpireTypeChanged);
    connect(m_ui->passChangeWidget, &PasswordChangeWidget::passCheckResult, this,
            &UserPasswordWizardPage::onPassCheckResult);
    connect(m_ui->passChangeWidget, &PasswordChangeWidget::passwordGenerated, this,
            &UserPasswordWizardPage::onPasswordGenerated);
    m_ui->passChangeWidget->setElementsEnabled(!m_ui->cbUseDefaultPassword->isChecked());
    connect(m_ui->cbUseDefaultPassword, &QCheckBox::toggled, this,
            &UserPasswordWizardPage::onUseDefaultPasswordToggled);
}

UserPasswordWizardPage::~UserPasswordWizardPage() = default;

void UserPasswordWizardPage::onPassCheckResult(bool pass_check_res)
{
    m_passCheckPassed = pass_check_res;
    emit completeChanged();
}

void UserPasswordWizardPage::onPasswordGenerated(QString password)
{
    // A generated password meets the policy by its making.
    Q_UNUSED(password)
    m_passCheckPassed = true;
    emit completeChanged();
}

void UserPasswordWizardPage::onUseDefaultPasswordToggled(bool checked)
{
    m_ui->passChangeWidget->setElementsEnabled(!checked);
    if (checked) {
        // The default password is known to more than the user: he must change it.
        m_ui->cbRequireChangePassword->setEnabled(false);
        m_ui->cbRequireChangePassword->setChecked(true);
    } else {
        m_ui->passChangeWidget->startCheckingProcess();
        m_ui->cbRequireChangePassword->setEnabled(true);
    }
    emit completeChanged();
}

void UserPasswordWizardPage::passwExpireTypeChanged()
{
    if (!m_ui->cbIsPasswordTimeLimit->isChecked()) {
        m_ui->passwExpireDate->setEnabled(false);
        return;
    }
    // An empty or unreadable setting reads as 0 days: the password expires today.
    const uint days
        = GUIPassFuncs::getDBParameterByName(QLatin1String(db::database::PASSWORD_EXPIRED))
              .toUInt();
    m_ui->passwExpireDate->setEnabled(true);
    m_ui->passwExpireDate->setDate(QDate::currentDate().addDays(days));
}

bool UserPasswordWizardPage::isComplete() const
{
    const bool useDefault = m_ui->cbUseDefaultPassword->isChecked();
    qCDebug(ucc()) << "Check flags:" << useDefault << m_passCheckPassed;
    return useDefault || m_passCheckPassed;
}

QHash<QString, QString> UserPasswordWizardPage::properties() const
{
    const bool useDefault = m_ui->cbUseDefaultPassword->isChecked();
    const QString password
        = useDefault ? GUIPassFuncs::getDBParameterByName(QLatin1String(db::database::PASSWORD_DEF))
                     : m_ui->passChangeWidget->password();
    const bool requireChange = useDefault || m_ui->cbRequireChangePassword->isChecked();
    const QString expiry = m_ui->cbIsPasswordTimeLimit->isChecked()
                               ? m_ui->passwExpireDate->date().toString(Qt::ISODate)
                               : QString();
    return {
        {QLatin1String(db::user::PASSHASH), PassHash::encrypt(password, QCryptographicHash::Md5)},
        {QLatin1String(db::user::REQUIRE_CHANGE),
         requireChange ? QStringLiteral("1") : QStringLiteral("0")},
        {QLatin1String(db::database::PASSWORD_EXPIRED), expiry}};
}

bool UserPasswordWizardPage::validatePage()
{
    emit appendTask(NewUserTask::objectTask(QStringLiteral("save_object"), properties(), this,
                                            QStringLiteral("objectUpdated"),
                                            tr("Изменение параметров пользователя %1"),
                                            tr("Ошибка изменения параметров пользователя %1")));
    m_ui->passChangeWidget->hideCriteriaWidget();
    return true;
}

void UserPasswordWizardPage::initializePage()
{
    // The rules float beside the wizard's window and follow it.
    if (QWizard *owner = wizard())
        owner->installEventFilter(this);
    ZRWizardPage::initializePage();
}

bool UserPasswordWizardPage::eventFilter(QObject *object, QEvent *event)
{
    if (object == wizard() && (event->type() == QEvent::Move || event->type() == QEvent::Resize)) {
        m_ui->passChangeWidget->moveCriteriaWidget();
    }
    return ZRWizardPage::eventFilter(object, event);
}
