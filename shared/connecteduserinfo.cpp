#include "connecteduserinfo.h"

#include <QDataStream>

namespace zeral {

bool ConnectedUserInfo::operator==(const ConnectedUserInfo &other) const
{
    return user == other.user && ipPort == other.ipPort && connectDateTime == other.connectDateTime
           && lastActionTime == other.lastActionTime && sessionId == other.sessionId;
}

QDataStream &operator<<(QDataStream &out, const ConnectedUserInfo &info)
{
    return out << info.user << info.ipPort << info.connectDateTime << info.lastActionTime
               << info.sessionId;
}

QDataStream &operator>>(QDataStream &in, ConnectedUserInfo &info)
{
    return in >> info.user >> info.ipPort >> info.connectDateTime >> info.lastActionTime
           >> info.sessionId;
}

} // namespace zeral
