#pragma once

// Helpers of the server tests: a real engine on a temporary database, and a client that
// speaks the wire protocol over loopback TCP.

#include <host/core/dbquery.h>
#include <host/core/dbresult.h>
#include <host/core/framecodec.h>
#include <host/core/passhash.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <server/engine/serverengine.h>
#include <shared/dbkeys.h>
#include <shared/objectinfo.h>
#include <shared/wire.h>
#include <tests/server/testdatabase.h>

#include <QDeadlineTimer>
#include <QHash>
#include <QSignalSpy>
#include <QSslSocket>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace harness {

namespace cmd = zeral::proto::command;

inline QString clientHash(const QString &password)
{
    return PassHash::encrypt(password, QCryptographicHash::Md5);
}

class WireClient : public QObject
{
public:
    QSslSocket socket; // plain TCP unless connectEncrypted()
    QList<Command> pushes;
    QByteArray session;
    zeral::TYPE_ID uid = 0;
    QString roleTemplate;
    QList<QString> roles;
    QHash<quint64, Command> answers; // answers not yet taken by request()

    // `from` picks the client's own address, another of 127/8, so that one machine can be
    // several peers.
    bool connectTo(quint16 port, const QHostAddress &from = QHostAddress())
    {
        QObject::connect(&socket, &QTcpSocket::readyRead, this, [this] { readAll(); });
        if (!from.isNull() && !socket.bind(from))
            return false;
        socket.connectToHost(QHostAddress::LocalHost, port);
        return socket.waitForConnected(5000);
    }
    // TLS that trusts exactly `authority`.
    bool connectEncrypted(quint16 port, const QSslCertificate &authority)
    {
        QObject::connect(&socket, &QTcpSocket::readyRead, this, [this] { readAll(); });
        QSslConfiguration configuration = socket.sslConfiguration();
        configuration.setCaCertificates({authority});
        socket.setSslConfiguration(configuration);
        // The engine runs in this thread: wait in the event loop, not in the socket.
        QSignalSpy encrypted(&socket, &QSslSocket::encrypted);
        socket.connectToHostEncrypted(QStringLiteral("127.0.0.1"), port);
        return encrypted.wait(10000);
    }
    bool isClosed() const { return socket.state() == QAbstractSocket::UnconnectedState; }

    // Sends a request without waiting; its id, for awaitAnswer().
    quint64 post(const QString &name, const QByteArray &data, const QByteArray &sessionId)
    {
        Command command = Command::named(name, sessionId);
        command.type = zeral::proto::NamedCommand;
        command.id = ++m_nextId;
        command.data = data;
        socket.write(FrameCodec::encode(command));
        return command.id;
    }
    quint64 post(const char *name, const QByteArray &data = {})
    {
        return post(QLatin1String(name), data, session);
    }
    // The answer to request `id`; an empty command (status 0) if none came within `timeoutMs`.
    Command awaitAnswer(quint64 id, int timeoutMs = 10000)
    {
        QDeadlineTimer deadline(timeoutMs);
        while (!answers.contains(id) && !deadline.hasExpired() && !isClosed())
            QTest::qWait(5);
        return answers.take(id);
    }
    Command request(const QString &name, const QByteArray &data, const QByteArray &sessionId)
    {
        return awaitAnswer(post(name, data, sessionId));
    }
    Command request(const char *name, const QByteArray &data = {})
    {
        return request(QLatin1String(name), data, session);
    }

    Command login(const QString &login, const QString &password)
    {
        return logIn(ZRDataStream::pack(login, clientHash(password), QStringLiteral("test")));
    }
    // As the studio logs in: naming the operator's language ("en_GB") at the end.
    Command login(const QString &login, const QString &password, const QString &language)
    {
        return logIn(
            ZRDataStream::pack(login, clientHash(password), QStringLiteral("test"), language));
    }
    Command logIn(const QByteArray &payload)
    {
        Command answer = request(QLatin1String(cmd::Login), payload, {});
        if (answer.status == zeral::proto::StatusOk) {
            ZRDataStream in(answer.data);
            in >> session >> uid >> roleTemplate;
            zeral::wire::readList(in, roles);
        }
        return answer;
    }

