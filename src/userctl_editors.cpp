// UserCtl, the openers of the editors and wizards: the user's properties, the new user, and
// the mobile user's, also when the studio asks for them.

#include "userctl.h"

#include "ui_userctl.h"
#include "userctl_p.h"

#include <src/mobileuserpropertiesdialog.h>
#include <src/rolecontainer.h>
#include <src/userfilterproxymodel.h>
#include <src/userpropertiesdialog.h>
#include <src/wizards/newmobileuserwizard.h>
#include <src/wizards/newuserwizard.h>
#include <src/wizards/userprogresswizardpage.h>

#include <host/core/authdata.h>
#include <host/core/data.h>
#include <host/core/localstorage.h>
#include <host/core/logging.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrglobals.h>
#include <host/gui/models/itemroles.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <shared/datasets.h>

#include <QItemSelection>
#include <QMessageBox>

using namespace userctl::detail;

template<class Dialog>
void UserCtl::connectEditor(Dialog *dialog)
{
    connect(this, qOverload<QString>(&UserCtl::showMessage), dialog,
            qOverload<const QString &>(&Dialog::showMessage));
    connect(this, qOverload<QString, QColor>(&UserCtl::showMessage), dialog,
            qOverload<const QString &, const QColor &>(&Dialog::showMessage));
    // Hide the Save button first, then send: the tabs' tasks go out from applyChanges.
    connect(this, &UserCtl::acceptChanges, dialog, &Dialog::saved);
    connect(this, &UserCtl::acceptChanges, dialog, &Dialog::applyChanges);
    connect(dialog, &QDialog::finished, this, &UserCtl::userEditFinished);
    connect(dialog, &Dialog::appendTask, this, &UserCtl::addTask, Qt::DirectConnection);
    if (userctl::RoleContainer::requireConfirmUserUpdate()) {
        // A second person confirms by finger; a refusal only ends the save.
        connect(dialog, &Dialog::save, this, &UserCtl::verifyEdit);
        connect(this, &UserCtl::rejectChanges, dialog, &Dialog::saved);
    } else {
        connect(dialog, &Dialog::save, this, &UserCtl::acceptChanges);
    }
}

template<class Dialog>
void UserCtl::connectEditorData(Dialog *dialog)
{
    connect(this, &UserCtl::permissionsRead, dialog, &Dialog::setPermissions);
    connect(this, &UserCtl::roleTemplatesRead, dialog, &Dialog::setRoleTemplates);
    connect(this, &UserCtl::userTemplatesRead, dialog, &Dialog::setTemplatesCount);
    connect(this, &UserCtl::userSaved, dialog, &Dialog::setUserSaved);
    connect(this, &UserCtl::userAccessSaved, dialog, &Dialog::setUserAccessSaved);
}

void UserCtl::addButtonClicked()
{
    // The new user's rights on departments are part of the wizard: without the right to give
    // them, it would make a user whose rights nobody set.
    if (!userctl::RoleContainer::canRoleLinkSubdiv()) {
        QMessageBox::critical(this, tr("Добавление"),
                              tr("Ошибка добавления пользователя\nНет доступа"));
        return;
    }
    m_templateWatchUids.clear();

    auto *wizard = new NewUserWizard(this);
    wizard->setExistingUsers(
        zeral::LocalStorage::instance()->constObjects(QLatin1String(zeral::USER_DATANAME)));
    wizard->setRoleTemplates(m_roleTemplates);

    connect(wizard, &QWizard::finished, this, &UserCtl::userEditFinished);
    connect(this, &UserCtl::roleTemplatesRead, wizard, &NewUserWizard::setRoleTemplates);
    // The creation is the confirmer's whom the wizard's last page identified, if it asked.
    connect(wizard, &NewUserWizard::appendTask, this,
            [this, progress = wizard->pages().progressPage](zeral::TaskInfo task) {
                takeWizardTask(task, progress->identifiedUids());
            });
    connect(this, &UserCtl::templatesForVerify, wizard, &NewUserWizard::templatesForVerify);
    connect(this, &UserCtl::variantsForVerify, wizard, &NewUserWizard::variantsForVerify);
    connect(this, &UserCtl::uidsForVerify, wizard, &NewUserWizard::uidsForVerify);
    connect(this, &UserCtl::startVerify, wizard, &NewUserWizard::startVerify);
    connect(wizard, &NewUserWizard::requestUserTemplatesForCreateUser, this,
            &UserCtl::getUserTemplatesForCreateUser);
    // The server's reason for a failed step (a login taken meanwhile, a lost connection)
    // comes in red after the step's own message; the last page shows it.
    connect(this, qOverload<QString, QColor>(&UserCtl::showMessage), wizard,
            [wizard](const QString &reason, const QColor &) { wizard->showFailureReason(reason); });

    sendGetRoletemplates();
    wizard->show();
    wizard->setEnabled(true);
}

