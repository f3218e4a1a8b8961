#pragma once

#include <host/core/command.h>

#include <QByteArray>
#include <QList>
#include <QObject>

class QTcpServer;
class QTcpSocket;

// A minimal server on 127.0.0.1 for tests over real TCP: it accepts one client at a time,
// decodes the frames it receives and writes frames, or any raw bytes, back.
class LoopbackPeer : public QObject
{
    Q_OBJECT
public:
    explicit LoopbackPeer(QObject *parent = nullptr);
    ~LoopbackPeer() override;

    // Listens on 127.0.0.1; port 0 lets the system choose, port() tells which.
    bool listen(quint16 port = 0);
    // Refuses new connections; the current client stays connected.
    void stopListening();
    quint16 port() const { return m_port; }

    int acceptedCount() const { return m_accepted; }
    // Closes the current client's connection from this side.
    void closeClient();

    const QList<Command> &received() const { return m_received; }
    void send(const Command &command);
    void answer(const Command &request, qint32 status, const QByteArray &data = {});
    void writeRaw(const QByteArray &bytes);

signals:
    void clientConnected();
    void clientDisconnected();
    void commandReceived(const Command &command);

private:
    void onNewConnection();
    void onReadyRead();

    QTcpServer *m_server = nullptr;
    QTcpSocket *m_client = nullptr;
    quint16 m_port = 0;
    int m_accepted = 0;
    QList<Command> m_received;
};
