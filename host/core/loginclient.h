#pragma once

#include <host/core/zrserverinterface.h>

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>

struct Command;
class ZRServerInterface;

// Opens, keeps and closes the operator's session. On success it fills AuthData. When the
// connection comes back after a drop it resumes the same session, so everything that was
// given the session id keeps working; a session closed by the server ends here.
class LoginClient : public QObject
{
    Q_OBJECT
public:
    explicit LoginClient(ZRServerInterface *server, QObject *parent = nullptr);
    ~LoginClient() override;

    // The password is hashed at once; the plain text isn't kept.
    void login(const QString &login, const QString &password, const QString &clientName);
    void logout();

signals:
    void loggedIn();
    void loginFailed(qint32 status, const QString &reason);
    void resumed();
    // The session is gone for good (disconnected by another operator, or not resumable);
    // AuthData has been cleared.
    void sessionLost(const QString &reason);

private:
    void sendLogin(const QString &login, const QString &hash, bool mayRepeat);
    void onConnected();
    void onStateChanged(ZRServerInterface::State state);
    void onPush(const Command &push);
    void resume();
    bool readIdentity(const Command &answer, const QString &login, const QString &hash);
    void loseSession(const QString &reason);

    QPointer<ZRServerInterface> m_server; // the studio may tear its router down first
    QString m_clientName;
    // A login whose connection dropped under it, to send once more on the next connection.
    std::function<void()> m_loginAgain;
    QString m_loginLostText;
};
