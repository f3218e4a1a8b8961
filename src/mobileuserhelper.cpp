#include "mobileuserhelper.h"

#include <host/core/guipassfuncs.h>
#include <host/core/logging.h>
#include <shared/dbkeys.h>
#include <shared/rolenames.h>

#include <QJsonDocument>
#include <QVariantMap>

QStringList MobileUserHelper::standardMobileRoleTemplates()
{
    return {QLatin1String(zeral::roletemplate::MOBILE),
            QLatin1String(zeral::roletemplate::MOBILE_CHIEF)};
}

QString MobileUserHelper::generatePassword()
{
    return GUIPassFuncs::generatePassword(GUIPassFuncs::getPasswordOptions());
}

QString MobileUserHelper::generateAuthData(const QString &login, const QString &password)
{
    const QString host
        = GUIPassFuncs::getDBParameterByName(QLatin1String(db::database::MOBILE_HOST));
    const QString portText
        = GUIPassFuncs::getDBParameterByName(QLatin1String(db::database::MOBILE_PORT));
    bool portOk = false;
    const int port = portText.toInt(&portOk, 10);
    if (!portOk)
        qCDebug(ucc) << "mobile port is no number, auth data carries port 0:" << portText;

    const QVariantMap auth{
        {QStringLiteral("host"), host},
        {QStringLiteral("port"), port},
        {QStringLiteral("user"), login},
        {QStringLiteral("passw"), password},
    };
    // The mobile application reads exactly this: indented UTF-8 JSON in standard base64.
    const QByteArray json = QJsonDocument::fromVariant(auth).toJson();
    return QString::fromLatin1(json.toBase64());
}
