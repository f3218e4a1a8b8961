#include "usertaskdata.h"

#include <algorithm>

namespace {
const QString ObjectTypeKey = QStringLiteral("object_type");
const QString ParentKey = QStringLiteral("parent");
const QString PropertyPrefix = QStringLiteral("property-");
const QString ObjectPrefix = QStringLiteral("object-");
// The value of every "object-" entry; only the keys are read.
constexpr int PermissionObjectValue = 7;
// The right every permission task grants on its objects.
constexpr qint32 TaskPermission = 12;

void putFrame(zeral::TaskInfo *task, const zeral::ObjectInfo &object)
{
    task->data.insert(ObjectTypeKey, object.type);
    task->data.insert(ParentKey, object.parent);
}
} // namespace

void UserTaskData::putObject(zeral::TaskInfo *task, const zeral::ObjectInfo &object)
{
    putFrame(task, object);
    for (auto it = object.parameters.cbegin(); it != object.parameters.cend(); ++it)
        task->data.insert(PropertyPrefix + it.key(), it.value());
}

void UserTaskData::putChanges(zeral::TaskInfo *task, const zeral::ObjectInfo &object,
                              const QHash<QString, QVariant> &changes)
{
    putFrame(task, object);
    for (auto it = changes.cbegin(); it != changes.cend(); ++it)
        task->data.insert(PropertyPrefix + it.key(), it.value());
}

zeral::ObjectInfo UserTaskData::object(const zeral::TaskInfo &task)
{
    zeral::ObjectInfo object;
    object.uid = task.uid;
    object.type = task.data.value(ObjectTypeKey).toString();
    object.parent = task.data.value(ParentKey).toUInt();
    const QList<QString> keys = task.data.uniqueKeys();
    for (const QString &key : keys) {
        if (key.startsWith(PropertyPrefix))
            object.parameters.insert(key.mid(PropertyPrefix.size()),
                                     task.data.value(key).toString());
    }
    return object;
}

void UserTaskData::putPermissionObjects(zeral::TaskInfo *task, const QSet<zeral::TYPE_ID> &uids)
{
    QList<zeral::TYPE_ID> ordered(uids.cbegin(), uids.cend());
    std::sort(ordered.begin(), ordered.end());
    for (const zeral::TYPE_ID uid : qAsConst(ordered))
        task->data.insert(ObjectPrefix + QString::number(uid), PermissionObjectValue);
}

QList<zeral::OBJECT_PERMISSION> UserTaskData::permissions(const zeral::TaskInfo &task)
{
    QList<zeral::OBJECT_PERMISSION> permissions;
    const QList<QString> keys = task.data.uniqueKeys();
    for (const QString &key : keys) {
        if (!key.startsWith(ObjectPrefix))
            continue;
        zeral::OBJECT_PERMISSION permission;
        permission.subject = task.uid;
        permission.object = key.mid(ObjectPrefix.size()).toUInt();
        permission.permission = TaskPermission;
        permissions.append(permission);
    }
    return permissions;
}

QMultiMap<QString, QVariant> UserTaskData::loggable(const zeral::TaskInfo &task)
{
    static const QStringList secrets{QStringLiteral("property-PT_PASSHASH"),
                                     QStringLiteral("auth_data"), QStringLiteral("text")};
    QMultiMap<QString, QVariant> data = task.data;
    for (const QString &key : secrets) {
        if (data.remove(key) > 0)
            data.insert(key, QStringLiteral("<hidden>"));
    }
    return data;
}
