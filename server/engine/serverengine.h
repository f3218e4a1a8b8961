#pragma once

#include <server/engine/session/loginthrottle.h>

#include <QDateTime>
#include <QHostAddress>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class QTimer;

namespace zeral::server {

struct ServerState;
class ClientConnection;
class Dispatcher;
class TlsServer;

// The central server: storage, sessions, rights, protocol and mail, without a command line.
// zr-server runs one in its main thread; the studio runs one in a thread of its own (move
// the engine to that thread and call start() there). All its work happens in the thread it
// lives in.
class ServerEngine : public QObject
{
    Q_OBJECT
public:
    struct Options
    {
        // An SQLite file, or a PostgreSQL URL (postgresql://user@host:port/dbname).
        QString databasePath;
        QHostAddress address = QHostAddress::LocalHost;
        quint16 port = 0; // 0: any free port, see port()
        bool demo = false;
        int demoSize = 300; // employees of the demo organisation
        int demoUsers = 0;  // accounts the demo has besides its own (DemoData::bulkUsers)
        QString tlsCertificatePath;
        QString tlsKeyPath;
        QString smtpUrl; // empty: mails are kept in the outbox
        QString mailSender = QStringLiteral("zeral@localhost");
        // How often a mail is tried, the pause after its first failure and how long one
        // delivery may take (MailSender::setDeliveryPolicy).
        int mailMaxAttempts = 5;
        int mailFirstPauseMs = 60 * 1000;
        int mailTimeoutMs = 60 * 1000;
        LoginThrottle::Policy loginPolicy;
        std::function<QDateTime()> clock; // empty: the system clock
        // A session whose connection dropped waits this long to be resumed, then ends.
        int resumeWindowSeconds = 10 * 60;
        // On a TLS port, how long a new client has to finish its handshake.
        int handshakeTimeoutMs = 10000;
        // Answers and pushes a client may leave unread before it is dropped.
        qint64 maxSendBufferBytes = 64 * 1024 * 1024;
        // Statements of data.exec_sql run in worker threads of their own, beside the event
        // loop: this many at once, at most `clientSqlPerSession` of one session (more are
        // refused), each stopped after `clientSqlTimeLimitMs`.
        int clientSqlWorkers = 4;
        int clientSqlPerSession = 2;
        int clientSqlTimeLimitMs = 10000;
        // The folder of the catalogues of the texts for operators ("zrserver_en.qm", ...);
        // empty: defaultCatalogueDir(). Without a catalogue for his language an operator
        // gets the Russian texts.
        QString catalogueDir;
    };

    // <program folder>/../translations, where the build (build/translations) and an
    // installation put the catalogues; the studio looks there for its own.
    static QString defaultCatalogueDir();

    explicit ServerEngine(Options options, QObject *parent = nullptr);
    ~ServerEngine() override;

    // Opens, migrates and seeds the database without listening. Empty on success, else a
    // sentence for the operator. start() calls it itself.
    QString openDatabase();
    // Opens the database and listens. Empty on success, else a sentence for the operator.
    QString start();
    // Closes every connection and the database; a request in flight has already finished,
    // since requests run to their end in this thread, and a client statement still running
    // in a worker is stopped (its answer dropped).
    void stop();
    bool isListening() const;
    quint16 port() const;

    // The first start of the studio sets root's password; login as root waits for it.
    bool rootPasswordIsSet();
    bool setRootPassword(const QString &clientHash);

    int connectionCount() const { return m_connections.size(); }

signals:
    void stopped();

private:
    void onNewConnection();

    Options m_options;
    std::unique_ptr<ServerState> m_state;
    Dispatcher *m_dispatcher = nullptr;
    TlsServer *m_server = nullptr;
    QTimer *m_sessionSweep = nullptr;
    QList<ClientConnection *> m_connections;
};

} // namespace zeral::server
