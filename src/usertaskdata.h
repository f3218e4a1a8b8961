#pragma once

#include <shared/objectinfo.h>
#include <shared/objectpermission.h>
#include <shared/taskinfo.h>

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QVariant>

// How the tasks of the users screen carry what they change, in one place for the editors that
// write tasks and the queue that reads them. A save or create task carries its object's type
// ("object_type"), parent ("parent") and one "property-<key>" entry per parameter; a
// permission task one "object-<uid>" entry per object, whose value nobody reads.
class UserTaskData
{
public:
    static void putObject(zeral::TaskInfo *task, const zeral::ObjectInfo &object);
    // The object's type and parent, and only the parameters given, each as it is.
    static void putChanges(zeral::TaskInfo *task, const zeral::ObjectInfo &object,
                           const QHash<QString, QVariant> &changes);
    static zeral::ObjectInfo object(const zeral::TaskInfo &task);

    // In ascending order of uid, so that equal sets make equal tasks.
    static void putPermissionObjects(zeral::TaskInfo *task, const QSet<zeral::TYPE_ID> &uids);
    // The task's subject gets the right the queue grants on every object of the task.
    static QList<zeral::OBJECT_PERMISSION> permissions(const zeral::TaskInfo &task);

    // The task's data for a log line: a password's hash, the auth data of a mail and the
    // clipboard's text are replaced by a mark, since debug logs are read by more people
    // than the operator who made the password.
    static QMultiMap<QString, QVariant> loggable(const zeral::TaskInfo &task);
};