void UserCtl::userEditFinished()
{
    QItemSelection selection;
    QModelIndex first;
    for (const zeral::TYPE_ID uid : qAsConst(m_templateWatchUids)) {
        const QModelIndex index = m_userProxy->indexForUid(uid);
        if (!index.isValid())
            continue;
        selection.select(index, index);
        if (!first.isValid() || index.row() < first.row())
            first = index;
    }
    m_ui->usersList->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect
                                                             | QItemSelectionModel::Rows);
    m_templateWatchUids.clear();
    m_ui->usersList->setFocus(Qt::OtherFocusReason);
    if (first.isValid())
        m_ui->usersList->scrollTo(first, QAbstractItemView::PositionAtTop);
    setCurrentUserInfoRoles();
}

void UserCtl::showUserProperties()
{
    const QModelIndexList rows = selectedRows(m_ui->usersList);
    if (rows.size() != 1)
        return;
    const QModelIndex row = rows.first();
    zeral::ObjectInfo info;
    info.uid = row.data(Qt::DisplayRole).toUInt();
    info.type = row.siblingAtColumn(1).data(Qt::DisplayRole).toString();
    info.parameters = ZRGlobals::convertHash(row.data(ItemRoles::Parameters).toHash());

    UserPropertiesDialog *dialog = openUserDialog<UserPropertiesDialog>(info, this);
    if (!dialog)
        return;
    m_data->getUserFingersExists(m_templateWatchUids, handler(&UserCtl::fingerExistsRead));
    dialog->adjustSize();
    dialog->show();
}

template<class Dialog>
Dialog *UserCtl::openUserDialog(const zeral::ObjectInfo &info, QWidget *parent)
{
    // Anybody may look at his own account.
    if (!userctl::RoleContainer::canUpdateUser() && info.uid != AuthData::userId()) {
        QMessageBox::critical(parent, UserCtl::tr("Запрет доступа"),
                              UserCtl::tr("Недостаточно прав для просмотра параметров пользователя"));
        return nullptr;
    }
    m_templateWatchUids.clear();
    m_templateWatchUids.append(info.uid);

    auto *dialog = new Dialog(parent);
    dialog->setModal(true);
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(
        UserCtl::tr("Свойства пользователя %1").arg(ZRGlobals::objectName(info.type, info.parameters)));
    dialog->initTabs();
    connectEditor(dialog);
    dialog->setCurrent(info);
    dialog->setRoleTemplates(m_roleTemplates);
    connectEditorData(dialog);

    sendGetRoletemplates();
    m_data->getPermissions({info.uid}, handler(&UserCtl::getPermissionsHandler));
    return dialog;
}

void UserCtl::cancelChanged()
{
    m_ui->usersList->setEnabled(true);
    userSelectionChanged();
    mobileUserSelectionChanged();
}

void UserCtl::addMobileButtonClicked()
{
    // As for a desktop user: the rights on departments are part of the wizard.
    if (!userctl::RoleContainer::canRoleLinkSubdiv()) {
        QMessageBox::critical(this, tr("Добавление"),
                              tr("Ошибка добавления пользователя\nНет доступа"));
        return;
    }
    openNewMobileUserWizard(this, {});
}

