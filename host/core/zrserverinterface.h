#pragma once

#include <host/core/command.h>
#include <host/core/commandtype.h>

#include <QHash>
#include <QObject>
#include <QSslConfiguration>
#include <QSslError>
#include <QString>

#include <functional>

class QSslSocket;
class QTimer;
class ZRPluginInterface;

// The studio's connection to the server, and the router of every command in the studio.
// A command goes to a handler registered locally under its name, else to a plugin that
// handles its type, else to the server over TCP. Every callback runs exactly once, later,
// on this object's thread: with the answer, or with a failure when the connection drops.
class ZRServerInterface : public QObject
{
    Q_OBJECT
public:
    using Callback = std::function<void(Command &)>;
    // Fills the status (and the data, if any) of the command it is given; that becomes the
    // answer to the sender.
    using Handler = std::function<void(Command &)>;

    enum class State { Disconnected, Connecting, Connected, Reconnecting };
    Q_ENUM(State)

    explicit ZRServerInterface(QObject *parent = nullptr);
    ~ZRServerInterface() override;

    // Connects, plain or with TLS. A first connection that fails is reported by
    // connectionFailed; a connection that drops later is retried with growing pauses
    // until disconnectFromServer.
    void connectToServer(const QString &host, quint16 port, bool encrypted = false);
    // What a TLS connection trusts and offers; by default the system's certificate
    // authorities. A server with its own certificate is trusted by giving exactly that
    // certificate (or its authority) as the CA certificates. Applies from the next connection.
    void setTlsConfiguration(const QSslConfiguration &configuration);
    QSslConfiguration tlsConfiguration() const { return m_tlsConfiguration; }
    void disconnectFromServer();
    State state() const { return m_state; }
    QString host() const { return m_host; }
    quint16 port() const { return m_port; }
    void setReconnectDelays(int firstMs, int maxMs);

    // Sends `command` with a fresh request id, which it returns. `owner` marks the callback
    // so that cancelCallbacks(owner) can forget it when its owner goes away.
    quint64 send(const Command &command, Callback callback, const void *owner = nullptr);
    void cancelCallbacks(const void *owner);
    int pendingCount() const { return m_pending.size(); }

    void registerLocalHandler(const QString &name, Handler handler);
    void unregisterLocalHandler(const QString &name);
    bool hasLocalHandler(const QString &name) const { return m_localHandlers.contains(name); }
    // Commands of these types, from the studio or pushed by the server, go to the plugin.
    void registerPlugin(ZRPluginInterface *plugin, const QList<CommandType> &types);
    void unregisterPlugin(ZRPluginInterface *plugin);

signals:
    void stateChanged(ZRServerInterface::State state);
    void connected();
    void connectionFailed(const QString &reason);
    void connectionLost(const QString &reason);
    void reconnecting(int attempt, int delayMs);
    void pushReceived(const Command &push);

protected:
    // The way to the server; a scripted server in the tests replaces these two.
    virtual bool canTransmit() const;
    virtual void transmit(const Command &command);
    // An answer or a push as it came from the server.
    void receive(Command &command);
    // Fails every request that waits for the server, then tells the listeners.
    void failRemoteRequests(const QString &reason);

private:
    struct Pending
    {
        Callback callback;
        const void *owner = nullptr;
        bool remote = false;
        QString name; // of the request, for the answer made up when the connection drops
    };

    void complete(quint64 id, Command &answer);
    void postAnswer(quint64 id, std::function<Command()> makeAnswer);
    void setState(State state);
    void openSocket();
    void onSocketReady();
    void onSocketError();
    QString handshakeFailureText() const;
    void onSocketDisconnected();
    void onReadyRead();
    void dropConnection(const QString &reason);
    void scheduleReconnect();

    QSslSocket *m_socket = nullptr;
    QTimer *m_reconnectTimer = nullptr;
    State m_state = State::Disconnected;
    QString m_host;
    quint16 m_port = 0;
    bool m_encrypted = false;
    QSslConfiguration m_tlsConfiguration = QSslConfiguration::defaultConfiguration();
    QList<QSslError> m_sslErrors; // of the handshake in progress
    int m_reconnectAttempt = 0;
    int m_firstReconnectDelayMs = 500;
    int m_maxReconnectDelayMs = 15000;
    quint64 m_lastRequestId = 0;
    QHash<quint64, Pending> m_pending;
    QHash<QString, Handler> m_localHandlers;
    QHash<CommandType, ZRPluginInterface *> m_pluginRoutes;
};
