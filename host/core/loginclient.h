#pragma once

#include <host/core/zrserverinterface.h>

#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <functional>

struct Command;
class ZRServerInterface;

// Opens, keeps and closes the operator's session. On success it fills AuthData. When the
// connection comes back after a drop it resumes the same session, so everything that was
// given the session id keeps working; a session closed by the server ends here.
// A login answered with StatusPasswordChangeRequired is a failure of its own kind: the
// password was right, and changePassword() with it opens the session under a new one.
class LoginClient : public QObject
{
    Q_OBJECT
public:
    explicit LoginClient(ZRServerInterface *server, QObject *parent = nullptr);
    ~LoginClient() override;

    // The operator's language ("en_GB"), named to the server with every login, password
    // change and resume, so that the server's reasons come in it. Empty (the default): the
    // server speaks Russian.
    void setLanguage(const QString &language) { m_language = language; }
    QString language() const { return m_language; }

    // The password is hashed at once; the plain text isn't kept.
    void login(const QString &login, const QString &password, const QString &clientName);
    // Sets a new password with the current one and, on success, logs in as login() does
    // (loggedIn); a refusal comes as passwordChangeFailed.
    void changePassword(const QString &login, const QString &currentPassword,
                        const QString &newPassword, const QString &clientName);
    // Asks the server for its password policy, which needs no session; the answer comes as
    // passwordPolicyReceived, the default policy if the server can't tell.
    void requestPasswordPolicy();
    void logout();

signals:
    void loggedIn();
    // StatusPasswordChangeRequired among the others: the reason then says why a new
    // password is needed.
    void loginFailed(qint32 status, const QString &reason);
    void passwordChangeFailed(qint32 status, const QString &reason);
    void passwordPolicyReceived(const QMap<QString, QVariant> &options);
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
    QString m_language;
    // A login whose connection dropped under it, to send once more on the next connection.
    std::function<void()> m_loginAgain;
    QString m_loginLostText;
};
