#pragma once

#include <server/engine/session/session.h>

#include <QHash>

#include <memory>

namespace zeral::server {

// The sessions of the server by id. Ids are 32 random bytes, as hex.
class SessionRegistry
{
public:
    Session *create(const Session &identity);
    Session *find(const QByteArray &id);
    const Session *find(const QByteArray &id) const;
    // Forgets the session and remembers for a while that it was ended at `now`, so that its
    // id is never given out again while a client may still try to resume it. The id is taken
    // by value: callers pass the session's own id, which goes with the session.
    void end(QByteArray id, const QDateTime &now);
    bool wasEnded(const QByteArray &id) const { return m_ended.contains(id); }

    // The session lost its connection at `now`; the resume window starts.
    void detach(ClientConnection *connection, const QDateTime &now);
    // Ends every session that has been without a connection since before `cutoff` and
    // returns them, for the log. Ended sessions older than `cutoff` are forgotten: past the
    // resume window nobody can still be resuming them.
    QList<Session> endDetachedBefore(const QDateTime &cutoff, const QDateTime &now);

    int size() const { return m_sessions.size(); }
    int endedRemembered() const { return m_ended.size(); }

    QList<const Session *> attached() const;
    QList<Session *> all();

private:
    // Held by pointer: a session stays where it is while others come and go.
    QHash<QByteArray, std::shared_ptr<Session>> m_sessions;
    QHash<QByteArray, QDateTime> m_ended; // id, when it ended
};

} // namespace zeral::server
