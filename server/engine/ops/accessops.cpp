#include "accessops.h"

#include <host/core/zrdatastream.h>
#include <server/engine/ops/payload.h>
#include <server/engine/ops/pushes.h>
#include <server/engine/ops/rights.h>
#include <server/engine/ops/serverstate.h>
#include <shared/dbkeys.h>
#include <shared/rolenames.h>

#include <QSet>
#include <QtGlobal>

namespace zeral::server {

namespace {

Reply forbidden(const ServerText &text, TYPE_ID uid = 0)
{
    return Reply::fail(proto::StatusForbidden, text, uid);
}

} // namespace

AccessOps::AccessOps(ServerState &state)
    : m_state(state)
{}

Reply AccessOps::prescribe(Request &request)
{
    quint32 uid = 0;
    QString templateId;
    if (!payload::read(request.command, uid, templateId))
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос назначения шаблона не читается."));
    ObjectInfo user;
    if (!m_state.store->read(uid, &user) || user.type != QLatin1String(db::system::USER))
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Пользователя %1 нет.")).arg(uid), uid);
    if (!m_state.store->roleTemplateExists(templateId))
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Шаблона ролей «%1» нет.")).arg(templateId),
            uid);
    const QString current = Pushes::roleTemplateOf(user);
    if (current == templateId)
        return Reply::ok(); // nothing to do: the save that came before already set it
    const Rights rights(*request.session);
    if (uid == request.session->uid)
        return forbidden(QT_TRANSLATE_NOOP("ZRServer", "Нельзя изменить собственный шаблон ролей."),
                         uid);
    if (!rights.has(role::ROLE_LINKUSER))
        return forbidden(
            QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для назначения шаблонов ролей."), uid);
    if (uid == m_state.rootUid)
        return Reply::fail(
            proto::StatusConflict,
            QT_TRANSLATE_NOOP("ZRServer", "Шаблон ролей пользователя root не меняется."), uid);
    if (!rights.canManage(current) || !rights.canHandOut(templateId))
        return forbidden(
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Вы не можете назначить шаблон ролей «%1»."))
                .arg(templateId),
            uid);
    if (!m_state.store->setParameters(uid, {{QLatin1String(db::user::ROLE_TEMPLATE), templateId}}))
        return Reply::internalError();
    request.pushes.append(Pushes::changedObjects(*m_state.store, {uid}));
    return Reply::changed(uid, QStringLiteral("role template %1").arg(templateId));
}

Reply AccessOps::roleTemplateInherit(Request &request)
{
    // The argument is the template the studio believes its operator has; the answer is always
    // for the one he has now.
    QString asked;
    if (!payload::read(request.command, asked))
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос шаблонов ролей не читается."));
    const Rights rights(*request.session);
    const ROLETEMPLATES_HASH all = m_state.store->roleTemplates();
    ROLETEMPLATES_HASH visible;
    QList<QString> handOut;
    for (auto it = all.cbegin(); it != all.cend(); ++it) {
        if (!rights.canSee(it.key()))
            continue;
        visible.insert(it.key(), it.value());
        if (rights.canHandOut(it.key()))
            handOut.append(it.key());
    }
    std::sort(handOut.begin(), handOut.end());
    return Reply::ok(ZRDataStream::pack(visible, handOut, rights.ownTemplateAllowed()));
}

Reply AccessOps::checkPermissionTarget(const Request &request, const Rights &rights,
                                       TYPE_ID subject)
{
    ObjectInfo user;
    if (!m_state.store->read(subject, &user) || user.type != QLatin1String(db::system::USER))
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Пользователя %1 нет.")).arg(subject),
            subject);
    if (subject == request.session->uid)
        return forbidden(
            QT_TRANSLATE_NOOP("ZRServer", "Нельзя изменить собственные права на объекты."),
            subject);
    if (!rights.has(role::ROLE_LINKSUBDIV) || !rights.canManage(Pushes::roleTemplateOf(user)))
        return forbidden(
            QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для назначения прав на объекты."),
            subject);
    return Reply::ok();
}

Reply AccessOps::storePermissions(const QList<OBJECT_PERMISSION> &permissions)
{
    for (const OBJECT_PERMISSION &permission : permissions) {
        if (!m_state.store->exists(permission.object))
            return Reply::fail(
                proto::StatusNotFound,
                ServerText(QT_TRANSLATE_NOOP("ZRServer", "Объекта %1 нет: права на него не даны."))
                    .arg(permission.object),
                permission.subject);
        if (!m_state.store->addPermission(permission))
            return Reply::internalError();
    }
    return Reply::ok();
}

Reply AccessOps::addPermissions(Request &request)
{
    QList<OBJECT_PERMISSION> permissions;
    if (!payload::read(request.command, permissions))
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос прав не читается."));
    const Rights rights(*request.session);
    QSet<TYPE_ID> subjects;
    for (const OBJECT_PERMISSION &permission : qAsConst(permissions))
        subjects.insert(permission.subject);
    for (TYPE_ID subject : qAsConst(subjects)) {
        Reply checked = checkPermissionTarget(request, rights, subject);
        if (!checked.isOk())
            return checked;
    }
    Reply stored = storePermissions(permissions);
    if (!stored.isOk())
        return stored;
    // Permissions are no objects of the store; their user is, and every session learns that
    // he changed (an open editor of his reads his permissions again).
    request.pushes.append(Pushes::changedObjects(*m_state.store, subjects.values()));
    return Reply::changed(subjects.size() == 1 ? *subjects.cbegin() : 0,
                          QStringLiteral("added %1 permissions").arg(permissions.size()));
}

Reply AccessOps::updatePermissions(Request &request)
{
    quint32 uid = 0;
    QList<OBJECT_PERMISSION> permissions;
    if (!payload::read(request.command, uid, permissions))
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос прав не читается."));
    for (const OBJECT_PERMISSION &permission : qAsConst(permissions)) {
        if (permission.subject != uid)
            return Reply::fail(
                proto::StatusMalformed,
                ServerText(
                    QT_TRANSLATE_NOOP("ZRServer",
                                      "Все права в наборе должны относиться к пользователю %1."))
                    .arg(uid),
                uid);
    }
    Reply checked = checkPermissionTarget(request, Rights(*request.session), uid);
    if (!checked.isOk())
        return checked;
    if (!m_state.store->clearPermissions(uid))
        return Reply::internalError();
    Reply stored = storePermissions(permissions);
    if (!stored.isOk())
        return stored;
    request.pushes.append(Pushes::changedObjects(*m_state.store, {uid}));
    return Reply::changed(uid, QStringLiteral("set %1 permissions").arg(permissions.size()));
}

Reply AccessOps::getPermissions(Request &request)
{
    QList<quint32> uids;
    if (!payload::read(request.command, uids))
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос прав не читается."));
    const bool ownOnly = uids.size() == 1 && uids.constFirst() == request.session->uid;
    if (!ownOnly && !Rights(*request.session).has(role::USER_SHOW))
        return forbidden(ServerText(
            QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для просмотра пользователей.")));
    QList<OBJECT_PERMISSION> permissions;
    if (!m_state.store->permissions(uids, &permissions))
        return Reply::internalError();
    return Reply::ok(ZRDataStream::pack(permissions));
}

} // namespace zeral::server
