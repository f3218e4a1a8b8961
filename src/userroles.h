#pragma once

#include <shared/objectinfo.h>
#include <shared/roletemplateinfo.h>
#include <shared/taskinfo.h>
#include <shared/types.h>

#include <QString>
#include <QWidget>

#include <memory>

class FastProxyModel;
class FastTreeModel;

namespace Ui {
class UserRoles;
}

// The roles tab of the user dialogs: the operator picks the user's one role template from a
// list and sees, read-only, which roles it grants. Nobody changes his own template, and only
// an operator with "RL_ROLE_LINKUSER" changes anybody else's. A change goes to the screen's
// queue as a "save_object" of the user, and a "prescribe" of the new template behind it.
class UserRoles : public QWidget
{
    Q_OBJECT
public:
    explicit UserRoles(QWidget *parent = nullptr);
    ~UserRoles() override;

    // Which kinds of template the list offers; set them before the templates arrive. The
    // user's present template is always offered, whatever its kind.
    void setMobileRolesAvailable(bool available);
    void setDesktopRolesAvalable(bool available);
    // Mobile: a standard mobile template, or any id beginning with "RT_MOBILE". Desktop: the
    // rest.
    bool isMobileRole(const QString &id) const;
    bool isDesktopRole(const QString &id) const;

signals:
    // The operator picked an entry of the list.
    void dataEdited();
    void appendTask(zeral::TaskInfo task);
    void showMessage(QString text);
    // The user's template has been saved.
    void roleChanged(QString rt_id);

public slots:
    void setCurrent(const zeral::ObjectInfo &info);
    // The templates the operator may see, as the server answered for him.
    void setRoleTemplates(const zeral::ROLETEMPLATES_HASH &templs);
    void applyChanges();
    // The outcome of the save: the user's uid, or 0 when it failed.
    void saved(zeral::TYPE_ID uid);

private slots:
    void roleTemplateChanged();
    void showTemplateRoles(const QString &rt_id);

private:
    QString presentTemplateId() const;
    QString selectedTemplateId() const;
    QString templateName(const QString &id) const;
    bool editsSelf() const;

    std::unique_ptr<Ui::UserRoles> m_ui;
    zeral::ObjectInfo m_current;
    FastTreeModel *m_rolesModel = nullptr; // the store's
    FastProxyModel *m_proxy = nullptr;     // owned by the view
    zeral::ROLETEMPLATES_HASH m_roleTemplates;
    bool m_mobileRolesAvailable = false;
    bool m_desktopRolesAvailable = true;
};
