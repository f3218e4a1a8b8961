#include "emailmessage.h"

#include <shared/wire.h>

namespace zeral {

bool _EMAIL_MESSAGE::operator==(const _EMAIL_MESSAGE &other) const
{
    return to == other.to && subject == other.subject && body == other.body
           && attachments == other.attachments && parameters == other.parameters;
}

QDataStream &operator<<(QDataStream &out, const _EMAIL_MESSAGE &message)
{
    return out << message.to << message.subject << message.body << message.attachments
               << message.parameters;
}

QDataStream &operator>>(QDataStream &in, _EMAIL_MESSAGE &message)
{
    in >> message.to >> message.subject >> message.body;
    wire::readList(in, message.attachments);
    return wire::readVariantHash(in, message.parameters);
}

} // namespace zeral
