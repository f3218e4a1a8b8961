#include "maildeliverywatcher.h"

#include <host/core/command.h>
#include <host/core/logging.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrserverinterface.h>

#include <algorithm>

using zeral::MailDelivery;

MailDeliveryWatcher::MailDeliveryWatcher(ZRServerInterface *server, QObject *parent)
    : QObject(parent)
{
    connect(server, &ZRServerInterface::pushReceived, this, &MailDeliveryWatcher::onPush);
}

bool MailDeliveryWatcher::noteQueued(const QString &recipient, const QByteArray &answerData)
{
    MailDelivery delivery;
    ZRDataStream in(answerData);
    in >> delivery.id >> delivery.state;
    delivery.recipient = recipient.trimmed();
    if (in.status() != QDataStream::Ok || !in.atEnd() || delivery.id <= 0
        || !delivery.isKnownState() || delivery.isFinal())
        return false;
    // A push about this mail may have come before the answer: that one is newer.
    if (!m_byId.contains(delivery.id))
        record(delivery);
    return true;
}

MailDelivery MailDeliveryWatcher::lastFor(const QString &recipient) const
{
    return m_byId.value(m_latestByRecipient.value(recipient.trimmed().toLower()));
}

QList<MailDelivery> MailDeliveryWatcher::undelivered() const
{
    QList<MailDelivery> result;
    for (const MailDelivery &delivery : m_byId) {
        if (delivery.state != QLatin1String(MailDelivery::Sent))
            result.append(delivery);
    }
    std::sort(result.begin(), result.end(),
              [](const MailDelivery &a, const MailDelivery &b) { return a.id < b.id; });
    return result;
}

void MailDeliveryWatcher::onPush(const Command &push)
{
    if (push.name != QLatin1String(zeral::proto::command::MailDelivery))
        return;
    MailDelivery delivery;
    ZRDataStream in(push.data);
    in >> delivery;
    // What the server sends is checked like any input: a push that doesn't read is dropped.
    if (in.status() != QDataStream::Ok || !in.atEnd() || delivery.id <= 0
        || delivery.recipient.isEmpty() || !delivery.isKnownState()) {
        qCWarning(lcHostNet) << "mail.delivery push ignored: it does not read";
        return;
    }
    record(delivery);
}

void MailDeliveryWatcher::record(const MailDelivery &delivery)
{
    if (m_byId.value(delivery.id) == delivery)
        return;
    m_byId.insert(delivery.id, delivery);
    const QString key = delivery.recipient.toLower();
    // The latest mail to a recipient is the one with the highest id.
    if (m_latestByRecipient.value(key) <= delivery.id)
        m_latestByRecipient.insert(key, delivery.id);
    emit deliveryChanged(delivery);
}
