#include "newuserwizard.h"

#include "userpasswordwizardpage.h"
#include "userpermissionswizardpage.h"
#include "userprogresswizardpage.h"
#include "userpropertywizardpage.h"
#include "userroleswizardpage.h"

#include <src/userpermissions.h>

#include <shared/datasets.h>

#include <QCoreApplication>

NewUserWizard::NewUserWizard(QWidget *parent)
    : PageListWizard(parent)
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("NewUserWizard"));
    setWindowModality(Qt::ApplicationModal);
    resize(652, 503);

    const auto add = [this](auto *page, const char *name) {
        page->setObjectName(QLatin1String(name));
        addPage(page);
        return page;
    };
    m_ui.propertyPage = add(new UserPropertyWizardPage, "propertyPage");
    m_ui.passwordPage = add(new UserPasswordWizardPage, "passwordPage");
    m_ui.rolesPage = add(new UserRolesWizardPage, "rolesPage");
    m_ui.departmentPermissionsPage
        = add(new UserPermissionsWizardPage, "departmentPermissionsPage");
    m_ui.devicePermissionPage = add(new UserPermissionsWizardPage, "devicePermissionPage");
    m_ui.reportPermissionPage = add(new UserPermissionsWizardPage, "reportPermissionPage");
    m_ui.accessPolicyPermissionPage
        = add(new UserPermissionsWizardPage, "accessPolicyPermissionPage");
    m_ui.monitoringPermissionPage = add(new UserPermissionsWizardPage, "monitoringPermissionPage");
    m_ui.progressPage = add(new UserProgressWizardPage, "progressPage");

    setWindowTitle(
        QCoreApplication::translate("NewUserWizard", "Мастер добавления нового пользователя"));
    QMetaObject::connectSlotsByName(this);

    setAttribute(Qt::WA_DeleteOnClose);
    setOption(QWizard::IndependentPages, false);

    setupPermissionsUserPage(m_ui.departmentPermissionsPage, tr("Полномочия на подразделения"),
                             QLatin1String(zeral::ORGSTRUCTURE_DATANAME));
    setupPermissionsUserPage(m_ui.devicePermissionPage, tr("Полномочия на объекты доступа"),
                             QLatin1String(zeral::PLACING_DATANAME));
    setupPermissionsUserPage(m_ui.reportPermissionPage, tr("Полномочия на отчеты"),
                             QLatin1String(zeral::REPORT_DATANAME));
    setupPermissionsUserPage(m_ui.accessPolicyPermissionPage, tr("Полномочия на группы доступа"),
                             QLatin1String(zeral::POLICY_DATANAME));
    setupPermissionsUserPage(m_ui.monitoringPermissionPage,
                             tr("Полномочия на настройки мониторинга"),
                             QLatin1String(zeral::MONITORING_DATANAME));

    rebuildPageList();
    addPageGroup(tr("Полномочия"),
                 {DepartmentPermissionsPage, DevicePermissionPage, ReportPermissionPage,
                  AccessPolicyPermissionPage, MonitoringPermissionPage});

    // Each page hands its tasks over when it is left, so they reach the last page in the
    // order of the pages: the creation first, the rights last.
    UserProgressWizardPage *progress = m_ui.progressPage;
    connect(m_ui.propertyPage, &UserPropertyWizardPage::appendTask, progress,
            &UserProgressWizardPage::addTask);
    connect(m_ui.rolesPage, &UserRolesWizardPage::appendTask, progress,
            &UserProgressWizardPage::addTask);
    connect(m_ui.passwordPage, &UserPasswordWizardPage::appendTask, progress,
            &UserProgressWizardPage::addTask);
    for (UserPermissionsWizardPage *page :
         {m_ui.departmentPermissionsPage, m_ui.devicePermissionPage, m_ui.reportPermissionPage,
          m_ui.accessPolicyPermissionPage, m_ui.monitoringPermissionPage})
        connect(page, &UserPermissionsWizardPage::appendTask, progress,
                &UserProgressWizardPage::addTask);

    connect(progress, &UserProgressWizardPage::executeTask, this, &NewUserWizard::appendTask);

    connect(this, &NewUserWizard::templatesForVerify, progress,
            &UserProgressWizardPage::templatesForVerify);
    connect(this, &NewUserWizard::variantsForVerify, progress,
            &UserProgressWizardPage::variantsForVerify);
    connect(this, &NewUserWizard::uidsForVerify, progress, &UserProgressWizardPage::uidsForVerify);
    connect(this, &NewUserWizard::startVerify, progress, &UserProgressWizardPage::startVerify);
    connect(progress, &UserProgressWizardPage::requestUserTemplatesForCreateUser, this,
            &NewUserWizard::requestUserTemplatesForCreateUser);
}

void NewUserWizard::setExistingUsers(const zeral::ZRHash<unsigned int, zeral::ObjectInfo> &users)
{
    m_ui.propertyPage->setExistingUsers(users);
}

void NewUserWizard::setRoleTemplates(zeral::ROLETEMPLATES_HASH templs)
{
    m_ui.rolesPage->setRoleTemplates(templs);
}

void NewUserWizard::showFailureReason(QString reason)
{
    m_ui.progressPage->showFailureReason(reason);
}

void NewUserWizard::showButtons(int id)
{
    if (id == ProgressPage)
        setButtonLayout({QWizard::Stretch, QWizard::FinishButton});
    else
        setButtonLayout({QWizard::Stretch, QWizard::NextButton, QWizard::CancelButton});
}

void NewUserWizard::setTemplatesForVerify(
    QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates)
{
    setEnabled(true);
    m_ui.progressPage->setTemplatesForVerify(templates);
}

void NewUserWizard::setupPermissionsUserPage(UserPermissionsWizardPage *page, const QString &title,
                                             const QString &datatype)
{
    page->setTitle(title);
    UserPermissions *permissions = page->permissionsWidget();
    permissions->setDatatype(datatype);
    permissions->setObjectTypeSelectorEnabled(false);
    permissions->checkAll();
}
