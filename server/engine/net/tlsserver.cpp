#include "tlsserver.h"

#include <server/engine/serverlogging.h>

#include <QSslSocket>

namespace zeral::server {

TlsServer::TlsServer(QObject *parent)
    : QTcpServer(parent)
{}

void TlsServer::setCredentials(const QSslCertificate &certificate, const QSslKey &key)
{
    m_certificate = certificate;
    m_key = key;
}

void TlsServer::incomingConnection(qintptr descriptor)
{
    auto *socket = new QSslSocket(this);
    if (!socket->setSocketDescriptor(descriptor)) {
        qCWarning(lcServerNet) << "could not take a connection:" << socket->errorString();
        delete socket;
        return;
    }
    // Answers are small and awaited: they leave at once, not when the client has
    // acknowledged the previous segment.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    if (encrypts()) {
        socket->setLocalCertificate(m_certificate);
        socket->setPrivateKey(m_key);
        socket->setPeerVerifyMode(QSslSocket::VerifyNone);
        socket->startServerEncryption();
    }
    addPendingConnection(socket);
}

} // namespace zeral::server
