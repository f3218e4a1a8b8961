#include "newusertask.h"

#include <src/usertaskdata.h>

#include <host/core/zrglobals.h>
#include <shared/objectinfo.h>

#include <QVariant>

namespace {
const QString UserType = QStringLiteral("OT_USER");
}

zeral::TaskInfo NewUserTask::objectTask(const QString &kind,
                                        const QHash<QString, QString> &properties,
                                        QObject *receiver, const QString &method,
                                        const QString &startMessage, const QString &errorMessage)
{
    zeral::ObjectInfo user;
    user.type = UserType;
    QHash<QString, QVariant> changes;
    for (auto it = properties.cbegin(); it != properties.cend(); ++it)
        changes.insert(it.key(), it.value());

    zeral::TaskInfo task;
    task.uid = 0;
    task.type = kind;
    UserTaskData::putChanges(&task, user, changes);
    task.receiver = receiver;
    task.method = method;
    const QString name = ZRGlobals::objectName(UserType, properties);
    task.startMessage = startMessage.arg(name);
    task.errorMessage = errorMessage.arg(name);
    return task;
}
