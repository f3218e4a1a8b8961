#include "sessionops.h"

#include <host/core/zrdatastream.h>
#include <server/engine/net/clientconnection.h>
#include <server/engine/ops/passwordrules.h>
#include <server/engine/ops/payload.h>
#include <server/engine/ops/pushes.h>
#include <server/engine/ops/serverstate.h>
#include <server/engine/serverlogging.h>
#include <server/engine/session/passwordhasher.h>

#include <QtGlobal>

namespace zeral::server {

namespace {

// The address failures are counted under: an IPv4 client of a dual-stack listener is the
// same client as over IPv4.
QString throttleAddress(const ClientConnection *connection)
{
    const QHostAddress address = connection->peerAddress();
    bool isIPv4 = false;
    const quint32 ipv4 = address.toIPv4Address(&isIPv4);
    return isIPv4 ? QHostAddress(ipv4).toString() : address.toString();
}

// The language a client names, as a session keeps it. Names of languages are short ("en_GB",
// "sr_Latn_RS"); anything longer is no language and is not kept with the session: Russian.
QString languageNamed(const QString &text)
{
    constexpr int LongestName = 32;
    return text.size() <= LongestName ? text : QString();
}

} // namespace

SessionOps::SessionOps(ServerState &state)
    : m_state(state)
{}

Reply SessionOps::authenticate(const QString &login, const QString &clientHash,
                               const QString &address, ObjectInfo *user)
{
    LoginThrottle &throttle = *m_state.throttle;
    if (const qint64 seconds = throttle.lockedFor(login, address); seconds > 0) {
        return Reply::fail(
            proto::StatusLoginLocked,
            ServerText(
                QT_TRANSLATE_NOOP("ZRServer",
                                  "Вход под именем «%1» временно закрыт после нескольких неудачных "
                                  "попыток. Повторите через %2 мин."))
                .arg(login)
                .arg((seconds + 59) / 60));
    }
    const QList<TYPE_ID> users = m_state.store->usersWithLogin(login, Qt::CaseSensitive);
    const TYPE_ID found = users.value(0);
    const QString stored = found ? m_state.store->passwordHash(found) : QString();
    if (found && found == m_state.rootUid && stored.isEmpty()) {
        return Reply::fail(
            proto::StatusLoginFailed,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Пароль пользователя root ещё не задан. Задайте его при первом "
                              "запуске студии или командой zr-server --init-root-password."));
    }
    // An unknown login or one without a password runs the same Argon2 check as a wrong
    // password and gets the same text. Nothing tests the timing itself: on a shared machine
    // such a test would fail at random.
    const bool passwordMatches = stored.isEmpty() ? PasswordHasher::verifyWithoutAccount(clientHash)
                                                  : PasswordHasher::verify(stored, clientHash);
    if (!found || !passwordMatches) {
        Reply reply = Reply::fail(
            proto::StatusLoginFailed,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Неверное имя пользователя или пароль. Проверьте раскладку "
                              "клавиатуры и повторите."));
        const LoginThrottle::Failure failure = throttle.recordFailure(login, address);
        reply.delayMs = failure.delayMs;
        if (failure.lockedUntil.isValid()) {
            // The audit log keeps the refusal that locked the login, recognisably.
            reply.detail = QStringLiteral("login locked at %1 until %2 after %3 failures; %4")
                               .arg(address, failure.lockedUntil.toUTC().toString(Qt::ISODate))
                               .arg(failure.failures)
                               .arg(reply.detail);
            qCWarning(lcServerSession) << "login" << login << "locked at" << address << "until"
                                       << failure.lockedUntil.toUTC();
        }
        return reply;
    }
    if (!m_state.store->read(found, user))
        return Reply::fail(
            proto::StatusInternal,
            QT_TRANSLATE_NOOP("ZRServer", "Сервер не смог прочитать учётную запись."));
    if (Pushes::isBlocked(*user)) {
        return Reply::fail(
            proto::StatusAccountBlocked,
            ServerText(
                QT_TRANSLATE_NOOP(
                    "ZRServer", "Учётная запись «%1» заблокирована. Обратитесь к администратору."))
                .arg(login),
            found);
    }
    throttle.recordSuccess(login, address);
    return Reply::ok();
}

Reply SessionOps::checkPasswordCurrent(const ObjectInfo &user)
{
    const ServerText reason = PasswordRules::changeRequiredReason(user, m_state.clock().date());
    if (reason.isEmpty())
        return Reply::ok();
    return Reply::fail(proto::StatusPasswordChangeRequired, reason, user.uid);
}

Reply SessionOps::identity(const Session &session) const
{
    Reply reply = Reply::changed(session.uid, QStringLiteral("session started"));
    reply.data = ZRDataStream::pack(session.id, quint32(session.uid), session.roleTemplate,
                                    QList<QString>(session.roles));
    return reply;
}

void SessionOps::attach(Session *session, ClientConnection *connection)
{
    // A connection carries one session: one it had before is left to be resumed elsewhere.
    if (session->connection && session->connection != connection)
        session->connection->setSessionId({});
    session->connection = connection;
    session->detachedSince = QDateTime();
    session->peerAddress = connection->peerAddress();
    session->peerPort = connection->peerPort();
    session->lastAction = m_state.clock();
    connection->setSessionId(session->id);
}

