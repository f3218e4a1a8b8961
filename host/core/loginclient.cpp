#include "loginclient.h"

#include <host/core/authdata.h>
#include <host/core/command.h>
#include <host/core/guipassfuncs.h>
#include <host/core/logging.h>
#include <host/core/passhash.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrserverinterface.h>
#include <shared/wire.h>

#include <QCoreApplication>

#include <utility>

namespace command = zeral::proto::command;

LoginClient::LoginClient(ZRServerInterface *server, QObject *parent)
    : QObject(parent)
    , m_server(server)
{
    connect(m_server, &ZRServerInterface::connected, this, &LoginClient::onConnected);
    connect(m_server, &ZRServerInterface::stateChanged, this, &LoginClient::onStateChanged);
    connect(m_server, &ZRServerInterface::pushReceived, this, &LoginClient::onPush);
}

LoginClient::~LoginClient()
{
    if (m_server)
        m_server->cancelCallbacks(this);
}

void LoginClient::login(const QString &login, const QString &password, const QString &clientName)
{
    m_clientName = clientName;
    m_loginAgain = {};
    sendLogin(login, PassHash::encrypt(password, QCryptographicHash::Md5), true);
}

void LoginClient::sendLogin(const QString &login, const QString &hash, bool mayRepeat)
{
    Command request = Command::named(QLatin1String(command::Login));
    request.data = ZRDataStream::pack(login, hash, m_clientName, m_language);
    m_server->send(
        request,
        [this, login, hash, mayRepeat](Command &answer) {
            // A server that ends a session closes its connection right after telling so; a
            // login sent at once may go down with it. It goes out again on the next one.
            if (answer.status == zeral::proto::StatusConnectionLost && mayRepeat) {
                m_loginAgain = [this, login, hash] {
                    sendLogin(login, hash, false);
                };
                m_loginLostText = answer.errorText();
                return;
            }
            if (!answer.isOk()) {
                emit loginFailed(answer.status, answer.errorText());
                return;
            }
            if (!readIdentity(answer, login, hash)) {
                emit loginFailed(zeral::proto::StatusMalformed,
                                 tr("Сервер прислал нечитаемый ответ на вход"));
                return;
            }
            emit loggedIn();
        },
        this);
}

void LoginClient::changePassword(const QString &login, const QString &currentPassword,
                                 const QString &newPassword, const QString &clientName)
{
    m_clientName = clientName;
    m_loginAgain = {};
    const QString currentHash = PassHash::encrypt(currentPassword, QCryptographicHash::Md5);
    // An empty password goes as an empty hash, which the server refuses, rather than as the
    // digest of nothing.
    const QString newHash = newPassword.isEmpty()
                                ? QString()
                                : PassHash::encrypt(newPassword, QCryptographicHash::Md5);
    Command request = Command::named(QLatin1String(command::ChangePassword));
    request.data = ZRDataStream::pack(login, currentHash, newHash, m_clientName, m_language);
    m_server->send(
        request,
        [this, login, newHash](Command &answer) {
            if (!answer.isOk()) {
                emit passwordChangeFailed(answer.status, answer.errorText());
                return;
            }
            if (!readIdentity(answer, login, newHash)) {
                emit passwordChangeFailed(zeral::proto::StatusMalformed,
                                          tr("Сервер прислал нечитаемый ответ на смену пароля"));
                return;
            }
            emit loggedIn();
        },
        this);
}

void LoginClient::requestPasswordPolicy()
{
    m_server->send(
        Command::named(QLatin1String(command::PasswordPolicy)),
        [this](Command &answer) {
            QMap<QString, QVariant> options;
            if (answer.isOk()) {
                // A map is written as a multi-map is; its keys are unique.
                ZRDataStream in(answer.data);
                QMultiMap<QString, QVariant> read;
                zeral::wire::readVariantMultiMap(in, read);
                if (in.status() == QDataStream::Ok)
                    options = QMap<QString, QVariant>(read);
            }
            if (options.isEmpty()) {
                qCWarning(lcHostNet) << "no password policy from the server (status"
                                     << answer.status << "), using the default one";
                options = GUIPassFuncs::optionsFromParameters({});
            }
            emit passwordPolicyReceived(options);
        },
        this);
}

void LoginClient::logout()
{
    if (!AuthData::isLoggedIn())
        return;
    const Command request = Command::named(QLatin1String(command::Logout), AuthData::sessionId());
    // A resume of this session still on its way must not bring the operator back.
    m_server->cancelCallbacks(this);
    AuthData::clear();
    m_server->send(request, nullptr, this);
}

void LoginClient::onConnected()
{
    if (m_loginAgain) {
        std::exchange(m_loginAgain, {})();
        return;
    }
    // A first connection has no session yet; a reconnection picks up the one we had.
    if (AuthData::isLoggedIn())
        resume();
}

void LoginClient::onStateChanged(ZRServerInterface::State state)
{
    // No connection to send the login again on (the connection failed, or the server was
    // given up): the operator learns why it didn't go, and the login never goes to another
    // server connected later.
    if (state == ZRServerInterface::State::Disconnected && m_loginAgain) {
        m_loginAgain = {};
        emit loginFailed(zeral::proto::StatusConnectionLost, m_loginLostText);
    }
}

void LoginClient::resume()
{
    const QString login = AuthData::user();
    const QString hash = AuthData::passwdHash();
    Command request = Command::named(QLatin1String(command::Resume));
    request.data = ZRDataStream::pack(AuthData::sessionId(), login, hash, m_language);
    m_server->send(
        request,
        [this, login, hash](Command &answer) {
            if (answer.status == zeral::proto::StatusConnectionLost)
                return; // dropped again; the next connection tries anew
            if (!answer.isOk() || !readIdentity(answer, login, hash)) {
                loseSession(answer.isOk() ? tr("Не удалось восстановить сессию")
                                          : answer.errorText());
                return;
            }
            qCInfo(lcHostNet) << "session resumed";
            emit resumed();
        },
        this);
}

void LoginClient::onPush(const Command &push)
{
    if (push.name != QLatin1String(command::SessionClosed))
        return;
    ZRDataStream in(push.data);
    QString reason;
    in >> reason;
    loseSession(reason.isEmpty() ? tr("Сессия закрыта сервером") : reason);
}

bool LoginClient::readIdentity(const Command &answer, const QString &login, const QString &hash)
{
    ZRDataStream in(answer.data);
    AuthData::Identity identity;
    QList<QString> roles;
    in >> identity.sessionId >> identity.userId >> identity.roletemplateId;
    zeral::wire::readList(in, roles);
    if (in.status() != QDataStream::Ok || identity.sessionId.isEmpty())
        return false;
    identity.user = login;
    identity.roles = QStringList(roles);
    identity.passwdHash = hash;
    AuthData::set(identity);
    return true;
}

void LoginClient::loseSession(const QString &reason)
{
    qCWarning(lcHostNet) << "session lost:" << reason;
    AuthData::clear();
    emit sessionLost(reason);
}
