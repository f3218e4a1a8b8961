#pragma once

#include <server/engine/ops/request.h>

#include <functional>

namespace zeral::server {

struct ServerState;

// The sessions of others, logins locked after failed attempts, and mail.
class AdminOps
{

public:
    // `closeSession` tells a session's client why and ends the session.
    using CloseSession = std::function<void(const QByteArray &id, const ServerText &reason)>;
    AdminOps(ServerState &state, CloseSession closeSession);

    Reply sessionsInfo(Request &request);
    Reply disconnectUsers(Request &request);
    Reply loginLocks(Request &request);
    Reply unlockLogin(Request &request);
    Reply sendEmail(Request &request);

private:
    ServerState &m_state;
    CloseSession m_closeSession;
};

} // namespace zeral::server
