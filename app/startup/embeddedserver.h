#pragma once

#include <QObject>
#include <QString>

#include <memory>

class QLockFile;
class QThread;

namespace zeral::server {
class ServerEngine;
}

// The central server run inside the studio: the engine in a thread of its own, on a loopback
// port, so that the studio (and other studios) connect to it over TCP like to any zr-server.
// Opening the database may take seconds (a demo organisation is built at its first start),
// so start() only begins; started() or failed() follows.
class EmbeddedServer : public QObject
{
    Q_OBJECT
public:
    // The port tried first; when it is taken, any free one.
    static constexpr quint16 PreferredPort = 7700;

    explicit EmbeddedServer(QObject *parent = nullptr);
    ~EmbeddedServer() override; // stops

    // The mail relay the engine delivers to (smtp://host:port); takes effect at start().
    void setSmtpUrl(const QString &url) { m_smtpUrl = url; }
    void start(const QString &databasePath, bool demo, quint16 preferredPort = PreferredPort);
    // Closes every connection and the database; waits for the engine's thread to end.
    void stop();
    bool isRunning() const { return m_port != 0; }
    quint16 port() const { return m_port; }
    QString databasePath() const { return m_databasePath; }

    // Short calls into the engine's thread; they wait for it.
    bool rootPasswordIsSet();
    bool setRootPassword(const QString &clientHash);

signals:
    void started(quint16 port);
    void failed(const QString &reason);

private:
    void startEngine(bool demo, quint16 port);
    void destroyEngine();
    void stopThread();

    std::unique_ptr<QLockFile> m_lock; // held while the engine has the database
    QThread *m_thread = nullptr;
    zeral::server::ServerEngine *m_engine = nullptr; // lives in m_thread
    QString m_databasePath;
    QString m_smtpUrl;
    quint16 m_port = 0;
};
