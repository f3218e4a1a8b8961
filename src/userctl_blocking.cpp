// UserCtl, blocking: the selection of a users table is blocked or unblocked as a whole, one
// save task per user.

#include "userctl.h"

#include "ui_userctl.h"
#include "userctl_p.h"
#include "usertaskdata.h"

#include <host/core/zrglobals.h>
#include <shared/dbkeys.h>

#include <QDateTime>
#include <QMessageBox>

using namespace userctl::detail;

void UserCtl::userBlockChange()
{
    changeBlockStateOfSelection(m_ui->usersList);
}

void UserCtl::mobileUserBlockChange()
{
    changeBlockStateOfSelection(m_ui->mobileUsersList);
}

void UserCtl::changeBlockStateOfSelection(const QAbstractItemView *table)
{
    zeral::OBJECT_UID_SET blocked;
    zeral::OBJECT_UID_SET unblocked;
    for (const zeral::TYPE_ID uid : selectedUids(table)) {
        if (isBlocked(storedUser(uid)))
            blocked.insert(uid);
        else
            unblocked.insert(uid);
    }
    changeUserBlockState(blocked, unblocked);
}

void UserCtl::changeUserBlockState(zeral::OBJECT_UID_SET blocked, zeral::OBJECT_UID_SET unblocked)
{
    // One unblocked user among them and the whole selection is blocked.
    const bool block = !unblocked.isEmpty();
    const QMessageBox::StandardButton answer
        = QMessageBox::question(this, tr("Блокировка пользователей"),
                                block ? tr("Заблокировать выбранных пользователей?")
                                      : tr("Разблокировать выбранных пользователей?"),
                                QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer != QMessageBox::Yes)
        return;
    const QString state = block ? QStringLiteral("b") : QString();
    // The local wall-clock time marked as UTC: that is how the state date has always been kept.
    const QString stateDate = QString::number(
        QDateTime(QDate::currentDate(), QTime::currentTime(), Qt::UTC).toSecsSinceEpoch());

    const zeral::OBJECT_UID_SET users = blocked.unite(unblocked);
    for (const zeral::TYPE_ID uid : users) {
        zeral::ObjectInfo user = storedUser(uid);
        user.parameters.insert(QLatin1String(db::user::OBJECTSTATE), state);
        user.parameters.insert(QLatin1String(db::user::OBJECTSTATEDATE), stateDate);

        zeral::TaskInfo task;
        task.uid = user.uid;
        task.type = QStringLiteral("save_object");
        UserTaskData::putObject(&task, user);
        task.receiver = this;
        task.method = QStringLiteral("userBlockChangeResult");
        const QString name = ZRGlobals::objectName(user);
        task.startMessage = tr("Сохранение параметров пользователя %1").arg(name);
        task.errorMessage = tr("Ошибка сохранения параметров пользователя %1").arg(name);
        addTask(task);
    }
}

void UserCtl::userBlockChangeResult(zeral::TYPE_ID uid)
{
    // The lists follow the store's change by themselves.
    if (uid != 0)
        showPopupMessage(tr("Изменение блокировки пользователя %1 успешно")
                             .arg(ZRGlobals::objectName(storedUser(uid))),
                         MessageWidget::Icon(0), 0);
    else
        showPopupCriticalMessage(tr("Ошибка изменения блокировки пользователя"), 0);
}
