#include "pushes.h"

#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <server/engine/storage/objectstore.h>
#include <shared/dbkeys.h>

#include <QMap>

namespace zeral::server {

namespace {
Command push(const char *name, QByteArray data)
{
    Command command;
    command.type = proto::NamedCommand;
    command.name = QLatin1String(name);
    command.data = std::move(data);
    return command;
}
} // namespace

Command Pushes::changed(const QString &dataset, const QList<ObjectInfo> &objects)
{
    return push(proto::command::DataChanged, ZRDataStream::pack(dataset, objects));
}

Command Pushes::removed(const QString &dataset, const QList<TYPE_ID> &uids)
{
    return push(proto::command::DataRemoved, ZRDataStream::pack(dataset, uids));
}

Command Pushes::sessionClosed(const QString &reason)
{
    return push(proto::command::SessionClosed, ZRDataStream::pack(reason));
}

Command Pushes::auditAppended(const AuditRecord &row)
{
    return push(proto::command::AuditAppended, ZRDataStream::pack(row));
}

Command Pushes::mailDelivery(const MailDelivery &delivery)
{
    return push(proto::command::MailDelivery, ZRDataStream::pack(delivery));
}

QList<Command> Pushes::changedObjects(ObjectStore &store, const QList<TYPE_ID> &uids)
{
    QMap<QString, QList<ObjectInfo>> byDataset;
    for (TYPE_ID uid : uids) {
        ObjectInfo object;
        QString dataset;
        if (store.read(uid, &object, &dataset))
            byDataset[dataset].append(object);
    }
    QList<Command> result;
    for (auto it = byDataset.cbegin(); it != byDataset.cend(); ++it)
        result.append(changed(it.key(), it.value()));
    return result;
}

bool Pushes::isBlocked(const ObjectInfo &user)
{
    return user.parameters.value(QLatin1String(db::user::OBJECTSTATE)).toLower()
           == QLatin1String("b");
}

QString Pushes::roleTemplateOf(const ObjectInfo &user)
{
    return user.parameters.value(QLatin1String(db::user::ROLE_TEMPLATE));
}

} // namespace zeral::server
