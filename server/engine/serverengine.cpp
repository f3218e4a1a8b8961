#include "serverengine.h"

#include <server/engine/mail/mailrenderer.h>
#include <server/engine/mail/mailsender.h>
#include <server/engine/net/clientconnection.h>
#include <server/engine/net/tlsserver.h>
#include <server/engine/ops/dispatcher.h>
#include <server/engine/ops/pushes.h>
#include <server/engine/ops/serverstate.h>
#include <server/engine/serverlogging.h>
#include <server/engine/session/passwordhasher.h>
#include <server/engine/storage/seeder.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSslSocket>
#include <QTimer>

#include <sodium.h>

namespace zeral::server {

ServerEngine::ServerEngine(Options options, QObject *parent)
    : QObject(parent)
    , m_options(std::move(options))
{
    if (!m_options.clock)
        m_options.clock = [] {
            return QDateTime::currentDateTime();
        };
}

QString ServerEngine::defaultCatalogueDir()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath()
                           + QLatin1String("/../translations"));
}

ServerEngine::~ServerEngine()
{
    stop();
}

QString ServerEngine::openDatabase()
{
    if (m_state)
        return {};
    if (sodium_init() < 0)
        return tr("Не удалось запустить библиотеку шифрования libsodium.");
    auto state = std::make_unique<ServerState>();
    state->clock = m_options.clock;
    state->resumeWindowSeconds = m_options.resumeWindowSeconds;
    state->clientSqlTimeLimitMs = m_options.clientSqlTimeLimitMs;
    state->clientSqlWorkers = m_options.clientSqlWorkers;
    state->clientSqlPerSession = m_options.clientSqlPerSession;
    QString error = state->database.open(m_options.databasePath);
    if (!error.isEmpty())
        return error;
    state->store = std::make_unique<ObjectStore>(state->database.connection());
    // Statements prepared on a PostgreSQL connection that was lost die with it.
    state->database.setBeforeReconnect([store = state->store.get()] { store->forgetStatements(); });
    Seeder seeder(state->database, *state->store);
    error = seeder.seedBase();
    if (error.isEmpty() && m_options.demo)
        error = seeder.seedDemo(m_options.demoSize, m_options.demoUsers);
    if (!error.isEmpty())
        return tr("Не удалось заполнить базу данных %1: %2").arg(m_options.databasePath, error);
    state->rootUid = state->store->setting(QLatin1String(Seeder::RootUidSetting)).toUInt();
    state->throttle = std::make_unique<LoginThrottle>(m_options.clock, m_options.loginPolicy);
    if (state->database.isPostgres()) {
        // Other servers may share the database: changes, sessions and failed logins are told
        // to them and heard from them.
        state->cluster = std::make_unique<ClusterLink>(*state);
        error = state->cluster->start();
        if (!error.isEmpty())
            return tr("Не удалось подготовить базу данных %1 для нескольких серверов: %2")
                .arg(state->database.address().displayText(), error);
        ClusterLink *cluster = state->cluster.get();
        state->throttle->setObserver(
            [cluster](const QString &login, const QString &address, bool success) {
                cluster->publishLogin(login, address, success);
            });
    }
    state->mailRenderer = std::make_unique<MailRenderer>(m_options.mailSender);
    state->languages.load(m_options.catalogueDir.isEmpty() ? defaultCatalogueDir()
                                                           : m_options.catalogueDir);
    m_state = std::move(state);
    return {};
}

