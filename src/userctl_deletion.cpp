// UserCtl, deleting users: the deletion wizard, with its confirmation page when the operator's
// deletions need one; "root" is never handed to it.

#include "userctl.h"

#include "ui_userctl.h"
#include "userctl_p.h"

#include <src/rolecontainer.h>

#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/wizards/deleteobjectwizard.h>
#include <host/gui/wizards/deleteverifywizardpage.h>
#include <shared/dbkeys.h>

#include <QMessageBox>

using namespace userctl::detail;

void UserCtl::removeButtonClicked(QList<zeral::TYPE_ID> uids)
{
    if (!userctl::RoleContainer::canDeleteUser()) {
        QMessageBox::critical(this, tr("Удаление сотрудников"), tr("Недостаточно прав"));
        return;
    }
    // The action and the Delete key come without uids: they act on the users table.
    if (uids.isEmpty())
        uids = selectedUids(m_ui->usersList);
    if (uids.isEmpty())
        return;

    bool rootTakenOut = false;
    const QList<zeral::TYPE_ID> requested = uids;
    for (const zeral::TYPE_ID uid : requested) {
        if (storedUser(uid).parameters.value(QLatin1String(db::user::LOGIN))
            == QLatin1String("root")) {
            uids.removeAll(uid);
            rootTakenOut = true;
        }
    }
    if (rootTakenOut)
        showPopupMessage(tr("Пользователь root не будет удален: запрещено удаление."),
                         MessageWidget::Icon(0), 0);
    if (uids.isEmpty())
        return;

    auto *wizard = new DeleteObjectWizard(this);
    wizard->setAttribute(Qt::WA_DeleteOnClose);
    wizard->setModal(true);
    wizard->setUids(uids);
    wizard->setNeedVerify(userctl::RoleContainer::requireConfirmUserDelete());
    wizard->setWindowTitle(tr("Мастер удаления пользователей"));

    // The deletions are the confirmer's of the wizard's own confirmation page, if it has one.
    connect(wizard, &DeleteObjectWizard::appendTask, this, [this, wizard](zeral::TaskInfo task) {
        DeleteVerifyWizardPage *page = wizard->verifyPage();
        takeWizardTask(task, page ? page->authorizationWidget()->identifiedUids()
                                  : QList<zeral::TYPE_ID>());
    });
    connect(this, &UserCtl::templatesForVerify, wizard, &DeleteObjectWizard::setTemplatesForVerify);
    connect(this, &UserCtl::templatesForVerify, wizard, &DeleteObjectWizard::templatesForVerify);
    connect(this, &UserCtl::variantsForVerify, wizard, &DeleteObjectWizard::variantsForVerify);
    connect(this, &UserCtl::uidsForVerify, wizard, &DeleteObjectWizard::uidsForVerify);
    connect(this, &UserCtl::startVerify, wizard, &DeleteObjectWizard::startVerify);
    connect(wizard, &DeleteObjectWizard::requestUserTemplatesForDelete, this,
            &UserCtl::getUserTemplatesForDeleteUser);

    wizard->setEnabled(true);
    wizard->show();
}

void UserCtl::removeMobileButtonClicked()
{
    const QList<zeral::TYPE_ID> uids = selectedUids(m_ui->mobileUsersList);
    if (!uids.isEmpty())
        removeButtonClicked(uids);
}
