#pragma once

#include <server/engine/ops/accessops.h>
#include <server/engine/ops/adminops.h>
#include <server/engine/ops/auditops.h>
#include <server/engine/ops/biometricops.h>
#include <server/engine/ops/objectops.h>
#include <server/engine/ops/sessionops.h>
#include <server/engine/ops/sqlops.h>

#include <shared/auditrecord.h>
#include <shared/maildelivery.h>

#include <QHash>
#include <QObject>
#include <QPointer>

namespace zeral::server {

struct ServerState;
struct AuditEntry;
class ClientConnection;

// Runs every request: finds its handler, checks the session, runs it in one transaction,
// writes the audit log, sends the pushes of a committed change to every session and then the
// answer. A request that only reads outside the transaction (client SQL) is handed to a
// worker; its answer comes back through Request::answerLater.
class Dispatcher : public QObject
{
    Q_OBJECT
public:
    Dispatcher(ServerState &state, QObject *parent = nullptr);

    void dispatch(ClientConnection *connection, const Command &command);
    // Tells the session's client why (in the session's language), ends the session and closes
    // its connection.
    void closeSession(const QByteArray &id, const ServerText &reason);
    void broadcast(const Command &push);
    // Tells every attached session of the operator `login` how a mail he queued fared, the
    // reason in each session's language.
    void sendMailDelivery(const QString &login, MailDelivery delivery, const ServerText &reason);
    // Ends the sessions whose client stayed away longer than the resume window. Runs before
    // every request and on a timer, so an idle server lets them go too.
    void endAbandonedSessions();
    // Passes on a change committed through another server of the database: its pushes, its
    // audit row to the log's readers, and the sessions it revoked.
    void applyRemoteChange(const QList<Command> &pushes, const AuditRecord &row,
                           const QString &changedBy);
    // Ends the sessions of users who are now blocked or removed, so that they get no more
    // pushes and can't act until they log in again (which is then refused).
    void endRevokedSessions(const QString &byOperator);

private:
    struct Route
    {
        bool needsSession = true;
        bool inTransaction = true; // false: the handler reads on a connection of its own
        std::function<Reply(Request &)> handle;
    };
    // Brings the session's template and roles up to date; false if the account is gone
    // or blocked, which ends the session.
    bool refresh(Session *session, Reply *refusal);
    // A refusal's reason goes in `language`, the session's or the one its login names.
    void answer(ClientConnection *connection, const Command &request, const Reply &reply,
                const QString &language);
    void recordRefusal(AuditEntry &audit, const Reply &reply, const QString &peer);
    // The object's name for its audit row: the handler's, else the store's as it is now.
    void nameObject(AuditEntry &audit, const Reply &reply);
    // Pushes a new row of the audit log to the sessions whose operators may read the log.
    void tellAuditReaders(const AuditRecord &row);
    void answerLater(const QPointer<ClientConnection> &connection, const QByteArray &sessionId,
                     const QString &language, const Command &request, AuditEntry audit,
                     const Reply &reply);

    ServerState &m_state;
    SessionOps m_sessionOps;
    ObjectOps m_objectOps;
    AccessOps m_accessOps;
    BiometricOps m_biometricOps;
    SqlOps m_sqlOps;
    AdminOps m_adminOps;
    AuditOps m_auditOps;
    QHash<QString, Route> m_routes;
};

} // namespace zeral::server
