#pragma once

#include <shared/types.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

// The logged-in operator, as the server confirmed at login. Filled by the studio; read by
// everybody, cheaply.
class AuthData
{
public:
    struct Identity
    {
        QString user; // login
        zeral::TYPE_ID userId = 0;
        QByteArray sessionId;
        QString roletemplateId;
        QStringList roles;
        QString passwdHash; // the client hash computed at login
    };

    static QString user();
    static zeral::TYPE_ID userId();
    static QByteArray sessionId();
    static QString roletemplateId();
    static QStringList roles();
    static QString passwdHash();

    static void set(const Identity &identity);
    static void clear();
    static bool isLoggedIn();

    AuthData() = delete;
};
