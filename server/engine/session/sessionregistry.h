#pragma once

#include <server/engine/session/session.h>

#include <QHash>
#include <QSet>

#include <memory>

namespace zeral::server {

// The sessions of the server by id. Ids are 32 random bytes, as hex.
class SessionRegistry
{
public:
    Session *create(const Session &identity);
    Session *find(const QByteArray &id);
    const Session *find(const QByteArray &id) const;
    // Forgets the session and remembers that it was ended, so it can't be resumed.
    void end(const QByteArray &id);
    bool wasEnded(const QByteArray &id) const { return m_ended.contains(id); }

    // The session lost its connection at `now`; the resume window starts.
    void detach(ClientConnection *connection, const QDateTime &now);
    // Ends every session that has been without a connection since before `cutoff` and
    // returns them, for the log.
    QList<Session> endDetachedBefore(const QDateTime &cutoff, const QDateTime &now);

    QList<const Session *> attached() const;
    QList<Session *> all();

private:
    // Held by pointer: a session stays where it is while others come and go.
    QHash<QByteArray, std::shared_ptr<Session>> m_sessions;
    QSet<QByteArray> m_ended;
};

} // namespace zeral::server
