#include "biometricops.h"

#include <host/core/zrdatastream.h>
#include <server/engine/ops/payload.h>
#include <server/engine/ops/pushes.h>
#include <server/engine/ops/rights.h>
#include <server/engine/ops/serverstate.h>
#include <shared/dbkeys.h>
#include <shared/rolenames.h>

namespace zeral::server {

namespace {

bool isFinger(qint32 finger)
{
    return finger >= 0 && finger < BiometricOps::FingerCount;
}

Reply malformed(const ServerText &text, TYPE_ID uid = 0)
{
    return Reply::fail(proto::StatusMalformed, text, uid);
}

Reply badFinger(qint32 finger, TYPE_ID uid)
{
    return malformed(
        ServerText(
            QT_TRANSLATE_NOOP("ZRServer", "Пальца с номером %1 нет: пальцы нумеруются от 0 до 9."))
            .arg(finger),
        uid);
}

} // namespace

BiometricOps::BiometricOps(ServerState &state)
    : m_state(state)
{}

Reply BiometricOps::checkMayRead(const Request &request, const QList<quint32> &uids) const
{
    const bool ownOnly = uids.size() == 1 && uids.constFirst() == request.session->uid;
    if (!ownOnly && !Rights(*request.session).has(role::USER_SHOW))
        return Reply::fail(
            proto::StatusForbidden,
            QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для просмотра пользователей."));
    return Reply::ok();
}

Reply BiometricOps::checkMayEdit(const Request &request, TYPE_ID uid)
{
    ObjectInfo user;
    if (!m_state.store->read(uid, &user) || user.type != QLatin1String(db::system::USER))
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Пользователя %1 нет.")).arg(uid), uid);
    const Rights rights(*request.session);
    if (!rights.has(role::USER_BIOMETRICS_EDIT))
        return Reply::fail(
            proto::StatusBiometricRefused,
            QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для изменения биометрических данных. "
                                          "Обратитесь к администратору."),
            uid);
    // The same rule as for every other change of a user: his own card anybody may edit,
    // another's only if the operator may manage that user's template.
    if (uid != request.session->uid && !rights.canManage(Pushes::roleTemplateOf(user)))
        return Reply::fail(
            proto::StatusForbidden,
            ServerText(
                QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для изменения пользователя «%1»."))
                .arg(user.parameters.value(QLatin1String(db::user::LOGIN))),
            uid);
    return Reply::ok();
}

Reply BiometricOps::fingersExist(Request &request)
{
    QList<quint32> uids;
    if (!payload::read(request.command, uids))
        return malformed(QT_TRANSLATE_NOOP("ZRServer", "Запрос отпечатков не читается."));
    Reply checked = checkMayRead(request, uids);
    if (!checked.isOk())
        return checked;
    QHash<quint32, quint32> counts;
    if (!m_state.store->fingerCounts(uids, &counts))
        return Reply::internalError();
    return Reply::ok(ZRDataStream::pack(counts));
}

Reply BiometricOps::userFingers(Request &request)
{
    quint32 uid = 0;
    if (!payload::read(request.command, uid))
        return malformed(QT_TRANSLATE_NOOP("ZRServer", "Запрос отпечатков не читается."));
    Reply checked = checkMayRead(request, {uid});
    if (!checked.isOk())
        return checked;
    ObjectInfo user;
    if (!m_state.store->read(uid, &user) || user.type != QLatin1String(db::system::USER))
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Пользователя %1 нет.")).arg(uid), uid);
    QList<qint32> fingers;
    QList<quint32> formats;
    if (!m_state.store->fingersOf(uid, &fingers, &formats))
        return Reply::internalError();
    // The formats follow the list, finger by finger: a reader of the list alone still reads it.
    return Reply::ok(ZRDataStream::pack(fingers, formats));
}

Reply BiometricOps::enrolFinger(Request &request)
{
    quint32 uid = 0, format = 0;
    qint32 finger = -1;
    QByteArray bytes;
    if (!payload::read(request.command, uid, finger, format, bytes))
        return malformed(QT_TRANSLATE_NOOP("ZRServer", "Запрос на запись отпечатка не читается."));
    if (!isFinger(finger))
        return badFinger(finger, uid);
    if (bytes.isEmpty())
        return malformed(
            QT_TRANSLATE_NOOP("ZRServer", "Шаблон отпечатка пуст. Снимите отпечаток ещё раз."),
            uid);
    if (bytes.size() > MaxTemplateBytes)
        return malformed(
            ServerText(QT_TRANSLATE_NOOP("ZRServer",
                                         "Шаблон отпечатка больше %1 КиБ: такой не сохраняется. "
                                         "Проверьте считыватель."))
                .arg(MaxTemplateBytes / 1024),
            uid);
    Reply checked = checkMayEdit(request, uid);
    if (!checked.isOk())
        return checked;
    TEMPLATE_DATA data;
    data.format = format;
    data.data = bytes;
    if (!m_state.store->replaceFinger(uid, finger, data))
        return Reply::internalError();
    return Reply::changed(uid, QStringLiteral("enrolled finger %1 (format 0x%2, %3 bytes)")
                                   .arg(finger)
                                   .arg(format, 8, 16, QLatin1Char('0'))
                                   .arg(bytes.size()));
}

Reply BiometricOps::removeFinger(Request &request)
{
    quint32 uid = 0;
    qint32 finger = -1;
    if (!payload::read(request.command, uid, finger))
        return malformed(
            QT_TRANSLATE_NOOP("ZRServer", "Запрос на удаление отпечатка не читается."));
    if (!isFinger(finger))
        return badFinger(finger, uid);
    Reply checked = checkMayEdit(request, uid);
    if (!checked.isOk())
        return checked;
    bool removed = false;
    if (!m_state.store->removeFinger(uid, finger, &removed))
        return Reply::internalError();
    if (!removed)
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "У пользователя нет отпечатка пальца %1."))
                .arg(finger),
            uid);
    return Reply::changed(uid, QStringLiteral("removed finger %1").arg(finger));
}

} // namespace zeral::server
