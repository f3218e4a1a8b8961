#include "fingerprintowner.h"

#include <host/core/localstorage.h>
#include <host/core/zrglobals.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>

#include <QCoreApplication>
#include <QStringList>

QString FingerprintOwner::displayName(zeral::TYPE_ID uid)
{
    const zeral::ObjectInfo &user
        = zeral::LocalStorage::instance()->constObject(uid, QLatin1String(zeral::USER_DATANAME));
    if (user.uid == 0)
        return QCoreApplication::translate("FingerprintOwner", "Пользователь №%1").arg(uid);

    QStringList parts;
    for (const char *key : {db::user::SURNAME, db::user::NAME, db::user::PATRONYMIC}) {
        const QString part = user.parameters.value(QLatin1String(key)).trimmed();
        if (!part.isEmpty())
            parts.append(part);
    }
    const QString login = ZRGlobals::objectName(user);
    if (parts.isEmpty())
        return login;
    return QStringLiteral("%1 (%2)").arg(parts.join(QLatin1Char(' ')), login);
}
