#pragma once

#include <shared/maildelivery.h>

#include <QHash>
#include <QList>
#include <QObject>

struct Command;
class ZRServerInterface;

// Keeps what the server last said about each mail the operator queued ("mail.delivery"
// pushes and the answers to "send_email"), by outbox id and by recipient, so that a screen
// can tell the operator which hand-overs did not go out.
class MailDeliveryWatcher : public QObject
{
    Q_OBJECT
public:
    explicit MailDeliveryWatcher(ZRServerInterface *server, QObject *parent = nullptr);

    // Notes a mail the server has just queued, from the answer to "send_email" (its payload:
    // qint64 outbox id, QString state). False if the payload doesn't read.
    bool noteQueued(const QString &recipient, const QByteArray &answerData);

    // The last outcome of mail `id`; id 0 if none is known.
    zeral::MailDelivery outcome(qint64 id) const { return m_byId.value(id); }
    // The last outcome of the latest mail to `recipient` (compared without case).
    zeral::MailDelivery lastFor(const QString &recipient) const;
    // Mails not delivered (yet): pending, held or failed.
    QList<zeral::MailDelivery> undelivered() const;

signals:
    void deliveryChanged(const zeral::MailDelivery &delivery);

private:
    void onPush(const Command &push);
    void record(const zeral::MailDelivery &delivery);

    QHash<qint64, zeral::MailDelivery> m_byId;
    QHash<QString, qint64> m_latestByRecipient;
};