Reply SessionOps::login(Request &request)
{
    QString login, clientHash, client, language;
    bool named = false;
    if (!payload::readWithTrailingText(request.command, &language, &named, login, clientHash,
                                       client))
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос входа не читается."));
    request.claimedLogin = login;
    request.language = languageNamed(language); // a client that names none speaks Russian
    ObjectInfo user;
    Reply checked = authenticate(login, clientHash, throttleAddress(request.connection), &user);
    if (checked.isOk())
        checked = checkPasswordCurrent(user);
    if (!checked.isOk())
        return checked;
    return openSession(request, user, login, client);
}

Reply SessionOps::openSession(Request &request, const ObjectInfo &user, const QString &login,
                              const QString &client)
{
    if (request.session)
        m_state.sessions.end(request.session->id, m_state.clock());

    Session identity;
    identity.uid = user.uid;
    identity.login = login;
    identity.roleTemplate = Pushes::roleTemplateOf(user);
    identity.roles = m_state.store->templateRoles(identity.roleTemplate);
    identity.started = m_state.clock();
    identity.language = request.language;
    Session *session = m_state.sessions.create(identity);
    attach(session, request.connection);
    request.session = session;
    qCInfo(lcServerSession) << "login" << login << "from" << request.connection->peer() << "client"
                            << client;
    return this->identity(*session);
}

Reply SessionOps::resume(Request &request)
{
    QByteArray id;
    QString login, clientHash, language;
    bool named = false;
    if (!payload::readWithTrailingText(request.command, &language, &named, id, login, clientHash))
        return Reply::fail(
            proto::StatusMalformed,
            QT_TRANSLATE_NOOP("ZRServer", "Запрос восстановления сессии не читается."));
    if (named)
        request.language = languageNamed(language);
    Session *session = m_state.sessions.find(id);
    if (session && session->login == login && !named)
        request.language = session->language;
    if (!session || session->login != login) {
        return Reply::fail(
            proto::StatusNotFound,
            QT_TRANSLATE_NOOP("ZRServer", "Сессия завершена. Войдите в систему заново."));
    }
    ObjectInfo user;
    Reply checked = authenticate(login, clientHash, throttleAddress(request.connection), &user);
    if (checked.isOk())
        checked = checkPasswordCurrent(user);
    if (!checked.isOk())
        return checked;
    if (user.uid != session->uid)
        return Reply::fail(
            proto::StatusNotFound,
            QT_TRANSLATE_NOOP("ZRServer", "Сессия завершена. Войдите в систему заново."));
    if (request.session && request.session != session)
        m_state.sessions.end(request.session->id, m_state.clock());
    attach(session, request.connection);
    request.session = session;
    // A client that names no language (an older one) leaves the session's as it was.
    if (named)
        session->language = request.language;
    request.language = session->language;
    qCInfo(lcServerSession) << "session of" << login << "resumed from"
                            << request.connection->peer();
    return identity(*session);
}

Reply SessionOps::logout(Request &request)
{
    const TYPE_ID uid = request.session->uid;
    qCInfo(lcServerSession) << "logout" << request.session->login;
    m_state.sessions.end(request.session->id, m_state.clock());
    request.connection->setSessionId({});
    request.session = nullptr;
    return Reply::changed(uid, QStringLiteral("session ended"));
}

Reply SessionOps::changePassword(Request &request)
{
    QString login, currentHash, newHash, client, language;
    bool named = false;
    if (!payload::readWithTrailingText(request.command, &language, &named, login, currentHash,
                                       newHash, client))
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос смены пароля не читается."));
    request.claimedLogin = login;
    request.language = languageNamed(language);
    ObjectInfo user;
    Reply checked = authenticate(login, currentHash, throttleAddress(request.connection), &user);
    if (!checked.isOk())
        return checked;
    if (newHash.isEmpty())
        return Reply::fail(
            proto::StatusMalformed,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Новый пароль не передан. Введите новый пароль и повторите."),
            user.uid);
    if (newHash == currentHash)
        return Reply::fail(
            proto::StatusConflict,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Новый пароль должен отличаться от текущего. Придумайте другой."),
            user.uid);

    const QString hash = PasswordHasher::hash(newHash);
    if (hash.isEmpty() || !m_state.store->setPasswordHash(user.uid, hash))
        return Reply::internalError();
    const PasswordRules::Edit renewal
        = PasswordRules(*m_state.store).renewal(user, m_state.clock().date());
    if (!m_state.store->setParameters(user.uid, renewal.set)
        || !m_state.store->removeParameters(user.uid, renewal.removed)
        || !m_state.store->read(user.uid, &user))
        return Reply::internalError();
    request.pushes.append(Pushes::changedObjects(*m_state.store, {user.uid}));

    Reply reply = openSession(request, user, login, client);
    QStringList keys = renewal.set.keys() + renewal.removed;
    keys.append(QStringLiteral("password"));
    keys.sort();
    reply.detail = QStringLiteral("changed by the user himself: %1; session started")
                       .arg(keys.join(QLatin1Char(' ')));
    return reply;
}

Reply SessionOps::passwordPolicy(Request &)
{
    return Reply::ok(ZRDataStream::pack(PasswordRules(*m_state.store).policy()));
}

} // namespace zeral::server
