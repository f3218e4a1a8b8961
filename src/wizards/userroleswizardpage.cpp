#include "userroleswizardpage.h"
#include "ui_userroleswizardpage.h"

#include <src/identificationpolicy.h>
#include <src/mobileuserhelper.h>
#include <src/roletemplatechoices.h>
#include <src/wizards/newusertask.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <shared/dbkeys.h>

#include <QVector>

UserRolesWizardPage::UserRolesWizardPage(QWidget *parent)
    : ZRWizardPage(parent)
    , m_ui(std::make_unique<Ui::UserRolesWizardPage>())
{
    m_ui->setupUi(this);
    ZRComboBox *identType = m_ui->cbIdentType;
    IdentificationPolicy::fillBox(identType);

    // The server-wide default; a value the box doesn't offer leaves the first policy chosen.
    const uint serverDefault = zeral::LocalStorage::instance()
                                   ->dbSettings()
                                   .parameters.value(QLatin1String(db::database::IDENT_TYPE))
                                   .toUInt();
    identType->setCurrentData(serverDefault);
    connect(identType, qOverload<int>(&QComboBox::activated), this,
            &UserRolesWizardPage::identTypeChanged);

    QFont warningFont = font();
    warningFont.setPointSize(warningFont.pointSize() + 2);
    m_ui->lbWarning->setFont(warningFont);
    // Only a policy the operator picks warns; a biometric default alone doesn't.
    m_ui->lbWarning->hide();
}

UserRolesWizardPage::~UserRolesWizardPage() = default;

void UserRolesWizardPage::identTypeChanged()
{
    // A new user has no fingerprints yet, so a policy that needs them can't log him in.
    m_ui->lbWarning->setVisible(
        IdentificationPolicy::needsBiometrics(m_ui->cbIdentType->currentData().toInt()));
}

void UserRolesWizardPage::setRoleTemplates(
    const QHash<QString, zeral::_ROLETEMPLATE_INFO> &templates)
{
    m_roleTemplates = templates;
    QStringList ids = m_roleTemplates.keys();
    // Nobody hands out the template he holds, and a mobile template makes no desktop user.
    ids.removeAll(AuthData::roletemplateId());
    const QStringList mobile = MobileUserHelper::standardMobileRoleTemplates();
    for (const QString &id : mobile)
        ids.removeAll(id);

    QVector<RoleTemplateChoices::Choice> choices;
    for (const QString &id : qAsConst(ids)) {
        QString text = RoleTemplateChoices::builtInName(id);
        if (text.isEmpty())
            text = m_roleTemplates.value(id).name;
        choices.append({text, id});
    }
    RoleTemplateChoices::fill(m_ui->cbRoleTemplate, choices);
}

QHash<QString, QString> UserRolesWizardPage::properties() const
{
    return {
        {QLatin1String(db::user::ROLE_TEMPLATE), m_ui->cbRoleTemplate->currentData().toString()},
        {QLatin1String(db::user::IDENT_TYPE), m_ui->cbIdentType->currentData().toString()}};
}

bool UserRolesWizardPage::validatePage()
{
    const QHash<QString, QString> chosen = properties();
    emit appendTask(NewUserTask::objectTask(
        QStringLiteral("save_object"), chosen, this, QStringLiteral("objectUpdated"),
        tr("Изменение ролей пользователя %1"), tr("Ошибка изменения ролей пользователя %1")));

    zeral::TaskInfo prescribe;
    prescribe.uid = 0;
    prescribe.type = QStringLiteral("prescribe");
    prescribe.data.insert(QLatin1String(db::user::ROLE_TEMPLATE),
                          chosen.value(QLatin1String(db::user::ROLE_TEMPLATE)));
    prescribe.receiver = this;
    prescribe.method = QStringLiteral("objectUpdated");
    prescribe.startMessage = tr("Применение параметров роли пользователя");
    prescribe.errorMessage = tr("Ошибка применения параметров роли пользователя");
    emit appendTask(prescribe);
    return true;
}
