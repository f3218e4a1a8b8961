#include "sessionregistry.h"

#include <server/engine/net/clientconnection.h>

#include <sodium.h>

namespace zeral::server {

QString Session::ipPort() const
{
    QHostAddress address = peerAddress;
    // A v4 client of a dual-stack socket shows as it connected, not as ::ffff:a.b.c.d.
    bool isV4 = false;
    const quint32 v4 = address.toIPv4Address(&isV4);
    if (isV4)
        address = QHostAddress(v4);
    return address.toString() % QLatin1Char(':') % QString::number(peerPort);
}

Session *SessionRegistry::create(const Session &identity)
{
    QByteArray raw(32, Qt::Uninitialized);
    QByteArray id;
    do {
        randombytes_buf(raw.data(), size_t(raw.size()));
        id = raw.toHex();
    } while (m_sessions.contains(id) || m_ended.contains(id));
    auto session = std::make_shared<Session>(identity);
    session->id = id;
    m_sessions.insert(id, session);
    return session.get();
}

Session *SessionRegistry::find(const QByteArray &id)
{
    return m_sessions.value(id).get();
}

const Session *SessionRegistry::find(const QByteArray &id) const
{
    return m_sessions.value(id).get();
}

void SessionRegistry::end(QByteArray id, const QDateTime &now)
{
    if (m_sessions.remove(id) > 0)
        m_ended.insert(id, now);
}

void SessionRegistry::detach(ClientConnection *connection, const QDateTime &now)
{
    Session *session = find(connection->sessionId());
    if (session && session->connection == connection) {
        session->connection = nullptr;
        session->detachedSince = now;
    }
}

QList<Session> SessionRegistry::endDetachedBefore(const QDateTime &cutoff, const QDateTime &now)
{
    QList<Session> ended;
    for (auto it = m_sessions.begin(); it != m_sessions.end();) {
        Session &session = **it;
        // A connection that went without telling (the server stopping it) counts from now.
        if (!session.connection && !session.detachedSince.isValid())
            session.detachedSince = now;
        if (!session.connection && session.detachedSince < cutoff) {
            ended.append(session);
            m_ended.insert(it.key(), now);
            it = m_sessions.erase(it);
        } else {
            ++it;
        }
    }
    for (auto it = m_ended.begin(); it != m_ended.end();)
        it = it.value() < cutoff ? m_ended.erase(it) : std::next(it);
    return ended;
}

QList<const Session *> SessionRegistry::attached() const
{
    QList<const Session *> result;
    for (const auto &session : m_sessions) {
        if (session->connection)
            result.append(session.get());
    }
    return result;
}

QList<Session *> SessionRegistry::all()
{
    QList<Session *> result;
    for (const auto &session : qAsConst(m_sessions))
        result.append(session.get());
    return result;
}

} // namespace zeral::server
