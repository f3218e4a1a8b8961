#pragma once

#include <host/gui/wizards/zrwizardpage.h>
#include <shared/roletemplateinfo.h>
#include <shared/taskinfo.h>

#include <QHash>
#include <QString>

#include <memory>

namespace Ui {
class UserRolesWizardPage;
}

// The access page of the new-user wizard: how the new user identifies at login, and which
// role template he gets. Neither a mobile template nor the operator's own is offered. On Next
// the page emits a save of both parameters and a "prescribe" of the template; the wizard's
// progress page aims them at the user it creates.
class UserRolesWizardPage : public ZRWizardPage
{
    Q_OBJECT
public:
    explicit UserRolesWizardPage(QWidget *parent = nullptr);
    ~UserRolesWizardPage() override;

    // The templates the operator may see; the selection is lost, as the list is made anew.
    void setRoleTemplates(const QHash<QString, zeral::_ROLETEMPLATE_INFO> &templates);
    // "PT_ROLETEMPLATE" (empty when the list is empty) and "PT_IDENT_TYPE", as text.
    QHash<QString, QString> properties() const;

    bool validatePage() override;

signals:
    void appendTask(zeral::TaskInfo task);

private slots:
    void identTypeChanged();

private:
    std::unique_ptr<Ui::UserRolesWizardPage> m_ui;
    zeral::ROLETEMPLATES_HASH m_roleTemplates;
};
