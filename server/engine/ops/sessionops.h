#pragma once

#include <QCoreApplication>
#include <server/engine/ops/request.h>

namespace zeral::server {

struct ServerState;

// session.login, session.resume and session.logout.
class SessionOps
{
    Q_DECLARE_TR_FUNCTIONS(SessionOps)

public:
    explicit SessionOps(ServerState &state);

    Reply login(Request &request);
    Reply resume(Request &request);
    Reply logout(Request &request);

private:
    // Checks login and client hash, with the failures of that login from that peer address;
    // on success `uid` is the user's.
    Reply authenticate(const QString &login, const QString &clientHash, const QString &address,
                       TYPE_ID *uid);
    Reply identity(const Session &session) const;
    void attach(Session *session, ClientConnection *connection);

    ServerState &m_state;
};

} // namespace zeral::server
