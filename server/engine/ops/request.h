#pragma once

#include <host/core/command.h>
#include <server/engine/ops/reply.h>

#include <QList>

#include <functional>

namespace zeral::server {

class ClientConnection;
struct Session;

// One request while it is handled: where it came from, whose it is, and what must happen
// once its transaction has committed.
struct Request
{
    const Command &command;
    ClientConnection *connection;
    Session *session; // null on a connection without a session
    // The login a request speaks for before it has a session (a login attempt), so that the
    // audit log names whom a refused attempt tried.
    QString claimedLogin;
    // The language of the refusal's reason: the session's, or what a login or resume names.
    QString language;

    QList<Command> pushes;                    // to every session, before the answer
    QList<std::function<void()>> afterCommit; // after the pushes, before the answer
    // For a handler that returns Reply::later(): call it (in the engine's thread) with the
    // reply once it is there. It logs a refusal and answers, unless the connection or the
    // session went away meanwhile.
    std::function<void(const Reply &)> answerLater;
};

} // namespace zeral::server
