#include "loopbackpeer.h"

#include <host/core/framecodec.h>

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>

LoopbackPeer::LoopbackPeer(QObject *parent)
    : QObject(parent)
    , m_server(new QTcpServer(this))
{
    connect(m_server, &QTcpServer::newConnection, this, &LoopbackPeer::onNewConnection);
}

LoopbackPeer::~LoopbackPeer()
{
    if (m_client)
        m_client->disconnect(this);
}

bool LoopbackPeer::listen(quint16 port)
{
    if (!m_server->listen(QHostAddress::LocalHost, port))
        return false;
    m_port = m_server->serverPort();
    return true;
}

void LoopbackPeer::stopListening()
{
    m_server->close();
}

void LoopbackPeer::closeClient()
{
    if (m_client)
        m_client->disconnectFromHost();
}

void LoopbackPeer::send(const Command &command)
{
    writeRaw(FrameCodec::encode(command));
}

void LoopbackPeer::answer(const Command &request, qint32 status, const QByteArray &data)
{
    send(Command::answer(request, status, data));
}

void LoopbackPeer::writeRaw(const QByteArray &bytes)
{
    if (m_client)
        m_client->write(bytes);
}

void LoopbackPeer::onNewConnection()
{
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
        if (m_client) { // one client at a time: the newest wins
            m_client->disconnect(this);
            m_client->abort();
            m_client->deleteLater();
        }
        m_client = socket;
        ++m_accepted;
        connect(socket, &QTcpSocket::readyRead, this, &LoopbackPeer::onReadyRead);
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            if (socket != m_client)
                return;
            m_client = nullptr;
            socket->deleteLater();
            emit clientDisconnected();
        });
        emit clientConnected();
    }
}

void LoopbackPeer::onReadyRead()
{
    while (m_client) {
        Command command;
        QString error;
        const FrameCodec::ReadResult result = FrameCodec::read(m_client, &command, &error);
        if (result == FrameCodec::ReadResult::Incomplete)
            return;
        if (result == FrameCodec::ReadResult::Error) {
            qWarning("LoopbackPeer: %s", qPrintable(error));
            m_client->abort();
            return;
        }
        m_received.append(command);
        emit commandReceived(command);
    }
}
