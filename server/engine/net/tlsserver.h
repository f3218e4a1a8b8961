#pragma once

#include <QSslCertificate>
#include <QSslKey>
#include <QTcpServer>

namespace zeral::server {

// A listening socket that hands out QSslSockets: plain ones, or, with a certificate and key,
// ones that have started the server side of TLS.
class TlsServer : public QTcpServer
{
    Q_OBJECT
public:
    explicit TlsServer(QObject *parent = nullptr);

    void setCredentials(const QSslCertificate &certificate, const QSslKey &key);
    bool encrypts() const { return !m_certificate.isNull(); }

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    QSslCertificate m_certificate;
    QSslKey m_key;
};

} // namespace zeral::server
