#pragma once

#include <host/gui/wizards/pagelistwizard.h>
#include <shared/objectinfo.h>
#include <shared/roletemplateinfo.h>
#include <shared/taskinfo.h>
#include <shared/templatedata.h>
#include <shared/types.h>
#include <shared/zrhash.h>

#include <QList>
#include <QMultiHash>
#include <QString>

class UserPasswordWizardPage;
class UserPermissionsWizardPage;
class UserProgressWizardPage;
class UserPropertyWizardPage;
class UserRolesWizardPage;

// The wizard that creates one user: his login and names, password, role template and access
// policy, and his rights on five kinds of object, all of them granted at first. No page talks
// to the server: each hands its tasks to the last page when it is left, and that page runs
// them once it is shown. There is no way back, since a page left has already given its tasks.
class NewUserWizard : public PageListWizard
{
    Q_OBJECT
public:
    // The pages in the order of their ids.
    enum PageId {
        PropertyPage,
        PasswordPage,
        RolesPage,
        DepartmentPermissionsPage,
        DevicePermissionPage,
        ReportPermissionPage,
        AccessPolicyPermissionPage,
        MonitoringPermissionPage,
        ProgressPage
    };

    struct Pages
    {
        UserPropertyWizardPage *propertyPage = nullptr;
        UserPasswordWizardPage *passwordPage = nullptr;
        UserRolesWizardPage *rolesPage = nullptr;
        UserPermissionsWizardPage *departmentPermissionsPage = nullptr;
        UserPermissionsWizardPage *devicePermissionPage = nullptr;
        UserPermissionsWizardPage *reportPermissionPage = nullptr;
        UserPermissionsWizardPage *accessPolicyPermissionPage = nullptr;
        UserPermissionsWizardPage *monitoringPermissionPage = nullptr;
        UserProgressWizardPage *progressPage = nullptr;
    };

    explicit NewUserWizard(QWidget *parent = nullptr);

    // The users whose logins are taken.
    void setExistingUsers(const zeral::ZRHash<unsigned int, zeral::ObjectInfo> &users);
    const Pages &pages() const { return m_ui; }

signals:
    void appendTask(zeral::TaskInfo task);
    void templatesForVerify(QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates);
    void uidsForVerify(int variant, int index, QList<zeral::TYPE_ID>);
    void variantsForVerify(QString name, int id, int count);
    void requestUserTemplatesForCreateUser();
    void startVerify();

public slots:
    void setRoleTemplates(zeral::ROLETEMPLATES_HASH templs);
    // The reason the users screen gives for a failed task; the last page shows it.
    void showFailureReason(QString reason);

protected:
    void showButtons(int id) override;

private slots:
    void setTemplatesForVerify(QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates);

private:
    void setupPermissionsUserPage(UserPermissionsWizardPage *page, const QString &title,
                                  const QString &datatype);

    Pages m_ui;
};
