#include "loginlockinfo.h"

#include <QDataStream>

namespace zeral {

bool LoginLockInfo::operator==(const LoginLockInfo &other) const
{
    return login == other.login && address == other.address && failures == other.failures
           && lockedUntil == other.lockedUntil;
}

QDataStream &operator<<(QDataStream &out, const LoginLockInfo &info)
{
    return out << info.login << info.address << info.failures << info.lockedUntil;
}

QDataStream &operator>>(QDataStream &in, LoginLockInfo &info)
{
    return in >> info.login >> info.address >> info.failures >> info.lockedUntil;
}

} // namespace zeral
