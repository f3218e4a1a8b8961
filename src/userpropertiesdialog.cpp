#include "userpropertiesdialog.h"

#include "rolecontainer.h"
#include "signalbinder.h"
#include "userpermissions.h"
#include "userproperties.h"
#include "userroles.h"

#include <host/core/localstorage.h>
#include <host/core/zrglobals.h>
#include <shared/datasets.h>

UserPropertiesDialog::UserPropertiesDialog(QWidget *parent)
    : TabbedDialog(parent)
    , binder(new SignalBinder(this))
{
    connect(zeral::LocalStorage::instance(), &zeral::LocalStorage::dataRemoved, this,
            &UserPropertiesDialog::objectsRemoved);
}

void UserPropertiesDialog::initTabs()
{
    initPropertiesTab();
    initRolesTab();
    initPermissionsTab();
    // A template chosen on the roles tab re-scopes the objects offered at once.
    if (permissionsTab)
        connect(rolesTab, &UserRoles::roleChanged, permissionsTab,
                &UserPermissions::setCurrentRoleTemplate);
}

void UserPropertiesDialog::initPropertiesTab()
{
    propertiesTab = new UserProperties(this);
    addTab(propertiesTab, tr("Основное"));
    connect(propertiesTab, &UserProperties::dataEdited, this, &TabbedDialog::showSaveButton);
    // A login that isn't valid takes the Save button away, whatever the other tabs hold.
    connect(propertiesTab, &UserProperties::denyEdit, this, &TabbedDialog::saved);
    connect(propertiesTab, &UserProperties::appendTask, this, &UserPropertiesDialog::appendTask);
    connect(propertiesTab, &UserProperties::showMessage, this,
            qOverload<const QString &>(&TabbedDialog::showMessage));
    connect(binder, &SignalBinder::currentChanged, propertiesTab, &UserProperties::setCurrent);
    connect(binder, &SignalBinder::templatesCountChanged, propertiesTab,
            &UserProperties::setTemplatesCount);
    connect(binder, &SignalBinder::userSaved, propertiesTab, &UserProperties::saved);
    connect(binder, &SignalBinder::acceptChanges, propertiesTab, &UserProperties::applyChanges);
}

void UserPropertiesDialog::initRolesTab()
{
    rolesTab = new UserRoles(this);
    rolesTab->setMobileRolesAvailable(false);
    rolesTab->setDesktopRolesAvalable(true);
    addTab(rolesTab, tr("Роли доступа"));
    connect(rolesTab, &UserRoles::dataEdited, this, &TabbedDialog::showSaveButton);
    connect(rolesTab, &UserRoles::appendTask, this, &UserPropertiesDialog::appendTask);
    connect(rolesTab, &UserRoles::showMessage, this,
            qOverload<const QString &>(&TabbedDialog::showMessage));
    connect(binder, &SignalBinder::currentChanged, rolesTab, &UserRoles::setCurrent);
    connect(binder, &SignalBinder::userAccessSaved, rolesTab, &UserRoles::saved);
    connect(binder, &SignalBinder::roleTemplatesChanged, rolesTab, &UserRoles::setRoleTemplates);
    connect(binder, &SignalBinder::acceptChanges, rolesTab, &UserRoles::applyChanges);
}

void UserPropertiesDialog::initPermissionsTab()
{
    if (!userctl::RoleContainer::canRoleLinkSubdiv())
        return;
    permissionsTab = new UserPermissions(this);
    addTab(permissionsTab, tr("Полномочия"));
    connect(permissionsTab, &UserPermissions::dataEdited, this, &TabbedDialog::showSaveButton);
    connect(permissionsTab, &UserPermissions::appendTask, this, &UserPropertiesDialog::appendTask);
    connect(binder, &SignalBinder::currentChanged, permissionsTab, &UserPermissions::setCurrent);
    connect(binder, &SignalBinder::roleTemplatesChanged, permissionsTab,
            &UserPermissions::setRoleTemplates);
    connect(binder, &SignalBinder::permissionsChanged, permissionsTab,
            &UserPermissions::setPermissions);
    connect(binder, &SignalBinder::acceptChanges, permissionsTab, &UserPermissions::applyChanges);
}

void UserPropertiesDialog::setCurrent(zeral::ObjectInfo info)
{
    current = info;
    emit binder->currentChanged(info);
    // Filling the tabs may have raised the Save button; nothing has been edited yet.
    TabbedDialog::saved();
}

void UserPropertiesDialog::setRoleTemplates(zeral::ROLETEMPLATES_HASH rt_hash)
{
    emit binder->roleTemplatesChanged(rt_hash);
}

void UserPropertiesDialog::setPermissions(QList<zeral::OBJECT_PERMISSION> permissions)
{
    emit binder->permissionsChanged(permissions);
}

void UserPropertiesDialog::setTemplatesCount(zeral::TYPE_ID uid, int count)
{
    emit binder->templatesCountChanged(uid, count);
}

void UserPropertiesDialog::applyChanges()
{
    emit binder->acceptChanges();
}

void UserPropertiesDialog::setUserSaved(zeral::TYPE_ID uid)
{
    emit binder->userSaved(uid);
}

void UserPropertiesDialog::setUserAccessSaved(zeral::TYPE_ID uid)
{
    emit binder->userAccessSaved(uid);
}

void UserPropertiesDialog::objectsRemoved(const QString &dataname,
                                          const QList<zeral::TYPE_ID> &uids)
{
    if (current.uid == 0 || dataname != QLatin1String(zeral::USER_DATANAME)
        || !uids.contains(current.uid))
        return;
    // Another session deleted the user: a save can only be refused now, so say it before the
    // operator tries, and say what is left to do.
    showCriticalMessage(tr("Пользователь %1 удалён в другой сессии. Изменения сохранить нельзя: "
                           "закройте окно.")
                            .arg(ZRGlobals::objectName(current)));
}
