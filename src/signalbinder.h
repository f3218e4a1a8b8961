#pragma once

#include <shared/objectinfo.h>
#include <shared/objectpermission.h>
#include <shared/roletemplateinfo.h>
#include <shared/types.h>

#include <QList>
#include <QObject>

// One fan-out point for the tabs of a user dialog: the dialog emits, every tab that cares is
// connected. The order in which the tabs were connected is the order in which they hear, so
// the tabs of one dialog save in the order they were added.
class SignalBinder : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

signals:
    void currentChanged(zeral::ObjectInfo info);
    void roleTemplatesChanged(zeral::ROLETEMPLATES_HASH rt_hash);
    void permissionsChanged(QList<zeral::OBJECT_PERMISSION> permissions);
    void templatesCountChanged(zeral::TYPE_ID uid, int count);
    void acceptChanges();
    void userSaved(zeral::TYPE_ID uid);
    void userAccessSaved(zeral::TYPE_ID uid);
};
