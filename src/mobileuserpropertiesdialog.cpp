#include "mobileuserpropertiesdialog.h"

#include "mobileuserhelper.h"
#include "mobileuserproperties.h"
#include "signalbinder.h"
#include "userpermissions.h"
#include "userproperties.h"
#include "userroles.h"

#include <host/core/logging.h>
#include <host/core/zrglobals.h>
#include <host/gui/widgets/zractionsinserthelper.h>
#include <host/gui/widgets/zractionstoolbar.h>
#include <shared/dbkeys.h>

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QIcon>
#include <QMenu>
#include <QMessageBox>
#include <QToolButton>

MobileUserPropertiesDialog::MobileUserPropertiesDialog(QWidget *parent)
    : UserPropertiesDialog(parent)
{
    setWindowIcon(QIcon::fromTheme(QStringLiteral("common-mobile")));
}

void MobileUserPropertiesDialog::initTabs()
{
    initActions();
    initMobilePropertiesTab();
    initRolesTab();
    initPermissionsTab();
    // A template chosen on the roles tab re-scopes the objects offered at once.
    if (permissionsTab)
        connect(rolesTab, &UserRoles::roleChanged, permissionsTab,
                &UserPermissions::setCurrentRoleTemplate);
    connect(mobilePropertiesTab, &MobileUserProperties::loginChanged, this,
            &MobileUserPropertiesDialog::setLogin);
}

void MobileUserPropertiesDialog::initMobilePropertiesTab()
{
    mobilePropertiesTab = new MobileUserProperties(this);
    addTab(mobilePropertiesTab, tr("Основное"));
    connect(mobilePropertiesTab, &MobileUserProperties::dataEdited, this,
            &TabbedDialog::showSaveButton);
    // A login that isn't valid takes the Save button away, whatever the other tabs hold.
    connect(mobilePropertiesTab, &MobileUserProperties::denyEdit, this, &TabbedDialog::saved);
    connect(mobilePropertiesTab, &MobileUserProperties::appendTask, this,
            &UserPropertiesDialog::appendTask);
    connect(mobilePropertiesTab, &MobileUserProperties::showMessage, this,
            qOverload<const QString &>(&TabbedDialog::showMessage));
    connect(binder, &SignalBinder::currentChanged, mobilePropertiesTab,
            &MobileUserProperties::setCurrent);
    connect(binder, &SignalBinder::userSaved, mobilePropertiesTab, &MobileUserProperties::saved);
    connect(binder, &SignalBinder::acceptChanges, mobilePropertiesTab,
            &MobileUserProperties::applyChanges);
}

void MobileUserPropertiesDialog::initRolesTab()
{
    UserPropertiesDialog::initRolesTab();
    // The base offers the desktop templates; this dialog the mobile ones only.
    if (rolesTab) {
        rolesTab->setDesktopRolesAvalable(false);
        rolesTab->setMobileRolesAvailable(true);
    }
}

void MobileUserPropertiesDialog::initActions()
{
    ZRActionsToolBar *bar = toolBar();
    auto *handOver = new QAction(QIcon::fromTheme(QStringLiteral("action-email")),
                                 tr("Передать логин/пароль"), this);
    handOver->setObjectName(QStringLiteral("actionHandOverCredentials"));
    auto *menu = new QMenu(this);
    menu->addAction(tr("Отправить учетные данные по e-mail"), this,
                    &MobileUserPropertiesDialog::sendPasswordByEmail);
    menu->addAction(tr("Сохранить учетные данные в буфер обмена"), this,
                    &MobileUserPropertiesDialog::savePasswordToClipboard);
    handOver->setMenu(menu);
    ZRActionsInsertHelper::addActionWidget(bar, handOver);
    showToolBar();

    // One click opens the menu: the button has no action of its own.
    const QList<QAction *> actions = bar->actions();
    if (actions.isEmpty())
        return;
    if (auto *button = qobject_cast<QToolButton *>(bar->widgetForAction(actions.first())))
        button->setPopupMode(QToolButton::InstantPopup);
}

void MobileUserPropertiesDialog::setLogin(QString login)
{
    current.parameters.insert(QLatin1String(db::user::LOGIN), login);
    qCDebug(ucc()) << "update login" << login;
}

bool MobileUserPropertiesDialog::updateUserPassword()
{
    if (current.type.isEmpty())
        return false;
    const QString name = ZRGlobals::objectName(current);
    const QMessageBox::StandardButton answer = QMessageBox::question(
        this, tr("Генерация пароля"),
        tr("Для пользователя %1, будет создан новый пароль\nПродолжить?").arg(name),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer != QMessageBox::Yes)
        return false;

    generatedPassword = MobileUserHelper::generatePassword();
    // Only the hash: a reset doesn't make the person choose a password of his own.
    QHash<QString, QVariant> changes = UserProperties::setPasswordChanges(generatedPassword);
    changes.remove(QLatin1String(db::user::SET_PASSWORD));
    emit appendTask(UserProperties::makeSaveTask(this, current, changes, "passwordSaved",
                                                 tr("Сброс пароля пользователя %1"),
                                                 tr("Ошибка сброса пароля пользователя %1")));
    return true;
}

bool MobileUserPropertiesDialog::ensurePassword()
{
    return !generatedPassword.isEmpty() || updateUserPassword();
}

void MobileUserPropertiesDialog::savePasswordToClipboard()
{
    if (!ensurePassword())
        return;
    const QString login = current.parameters.value(QLatin1String(db::user::LOGIN));
    QGuiApplication::clipboard()->setText(
        MobileUserHelper::generateAuthData(login, generatedPassword), QClipboard::Clipboard);
    showMessage(tr("Данные скопированы в буфер обмена"));
    warnIfResetRefused();
}

void MobileUserPropertiesDialog::sendPasswordByEmail()
{
    if (!ensurePassword())
        return;
    const zeral::ObjectInfo &worker = MobileUserProperties::linkedWorker(current);
    const QString login = current.parameters.value(QLatin1String(db::user::LOGIN));
    const QString address = worker.parameters.value(QLatin1String(db::worker::EMAIL));

    zeral::TaskInfo task;
    task.uid = worker.uid;
    task.type = QStringLiteral("send_email");
    task.data.insert(QStringLiteral("addr_to"), address);
    task.data.insert(QStringLiteral("greetings"), ZRGlobals::objectName(worker));
    task.data.insert(QStringLiteral("auth_data"),
                     MobileUserHelper::generateAuthData(login, generatedPassword));
    task.startMessage = tr("Отправка параметров авторизации на e-mail %1").arg(address);
    task.errorMessage = tr("Ошибка отправки параметров авторизации на e-mail %1").arg(address);
    // No receiver: the queue tells the outcome in the message line, and nobody is called.
    task.method = QStringLiteral("messageSent");
    emit appendTask(task);
    warnIfResetRefused();
}

void MobileUserPropertiesDialog::warnIfResetRefused()
{
    if (resetRefused)
        showCriticalMessage(tr("Ошибка сохранения пароля: сервер не принял новый пароль, "
                               "с переданными данными войти нельзя"));
}

void MobileUserPropertiesDialog::passwordSaved(zeral::TYPE_ID uid)
{
    // The password stays held: the clipboard may already carry it, and the operator must know
    // that the server doesn't.
    if (uid != 0)
        return;
    resetRefused = true;
    showCriticalMessage(tr("Ошибка сохранения пароля"));
}

void MobileUserPropertiesDialog::messageSent(zeral::TYPE_ID uid)
{
    if (uid == 0)
        showCriticalMessage(tr("Ошибка отправки сообщения"));
}
