#pragma once

#include <host/core/command.h>
#include <shared/auditrecord.h>
#include <shared/maildelivery.h>
#include <shared/objectinfo.h>

#include <QList>

namespace zeral::server {

class ObjectStore;

// The pushes that tell every session about changes, and the user facts the handlers share.
class Pushes
{
public:
    static Command changed(const QString &dataset, const QList<ObjectInfo> &objects);
    static Command removed(const QString &dataset, const QList<TYPE_ID> &uids);
    static Command sessionClosed(const QString &reason);
    static Command auditAppended(const AuditRecord &row);
    static Command mailDelivery(const MailDelivery &delivery);
    // One "changed" push per dataset for the objects as they are now in `store`.
    static QList<Command> changedObjects(ObjectStore &store, const QList<TYPE_ID> &uids);

    static bool isBlocked(const ObjectInfo &user);
    static QString roleTemplateOf(const ObjectInfo &user);

    Pushes() = delete;
};

} // namespace zeral::server
