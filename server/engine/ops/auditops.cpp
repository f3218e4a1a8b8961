#include "auditops.h"

#include <host/core/zrdatastream.h>
#include <server/engine/ops/payload.h>
#include <server/engine/ops/pushes.h>
#include <server/engine/ops/rights.h>
#include <server/engine/ops/serverstate.h>
#include <server/engine/storage/auditlog.h>
#include <shared/auditfilter.h>
#include <shared/dbkeys.h>
#include <shared/rolenames.h>

namespace zeral::server {

AuditOps::AuditOps(ServerState &state)
    : m_state(state)
{}

Reply AuditOps::auditLog(Request &request)
{
    qint64 beforeId = 0;
    qint32 pageSize = 0;
    AuditFilter filter;
    if (!payload::read(request.command, beforeId, pageSize, filter))
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос журнала действий не читается."));
    if (!Rights(*request.session).has(role::AUDIT_SHOW))
        return Reply::fail(
            proto::StatusForbidden,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Недостаточно прав для просмотра журнала действий. Обратитесь к "
                              "администратору."));
    // Bounds first: a page or a text of any size would cost the server what the client wants.
    if (pageSize < 1 || pageSize > AuditFilter::MaxPageSize)
        return Reply::fail(
            proto::StatusMalformed,
            ServerText(
                QT_TRANSLATE_NOOP("ZRServer",
                                  "Страница журнала действий может содержать от 1 до %1 строк, "
                                  "а запрошено %2."))
                .arg(AuditFilter::MaxPageSize)
                .arg(pageSize));
    if (beforeId < 0)
        return Reply::fail(
            proto::StatusMalformed,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Неверная позиция в журнале действий: %1."))
                .arg(beforeId));
    for (const QString *text : {&filter.operatorLogin, &filter.object, &filter.command}) {
        if (text->size() > AuditFilter::MaxTextLength)
            return Reply::fail(
                proto::StatusMalformed,
                ServerText(
                    QT_TRANSLATE_NOOP("ZRServer",
                                      "Поле фильтра журнала действий слишком длинное: не больше %1 "
                                      "знаков, а получено %2."))
                    .arg(AuditFilter::MaxTextLength)
                    .arg(text->size()));
    }
    if (filter.result < AuditFilter::AnyResult || filter.result > AuditFilter::RefusalsOnly)
        return Reply::fail(
            proto::StatusMalformed,
            ServerText(QT_TRANSLATE_NOOP("ZRServer",
                                         "Неизвестный фильтр результата в журнале действий: %1."))
                .arg(filter.result));
    if (filter.from.isValid() && filter.to.isValid() && filter.from >= filter.to)
        return Reply::fail(
            proto::StatusMalformed,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Начало периода в фильтре журнала действий должно быть раньше его "
                              "конца."));
    QList<AuditRecord> rows;
    bool more = false;
    if (!AuditLog::page(m_state.database.connection(), filter, beforeId, pageSize, &rows, &more))
        return Reply::internalError();
    return Reply::ok(ZRDataStream::pack(rows, more));
}

Reply AuditOps::setConfirmer(Request &request)
{
    quint32 uid = 0;
    if (!payload::read(request.command, uid))
        return Reply::fail(
            proto::StatusMalformed,
            QT_TRANSLATE_NOOP("ZRServer", "Запрос подтверждающего пользователя не читается."));
    Session &session = *request.session;
    session.confirmerLogin.clear();
    if (uid == 0)
        return Reply::ok();
    if (uid == session.uid)
        return Reply::fail(
            proto::StatusConflict,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Изменение должен подтвердить другой пользователь, а не тот, кто "
                              "его вносит."),
            uid);
    ObjectInfo user;
    if (!m_state.store->read(uid, &user) || user.type != QLatin1String(db::system::USER))
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(
                QT_TRANSLATE_NOOP("ZRServer",
                                  "Подтверждающего пользователя %1 нет: возможно, его удалили."))
                .arg(uid),
            uid);
    const QString login = user.parameters.value(QLatin1String(db::user::LOGIN));
    if (Pushes::isBlocked(user))
        return Reply::fail(
            proto::StatusForbidden,
            ServerText(QT_TRANSLATE_NOOP(
                           "ZRServer",
                           "Пользователь «%1» заблокирован и не может подтверждать изменения."))
                .arg(login),
            uid);
    const QStringList roles = m_state.store->templateRoles(Pushes::roleTemplateOf(user));
    const bool confirms = roles.contains(QLatin1String(role::CONFIRM_USER_CREATE))
                          || roles.contains(QLatin1String(role::CONFIRM_USER_UPDATE))
                          || roles.contains(QLatin1String(role::CONFIRM_USER_DELETE));
    if (!confirms)
        return Reply::fail(
            proto::StatusForbidden,
            ServerText(
                QT_TRANSLATE_NOOP("ZRServer",
                                  "Пользователь «%1» не может подтверждать изменения: его шаблону "
                                  "ролей не дано право подтверждения."))
                .arg(login),
            uid);
    session.confirmerLogin = login;
    return Reply::ok();
}

} // namespace zeral::server
