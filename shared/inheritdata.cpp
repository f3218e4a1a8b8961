#include "inheritdata.h"

#include <QDataStream>

namespace zeral {

bool _INHERIT_DATA::operator==(const _INHERIT_DATA &other) const
{
    return child == other.child && parent == other.parent && linkType == other.linkType
           && reserved == other.reserved && validFrom == other.validFrom
           && validTo == other.validTo;
}

QDataStream &operator<<(QDataStream &out, const _INHERIT_DATA &link)
{
    return out << link.child << link.parent << link.linkType << link.reserved << link.validFrom
               << link.validTo;
}

QDataStream &operator>>(QDataStream &in, _INHERIT_DATA &link)
{
    return in >> link.child >> link.parent >> link.linkType >> link.reserved >> link.validFrom
           >> link.validTo;
}

} // namespace zeral
