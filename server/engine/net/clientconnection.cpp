#include "clientconnection.h"

#include <host/core/framecodec.h>
#include <server/engine/serverlogging.h>

#include <QSslSocket>
#include <QTimer>

namespace zeral::server {

ClientConnection::ClientConnection(QSslSocket *socket, Limits limits, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
    , m_peerAddress(socket->peerAddress())
    , m_peerPort(socket->peerPort())
    , m_maxSendBufferBytes(limits.maxSendBufferBytes)
{
    m_socket->setParent(this);
    connect(m_socket, &QSslSocket::readyRead, this, &ClientConnection::readFrames);
    connect(m_socket, &QSslSocket::disconnected, this, [this] {
        if (!m_closing)
            qCDebug(lcServerNet) << "client left:" << peer();
        m_closing = true;
        finish();
    });
    connect(m_socket, qOverload<const QList<QSslError> &>(&QSslSocket::sslErrors), this,
            [this](const QList<QSslError> &errors) {
                qCWarning(lcServerNet) << "TLS errors with" << peer() << errors;
            });
    connect(m_socket, &QAbstractSocket::errorOccurred, this,
            [this](QAbstractSocket::SocketError error) {
                // A client that doesn't speak TLS to a TLS port ends here, unanswered.
                if (error == QAbstractSocket::SslHandshakeFailedError)
                    qCWarning(lcServerNet)
                        << "TLS handshake with" << peer() << "failed:" << m_socket->errorString();
            });
    if (m_socket->mode() == QSslSocket::SslServerMode) {
        QTimer::singleShot(limits.handshakeTimeoutMs, this, [this] {
            if (m_closing || m_socket->isEncrypted())
                return;
            qCWarning(lcServerNet) << "TLS handshake with" << peer() << "did not finish in time";
            m_socket->abort();
        });
    }
    // Bytes may have come with the connection, before anybody listened.
    QMetaObject::invokeMethod(this, &ClientConnection::readFrames, Qt::QueuedConnection);
}

ClientConnection::~ClientConnection() = default;

QString ClientConnection::peer() const
{
    return m_peerAddress.toString() % QLatin1Char(':') % QString::number(m_peerPort);
}

void ClientConnection::send(const Command &command)
{
    if (m_closing || m_socket->state() != QAbstractSocket::ConnectedState)
        return;
    m_queued += FrameCodec::encode(command);
    const qint64 unsent = m_socket->bytesToWrite() + m_queued.size();
    if (unsent > m_maxSendBufferBytes) {
        qCWarning(lcServerNet) << "dropping" << peer() << "- it left" << unsent
                               << "bytes of answers unread";
        m_closing = true;
        m_queued.clear();
        m_socket->abort(); // what is queued would never be read
        if (m_socket->state() == QAbstractSocket::UnconnectedState)
            finish();
        return;
    }
    // The frames of one request (its pushes and its answer) leave together once it has been
    // handled: one write, one segment, whatever the client does with its acknowledgements.
    if (!m_writeScheduled) {
        m_writeScheduled = true;
        QMetaObject::invokeMethod(this, &ClientConnection::writeQueued, Qt::QueuedConnection);
    }
}

void ClientConnection::writeQueued()
{
    m_writeScheduled = false;
    if (m_queued.isEmpty() || m_socket->state() != QAbstractSocket::ConnectedState)
        return;
    m_socket->write(m_queued);
    m_queued.clear();
    m_socket->flush();
}

void ClientConnection::close(const QString &reason)
{
    if (m_closing)
        return;
    qCInfo(lcServerNet) << "closing the connection of" << peer() << "-" << reason;
    writeQueued();
    m_closing = true;
    m_socket->disconnectFromHost(); // writes what is queued first
    if (m_socket->state() == QAbstractSocket::UnconnectedState)
        finish();
}

void ClientConnection::finish()
{
    if (m_finished)
        return;
    m_finished = true;
    emit closed();
}

void ClientConnection::readFrames()
{
    while (!m_closing) {
        Command command;
        QString error;
        switch (FrameCodec::read(m_socket, &command, &error)) {
        case FrameCodec::ReadResult::Incomplete:
            return;
        case FrameCodec::ReadResult::Error:
            qCWarning(lcServerNet) << "bad frame from" << peer() << "-" << error;
            close(error);
            return;
        case FrameCodec::ReadResult::Frame:
            emit commandReceived(command);
            // One request per turn of the event loop: a client that sends a burst doesn't
            // hold up the others, and each answer leaves as soon as it is ready.
            if (m_socket->bytesAvailable() > 0)
                QMetaObject::invokeMethod(this, &ClientConnection::readFrames,
                                          Qt::QueuedConnection);
            return;
        }
    }
}

} // namespace zeral::server
