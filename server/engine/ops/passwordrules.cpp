#include "passwordrules.h"

#include <host/core/guipassfuncs.h>
#include <server/engine/storage/objectstore.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>

namespace zeral::server {

PasswordRules::PasswordRules(ObjectStore &store)
    : m_store(store)
{}

bool PasswordRules::readSettings(QHash<QString, QString> *settings)
{
    QList<ObjectInfo> objects;
    bool more = false;
    if (!m_store.page(QLatin1String(DB_DATANAME), 0, 1, &objects, &more))
        return false;
    *settings = objects.isEmpty() ? QHash<QString, QString>() : objects.first().parameters;
    return true;
}

QString PasswordRules::defaultPassword()
{
    QHash<QString, QString> settings;
    readSettings(&settings);
    return settings.value(QLatin1String(db::database::PASSWORD_DEF));
}

QMap<QString, QVariant> PasswordRules::policy()
{
    QHash<QString, QString> settings;
    readSettings(&settings);
    return GUIPassFuncs::optionsFromParameters(settings);
}

PasswordRules::Edit PasswordRules::renewal(const ObjectInfo &user, const QDate &today)
{
    const QString requireChange = QLatin1String(db::user::REQUIRE_CHANGE);
    const QString expiry = QLatin1String(db::database::PASSWORD_EXPIRED);
    Edit edit;
    if (user.parameters.contains(requireChange))
        edit.removed.append(requireChange);
    if (user.parameters.value(expiry).isEmpty())
        return edit; // a password that never expires stays so
    QHash<QString, QString> settings;
    readSettings(&settings);
    bool ok = false;
    const uint days = settings.value(expiry).trimmed().toUInt(&ok);
    if (ok && days > 0)
        edit.set.insert(expiry, today.addDays(qint64(days)).toString(Qt::ISODate));
    else
        edit.removed.append(expiry);
    return edit;
}

ServerText PasswordRules::changeRequiredReason(const ObjectInfo &user, const QDate &today)
{
    const QString login = user.parameters.value(QLatin1String(db::user::LOGIN));
    if (user.parameters.value(QLatin1String(db::user::REQUIRE_CHANGE)).trimmed()
        == QLatin1String("1")) {
        return ServerText(
                   QT_TRANSLATE_NOOP(
                       "ZRServer",
                       "Пароль учётной записи «%1» сброшен администратором. Чтобы войти, задайте "
                       "новый пароль."))
            .arg(login);
    }
    const QString expiry
        = user.parameters.value(QLatin1String(db::database::PASSWORD_EXPIRED)).trimmed();
    if (expiry.isEmpty())
        return {};
    const QDate expires = QDate::fromString(expiry, Qt::ISODate);
    // A date nobody can read is treated as passed: the user sets a new password, and that
    // writes a proper date.
    if (!expires.isValid()) {
        return ServerText(
                   QT_TRANSLATE_NOOP(
                       "ZRServer",
                       "Срок действия пароля учётной записи «%1» не читается. Чтобы войти, задайте "
                       "новый пароль."))
            .arg(login);
    }
    if (expires >= today)
        return {};
    return ServerText(
               QT_TRANSLATE_NOOP(
                   "ZRServer",
                   "Срок действия пароля учётной записи «%1» истёк %2. Чтобы войти, задайте новый "
                   "пароль."))
        .arg(login, expires.toString(QStringLiteral("dd.MM.yyyy")));
}

} // namespace zeral::server
