#include "adminops.h"

#include <host/core/zrdatastream.h>
#include <server/engine/mail/mailoutbox.h>
#include <server/engine/mail/mailrenderer.h>
#include <server/engine/mail/mailsender.h>
#include <server/engine/ops/payload.h>
#include <server/engine/ops/pushes.h>
#include <server/engine/ops/rights.h>
#include <server/engine/ops/serverstate.h>
#include <server/engine/serverlogging.h>
#include <shared/connecteduserinfo.h>
#include <shared/emailaddress.h>
#include <shared/emailmessage.h>
#include <shared/loginlockinfo.h>
#include <shared/maildelivery.h>
#include <shared/rolenames.h>

#include <QtGlobal>

namespace zeral::server {

AdminOps::AdminOps(ServerState &state, CloseSession closeSession)
    : m_state(state)
    , m_closeSession(std::move(closeSession))
{}

Reply AdminOps::sessionsInfo(Request &request)
{
    if (!request.command.data.isEmpty())
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос сессий не читается."));
    if (!Rights(*request.session).has(role::USER_ONLINE_SHOW))
        return Reply::fail(
            proto::StatusForbidden,
            QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для просмотра активных сессий."));
    // The instants go out in UTC: a client reads thousands of them without working out a time
    // zone for each, and shows them in its own.
    QHash<QByteArray, ConnectedUserInfo> sessions;
    for (const Session *session : m_state.sessions.attached()) {
        sessions.insert(session->id, {session->login, session->ipPort(), session->started.toUTC(),
                                      session->lastAction.toUTC(), session->id});
    }
    // And those held by the other servers of the database.
    if (m_state.cluster) {
        for (const ClusterLink::RemoteSession &remote : m_state.cluster->remoteSessions())
            sessions.insert(remote.id, remote.info);
    }
    return Reply::ok(ZRDataStream::pack(sessions, m_state.clock().toUTC()));
}

Reply AdminOps::disconnectUsers(Request &request)
{
    ZRDataStream in(request.command.data);
    qint32 count = 0;
    in >> count;
    QList<QByteArray> ids;
    // Each id takes at least its four-byte length: a larger count can't be true.
    if (in.status() == QDataStream::Ok && count >= 0
        && qint64(count) * 4 <= request.command.data.size()) {
        for (qint32 i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
            QByteArray id;
            in >> id;
            ids.append(id);
        }
    }
    if (in.status() != QDataStream::Ok || !in.atEnd() || ids.size() != count)
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос отключения не читается."));

    const Rights rights(*request.session);
    QStringList logins;
    QHash<QByteArray, QString> holders; // sessions of other servers: the server holding each
    for (const QByteArray &id : qAsConst(ids)) {
        if (id == request.session->id)
            return Reply::fail(
                proto::StatusForbidden,
                QT_TRANSLATE_NOOP("ZRServer", "Нельзя отключить собственную сессию."));
        const Session *local = m_state.sessions.find(id);
        ClusterLink::RemoteSession remote;
        if (!local && !(m_state.cluster && m_state.cluster->findRemoteSession(id, &remote)))
            return Reply::fail(
                proto::StatusNotFound,
                QT_TRANSLATE_NOOP("ZRServer", "Сессии уже нет: обновите список сессий."));
        const TYPE_ID uid = local ? local->uid : remote.uid;
        const QString login = local ? local->login : remote.info.user;
        if (!local)
            holders.insert(id, remote.serverId);
        ObjectInfo user;
        m_state.store->read(uid, &user);
        if (!rights.canDisconnect(Pushes::roleTemplateOf(user)))
            return Reply::fail(
                proto::StatusForbidden,
                ServerText(QT_TRANSLATE_NOOP("ZRServer",
                                             "Недостаточно прав для отключения пользователя «%1»."))
                    .arg(login),
                uid);
        logins.append(login);
    }
    const ServerText reason
        = ServerText(QT_TRANSLATE_NOOP("ZRServer",
                                       "Сессия закрыта оператором %1. Войдите в систему заново."))
              .arg(request.session->login);
    for (const QByteArray &id : qAsConst(ids)) {
        if (holders.contains(id))
            request.afterCommit.append([this, id, reason, server = holders.value(id)] {
                m_state.cluster->publishClose(id, server, reason);
            });
        else
            request.afterCommit.append([this, id, reason] { m_closeSession(id, reason); });
    }
    return Reply::changed(0, QStringLiteral("disconnected: ") % logins.join(QLatin1Char(' ')));
}

Reply AdminOps::loginLocks(Request &request)
{
    if (!request.command.data.isEmpty())
        return Reply::fail(
            proto::StatusMalformed,
            QT_TRANSLATE_NOOP("ZRServer", "Запрос заблокированных входов не читается."));
    if (!Rights(*request.session).has(role::USER_UPDATE))
        return Reply::fail(
            proto::StatusForbidden,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Недостаточно прав для просмотра заблокированных входов: нужно "
                              "право изменять пользователей. Обратитесь к администратору."));
    QList<LoginLockInfo> locks;
    for (const LoginLock &lock : m_state.throttle->locks())
        locks.append({lock.login, lock.address, lock.failures, lock.lockedUntil.toUTC()});
    return Reply::ok(ZRDataStream::pack(locks, m_state.clock().toUTC()));
}

Reply AdminOps::unlockLogin(Request &request)
{
    QString login, address;
    if (!payload::read(request.command, login, address) || login.isEmpty())
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос снятия блокировки не читается."));
    const Rights rights(*request.session);
    if (!rights.has(role::USER_UPDATE))
        return Reply::fail(
            proto::StatusForbidden,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Недостаточно прав для снятия блокировки входа: нужно право "
                              "изменять пользователей. Обратитесь к администратору."));
    // Lifting a lock lets that address guess again: only for a user the operator may manage.
    const TYPE_ID user = m_state.store->usersWithLogin(login, Qt::CaseInsensitive).value(0);
    if (user) {
        ObjectInfo info;
        m_state.store->read(user, &info);
        if (!rights.canManage(Pushes::roleTemplateOf(info)))
            return Reply::fail(
                proto::StatusForbidden,
                ServerText(QT_TRANSLATE_NOOP("ZRServer",
                                             "Недостаточно прав для снятия блокировки входа «%1»."))
                    .arg(login),
                user);
    }
    const QList<LoginLock> lifted = m_state.throttle->unlock(login, address);
    if (lifted.isEmpty())
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(
                QT_TRANSLATE_NOOP("ZRServer",
                                  "Вход «%1» не заблокирован: блокировка уже снята или истекла. "
                                  "Обновите список."))
                .arg(login),
            user);
    QStringList detail;
    for (const LoginLock &lock : lifted) {
        detail.append(QStringLiteral("%1 at %2 (%3 failures, locked until %4)")
                          .arg(lock.login, lock.address)
                          .arg(lock.failures)
                          .arg(lock.lockedUntil.toUTC().toString(Qt::ISODate)));
    }
    qCInfo(lcServerSession) << "operator" << request.session->login << "unlocked"
                            << detail.join(QStringLiteral(", "));
    return Reply::changed(user,
                          QStringLiteral("login unlocked: ") % detail.join(QStringLiteral(", ")),
                          ZRDataStream::pack(qint32(lifted.size())));
}

