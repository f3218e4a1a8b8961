#pragma once

#include <host/gui/wizards/zrwizardpage.h>
#include <shared/taskinfo.h>

#include <memory>

class UserPermissions;

namespace Ui {
class UserPermissionsWizardPage;
}

// One permissions editor as a page of the new-user wizards: it gives the new user his
// permissions on one kind of object. The editor's task is turned from an update of an
// existing user into an addition for the user the wizard is making.
class UserPermissionsWizardPage : public ZRWizardPage
{
    Q_OBJECT
public:
    explicit UserPermissionsWizardPage(QWidget *parent = nullptr);
    ~UserPermissionsWizardPage() override;

    // The editor, which the wizard sets up directly.
    UserPermissions *permissionsWidget() const;

    bool validatePage() override;

signals:
    void appendTask(zeral::TaskInfo task);

private slots:
    void proxyAppendTask(zeral::TaskInfo task);

private:
    std::unique_ptr<Ui::UserPermissionsWizardPage> m_ui;
};
