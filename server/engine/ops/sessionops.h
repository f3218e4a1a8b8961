#pragma once

#include <server/engine/ops/request.h>
#include <shared/objectinfo.h>

namespace zeral::server {

struct ServerState;

// session.login, session.resume and session.logout, and what a client may ask before it has
// a session: a password change and the password policy.
class SessionOps
{

public:
    explicit SessionOps(ServerState &state);

    Reply login(Request &request);
    Reply resume(Request &request);
    Reply logout(Request &request);
    Reply changePassword(Request &request);
    Reply passwordPolicy(Request &request);

private:
    // Checks login and client hash, with the failures of that login from that peer address;
    // on success `user` is the user as stored.
    Reply authenticate(const QString &login, const QString &clientHash, const QString &address,
                       ObjectInfo *user);
    // Refuses (12) a user who must choose a new password before he may log in.
    Reply checkPasswordCurrent(const ObjectInfo &user);
    // A new session for the user on the request's connection, answered as a login.
    Reply openSession(Request &request, const ObjectInfo &user, const QString &login,
                      const QString &client);
    Reply identity(const Session &session) const;
    void attach(Session *session, ClientConnection *connection);

    ServerState &m_state;
};

} // namespace zeral::server
