#pragma once

#include <server/engine/ops/servertext.h>
#include <shared/maildelivery.h>

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

    // How often a mail is tried, the pause after its first failure (it doubles after each
    // further one) and how long one delivery may take. Takes effect at start().
    void setDeliveryPolicy(int maxAttempts, int firstPauseMs, int timeoutMs);
    static constexpr int DefaultMaxAttempts = 5;
    static constexpr int DefaultFirstPauseMs = 60 * 1000;
    static constexpr int DefaultTimeoutMs = 60 * 1000;

    // Starts the thread; without a relay URL there is nothing to deliver to and the mails
    // stay held. Held mails are released when a relay is there.
    void start();
    // Breaks off a running delivery and ends the thread; an attempt broken off is not
    // counted.
    void stop();

public slots:
    // Called after a request committed a new mail.
    void wake();

signals:
    // One attempt ended (emitted from the sender's thread).
    void attempted(qint64 id, bool delivered, const QString &error);
    // The outcome of one attempt as the outbox recorded it, for the operator who queued the
    // mail (emitted from the sender's thread: connect it queued to an object of the engine).
    // `reason` is the delivery's error still to be put in the words of each session told.
    void attemptRecorded(const QString &operatorLogin, const zeral::MailDelivery &delivery,
                         const zeral::server::ServerText &reason);

private:
    class Worker;
    Worker *m_worker = nullptr;
    class QThread *m_thread = nullptr;
    QString m_databasePath;
    QString m_relayUrl;
    int m_maxAttempts = DefaultMaxAttempts;
    int m_firstPauseMs = DefaultFirstPauseMs;
    int m_timeoutMs = DefaultTimeoutMs;
};

} // namespace zeral::server