Reply AdminOps::sendEmail(Request &request)
{
    _EMAIL_MESSAGE message;
    QString claimedLogin;
    if (!payload::read(request.command, message, claimedLogin))
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Письмо не читается."));
    const Rights rights(*request.session);
    if (!rights.has(role::USER_CREATE) && !rights.has(role::USER_UPDATE))
        return Reply::fail(proto::StatusForbidden,
                           QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для отправки писем."));
    const QString recipient = message.to.trimmed();
    if (recipient.isEmpty())
        return Reply::fail(
            proto::StatusMalformed,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Не указан адрес получателя письма. Укажите адрес e-mail."));
    // One plain address: a list, a display name or blanks would send the credentials to
    // several people or to none.
    if (!email::isValidAddress(recipient))
        return Reply::fail(
            proto::StatusMalformed,
            ServerText(
                QT_TRANSLATE_NOOP(
                    "ZRServer",
                    "Адрес получателя «%1» не подходит для письма: нужен ровно один адрес вида "
                    "имя@домен.ru латиницей, без пробелов, имени и других адресов. Исправьте "
                    "e-mail "
                    "сотрудника и отправьте письмо снова."))
                .arg(recipient));
    if (claimedLogin != request.session->login)
        qCWarning(lcServer) << "send_email names operator" << claimedLogin << "on the session of"
                            << request.session->login;
    // A mail whose request names no language is written in the operator's: the language of
    // the session that queues it.
    const QString locale = QLatin1String(email::LOCALE);
    if (message.parameters.value(locale).toString().trimmed().isEmpty()
        && !request.session->language.isEmpty())
        message.parameters.insert(locale, request.session->language);
    const RenderedMail mail = m_state.mailRenderer->render(message);
    const bool relay = !m_state.mailSender.isNull();
    const qint64 id
        = MailOutbox::enqueue(m_state.database.connection(), mail, request.session->login, relay);
    if (id < 0)
        return Reply::fail(
            proto::StatusInternal,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Сервер не смог поставить письмо в очередь. Повторите позже."));
    if (relay) {
        QPointer<MailSender> sender = m_state.mailSender;
        request.afterCommit.append([sender] {
            if (sender)
                sender->wake();
        });
    }
    // The client learns the outbox id, to match the "mail.delivery" pushes that follow.
    const QString state = QLatin1String(relay ? MailDelivery::Pending : MailDelivery::Held);
    return Reply::changed(0,
                          QStringLiteral("mail %1 to %2%3")
                              .arg(id)
                              .arg(recipient, relay ? QString() : QStringLiteral(" (held)")),
                          ZRDataStream::pack(id, state));
}

} // namespace zeral::server