void UserCtl::openNewMobileUserWizard(QWidget *parent, const zeral::OBJECT_UID_LIST &employees)
{
    m_templateWatchUids.clear();
    auto *wizard = new NewMobileUserWizard(parent);
    wizard->setRoletemplates(m_roleTemplates);
    if (!employees.isEmpty())
        wizard->setCheckedEmployees(employees);
    wizard->setMailDeliveryWatcher(m_mailWatcher);
    wizard->setWindowModality(Qt::ApplicationModal);
    connect(this, &UserCtl::roleTemplatesRead, wizard, &NewMobileUserWizard::setRoletemplates);
    // Its progress page asks for a confirmation when the operator's creations need one, as
    // the new-user wizard's does, and its tasks are that confirmer's.
    UserProgressWizardPage *progress = wizard->progressPage();
    connect(wizard, &NewMobileUserWizard::appendTask, this, [this, progress](zeral::TaskInfo task) {
        takeWizardTask(task, progress->identifiedUids());
    });
    connect(this, &UserCtl::templatesForVerify, progress,
            &UserProgressWizardPage::templatesForVerify);
    connect(this, &UserCtl::variantsForVerify, progress,
            &UserProgressWizardPage::variantsForVerify);
    connect(this, &UserCtl::uidsForVerify, progress, &UserProgressWizardPage::uidsForVerify);
    connect(this, &UserCtl::startVerify, progress, &UserProgressWizardPage::startVerify);
    connect(progress, &UserProgressWizardPage::requestUserTemplatesForCreateUser, this,
            &UserCtl::getUserTemplatesForCreateUser);
    // The server's reason for the step that stopped the run shows under its log.
    connect(this, qOverload<QString, QColor>(&UserCtl::showMessage), progress,
            [progress](const QString &reason, const QColor &) {
                progress->showFailureReason(reason);
            });
    sendGetRoletemplates();
    wizard->show();
}

void UserCtl::showMobileUserProperties()
{
    const QModelIndexList rows = selectedRows(m_ui->mobileUsersList);
    if (rows.size() != 1)
        return;
    openMobileUserProperties(rows.first().data(Qt::DisplayRole).toUInt(), this);
}

void UserCtl::showNewMobileUserWizardsHandler(Command &command)
{
    QList<unsigned int> employees;
    ZRDataStream in(command.data);
    in >> employees;
    qCDebug(ucc()) << "show mobile user wizard" << employees;
    command.status = zeral::proto::StatusOk;
    if (!userctl::RoleContainer::canRoleLinkSubdiv()) {
        QMessageBox::critical(ZRGuiGlobals::zrApp, tr("Добавление"),
                              tr("Ошибка добавления пользователя\nНет доступа"));
        return;
    }
    openNewMobileUserWizard(ZRGuiGlobals::zrApp, employees);
}

void UserCtl::showMobileUserPropertiesHandler(Command &command)
{
    qint32 uid = 0;
    ZRDataStream in(command.data);
    in >> uid;
    qCDebug(ucc()) << "show mobile user properties" << uid;
    command.status = zeral::proto::StatusOk;
    // Another screen asks: the box and the dialog stand over the studio's window.
    openMobileUserProperties(zeral::TYPE_ID(uid), ZRGuiGlobals::zrApp);
}

void UserCtl::openMobileUserProperties(zeral::TYPE_ID uid, QWidget *parent)
{
    // The stored object with its links: the dialog finds the employee through them.
    const zeral::ObjectInfo info = zeral::LocalStorage::instance()->constObject(
        uid, QLatin1String(zeral::USER_DATANAME));

    MobileUserPropertiesDialog *dialog = openUserDialog<MobileUserPropertiesDialog>(info, parent);
    if (!dialog)
        return;
    dialog->adjustSize();
    dialog->show();
}
