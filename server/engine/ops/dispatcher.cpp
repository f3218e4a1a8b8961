#include "dispatcher.h"

#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <server/engine/net/clientconnection.h>
#include <server/engine/ops/pushes.h>
#include <server/engine/ops/serverstate.h>
#include <server/engine/serverlogging.h>
#include <server/engine/storage/auditlog.h>
#include <shared/rolenames.h>

#include <QTimer>
#include <QtGlobal>

namespace zeral::server {

Dispatcher::Dispatcher(ServerState &state, QObject *parent)
    : QObject(parent)
    , m_state(state)
    , m_sessionOps(state)
    , m_objectOps(state)
    , m_accessOps(state)
    , m_biometricOps(state)
    , m_sqlOps(state)
    , m_adminOps(state, [this](const QByteArray &id,
                               const ServerText &reason) { closeSession(id, reason); })
    , m_auditOps(state)
{
    namespace c = proto::command;
    const auto route = [this](const char *name, bool needsSession, auto handler) {
        m_routes.insert(QLatin1String(name), {needsSession, true, handler});
    };
    using std::placeholders::_1;
    route(c::Login, false, std::bind(&SessionOps::login, &m_sessionOps, _1));
    route(c::Resume, false, std::bind(&SessionOps::resume, &m_sessionOps, _1));
    route(c::Logout, true, std::bind(&SessionOps::logout, &m_sessionOps, _1));
    route(c::ChangePassword, false, std::bind(&SessionOps::changePassword, &m_sessionOps, _1));
    route(c::PasswordPolicy, false, std::bind(&SessionOps::passwordPolicy, &m_sessionOps, _1));
    route(c::Snapshot, true, std::bind(&ObjectOps::snapshot, &m_objectOps, _1));
    route(c::RoleCatalogue, true, std::bind(&ObjectOps::roleCatalogue, &m_objectOps, _1));
    route(c::AddObject, true, std::bind(&ObjectOps::addObject, &m_objectOps, _1));
    route(c::UpdateObject, true, std::bind(&ObjectOps::updateObject, &m_objectOps, _1));
    route(c::RemoveObject, true, std::bind(&ObjectOps::removeObject, &m_objectOps, _1));
    route(c::PrescribeRoleTemplate, true, std::bind(&AccessOps::prescribe, &m_accessOps, _1));
    route(c::RoleTemplateInherit, true,
          std::bind(&AccessOps::roleTemplateInherit, &m_accessOps, _1));
    route(c::AddPermissions, true, std::bind(&AccessOps::addPermissions, &m_accessOps, _1));
    route(c::UpdatePermissions, true, std::bind(&AccessOps::updatePermissions, &m_accessOps, _1));
    route(c::GetPermissions, true, std::bind(&AccessOps::getPermissions, &m_accessOps, _1));
    route(c::GetUserFingersExists, true,
          std::bind(&BiometricOps::fingersExist, &m_biometricOps, _1));
    route(c::GetUserFingers, true, std::bind(&BiometricOps::userFingers, &m_biometricOps, _1));
    route(c::EnrolFinger, true, std::bind(&BiometricOps::enrolFinger, &m_biometricOps, _1));
    route(c::RemoveFinger, true, std::bind(&BiometricOps::removeFinger, &m_biometricOps, _1));
    m_routes.insert(QLatin1String(c::ExecSql),
                    {true, false, std::bind(&SqlOps::execSql, &m_sqlOps, _1)});
    route(c::GetSessionsInfo, true, std::bind(&AdminOps::sessionsInfo, &m_adminOps, _1));
    route(c::DisconnectUsers, true, std::bind(&AdminOps::disconnectUsers, &m_adminOps, _1));
    route(c::LoginLocks, true, std::bind(&AdminOps::loginLocks, &m_adminOps, _1));
    route(c::UnlockLogin, true, std::bind(&AdminOps::unlockLogin, &m_adminOps, _1));
    route(c::SendEmail, true, std::bind(&AdminOps::sendEmail, &m_adminOps, _1));
    route(c::AuditLog, true, std::bind(&AuditOps::auditLog, &m_auditOps, _1));
    route(c::SetConfirmer, true, std::bind(&AuditOps::setConfirmer, &m_auditOps, _1));
}

bool Dispatcher::refresh(Session *session, Reply *refusal)
{
    ObjectInfo user;
    const bool found
        = m_state.database.ensureConnected() && m_state.store->read(session->uid, &user);
    if (!found && (m_state.database.connectionLost() || !m_state.store->lastError().isEmpty())) {
        // The account may well be there: the database is away, not the user.
        *refusal = Reply::fail(
            proto::StatusInternal,
            QT_TRANSLATE_NOOP("ZRServer",
                              "База данных сервера занята или недоступна. Повторите позже."));
        return false;
    }
    if (!found || Pushes::isBlocked(user)) {
        *refusal = Reply::fail(
            proto::StatusNotLoggedIn,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Учётная запись удалена или заблокирована; сессия завершена."),
            session->uid);
        m_state.sessions.end(session->id, m_state.clock());
        return false;
    }
    const QString roleTemplate = Pushes::roleTemplateOf(user);
    if (roleTemplate != session->roleTemplate) {
        session->roleTemplate = roleTemplate;
        session->roles = m_state.store->templateRoles(roleTemplate);
    }
    session->lastAction = m_state.clock();
    return true;
}

void Dispatcher::endAbandonedSessions()
{
    const QDateTime now = m_state.clock();
    const QList<Session> ended
        = m_state.sessions.endDetachedBefore(now.addSecs(-m_state.resumeWindowSeconds), now);
    for (const Session &session : ended) {
        qCInfo(lcServerSession) << "session of" << session.login << "ended: not resumed within"
                                << m_state.resumeWindowSeconds << "s of losing its connection";
    }
    m_state.throttle->forgetStale();
}

void Dispatcher::endRevokedSessions(const QString &byOperator)
{
    // Each user is read once however many sessions he has; empty: the account still holds.
    QHash<TYPE_ID, ServerText> reasons;
    QList<QPair<QByteArray, ServerText>> toClose;
    for (const Session *session : m_state.sessions.all()) {
        auto reason = reasons.find(session->uid);
        if (reason == reasons.end()) {
            ObjectInfo user;
            ServerText text;
            if (!m_state.store->read(session->uid, &user))
                text = ServerText(
                           QT_TRANSLATE_NOOP(
                               "ZRServer",
                               "Ваша учётная запись удалена оператором %1. Сессия завершена."))
                           .arg(byOperator);
            else if (Pushes::isBlocked(user))
                text = ServerText(
                           QT_TRANSLATE_NOOP(
                               "ZRServer",
                               "Ваша учётная запись заблокирована оператором %1. Сессия завершена; "
                               "обратитесь к администратору."))
                           .arg(byOperator);
            reason = reasons.insert(session->uid, text);
        }
        if (!reason->isEmpty())
            toClose.append({session->id, *reason});
    }
    for (const auto &[id, reason] : qAsConst(toClose))
        closeSession(id, reason);
}

void Dispatcher::dispatch(ClientConnection *connection, const Command &command)
{
    endAbandonedSessions();
    Session *session = m_state.sessions.find(connection->sessionId());
    if (!session && !connection->sessionId().isEmpty())
        connection->setSessionId({}); // ended elsewhere
    Request request{command, connection, session, {}, session ? session->language : QString(),
                    {},      {},         {}};
    AuditEntry audit;
    audit.at = m_state.clock();
    audit.peer = connection->peer();
    audit.command = command.name;
    if (session) {
        audit.operatorLogin = session->login;
        audit.sessionId = session->id;
        // A confirmer named for the next request is that request's, whatever it is.
        if (command.name != QLatin1String(proto::command::SetConfirmer)) {
            audit.confirmedBy = session->confirmerLogin;
            session->confirmerLogin.clear();
        }
    }

    Reply reply;
    AuditRecord appended; // the row of a committed change, told to the log's readers
    const auto route = m_routes.constFind(command.name);
    if (command.type != proto::NamedCommand) {
        reply = Reply::fail(
            proto::StatusMalformed,
            QT_TRANSLATE_NOOP("ZRServer", "Сервер понимает только именованные команды."));
    } else if (route == m_routes.cend()) {
        reply = Reply::fail(
            proto::StatusNotFound,
            ServerText(
                QT_TRANSLATE_NOOP("ZRServer", "Сервер не знает команды «%1». Обновите студию."))
                .arg(command.name));
    } else if (route->needsSession && !session) {
        reply = Reply::fail(proto::StatusNotLoggedIn,
                            QT_TRANSLATE_NOOP("ZRServer", "Сначала войдите в систему."));
    } else if (route->needsSession && command.sessionId != session->id) {
        reply = Reply::fail(
            proto::StatusForbidden,
            QT_TRANSLATE_NOOP("ZRServer", "Команда пришла с чужим идентификатором сессии."));
    } else if (route->needsSession && !refresh(session, &reply)) {
        request.session = nullptr;
    } else if (!route->inTransaction) {
        request.answerLater = [this, to = QPointer<ClientConnection>(connection),
                               sessionId = session ? session->id : QByteArray(),
                               language = request.language, command, audit](const Reply &later) {
            answerLater(to, sessionId, language, command, audit, later);
        };
        reply = route->handle(request);
        if (reply.answeredLater)
            return;
    } else if (!m_state.database.begin()) {
        reply = Reply::fail(
            proto::StatusInternal,
            QT_TRANSLATE_NOOP("ZRServer",
                              "База данных сервера занята или недоступна. Повторите позже."));
    } else {
        reply = route->handle(request);
        if (request.session && audit.operatorLogin.isEmpty()) {
            audit.operatorLogin = request.session->login;
            audit.sessionId = request.session->id;
        } else if (audit.operatorLogin.isEmpty()) {
            audit.operatorLogin = request.claimedLogin;
        }
        audit.object = reply.object;
        audit.status = reply.status;
        audit.detail = reply.detail;
        if (reply.isOk() && reply.change) {
            nameObject(audit, reply);
            appended = AuditLog::record(m_state.database.connection(), audit);
            if (appended.id == 0)
                reply
                    = Reply::fail(proto::StatusInternal,
                                  QT_TRANSLATE_NOOP("ZRServer", "Сервер не смог записать журнал."));
        }
        // The other servers of the database hear of the change with its commit.
        if (reply.isOk() && m_state.cluster && (reply.change || !request.pushes.isEmpty())
            && !m_state.cluster->writeChange(request.pushes, appended,
                                             reply.change ? audit.operatorLogin : QString()))
            reply = Reply::fail(
                proto::StatusInternal,
                QT_TRANSLATE_NOOP("ZRServer",
                                  "Сервер не смог сохранить изменение; ничего не изменено. "
                                  "Повторите позже."));
        if (reply.isOk() && !m_state.database.commit()) {
            reply = Reply::fail(
                proto::StatusInternal,
                QT_TRANSLATE_NOOP("ZRServer",
                                  "Сервер не смог сохранить изменение; ничего не изменено. "
                                  "Повторите позже."));
        } else if (!reply.isOk()) {
            m_state.database.rollback();
        }
        // Nothing of a request that didn't commit may reach anybody.
        if (!reply.isOk()) {
            request.pushes.clear();
            request.afterCommit.clear();
        }
    }
    if (!reply.isOk())
        recordRefusal(audit, reply, connection->peer());
    for (const Command &push : qAsConst(request.pushes))
        broadcast(push);
    if (reply.isOk() && appended.id != 0)
        tellAuditReaders(appended);
    for (const auto &action : qAsConst(request.afterCommit))
        action();
    if (reply.isOk() && reply.change)
        endRevokedSessions(audit.operatorLogin);
    answer(connection, command, reply, request.language);
}

void Dispatcher::applyRemoteChange(const QList<Command> &pushes, const AuditRecord &row,
                                   const QString &changedBy)
{
    for (const Command &push : pushes)
        broadcast(push);
    tellAuditReaders(row);
    if (!changedBy.isEmpty())
        endRevokedSessions(changedBy);
}

void Dispatcher::recordRefusal(AuditEntry &audit, const Reply &reply, const QString &peer)
{
    audit.object = reply.object;
    audit.status = reply.status;
    audit.detail = reply.detail;
    nameObject(audit, reply);
    tellAuditReaders(AuditLog::record(m_state.database.connection(), audit));
    qCInfo(lcServer) << "refused" << audit.command << "from" << peer << "status" << reply.status
                     << "-" << reply.detail;
}

void Dispatcher::nameObject(AuditEntry &audit, const Reply &reply)
{
    audit.objectName = reply.objectName;
    ObjectInfo object;
    if (audit.objectName.isEmpty() && reply.object != 0
        && m_state.store->read(reply.object, &object))
        audit.objectName = AuditLog::nameOf(object);
}

void Dispatcher::tellAuditReaders(const AuditRecord &row)
{
    if (row.id == 0)
        return;
    const QList<const Session *> attached = m_state.sessions.attached();
    if (attached.isEmpty())
        return;
    // Read now rather than from the sessions' roles, which are brought up to date only at a
    // session's own next request: an operator who lost the right gets no more rows.
    const QSet<TYPE_ID> readers
        = AuditLog::usersWithRole(m_state.database.connection(), QLatin1String(role::AUDIT_SHOW));
    if (readers.isEmpty())
        return;
    const Command push = Pushes::auditAppended(row);
    for (const Session *session : attached) {
        if (readers.contains(session->uid))
            session->connection->send(push);
    }
}

void Dispatcher::answerLater(const QPointer<ClientConnection> &connection,
                             const QByteArray &sessionId, const QString &language,
                             const Command &request, AuditEntry audit, const Reply &reply)
{
    if (!reply.isOk())
        recordRefusal(audit, reply, audit.peer);
    // Rows read for a session that ended (or a client that left) are nobody's business now,
    // least of all of the next session on the same connection.
    if (!connection || connection->sessionId() != sessionId || !m_state.sessions.find(sessionId)) {
        qCInfo(lcServer) << "client SQL answer dropped: the session of" << audit.operatorLogin
                         << "or its connection ended while the statement ran";
        return;
    }
    answer(connection, request, reply, language);
}

void Dispatcher::answer(ClientConnection *connection, const Command &request, const Reply &reply,
                        const QString &language)
{
    const QByteArray data
        = reply.isOk() ? reply.data
                       : ZRDataStream::pack(m_state.languages.render(reply.reason, language));
    const Command answer = Command::answer(request, reply.status, data);
    if (reply.delayMs <= 0) {
        connection->send(answer);
        return;
    }
    QTimer::singleShot(reply.delayMs, connection,
                       [connection, answer] { connection->send(answer); });
}

void Dispatcher::broadcast(const Command &push)
{
    for (const Session *session : m_state.sessions.attached())
        session->connection->send(push);
}

void Dispatcher::sendMailDelivery(const QString &login, MailDelivery delivery,
                                  const ServerText &reason)
{
    for (const Session *session : m_state.sessions.attached()) {
        if (session->login != login)
            continue;
        if (!reason.isEmpty())
            delivery.error = m_state.languages.render(reason, session->language);
        session->connection->send(Pushes::mailDelivery(delivery));
    }
}

void Dispatcher::closeSession(const QByteArray &id, const ServerText &reason)
{
    Session *session = m_state.sessions.find(id);
    if (!session)
        return;
    QPointer<ClientConnection> connection = session->connection;
    const QString told = m_state.languages.render(reason, session->language);
    qCInfo(lcServerSession) << "closing the session of" << session->login << "-"
                            << reason.toString();
    m_state.sessions.end(id, m_state.clock());
    if (connection) {
        connection->send(Pushes::sessionClosed(told));
        connection->setSessionId({});
        connection->close(QStringLiteral("session closed by another operator"));
    }
}

} // namespace zeral::server