QString ServerEngine::start()
{
    QString error = openDatabase();
    if (!error.isEmpty())
        return error;
    if (m_server)
        return {};
    auto *server = new TlsServer(this);
    if (!m_options.tlsCertificatePath.isEmpty() || !m_options.tlsKeyPath.isEmpty()) {
        QFile certificateFile(m_options.tlsCertificatePath);
        QFile keyFile(m_options.tlsKeyPath);
        if (!QSslSocket::supportsSsl() || !certificateFile.open(QIODevice::ReadOnly)
            || !keyFile.open(QIODevice::ReadOnly)) {
            delete server;
            return tr("Не удалось прочитать сертификат %1 или ключ %2 для TLS. Проверьте пути "
                      "и права на файлы.")
                .arg(m_options.tlsCertificatePath, m_options.tlsKeyPath);
        }
        const QSslCertificate certificate(&certificateFile, QSsl::Pem);
        const QSslKey key(&keyFile, QSsl::Rsa, QSsl::Pem);
        const QSslKey ecKey
            = key.isNull()
                  ? QSslKey(keyFile.seek(0) ? keyFile.readAll() : QByteArray(), QSsl::Ec, QSsl::Pem)
                  : key;
        if (certificate.isNull() || ecKey.isNull()) {
            delete server;
            return tr("Сертификат %1 или ключ %2 не читаются как PEM.")
                .arg(m_options.tlsCertificatePath, m_options.tlsKeyPath);
        }
        server->setCredentials(certificate, ecKey);
    }
    if (!server->listen(m_options.address, m_options.port)) {
        const QString reason = server->errorString();
        delete server;
        return tr("Не удалось открыть порт %1 на адресе %2: %3. Выберите другой порт или "
                  "остановите программу, которая его занимает.")
            .arg(m_options.port)
            .arg(m_options.address.toString(), reason);
    }
    m_server = server;
    m_dispatcher = new Dispatcher(*m_state, this);
    if (ClusterLink *cluster = m_state->cluster.get()) {
        connect(cluster, &ClusterLink::remoteChange, m_dispatcher, &Dispatcher::applyRemoteChange);
        connect(cluster, &ClusterLink::closeRequested, m_dispatcher, &Dispatcher::closeSession);
    }
    connect(m_server, &QTcpServer::newConnection, this, &ServerEngine::onNewConnection);
    m_sessionSweep = new QTimer(this);
    connect(m_sessionSweep, &QTimer::timeout, m_dispatcher, &Dispatcher::endAbandonedSessions);
    m_sessionSweep->start(60 * 1000);
    if (!m_options.smtpUrl.isEmpty()) {
        auto *sender = new MailSender(m_options.databasePath, m_options.smtpUrl, this);
        sender->setDeliveryPolicy(m_options.mailMaxAttempts, m_options.mailFirstPauseMs,
                                  m_options.mailTimeoutMs);
        // The sender reports from its own thread; the sessions are touched only from this
        // one, so the outcome is queued over to the dispatcher.
        Dispatcher *dispatcher = m_dispatcher;
        qRegisterMetaType<ServerText>();
        connect(
            sender, &MailSender::attemptRecorded, dispatcher,
            [dispatcher](const QString &operatorLogin, const zeral::MailDelivery &delivery,
                         const ServerText &reason) {
                dispatcher->sendMailDelivery(operatorLogin, delivery, reason);
            },
            Qt::QueuedConnection);
        sender->start();
        m_state->mailSender = sender;
    }
    qCInfo(lcServer) << "listening on" << m_options.address.toString() << m_server->serverPort()
                     << (m_server->encrypts() ? "with TLS" : "without TLS");
    return {};
}

void ServerEngine::onNewConnection()
{
    while (m_server->hasPendingConnections()) {
        auto *socket = qobject_cast<QSslSocket *>(m_server->nextPendingConnection());
        if (!socket)
            continue;
        auto *connection = new ClientConnection(
            socket, {m_options.handshakeTimeoutMs, m_options.maxSendBufferBytes}, this);
        m_connections.append(connection);
        qCDebug(lcServerNet) << "client connected:" << connection->peer();
        connect(connection, &ClientConnection::commandReceived, m_dispatcher,
                [this, connection](const Command &command) {
                    m_dispatcher->dispatch(connection, command);
                    // What the request told the other servers goes out now, after its answer.
                    if (m_state && m_state->cluster)
                        m_state->cluster->flush();
                });
        connect(connection, &ClientConnection::closed, this, [this, connection] {
            m_connections.removeOne(connection);
            // The session stays, without a connection, until it is resumed or its resume
            // window passes.
            if (m_state)
                m_state->sessions.detach(connection, m_state->clock());
            connection->deleteLater();
        });
    }
}

void ServerEngine::stop()
{
    if (!m_state)
        return;
    if (m_server)
        m_server->close();
    for (ClientConnection *connection : qAsConst(m_connections)) {
        disconnect(connection, nullptr, this, nullptr);
        connection->close(QStringLiteral("server stopping"));
        connection->deleteLater();
    }
    m_connections.clear();
    if (m_state->mailSender)
        m_state->mailSender->stop();
    delete m_state->mailSender.data();
    delete m_sessionSweep;
    m_sessionSweep = nullptr;
    delete m_dispatcher;
    m_dispatcher = nullptr;
    delete m_server;
    m_server = nullptr;
    m_state.reset();
    qCInfo(lcServer) << "stopped";
    emit stopped();
}

bool ServerEngine::isListening() const
{
    return m_server && m_server->isListening();
}

quint16 ServerEngine::port() const
{
    return m_server ? m_server->serverPort() : 0;
}

bool ServerEngine::rootPasswordIsSet()
{
    return openDatabase().isEmpty() && !m_state->store->passwordHash(m_state->rootUid).isEmpty();
}

bool ServerEngine::setRootPassword(const QString &clientHash)
{
    if (clientHash.isEmpty() || !openDatabase().isEmpty())
        return false;
    const QString hash = PasswordHasher::hash(clientHash);
    if (hash.isEmpty() || !m_state->database.begin())
        return false;
    if (!m_state->store->setPasswordHash(m_state->rootUid, hash)) {
        m_state->database.rollback();
        return false;
    }
    return m_state->database.commit();
}

} // namespace zeral::server
