#include "templatedata.h"

#include <QDataStream>

namespace zeral {

bool _TEMPLATE_DATA::operator==(const _TEMPLATE_DATA &other) const
{
    return firstWord == other.firstWord && marker == other.marker && secondWord == other.secondWord
           && format == other.format && data == other.data && extra == other.extra
           && lastValue == other.lastValue && firstFlag == other.firstFlag
           && secondFlag == other.secondFlag;
}

QDataStream &operator<<(QDataStream &out, const _TEMPLATE_DATA &data)
{
    return out << data.firstWord << data.marker << data.secondWord << data.format << data.data
               << data.extra << data.lastValue << data.firstFlag << data.secondFlag;
}

QDataStream &operator>>(QDataStream &in, _TEMPLATE_DATA &data)
{
    return in >> data.firstWord >> data.marker >> data.secondWord >> data.format >> data.data
           >> data.extra >> data.lastValue >> data.firstFlag >> data.secondFlag;
}

} // namespace zeral
