#pragma once

#include <shared/objectinfo.h>
#include <shared/types.h>

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

// Objects of the store as the tests need them, with only the fields that matter set.
namespace testing {

zeral::ObjectInfo makeObject(zeral::TYPE_ID uid, const QString &type,
                             const QHash<QString, QString> &parameters = {},
                             zeral::TYPE_ID parent = 0);
// An operator account: type "OT_USER" with its login.
zeral::ObjectInfo makeUser(zeral::TYPE_ID uid, const QString &login);
// An employee: type "OT_WORKER" with the parts of the full name that are not empty.
zeral::ObjectInfo makeWorker(zeral::TYPE_ID uid, const QString &surname, const QString &name,
                             const QString &patronymic = {});
// The server's database object, whose parameters are the system-wide settings.
zeral::ObjectInfo makeDatabase(zeral::TYPE_ID uid, const QHash<QString, QString> &parameters);
// A list of objects as a snapshot page carries it: the count, then each object, as
// QDataStream (Qt 5.15) writes them.
QByteArray encodeObjectList(const QList<zeral::ObjectInfo> &objects);

} // namespace testing
