#pragma once

#include <host/core/command.h>
#include <server/engine/ops/servertext.h>
#include <shared/auditrecord.h>
#include <shared/connecteduserinfo.h>
#include <shared/types.h>

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QSet>
#include <QSqlDatabase>
#include <QVariant>

class QTimer;

namespace zeral::server {

struct ServerState;

// What one server tells the other servers of the same PostgreSQL database, and hears from
// them. Each server writes events into `cluster_events` (pushes of a committed change with
// its audit row, a session to close, a login that failed or succeeded) and NOTIFYs the
// channel `zr_cluster`; the others LISTEN on a connection of their own and read the events
// they haven't seen. A change's event is written in the change's own transaction; the others
// after the request has ended, in a transaction of their own. Both hold the database's write
// lock, so event ids grow in the order they are committed. The server's attached sessions are kept
// in `cluster_sessions`, and each server's heartbeat in `cluster_servers`: the sessions of a server
// that stopped beating (killed) no longer count.
class ClusterLink : public QObject
{
    Q_OBJECT
public:
    // A session held by another server of the database.
    struct RemoteSession
    {
        QByteArray id;
        QString serverId;
        TYPE_ID uid = 0;
        ConnectedUserInfo info;
    };

    ClusterLink(ServerState &state, QObject *parent = nullptr);
    ~ClusterLink() override;

    // Makes the tables, listens and starts the heartbeat. Empty on success, else why not.
    QString start();
    QString serverId() const { return m_serverId; }

    // Written at once, in the request's transaction: the change and the news of it are
    // committed together, with one sync of the disk.
    bool writeChange(const QList<Command> &pushes, const AuditRecord &row,
                     const QString &changedBy);
    // Queued now, written by flush() once the request has ended.
    void publishClose(const QByteArray &sessionId, const QString &serverId,
                      const ServerText &reason);
    void publishLogin(const QString &login, const QString &address, bool success);
    // Writes what was queued and brings the server's sessions in the table up to date.
    void flush();

    // The attached sessions of the other live servers.
    QList<RemoteSession> remoteSessions();
    bool findRemoteSession(const QByteArray &id, RemoteSession *session);

    // A server whose heartbeat is older than this is taken for gone.
    static constexpr int HeartbeatMs = 1000;
    static constexpr int DeadAfterMs = 5000;
    // How often the last action of the sessions is written for the others' lists.
    static constexpr int LastActionEveryBeats = 10;

signals:
    // Another server committed a change: its pushes, its audit row and who made it.
    void remoteChange(const QList<Command> &pushes, const AuditRecord &row,
                      const QString &changedBy);
    // Another server asks for a session of this one to be closed.
    void closeRequested(const QByteArray &sessionId, const zeral::server::ServerText &reason);

private:
    struct Event
    {
        QString kind;
        QByteArray payload;
        QString target; // a server id, or empty for all
    };
    void readEvents();
    void beat();
    bool listen();
    bool listening() const;
    bool insertEvent(const QString &kind, const QByteArray &payload, const QString &target);
    void syncSessions(bool withLastAction);
    QString now() const;

    ServerState &m_state;
    QString m_serverId;
    QString m_listenConnection;
    QSqlDatabase m_listener;
    QTimer *m_heartbeat = nullptr;
    qint64 m_lastSeen = 0;
    int m_beats = 0;
    QList<Event> m_queued;
    // What the table holds of this server's sessions: id, and the last action written.
    QHash<QByteArray, QDateTime> m_written;
};

} // namespace zeral::server
