#include "zrglobals.h"

#include <host/core/settings.h>
#include <shared/dbkeys.h>
#include <shared/rolenames.h>

#include <QLocale>

QString ZRGlobals::objectName(const zeral::ObjectInfo &object)
{
    return objectName(object.type, object.parameters);
}

QString ZRGlobals::objectName(const QString &type, const QHash<QString, QString> &parameters)
{
    static const QString loginKey = QLatin1String(db::user::LOGIN);
    if (type == QLatin1String(db::system::USER))
        return parameters.value(loginKey);
    if (type == QLatin1String(db::orgstructure::WORKER)) {
        const QStringList parts = {parameters.value(QLatin1String(db::user::SURNAME)),
                                   parameters.value(QLatin1String(db::user::NAME)),
                                   parameters.value(QLatin1String(db::user::PATRONYMIC))};
        return parts.join(QLatin1Char(' ')).simplified();
    }
    return parameters.value(QLatin1String(db::user::NAME));
}

QHash<QString, QString> ZRGlobals::convertHash(const QHash<QString, QVariant> &hash)
{
    QHash<QString, QString> converted;
    converted.reserve(hash.size());
    for (auto it = hash.cbegin(); it != hash.cend(); ++it)
        converted.insert(it.key(), it.value().toString());
    return converted;
}

const QHash<QString, QString> &ZRGlobals::roleTemplateNames()
{
    static const QHash<QString, QString> names = {
        {QLatin1String(zeral::roletemplate::SUPERVISOR),
         QString::fromUtf8(QT_TRANSLATE_NOOP("ZRGlobals", "Супервизор"))},
        {QLatin1String(zeral::roletemplate::ADMINISTRATOR),
         QString::fromUtf8(QT_TRANSLATE_NOOP("ZRGlobals", "Администратор"))},
        {QLatin1String(zeral::roletemplate::MOBILE),
         QString::fromUtf8(QT_TRANSLATE_NOOP("ZRGlobals", "Мобильный сотрудник"))},
        {QLatin1String(zeral::roletemplate::MOBILE_CHIEF),
         QString::fromUtf8(QT_TRANSLATE_NOOP("ZRGlobals", "Мобильный руководитель"))},
        {QStringLiteral("RT_OPERATOR"),
         QString::fromUtf8(QT_TRANSLATE_NOOP("ZRGlobals", "Оператор"))},
        {QStringLiteral("RT_SECURITY"),
         QString::fromUtf8(QT_TRANSLATE_NOOP("ZRGlobals", "Служба охраны"))},
        {QStringLiteral("RT_HR"),
         QString::fromUtf8(QT_TRANSLATE_NOOP("ZRGlobals", "Отдел кадров"))},
        {QStringLiteral("RT_AUDITOR"),
         QString::fromUtf8(QT_TRANSLATE_NOOP("ZRGlobals", "Аудитор"))},
    };
    return names;
}

const QStringList &ZRGlobals::relayDevices()
{
    static const QStringList types
        = {QStringLiteral("OT_TERM_ZR_RELAY"), QStringLiteral("OT_TERM_ZR_LOCK")};
    return types;
}

const QStringList &ZRGlobals::videoDevices()
{
    static const QStringList types
        = {QStringLiteral("OT_VIDEO_CAMERA"), QStringLiteral("OT_VIDEO_IP_CAMERA")};
    return types;
}

const QStringList &ZRGlobals::videoServerDevices()
{
    static const QStringList types
        = {QStringLiteral("OT_VIDEO_SERVER"), QStringLiteral("OT_VIDEO_RECORDER")};
    return types;
}

const QStringList &ZRGlobals::accessShowDevices()
{
    static const QStringList types
        = {QStringLiteral("OT_TERM_ZR_NOVA"), QStringLiteral("OT_TERM_ZR_PASS"),
           QStringLiteral("OT_TERM_ZR_GATE"), QStringLiteral("OT_TERM_ZR_TURNSTILE")};
    return types;
}

namespace zeral {

QString localeLongTime(const QDateTime &dateTime)
{
    const QLocale locale(
        Settings::value(QStringLiteral("mainwindow/language"), QLocale().name()).toString());
    return locale.toString(dateTime, QLocale::LongFormat);
}

} // namespace zeral
