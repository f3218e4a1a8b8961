#pragma once

#include <shared/types.h>

#include <QByteArray>
#include <QDateTime>
#include <QHostAddress>
#include <QPointer>
#include <QString>
#include <QStringList>

namespace zeral::server {

class ClientConnection;

// One logged-in operator. A session outlives a dropped connection for the resume window, so
// that the studio can resume it; it ends by logout, by a disconnect from another operator,
// when that window passes without a resume, or with the server.
struct Session
{
    QByteArray id;
    TYPE_ID uid = 0;
    QString login;
    QString roleTemplate;
    QStringList roles;
    QHostAddress peerAddress;
    quint16 peerPort = 0;
    QDateTime started;
    QDateTime lastAction;
    QPointer<ClientConnection> connection; // null while the client is away
    QDateTime detachedSince;               // when the connection went; invalid while attached
    // Who confirmed the session's next request (session.set_confirmer): kept for that one
    // request's audit row, then forgotten.
    QString confirmerLogin;
    // The operator's language as his client named it at login ("en_GB"; empty: Russian):
    // the reasons of refusals and the session's own notices are given in it.
    QString language;

    bool hasRole(const char *role) const { return roles.contains(QLatin1String(role)); }
    QString ipPort() const;
};

} // namespace zeral::server
