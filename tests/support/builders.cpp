#include "builders.h"

#include <shared/dbkeys.h>

#include <QDataStream>

namespace testing {

zeral::ObjectInfo makeObject(zeral::TYPE_ID uid, const QString &type,
                             const QHash<QString, QString> &parameters, zeral::TYPE_ID parent)
{
    zeral::ObjectInfo object;
    object.uid = uid;
    object.type = type;
    object.parent = parent;
    object.parameters = parameters;
    return object;
}

zeral::ObjectInfo makeUser(zeral::TYPE_ID uid, const QString &login)
{
    return makeObject(uid, QLatin1String(db::system::USER),
                      {{QLatin1String(db::user::LOGIN), login}});
}

zeral::ObjectInfo makeWorker(zeral::TYPE_ID uid, const QString &surname, const QString &name,
                             const QString &patronymic)
{
    QHash<QString, QString> parameters;
    if (!surname.isEmpty())
        parameters.insert(QLatin1String(db::user::SURNAME), surname);
    if (!name.isEmpty())
        parameters.insert(QLatin1String(db::user::NAME), name);
    if (!patronymic.isEmpty())
        parameters.insert(QLatin1String(db::user::PATRONYMIC), patronymic);
    return makeObject(uid, QLatin1String(db::orgstructure::WORKER), parameters);
}

zeral::ObjectInfo makeDatabase(zeral::TYPE_ID uid, const QHash<QString, QString> &parameters)
{
    return makeObject(uid, QLatin1String(db::system::DATABASE), parameters);
}

QByteArray encodeObjectList(const QList<zeral::ObjectInfo> &objects)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_15);
    out << quint32(objects.size());
    for (const zeral::ObjectInfo &object : objects)
        out << object;
    return bytes;
}

} // namespace testing
