#include "maildelivery.h"

#include <QDataStream>

namespace zeral {

bool MailDelivery::isKnownState() const
{
    return state == QLatin1String(Sent) || state == QLatin1String(Pending)
           || state == QLatin1String(Failed) || state == QLatin1String(Held);
}

bool MailDelivery::isFinal() const
{
    return state == QLatin1String(Sent) || state == QLatin1String(Failed);
}

bool MailDelivery::operator==(const MailDelivery &other) const
{
    return id == other.id && recipient == other.recipient && state == other.state
           && error == other.error && nextAttempt == other.nextAttempt;
}

QDataStream &operator<<(QDataStream &out, const MailDelivery &delivery)
{
    return out << delivery.id << delivery.recipient << delivery.state << delivery.error
               << delivery.nextAttempt;
}

QDataStream &operator>>(QDataStream &in, MailDelivery &delivery)
{
    return in >> delivery.id >> delivery.recipient >> delivery.state >> delivery.error
           >> delivery.nextAttempt;
}

} // namespace zeral
