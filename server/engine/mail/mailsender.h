#pragma once

#include <QObject>
#include <QString>

namespace zeral::server {

// Delivers the outbox over SMTP in a thread of its own, off the request path: it opens its
// own connection to the database file, sends what is due, records each outcome and retries
// a failure a bounded number of times with a growing pause.
class MailSender : public QObject
{
    Q_OBJECT
public:
    // `relayUrl` as libcurl takes it: smtp://host:port or smtps://host:port.
    MailSender(QString databasePath, QString relayUrl, QObject *parent = nullptr);
    ~MailSender() override;

    void start();
    void stop();

public slots:
    // Called after a request committed a new mail.
    void wake();

signals:
    // One attempt ended (emitted from the sender's thread).
    void attempted(qint64 id, bool delivered, const QString &error);

private:
    class Worker;
    Worker *m_worker = nullptr;
    class QThread *m_thread = nullptr;
    QString m_databasePath;
    QString m_relayUrl;
};

} // namespace zeral::server
