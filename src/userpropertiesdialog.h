#pragma once

#include <host/gui/dialogs/tabbeddialog.h>
#include <shared/objectinfo.h>
#include <shared/objectpermission.h>
#include <shared/roletemplateinfo.h>
#include <shared/taskinfo.h>
#include <shared/types.h>

#include <QList>

class SignalBinder;
class UserPermissions;
class UserProperties;
class UserRoles;

// "Свойства пользователя": the tabs "Основное", "Роли доступа" and, for an operator who may
// give rights on objects, "Полномочия", around one existing user. The dialog holds no logic
// of its own: every slot goes to all tabs at once through the binder, and each tab sends its
// own tasks and hears its own results. The creator calls initTabs() after construction.
class UserPropertiesDialog : public TabbedDialog
{
    Q_OBJECT
public:
    explicit UserPropertiesDialog(QWidget *parent = nullptr);

    virtual void initTabs();

    UserProperties *propertiesPage() const { return propertiesTab; }
    UserRoles *rolesPage() const { return rolesTab; }
    UserPermissions *permissionsPage() const { return permissionsTab; }

signals:
    void appendTask(zeral::TaskInfo task);

public slots:
    void setCurrent(zeral::ObjectInfo info);
    void setRoleTemplates(zeral::ROLETEMPLATES_HASH rt_hash);
    void setPermissions(QList<zeral::OBJECT_PERMISSION> permissions);
    void setTemplatesCount(zeral::TYPE_ID uid, int count);
    void applyChanges();
    void setUserSaved(zeral::TYPE_ID uid);
    void setUserAccessSaved(zeral::TYPE_ID uid);

protected:
    virtual void initPropertiesTab();
    virtual void initRolesTab();
    virtual void initPermissionsTab();

    zeral::ObjectInfo current;
    SignalBinder *binder = nullptr;
    UserProperties *propertiesTab = nullptr;
    UserRoles *rolesTab = nullptr;
    UserPermissions *permissionsTab = nullptr;

private:
    void objectsRemoved(const QString &dataname, const QList<zeral::TYPE_ID> &uids);
};