    QList<Command> pushesNamed(const char *name) const
    {
        QList<Command> result;
        for (const Command &push : pushes) {
            if (push.name == QLatin1String(name))
                result.append(push);
        }
        return result;
    }

private:
    void readAll()
    {
        for (;;) {
            Command command;
            QString error;
            const auto result = FrameCodec::read(&socket, &command, &error);
            if (result != FrameCodec::ReadResult::Frame)
                return;
            if (command.id == 0)
                pushes.append(command);
            else
                answers.insert(command.id, command);
        }
    }
    quint64 m_nextId = 0;
};

// A started engine on a fresh database (see testdatabase.h), with root's password set.
struct Server
{
    QTemporaryDir dir;
    QString databasePath; // the file or URL the engine was started on
    std::unique_ptr<zeral::server::ServerEngine> engine;
    QDateTime now = QDateTime(QDate(2024, 3, 1), QTime(10, 0));
    int loginDelayStepMs = 0; // failed logins answered at once unless a test measures it

    QString start(zeral::server::ServerEngine::Options options = {})
    {
        if (databasePath.isEmpty())
            databasePath = newTestDatabase(dir.path(), QStringLiteral("server.db"));
        options.databasePath = databasePath;
        options.clock = [this] {
            return now;
        };
        options.loginPolicy.delayStepMs = loginDelayStepMs;
        engine = std::make_unique<zeral::server::ServerEngine>(options);
        const QString error = engine->start();
        if (error.isEmpty())
            engine->setRootPassword(clientHash(QStringLiteral("RootPass1")));
        return error;
    }
    std::unique_ptr<WireClient> client(const QHostAddress &from = QHostAddress())
    {
        auto client = std::make_unique<WireClient>();
        client->connectTo(engine->port(), from);
        return client;
    }
    std::unique_ptr<WireClient> rootClient()
    {
        auto client = this->client();
        client->login(QStringLiteral("root"), QStringLiteral("RootPass1"));
        return client;
    }
};

// The rows of one read-only statement, run by the server for `by` (data.exec_sql).
inline DbResult select(WireClient &by, const QString &statement)
{
    DbQuery query;
    query.statements = QStringList(statement);
    DbResult result;
    ZRDataStream in(by.request(cmd::ExecSql, ZRDataStream::pack(query)).data);
    in >> result;
    return result;
}

inline QString errorText(const Command &answer)
{
    return answer.errorText();
}

// Changes parameters of user `uid` as `by`; the answer.
inline Command updateUser(WireClient &by, zeral::TYPE_ID uid,
                          const QHash<QString, QString> &parameters)
{
    return by.request(cmd::UpdateObject,
                      ZRDataStream::pack(uid, QStringLiteral("OT_USER"), quint32(0), parameters));
}

// Creates a user as `by` and returns the new uid (0 on failure).
inline zeral::TYPE_ID addUser(WireClient &by, const QString &login, const QString &roleTemplate,
                              const QString &password = QStringLiteral("Passw0rd"),
                              qint32 *status = nullptr, Command *answerOut = nullptr)
{
    zeral::ObjectInfo user;
    user.type = QLatin1String(db::system::USER);
    user.parameters = {{QLatin1String(db::user::LOGIN), login},
                       {QLatin1String(db::user::PASSHASH), clientHash(password)}};
    if (!roleTemplate.isEmpty())
        user.parameters.insert(QLatin1String(db::user::ROLE_TEMPLATE), roleTemplate);
    const Command answer
        = by.request(cmd::AddObject, ZRDataStream::pack(user, QList<zeral::_INHERIT_DATA>()));
    if (status)
        *status = answer.status;
    if (answerOut)
        *answerOut = answer;
    if (answer.status != zeral::proto::StatusOk)
        return 0;
    qint32 uid = 0;
    ZRDataStream(answer.data) >> uid;
    return zeral::TYPE_ID(uid);
}

} // namespace harness
