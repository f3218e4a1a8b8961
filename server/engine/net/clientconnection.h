#pragma once

#include <host/core/command.h>

#include <QByteArray>
#include <QHostAddress>
#include <QObject>

class QSslSocket;

namespace zeral::server {

// One client's connection: it turns the bytes that arrive into commands and commands into
// frames. A frame that can't be trusted closes this connection and no other.
class ClientConnection : public QObject
{
    Q_OBJECT
public:
    // Takes the socket over.
    // On a TLS port, a client that hasn't finished the handshake within `handshakeTimeoutMs`
    // is dropped, so that silent connections don't pile up.
    // A client whose unsent answers pass `maxSendBufferBytes` doesn't read them and is
    // dropped, so that it can't make the server's memory grow.
    struct Limits
    {
        int handshakeTimeoutMs = 10000;
        qint64 maxSendBufferBytes = 64 * 1024 * 1024;
    };
    explicit ClientConnection(QSslSocket *socket, Limits limits, QObject *parent = nullptr);
    ~ClientConnection() override;

    // Queues the frame; everything queued within one turn of the event loop (the pushes of a
    // change and its answer) leaves in one write at the end of that turn.
    void send(const Command &command);
    // Sends what is queued and closes; `reason` goes to the log.
    void close(const QString &reason);

    QHostAddress peerAddress() const { return m_peerAddress; }
    quint16 peerPort() const { return m_peerPort; }
    QString peer() const;

    // The session this connection carries, empty before login.
    QByteArray sessionId() const { return m_sessionId; }
    void setSessionId(const QByteArray &id) { m_sessionId = id; }

signals:
    void commandReceived(const Command &command);
    void closed();

private:
    void readFrames();
    void writeQueued();
    void finish(); // emits closed() once

    QSslSocket *m_socket;
    QHostAddress m_peerAddress;
    quint16 m_peerPort = 0;
    QByteArray m_sessionId;
    QByteArray m_queued; // frames sent in this turn of the event loop, not yet written
    bool m_writeScheduled = false;
    qint64 m_maxSendBufferBytes;
    bool m_closing = false;
    bool m_finished = false;
};

} // namespace zeral::server
