#include "emailattachment.h"

#include <QDataStream>

namespace zeral {

QDataStream &operator<<(QDataStream &out, const _EMAIL_ATTACHMENT &attachment)
{
    return out << attachment.fileName << attachment.mimeType << attachment.content;
}

QDataStream &operator>>(QDataStream &in, _EMAIL_ATTACHMENT &attachment)
{
    return in >> attachment.fileName >> attachment.mimeType >> attachment.content;
}

} // namespace zeral
